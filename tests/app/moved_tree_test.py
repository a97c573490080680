"""A moved build tree still works, because the program finds the stand-in SDK relative to itself."""

import shutil
import subprocess
import tempfile
import unittest
from pathlib import Path

import elf
from program import HEADER, PROGRAM
from simulator import EMULATOR, SIMULATOR


class MovedTree(unittest.TestCase):

    def test_program_runs_from_any_directory(self):
        with tempfile.TemporaryDirectory() as folder:
            shutil.copy(PROGRAM, folder)
            shutil.copytree(SIMULATOR, Path(folder, 'simulator'))
            done = subprocess.run([*EMULATOR, Path(folder, 'resolution')], cwd='/', check=True,
                                  env={}, stdout=subprocess.PIPE, timeout=60)
        self.assertTrue(done.stdout.startswith(HEADER))

    def test_loader_searches_one_place_and_never_the_working_directory(self):
        self.assertEqual(elf.run_path(), '$ORIGIN/simulator')


if __name__ == '__main__':
    unittest.main()
