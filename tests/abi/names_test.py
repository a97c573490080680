#!/usr/bin/env python3
"""The names that the shared library shows to programs are those that were recorded: functions that
are not inline, and the tables of the classes.

A name that is gone breaks programs that were linked earlier; a name that is new is a promise. After
looking at the difference, record it:

    cmake --build build/release --target record-names
"""

import os
import re
import subprocess
import sys
import unittest
from pathlib import Path

RECORD = Path(__file__).with_name('names.txt')
HEADER = '''# What the shared library shows to programs: see names_test.py.
'''
# Inline functions are in it as well, but which of them is up to the compiler.
KINDS = 'TDBRGVu'


def exported(nm, library):
    done = subprocess.run([nm, '--dynamic', '--demangle', '--defined-only', library], check=True,
                          encoding='utf-8', stdout=subprocess.PIPE)
    return set(re.findall(rf'^[0-9a-f]+ [{KINDS}] (.*)$', done.stdout, re.MULTILINE))


def recorded():
    return {line for line in RECORD.read_text(encoding='utf-8').splitlines()
            if not line.startswith('#')}


def without_widths(names):
    """Size types have other names on 32-bit machines than on 64-bit ones."""
    return {re.sub(r'\bunsigned (int|long long|long)\b', 'unsigned', name) for name in names}


class Names(unittest.TestCase):

    def test_are_those_recorded(self):
        now, before = exported(os.environ['ZN_NM'], os.environ['ZN_LIBRARY']), recorded()
        if os.environ['ZN_POINTER_SIZE'] != '8':
            now, before = without_widths(now), without_widths(before)
        self.assertEqual(sorted(before - now), [], 'gone')
        self.assertEqual(sorted(now - before), [], 'new')


if __name__ == '__main__':
    if sys.argv[1:2] == ['--record']:
        RECORD.write_text(HEADER + ''.join(f'{name}\n' for name in sorted(exported(*sys.argv[2:]))),
                          encoding='utf-8')
    else:
        unittest.main()
