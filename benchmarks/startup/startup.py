#!/usr/bin/env python3
"""What a request costs: the program beside a minimal C program that answers the same, and beside
one that does nothing but load the camera's library. Fails when the program exceeds its limits."""

import argparse
import json
import re
import statistics
import subprocess
import sys
from pathlib import Path

sys.path.insert(0, str(Path(__file__).resolve().parent.parent))
import callgrind

# Times what the minimal program takes, for the camera with 24 sizes.
INSTRUCTIONS_LIMIT = 1.15
MEMORY_LIMIT = 1.10

PROFILES = Path(__file__).resolve().parents[2] / 'sdk/simulator/profiles'
CAMERAS = {'24 sizes': PROFILES / 'benchmark.txt', 'built in': None}


def environment(camera):
    return {'CSDK_SIMULATOR_PROFILE': str(camera)} if camera else {}


def instructions(program, camera):
    counts, output = callgrind.count(program, environment=environment(camera))
    return counts.total(), output


def peak(launcher, program, camera):
    """KiB of resident memory: the mean of some runs, because how many pages of the C library the
    system maps along with those that are used depends on where it happens to lie."""
    def run():
        done = subprocess.run([launcher, program], env=environment(camera), check=True,
                              stdout=subprocess.DEVNULL, stderr=subprocess.PIPE)
        return int(done.stderr)
    return round(statistics.mean(run() for _ in range(50)))


def initialisers(program):
    """Functions that run before main()."""
    sections = subprocess.run(['readelf', '--sections', '--wide', program], check=True,
                              stdout=subprocess.PIPE, encoding='utf-8').stdout
    sizes = re.findall(r'\.(?:pre)?init_array +\w+ +\w+ +\w+ +(\w+)', sections)
    pointer = 8 if 'ELF64' in subprocess.run(['readelf', '--file-header', program], check=True,
                                             stdout=subprocess.PIPE, encoding='utf-8').stdout else 4
    return sum(int(size, 16) for size in sizes) // pointer


def measure(arguments):
    programs = {'resolution': arguments.program, 'minimal C': arguments.minimal,
                'load only': arguments.load}
    rows = []
    for name, camera in CAMERAS.items():
        outputs = {}
        for program, path in programs.items():
            count, outputs[program] = instructions(path, camera)
            rows.append({'camera': name, 'program': program, 'instructions': count,
                         'peak KiB': peak(arguments.peak, path, camera),
                         'initialisers': initialisers(path)})
        if outputs['resolution'] != outputs['minimal C']:
            sys.exit(f'the programs answer differently for the camera "{name}"')
    for row in rows:
        base = next(other for other in rows
                    if other['program'] == 'minimal C' and other['camera'] == row['camera'])
        row['instructions ratio'] = row['instructions'] / base['instructions']
        row['memory ratio'] = row['peak KiB'] / base['peak KiB']
    return rows


def table(rows):
    lines = [f'{"camera":<10} {"program":<12} {"instructions":>13} {"ratio":>6} {"peak KiB":>9} '
             f'{"ratio":>6} {"initialisers":>13}']
    lines += [f'{row["camera"]:<10} {row["program"]:<12} {row["instructions"]:>13,} '
              f'{row["instructions ratio"]:>6.3f} {row["peak KiB"]:>9,} '
              f'{row["memory ratio"]:>6.3f} {row["initialisers"]:>13}' for row in rows]
    return '\n'.join(lines)


def faults(rows):
    for row in rows:
        if row['program'] != 'resolution' or row['camera'] != '24 sizes':
            continue
        if row['instructions ratio'] > INSTRUCTIONS_LIMIT:
            yield (f'{row["camera"]}: {row["instructions ratio"]:.3f} times the instructions of '
                   f'the minimal program; the limit is {INSTRUCTIONS_LIMIT}')
        if row['memory ratio'] > MEMORY_LIMIT:
            yield (f'{row["camera"]}: {row["memory ratio"]:.3f} times the memory of the minimal '
                   f'program; the limit is {MEMORY_LIMIT}')


def main():
    parser = argparse.ArgumentParser(description=__doc__)
    for name in ('program', 'minimal', 'load', 'peak'):
        parser.add_argument(f'--{name}', required=True, metavar='PROGRAM')
    parser.add_argument('--json', type=Path, help='write the figures to this file too')
    arguments = parser.parse_args()
    rows = measure(arguments)
    print(table(rows))
    if arguments.json:
        arguments.json.write_text(json.dumps(rows, indent=1) + '\n')
    found = list(faults(rows))
    print(*found, sep='\n', end='\n' if found else '')
    sys.exit(bool(found))


if __name__ == '__main__':
    main()
