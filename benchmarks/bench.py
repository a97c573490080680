#!/usr/bin/env python3
"""Runs the benchmarks of a build tree and reports; tools/bench builds them and calls this."""

import argparse
import json
import os
import re
import subprocess
import sys
from pathlib import Path

import report

ROOT = Path(__file__).resolve().parent.parent
PAGE = ROOT / 'docs/performance.md'
PLOT = ROOT / 'docs/performance.svg'

TOPICS = ('streams', 'sets', 'files', 'markup', 'text', 'formatting', 'values', 'threads')
PEERS = ('libabsl-dev', 'libboost-dev', 'libcereal-dev', 'libfmt-dev', 'libmsgpack-cxx-dev',
         'libprotobuf-dev', 'libbenchmark-dev', 'valgrind')


def output(*command):
    return subprocess.run(command, check=True, stdout=subprocess.PIPE, encoding='utf-8').stdout


def compile_flags(tree):
    """How the library in this tree was compiled, without paths."""
    commands = json.loads((tree / 'compile_commands.json').read_text())
    command = next(entry['command'] for entry in commands
                   if entry['file'].endswith('zntl_String.cpp'))
    wanted = re.compile(r'-(O|f|std|D_FORTIFY|DNDEBUG|U_FORTIFY|m)')
    return ' '.join(word for word in command.split() if wanted.match(word))


def description(tree):
    cpu = re.search(r'model name\s*: (.*)', Path('/proc/cpuinfo').read_text())
    system = re.search(r'PRETTY_NAME="(.*)"', Path('/etc/os-release').read_text())
    versions = output('dpkg-query', '-W', '-f', '${Package} ${Version}\n', *PEERS).splitlines()
    return {'machine': f'{os.cpu_count()} × {cpu[1] if cpu else os.uname().machine}',
            'system': f'{system[1] if system else ""}, Linux {os.uname().release}',
            'compiler': output('c++', '--version').splitlines()[0],
            'flags': compile_flags(tree),
            'packages': versions,
            'load': os.getloadavg()[0]}


def run_peers(tree, filter_, repetitions, seconds):
    """The rows whose name matches, each topic in one process, its contenders interleaved."""
    rows = []
    for topic in TOPICS:
        program = tree / f'benchmarks/peers/bench.{topic}'
        listed = output(program, '--benchmark_list_tests', f'--benchmark_filter={filter_}')
        if not listed.strip() or listed.startswith('Failed'):
            continue
        print(f'running {topic}', file=sys.stderr, flush=True)
        results = tree / f'{topic}.json'
        subprocess.run([program, f'--benchmark_filter={filter_}',
                        f'--benchmark_repetitions={repetitions}',
                        f'--benchmark_min_time={seconds}',
                        '--benchmark_enable_random_interleaving=true',
                        f'--benchmark_out={results}', '--benchmark_out_format=json'],
                       check=True, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
        order = list(dict.fromkeys(line.rsplit('/', 1)[0] for line in listed.splitlines()))
        found = report.rows_from(json.loads(results.read_text()))
        rows += sorted(found, key=lambda row: order.index(row['row']))
    return rows


def run_startup(tree):
    folder = tree / 'benchmarks/startup'
    done = subprocess.run([sys.executable, '-B', ROOT / 'benchmarks/startup/startup.py',
                           '--program', tree / 'resolution', '--minimal', folder / 'startup.minimal',
                           '--load', folder / 'startup.load', '--peak', folder / 'startup.peak'],
                          stdout=subprocess.PIPE, encoding='utf-8', check=False)
    return done.stdout, done.returncode != 0


def run_scaling(tree):
    """Time for n and 2n of everything that may be large."""
    texts, failed = [], False
    for arguments in (['scaling', '--megabytes=32'], ['objects']):
        print(f'running {arguments[0]}', file=sys.stderr, flush=True)
        done = subprocess.run([tree / 'benchmarks/scaling' / arguments[0], *arguments[1:]],
                              stdout=subprocess.PIPE, encoding='utf-8', check=False)
        texts.append(done.stdout)
        failed = failed or done.returncode != 0
    return '\n'.join(texts), failed


def command_block(command, text):
    return f'`{command}`\n\n```\n{text.strip()}\n```'


def update_page(results):
    description_ = results['description']
    conditions = (f'- machine: {description_["machine"]}, load {description_["load"]:.1f} at the '
                  f'start\n- system: {description_["system"]}\n'
                  f'- compiler: {description_["compiler"]}\n- flags: `{description_["flags"]}`\n'
                  f'- packages: {", ".join(description_["packages"])}')
    sections = {}
    if 'rows' in results:
        rows = results['rows']
        sections = {'conditions': conditions,
                    'summary': f'`tools/bench`\n\n{report.summary_text(rows)}.',
                    'rows': '`tools/bench`\n\n' + report.markdown_table(rows),
                    'reasons': report.markdown_reasons(rows)}
        PLOT.write_text(report.plot(rows))
    for name in ('startup', 'scaling'):
        if name in results:
            sections[name] = command_block(f'tools/bench {name}', results[name])
    page = PAGE.read_text()
    for name, content in sections.items():
        page = report.replace_section(page, name, content)
    PAGE.write_text(page)


def main():
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument('tree', type=Path)
    parser.add_argument('filter', nargs='?', default='')
    parser.add_argument('--update-docs', action='store_true')
    parser.add_argument('--quick', action='store_true')
    arguments = parser.parse_intermixed_args()
    if arguments.update_docs and (arguments.quick or
                                  arguments.filter not in ('', 'rows', 'startup', 'scaling')):
        sys.exit('the documentation takes all rows, and no --quick')

    filter_ = arguments.filter
    results = {'description': description(arguments.tree)}
    faults = []
    if filter_ in ('', 'startup'):
        results['startup'], failed = run_startup(arguments.tree)
        print(results['startup'])
        faults += ['start-up is beyond its limits'] * failed
    if filter_ == 'scaling' or not filter_ and not arguments.quick:
        results['scaling'], failed = run_scaling(arguments.tree)
        print(results['scaling'])
        faults += ['something grows faster than its input'] * failed
    if filter_ not in ('startup', 'scaling'):
        is_complete = filter_ in ('', 'rows')
        rows = run_peers(arguments.tree, '.' if is_complete else filter_,
                         *((3, 0.01) if arguments.quick else (7, 0.03)))
        if not rows:
            sys.exit(f'no row matches "{filter_}"')
        faults += report.attach_reasons(rows, is_complete)
        print(report.terminal_table(rows), report.summary_text(rows), sep='\n\n')
        results.update(rows=rows, summary=report.summary(rows))
        plot = arguments.tree / 'performance.svg'
        plot.write_text(report.plot(rows))
        print(f'plot: {plot}')

    written = arguments.tree / 'performance.json'
    written.write_text(json.dumps(results, indent=1, ensure_ascii=False) + '\n')
    print(f'figures: {written}')
    if arguments.update_docs:
        update_page(results)
    print(*faults, sep='\n', file=sys.stderr, end='\n' if faults else '')
    sys.exit(bool(faults))


if __name__ == '__main__':
    main()
