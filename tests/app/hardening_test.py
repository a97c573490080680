"""The shipped program is built with the toolchain's hardening options."""

import re
import unittest

import elf


class Defences(unittest.TestCase):

    def segment(self, name):
        return re.search(rf'^ *{name} .*$', elf.readelf('--program-headers'), re.MULTILINE)[0]

    def test_everything_is_bound_at_start(self):
        self.assertRegex(elf.readelf('--dynamic'), r'\(FLAGS\).*\bBIND_NOW\b')

    def test_relocations_are_read_only_after_the_start(self):
        self.assertRegex(self.segment('GNU_RELRO'), r' R +0x')

    def test_stack_is_not_executable(self):
        self.assertRegex(self.segment('GNU_STACK'), r' RW +0x')

    def test_stack_is_protected(self):
        self.assertIn('__stack_chk_fail', self.imports())

    def test_c_library_calls_are_fortified(self):
        self.assertIn('__printf_chk', self.imports())

    def imports(self):
        return [symbol.name for symbol in elf.symbols('--dyn-syms') if not symbol.defined]


if __name__ == '__main__':
    unittest.main()
