#!/usr/bin/env python3
"""Reports the lines and branches that no test has reached; used by tools/coverage.

Those for which tests/unreached.txt gives a reason are counted apart. There, an entry is the path of
a file, a "= " in front of each line of the source that is meant, and the reason, indented.
"""

import collections
import json
import re
import sys
from pathlib import Path

ROOT = Path(__file__).resolve().parent.parent
EXPLAINED = ROOT / 'tests/unreached.txt'


def lines_in(report):
    """The counts by file and line."""
    lines = {}
    for entry in Path(report).read_text(encoding='utf-8').split('end_of_record'):
        if source := re.search(r'^SF:(.*)$', entry, re.MULTILINE):
            lines[source[1]] = {int(line): int(count) for line, count
                                in re.findall(r'^DA:(\d+),(\d+)', entry, re.MULTILINE)}
    return lines


def branches_in(report):
    """By file and place of the condition, how often it was true and how often false."""
    branches = {}
    for file in json.loads(Path(report).read_text(encoding='utf-8'))['data'][0]['files']:
        counts = branches.setdefault(file['filename'], collections.Counter())
        for line, column, *_, taken, not_taken in (entry[:6] for entry in file['branches']):
            counts[line, column, True] += taken
            counts[line, column, False] += not_taken
    return branches


def explained():
    keys = set()
    for entry in re.split(r'\n\s*\n', EXPLAINED.read_text(encoding='utf-8')):
        lines = [line for line in entry.strip().splitlines() if not line.startswith('#')]
        code = [line[2:].strip() for line in lines if line.startswith('= ')]
        if code and not any(line.startswith(' ') for line in lines):
            sys.exit(f'coverage: {EXPLAINED.name} does not say why:\n{entry}')
        keys.update((lines[0], line) for line in code)
    return keys


def share(reached, all_of_them):
    return f'{reached} of {all_of_them} ({100 * reached / all_of_them:.2f} %)'


def main(line_report, branch_report):
    lines, branches = lines_in(line_report), branches_in(branch_report)
    if not lines or not any(branches.values()):
        sys.exit('coverage: nothing was measured')
    known, used = explained(), set()
    reached, total = collections.Counter(), collections.Counter()
    for path in sorted(lines):
        name = str(Path(path).relative_to(ROOT))
        source = Path(path).read_text(encoding='utf-8').splitlines()

        def check(kind, line, count, what):
            total[kind] += 1
            if count > 0:
                reached[kind] += 1
                return
            key = (name, source[line - 1].strip())
            if key in known:
                used.add(key)
                total['explained ' + kind] += 1
            else:
                print(f'{name}:{line}: {what}: {key[1]}')

        for line, count in sorted(lines[path].items()):
            check('lines', line, count, 'never reached')
        for (line, column, outcome), count in sorted(branches.get(path, {}).items()):
            if source[line - 1].startswith('true)', column - 1):
                continue  # an endless loop is no decision
            check('branches', line, count, f'never {str(outcome).lower()} at column {column}')

    for name, line in sorted(known - used):
        print(f'{EXPLAINED.name}: reached after all, or gone: {name}: {line}')
    for kind in ('lines', 'branches'):
        print(f'{kind + ":":10}{share(reached[kind], total[kind])} reached, '
              f'{total["explained " + kind]} explained')
    left = sum(total[kind] - reached[kind] - total['explained ' + kind]
               for kind in ('lines', 'branches'))
    return 1 if left or known - used else 0


if __name__ == '__main__':
    sys.exit(main(*sys.argv[1:]))
