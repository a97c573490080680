"""Runs a program against the camera simulator, through an emulator if it needs one.

The build sets these environment variables:

    ZN_SIMULATOR  the folder of the simulator's libsdk.so
    ZN_EMULATOR   the command that runs the target's programs, empty for none
"""

import os
import shlex
import subprocess
import tempfile
from dataclasses import dataclass, field
from pathlib import Path

SIMULATOR = Path(os.environ['ZN_SIMULATOR'])
EMULATOR = shlex.split(os.environ.get('ZN_EMULATOR', ''))
PROFILES = Path(__file__).parents[2] / 'sdk' / 'simulator' / 'profiles'

# Seconds after which a program counts as hanging.
TIMEOUT = 60


@dataclass
class Call:
    """A call to the simulator, from one line of its record."""
    name: str
    fields: dict

    @property
    def result(self):
        return int(self.fields['result'])

    def __getitem__(self, name):
        return self.fields[name]


@dataclass
class Run:
    """The result of running a program."""
    status: int
    output: bytes
    errors: str
    calls: list = field(default_factory=list)


def parse_record(text):
    calls = []
    for line in text.splitlines():
        name, *fields = line.split('\t')
        calls.append(Call(name, dict(item.split('=', 1) for item in fields)))
    return calls


def environment(**simulator):
    """Returns the environment of a program. It contains the simulator's variables, set by keywords, and the
    caller's variables for sanitizers, coverage and emulators, but no others."""
    passed = {name: value for name, value in os.environ.items()
              if name.endswith('SAN_OPTIONS') or name.startswith(('QEMU_', 'GCOV_'))}
    told = {f'CSDK_SIMULATOR_{name.upper()}': str(value) for name, value in simulator.items()}
    return {'LD_LIBRARY_PATH': str(SIMULATOR), **passed, **told}


def command(program, *arguments):
    return [*EMULATOR, str(program), *arguments]


def run(program, *arguments, sizes=None, text=None, extra_environment=None, process=None,
        **simulator):
    """Runs a program to its end and returns its output and its calls.

    sizes    the camera's sizes, such as '640x480'
    text     the bytes of the camera's profile, instead of sizes
    process  further arguments of subprocess.run
    Other keywords are the simulator's options, such as profile=... or init_result=...
    """
    with tempfile.TemporaryDirectory() as folder:
        if sizes is not None:
            text = ''.join(f'{size}\n' for size in sizes).encode()
        if text is not None:
            simulator['profile'] = Path(folder, 'profile.txt')
            simulator['profile'].write_bytes(text)
        record = Path(simulator.setdefault('record', Path(folder, 'record.txt')))
        streams = {'stdin': subprocess.DEVNULL, 'stdout': subprocess.PIPE,
                   'stderr': subprocess.PIPE}
        done = subprocess.run(command(program, *arguments), check=False, timeout=TIMEOUT,
                              env={**environment(**simulator), **(extra_environment or {})},
                              **{**streams, **(process or {})})
        calls = parse_record(record.read_text()) if record.is_file() else []
        return Run(done.returncode, done.stdout, (done.stderr or b'').decode(), calls)
