"""The program owns both records of the SDK, because the loader copies them into it."""

import unittest

import elf

RECORDS = {'csdk': 20, 'csdk_settings': 40}
FUNCTIONS = ['csdk_init', 'csdk_next_resolution', 'csdk_deinit']


class Records(unittest.TestCase):

    def test_program_has_a_fixed_address(self):
        self.assertRegex(elf.header('Type'), r'^EXEC\b')

    def test_records_are_copied_into_the_program_once(self):
        copies = elf.copies()
        for record in RECORDS:
            with self.subTest(record):
                self.assertEqual(copies.count(record), 1)

    def test_copies_have_the_size_of_the_records(self):
        found = {symbol.name: symbol for symbol in elf.symbols('--dyn-syms')}
        for record, size in RECORDS.items():
            with self.subTest(record):
                self.assertEqual((found[record].type, found[record].size, found[record].defined),
                                 ('OBJECT', size, True))

    def test_functions_come_from_the_sdk(self):
        self.assertIn('libsdk.so', elf.needed())
        found = {symbol.name: symbol for symbol in elf.symbols('--dyn-syms')}
        for function in FUNCTIONS:
            with self.subTest(function):
                self.assertFalse(found[function].defined)

    def test_nothing_else_of_the_sdk_is_used(self):
        used = {symbol.name for symbol in elf.symbols('--dyn-syms') if 'csdk' in symbol.name}
        self.assertEqual(used, {*RECORDS, *FUNCTIONS})


if __name__ == '__main__':
    unittest.main()
