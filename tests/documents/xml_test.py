"""The page about XML quotes its program exactly, and shows that program's output."""

import os
import re
import subprocess
import unittest

from page import SOURCES, blocks

PAGE = 'docs/xml.md'
PROGRAM = SOURCES / 'examples/read_xml.cpp'


class Page(unittest.TestCase):
    maxDiff = None

    def test_quotes_the_program(self):
        quotes = {mark.split(': ')[1]: code for mark, code in blocks(PAGE)
                  if mark.startswith('examples/read_xml.cpp: ')}
        parts = re.findall(r'^ +// \[(\w+)\]\n(.*?)^ +// \[\1\]$', PROGRAM.read_text(),
                           re.DOTALL | re.MULTILINE)
        self.assertEqual(quotes, {name: re.sub('(?m)^    ', '', code) for name, code in parts})
        self.assertEqual(len(quotes), 2)

    def test_shows_what_the_program_prints(self):
        done = subprocess.run([*os.environ['ZN_EMULATOR'].split(), os.environ['ZN_READ_XML']],
                              stdout=subprocess.PIPE, encoding='utf-8', timeout=60, check=True)
        self.assertEqual(done.stdout,
                         ''.join(code for mark, code in blocks(PAGE) if mark == 'output'))


if __name__ == '__main__':
    unittest.main()
