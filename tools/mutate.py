#!/usr/bin/env python3
"""Changes the library one small thing at a time and runs the unit tests, which must notice.

Each change is compiled alone: the tests are linked against a shared library of which one object is
exchanged. A change in a header is compiled into the tests that are named after it.
What survives that is run once more with sanitizers, which see bytes read or written out of place,
and with a changed header compiled into all of the library.
"""

import argparse
import concurrent.futures
import functools
import math
import os
import random
import re
import resource
import shlex
import shutil
import subprocess
import sys
import threading
import time
from collections import Counter
from dataclasses import dataclass, replace
from pathlib import Path

ROOT = Path(__file__).resolve().parent.parent
SOURCES = ROOT / 'libraries/src'
EXPLAINED = ROOT / 'tests/mutants.txt'
TREE = ROOT / 'build/mutate'  # where the tests are built as usual
WORK = TREE / 'mutants'

# Units whose tests have another name, or that have none of their own.
TESTS = {
    'zn_File': ['zntl_StringFile', 'znsl_Serializable', 'znsl_MemIOStream_file'],
    'zntl_bytes': ['zntl_Integer', 'zntl_String', 'znsl_MemIOStream_buffer'],
    'zntl_decimal': ['decimal', 'zntl_Integer', 'zntl_StringFormat', 'znvl_Resolution',
                     'zntl_Exception'],
    'zntl_blank': ['zntl_StringText', 'zntl_Markup'],
    'zntl_search': ['zntl_StringText', 'zntl_Markup'],
    'zntl_CharacterSet': ['zntl_StringText'],
    'znsl_Set': ['znsl_Set', 'xml_backend'],
}
# With checks of what the C++ library can check, so that what steps outside a container is noticed.
COMPILE = ['-std=c++17', '-O1', '-fPIC', '-ffp-contract=off', '-D_GLIBCXX_ASSERTIONS', '-w',
           f'-I{SOURCES}']
SANITIZE = ['-fsanitize=address,undefined', '-fno-sanitize-recover=undefined']
SANITIZER_OPTIONS = {'ASAN_OPTIONS': 'detect_odr_violation=0:hard_rss_limit_mb=4096:'
                                     'allocator_may_return_null=1'}
# What a test may use: bytes, and seconds beside ten times its processor time.
MEMORY = 4 << 30
WAIT = 30


# What is changed

@dataclass(frozen=True)
class Mutant:
    path: Path  # of the source, below ROOT
    start: int
    end: int
    text: str
    source: str
    context: int = 0  # how many lines before it tell it from the same change elsewhere

    @property
    def mutated(self):
        return self.source[:self.start] + self.text + self.source[self.end:]

    @property
    def line(self):
        return self.source.count('\n', 0, self.start) + 1

    def lines(self, text, length):
        """The lines that are touched, of the source as it was or as it is changed."""
        first = text.rfind('\n', 0, self.start) + 1
        last = text.find('\n', self.start + length)
        return [line.strip() for line in text[first:last].splitlines()]

    @property
    def key(self):
        """What identifies the change when the lines around it move."""
        before = self.lines(self.source, self.end - self.start)
        after = self.lines(self.mutated, len(self.text))
        first = self.source.rfind('\n', 0, self.start) + 1
        above = [line.strip() for line in self.source[:first].splitlines() if line.strip()]
        context = above[max(0, len(above) - self.context):]
        return '\n'.join([str(self.path), *(f'= {line}' for line in context),
                          *(f'- {line}' for line in before), *(f'+ {line}' for line in after)])


LITERALS = re.compile(r'''//[^\n]*|/\*.*?\*/|^[ ]*\#[^\n]*|"(?:[^"\\\n]|\\.)*"|'(?:[^'\\\n]|\\.)*\'''',
                      re.DOTALL | re.MULTILINE)


def without_literals(source):
    """The code with comments, directives and literals blanked, at the same positions."""
    return LITERALS.sub(lambda match: re.sub(r'[^\n]', ' ', match[0]), source)


SWAPS = [
    (r'(?<= )(?:<=|>=|==|!=|<|>)(?= )',
     {'<': ['<='], '<=': ['<'], '>': ['>='], '>=': ['>'], '==': ['!='], '!=': ['==']}),
    (r'(?<= )[-+*/%](?= )', {'+': ['-'], '-': ['+'], '*': ['/'], '/': ['*'], '%': ['*']}),
    (r'(?<= )[-+*]=(?= )', {'+=': ['-=', '='], '-=': ['+=', '='], '*=': ['+=']}),
    (r'\+\+|--', {'++': ['--'], '--': ['++']}),
    (r'(?<= )(?:&&|\|\|)(?= )', {'&&': ['||'], '||': ['&&']}),
    (r'(?<!\w)!(?=[\w(*])', {'!': ['']}),
    (r'\b(?:true|false)\b', {'true': ['false'], 'false': ['true']}),
    (r'\bstd::(?:min|max)\b', {'std::min': ['std::max'], 'std::max': ['std::min']}),
    (r'\b(?:INT_MIN|INT_MAX)\b', {'INT_MIN': ['INT_MAX'], 'INT_MAX': ['INT_MIN']}),
    (r'\b(?:O_RDONLY|O_WRONLY|SEEK_SET|SEEK_END)\b',
     {'O_RDONLY': ['O_RDWR'], 'O_WRONLY': ['O_RDWR'], 'SEEK_SET': ['SEEK_END'],
      'SEEK_END': ['SEEK_CUR']}),
    (r'(?<= )\| O_\w+', {'| O_CREAT': [''], '| O_TRUNC': [''], '| O_CLOEXEC': ['']}),
]
NUMBER = re.compile(r'(?<![\w.])(?:0[xX][0-9a-fA-F]+|\d+)(?=[uUlL]*(?![\w.]))')
FLOAT = re.compile(r'(?<![\w.])\d+\.\d+')
CONDITION = re.compile(r'\b(if|while) \(')
RETURN = re.compile(r'\breturn ([^;{}]+);')
STATEMENT = re.compile(r'(?:(?<=[;{}):])|(?<=else))\s*\n\s*(?!(?:return(?!;)|if|for|while|switch|case|'
                       r'default|using|static|constexpr|struct|class|namespace|else|public|'
                       r'private|throw|template|typedef|try|catch|do|extern|auto|const|friend|'
                       r'virtual|explicit|operator)\b)([^\s;{}][^;{}]*;)(?= *\n)')
# What is declared is used: without it nothing compiles.
DECLARATION = re.compile(r'''(?:\[\[.*?\]\]\s*)?(?!delete\b)
    (?:(?:[\w:]+(?:<[^;=]*>)?(?:\s+const)?[\s*&]+)+(?:operator\W+|\w+)\s*(?:[=;[{(]|$)  # T name
    |~?[A-Z]\w*\(  # constructor or destructor
    |.*=\s*(?:default|delete);$)''', re.VERBOSE | re.DOTALL)
# What is said to the compiler alone, no program differs by.
ASIDE = re.compile(r'\b(?:static_assert|__attribute__)\(|\[\[\w')
RAISE = re.compile(r'\braise\((\d+)')


def closing(code, opening):
    depth = 0
    for position in range(opening, len(code)):
        depth += {'(': 1, ')': -1}.get(code[position], 0)
        if depth == 0:
            return position
    return None


def without_asides(source):
    code = without_literals(source)
    for match in ASIDE.finditer(code):
        is_call = match[0][-1] == '('
        end = closing(code, match.end() - 1) + 1 if is_call else code.index(']]', match.end()) + 2
        source = source[:match.start()] + ' ' * (end - match.start()) + source[end:]
    return source


def changes(source):
    """All changes of a source, as (start, end, text)."""
    source = without_asides(source)
    code = without_literals(source)
    for pattern, texts in SWAPS:
        for match in re.finditer(pattern, code):
            for text in texts.get(match[0], []):
                yield *match.span(), text
    for match in NUMBER.finditer(code):
        value = int(match[0], 8 if match[0].isdigit() and match[0][0] == '0' else 0)
        yield *match.span(), str(value + 1)
        if value > 0:
            yield *match.span(), str(value - 1)
    for match in FLOAT.finditer(code):
        yield *match.span(), str(float(match[0]) * 2 or 1.0)
    for match in CONDITION.finditer(code):
        opening = match.end() - 1
        end = closing(code, opening)
        condition = source[opening + 1:end]
        if condition == 'true':
            continue
        yield opening, end + 1, f'(({condition}) && false)'
        if match[1] == 'if':
            yield opening, end + 1, f'(({condition}) || true)'
    for match in RETURN.finditer(code):
        if match[1] not in ('*this', 'true', 'false', '0', 'nullptr', 'std::nullopt'):
            yield *match.span(), 'return {};'
    for match in STATEMENT.finditer(code):
        complete = match[1].count('(') == match[1].count(')')
        if complete and not DECLARATION.match(match[1]):
            yield *match.span(1), ';'
    numbers = sorted({match[1] for match in RAISE.finditer(code)})
    for match in RAISE.finditer(code):
        other = numbers[(numbers.index(match[1]) + 1) % len(numbers)]
        if other != match[1]:
            yield *match.span(1), other
    for match in LITERALS.finditer(source):
        text = match[0]
        if text[0] == '"':
            yield match.start() + 1, match.start() + 1, '~'
        elif text[0] == "'":
            yield *match.span(), f"char({text} + 1)"


def mutants_of(path):
    source = (ROOT / path).read_text(encoding='utf-8')
    found = {}
    for start, end, text in changes(source):
        mutant = Mutant(path, start, end, text, source)
        found.setdefault(mutant.mutated, mutant)
    mutants = sorted(found.values(), key=lambda mutant: (mutant.start, mutant.end))
    while True:
        number = Counter(mutant.key for mutant in mutants)
        if max(number.values(), default=1) == 1:
            return mutants
        mutants = [replace(mutant, context=mutant.context + (number[mutant.key] > 1))
                   for mutant in mutants]


# How it is found out

def run(command, **options):
    return subprocess.run(command, stdout=subprocess.PIPE, stderr=subprocess.STDOUT,
                          encoding='utf-8', errors='replace', check=False, **options)


def require(command, **options):
    done = run(command, **options)
    if done.returncode != 0:
        sys.exit(f'mutate: this failed: {shlex.join(map(str, command))}\n{done.stdout}')
    return done.stdout


def processor_time():
    used = resource.getrusage(resource.RUSAGE_CHILDREN)
    return used.ru_utime + used.ru_stime


class Test:
    """A unit test, as CMake builds it, but linked with the shared library."""

    def __init__(self, target):
        self.name = Path(target).name.removesuffix('_test')
        commands = require(['ninja', '-C', TREE, '-t', 'commands', target]).splitlines()
        link = shlex.split(commands[-1])
        self.link = [word for word in link[link.index('&&') + 1:] if not word.endswith('libzn.a')]
        self.link = self.link[:self.link.index('&&')] if '&&' in self.link else self.link
        self.source_object = next(word for word in self.link if word.endswith('_test.cpp.o'))
        self.compile = next(shlex.split(command) for command in commands
                            if command.endswith('_test.cpp') and f'-o {self.source_object}' in command)
        self.program = WORK / 'tests' / self.name
        self.limit = 300  # seconds of processor time

    def link_with(self, library, program, test_object=None, options=()):
        command = [*self.link, *options]
        command[command.index('-o') + 1] = str(program)
        if test_object:
            command[command.index(self.source_object)] = str(test_object)
        require([*command, str(library)], cwd=TREE)

    def compile_with(self, includes, test_object, options=()):
        """False when the change does not compile."""
        command = [*self.compile, *options]
        command[command.index('-o') + 1] = str(test_object)
        command.insert(1, f'-I{includes}')
        for option in ('-MD', '-Werror'):
            if option in command:
                command.remove(option)
        for option in ('-MT', '-MF'):
            if option in command:
                at = command.index(option)
                del command[at:at + 2]
        return run([*command, '-w'], cwd=TREE).returncode == 0

    def passes(self, library, program=None, sanitizer=None):
        program = program or self.program
        seconds = self.limit * (4 if sanitizer else 1)
        environment = {**os.environ, 'LD_LIBRARY_PATH': str(library.parent)}
        if sanitizer:
            environment.update(SANITIZER_OPTIONS, LD_PRELOAD=sanitizer)

        def limit():
            resource.setrlimit(resource.RLIMIT_CPU, (seconds, seconds))
            if not sanitizer:  # which reserves more than there is
                resource.setrlimit(resource.RLIMIT_DATA, (MEMORY, MEMORY))
            resource.setrlimit(resource.RLIMIT_CORE, (0, 0))
        try:
            done = run([program, '--gtest_brief=1', '--gtest_fail_fast'], stdin=subprocess.DEVNULL,
                       env=environment, cwd=library.parent, timeout=WAIT + 10 * seconds,
                       preexec_fn=limit)
        except subprocess.TimeoutExpired:
            return False
        return done.returncode == 0


class Build:
    """The library's objects and the shared library that is linked of them."""

    def __init__(self, folder, options, jobs):
        self.options = options
        (folder / 'objects').mkdir(parents=True)
        self.objects = {source.relative_to(ROOT): folder / 'objects' / f'{source.stem}.o'
                        for source in sorted(SOURCES.rglob('*.cpp'))}
        with concurrent.futures.ThreadPoolExecutor(jobs) as pool:
            list(pool.map(lambda item: require(self.compiling(ROOT / item[0], item[1])),
                          self.objects.items()))
        self.library = folder / 'libzn.so'
        self.link(self.library, {})

    def compiling(self, source, built, *includes):
        return ['g++', *includes, *COMPILE, *self.options, '-c', source, '-o', built]

    def link(self, library, exchanged):
        objects = [exchanged.get(path, built) for path, built in self.objects.items()]
        require(['g++', *self.options, '-shared', '-Wl,-soname,libzn.so', '-o', library, *objects])


class Bench:
    """The library's objects and the tests, ready for exchanging one."""

    def __init__(self, jobs):
        self.jobs = jobs
        self.lock = threading.Lock()
        targets = self.targets()
        require(['ninja', '-C', TREE, '-j', str(jobs), *targets])
        shutil.rmtree(WORK, ignore_errors=True)
        (WORK / 'tests').mkdir(parents=True)
        self.plain = Build(WORK / 'plain', [], jobs)
        self.tests = [Test(target) for target in targets]
        for test in self.tests:
            test.link_with(self.plain.library, test.program)
            before = processor_time()
            if not test.passes(self.plain.library):
                sys.exit(f'mutate: {test.name} fails without any change')
            test.limit = 2 + math.ceil(4 * (processor_time() - before))
        self.tests.sort(key=lambda test: test.limit)

    @functools.cached_property
    def sanitized(self):
        return Build(WORK / 'sanitized', SANITIZE, self.jobs)

    @functools.cached_property
    def sanitizer(self):
        return require(['g++', '-print-file-name=libasan.so']).strip()

    @functools.lru_cache(maxsize=None)
    def stands_sanitizers(self, test):
        return test.passes(self.sanitized.library, sanitizer=self.sanitizer)

    @staticmethod
    def targets():
        rules = require(['ninja', '-C', TREE, '-t', 'targets', 'all'])
        return re.findall(r'^(tests/\w+/\w+_test): CXX_EXECUTABLE_LINKER', rules, re.MULTILINE)

    def own_tests(self, path):
        """Those of the unit first, then the others, the quick ones first."""
        names = TESTS.get(path.stem, [path.stem])
        own = [test for test in self.tests if test.name.startswith(tuple(names))]
        return own, [test for test in self.tests if test not in own]

    def dependents(self, path):
        """The library's sources that include a header, directly or through others."""
        wanted, found = {path.relative_to('libraries/src').as_posix()}, set()
        files = {source.relative_to(SOURCES).as_posix(): source.read_text(encoding='utf-8')
                 for source in [*SOURCES.rglob('*.h'), *SOURCES.rglob('*.cpp')]}
        while wanted:
            header = wanted.pop()
            for name, text in files.items():
                if f'#include "{header}"' in text and name not in found:
                    found.add(name)
                    wanted.add(name)
        return [Path('libraries/src') / name for name in sorted(found) if name.endswith('.cpp')]

    def judge(self, mutant, folder):
        """'killed', 'survived', or 'invalid' for what does not compile."""
        own, others = self.own_tests(mutant.path)
        if not own and mutant.path.suffix == '.h':
            sys.exit(f'mutate: no test is named after {mutant.path}')
        tests = own if mutant.path.suffix == '.h' else own + others
        verdict = self.verdict(self.outcomes(mutant, folder, self.plain, tests))
        if verdict != 'survived':
            return verdict
        with self.lock:
            tests = [test for test in tests if self.stands_sanitizers(test)]
        return self.verdict(self.outcomes(mutant, folder, self.sanitized, tests, self.sanitizer))

    def outcomes(self, mutant, folder, build, tests, sanitizer=None):
        """Whether each of the tests passes; None when the change does not compile."""
        shutil.rmtree(folder, ignore_errors=True)
        source = folder / 'src' / mutant.path.relative_to('libraries/src')
        source.parent.mkdir(parents=True)
        source.write_text(mutant.mutated, encoding='utf-8')
        in_header = mutant.path.suffix == '.h'
        internal = 'internal' in mutant.path.parts
        changed = [mutant.path]
        if in_header:
            changed = self.dependents(mutant.path) if internal or sanitizer else []
        exchanged = {}
        for path in changed:
            origin = source if path == mutant.path else ROOT / path
            exchanged[path] = folder / f'{path.stem}.o'
            if run(build.compiling(origin, exchanged[path], f'-I{folder}/src')).returncode != 0:
                yield None
                return
        library = folder / 'libzn.so'
        build.link(library, exchanged)
        for test in tests:
            program = None
            if in_header and not internal:
                test_object, program = folder / 'test.o', folder / test.name
                if not test.compile_with(folder / 'src', test_object, build.options):
                    yield None
                    return
                test.link_with(library, program, test_object, build.options)
            yield test.passes(library, program, sanitizer)

    @staticmethod
    def verdict(outcomes):
        for passed in outcomes:
            if passed is None:
                return 'invalid'
            if not passed:
                return 'killed'
        return 'survived'


# What is known

def explained():
    """The changes that nothing can notice, from the file that says why."""
    keys = set()
    for entry in re.split(r'\n\s*\n', EXPLAINED.read_text(encoding='utf-8')):
        lines = [line for line in entry.strip().splitlines() if not line.startswith('#')]
        if not lines:
            continue
        path, *rest = lines
        changes = re.findall(r'((?:^= .*\n)*(?:^- .*\n)+(?:^\+ .*(?:\n|$))+)', '\n'.join(rest),
                             re.MULTILINE)
        if not changes or rest[-1].startswith(('- ', '+ ')):
            sys.exit(f'mutate: {EXPLAINED.name} does not say what or why:\n{entry}')
        keys.update(f'{path}\n{change.rstrip()}' for change in changes)
    return keys


def summary(count):
    valid = count['killed'] + count['explained'] + count['survived']
    return (f'{valid} changes: {count["killed"]} noticed, {count["explained"]} explained, '
            f'{count["survived"]} unnoticed ({count["invalid"]} more do not compile)')


def main():
    parser = argparse.ArgumentParser(
        prog='tools/mutate', description='Changes operators, constants, conditions, messages and '
        'statements of the library one at a time and runs the unit tests, which must notice. '
        'Changes that nothing can notice are in tests/mutants.txt, each with the reason. The exit '
        'status is 0 when no other change went unnoticed.')
    parser.add_argument('--file', action='append', metavar='NAME', default=[],
                        help='only sources with this in their path; may be given more than once')
    parser.add_argument('--seconds', type=float, metavar='N',
                        help='a random choice of the changes, for so long')
    parser.add_argument('--seed', type=int, metavar='N', default=None,
                        help='repeats an earlier random choice')
    parser.add_argument('--jobs', type=int, metavar='N', default=os.cpu_count())
    parser.add_argument('--list', action='store_true', help='only show the changes')
    arguments = parser.parse_args()

    paths = [path.relative_to(ROOT) for path in
             sorted([*SOURCES.rglob('*.cpp'), *SOURCES.rglob('*.h')])]
    chosen = [path for path in paths
              if not arguments.file or any(name in str(path) for name in arguments.file)]
    if not chosen:
        sys.exit('mutate: no such file')
    everything = {path: mutants_of(path) for path in paths}
    mutants = [mutant for path in chosen for mutant in everything[path]]
    if arguments.list:
        for mutant in mutants:
            print(f'{mutant.key}\n')
        return 0
    if arguments.seconds:
        seed = random.randrange(10000) if arguments.seed is None else arguments.seed
        print(f'seed {seed}', flush=True)
        random.Random(seed).shuffle(mutants)

    known = explained()
    stale = known - {mutant.key for found in everything.values() for mutant in found}
    if stale:
        sys.exit('\n'.join([f'mutate: {EXPLAINED.name} explains what is not tried:', *sorted(stale)]))
    bench = Bench(arguments.jobs)
    deadline = time.monotonic() + (arguments.seconds or float('inf'))
    folders = threading.local()
    counts = {path: dict.fromkeys(('killed', 'explained', 'survived', 'invalid'), 0)
              for path in chosen}

    def judge(mutant):
        if time.monotonic() > deadline:
            return mutant, None
        if mutant.key in known:
            return mutant, 'explained'
        if not hasattr(folders, 'path'):
            folders.path = WORK / f'worker-{threading.get_ident()}'
        return mutant, bench.judge(mutant, folders.path)

    with concurrent.futures.ThreadPoolExecutor(arguments.jobs) as pool:
        for mutant, verdict in pool.map(judge, mutants):
            if verdict is None:
                continue
            counts[mutant.path][verdict] += 1
            if verdict == 'survived':
                print(f'\nsurvived, line {mutant.line}:\n{mutant.key}', flush=True)

    print()
    for path, count in counts.items():
        if any(count.values()):
            print(f'{path.relative_to("libraries/src")}: {summary(count)}')
    total = {verdict: sum(count[verdict] for count in counts.values())
             for verdict in ('killed', 'explained', 'survived', 'invalid')}
    print(summary(total))
    return 1 if total['survived'] else 0


if __name__ == '__main__':
    sys.exit(main())
