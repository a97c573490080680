"""Other projects use the library in several ways; each test builds the same program and runs it.

The installed tree is moved first, because packages and copies are used at other paths, too.
"""

import os
import re
import subprocess
import unittest

from installed import (CC, CMAKE, CXX, HERE, OUTPUT, SOURCES, VERSION, WARNINGS, InstalledTest,
                       build_project, build_with_find_package, call, needed, run)

class ConsumerTest(InstalledTest):

    @classmethod
    def setUpClass(cls):
        super().setUpClass()
        cls.prefix = cls.prefix.rename(cls.folder / 'moved')


class CMakeProjects(ConsumerTest):

    def tree(self):
        return self.folder / self.id()

    def find(self, *options):
        return build_with_find_package(self.tree(), self.prefix, *options)

    def build(self, project, *options):
        return build_project(project, self.tree(), f'-DZN_SOURCES={SOURCES}', *options)

    def test_find_package_takes_the_static_library(self):
        program = self.find()
        self.assertEqual(run(program), OUTPUT)
        self.assertNotIn('libzn.so.1', needed(program))

    def test_find_package_takes_the_shared_library_when_the_project_builds_shared_ones(self):
        program = self.find('-DBUILD_SHARED_LIBS=ON')
        self.assertEqual(run(program), OUTPUT)
        self.assertIn('libzn.so.1', needed(program))

    def test_find_package_takes_this_major_version_up_to_its_own(self):
        major, minor, patch = map(int, VERSION.split('.'))
        taken = [f'{major}', f'{major}.0', f'{major}.{minor}', VERSION, VERSION]
        refused = [f'{major - 1}.9', f'{major + 1}', f'{major + 1}.0', f'{major}.{minor + 1}',
                   f'{major}.{minor}.{patch + 1}']
        # One project can search for all versions, because a search does not affect the next.
        project = self.folder / 'versions'
        project.mkdir()
        (project / 'CMakeLists.txt').write_text(f"""
            cmake_minimum_required(VERSION 3.18)
            project(consumer LANGUAGES CXX)
            foreach(wanted IN ITEMS {' '.join(taken + refused)})
                find_package(zn ${{wanted}} CONFIG QUIET)
                message(STATUS "found: ${{zn_FOUND}}")
            endforeach()
        """)
        said = call(CMAKE, '-S', project, '-B', project / 'build', '-G', 'Ninja',
                    f'-DCMAKE_CXX_COMPILER={CXX}', f'-Dzn_ROOT={self.prefix}')
        self.assertEqual(re.findall('found: (.*)', said),
                         ['1'] * len(taken) + ['0'] * len(refused))

    def test_subdirectory(self):
        self.assertEqual(run(self.build('subdirectory')), OUTPUT)

    def test_subdirectory_as_a_shared_library(self):
        program = self.build('subdirectory', '-DBUILD_SHARED_LIBS=ON')
        self.assertEqual(run(program), OUTPUT)
        self.assertIn('libzn.so.1', needed(program))

    def test_fetched_content(self):
        self.assertEqual(run(self.build('fetch_content')), OUTPUT)


class PkgConfig(ConsumerTest):

    def flags(self, *options):
        folder = self.installed('**/pkgconfig')
        return call('pkg-config', *options, 'zn',
                    env=os.environ | {'PKG_CONFIG_LIBDIR': str(folder)}).split()

    def test_knows_the_version(self):
        self.assertEqual(self.flags('--modversion'), [VERSION])

    def test_builds_with_the_shared_library(self):
        program = self.folder / 'pkg-config-shared'
        libraries = self.installed('**/libzn.so.1').parent
        call(CXX, '-std=c++17', *WARNINGS, HERE / 'consumer.cpp', *self.flags('--cflags', '--libs'),
             f'-Wl,-rpath,{libraries}', '-o', program)
        self.assertEqual(run(program), OUTPUT)
        self.assertIn('libzn.so.1', needed(program))

    def test_builds_a_static_program(self):
        program = self.folder / 'pkg-config-static'
        call(CXX, '-std=c++17', *WARNINGS, '-static', HERE / 'consumer.cpp',
             *self.flags('--static', '--cflags', '--libs'), '-o', program)
        self.assertEqual(run(program), OUTPUT)

    def test_builds_a_c_program(self):
        program = self.folder / 'pkg-config-c'
        libraries = self.installed('**/libzn.so.1').parent
        call(CC, '-std=c11', *WARNINGS, HERE / 'consumer.c', *self.flags('--cflags', '--libs'),
             f'-Wl,-rpath,{libraries}', '-o', program)
        self.assertEqual(run(program), '0\n')


class Headers(ConsumerTest):

    def compile_alone(self, header, compiler, language, standard, folder):
        source = f'#include "{header.relative_to(folder)}"\n'
        done = subprocess.run([compiler, '-x', language, f'-std={standard}', *WARNINGS,
                               '-fsyntax-only', '-I', folder, '-'],
                              input=source, capture_output=True, encoding='utf-8', timeout=120,
                              check=False)
        self.assertEqual((done.returncode, done.stderr), (0, ''))

    def test_compile_alone_in_each_standard(self):
        folder = self.prefix / 'include/zn'
        headers = sorted(folder.rglob('*.h'))
        self.assertGreaterEqual(len(headers), 19)
        for header in headers:
            for standard in ('c++17', 'c++20'):
                with self.subTest(header.name, standard=standard):
                    self.compile_alone(header, CXX, 'c++', standard, folder)

    def test_of_c_functions_compiles_as_c(self):
        folder = self.prefix / 'include/zn'
        self.compile_alone(folder / 'system/zn_portability.h', CC, 'c', 'c11', folder)

    def test_of_the_camera_sdk_compiles_as_c(self):
        folder = SOURCES / 'sdk'
        self.compile_alone(folder / 'csdk.h', CC, 'c', 'c11', folder)

    def test_that_are_internal_are_not_installed(self):
        self.assertEqual(list(self.prefix.rglob('*internal*')), [])


if __name__ == '__main__':
    unittest.main()
