"""The tutorial quotes its program exactly, and shows that program's output."""

import os
import re
import subprocess
import tempfile
import unittest
from pathlib import Path

from page import SOURCES, block, blocks

PAGE = 'docs/tutorial.md'
PROGRAM = SOURCES / 'examples/tutorial.cpp'


class Tutorial(unittest.TestCase):
    maxDiff = None

    def test_quotes_the_program(self):
        quotes = {mark.split(': ')[1]: code for mark, code in blocks(PAGE)
                  if mark.startswith('examples/tutorial.cpp: ')}
        parts = re.findall(r'^// \[(\w+)\]\n(.*?)^// \[\1\]$', PROGRAM.read_text(),
                           re.DOTALL | re.MULTILINE)
        self.assertGreaterEqual(len(parts), 6)
        self.assertEqual(quotes, dict(parts))

    def test_shows_what_the_program_prints(self):
        with tempfile.TemporaryDirectory() as folder:
            done = subprocess.run(
                [*os.environ['ZN_EMULATOR'].split(), os.environ['ZN_TUTORIAL'],
                 Path(folder, 'objects')],
                stdout=subprocess.PIPE, encoding='utf-8', timeout=60, check=True)
        shown = ''.join(code for mark, code in blocks(PAGE) if mark == 'output')
        self.assertEqual(done.stdout, shown)

    def test_project_is_the_one_that_the_tests_of_packages_build(self):
        built = (SOURCES / 'tests/consumers/find_package/CMakeLists.txt').read_text()
        built = built.replace('consumer', 'tutorial').replace('../', '').replace('zn 1.0', 'zn')
        self.assertEqual(block(PAGE, 'cmake'), built.partition('\n# ')[0])


if __name__ == '__main__':
    unittest.main()
