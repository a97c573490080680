"""Reports the lines and branches that no test reaches. tools/coverage runs it."""

import collections
import json
import re
import sys
from pathlib import Path

from marked_lines import constant_lines, marked_lines

ROOT = Path(__file__).resolve().parent.parent


def lines_in(report):
    """Returns the execution counts by file and line."""
    lines = {}
    for entry in Path(report).read_text(encoding='utf-8').split('end_of_record'):
        if source := re.search(r'^SF:(.*)$', entry, re.MULTILINE):
            lines[source[1]] = {int(line): int(count) for line, count
                                in re.findall(r'^DA:(\d+),(\d+)', entry, re.MULTILINE)}
    return lines


def branches_in(report):
    """Returns, by file, how often each condition was true and how often false. The key is
    (line, column, outcome)."""
    branches = {}
    for file in json.loads(Path(report).read_text(encoding='utf-8'))['data'][0]['files']:
        counts = branches.setdefault(file['filename'], collections.Counter())
        for line, column, *_, taken, not_taken in (entry[:6] for entry in file['branches']):
            counts[line, column, True] += taken
            counts[line, column, False] += not_taken
    return branches


def main(line_report, branch_report):
    lines, branches = lines_in(line_report), branches_in(branch_report)
    if not lines or not any(branches.values()):
        sys.exit('coverage: nothing was measured')
    reached, total, excused, faults = 0, 0, 0, 0
    for path in sorted(lines):
        name = Path(path).relative_to(ROOT)
        text = Path(path).read_text(encoding='utf-8')
        source = text.splitlines()
        marks = marked_lines(text, 'Unreached')
        missed = {(line, 'never reached') for line, count in lines[path].items() if count == 0}
        missed |= {(line, f'never {str(outcome).lower()} at column {column}')
                   for (line, column, outcome), count in branches.get(path, {}).items()
                   # `while (true)` is never false.
                   if count == 0 and not source[line - 1].startswith('true)', column - 1)}
        constant = constant_lines(text)
        missed = {(line, what) for line, what in missed if line not in constant}
        for line, what in sorted(missed):
            if any(line in marked for marked in marks.values()):
                excused += 1
            else:
                faults += 1
                print(f'{name}:{line}: {what}: {source[line - 1].strip()}')
        for mark, marked in marks.items():
            if not any(line in marked for line, _ in missed):
                faults += 1
                print(f'{name}:{mark}: reached after all: {source[mark - 1].strip()}')
        total += len(lines[path]) + len(branches.get(path, {}))
        reached += len(lines[path]) + len(branches.get(path, {})) - len(missed)
    print(f'{reached} of {total} lines and outcomes of branches reached '
          f'({100 * reached / total:.2f} %), {excused} marked as unreached')
    return 1 if faults else 0


if __name__ == '__main__':
    sys.exit(main(*sys.argv[1:]))
