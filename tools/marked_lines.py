"""Finds the lines of a source that are excused by a comment above them:

    // Unreached: REASON     no test reaches the statement
    // Equivalent: REASON    no test can detect a change in the statement

If the statement opens a block, the whole block is excused.
"""

import re

MARK = re.compile(r'\s*// (Unreached|Equivalent): \S')


def statement(lines, first):
    """Returns the range of lines of the statement that starts at index `first`, with its block."""
    indent = lines[first][:len(lines[first]) - len(lines[first].lstrip())]
    last = first
    while not re.search(r'[{};]\s*(//.*)?$', lines[last]):
        last += 1
    if re.search(r'\{\s*(//.*)?$', lines[last]):
        while not lines[last].startswith(indent + '}'):
            last += 1
    return range(first + 1, last + 2)


def marked_lines(source, *kinds):
    """Returns the ranges of excused lines by the line number of their mark. Lines count from 1."""
    lines = source.splitlines()
    marked = {}
    for number, line in enumerate(lines):
        if (mark := MARK.match(line)) and mark[1] in kinds:
            first = number
            while lines[first].lstrip().startswith('//'):
                first += 1
            marked[number + 1] = statement(lines, first)
    return marked


def constant_lines(source):
    """Returns the lines that the compiler executes: constexpr functions, and if constexpr."""
    lines = source.splitlines()
    constant = set()
    for number, line in enumerate(lines):
        if 'if constexpr' in line:
            constant.add(number + 1)
        elif 'constexpr ' in line and '(' in line:
            constant.update(statement(lines, number))
    return constant
