"""Reads blocks of code and tables from the documents."""

import os
import re
from pathlib import Path

SOURCES = Path(os.environ['ZN_SOURCES'])


def text(page):
    return (SOURCES / page).read_text()


def blocks(page):
    """Returns each mark, such as <!-- output -->, with the code that follows it, in order."""
    found = []
    lines = text(page).splitlines()
    for number, line in enumerate(lines):
        if mark := re.fullmatch(r'<!-- (.*) -->', line):
            code = []
            for inner in lines[number + 1:]:
                if inner and not inner.startswith('    '):
                    break
                code.append(inner[4:])
            found.append((mark[1], '\n'.join(code).strip('\n') + '\n'))
    return found


def block(page, mark):
    [code] = [code for name, code in blocks(page) if name == mark]
    return code


def table(page, last_heading):
    """Returns the rows of the table whose last column has this heading, as lists of cells."""
    rows = []
    for line in text(page).splitlines():
        cells = [cell.strip() for cell in line.split('|')[1:-1]]
        if cells and (rows or cells[-1] == last_heading):
            rows.append(cells)
        elif rows:
            break
    return rows[2:]
