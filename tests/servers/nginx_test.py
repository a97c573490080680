"""nginx serves the program, which fcgiwrap runs."""

import time
import unittest

from server import PATIENCE, Server
from server_test import ServerTest


class Nginx(Server):
    package = 'nginx or fcgiwrap'

    def start(self):
        wrapper = self.folder / 'fcgiwrap'
        self.spawn('fcgiwrap', '-s', f'unix:{wrapper}', **self.sdk)
        deadline = time.monotonic() + PATIENCE
        while not wrapper.exists() and time.monotonic() < deadline:
            time.sleep(0.01)
        snippet = self.snippet('nginx.conf', PROGRAM=self.program, FCGIWRAP_SOCKET=wrapper)
        temporary = '\n'.join(f'{name}_temp_path {self.folder}/{name};' for name in
                              ('client_body', 'fastcgi', 'proxy', 'scgi', 'uwsgi'))
        self.spawn('nginx', '-e', 'stderr', '-p', self.folder, '-c', self.write('main.conf', f'''
daemon off;
pid {self.folder}/pid;
error_log stderr;
events {{}}
http {{
    access_log off;
    {temporary}
    server {{
        listen 127.0.0.1:{self.port};
        root {self.home};
        include {snippet};
    }}
}}
'''))


class NginxTest(ServerTest, unittest.TestCase):
    make = Nginx
    failed_start = rb'(?s)\AHTTP/1\.1 502 .*An error occurred while reading CGI reply'


if __name__ == '__main__':
    unittest.main()
