"""The library, installed into a folder of its own, and tools to use it from there."""

import os
import subprocess
import tempfile
import unittest
from pathlib import Path

HERE = Path(__file__).parent
CMAKE = os.environ['ZN_CMAKE']
SOURCES = Path(os.environ['ZN_SOURCES'])
BUILD = Path(os.environ['ZN_BUILD'])
TOOLCHAIN = os.environ['ZN_TOOLCHAIN']
EMULATOR = os.environ['ZN_EMULATOR'].split()
CC, CXX = os.environ['ZN_CC'], os.environ['ZN_CXX']
NM, READELF = os.environ['ZN_NM'], os.environ['ZN_READELF']
VERSION = os.environ['ZN_VERSION']

WARNINGS = ['-Wall', '-Wextra', '-Wpedantic', '-Wconversion', '-Wshadow', '-Werror']


def call(*command, **options):
    """What the command prints; a failure shows everything that it said."""
    done = subprocess.run([str(word) for word in command], encoding='utf-8', timeout=600,
                          stdin=subprocess.DEVNULL, stdout=subprocess.PIPE,
                          stderr=subprocess.PIPE, **options)
    if done.returncode != 0:
        raise AssertionError(f'{command} ended with {done.returncode}:\n{done.stdout}{done.stderr}')
    return done.stdout


def run(program):
    return call(*EMULATOR, program)


class InstalledTest(unittest.TestCase):
    """Tests with the library installed at self.prefix, and room for more at self.folder."""

    @classmethod
    def setUpClass(cls):
        folder = tempfile.TemporaryDirectory()
        cls.addClassCleanup(folder.cleanup)
        cls.folder = Path(folder.name)
        cls.prefix = cls.folder / 'prefix'
        for component in ('runtime', 'development'):
            call(CMAKE, '--install', BUILD, '--prefix', cls.prefix, '--component', component)

    def installed(self, pattern):
        """The one installed file that fits the pattern."""
        files = list(self.prefix.glob(pattern))
        self.assertEqual(len(files), 1, f'{pattern}: {files}')
        return files[0]
