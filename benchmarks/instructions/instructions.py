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
INSTRUCTIONS_LIMIT, MEMORY_LIMIT = 1.15, 1.10

# Thousands of instructions for using each feature a hundred times. The C library is excluded, because
# its code depends on the processor. Each limit is a tenth above the count with GCC 12: a patch release
# of the compiler stays below it; a second pass, copy or allocation does not.
LIMITS = {
    'array': 20,
    'format': 29,
    'text': 259,
    'markup': 329,
    'resolution': 52,
    'stream': 1527,
    'set': 3413,
}

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


def check_start(tree):
    programs = {'minimal C': tree / 'benchmarks/instructions/start.minimal',
                'resolution': tree / 'resolution'}
    figures, answers = {}, {}
    for name, program in programs.items():
        counts, answers[name] = count(program)
        figures[name] = counts.total(), peak(tree / 'benchmarks/instructions/start.peak', program)
        ratios = [figure / base for figure, base in zip(figures[name], figures['minimal C'])]
        print(f'{name:<12} {figures[name][0]:>9,} instructions, {ratios[0]:.3f}; '
              f'{figures[name][1]:>6,.0f} KiB, {ratios[1]:.3f}')
        if name == 'resolution' and ratios[0] > INSTRUCTIONS_LIMIT:
            yield f'more than {INSTRUCTIONS_LIMIT} times the instructions of the minimal program'
        if name == 'resolution' and ratios[1] > MEMORY_LIMIT:
            yield f'more than {MEMORY_LIMIT} times the memory of the minimal program'
    if answers['resolution'] != answers['minimal C']:
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
