"""Cameras with very many sizes, and a standard output that cannot be written.

The program ignores the results of its writes. It reads all sizes, stops the SDK and ends with status 0.
If the reader has closed the pipe and SIGPIPE is not ignored, this signal ends it. It must not hang, crash
in another way, or write an incomplete response while there is a reader.
"""

import os
import signal
import subprocess
import unittest

from program import LARGEST, PROGRAM, SMALLEST, ProgramTest, response, run
from simulator import TIMEOUT, command, environment

INIT, NEXT, DEINIT = 'csdk_init', 'csdk_next_resolution', 'csdk_deinit'


class ManyResolutions(ProgramTest):

    def test_million(self):
        sizes = sorted((width, height) for width in range(321) for height in range(201))
        done = run(count=1_000_000, record='')
        self.assertEqual((done.status, done.errors), (0, ''))
        # Not assertEqual, because its failure message would have megabytes.
        self.assertTrue(done.output == response(*(f'{width}x{height}' for width, height in sizes)),
                        f'{len(done.output)} bytes, from {done.output[:100]} '
                        f'to {done.output[-100:]}')

    def test_the_same_one_a_hundred_thousand_times(self):
        self.assert_answers(run(sizes=['320x200'] * 100_000, record=''), response('320x200'))

    def test_extremes_a_hundred_thousand_times(self):
        extremes = [f'{width}x{height}' for width in (SMALLEST, -1, LARGEST)
                    for height in (SMALLEST, -1, 0, 200, LARGEST)]
        self.assert_answers(run(sizes=[*extremes * 7_000, '0x0'], record=''), response('0x0'))


class Output(ProgramTest):

    def assert_runs_to_its_end(self, done):
        self.assertEqual((done.status, done.errors), (0, ''))
        self.assertEqual((done.calls[0].name, done.calls[-1].name), (INIT, DEINIT))

    def test_closed(self):
        # A file that the SDK opens may now get descriptor 1.
        done = run(sizes=['1x2'], process={'stdout': None, 'preexec_fn': lambda: os.close(1)})
        self.assert_runs_to_its_end(done)
        self.assertEqual([call.name for call in done.calls], [INIT, NEXT, NEXT, DEINIT])

    def test_all_standard_streams_closed(self):
        done = run(process={'stdin': None, 'stdout': None, 'stderr': None,
                            'preexec_fn': lambda: os.closerange(0, 3)})
        self.assert_runs_to_its_end(done)

    def test_read_only(self):
        with open('/dev/null', 'rb') as output:
            self.assert_runs_to_its_end(run(process={'stdout': output}))

    def test_full(self):
        for count in (10, 10_000):
            with self.subTest(count), open('/dev/full', 'wb') as output:
                self.assert_runs_to_its_end(run(count=count, process={'stdout': output}))

    def test_file(self):
        read, write = os.pipe()
        with open(read, 'rb') as reader, open(write, 'wb') as writer:
            self.assert_runs_to_its_end(run(process={'stdout': writer}))
            writer.close()
            self.assertEqual(reader.read(), response('160x120', '176x144', '320x180'))


class ReaderThatLeft(ProgramTest):
    """The C library writes a short response when the program ends, a long one in several parts."""

    def run_without_reader(self, count, restore_signals):
        read, write = os.pipe()
        os.close(read)
        with open(write, 'wb') as output:
            return run(count=count, process={'stdout': output, 'restore_signals': restore_signals})

    def test_signal_ends_the_program(self):
        short = self.run_without_reader(10, restore_signals=True)
        self.assertEqual((short.status, short.errors), (-signal.SIGPIPE, ''))
        self.assertEqual(short.calls[-1].name, DEINIT)
        long = self.run_without_reader(10_000, restore_signals=True)
        self.assertEqual((long.status, long.errors), (-signal.SIGPIPE, ''))
        self.assertEqual((long.calls[-1].name, long.calls[-1].result), (NEXT, 1))

    def test_ignored_signal_lets_the_program_end(self):
        for count in (10, 10_000):
            with self.subTest(count):
                done = self.run_without_reader(count, restore_signals=False)
                self.assertEqual((done.status, done.errors), (0, ''))
                self.assertEqual(done.calls[-1].name, DEINIT)

    def test_in_the_middle_of_the_answer(self):
        with subprocess.Popen(command(PROGRAM), stdin=subprocess.DEVNULL, stdout=subprocess.PIPE,
                              env=environment(count=100_000)) as process:
            beginning = process.stdout.read(len(response('0x0', '0x1')) - 1)
            process.stdout.close()
            self.assertEqual(process.wait(TIMEOUT), -signal.SIGPIPE)
        self.assertEqual(beginning, response('0x0', '0x1')[:-1])


if __name__ == '__main__':
    unittest.main()
