#!/usr/bin/env python3
"""What the code weighs on a camera: the program, each feature, each object, the heaviest symbols,
and what has changed since the last release. tools/size builds the trees and calls this."""

import argparse
import re
import subprocess
import sys
import tempfile
from pathlib import Path

sys.path.insert(0, str(Path(__file__).resolve().parent.parent))
import report

PAGE = Path(__file__).resolve().parents[2] / 'docs/performance.md'
RECORDED = Path(__file__).resolve().parent / 'recorded.txt'
HEAVIEST = 15


def output(*command):
    return subprocess.run(command, check=True, stdout=subprocess.PIPE, encoding='utf-8').stdout


class Tree:
    """A build tree for one target."""

    def __init__(self, path):
        self.path = path
        self.target = re.sub('^size-', '', path.name)
        cache = (path / 'CMakeCache.txt').read_text()
        self.nm, self.strip = (re.search(rf'^{name}:\w+=(.*)$', cache, re.MULTILINE)[1]
                               for name in ('CMAKE_NM', 'CMAKE_STRIP'))
        self.size, self.compiler = (re.sub('nm$', tool, self.nm) for tool in ('size', 'g++'))

    def sections(self, *paths):
        """text, data and bss by file."""
        lines = output(self.size, *paths).splitlines()[1:]
        rows = (re.match(r'\s*(\d+)\s+(\d+)\s+(\d+)\s+\d+\s+[\da-f]+\s+(\S+)', line)
                for line in lines)
        return {row[4]: tuple(int(row[i]) for i in (1, 2, 3)) for row in rows}

    def program(self):
        return self.sections(self.path / 'resolution').popitem()[1]

    def stripped(self):
        with tempfile.TemporaryDirectory() as folder:
            copy = Path(folder, 'resolution')
            output(self.strip, '-o', copy, self.path / 'resolution')
            return copy.stat().st_size

    def features(self):
        programs = sorted((self.path / 'benchmarks/size').glob('size.*'))
        return {Path(name).name[len('size.'):]: figures
                for name, figures in self.sections(*programs).items()}

    def objects(self):
        archive = next(self.path.glob('**/libzn.a'))
        return {re.sub(r'\.cpp\.o$', '', name): figures
                for name, figures in self.sections(archive).items()}

    def heaviest(self):
        lines = output(self.nm, '--demangle', '--size-sort', '--reverse-sort', '--print-size',
                       self.path / 'resolution').splitlines()
        symbols = (re.match(r'[\da-f]+ ([\da-f]+) \w (.*)', line) for line in lines)
        return [(int(symbol[1], 16), symbol[2]) for symbol in symbols][:HEAVIEST]

    def figures(self):
        """Everything that is recorded, by (kind, name)."""
        found = {('program', 'resolution'): self.program(),
                 ('stripped', 'resolution'): (self.stripped(), 0, 0)}
        found.update({('feature', name): sizes for name, sizes in self.features().items()})
        found.update({('object', name): sizes for name, sizes in self.objects().items()})
        return found


def load():
    """The recorded figures by (target, kind, name)."""
    recorded = {}
    for line in RECORDED.read_text().splitlines() if RECORDED.exists() else ():
        if line and not line.startswith('#'):
            target, kind, name, *sizes = line.split()
            recorded[target, kind, name] = tuple(map(int, sizes))
    return recorded


def save(trees, version):
    lines = [f'# Sizes of release {version}: target, kind, name, text, data, bss. '
             'Kept by tools/size --record.']
    for tree in trees:
        lines += [f'{tree.target} {kind} {name} {" ".join(map(str, sizes))}'
                  for (kind, name), sizes in sorted(tree.figures().items())]
    RECORDED.write_text('\n'.join(lines) + '\n')


def update_page(trees, version):
    """The documentation has the sizes of the release."""
    features = {tree.target: tree.features() for tree in trees}
    first = features[trees[0].target]
    lines = [f'`tools/size`, release {version}', '',
             '| | ' + ' | '.join(f'{tree.target} text | data | bss | price' for tree in trees) + ' |',
             '|---|' + '--:|' * 4 * len(trees)]
    for name in sorted(first, key=lambda name: sum(first[name])):
        cells = []
        for programs in features.values():
            price = sum(programs[name]) - sum(programs['runtime'])
            cells += [f'{size:,}' for size in (*programs[name], price)]
        lines.append(f'| {name} | {" | ".join(cells)} |')
    shipped = (f'{tree.target}: {tree.stripped():,} bytes stripped, text {tree.program()[0]:,}, '
               f'data {tree.program()[1]:,}, bss {tree.program()[2]:,}' for tree in trees)
    lines += ['', 'The program as shipped: ' + '; '.join(shipped) + '.']
    PAGE.write_text(report.replace_section(PAGE.read_text(), 'size', '\n'.join(lines)))


def change(now, before):
    if before is None:
        return 'new'
    difference = sum(now) - sum(before)
    return f'{difference:+,}' if difference else ''


def table(title, target, kind, figures, recorded, base=(0, 0, 0)):
    """Each line beside what was recorded; features also as more than the runtime alone."""
    lines = [f'{title:<24} {"text":>8} {"data":>6} {"bss":>6} '
             f'{"price" if any(base) else "total":>8} {"change":>8}']
    for name, sizes in figures.items():
        before = recorded.get((target, kind, name))
        lines.append(f'{name:<24} {sizes[0]:>8,} {sizes[1]:>6,} {sizes[2]:>6,} '
                     f'{sum(sizes) - sum(base):>8,} {change(sizes, before):>8}'.rstrip())
    lines += [f'{name:<24} is gone' for where, what, name in recorded
              if (where, what) == (target, kind) and name not in figures]
    return '\n'.join(lines)


def description(tree, recorded):
    features = dict(sorted(tree.features().items(), key=lambda entry: sum(entry[1])))
    objects = dict(sorted(tree.objects().items(), key=lambda entry: -sum(entry[1])))
    stripped = tree.stripped()
    before = recorded.get((tree.target, 'stripped', 'resolution'))
    yield (f'== {tree.target}: {output(tree.compiler, "--version").splitlines()[0]}\n\n'
           f'The program as shipped: {stripped:,} bytes, stripped '
           f'({change((stripped,), before and before[:1]) or "unchanged"})')
    yield table('program', tree.target, 'program', {'resolution': tree.program()}, recorded)
    yield table('feature, as a program', tree.target, 'feature', features, recorded,
                features['runtime'])
    yield table('object', tree.target, 'object', objects, recorded)
    heaviest = '\n'.join(f'{size:>8,}  {name[:100]}' for size, name in tree.heaviest())
    yield f'heaviest symbols of the program\n{heaviest}\n'


def main():
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument('trees', nargs='+', type=Path)
    parser.add_argument('--record', metavar='VERSION', help='record the sizes of a release')
    arguments = parser.parse_args()
    trees = [Tree(path) for path in arguments.trees]
    if arguments.record:
        save(trees, arguments.record)
        update_page(trees, arguments.record)
        print(f'recorded in {RECORDED} and {PAGE}')
        return
    recorded = load()
    for tree in trees:
        print(*description(tree, recorded), sep='\n\n')


if __name__ == '__main__':
    main()
