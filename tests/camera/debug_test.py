"""tools/debug runs the emulated program in the debugger."""

import os
import subprocess
import unittest

DEBUG = os.environ['ZN_COMMAND']


def debug(*arguments):
    return subprocess.run([DEBUG, *arguments], stdin=subprocess.DEVNULL, stdout=subprocess.PIPE,
                          stderr=subprocess.PIPE, encoding='utf-8', timeout=500, check=False)


class Debug(unittest.TestCase):

    def test_stops_in_the_program_and_in_the_sdk_and_prints_variables(self):
        done = debug('indoor', '--', '-batch',
                     '-ex', 'break printEntries', '-ex', 'continue',
                     '-ex', 'print resolutions.size()',
                     '-ex', 'break csdk_deinit', '-ex', 'continue', '-ex', 'backtrace',
                     '-ex', 'continue')
        self.assertEqual(done.returncode, 0, done.stderr)
        self.assertIn('$1 = 5\n', done.stdout)
        self.assertRegex(done.stdout, r'#0 +csdk_deinit \(\) at .*sdk/simulator/simulator\.c:\d+\n'
                                      r'#1 .* in main \(\) at .*app/resolution\.cpp:\d+\n')
        self.assertIn('[{"resolution": "160x90", "default": true }', done.stdout)
        self.assertIn('exited normally]', done.stdout)

    def test_misuse(self):
        for arguments in (['indoor', 'full-hd'], ['--colour']):
            with self.subTest(arguments):
                self.assertEqual(debug(*arguments).returncode, 2)


if __name__ == '__main__':
    unittest.main()
