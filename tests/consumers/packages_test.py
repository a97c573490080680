"""The packages have the right fields and files, lintian finds nothing, two builds produce the same bytes,
and the content works when installed in an empty root or unpacked from an archive."""

import gzip
import os
import re
import shutil
import subprocess
import tarfile
import tempfile
import unittest
from email.utils import parsedate_to_datetime
from pathlib import Path

from installed import (BUILD, CMAKE, CXX, OUTPUT, READELF, SOURCES, VERSION,
                       build_with_find_package, call, configure, needed, run)

MAJOR = VERSION.split('.', maxsplit=1)[0]
TRIPLET = call(CXX, '-print-multiarch').strip() or call(CXX, '-dumpmachine').strip()
LIBRARIES = f'lib/{TRIPLET}'

PROGRAM_FILES = {
    'lib/cgi-bin/resolution',
    'share/man/man1/resolution.1.gz',
    'share/doc/zn-resolution/CHANGELOG.md',
    'share/doc/zn-resolution/examples/index.html',
    'share/doc/zn-resolution/deployment.md',
    'share/doc/zn-resolution/sdk-requirements.md',
    *(f'share/doc/zn-resolution/servers/{path.name}'
      for path in SOURCES.glob('packaging/servers/*.conf')),
}
RUNTIME_FILES = {f'{LIBRARIES}/libzn.so.{MAJOR}', f'{LIBRARIES}/libzn.so.{VERSION}'}
DEVELOPMENT_FILES = {
    f'{LIBRARIES}/libzn.a',
    f'{LIBRARIES}/libzn.so',
    f'{LIBRARIES}/pkgconfig/zn.pc',
    f'{LIBRARIES}/cmake/zn/zn-config.cmake',
    f'{LIBRARIES}/cmake/zn/zn-config-version.cmake',
    f'{LIBRARIES}/cmake/zn/zn-targets.cmake',
    f'{LIBRARIES}/cmake/zn/zn-targets-release.cmake',
    'share/doc/libzn-dev/CHANGELOG.md',
    *(f'include/zn/{path.relative_to(SOURCES / "libraries/src")}'
      for path in SOURCES.glob('libraries/src/*/*.h')),
    *(f'share/doc/libzn-dev/{path.name}'
      for path in SOURCES.glob('docs/*') if path.suffix in ('.md', '.svg')
      and path.name not in ('deployment.md', 'developing.md', 'sdk-requirements.md')),
}
TOOLS_FILES = {'bin/zn-dump', 'share/man/man1/zn-dump.1.gz'}
XML_RUNTIME_FILES = {f'{LIBRARIES}/libzn-xml.so.{MAJOR}', f'{LIBRARIES}/libzn-xml.so.{VERSION}'}
XML_DEVELOPMENT_FILES = {
    f'{LIBRARIES}/libzn-xml.a',
    f'{LIBRARIES}/libzn-xml.so',
    f'{LIBRARIES}/pkgconfig/zn-xml.pc',
    f'{LIBRARIES}/cmake/zn/zn-xml-targets.cmake',
    f'{LIBRARIES}/cmake/zn/zn-xml-targets-release.cmake',
}


DEBS = {
    'zn-resolution': PROGRAM_FILES,
    f'libzn{MAJOR}': RUNTIME_FILES,
    'libzn-dev': DEVELOPMENT_FILES,
    'zn-tools': TOOLS_FILES,
    f'libzn-xml{MAJOR}': XML_RUNTIME_FILES,
    'libzn-xml-dev': XML_DEVELOPMENT_FILES,
}
ARCHIVES = {
    'zn-resolution': PROGRAM_FILES,
    'libzn': RUNTIME_FILES | DEVELOPMENT_FILES,
    'zn-tools': TOOLS_FILES,
    'libzn-xml': XML_RUNTIME_FILES | XML_DEVELOPMENT_FILES,
}
# Packages for several processors can be installed together, so these have equal files on all of them.
SAME_ON_EVERY_MACHINE = (f'libzn{MAJOR}', 'libzn-dev', f'libzn-xml{MAJOR}', 'libzn-xml-dev')


def architecture(file):
    header = call(READELF, '--file-header', file)
    machine = re.search(r'Machine: *(.*)', header)[1]
    names = {'Advanced Micro Devices X86-64': 'amd64', 'AArch64': 'arm64',
             'ARM': 'armhf' if 'hard-float ABI' in header else 'armel'}
    return names[machine]


ARCHITECTURE = architecture(BUILD / 'resolution')


def glibc_versions(file):
    """Returns the versions of the C library's symbols that a program or library needs."""
    found = re.findall(r'Name: GLIBC_(\d+)\.(\d+)', call(READELF, '--version-info', file))
    return {(int(major), int(minor)) for major, minor in found}


def make_packages(folder, **variables):
    """Builds the packages in the folder from a copy of the sources; returns the folder of packages."""
    sources = folder / 'sources'
    shutil.copytree(SOURCES, sources, ignore=shutil.ignore_patterns('build', '.git'))
    configure(sources, folder / 'tree', '-DCMAKE_BUILD_TYPE=Release', '-DZN_BUILD_TESTS=OFF',
              '-DZN_PACKAGES=ON', '-DZN_XML=ON')
    call(CMAKE, '--build', folder / 'tree', '--parallel', '2', '--target', 'packages',
         env=os.environ | variables)
    return folder / 'tree/packages'


def install(root, debs):
    """Installs with dpkg, which detects conflicts between packages. Only unpacks: the root has no shell
    to run scripts and triggers."""
    books = root / 'var/lib/dpkg'
    for name in ('info', 'updates', 'triggers'):
        (books / name).mkdir(parents=True)
    (books / 'status').touch()
    call('dpkg', f'--root={root}', '--log=/dev/null', '--force-architecture', '--force-depends',
         '--force-not-root', '--force-bad-path', '--unpack', *debs)


def setUpModule():
    folder = tempfile.TemporaryDirectory()
    unittest.addModuleCleanup(folder.cleanup)
    PackagesTest.folder = Path(folder.name)
    PackagesTest.packages = make_packages(PackagesTest.folder / 'here')
    PackagesTest.root = PackagesTest.folder / 'root'
    install(PackagesTest.root, [PackagesTest.deb(name) for name in DEBS])


class PackagesTest(unittest.TestCase):
    """A test with the packages in self.packages, and the .deb packages installed under self.root."""

    @classmethod
    def deb(cls, name):
        return cls.packages / f'{name}_{VERSION}_{ARCHITECTURE}.deb'

    def archive(self, name):
        return self.packages / f'{name}-{VERSION}-{ARCHITECTURE}.tar.gz'

    def field(self, package, name):
        return call('dpkg-deb', '--field', self.deb(package), name).strip()


class Builds(PackagesTest):

    @unittest.skipUnless(ARCHITECTURE in ('amd64', 'armhf'), 'takes long; two machines are enough')
    def test_produce_the_same_bytes_in_another_folder_at_another_time(self):
        # A compiler cache would return the files of the first build.
        again = make_packages(self.folder / 'somewhere/else', CCACHE_DISABLE='1')
        names = sorted(path.name for path in self.packages.iterdir())
        self.assertEqual(sorted(path.name for path in again.iterdir()), names)
        for name in names:
            with self.subTest(name):
                self.assertEqual((again / name).read_bytes(), (self.packages / name).read_bytes())


class Lintian(PackagesTest):

    def test_has_no_complaint(self):
        done = subprocess.run(
            ['lintian', '--allow-root', '--display-info', '--pedantic', '--fail-on',
             'error,warning,info,pedantic', *map(self.deb, DEBS)],
            encoding='utf-8', stdout=subprocess.PIPE, stderr=subprocess.STDOUT, check=False)
        self.assertEqual((done.returncode, done.stdout), (0, ''))

    def test_overrides_have_a_reason(self):
        for path in (self.root / 'usr/share/lintian/overrides').iterdir():
            lines = path.read_text().splitlines()
            for before, line in zip(['', *lines], lines):
                if not line.startswith('#'):
                    self.assertRegex(before, '^# .{20}', f'{path.name}: {line}')


class Names(PackagesTest):

    def test_contain_package_version_and_architecture(self):
        found = {path.name for path in self.packages.iterdir()
                 if path.suffix in ('.deb', '.gz')}
        self.assertEqual(found, {
            *(self.deb(name).name for name in DEBS),
            *(self.archive(name).name for name in ARCHIVES)})

    def test_come_with_checksums(self):
        for checksum in self.packages.glob('*.sha256'):
            call('sha256sum', '--check', '--strict', checksum.name, cwd=self.packages)
        self.assertEqual(len(list(self.packages.glob('*.sha256'))), len(DEBS) + len(ARCHIVES))


class Fields(PackagesTest):

    def test_name_version_and_architecture(self):
        for package in DEBS:
            self.assertEqual([self.field(package, name)
                              for name in ('Package', 'Version', 'Architecture')],
                             [package, VERSION, ARCHITECTURE])

    def test_first_line_of_the_description_fits_a_list(self):
        for package in DEBS:
            self.assertLessEqual(len(self.field(package, 'Description').splitlines()[0]), 72)

    def test_dependencies_of_the_program_are_a_new_enough_c_library(self):
        self.assert_depends('zn-resolution', BUILD / 'resolution', [])

    def test_dependencies_of_the_library_are_its_languages_runtime(self):
        self.assert_depends(f'libzn{MAJOR}', self.root / f'usr/{LIBRARIES}/libzn.so.{VERSION}',
                            [r'libstdc\+\+6 \(>= \d+\)', 'libgcc-s1'])

    def test_dependencies_of_the_tools_are_a_new_enough_c_library(self):
        self.assert_depends('zn-tools', self.root / 'usr/bin/zn-dump', [])

    def test_dependencies_of_the_xml_library_are_the_library_and_the_parser(self):
        self.assert_depends(f'libzn-xml{MAJOR}',
                            self.root / f'usr/{LIBRARIES}/libzn-xml.so.{VERSION}',
                            [r'libstdc\+\+6 \(>= \d+\)', 'libgcc-s1', r'libexpat1 \(>= 2\.4\)',
                             rf'libzn{MAJOR} \(= {VERSION}\)'])
        self.assertEqual(self.field('libzn-xml-dev', 'Depends'),
                         f'libzn-xml{MAJOR} (= {VERSION}), libzn-dev (= {VERSION}), libexpat1-dev')

    def assert_depends(self, package, file, others):
        first, *rest = self.field(package, 'Depends').split(', ')
        version = re.fullmatch(r'libc6 \(>= (\d+)\.(\d+)\)', first)
        self.assertGreaterEqual((int(version[1]), int(version[2])), max(glibc_versions(file)))
        self.assertEqual(len(rest), len(others))
        for dependency, pattern in zip(rest, others):
            self.assertRegex(dependency, f'^{pattern}$')

    def test_development_depends_on_the_library_of_the_same_version(self):
        self.assertEqual(self.field('libzn-dev', 'Depends'), f'libzn{MAJOR} (= {VERSION})')

    def test_library_has_its_triggers_and_shlibs(self):
        control = self.folder / 'control'
        call('dpkg-deb', '--control', self.deb(f'libzn{MAJOR}'), control)
        self.assertEqual((control / 'triggers').read_text(), 'activate-noawait ldconfig\n')
        self.assertEqual((control / 'shlibs').read_text(),
                         f'libzn {MAJOR} libzn{MAJOR} (>= {VERSION})\n')


class Contents(PackagesTest):

    def members(self, archive, prefix):
        """Returns the files and links by name. Asserts the owner, mode and prefix of every member."""
        files = {}
        for member in archive:
            name = member.name.removeprefix('./')
            with self.subTest(name):
                self.assertEqual((member.uid, member.gid), (0, 0))
                if member.isdir():
                    self.assertEqual(member.mode, 0o755)
                    continue
                executable = name.endswith(('cgi-bin/resolution', 'bin/zn-dump'))
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
            return set(self.members(archive, f'zn-{VERSION}-{ARCHITECTURE}/'))

    def test_are_the_installed_files_and_those_that_the_distribution_requires(self):
        for package, files in DEBS.items():
            with self.subTest(package):
                documents = {f'share/doc/{package}/copyright', f'share/doc/{package}/changelog.gz'}
                if (SOURCES / 'packaging/lintian' / package).exists():
                    documents.add(f'share/lintian/overrides/{package}')
                self.assertEqual(self.deb_members(package), files | documents)

    def test_of_archives_are_the_installed_files(self):
        for archive, files in ARCHIVES.items():
            with self.subTest(archive):
                self.assertEqual(self.archive_members(archive), files)

    def test_shared_with_packages_for_other_processors_come_unchanged_from_the_sources(self):
        folders = ('packaging/**/*', 'docs/*', 'libraries/**/*', 'CHANGELOG.md')
        sources = {path.read_bytes() for pattern in folders for path in SOURCES.glob(pattern)
                   if path.is_file()}
        for package in SAME_ON_EVERY_MACHINE:
            self.assertEqual(self.field(package, 'Multi-Arch'), 'same')
            for name in self.deb_members(package):
                if not name.startswith(f'{LIBRARIES}/'):
                    with self.subTest(name):
                        content = (self.root / 'usr' / name).read_bytes()
                        if name.endswith('.gz'):
                            content = gzip.decompress(content)
                        self.assertTrue(content in sources)

    def test_are_dated_by_the_newest_entry_of_the_changelog_which_is_this_version(self):
        for package in DEBS:
            path = self.root / f'usr/share/doc/{package}/changelog.gz'
            newest = gzip.decompress(path.read_bytes()).decode()
            self.assertTrue(newest.startswith(f'zn ({VERSION}) '), newest)
            date = parsedate_to_datetime(re.search(r'^ -- .*>  (.*)$', newest, re.MULTILINE)[1])
            self.assertEqual(path.stat().st_mtime, date.timestamp())

    def test_are_for_the_architecture_and_stripped(self):
        for file in ('lib/cgi-bin/resolution', 'bin/zn-dump', f'{LIBRARIES}/libzn.so.{VERSION}',
                     f'{LIBRARIES}/libzn-xml.so.{VERSION}'):
            path = self.root / 'usr' / file
            self.assertEqual(architecture(path), ARCHITECTURE)
            self.assertNotIn('.symtab', call(READELF, '--sections', '--wide', path))

    def test_contain_no_folder_of_the_machine_that_built_them(self):
        for path in self.root.rglob('*'):
            # A page may contain any folder in its examples.
            if path.suffix == '.md':
                continue
            if path.is_file() and not path.is_symlink() and 'var' not in path.parts:
                with self.subTest(path.name):
                    content = path.read_bytes()
                    self.assertNotIn(bytes(self.folder), content)

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

    def test_installed_library_reads_xml_only_if_linked_with_zn_xml(self):
        for libraries, answer in (('zn::zn', '1 0 0\n'), ('zn::zn;zn::xml', '1 42 2\n')):
            for shared in ('OFF', 'ON'):
                with self.subTest(libraries, shared=shared):
                    program = build_with_find_package(
                        self.folder / f'reader-{len(libraries)}-{shared}', self.root / 'usr',
                        f'-DREADER_LIBRARIES={libraries}', f'-DBUILD_SHARED_LIBS={shared}',
                        project='find_xml', program='reader')
                    self.assertEqual(run(program), answer)

    def test_unpacked_archive_is_found_and_linked(self):
        with tarfile.open(self.archive('libzn')) as archive:
            archive.extractall(self.folder / 'anywhere')
        prefix = self.folder / f'anywhere/zn-{VERSION}-{ARCHITECTURE}'
        program = build_with_find_package(self.folder / 'unpacked', prefix)
        self.assertEqual(run(program), OUTPUT)

    def test_pkg_config_finds_the_installed_library(self):
        flags = call('pkg-config', '--cflags', 'zn',
                     env=os.environ | {'PKG_CONFIG_LIBDIR': str(self.root / 'usr' / LIBRARIES / 'pkgconfig')})
        folder = Path(flags.strip().removeprefix('-I')).resolve()
        self.assertEqual(folder, (self.root / 'usr/include/zn').resolve())


if __name__ == '__main__':
    unittest.main()
