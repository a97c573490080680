"""Reads the headers, symbols and relocations of the program's ELF file."""

import os
import re
import subprocess
from dataclasses import dataclass

from program import PROGRAM

READELF = os.environ['ZN_READELF']


@dataclass
class Symbol:
    name: str
    type: str
    size: int
    defined: bool


def readelf(*options):
    done = subprocess.run([READELF, '--wide', *options, PROGRAM], check=True, encoding='utf-8',
                          stdout=subprocess.PIPE, env={})
    return done.stdout


def header(name):
    return re.search(rf'^ *{name}: *(.*)$', readelf('--file-header'), re.MULTILINE)[1]


def dynamic(tag):
    """Returns the values of a tag of the dynamic section."""
    return re.findall(rf'\({tag}\) *(?:.*\[(.*)\]|(.*))$', readelf('--dynamic'), re.MULTILINE)


def needed():
    return [library for library, _ in dynamic('NEEDED')]


def run_path():
    """Returns the folders that the loader searches first, or an empty string."""
    return next((path for path, _ in dynamic('RUNPATH') + dynamic('RPATH')), '')


def symbols(*options):
    """Returns the symbols: all, or with --dyn-syms those that the loader uses."""
    found = []
    for line in readelf(*(options or ['--syms'])).splitlines():
        fields = line.split(maxsplit=7)
        if len(fields) == 8 and fields[0].rstrip(':').isdigit():
            name = re.sub(r'@.*', '', fields[7])
            found.append(Symbol(name, fields[3], int(fields[2], 0), fields[6] != 'UND'))
    return found


def copies():
    """Returns the names of the objects that the loader copies into the program."""
    names = []
    for line in readelf('--relocs').splitlines():
        fields = line.split()
        if len(fields) > 4 and re.fullmatch(r'R_\w+_COPY', fields[2]):
            names.append(re.sub(r'@.*', '', fields[4]))
    return names
