"""The library and the program work with the C library musl: every source compiles with its headers, and
programs that are linked statically with it run.

The distribution has no C++ runtime for musl, so the test uses the one for glibc. That runtime needs two
names from glibc's headers and three from its library: GLIBC_NAMES and musl_runtime.c define them.
"""

import re
import subprocess
import tempfile
import unittest
from pathlib import Path

from installed import CXX, HERE, OUTPUT, READELF, SOURCES, WARNINGS, call

HEADERS = '/usr/include/x86_64-linux-musl'
GLIBC_NAMES = ['-D__GLIBC_PREREQ(major,minor)=0', '-D__locale_t=locale_t']
ANSWER = b'Content-Type: text/plain\r\n\r\n[{"resolution": "160x120", "default": true },'


def runtime_headers():
    """Returns the folders of the C++ headers, and those of the compiler's own headers."""
    done = subprocess.run([CXX, '-E', '-v', '-x', 'c++', '/dev/null'], encoding='utf-8', check=True,
                          stdout=subprocess.DEVNULL, stderr=subprocess.PIPE)
    listed = re.search(r'#include <...> search starts here:\n(.*?)End of search', done.stderr, re.S)[1]
    folders = listed.split()
    own = [folder for folder in folders if re.search(r'/lib/gcc/[^/]+/\d+/include$', folder)]
    return [folder for folder in folders if '/c++/' in folder], own


def library_file(name):
    return call(CXX, f'-print-file-name={name}').strip()


class Musl(unittest.TestCase):

    @classmethod
    def setUpClass(cls):
        folder = tempfile.TemporaryDirectory()
        cls.addClassCleanup(folder.cleanup)
        cls.folder = Path(folder.name)
        cls.library = cls.compile('library', *sorted(SOURCES.glob('libraries/src/**/*.cpp')))

    @classmethod
    def compile(cls, name, *sources):
        """Compiles C++ sources with musl's headers instead of glibc's; returns the object files."""
        cxx, own = runtime_headers()
        folder = cls.folder / name
        folder.mkdir()
        system = [word for path in (*cxx, HEADERS, *own) for word in ('-isystem', path)]
        call(CXX, '-std=c++17', '-O1', '-fno-pie', '-ffp-contract=off', *WARNINGS, '-nostdinc',
             *system, *GLIBC_NAMES, '-I', SOURCES / 'libraries/src', '-I', SOURCES / 'sdk', '-c',
             *sources, cwd=folder)
        return sorted(folder.glob('*.o'))

    @classmethod
    def link(cls, name, *parts):
        program = cls.folder / f'{name}.elf'
        runtime = [library_file(f'lib{part}.a') for part in ('stdc++', 'gcc_eh', 'gcc')]
        call('musl-gcc', '-static', '-no-pie', '-Wl,--eh-frame-hdr', '-o', program, *parts,
             HERE / 'musl_runtime.c', '-Wl,--start-group', *runtime, '-Wl,--end-group')
        return program

    def test_library_works_exceptions_included(self):
        program = self.link('consumer', *self.compile('consumer', HERE / 'consumer.cpp'),
                            *self.library)
        self.assert_is_of_musl_alone(program)
        self.assertEqual(call(program), OUTPUT)

    def test_program_answers(self):
        objects = self.compile('program', *sorted(SOURCES.glob('app/*.cpp')))
        simulator = sorted(SOURCES.glob('sdk/simulator/*.c'))
        program = self.link('resolution', *objects, *self.library, '-std=gnu11',
                            f'-I{SOURCES}/sdk', *simulator)
        self.assert_is_of_musl_alone(program)
        answer = subprocess.run([program], stdout=subprocess.PIPE, timeout=60, check=True).stdout
        self.assertEqual(answer[:len(ANSWER)], ANSWER)

    def assert_is_of_musl_alone(self, program):
        self.assertNotIn('INTERP', call(READELF, '--program-headers', '--wide', program))
        self.assertNotIn(b'GNU C Library', program.read_bytes())


if __name__ == '__main__':
    unittest.main()
