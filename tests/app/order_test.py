"""The order of everything that the program does, as cameras see it that write to the same standard
output: a header before the list, the list before the stop, and a normal exit after it."""

import os
import unittest

from program import ProgramTest, run

# For initial option bits, the folder of a camera that has them.
CAMERAS = {0xa5: os.environ['ZN_CAMERA_A5'], 0x2a: os.environ['ZN_CAMERA_2A']}

HEADER = 'Content-Type: text/plain\r\n\r\n'


def output(flags, **variables):
    done = run(extra_environment={'LD_LIBRARY_PATH': CAMERAS[flags], **variables})
    return done.status, done.output.decode(), done.errors


class Order(ProgramTest):

    def test_of_a_response(self):
        listed = ('{"resolution": "1x2", "default": true },'
                  '{"resolution": "3x4", "default": false }')
        self.assertEqual(output(0xa5), (0, '<init 25>' + HEADER + '[<next><next><next><next>'
                                        + listed + ']<deinit><exit>', ''))

    def test_of_a_failed_start(self):
        self.assertEqual(output(0xa5, CAMERA_FAILS='1'), (1, '<init 25><exit>', ''))


class Flags(ProgramTest):

    def test_lose_the_top_bit_only(self):
        for flags, found in ((0xa5, '<init 25>'), (0x2a, '<init 2a>')):
            with self.subTest(hex(flags)):
                self.assertTrue(output(flags)[1].startswith(found))


if __name__ == '__main__':
    unittest.main()
