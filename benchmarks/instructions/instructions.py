#!/usr/bin/env python3
"""Compares instruction counts with the recorded ones, so that no slowdown goes unnoticed.

Counted is what runs in our own code, with the C++ runtime that is linked in, and for the program's
start in the loader too. The C library is left out: which of its variants run depends on the
processor. The counts are exact and repeatable with the same compiler; with another one than
recorded.txt names there is nothing to compare, and the test is skipped."""

import argparse
import re
import subprocess
import sys
from pathlib import Path

sys.path.insert(0, str(Path(__file__).resolve().parent.parent))
import callgrind

HERE = Path(__file__).resolve().parent
RECORDED = HERE / 'recorded.txt'
CAMERA = HERE.parents[1] / 'sdk/simulator/profiles/benchmark.txt'
TOLERANCE = 0.03
SKIPPED = 77


def compiler(tree):
    """What the tree was built with."""
    path = re.search(r'^CMAKE_CXX_COMPILER:\w+=(.*)$', (tree / 'CMakeCache.txt').read_text(),
                     re.MULTILINE)[1]
    return subprocess.run([path, '--version'], check=True, stdout=subprocess.PIPE,
                          encoding='utf-8').stdout.splitlines()[0]


def count_start(program):
    counts, _ = callgrind.count(program, environment={'CSDK_SIMULATOR_PROFILE': str(CAMERA)})
    loader = sum(count for name, count in counts.items() if name.startswith('ld-linux'))
    return {'start-loader': loader, 'start-program': counts[Path(program).name]}


def count_operations(program):
    names = subprocess.run([program], check=True, stdout=subprocess.PIPE,
                           encoding='utf-8').stdout.split()
    own = {name: callgrind.count(program, name)[0][Path(program).name] for name in names}
    nothing = own.pop('nothing')
    return {name: count - nothing for name, count in own.items()}


def load():
    counts = {}
    recorded_by = ''
    for line in RECORDED.read_text().splitlines():
        if line.startswith('# recorded with '):
            recorded_by = line[len('# recorded with '):]
        elif line and not line.startswith('#'):
            name, count = line.split()
            counts[name] = int(count)
    return recorded_by, counts


def save(counts, built_with):
    lines = ['# Instructions; of the operations, a hundred times each. Kept by instructions.py.',
             f'# recorded with {built_with}']
    lines += [f'{name:<24} {count:>10}' for name, count in counts.items()]
    RECORDED.write_text('\n'.join(lines) + '\n')


def changes(counts, recorded):
    """What is beyond the tolerance, and whether any of it is a fault."""
    faults, notes = [], []
    for name, count in counts.items():
        if name not in recorded:
            faults.append(f'{name}: {count:,} instructions, and none are recorded')
            continue
        change = count / recorded[name] - 1
        text = f'{name}: {count:,} instructions instead of {recorded[name]:,} ({change:+.1%})'
        if change > TOLERANCE:
            faults.append(text)
        elif change < -TOLERANCE:
            notes.append(text)
    faults += [f'{name}: recorded, and not counted any more'
               for name in recorded if name not in counts]
    return faults, notes


def look(tree, operations, program, name):
    """Where the instructions of one operation, or of the start, are spent."""
    command = [program] if name.startswith('start') else [operations, name]
    profile = tree / f'callgrind.{name}'
    subprocess.run(['valgrind', '--quiet', '--tool=callgrind', f'--callgrind-out-file={profile}',
                    *command], check=True, env={'CSDK_SIMULATOR_PROFILE': str(CAMERA)},
                   stdout=subprocess.DEVNULL)
    subprocess.run(['callgrind_annotate', '--threshold=95', profile], check=True)
    print(f'profile: {profile}')


def main():
    parser = argparse.ArgumentParser(description=__doc__,
                                     formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument('tree', type=Path, help='the build tree, as in build/release')
    what = parser.add_mutually_exclusive_group()
    what.add_argument('--accept', action='store_true', help='record the counts as they are now')
    what.add_argument('--look', metavar='NAME', help='show where the instructions are spent')
    arguments = parser.parse_args()
    program = arguments.tree / 'resolution'
    operations = arguments.tree / 'benchmarks/instructions/operations'

    if arguments.look:
        look(arguments.tree, operations, program, arguments.look)
        return
    recorded_by, recorded = load() if RECORDED.exists() else ('', {})
    built_with = compiler(arguments.tree)
    if not arguments.accept and recorded_by != built_with:
        print(f'skipped: recorded with {recorded_by}, and this is {built_with}')
        sys.exit(SKIPPED)
    counts = {**count_start(program), **count_operations(operations)}
    if arguments.accept:
        save(counts, built_with)
        print(f'recorded {len(counts)} counts in {RECORDED}')
        return
    faults, notes = changes(counts, recorded)
    command = f'benchmarks/instructions/instructions.py {arguments.tree}'
    if notes:
        print('Fewer than recorded; worth recording:', *notes, sep='\n  ')
    if faults:
        print(f'Beyond the tolerance of {TOLERANCE:.0%}:', *faults, sep='\n  ')
        print(f'To look:   {command} --look NAME\n'
              f'To accept: {command} --accept, and commit recorded.txt with the reason')
        sys.exit(1)
    print(f'{len(counts)} counts within {TOLERANCE:.0%} of the recorded ones')


if __name__ == '__main__':
    main()
