"""If the sizes do not fit in memory, the program aborts at once: it neither stops the SDK nor completes
the response."""

import resource
import signal
import unittest

from program import ProgramTest, run

NEXT = 'csdk_next_resolution'


class Memory(ProgramTest):

    def run_within(self, room, count):
        def limit():
            resource.setrlimit(resource.RLIMIT_DATA, (room, room))
            resource.setrlimit(resource.RLIMIT_CORE, (0, 0))
        return run(count=count, process={'preexec_fn': limit})

    def test_exhausted(self):
        done = self.run_within(1 << 20, 100_000)
        self.assertEqual(done.status, -signal.SIGABRT)
        self.assertFalse(done.output.endswith(b']'))
        self.assertEqual((done.calls[-1].name, done.calls[-1].result), (NEXT, 0))

    def test_sufficient(self):
        self.assertEqual(self.run_within(1 << 20, 1_000).status, 0)


if __name__ == '__main__':
    unittest.main()
