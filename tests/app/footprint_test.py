"""The program needs few libraries and little space on a camera."""

import os
import re
import subprocess
import tempfile
import unittest
from pathlib import Path

import elf
from program import PROGRAM

STRIP = os.environ['ZN_STRIP']

# Limits for the stripped program, in KiB. They are little above its size, because flash memories are
# small: the test fails if the program gains a table or a formatter.
LIMITS = {
    'ARM, hard float': 44,
    'ARM, soft float': 64,
    'AArch64': 144,
    'Advanced Micro Devices X86-64': 112,
}


def machine():
    name = elf.header('Machine')
    abi = re.search(r'(hard|soft)-float ABI', elf.header('Flags'))
    return f'{name}, {abi[1]} float' if abi else name


class Libraries(unittest.TestCase):

    ALLOWED = r'libsdk\.so|libc\.so\.6|ld-linux[-\w.]*\.so\.\d'

    def test_are_the_sdk_and_the_c_library(self):
        foreign = [name for name in elf.needed() if not re.fullmatch(self.ALLOWED, name)]
        self.assertEqual(foreign, [])


class Machinery(unittest.TestCase):
    """C++ streams and locales would double the program's size and the time that it needs to start."""

    STREAMS = (r'std::(__cxx11::)?(basic_\w*(stream|buf|ios)|ios_base|locale|[io]stream'
               r'|ctype|codecvt|num_[gp]et|numpunct|money\w+|time_[gp]et|messages|collate)\b')
    LOCALES = r'(setlocale|(new|use|dup|free)locale|localeconv)'

    def setUp(self):
        self.names = [symbol.name for symbol in elf.symbols('--syms', '--demangle')]
        self.assertIn('main', self.names, 'the program has no symbol table')

    def test_streams_are_not_linked_in(self):
        self.assertEqual([name for name in self.names if re.search(self.STREAMS, name)], [])

    def test_locale_functions_are_not_called(self):
        self.assertEqual([name for name in self.names if re.fullmatch(self.LOCALES, name)], [])


class Size(unittest.TestCase):

    def test_of_the_stripped_program_is_within_its_limit(self):
        with tempfile.TemporaryDirectory() as folder:
            stripped = Path(folder, 'resolution')
            subprocess.run([STRIP, '-o', stripped, PROGRAM], check=True, env={})
            size = stripped.stat().st_size
        print(f'{machine()}: {size} bytes stripped')
        self.assertLessEqual(size, LIMITS[machine()] * 1024)


if __name__ == '__main__':
    unittest.main()
