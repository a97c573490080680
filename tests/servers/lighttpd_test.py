"""lighttpd runs the program."""

import unittest

from server import Server
from server_test import ServerTest


class Lighttpd(Server):
    package = 'lighttpd'

    def start(self):
        snippet = self.snippet('lighttpd.conf', PROGRAM=self.program)
        variables = ', '.join(f'"{name}" => "{value}"' for name, value in self.sdk.items())
        self.spawn('lighttpd', '-D', '-f', self.write('main.conf', f'''
server.document-root = "{self.home}"
server.bind = "127.0.0.1"
server.port = {self.port}
server.modules = ( "mod_setenv" )
setenv.set-environment = ( {variables} )
include "{snippet}"
'''))


class LighttpdTest(ServerTest, unittest.TestCase):
    make = Lighttpd
    failed_start = rb'(?s)\AHTTP/1\.1 500 .*<title>500 Internal Server Error</title>'


if __name__ == '__main__':
    unittest.main()
