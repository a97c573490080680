"""busybox httpd runs the program."""

import unittest

from server import Server
from server_test import BODY, ServerTest


class Busybox(Server):
    package = 'busybox'

    def start(self):
        snippet = self.snippet('busybox-httpd.conf', HOME=self.home)
        self.spawn('busybox', 'httpd', '-f', '-c', snippet, '-p', f'127.0.0.1:{self.port}',
                   **self.sdk)


class BusyboxTest(ServerTest, unittest.TestCase):
    make = Busybox
    # The server passes HEAD to the program, which ignores the method and writes the body.
    head_body = BODY
    # The server closes the connection without a response.
    failed_start = rb'\A\Z'


if __name__ == '__main__':
    unittest.main()
