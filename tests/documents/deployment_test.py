"""Executes the commands of the deployment guide, except the copying to a camera, and those of the
tutorial's installation. Compares the guide's configurations with the files."""

import os
import shlex
import shutil
import subprocess
import tempfile
import unittest
from pathlib import Path

from page import SOURCES, block, blocks

PAGE = 'docs/deployment.md'
SIMULATOR = Path(os.environ['ZN_SIMULATOR'])
EMULATOR = os.environ['ZN_EMULATOR'].split()
CXX = os.environ['ZN_CXX']
ANSWER = b'Content-Type: text/plain\r\n\r\n[{"resolution": "160x120", "default": true },'


class Configurations(unittest.TestCase):

    def test_are_the_files_that_the_server_tests_use(self):
        quotes = {mark: code for mark, code in blocks(PAGE) if mark.endswith('.conf')}
        files = {str(path.relative_to(SOURCES)): path.read_text()
                 for path in SOURCES.glob('packaging/servers/*.conf')}
        self.assertEqual(quotes, files)


class CommandsTest(unittest.TestCase):
    """A test that executes commands in a copy of the tree."""

    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.tree = Path(folder.name)
        for name in ('app', 'libraries', 'sdk', 'cmake', 'docs', 'packaging', 'examples',
                     'tools', 'zn-dump', 'CMakeLists.txt', 'CHANGELOG.md'):
            (self.tree / name).symlink_to(SOURCES / name)

    def follow(self, commands):
        done = subprocess.run(['sh', '-ec', commands], cwd=self.tree, env=os.environ | {'CXX': CXX},
                              stdin=subprocess.DEVNULL, stdout=subprocess.PIPE,
                              stderr=subprocess.STDOUT, encoding='utf-8', timeout=500, check=False)
        self.assertEqual(done.returncode, 0, done.stdout)


class Deployment(CommandsTest):
    """Uses the folder of the stand-in SDK instead of the camera maker's."""

    def assert_answers(self, program):
        done = subprocess.run([*EMULATOR, program], stdout=subprocess.PIPE, timeout=60,
                              env=os.environ | {'LD_LIBRARY_PATH': str(SIMULATOR)}, check=True)
        self.assertEqual(done.stdout[:len(ANSWER)], ANSWER)

    def test_one_line(self):
        shutil.copy(SIMULATOR / 'libsdk.so', self.tree)
        self.follow(block(PAGE, 'recipe'))
        self.assert_answers(self.tree / 'resolution')

    @unittest.skipUnless('gnueabihf' in CXX, 'the guide builds for a camera')
    def test_cmake(self):
        (self.tree / 'camera.cmake').write_text(block(PAGE, 'cross file'))
        commands = block(PAGE, 'build')
        self.assertIn('/opt/camera/lib/libsdk.so', commands)
        self.follow(commands.replace('/opt/camera/lib', shlex.quote(str(SIMULATOR))))
        self.assert_answers(self.tree / 'build/camera-maker/resolution')
        self.follow(block(PAGE, 'try'))


class Installation(CommandsTest):

    @unittest.skipIf(EMULATOR, 'once is enough')
    def test_of_the_library(self):
        page = 'docs/tutorial.md'
        prefix = self.tree / 'opt'
        self.follow(block(page, 'install').replace('/opt/zn', str(prefix)))
        project = self.tree / 'project'
        project.mkdir()
        (project / 'CMakeLists.txt').write_text(block(page, 'cmake'))
        (project / 'tutorial.cpp').symlink_to(SOURCES / 'examples/tutorial.cpp')
        self.follow('cd project\n' + block(page, 'use').replace('/opt/zn', str(prefix)))
        self.follow('project/build/tutorial objects')


if __name__ == '__main__':
    unittest.main()
