"""The README quotes its first program exactly, and shows that program's output."""

import os
import subprocess
import tempfile
import unittest

from page import SOURCES, block

PAGE = 'README.md'


class First(unittest.TestCase):

    def test_page_quotes_the_program(self):
        program = SOURCES / 'examples/first.cpp'
        self.assertEqual(block(PAGE, 'examples/first.cpp'), program.read_text())

    def test_page_shows_what_the_program_prints(self):
        with tempfile.TemporaryDirectory() as folder:
            done = subprocess.run(
                [*os.environ['ZN_EMULATOR'].split(), os.environ['ZN_FIRST']], cwd=folder,
                stdout=subprocess.PIPE, encoding='utf-8', timeout=60, check=True)
        self.assertEqual(done.stdout, block(PAGE, 'output'))


if __name__ == '__main__':
    unittest.main()
