"""Tests ./camera as a user: the command, the addresses that it prints, and the list and page there."""

import contextlib
import http.client
import os
import re
import signal
import socket
import subprocess
import tempfile
import unittest
from pathlib import Path

from browser import browser

CAMERA = os.environ['ZN_COMMAND']
TARGET = os.environ['ZN_TARGET']
START_LIMIT = 240  # seconds; a busy machine may have to download and build first
BOOT_LIMIT = 30  # seconds, by the camera's own clock


def free_port():
    with socket.create_server(('127.0.0.1', 0)) as server:
        return server.getsockname()[1]


def start(*arguments, **variables):
    return subprocess.Popen([CAMERA, *arguments], env=os.environ | variables, encoding='utf-8',
                            stdin=subprocess.DEVNULL, stdout=subprocess.PIPE,
                            stderr=subprocess.PIPE)


def run(*arguments):
    """Runs the command until it ends; returns its status and messages."""
    with start(*arguments) as process:
        _, messages = process.communicate(timeout=START_LIMIT)
    return process.returncode, messages


@contextlib.contextmanager
def camera(*arguments, **variables):
    """Runs a camera while the context is open; yields its port."""
    port = free_port()
    page = f'http://127.0.0.1:{port}/\n'
    with start(*arguments, '--target', TARGET, '--port', str(port), **variables) as process:
        try:
            addresses = process.stdout.readline(), process.stdout.readline()
            if addresses != (page, page[:-1] + 'cgi-bin/resolution\n'):
                raise AssertionError(f'no addresses but {addresses}: {process.communicate()[1]}')
            yield port
        finally:
            process.send_signal(signal.SIGTERM)
            _, messages = process.communicate(timeout=30)
    if process.returncode != 0:
        raise AssertionError(f'stopped with status {process.returncode}: {messages}')
    boot = float(re.search(r'ready ([\d.]+) s after its start', messages)[1])
    if boot > BOOT_LIMIT:
        raise AssertionError(f'it took the camera {boot} s to serve')


def fetch(port, method='GET'):
    connection = http.client.HTTPConnection('127.0.0.1', port, timeout=30)
    with contextlib.closing(connection):
        connection.request(method, '/cgi-bin/resolution')
        response = connection.getresponse()
        return response.status, response.getheader('Content-Type'), response.read().decode()


def listing(*sizes):
    entries = [f'{{"resolution": "{size}", "default": {"false" if index else "true"} }}'
               for index, size in enumerate(sizes)]
    return 200, 'text/plain', f'[{",".join(entries)}]'


class Camera(unittest.TestCase):

    @classmethod
    def setUpClass(cls):
        cls.page = cls.enterClassContext(browser())

    def open(self, port):
        self.page.open(f'http://127.0.0.1:{port}/')

    def assert_offers(self, port, *sizes):
        """Asserts that the list and the page offer these sizes."""
        self.assertEqual(fetch(port), listing(*sizes))
        self.open(port)
        self.assertEqual(self.page.sizes, [size.replace('x', ' × ') for size in sizes])
        self.assertEqual(self.page.chosen, (sizes[0], self.page.sizes[0]))
        self.assertEqual(self.page.default, self.page.sizes[:1])

    def test_offers_the_sizes_of_a_profile_until_it_is_stopped(self):
        with camera('indoor') as port:
            for _ in range(2):
                self.assert_offers(port, '160x90', '160x120', '176x144', '240x180', '320x180')
            self.assertEqual(fetch(port, 'HEAD')[:2], (200, 'text/plain'))
        with self.assertRaises(ConnectionRefusedError):
            fetch(port)

        self.page.ask_again()
        self.assertEqual(self.page.note, 'The camera cannot be reached')

    def test_offers_the_sizes_of_another_profile(self):
        with camera('unordered') as port:
            self.assert_offers(port, '0x0', '7x199', '96x96', '160x120', '160x200', '176x144',
                               '176x150', '319x1', '320x200')

    def test_without_a_profile_has_the_built_in_sizes(self):
        with camera() as port:
            self.assert_offers(port, '160x120', '176x144', '320x180')

    def test_without_small_sizes_offers_nothing(self):
        with tempfile.TemporaryDirectory() as folder:
            profile = Path(folder, 'large.txt')
            profile.write_text('640x480\n321x200\n')
            with camera(str(profile)) as port:
                self.assertEqual(fetch(port), (200, 'text/plain', '[]'))
                self.open(port)
        self.assertEqual((self.page.note, self.page.sizes), ('The camera offers no small size', []))

    def test_whose_sdk_does_not_start_closes_the_connection_without_an_answer(self):
        with camera(CSDK_SIMULATOR_INIT_RESULT='1') as port:
            with self.assertRaises(http.client.RemoteDisconnected):
                fetch(port)
            self.open(port)
        self.assertEqual((self.page.note, self.page.sizes), ("The camera's SDK did not start", []))


class Calls(unittest.TestCase):
    """Calls of the command that start no camera."""

    def test_port_in_use(self):
        with socket.create_server(('127.0.0.1', 0)) as server:
            port = server.getsockname()[1]
            status, messages = run('--port', str(port))
        self.assertEqual(status, 1)
        self.assertIn(f'port {port} is in use', messages)

    def test_invalid_port(self):
        for port in ('0', '65536', 'x', '-1', ''):
            with self.subTest(port):
                status, messages = run('--port', port)
                self.assertEqual((status, messages.splitlines()[0]),
                                 (2, f'camera: no such port: {port}; '
                                     'a port is a number from 1 to 65535'))

    def test_unknown_target(self):
        status, messages = run('--target', 'arm64')
        self.assertEqual((status, messages.splitlines()[0]),
                         (2, 'camera: no such target: arm64; a camera is armhf or armel'))

    def test_option_without_its_value(self):
        for option in ('--port', '--target'):
            with self.subTest(option):
                status, messages = run(option)
                self.assertEqual((status, messages.splitlines()[0]),
                                 (2, f'camera: {option} needs a value'))

    def test_unknown_profile(self):
        status, messages = run('no-such-camera')
        self.assertEqual(status, 1)
        self.assertRegex(messages, r'^camera: no such camera profile: no-such-camera; .*indoor')

    def test_two_profiles(self):
        self.assertEqual(run('indoor', 'full-hd')[0], 2)

    def test_unknown_option(self):
        self.assertEqual(run('--colour')[0], 2)

    def test_help(self):
        with start('--help') as process:
            text = process.communicate(timeout=START_LIMIT)[0]
        self.assertEqual(process.returncode, 0)
        self.assertIn('./camera [PROFILE] [--port N] [--target armhf|armel]', text)


if __name__ == '__main__':
    unittest.main()
