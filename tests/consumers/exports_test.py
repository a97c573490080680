"""The shared library exports every public name and the type information that exceptions and casts need,
but nothing internal."""

import re
import unittest

from installed import NM, READELF, SOURCES, VERSION, InstalledTest, call, needed


def internal_names():
    """Returns the classes and functions that the internal headers declare at namespace level, that is,
    on lines without indentation."""
    names = set()
    for header in SOURCES.glob('libraries/src/**/internal/*.h'):
        for line in header.read_text().splitlines():
            if found := re.match(r'(?:class|struct) (\w+)|\w.*?(\w+)\(', line):
                names.add(found[1] or found[2])
    return names


INTERNAL = rf'\bzn\w+::({"|".join(internal_names())})\b'


def symbols(*options):
    """Returns the demangled names of the defined external symbols."""
    found = set()
    for line in call(NM, '--demangle', '--defined-only', '--extern-only', *options).splitlines():
        fields = line.split(maxsplit=2)
        if len(fields) == 3 and fields[1] in 'TDBRVWu':
            found.add(fields[2])
    return found


class Exports(InstalledTest):

    def setUp(self):
        self.shared = symbols('--dynamic', self.installed('**/libzn.so'))
        self.static = symbols(self.installed('**/libzn.a'))

    def test_are_the_librarys_own_names(self):
        ours = r'(zn_|(typeinfo( name)?|vtable) for zn|(non-virtual thunk to )?zn\w+::)'
        self.assertEqual([name for name in self.shared if not re.match(ours, name)], [])

    def test_are_all_that_is_public(self):
        public = {name for name in self.static
                  if re.search(r'\bzn\w+::|^zn_', name) and not re.search(INTERNAL, name)
                  and not re.search(r'\bstd::\w+[<:].*\bzn\w+::', name.split('(')[0])}
        self.assertEqual(public - self.shared, set())
        self.assertGreater(len(public), 200)

    def test_are_declared_in_public_headers(self):
        headers = ' '.join(path.read_text() for path in SOURCES.glob('libraries/src/**/*.h')
                           if path.parent.name != 'internal')
        functions = {found[1] for name in self.shared
                     if (found := re.search(r'(\w+)(\[abi:\w+\])?\(', name))}
        self.assertEqual(functions - set(re.findall(r'\w+', headers)), set())
        self.assertGreater(len(functions), 100)

    def test_are_not_internal(self):
        self.assertTrue([name for name in self.static if re.search(INTERNAL, name)])
        self.assertEqual([name for name in self.shared if re.search(INTERNAL, name)], [])

    def test_hold_what_exceptions_and_casts_need(self):
        for name in ('zntl::Exception', 'znsl::Serializable', 'znsl::MemIOStream',
                     'znvl::Resolution', 'znst::WaitObject', 'zntl::Countdown'):
            for table in ('typeinfo', 'typeinfo name', 'vtable'):
                self.assertIn(f'{table} for {name}', self.shared)


class Names(InstalledTest):

    def test_of_the_file_and_the_soname_carry_the_version(self):
        library = self.installed('**/libzn.so').resolve()
        self.assertEqual(library.name, f'libzn.so.{VERSION}')
        major = VERSION.split('.', maxsplit=1)[0]
        self.assertIn(f'soname: [libzn.so.{major}]', call(READELF, '--dynamic', library))

    def test_of_needed_libraries_are_the_languages_runtime(self):
        allowed = r'lib(stdc\+\+|gcc_s|m|c)\.so\.\d+|ld-linux[-\w.]*\.so\.\d'
        self.assertEqual([name for name in needed(self.installed('**/libzn.so'))
                          if not re.fullmatch(allowed, name)], [])


if __name__ == '__main__':
    unittest.main()
