"""The order of the program's output and SDK calls. The test cameras write each call to the same standard
output: the header precedes the list, the list precedes the stop, and the program then exits normally."""

import os
import unittest

from program import ProgramTest, run

# The test camera's folder for each initial value of the flags. The cameras' handles are -1 and 0.
CAMERAS = {0xa5: os.environ['ZN_CAMERA_A5'], 0x2a: os.environ['ZN_CAMERA_2A']}

HEADER = 'Content-Type: text/plain\r\n\r\n'


def output(flags, **variables):
    done = run(extra_environment={'LD_LIBRARY_PATH': CAMERAS[flags], **variables})
    return done.status, done.output.decode(), done.errors


class Order(ProgramTest):

    LISTED = ('{"resolution": "1x2", "default": true },'
              '{"resolution": "3x4", "default": false }')

    def test_of_a_response(self):
        # The program has cleared the top bit of the flags, and no other.
        for flags, found in ((0xa5, '<init 25>'), (0x2a, '<init 2a>')):
            with self.subTest(hex(flags)):
                self.assertEqual(output(flags), (0, found + HEADER + '[<next><next><next><next>'
                                                 + self.LISTED + ']<deinit><exit>', ''))

    def test_of_a_failed_start(self):
        self.assertEqual(output(0xa5, CAMERA_FAILS='1'), (1, '<init 25><exit>', ''))


if __name__ == '__main__':
    unittest.main()
