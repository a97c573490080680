"""Finds the lines of a source that a comment above them excuses:

    // Unreached: REASON     no test reaches the statement
    // Equivalent: REASON    no test can notice a change in the statement

A statement that opens a block includes the block.
"""

import re

MARK = re.compile(r'\s*// (Unreached|Equivalent): \S')


def marked_lines(source, *kinds):
    """The line numbers, from 1, by the number of their mark."""
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
