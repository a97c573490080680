"""Apache runs the program, with each of its CGI modules."""

import contextlib
import http.client
import unittest

from server import Server
from server_test import ServerTest

MODULES = '/usr/lib/apache2/modules'


class Apache(Server):
    package = 'apache2-bin'
    modules = ('mpm_prefork', 'cgi')
    settings = ''

    def start(self):
        snippet = self.snippet('apache.conf', PROGRAM=self.program)
        variables = '\n'.join(f'SetEnv {name} "{value}"' for name, value in self.sdk.items())
        modules = '\n'.join(f'LoadModule {name}_module {MODULES}/mod_{name}.so'
                            for name in ('authz_core', 'alias', 'env', *self.modules))
        self.spawn('apache2', '-D', 'FOREGROUND', '-f', self.write('main.conf', f'''
{modules}
ServerName camera
ServerRoot {self.folder}
DefaultRuntimeDir {self.folder}
PidFile {self.folder}/pid
ErrorLog /dev/stderr
DocumentRoot {self.home}
Listen 127.0.0.1:{self.port}
{self.settings}
{variables}
Include {snippet}
'''))


class ApacheWithDaemon(Apache):
    """Apache with mod_cgid: a daemon starts the programs, and a socket carries input and output."""
    modules = ('mpm_event', 'cgid')
    settings = 'ScriptSock cgid'


class ApacheTest(ServerTest, unittest.TestCase):
    make = Apache
    failed_start = rb'(?s)\AHTTP/1\.1 500 .*<title>500 Internal Server Error</title>'


class ApacheWithDaemonTest(ServerTest, unittest.TestCase):
    make = ApacheWithDaemon
    failed_start = ApacheTest.failed_start

    def test_post(self):
        """The program does not read its input. With a body, the socket is then reset, and the response
        may be truncated. A POST without a body must work."""
        for _ in range(3):
            with contextlib.suppress(http.client.HTTPException):
                self.server.get('POST', body=b'x' * 1000)
            self.assert_answered(*self.server.get('POST'))


if __name__ == '__main__':
    unittest.main()
