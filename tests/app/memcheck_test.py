"""Valgrind finds no out-of-bounds access, no use of uninitialised memory and no leak in the program."""

import os
import unittest
from pathlib import Path

import simulator
from program import LARGEST, SMALLEST, ProgramTest, response, run

VALGRIND = [os.environ['ZN_VALGRIND'], '--quiet', '--leak-check=full', '--show-leak-kinds=all',
            '--errors-for-leak-kinds=all', '--error-exitcode=99',
            f'--suppressions={Path(__file__).with_name("valgrind.supp")}']


class Memcheck(ProgramTest):

    @classmethod
    def setUpClass(cls):
        simulator.EMULATOR[:] = VALGRIND

    def test_usual_camera(self):
        self.assert_lists(['640x480', '320x180', '160x120', '176x144', '160x120'],
                          '160x120', '176x144', '320x180')

    def test_camera_without_sizes(self):
        self.assert_lists([])

    def test_extremes(self):
        self.assert_lists([f'{SMALLEST}x{LARGEST}', '-1x-1', '320x200', '0x0'], '0x0', '320x200')

    def test_many_sizes(self):
        sizes = [f'{width}x{height}' for width in range(0, 321, 16) for height in range(0, 201, 8)]
        self.assert_answers(run(sizes=[*reversed(sizes), *sizes]), response(*sizes))

    def test_camera_that_does_not_start(self):
        done = run(init_result=-1)
        self.assertEqual((done.status, done.output, done.errors), (1, b'', ''))


if __name__ == '__main__':
    unittest.main()
