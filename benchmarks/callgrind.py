"""Counts the instructions that a program executes, by the object file that they belong to."""

import re
import subprocess
import tempfile
from collections import Counter
from pathlib import Path


class Missing(Exception):
    pass


def count(program, *arguments, environment=None):
    """The instructions by object file (base name), and what the program printed."""
    with tempfile.TemporaryDirectory() as folder:
        profile = Path(folder, 'profile')
        command = ['valgrind', '--quiet', '--tool=callgrind', f'--callgrind-out-file={profile}',
                   '--compress-strings=no', program, *arguments]
        try:
            done = subprocess.run(command, env=environment or {}, stdin=subprocess.DEVNULL,
                                  stdout=subprocess.PIPE, stderr=subprocess.PIPE, check=False)
        except FileNotFoundError as error:
            raise Missing('valgrind is not installed: tools/install-packages measure') from error
        if done.returncode != 0:
            raise RuntimeError(f'{program} ended with status {done.returncode}\n'
                               f'{done.stderr.decode()}')
        return by_object(profile.read_text()), done.stdout


def by_object(profile):
    """Sums the self cost of every function in a callgrind profile."""
    counts = Counter()
    name = ''
    is_call = False
    for line in profile.splitlines():
        if line.startswith('ob='):
            name = Path(line[3:]).name
        elif line.startswith('calls='):
            is_call = True  # the next line is the cost of the called function
        elif re.match(r'[\d+*-]', line):
            if not is_call:
                counts[name] += int(line.split()[-1])
            is_call = False
    return counts
