"""Makes one small change to the library at a time and reports those that no unit test detects.
tools/mutate runs it. Changes are textual: the compiler rejects those that are not valid C++."""

import os
import re
import resource
import shutil
import subprocess
import sys
from collections import Counter
from pathlib import Path

from marked_lines import marked_lines

ROOT = Path(__file__).resolve().parent.parent
COPY, TREE = ROOT / 'build/mutate/source', ROOT / 'build/mutate/tree'
UNITS = '^(abi|misc|streams|system|video|xml)$'
SECONDS = 60  # of processor time for one test, because a change may cause an endless loop

# Each pattern and its replacement.
OPERATORS = [(re.compile(pattern), replacement) for pattern, replacement in [
    (r'==', '!='), (r'!=', '=='),
    (r' < ', ' <= '), (r' <= ', ' < '), (r' > ', ' >= '), (r' >= ', ' > '),
    (r'&&', '||'), (r'\|\|', '&&'),
    (r' \+ ', ' - '), (r' - ', ' + '), (r' \* ', ' + '),
    (r'\+\+', '--'), (r'--', '++'), (r'\+=', '-='), (r'-=', '+='),
    (r'!(?=[\w(])', ''),
    (r'\btrue\b', 'false'), (r'\bfalse\b', 'true'),
    (r"(?<![\\'])\b\d+(?=U?\b)", r'(\g<0> + 1)'),
    (r'\bif \(', 'if (true || '), (r'\bif \(', 'if (false && '),
    (r'\bbreak;', 'continue;'),
    (r'\breturn (?!(false|0|nullptr|std::nullopt|\{\});)[^;]+;', 'return {};'),
    (r'^(\s*)[\w*][^{}]*;$', r'\1;'),
    (r'(?<=")(?=[^"\n]+")', '~'),
]]


def run(*command, **options):
    return subprocess.run(command, stdout=subprocess.PIPE, stderr=subprocess.STDOUT,
                          encoding='utf-8', errors='replace', check=False, **options)


def require(*command, **options):
    done = run(*command, **options)
    if done.returncode != 0:
        sys.exit(f'mutate: this failed: {" ".join(map(str, command))}\n{done.stdout}')
    return done.stdout


def is_ours(path):
    return path.startswith('libraries/') and path.endswith(('.h', '.cpp'))


def changed_lines(since):
    """Returns the numbers of the lines that differ from a revision, by path. None means all."""
    lines, path = {}, None
    for line in require('git', 'diff', '-U0', since, '--', 'libraries', cwd=ROOT).splitlines():
        if line.startswith('+++ '):
            path = line[6:]
        elif hunk := re.match(r'@@ -\S+ \+(\d+)(?:,(\d+))? @@', line):
            first, count = int(hunk[1]), int(hunk[2] or 1)
            lines.setdefault(path, set()).update(range(first, first + count))
    new = require('git', 'ls-files', '--others', '--exclude-standard', 'libraries', cwd=ROOT)
    lines.update({path: None for path in new.splitlines()})
    return {path: numbers for path, numbers in lines.items() if is_ours(path)}


def mutants(source, numbers):
    """Yields (line number, changed source) for each change. `numbers` selects the lines; None
    selects all."""
    lines = source.splitlines(keepends=True)
    marks = marked_lines(source, 'Unreached', 'Equivalent').values()
    excused = {number for marked in marks for number in marked}
    for number, line in enumerate(lines, 1):
        code = re.sub(r'\s*//.*', '', line)
        if numbers is not None and number not in numbers or number in excused or \
                not code.strip() or re.search(r'^\s*(#|static_assert|using|namespace|va_end)|= delete;', code):
            continue
        found = {code[:match.start()] + match.expand(replacement) + code[match.end():]
                 for pattern, replacement in OPERATORS for match in pattern.finditer(code)}
        for changed in sorted(found - {code}):
            yield number, ''.join([*lines[:number - 1], changed.rstrip('\n') + '\n',
                                   *lines[number:]])


def copy_tree():
    """Copies only files that differ, so that few are compiled again."""
    listed = require('git', 'ls-files', '--cached', '--others', '--exclude-standard', cwd=ROOT)
    paths = {path for path in listed.splitlines() if (ROOT / path).is_file()}
    for path in paths:
        source, copy = ROOT / path, COPY / path
        if not copy.exists() or source.read_bytes() != copy.read_bytes():
            copy.parent.mkdir(parents=True, exist_ok=True)
            shutil.copy(source, copy)
    for copy in COPY.rglob('*'):
        if copy.is_file() and str(copy.relative_to(COPY)) not in paths:
            copy.unlink()


def unit_tests():
    listed = require('ctest', '--test-dir', TREE, '--show-only', '-L', UNITS)
    return re.findall(r': (\w+/\w+)$', listed, re.M)


def build(tests):
    return run('cmake', '--build', TREE, '--parallel', str(os.cpu_count()), '--target', 'zn',
               *['test.' + test.replace('/', '.') for test in tests]).returncode == 0


def limit_time():
    resource.setrlimit(resource.RLIMIT_CPU, (SECONDS, SECONDS))


def pass_all(tests):
    # The first failed assertion ends its test.
    environment = {**os.environ, 'GTEST_BREAK_ON_FAILURE': '1',
                   'ASAN_OPTIONS': 'hard_rss_limit_mb=4096:allocator_may_return_null=1'}
    return not tests or run('ctest', '--test-dir', TREE, '--stop-on-failure',
                            '--parallel', str(os.cpu_count()), '-R', f'^({"|".join(tests)})$',
                            env=environment, preexec_fn=limit_time).returncode == 0


def verdict(path, tests):
    # The file's own tests first, because they detect most changes.
    own = [test for test in tests if path.stem.split('_')[-1] in test]
    for some in own, [test for test in tests if test not in own]:
        if not build(some):
            return 'rejected'
        if not pass_all(some):
            return 'noticed'
    return 'unnoticed'


def main(since, *files):
    files = [os.path.relpath(file, ROOT) for file in files]
    for path in files:
        if not is_ours(path) or not (ROOT / path).is_file():
            print(f'mutate: {path} is no source of the library', file=sys.stderr)
            return 2
    chosen = dict.fromkeys(files) if files else changed_lines(since)
    if not chosen:
        print(f'no line of the library differs from {since}')
        return 0

    copy_tree()
    # A shared library is linked once per change instead of once per test. The sanitizers detect
    # out-of-bounds accesses.
    require('cmake', '-S', COPY, '-B', TREE, '--preset', 'sanitize', '-DBUILD_SHARED_LIBS=ON',
            '-DCMAKE_LINK_DEPENDS_NO_SHARED=ON', '-DCMAKE_CXX_FLAGS=-D_GLIBCXX_ASSERTIONS',
            '-DZN_WERROR=OFF', '-DZN_BUILD_PROGRAM=OFF', '-DZN_INSTALL=OFF', cwd=COPY)
    tests = unit_tests()
    if not build(tests) or not pass_all(tests):
        sys.exit('mutate: the tests fail without any change')

    found = 0
    for path, numbers in chosen.items():
        count = Counter()
        source = (ROOT / path).read_text(encoding='utf-8')
        lines = source.splitlines()
        for number, changed in mutants(source, numbers):
            (COPY / path).write_text(changed, encoding='utf-8')
            result = verdict(Path(path), tests)
            count[result] += 1
            if result == 'unnoticed':
                print(f'{path}:{number}: unnoticed\n- {lines[number - 1].strip()}\n'
                      f'+ {changed.splitlines()[number - 1].strip()}\n', flush=True)
        (COPY / path).write_text(source, encoding='utf-8')
        found += count['unnoticed']
        print(f'{path}: {count["noticed"] + count["unnoticed"]} changes, '
              f'{count["unnoticed"]} unnoticed; the compiler rejected {count["rejected"]} more',
              flush=True)
    return 1 if found else 0


if __name__ == '__main__':
    sys.exit(main(*sys.argv[1:]))
