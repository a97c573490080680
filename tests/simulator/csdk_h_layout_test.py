"""csdk.h compiles as C and as C++, but not if its records have another layout than the SDK's."""

import os
import re
import subprocess
import unittest
from pathlib import Path

HEADER = Path(os.environ['ZN_SOURCES'], 'sdk/csdk.h').read_text()
COMPILERS = {'c': os.environ['ZN_CC'], 'c++': os.environ['ZN_CXX']}

STATE = 'csdk_is_20_bytes'
HANDLE = 'csdk_handle_is_the_first_word'
SETTINGS = 'csdk_settings_is_40_bytes'
FIELDS = 'csdk_settings_fields_follow_one_another'


def exchange(first, second):
    return {first: second, second: first}


# Changes of the header, each with the compiler's message.
CHANGES = [
    ({'int32_t handle;': 'int32_t handle, more;'}, STATE),
    ({'unsigned char reserved[16];': 'unsigned char reserved[12];'}, STATE),
    (exchange('int32_t handle;', 'unsigned char reserved[16];'), HANDLE),
    ({'unsigned char reserved[40': 'unsigned char reserved[44'}, SETTINGS),
    ({'unsigned char reserved[40': 'unsigned char reserved[32'}, SETTINGS),
    (exchange('application_name;', 'vendor_name;'), FIELDS),
    (exchange('char const* vendor_name;', 'uint32_t mode;'), FIELDS),
    ({'uint32_t mode;': 'uint16_t mode;'}, FIELDS),
    (exchange('uint8_t option;', 'uint8_t flags;'), FIELDS),
    ({'uint8_t option;': 'uint8_t before, option;'}, FIELDS),
    ({'uint8_t flags;': 'uint8_t before, flags;'}, FIELDS),
]


def changed(parts):
    """Returns the header with these parts replaced. Each part must occur exactly once."""
    text, count = re.subn('|'.join(map(re.escape, parts)), lambda found: parts[found[0]], HEADER)
    assert count == len(parts), f'{parts}: {count} replaced'
    return text


class Layout(unittest.TestCase):

    def compile(self, text, language):
        done = subprocess.run([COMPILERS[language], '-x', language, '-fsyntax-only', '-'],
                              input=text, capture_output=True, encoding='utf-8', timeout=60,
                              check=False)
        return done.returncode, done.stderr

    def test_of_the_sdk_compiles(self):
        for language in COMPILERS:
            with self.subTest(language):
                self.assertEqual(self.compile(HEADER, language), (0, ''))

    def test_other_than_the_sdks_does_not_compile(self):
        for parts, message in CHANGES:
            for language in COMPILERS:
                with self.subTest(parts, language=language):
                    status, said = self.compile(changed(parts), language)
                    self.assertNotEqual(status, 0)
                    self.assertIn(message, said)


if __name__ == '__main__':
    unittest.main()
