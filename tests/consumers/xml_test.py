"""Programs read XML exactly if they are linked with zn::xml, in every order and kind of linking."""

import os
import unittest

from installed import (CXX, EXPAT, HERE, NM, READELF, SOURCES, VERSION, WARNINGS, InstalledTest,
                       build_project, build_with_find_package, call, needed, run)

READ = '1 42 2\n'
NOT_READ = '1 0 0\n'
MAJOR = VERSION.split('.', maxsplit=1)[0]


class XmlTest(InstalledTest):

    components = ('runtime', 'development', 'xml-runtime', 'xml-development')

    @classmethod
    def setUpClass(cls):
        super().setUpClass()
        cls.prefix = cls.prefix.rename(cls.folder / 'moved')

    def libraries(self):
        return self.installed('**/libzn.a').parent


class CMakeProjects(XmlTest):

    def build(self, libraries, *options):
        return build_with_find_package(self.folder / self.id(), self.prefix,
                                       f'-DREADER_LIBRARIES={libraries}', *options,
                                       project='find_xml', program='reader')

    def test_read_with_every_kind_and_order(self):
        for libraries, options in (
                ('zn::xml', []),
                ('zn::xml;zn::zn', []),
                ('zn::zn;zn::xml', []),
                ('zn::zn;zn::xml', ['-DBUILD_SHARED_LIBS=ON']),
                ('zn::zn;zn::xml', ['-DCMAKE_EXE_LINKER_FLAGS=-Wl,--as-needed']),
                ('zn::zn;zn::xml', ['-DBUILD_SHARED_LIBS=ON',
                                    '-DCMAKE_EXE_LINKER_FLAGS=-Wl,--as-needed,--gc-sections']),
                ('zn::zn;zn::xml', ['-DCMAKE_INTERPROCEDURAL_OPTIMIZATION=ON']),
                ('zn::static;zn::xml-static', []),
                ('zn::shared;zn::xml-shared', []),
                ('zn::static;zn::xml-shared', []),
                ('zn::shared;zn::xml-static', [])):
            with self.subTest(libraries, options=options):
                self.assertEqual(run(self.build(libraries, *options)), READ)

    def test_do_not_read_without_it(self):
        for kind in ('static', 'shared'):
            with self.subTest(kind):
                program = self.build(f'zn::{kind}')
                self.assertEqual(run(program), NOT_READ)
                self.assertNotIn(f'libzn-xml.so.{MAJOR}', needed(program))
                self.assertNotIn('libexpat.so.1', needed(program))

    def test_through_a_library_of_their_own(self):
        for kind in ('STATIC', 'SHARED'):
            with self.subTest(kind):
                project = self.folder / f'{self.id()}-{kind}'
                project.mkdir()
                (project / 'main.cpp').write_text('int answer();\nint main() { return answer(); }\n')
                reader = (HERE / 'reader.cpp').read_text().replace('int main()', 'int answer()')
                (project / 'reader.cpp').write_text(reader.replace(
                    'texts.size());', 'texts.size());\n    return 0;'))
                (project / 'CMakeLists.txt').write_text(f"""
                    cmake_minimum_required(VERSION 3.18)
                    project(reader LANGUAGES CXX)
                    find_package(zn CONFIG REQUIRED COMPONENTS xml)
                    add_library(part {kind} reader.cpp)
                    target_link_libraries(part PRIVATE zn::zn zn::xml)
                    add_executable(reader main.cpp)
                    target_link_libraries(reader PRIVATE part)
                """)
                config = next(self.prefix.glob('lib/**/zn-config.cmake')).parent
                self.assertEqual(run(build_project(project, project / 'build',
                                                   f'-Dzn_DIR={config}', program='reader')), READ)

    def test_in_a_subdirectory(self):
        for shared in ('OFF', 'ON'):
            with self.subTest(shared):
                self.assertEqual(run(build_project(
                    'subdirectory', self.folder / f'{self.id()}-{shared}', '-DZN_XML=ON',
                    f'-DZN_SOURCES={SOURCES}', f'-DBUILD_SHARED_LIBS={shared}', program='reader')),
                    READ)


class PkgConfig(XmlTest):

    def flags(self, *words):
        return call('pkg-config', *words,
                    env=os.environ | {'PKG_CONFIG_LIBDIR': str(self.libraries() / 'pkgconfig')}).split()

    def build(self, name, *flags):
        program = self.folder / name
        cross = [f'-L{EXPAT}', f'-Wl,-rpath,{EXPAT}'] if EXPAT else []
        call(CXX, '-std=c++17', *WARNINGS, HERE / 'reader.cpp', *flags, *cross,
             f'-Wl,-rpath,{self.libraries()}', '-o', program)
        return program

    def test_knows_the_version(self):
        self.assertEqual(self.flags('--modversion', 'zn-xml'), [VERSION])

    def test_builds_with_the_shared_libraries_in_any_order(self):
        for i, names in enumerate((['zn-xml'], ['zn', 'zn-xml'], ['zn-xml', 'zn'])):
            with self.subTest(names):
                program = self.build(f'shared-{i}', *self.flags('--cflags', '--libs', *names))
                self.assertEqual(run(program), READ)
                found = needed(program)
                self.assertLess(found.index(f'libzn-xml.so.{MAJOR}'), found.index(f'libzn.so.{MAJOR}'))

    def test_builds_when_the_linker_drops_what_is_not_needed(self):
        program = self.build('as-needed', '-Wl,--as-needed',
                             *self.flags('--cflags', '--libs', 'zn-xml'))
        self.assertEqual(run(program), READ)

    def test_builds_static_programs_in_any_order(self):
        for i, names in enumerate((['zn-xml'], ['zn', 'zn-xml'], ['zn-xml', 'zn'])):
            with self.subTest(names):
                program = self.build(f'static-{i}', '-static', '-Wl,--gc-sections',
                                     *self.flags('--static', '--cflags', '--libs', *names))
                self.assertEqual(run(program), READ)
                self.assertEqual(needed(program), [])

    def test_without_it_nothing_is_read(self):
        program = self.build('without', *self.flags('--cflags', '--libs', 'zn'))
        self.assertEqual(run(program), NOT_READ)


class SharedLibrary(XmlTest):

    def test_shows_the_operations_of_the_iterator_alone(self):
        def names(library, *options):
            lines = call(NM, '--dynamic', '--defined-only', *options, library).splitlines()
            return {line.split()[-1] for line in lines if ' A ' not in line}
        ours = names(self.installed('**/libzn-xml.so'))
        theirs = {name for name in names(self.installed('**/libzn.so')) if '5znxml' in name
                  and '4zntl' not in name.split('5znxml')[0]}
        self.assertEqual(ours - {'zn_xml_is_linked'}, theirs)

    def test_has_its_name_and_needs_the_parser(self):
        library = self.installed('**/libzn-xml.so').resolve()
        self.assertEqual(library.name, f'libzn-xml.so.{VERSION}')
        self.assertIn(f'soname: [libzn-xml.so.{MAJOR}]', call(READELF, '--dynamic', library))
        self.assertIn('libexpat.so.1', needed(library))
        self.assertIn(f'libzn.so.{MAJOR}', needed(library))


if __name__ == '__main__':
    unittest.main()
