"""The program under test, and what it is expected to answer."""

import os
import unittest

from simulator import run as run_against_simulator

PROGRAM = os.environ['ZN_PROGRAM']

HEADER = b'Content-Type: text/plain\r\n\r\n'

SMALLEST, LARGEST = -2147483648, 2147483647


def run(*arguments, **camera):
    return run_against_simulator(PROGRAM, *arguments, **camera)


def response(*sizes):
    """The answer that lists these sizes, in this order."""
    entries = [f'{{"resolution": "{size}", "default": {"false" if index else "true"} }}'
               for index, size in enumerate(sizes)]
    return HEADER + f'[{",".join(entries)}]'.encode()


class ProgramTest(unittest.TestCase):
    maxDiff = None

    def assert_answers(self, done, output):
        """A complete response and nothing else."""
        self.assertEqual(done.output, output)
        self.assertEqual((done.status, done.errors), (0, ''))

    def assert_lists(self, offered, *sizes):
        self.assert_answers(run(sizes=offered), response(*sizes))
