"""A camera with a web server: the program, the SDK and a server on a free loopback port.

A server is a context manager. It stops its processes by their process ids when the context ends; the
kernel stops them if the tests are killed. If the tests run as root, the server runs as the user nobody.
"""

import contextlib
import ctypes
import http.client
import os
import pwd
import shlex
import shutil
import signal
import socket
import subprocess
import tempfile
import time
from pathlib import Path

from simulator import EMULATOR, SIMULATOR

PROGRAM = Path(os.environ['ZN_PROGRAM'])
SNIPPETS = Path(__file__).parents[2] / 'packaging' / 'servers'

PATH = '/cgi-bin/resolution'

# The time limit in seconds for a start, a stop or a response.
PATIENCE = 30

PAGE = os.sysconf('SC_PAGE_SIZE')

PR_SET_PDEATHSIG = 1
libc = ctypes.CDLL(None)


def unprivileged():
    """Returns arguments of subprocess.Popen that select an unprivileged user."""
    if os.getuid() != 0:
        return {}
    nobody = pwd.getpwnam('nobody')
    return {'user': nobody.pw_uid, 'group': nobody.pw_gid, 'extra_groups': []}


def free_port():
    with socket.socket() as probe:
        probe.bind(('127.0.0.1', 0))
        return probe.getsockname()[1]


class Server:
    """The base of all servers. A subclass configures and starts its server in start()."""

    package = None

    def __init__(self, **simulator):
        """The keywords are the simulator's options, such as init_result=1."""
        self.simulator = {f'CSDK_SIMULATOR_{name.upper()}': str(value)
                          for name, value in simulator.items()}

    # For subclasses.

    def start(self):
        """Writes the configuration and starts the processes, the server itself last."""
        raise NotImplementedError

    def snippet(self, name, **values):
        """Writes a configuration of the deployment guide with its placeholders replaced; returns its
        path."""
        text = (SNIPPETS / name).read_text()
        for placeholder, value in values.items():
            text = text.replace(f'@{placeholder}@', str(value))
        assert '@' not in text, f'{name} has more placeholders'
        path = self.folder / name
        path.write_text(text)
        return path

    def write(self, name, text):
        path = self.folder / name
        path.write_text(text)
        return path

    def spawn(self, *command, **environment):
        """Starts a foreground process in a separate session and process group."""
        if not shutil.which(command[0]):
            raise RuntimeError(f'{command[0]} is not installed: it comes with the package '
                               f'{self.package}')
        process = subprocess.Popen(
            [str(word) for word in command], cwd=self.folder, stdin=subprocess.DEVNULL,
            stdout=self.log, stderr=self.log, start_new_session=True,
            preexec_fn=lambda: libc.prctl(PR_SET_PDEATHSIG, signal.SIGTERM),
            env={'PATH': os.environ['PATH'], **environment}, **unprivileged())
        self.cleanup.callback(self.stop, process)
        self.processes.append(process)
        return process

    @property
    def sdk(self):
        """The program's environment variables."""
        return {'LD_LIBRARY_PATH': str(self.folder / 'lib'), **self.simulator}

    # For tests.

    def __enter__(self):
        for attempt in range(5):
            with contextlib.ExitStack() as self.cleanup:
                self.deploy()
                self.processes = []
                self.port = free_port()
                self.start()
                if self.is_ready():
                    self.cleanup = self.cleanup.pop_all()
                    return self
                # Another process may have taken the port.
                failure = self.messages()
        raise RuntimeError(f'{type(self).__name__} does not start: {failure}')

    def __exit__(self, *_):
        self.cleanup.close()

    def messages(self):
        return (self.folder / 'log').read_text(errors='replace')

    def get(self, method='GET', path=PATH, body=None):
        """Sends a request on a new connection and returns the response and its body."""
        connection = http.client.HTTPConnection('127.0.0.1', self.port, timeout=PATIENCE)
        with contextlib.closing(connection):
            connection.request(method, path, body)
            response = connection.getresponse()
            return response, response.read()

    def connect(self):
        return socket.create_connection(('127.0.0.1', self.port), PATIENCE)

    def exchange(self, request):
        """Sends these bytes and returns all bytes of the response."""
        with self.connect() as connection:
            connection.sendall(request)
            return b''.join(iter(lambda: connection.recv(65536), b''))

    def memory(self):
        """Returns the resident memory, in KiB, of the server's largest process."""
        sessions = {process.pid for process in self.processes}
        sizes = [0]
        for process in Path('/proc').glob('[0-9]*'):
            # The process may end while its files are read.
            with contextlib.suppress(OSError):
                name, fields = (process / 'stat').read_text().rsplit(')', 1)
                fields = fields.split()
                if int(fields[3]) in sessions and not name.endswith(f'({PROGRAM.name}'):
                    sizes.append(int(fields[21]) * PAGE // 1024)
        return max(sizes)

    # Private.

    def deploy(self):
        """Creates a folder with the camera's files that the server's user can read."""
        self.folder = Path(self.cleanup.enter_context(
            tempfile.TemporaryDirectory(prefix='zn-server-')))
        self.log = self.cleanup.enter_context(open(self.folder / 'log', 'ab'))
        self.home = self.folder / 'www'
        self.program = self.home / 'cgi-bin' / 'resolution'
        self.program.parent.mkdir(parents=True)
        (self.folder / 'lib').mkdir()
        shutil.copy(SIMULATOR / 'libsdk.so', self.folder / 'lib')
        if EMULATOR:
            target = shutil.copy(PROGRAM, self.folder / 'program')
            self.program.write_text(f'#!/bin/sh\nexec {shlex.join([*EMULATOR, str(target)])}\n')
            self.program.chmod(0o755)
        else:
            shutil.copy(PROGRAM, self.program)
        self.folder.chmod(0o755)
        if os.getuid() == 0:
            for path in (self.folder, self.folder / 'log'):
                shutil.chown(path, 'nobody')

    def is_ready(self):
        deadline = time.monotonic() + PATIENCE
        while time.monotonic() < deadline:
            if any(process.poll() is not None for process in self.processes):
                return False
            with contextlib.suppress(OSError), self.connect() as connection:
                # If nobody listens on the port, the kernel may connect the socket to itself.
                if connection.getsockname() != connection.getpeername():
                    return True
            time.sleep(0.02)
        return False

    def stop(self, process):
        """Stops a process and its process group."""
        process.terminate()
        with contextlib.suppress(subprocess.TimeoutExpired):
            process.wait(PATIENCE)
        with contextlib.suppress(ProcessLookupError):
            os.killpg(process.pid, signal.SIGKILL)
        process.wait()
