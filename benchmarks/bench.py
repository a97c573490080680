#!/usr/bin/env python3
"""Runs the benchmarks of a build tree. tools/bench builds them and runs this."""

import json
import os
import re
import statistics
import subprocess
import sys
from pathlib import Path

HERE = Path(__file__).resolve().parent
PAGE = HERE.parent / 'docs/performance.md'
# Above ROW_LIMIT, users should choose the peer. MEAN_LIMIT limits the sum of many small losses.
ROW_LIMIT, MEAN_LIMIT = 5, 1


def output(*command):
    return subprocess.run(command, check=True, stdout=subprocess.PIPE, encoding='utf-8').stdout


def peers(tree, filter_):
    """Returns the median CPU time of each contender in nanoseconds, for the rows whose names match.
    Contenders run in turns, so the ratios hold even if the machine becomes busy."""
    times = {}
    for source in sorted(HERE.glob('peers/*.cpp')):
        program = tree / f'benchmarks/peers/bench.{source.stem}'
        names = [line.rsplit('/', 1)[0] for line
                 in output(program, '--benchmark_list_tests').splitlines()]
        wanted = {name: {} for name in names if re.search(filter_, name)}
        if not wanted:
            continue
        print(f'running {program.name}', file=sys.stderr, flush=True)
        times.update(wanted)
        results = output(program, f'--benchmark_filter={filter_}', '--benchmark_format=json',
                         '--benchmark_repetitions=7', '--benchmark_min_time=0.03',
                         '--benchmark_enable_random_interleaving=true')
        for run in json.loads(results)['benchmarks']:
            row, contender = run['run_name'].rsplit('/', 1)
            if run['run_type'] == 'iteration' and row in times:
                times[row].setdefault(contender, []).append(run['cpu_time'])
    return {row: {name: statistics.median(runs) for name, runs in contenders.items()}
            for row, contenders in times.items()}


def time_text(nanoseconds):
    for unit, size in (('s', 1e9), ('ms', 1e6), ('µs', 1e3)):
        if nanoseconds >= size:
            return f'{nanoseconds / size:.3g} {unit}'
    return f'{nanoseconds:.3g} ns'


def cells(row, times):
    """Returns the cells of a table's row: work, library, best peer, ratio, others."""
    library = times['zn']
    (best, time), *others = sorted((item for item in times.items() if item[0] != 'zn'),
                                   key=lambda item: item[1])
    return [row, time_text(library), f'{best} {time_text(time)}', f'{library / time:.2f}',
            ', '.join(f'{name} {time_text(time)}' for name, time in others)]


def report_peers(tree, filter_):
    rows = peers(tree, filter_)
    if not rows:
        sys.exit(f'no row matches "{filter_}"')
    table = [cells(row, times) for row, times in rows.items()]
    for row in table:
        print(f'{row[0]:<52} {row[1]:>9}  {row[3]:>5} x {row[2]}; {row[4]}')
    ratios = [float(row[3]) for row in table]
    mean = statistics.geometric_mean(ratios)
    print(f'\n{len(ratios)} rows: geometric mean {mean:.2f}, '
          f'{sum(ratio <= 1.05 for ratio in ratios)} at or below 1.05')
    (tree / 'rows.json').write_text(json.dumps(rows, indent=1) + '\n')
    yield from (f'{row}: more than {ROW_LIMIT} times the time of its best peer'
                for row, ratio in zip(rows, ratios) if ratio > ROW_LIMIT)
    if mean > MEAN_LIMIT and len(rows) > 20:
        yield f'the geometric mean is above {MEAN_LIMIT}'


def update_page(tree):
    """Updates the rows of the page from the last run."""
    rows = json.loads((tree / 'rows.json').read_text())
    lines = PAGE.read_text().splitlines(keepends=True)
    for number, line in enumerate(lines):
        if (name := line.split('|')[1].strip() if line.startswith('|') else '') in rows:
            lines[number] = f'| {" | ".join(cells(name, rows[name])[:4])} |\n'
    PAGE.write_text(''.join(lines))


def main(tree, filter_=''):
    tree = Path(tree)
    if filter_ == '--update-docs':
        update_page(tree)
        return 0
    os.environ['TMPDIR'] = '/dev/shm' if Path('/dev/shm').exists() else '/tmp'
    faults = []
    if filter_ in ('', 'start'):
        script = HERE / 'instructions/instructions.py'
        faults += ['start'] * subprocess.run([sys.executable, '-B', script, tree]).returncode
    if filter_ in ('', 'scaling'):
        with (tree / 'scaling.txt').open('w') as file:
            status = subprocess.run([tree / 'benchmarks/bench.scaling'], stdout=file).returncode
        faults += ['scaling'] * status
        print((tree / 'scaling.txt').read_text())
    if filter_ not in ('start', 'scaling'):
        faults += report_peers(tree, '' if filter_ == 'rows' else filter_)
    print(*(f'beyond the limits: {fault}' for fault in faults), sep='\n', file=sys.stderr)
    return 1 if faults else 0


if __name__ == '__main__':
    sys.exit(main(*sys.argv[1:]))
