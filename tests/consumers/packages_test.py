"""The packages: what they say about themselves, what is in them, and that it works from a clean
root and from an unpacked archive."""

import os
import re
import subprocess
import tarfile
import tempfile
import unittest
from pathlib import Path

from installed import (BUILD, OUTPUT, READELF, SOURCES, VERSION, build_with_find_package, call,
                       needed, run)

CPACK = os.environ['ZN_CPACK']
MAJOR = VERSION.split('.', maxsplit=1)[0]

PROGRAM_FILES = {
    'lib/cgi-bin/resolution',
    'share/man/man1/resolution.1',
    'share/doc/zn-resolution/CHANGELOG.md',
    'share/doc/zn-resolution/deployment.md',
    'share/doc/zn-resolution/sdk-requirements.md',
    *(f'share/doc/zn-resolution/servers/{path.name}'
      for path in SOURCES.glob('packaging/servers/*.conf')),
}
RUNTIME_FILES = {f'lib/libzn.so.{MAJOR}', f'lib/libzn.so.{VERSION}'}
DEVELOPMENT_FILES = {
    'lib/libzn.a',
    'lib/libzn.so',
    'lib/pkgconfig/zn.pc',
    'lib/cmake/zn/zn-config.cmake',
    'lib/cmake/zn/zn-config-version.cmake',
    'lib/cmake/zn/zn-targets.cmake',
    'lib/cmake/zn/zn-targets-release.cmake',
    'share/doc/libzn-dev/CHANGELOG.md',
    *(f'include/zn/{path.relative_to(SOURCES / "libraries/src")}'
      for path in SOURCES.glob('libraries/src/*/*.h')),
    *(f'share/doc/libzn-dev/{path.name}'
      for path in SOURCES.glob('docs/*') if path.suffix in ('.md', '.svg')
      and path.name not in ('deployment.md', 'sdk-requirements.md')),
}


def architecture(file):
    header = call(READELF, '--file-header', file)
    machine = re.search(r'Machine: *(.*)', header)[1]
    names = {'Advanced Micro Devices X86-64': 'amd64', 'AArch64': 'arm64',
             'ARM': 'armhf' if 'hard-float ABI' in header else 'armel'}
    return names[machine]


def glibc_versions(file):
    """The versions of the C library that a program or library asks for."""
    found = re.findall(r'Name: GLIBC_(\d+)\.(\d+)', call(READELF, '--version-info', file))
    return {(int(major), int(minor)) for major, minor in found}


class PackagesTest(unittest.TestCase):
    """With the packages in self.packages, and the .deb packages installed below self.root."""

    @classmethod
    def setUpClass(cls):
        folder = tempfile.TemporaryDirectory()
        cls.addClassCleanup(folder.cleanup)
        cls.folder = Path(folder.name)
        cls.packages = cls.folder / 'packages'
        call(CPACK, '--config', BUILD / 'CPackConfig.cmake', '-B', cls.packages)
        cls.architecture = architecture(BUILD / 'resolution')
        cls.root = cls.folder / 'root'
        cls.install_debs()

    @classmethod
    def install_debs(cls):
        """By dpkg, which notices packages that are in each other's way; the scripts and triggers
        of a root that has no other packages in it are left out."""
        books = cls.root / 'var/lib/dpkg'
        for name in ('info', 'updates', 'triggers'):
            (books / name).mkdir(parents=True)
        (books / 'status').touch()
        debs = [cls.deb(name) for name in (f'libzn{MAJOR}', 'libzn-dev', 'zn-resolution')]
        call('dpkg', f'--root={cls.root}', '--log=/dev/null', '--force-architecture',
             '--force-depends', '--force-not-root', '--force-bad-path', '--unpack', *debs)

    @classmethod
    def deb(cls, name):
        return cls.packages / f'{name}_{VERSION}_{cls.architecture}.deb'

    def archive(self, name):
        return self.packages / f'{name}-{VERSION}-{self.architecture}.tar.gz'


class Names(PackagesTest):

    def test_tell_package_version_and_architecture(self):
        found = {path.name for path in self.packages.iterdir()
                 if path.suffix in ('.deb', '.gz')}
        self.assertEqual(found, {
            *(self.deb(name).name for name in ('zn-resolution', f'libzn{MAJOR}', 'libzn-dev')),
            *(self.archive(name).name for name in ('zn-resolution', 'libzn'))})

    def test_come_with_checksums(self):
        for checksum in self.packages.glob('*.sha256'):
            call('sha256sum', '--check', '--strict', checksum.name, cwd=self.packages)
        self.assertEqual(len(list(self.packages.glob('*.sha256'))), 5)


class Fields(PackagesTest):

    def field(self, package, name):
        return call('dpkg-deb', '--field', self.deb(package), name).strip()

    def test_name_version_and_architecture(self):
        for package in ('zn-resolution', f'libzn{MAJOR}', 'libzn-dev'):
            self.assertEqual([self.field(package, name)
                              for name in ('Package', 'Version', 'Architecture')],
                             [package, VERSION, self.architecture])

    def test_first_line_of_the_description_fits_a_list(self):
        for package in ('zn-resolution', f'libzn{MAJOR}', 'libzn-dev'):
            self.assertLessEqual(len(self.field(package, 'Description').splitlines()[0]), 72)

    def test_dependencies_of_the_program_are_a_c_library_that_has_what_it_asks_for(self):
        self.assert_depends('zn-resolution', BUILD / 'resolution', [])

    def test_dependencies_of_the_library_are_its_languages_runtime(self):
        self.assert_depends(f'libzn{MAJOR}', self.root / f'usr/lib/libzn.so.{VERSION}',
                            [r'libstdc\+\+6 \(>= \d+\)', 'libgcc-s1'])

    def assert_depends(self, package, file, others):
        first, *rest = self.field(package, 'Depends').split(', ')
        version = re.fullmatch(r'libc6 \(>= (\d+)\.(\d+)\)', first)
        self.assertGreaterEqual((int(version[1]), int(version[2])), max(glibc_versions(file)))
        self.assertEqual(len(rest), len(others))
        for dependency, pattern in zip(rest, others):
            self.assertRegex(dependency, f'^{pattern}$')

    def test_development_needs_the_very_same_library(self):
        self.assertEqual(self.field('libzn-dev', 'Depends'), f'libzn{MAJOR} (= {VERSION})')

    def test_library_tells_the_loader_and_other_packages(self):
        control = self.folder / 'control'
        call('dpkg-deb', '--control', self.deb(f'libzn{MAJOR}'), control)
        self.assertEqual((control / 'triggers').read_text(), 'activate-noawait ldconfig\n')
        self.assertEqual((control / 'shlibs').read_text(),
                         f'libzn {MAJOR} libzn{MAJOR} (>= {VERSION})\n')


class Contents(PackagesTest):

    def members(self, archive, prefix):
        """Files and links by name, once it is clear that all members are as they should be."""
        files = {}
        for member in archive:
            name = member.name.removeprefix('./')
            with self.subTest(name):
                self.assertEqual((member.uid, member.gid), (0, 0))
                if member.isdir():
                    self.assertEqual(member.mode, 0o755)
                    continue
                executable = name.endswith('cgi-bin/resolution')
                if member.isfile():
                    self.assertEqual(member.mode, 0o755 if executable else 0o644)
                self.assertTrue(name.startswith(prefix), name)
                files[name.removeprefix(prefix)] = member
        return files

    def deb_members(self, package):
        with subprocess.Popen(['dpkg-deb', '--fsys-tarfile', self.deb(package)],
                              stdout=subprocess.PIPE) as unpack:
            with tarfile.open(fileobj=unpack.stdout, mode='r|') as archive:
                return set(self.members(archive, 'usr/'))

    def archive_members(self, name):
        with tarfile.open(self.archive(name)) as archive:
            return set(self.members(archive, f'zn-{VERSION}-{self.architecture}/'))

    def test_of_the_program(self):
        self.assertEqual(self.deb_members('zn-resolution'), PROGRAM_FILES)
        self.assertEqual(self.archive_members('zn-resolution'), PROGRAM_FILES)

    def test_of_the_library(self):
        self.assertEqual(self.deb_members(f'libzn{MAJOR}'), RUNTIME_FILES)
        self.assertEqual(self.deb_members('libzn-dev'), DEVELOPMENT_FILES)
        self.assertEqual(self.archive_members('libzn'), RUNTIME_FILES | DEVELOPMENT_FILES)

    def test_are_for_the_architecture_and_stripped(self):
        for file in ('lib/cgi-bin/resolution', f'lib/libzn.so.{VERSION}'):
            path = self.root / 'usr' / file
            self.assertEqual(architecture(path), self.architecture)
            self.assertNotIn('.symtab', call(READELF, '--sections', '--wide', path))

    def test_name_no_folder_of_the_machine_that_made_them(self):
        for path in self.root.rglob('*'):
            # A page may use any folder in its examples, this one's too.
            if path.suffix == '.md':
                continue
            if path.is_file() and not path.is_symlink() and 'var' not in path.parts:
                with self.subTest(path.name):
                    content = path.read_bytes()
                    self.assertNotIn(bytes(SOURCES), content)
                    self.assertNotIn(bytes(BUILD), content)

    def test_configurations_of_servers_are_filled_in(self):
        for path in (self.root / 'usr/share/doc/zn-resolution/servers').iterdir():
            with self.subTest(path.name):
                self.assertNotIn('@', path.read_text())


class Use(PackagesTest):

    SIMULATOR = {'LD_LIBRARY_PATH': str(BUILD / 'simulator')}

    def test_program_answers(self):
        answer = run(self.root / 'usr/lib/cgi-bin/resolution', **self.SIMULATOR)
        self.assertTrue(answer.startswith('Content-Type: text/plain\n\n[{"resolution": "160x120"'),
                        answer)

    def test_program_needs_the_sdk_and_the_c_library(self):
        found = needed(self.root / 'usr/lib/cgi-bin/resolution')
        self.assertIn('libsdk.so', found)
        self.assertNotIn(f'libzn.so.{MAJOR}', found)

    def test_installed_library_is_found_and_linked(self):
        for kind, options in (('static', []), ('shared', ['-DBUILD_SHARED_LIBS=ON'])):
            with self.subTest(kind):
                program = build_with_find_package(self.folder / f'installed-{kind}',
                                                  self.root / 'usr', *options)
                self.assertEqual(run(program), OUTPUT)
                self.assertEqual(f'libzn.so.{MAJOR}' in needed(program), kind == 'shared')

    def test_unpacked_archive_is_found_and_linked(self):
        with tarfile.open(self.archive('libzn')) as archive:
            archive.extractall(self.folder / 'anywhere')
        prefix = self.folder / f'anywhere/zn-{VERSION}-{self.architecture}'
        program = build_with_find_package(self.folder / 'unpacked', prefix)
        self.assertEqual(run(program), OUTPUT)

    def test_pkg_config_finds_the_installed_library(self):
        flags = call('pkg-config', '--cflags', 'zn',
                     env=os.environ | {'PKG_CONFIG_LIBDIR': str(self.root / 'usr/lib/pkgconfig')})
        folder = Path(flags.strip().removeprefix('-I')).resolve()
        self.assertEqual(folder, (self.root / 'usr/include/zn').resolve())


if __name__ == '__main__':
    unittest.main()
