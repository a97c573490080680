"""Runs the program under test, and compares its response with the expected one."""

import os
import unittest

from simulator import run as run_against_simulator

PROGRAM = os.environ['ZN_PROGRAM']

HEADER = b'Content-Type: text/plain\r\n\r\n'

SMALLEST, LARGEST = -2147483648, 2147483647


def run(*arguments, **camera):
    return run_against_simulator(PROGRAM, *arguments, **camera)


def response(*sizes):
    """Returns the response that lists these sizes, in this order."""
    entries = [f'{{"resolution": "{size}", "default": {"false" if index else "true"} }}'
               for index, size in enumerate(sizes)]
    return HEADER + f'[{",".join(entries)}]'.encode()


class ProgramTest(unittest.TestCase):
    maxDiff = None

    def assert_answers(self, done, output):
        """Asserts that the program wrote this output and nothing else, and ended with status 0."""
        self.assertEqual(done.output, output)
        self.assertEqual((done.status, done.errors), (0, ''))

    def assert_lists(self, offered, *sizes):
        self.assert_answers(run(sizes=offered), response(*sizes))
