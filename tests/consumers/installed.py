"""Installs the library into a temporary folder, and builds programs with it."""

import os
import re
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
# The folder with Expat for a cross target, which neither its linker nor its loader searches.
EXPAT = os.environ['ZN_EXPAT']
VERSION = os.environ['ZN_VERSION']

# The output of the consumer, the test program that uses the library.
OUTPUT = 'CIF\n640x480\n2 1 0\nzntl::Exception\n'

WARNINGS = ['-Wall', '-Wextra', '-Wpedantic', '-Wconversion', '-Wshadow', '-Werror']


def call(*command, **options):
    """Runs a command and returns its standard output. A failure shows all its output."""
    done = subprocess.run([str(word) for word in command], encoding='utf-8', timeout=600,
                          stdin=subprocess.DEVNULL, stdout=subprocess.PIPE,
                          stderr=subprocess.PIPE, **options)
    if done.returncode != 0:
        raise AssertionError(f'{command} ended with {done.returncode}:\n{done.stdout}{done.stderr}')
    return done.stdout


def run(program, **variables):
    libraries = {'LD_LIBRARY_PATH': EXPAT} if EXPAT else {}
    return call(*EMULATOR, program, env=os.environ | libraries | variables)


def build_with_find_package(tree, prefix, *options, project='find_package', program='consumer'):
    """Builds the consumer in a project that finds the library under the prefix. A toolchain file may
    restrict searches to its own root, so with one the project gets the exact folder."""
    config = next(prefix.glob('lib/**/zn-config.cmake'))
    place = f'-Dzn_DIR={config.parent}' if TOOLCHAIN else f'-Dzn_ROOT={prefix}'
    return build_project(project, tree, place, *options, program=program)


def configure(sources, tree, *options):
    cross = [f'--toolchain={TOOLCHAIN}', f'-DCMAKE_BUILD_RPATH={EXPAT}'] if TOOLCHAIN else []
    call(CMAKE, '-S', sources, '-B', tree, '-G', 'Ninja', *cross,
         f'-DCMAKE_C_COMPILER={CC}', f'-DCMAKE_CXX_COMPILER={CXX}', *options)


def build_project(project, tree, *options, program='consumer'):
    configure(HERE / project, tree, '-DCMAKE_BUILD_TYPE=Debug', *options)
    call(CMAKE, '--build', tree, '--parallel', '2', '--target', program)
    return tree / program


def needed(program):
    """Returns the names of the shared libraries that a program or library needs."""
    return re.findall(r'Shared library: \[(.*)\]', call(READELF, '--dynamic', program))


class InstalledTest(unittest.TestCase):
    """A test with the library installed at self.prefix, and a temporary folder self.folder."""

    components = ('runtime', 'development')

    @classmethod
    def setUpClass(cls):
        folder = tempfile.TemporaryDirectory()
        cls.addClassCleanup(folder.cleanup)
        cls.folder = Path(folder.name)
        cls.prefix = cls.folder / 'prefix'
        for component in cls.components:
            call(CMAKE, '--install', BUILD, '--prefix', cls.prefix, '--component', component)

    def installed(self, pattern):
        """Returns the only installed file that matches the pattern."""
        files = list(self.prefix.glob(pattern))
        self.assertEqual(len(files), 1, f'{pattern}: {files}')
        return files[0]
