"""The documents describe the tree correctly, their links work, and every public name is documented."""

import os
import re
import subprocess
import tempfile
import unittest
from pathlib import Path

from page import SOURCES, table, text

VERSION = os.environ['ZN_VERSION']
LIBRARY = SOURCES / 'libraries/src'
FOLDERS = {path.name: path for path in LIBRARY.iterdir()} | {'app': SOURCES / 'app'}
PAGES = [SOURCES / 'README.md', SOURCES / 'CHANGELOG.md', SOURCES / 'CONTRIBUTING.md',
         *SOURCES.glob('docs/*.md'), *SOURCES.glob('sdk/**/*.md')]


def included(path):
    """Returns the project's headers that a file includes, as its include lines name them."""
    return re.findall(r'^#include "(.*?)"', path.read_text(), re.MULTILINE)


def folder_of(header):
    return 'sdk' if header == 'csdk.h' else header.split('/')[0]


def folders_included(folder, pattern):
    headers = {folder_of(header) for path in FOLDERS[folder].rglob(pattern)
               for header in included(path)}
    return headers - {folder}


class Architecture(unittest.TestCase):

    def setUp(self):
        self.by_headers = {name: folders_included(name, '*.h') for name in FOLDERS}
        self.by_sources = {name: folders_included(name, '*.cpp') - self.by_headers[name]
                           for name in FOLDERS}

    def test_table_lists_the_includes(self):
        rows = {row[0].strip('`'): [set(re.findall(r'`(\w+)`', cell)) for cell in row[1:]]
                for row in table('docs/architecture.md', 'only its sources include')}
        self.assertEqual(rows, {name: [self.by_headers[name], self.by_sources[name]]
                                for name in FOLDERS})

    def test_drawing_shows_the_includes(self):
        drawn = set(re.findall(r'<line id="(\w+)-(\w+)" class="(\w+)"',
                               text('docs/architecture.svg')))
        expected = {(name, other, kind) for kind, graph in
                    (('header', self.by_headers), ('source', self.by_sources))
                    for name, others in graph.items() for other in others}
        self.assertEqual(drawn, expected)

    def test_headers_do_not_include_each_other_in_circles(self):
        done, open_ones = set(), []

        def visit(header):
            self.assertNotIn(header, open_ones)
            if header not in done:
                open_ones.append(header)
                for other in included(LIBRARY / header):
                    visit(other)
                done.add(open_ones.pop())

        for path in LIBRARY.rglob('*.h'):
            visit(str(path.relative_to(LIBRARY)))
        self.assertGreater(len(done), 19)

    def test_public_headers_do_not_include_internal_ones(self):
        for path in LIBRARY.glob('*/*.h'):
            self.assertEqual([header for header in included(path) if '/internal/' in header], [])


class Commands(unittest.TestCase):

    def test_table_of_contributing_lists_every_command_and_no_other(self):
        listed = {re.match(r'`([^ `]+)', row[0])[1].removeprefix('./')
                  for row in table('CONTRIBUTING.md', 'for')}
        commands = {str(path.relative_to(SOURCES))
                    for path in [*SOURCES.glob('*'), *SOURCES.glob('tools/*')]
                    if path.is_file() and os.access(path, os.X_OK)}
        self.assertEqual(listed, commands - {'tools/install-packages'})


class Links(unittest.TestCase):

    def anchors(self, path):
        titles = re.findall(r'^#+ (.*)$', path.read_text(), re.MULTILINE)
        return {re.sub(r'[^\w -]', '', title).strip().lower().replace(' ', '-')
                for title in titles}

    def test_have_existing_targets(self):
        count = 0
        for page in PAGES:
            for target in re.findall(r'\]\(([^)\s]+)\)', page.read_text()):
                if '://' in target:
                    continue
                count += 1
                with self.subTest(page=page.name, target=target):
                    path, _, anchor = target.partition('#')
                    goal = page.parent / path if path else page
                    self.assertTrue(goal.exists())
                    if anchor:
                        self.assertIn(anchor, self.anchors(goal))
        self.assertGreater(count, 20)


class Changelog(unittest.TestCase):

    def test_has_an_entry_for_this_version(self):
        self.assertRegex(text('CHANGELOG.md'), rf'(?m)^## \[{re.escape(VERSION)}\]')


class Manual(unittest.TestCase):

    def test_page_is_well_formed(self):
        done = subprocess.run(['mandoc', '-T', 'lint', SOURCES / 'packaging/resolution.1'],
                              stdout=subprocess.PIPE, stderr=subprocess.STDOUT, encoding='utf-8',
                              timeout=60, check=False)
        self.assertEqual((done.returncode, done.stdout), (0, ''))


class Reference(unittest.TestCase):

    def make(self, tree):
        with tempfile.TemporaryDirectory() as folder:
            done = subprocess.run(['doxygen', 'docs/Doxyfile'], cwd=tree, stdout=subprocess.PIPE,
                                  stderr=subprocess.STDOUT, encoding='utf-8', timeout=300,
                                  env=os.environ | {'ZN_OUTPUT': folder}, check=False)
            return done.returncode, done.stdout, Path(folder, 'html/index.html').exists()

    def test_documents_everything_public(self):
        self.assertEqual(self.make(SOURCES), (0, '', True))

    def test_detects_missing_documentation(self):
        with tempfile.TemporaryDirectory() as folder:
            tree = Path(folder)
            (tree / 'libraries/src').mkdir(parents=True)
            (tree / 'docs').symlink_to(SOURCES / 'docs')
            (tree / 'sdk').symlink_to(SOURCES / 'sdk')
            header = tree / 'libraries/src/x.h'
            header.write_text('/// A class.\nclass X { public: void f(); };\n')
            status, messages, _ = self.make(tree)
        self.assertNotEqual(status, 0)
        self.assertIn('Member f() (function) of class X is not documented', messages)


if __name__ == '__main__':
    unittest.main()
