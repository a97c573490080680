"""Finds the lines of a source that are excused by a comment above them:

    // Unreached: REASON     no test reaches the statement
    // Equivalent: REASON    no test can detect a change in the statement

If the statement opens a block, the whole block is excused.
"""

import re

MARK = re.compile(r'\s*// (Unreached|Equivalent): \S')


def marked_lines(source, *kinds):
    """Returns the ranges of excused lines by the line number of their mark. Lines count from 1."""
    lines = source.splitlines()
    marked = {}
    for number, line in enumerate(lines):
        if not (mark := MARK.match(line)) or mark[1] not in kinds:
            continue
        first = number
        while first < len(lines) and lines[first].lstrip().startswith('//'):
            first += 1
        indent = lines[first][:len(lines[first]) - len(lines[first].lstrip())]
        last = first
        while not re.search(r'[{};]\s*(//.*)?$', lines[last]):
            last += 1
        if re.search(r'\{\s*(//.*)?$', lines[last]):
            while not lines[last].startswith(indent + '}'):
                last += 1
        marked[number + 1] = range(first + 1, last + 2)
    return marked
