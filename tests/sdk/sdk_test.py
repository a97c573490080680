"""The build accepts fitting camera SDKs and rejects others with a message."""

import os
import re
import shutil
import struct
import subprocess
import tempfile
import unittest
from pathlib import Path

CMAKE = os.environ['ZN_CMAKE']
SOURCES = Path(os.environ['ZN_SOURCES'])
PROGRAM = os.environ['ZN_PROGRAM']
SIMULATOR = Path(os.environ['ZN_SIMULATOR'], 'libsdk.so')
TOOLCHAIN = os.environ['ZN_TOOLCHAIN']
EMULATOR = os.environ['ZN_EMULATOR'].split()
READELF = os.environ['ZN_READELF']
CC, CXX = os.environ['ZN_CC'], os.environ['ZN_CXX']
TRIPLET = os.environ['ZN_TRIPLET']

# The offset of the flags in the header of a 32-bit ELF file, and their values on ARM.
FLAGS_OFFSET = 0x24
EABI5, SOFT_FLOAT, HARD_FLOAT = 0x05000000, 0x200, 0x400

FITTING = {
    'csdk': 'char csdk[20] = {1};',
    'csdk_settings': 'char csdk_settings[40] = {1};',
    'csdk_init': 'int csdk_init(void) { return 0; }',
    'csdk_next_resolution': 'int csdk_next_resolution(int h, int* x, int* y)'
                            ' { *x = h; *y = 0; return 1; }',
    'csdk_deinit': 'int csdk_deinit(void) { return 0; }',
}


class SdkTest(unittest.TestCase):

    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.folder = Path(folder.name)
        self.library = self.folder / 'libsdk.so'

    def compile(self, *options, **changes):
        """Compiles an SDK library in which these definitions replace the fitting ones."""
        source = self.folder / 'sdk.c'
        source.write_text('\n'.join({**FITTING, **changes}.values()) + '\n')
        subprocess.run([CC, '-shared', '-fPIC', *options, source, '-o', self.library], check=True)

    def call(self, *command, **variables):
        done = subprocess.run([CMAKE, *map(str, command)], stdin=subprocess.DEVNULL,
                              stdout=subprocess.PIPE, stderr=subprocess.PIPE, encoding='utf-8',
                              timeout=300, check=False, env=os.environ | variables)
        self.said = done.stdout
        # CMake wraps messages at a width that depends on their origin.
        return done.returncode, re.sub(r'\s+', ' ', done.stderr)


class Check(SdkTest):

    def check(self, library=None):
        return self.call(f'-DSDK={library or self.library}', f'-DPROGRAM={PROGRAM}',
                         f'-DCMAKE_READELF={READELF}',
                         '-P', SOURCES / 'cmake/CheckCameraSdk.cmake')

    def assert_taken(self, library=None):
        self.assertEqual(self.check(library), (0, ''))

    def assert_refused(self, *faults, library=None):
        status, message = self.check(library)
        self.assertNotEqual(status, 0)
        found = re.search(r'The camera SDK \S+ does not fit the program: (.*) What an SDK must '
                          r'provide is in docs/sdk-requirements\.md\.', message)
        self.assertIsNotNone(found, message)
        self.assertEqual(found[1], ' '.join(faults))


class Fitting(Check):

    def test_stand_in(self):
        self.assert_taken(SIMULATOR)

    @unittest.skipUnless('arm-linux' in CC, 'only 32-bit ARM has float ABIs')
    def test_library_that_names_no_float_abi(self):
        content = bytearray(SIMULATOR.read_bytes())
        struct.pack_into('<I', content, FLAGS_OFFSET, EABI5)
        self.library.write_bytes(content)
        self.assert_taken()

    def test_other_library_with_the_same_interface(self):
        self.compile()
        self.assert_taken()

    def test_symbols_with_versions(self):
        script = self.folder / 'versions'
        script.write_text('SDK_1.0 { global: csdk*; local: *; };')
        self.compile(f'-Wl,--version-script={script}')
        self.assert_taken()

    def test_more_symbols_than_needed(self):
        self.compile(csdk_more='int csdk_more; int my_csdk; int csdk_settings_old[3];')
        self.assert_taken()


class Unfitting(Check):

    def test_each_missing_name(self):
        for name in FITTING:
            with self.subTest(name):
                self.compile(**{name: ''})
                self.assert_refused(f'{name} is missing')

    def test_name_that_is_only_part_of_another(self):
        self.compile(csdk='char csdk_[20]; char xcsdk[20];')
        self.assert_refused('csdk is missing')

    def test_name_that_is_only_used(self):
        self.compile(csdk_init='int csdk_init(void); int start(void);'
                               'int start(void) { return csdk_init(); }')
        self.assert_refused('csdk_init is missing')

    def test_name_that_is_hidden(self):
        self.compile(csdk_deinit='__attribute__((visibility("hidden"))) int csdk_deinit(void)'
                                 ' { return 0; }')
        self.assert_refused('csdk_deinit is missing')

    def test_record_sizes(self):
        for size in (1, 19, 21, 24):
            with self.subTest('csdk', size=size):
                self.compile(csdk=f'char csdk[{size}];')
                self.assert_refused(f"csdk has {size} bytes, and the program's has 20")
        for size in (20, 36, 44, 48):
            with self.subTest('csdk_settings', size=size):
                self.compile(csdk_settings=f'char csdk_settings[{size}];')
                self.assert_refused(f"csdk_settings has {size} bytes, and the program's has 40")

    def test_record_that_is_a_function(self):
        self.compile(csdk='int csdk(void) { return 0; }')
        self.assert_refused('csdk is no OBJECT but FUNC')

    def test_function_that_is_a_record(self):
        self.compile(csdk_init='int csdk_init = 1;')
        self.assert_refused('csdk_init is no FUNC but OBJECT')

    def test_record_that_the_library_would_not_share(self):
        self.compile(csdk='__attribute__((visibility("protected"))) char csdk[20] = {1};')
        self.assert_refused("csdk is PROTECTED: the library would not use the program's")

    def test_all_faults_at_once(self):
        self.compile(csdk='char csdk[24];', csdk_init='', csdk_deinit='')
        self.assert_refused("csdk has 24 bytes, and the program's has 20", 'csdk_init is missing',
                            'csdk_deinit is missing')

    def test_no_library(self):
        for content in (b'', b'INPUT(libother.so)\n', bytes(range(256))):
            with self.subTest(content[:10]):
                self.library.write_bytes(content)
                self.assert_refused('it is no ELF shared library')

    def test_object_file(self):
        source = self.folder / 'sdk.c'
        source.write_text('int x;\n')
        subprocess.run([CC, '-c', source, '-o', self.library], check=True)
        self.assert_refused('it is no ELF shared library')


class OtherMachines(Check):
    """Checks a copy of the stand-in SDK in which one field of the ELF header is changed."""

    def assert_refused_with(self, offset, layout, value, words):
        content = bytearray(SIMULATOR.read_bytes())
        struct.pack_into(layout, content, offset, value)
        self.library.write_bytes(content)
        status, message = self.check()
        self.assertNotEqual(status, 0)
        self.assertRegex(message, words)

    def test_other_processor(self):
        self.assert_refused_with(0x12, '<H', 8, r'it is for ELF\d\d, little endian, MIPS R3000, '
                                                r'and this build for ELF\d\d, little endian, ')

    @unittest.skipUnless('arm-linux' in CC, 'only 32-bit ARM has two')
    def test_other_float_abi(self):
        hard = 'gnueabihf' in CC
        self.assert_refused_with(
            FLAGS_OFFSET, '<I', EABI5 | (SOFT_FLOAT if hard else HARD_FLOAT),
            r'it is for ELF32, little endian, ARM, {}-float ABI, and this build for ELF32, little '
            r'endian, ARM, {}-float ABI'.format(*('soft', 'hard') if hard else ('hard', 'soft')))


class Configuring(SdkTest):
    """The build checks the library, whether CSDK_LIBRARY or CSDK_ROOT names it. All tests share one
    build tree."""

    @classmethod
    def setUpClass(cls):
        tree = tempfile.TemporaryDirectory()
        cls.addClassCleanup(tree.cleanup)
        cls.tree = Path(tree.name)

    def configure(self, library='', root='', **variables):
        toolchain = [f'--toolchain={TOOLCHAIN}'] if TOOLCHAIN else []
        return self.call('-S', SOURCES, '-B', self.tree, '-G', 'Ninja', *toolchain,
                         f'-DCMAKE_C_COMPILER={CC}', f'-DCMAKE_CXX_COMPILER={CXX}',
                         '-DCMAKE_BUILD_TYPE=Debug', '-DZN_BUILD_TESTS=OFF', '-DZN_INSTALL=OFF',
                         f'-DCSDK_LIBRARY={library}', f'-DCSDK_ROOT={root}', **variables)

    def assert_refused(self, outcome, words):
        status, message = outcome
        self.assertNotEqual(status, 0)
        self.assertIn(words, message)

    def compile_program(self):
        return self.call('--build', self.tree, '--parallel', '2', '--target', 'resolution')

    def build(self, **sdk):
        """Configures and builds the program with this SDK; returns the program's path."""
        self.assertEqual(self.configure(**sdk), (0, ''))
        status, message = self.compile_program()
        self.assertEqual(status, 0, message)
        return self.tree / 'resolution'

    def needed(self, program):
        """Returns the shared libraries that the program needs, except those of the C library."""
        done = subprocess.run([READELF, '--dynamic', program], encoding='utf-8',
                              stdout=subprocess.PIPE, check=True, env={'LC_ALL': 'C'})
        named = re.findall(r'\(NEEDED\).*\[(.*)\]', done.stdout)
        return [name for name in named if not re.match(r'(libc|libm|ld-linux.*)\.so\.', name)]

    def test_refuses_a_library_that_does_not_fit(self):
        self.compile(csdk_settings='char csdk_settings[44];')
        self.assert_refused(self.configure(library=self.library),
                            "csdk_settings has 44 bytes, and the program's has 40")

    def test_refuses_a_library_that_is_not_there(self):
        self.assert_refused(self.configure(library='/no/such/libsdk.so'),
                            'CSDK_LIBRARY is "/no/such/libsdk.so", and there is no such file')

    def test_refuses_a_folder_as_library(self):
        self.assert_refused(self.configure(library=self.folder),
                            f'CSDK_LIBRARY is "{self.folder}", and there is no such file')

    def test_refuses_a_root_without_a_library_even_if_this_machine_has_one(self):
        outcome = self.configure(root=self.folder, CMAKE_LIBRARY_PATH=str(SIMULATOR.parent))
        self.assert_refused(
            outcome, f'CSDK_ROOT is "{self.folder}", and there is no libsdk.so in it')

    def test_refuses_a_library_that_no_longer_fits(self):
        self.compile()
        self.build(library=self.library)
        self.compile(csdk='char csdk[24];')
        self.assert_refused(self.compile_program(),
                            "csdk has 24 bytes, and the program's has 20")

    def test_program_built_with_a_real_sdk_runs_with_it(self):
        program = self.build(library=SIMULATOR)
        done = subprocess.run([*EMULATOR, program], encoding='utf-8',
                              env=os.environ | {'LD_LIBRARY_PATH': str(SIMULATOR.parent)},
                              stdout=subprocess.PIPE, timeout=60, check=True)
        self.assertIn('[{"resolution": "160x120", "default": true }', done.stdout)

    def test_finds_the_library_in_each_place_of_a_root(self):
        for number, place in enumerate(('.', 'lib', 'usr/lib', f'lib/{TRIPLET}',
                                        f'usr/lib/{TRIPLET}')):
            with self.subTest(place):
                root = self.folder / str(number)
                library = root / place / 'libsdk.so'
                library.parent.mkdir(parents=True)
                shutil.copy(SIMULATOR, library)
                self.assertEqual(self.configure(root=root), (0, ''))
                self.assertIn(f'Camera SDK: {library.resolve()}\n', self.said)

    def test_prefers_the_library_named_to_the_root(self):
        self.assertEqual(self.configure(library=SIMULATOR, root='/no/such/root'), (0, ''))

    def test_program_asks_for_the_soname_of_the_library(self):
        self.compile('-Wl,-soname,libcamera.so.7')
        self.assertEqual(self.needed(self.build(library=self.library)), ['libcamera.so.7'])

    def test_program_asks_for_a_library_without_soname_by_its_file_name(self):
        self.compile()
        self.assertEqual(self.needed(self.build(library=self.library)), ['libsdk.so'])

    def test_library_may_need_one_that_only_the_camera_has(self):
        source = self.folder / 'sensor.c'
        source.write_text('int sensor(void) { return 0; }\n')
        sensor = self.folder / 'libsensor.so'
        subprocess.run([CC, '-shared', '-fPIC', source, '-o', sensor], check=True)
        self.compile(sensor, csdk_init='int sensor(void);'
                                       'int csdk_init(void) { return sensor(); }')
        sensor.unlink()
        self.assertEqual(self.needed(self.build(library=self.library)), ['libsdk.so'])


if __name__ == '__main__':
    unittest.main()
