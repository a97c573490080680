"""The tests that every web server must pass with the program. A subclass names its server and defines the
responses that differ between servers."""

import unittest
from concurrent.futures import ThreadPoolExecutor

from server import PATH
from simulator import EMULATOR

BODY = (b'[{"resolution": "160x120", "default": true },'
        b'{"resolution": "176x144", "default": false },'
        b'{"resolution": "320x180", "default": false }]')

# An emulated program takes about fifty times as long to start.
REQUESTS = 60 if EMULATOR else 400
AT_ONCE = 8


def request(method):
    return f'{method} {PATH} HTTP/1.1\r\nHost: camera\r\nConnection: close\r\n\r\n'.encode()


class ServerTest:
    """A mixin for a TestCase, which defines:

    make          a function that returns the server; its arguments are the simulator's options
    head_body     the body of the response to HEAD
    failed_start  a regular expression for the whole response if the SDK does not start
    """

    make = None
    head_body = b''
    failed_start = None

    @classmethod
    def setUpClass(cls):
        cls.server = cls.enterClassContext(cls.make())

    def assert_answered(self, response, body):
        self.assertEqual((response.status, response.getheader('Content-Type'), body),
                         (200, 'text/plain', BODY))

    def test_get(self):
        self.assert_answered(*self.server.get())

    def test_get_of_an_old_client(self):
        header, body = self.server.exchange(b'GET %s HTTP/1.0\r\n\r\n' % PATH.encode()).split(
            b'\r\n\r\n', 1)
        self.assertRegex(header, rb'\AHTTP/1\.[01] 200 OK\r\n')
        self.assertRegex(header, rb'(?mi)^Content-Type: text/plain\r?$')
        self.assertEqual(body, BODY)

    def test_head(self):
        header, body = self.server.exchange(request('HEAD')).split(b'\r\n\r\n', 1)
        self.assertRegex(header, rb'\AHTTP/1\.[01] 200 OK\r\n')
        self.assertRegex(header, rb'(?mi)^Content-Type: text/plain\r?$')
        self.assertEqual(body, self.head_body)

    def test_query(self):
        for query in ('', 'a=1&b=2', '%s%n', '+-h', 'x' * 2000):
            with self.subTest(query[:20]):
                self.assert_answered(*self.server.get(path=f'{PATH}?{query}'))

    def test_post(self):
        """The program does not read the request's body."""
        for length in (0, 1, 1000, 100_000):
            with self.subTest(length):
                self.assert_answered(*self.server.get('POST', body=b'x' * length))

    def test_other_paths_are_not_answered_by_the_program(self):
        for path in ('/', '/resolution', f'{PATH}s', '/cgi-bin/'):
            with self.subTest(path):
                response, body = self.server.get(path=path)
                self.assertIn(response.status, (403, 404))
                self.assertNotIn(b'resolution"', body)

    def test_many_requests_at_once(self):
        with ThreadPoolExecutor(AT_ONCE) as clients:
            for answer in clients.map(lambda _: self.server.get(), range(REQUESTS)):
                self.assert_answered(*answer)

    def test_client_that_disconnects_does_not_affect_others(self):
        for _ in range(10):
            with self.server.connect() as client:
                client.sendall(b'GET %s HTTP/1.0\r\n\r\n' % PATH.encode())
        self.assert_answered(*self.server.get())

    def test_long_answer(self):
        with self.make(count=100_000) as server:
            response, body = server.get()
        self.assertEqual((response.status, response.getheader('Content-Type')),
                         (200, 'text/plain'))
        self.assertEqual(body.count(b'"resolution"'), 321 * 201)
        self.assertTrue(body.endswith(b'{"resolution": "320x200", "default": false }]'))

    def test_sdk_that_cannot_start(self):
        with self.make(init_result=1) as server:
            for _ in range(3):
                self.assertRegex(server.exchange(request('GET')), self.failed_start)
