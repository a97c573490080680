#!/usr/bin/env python3
"""Counts the instructions of the program, compared with a minimal C program that prints the same, and
those of the library's features. Counts do not depend on how busy the machine is. The exit status is 1
when a limit is exceeded. TREE is a build tree such as build/release.

    benchmarks/instructions/instructions.py TREE           counts and checks the limits
    benchmarks/instructions/instructions.py TREE FEATURE   shows where a feature spends instructions
"""

import re
import statistics
import subprocess
import sys
import tempfile
from collections import Counter
from pathlib import Path

# Limits as multiples of the minimal program, because cameras that answer many requests must not pay for
# C++.
START_LIMITS = {'instructions': 1.15, 'KiB of memory': 1.10}

# Thousands of instructions for using each feature a hundred times. The C library is excluded, because
# its code depends on the processor. Each limit is up to a tenth above the count with GCC 12: a patch
# release of the compiler stays below it; a second pass, copy or allocation does not.
LIMITS = {'array': 20, 'format': 28, 'text': 254, 'markup': 252, 'resolution': 45, 'stream': 1362,
          'set': 3430}

CAMERA = {'CSDK_SIMULATOR_PROFILE':
          str(Path(__file__).resolve().parents[2] / 'sdk/simulator/profiles/benchmark.txt')}


def callgrind(profile, *command):
    try:
        return subprocess.run(['valgrind', '--quiet', '--tool=callgrind',
                               f'--callgrind-out-file={profile}', '--compress-strings=no', *command],
                              env=CAMERA, stdin=subprocess.DEVNULL, stdout=subprocess.PIPE,
                              check=True).stdout
    except FileNotFoundError:
        sys.exit('valgrind is not installed: tools/install-packages measure')


def count(*command):
    """Returns the instructions by object file, and the program's output."""
    with tempfile.TemporaryDirectory() as folder:
        profile = Path(folder, 'profile')
        output = callgrind(profile, *command)
        counts, name, is_call = Counter(), '', False
        for line in profile.read_text().splitlines():
            if line.startswith('ob='):
                name = Path(line[3:]).name
            elif line.startswith('calls='):
                is_call = True  # the next line is the cost of the called function
            elif re.match(r'[\d+*-]', line):
                counts[name] += 0 if is_call else int(line.split()[-1])
                is_call = False
        return counts, output


def peak(launcher, program):
    """Returns the resident memory in KiB. It is the mean of several runs, because the number of mapped
    pages of the C library depends on the library's random address."""
    return statistics.mean(
        int(subprocess.run([launcher, program], env=CAMERA, check=True, stdout=subprocess.DEVNULL,
                           stderr=subprocess.PIPE).stderr) for _ in range(50))


def measure_start(tree, program):
    counts, output = count(tree / program)
    return output, counts.total(), peak(tree / 'benchmarks/instructions/start.peak', tree / program)


def check_start(tree):
    expected, *minimal = measure_start(tree, 'benchmarks/instructions/start.minimal')
    output, *figures = measure_start(tree, 'resolution')
    for (unit, limit), figure, base in zip(START_LIMITS.items(), figures, minimal):
        print(f'start        {figure:>9,.0f} {unit}, {figure / base:.3f} times the minimal C '
              f'program, limit {limit:.2f}')
        if figure > limit * base:
            yield f'more than {limit} times the {unit} of the minimal C program'
    if output != expected:
        yield 'the programs answer differently'


def check_features(folder):
    for name, limit in LIMITS.items():
        program = folder / f'feature.{name}'
        thousands = count(program)[0][program.name] / 1000
        print(f'{name:<12} {thousands:>6.0f} thousand instructions, limit {limit:>6}')
        if thousands > limit:
            yield f'{name}: {thousands:.0f} thousand instructions, more than {limit}'


def main(tree, feature=None):
    tree = Path(tree)
    if feature:
        profile = tree / f'callgrind.{feature}'
        callgrind(profile, tree / f'benchmarks/feature.{feature}')
        subprocess.run(['callgrind_annotate', '--threshold=95', profile], check=True)
        return 0
    faults = [*check_start(tree), *check_features(tree / 'benchmarks')]
    print(*faults, sep='\n')
    return 1 if faults else 0


if __name__ == '__main__':
    if not 2 <= len(sys.argv) <= 3 or sys.argv[1].startswith('-'):
        sys.exit(__doc__)
    sys.exit(main(*sys.argv[1:]))
