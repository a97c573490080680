"""zn-dump prints the values in intact and damaged files."""

import json
import os
import random
import struct
import subprocess
import sys
import tempfile
import unittest
from pathlib import Path

ROOT = Path(__file__).resolve().parents[2]
GOLDEN = ROOT / 'tests' / 'golden'
DUMP = [*os.environ['ZN_EMULATOR'].split(), os.environ['ZN_DUMP']]

sys.path.insert(0, str(ROOT / 'examples'))
sys.path.insert(0, str(GOLDEN))
import object_stream_reader  # noqa: E402
from make_golden_files import (  # noqa: E402
    integer, record, resolution, resolution_set, stream, string, typed_file)

MIXED = (GOLDEN / 'mixed.stream').read_bytes()


def run(*arguments, **options):
    return subprocess.run([*DUMP, *arguments], timeout=120, check=False,
                          **({'stdout': subprocess.PIPE, 'stderr': subprocess.PIPE} | options))


class DumpTest(unittest.TestCase):
    maxDiff = None

    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.folder = Path(folder.name)

    def file(self, content, name='file'):
        path = self.folder / name
        path.write_bytes(content)
        return path

    def text(self, content, *options, status=0):
        """Returns the lines that zn-dump prints for a file with this content, without the first."""
        done = run(*options, self.file(content))
        self.assertEqual(done.returncode, status, done)
        return done.stdout.decode().splitlines()[1:]

    def json(self, *arguments, status=0):
        done = run('--json', *arguments)
        self.assertEqual(done.returncode, status, done.stderr)
        return json.loads(done.stdout.decode())

    def dump(self, content, *options, status=0):
        [file] = self.json(*options, self.file(content), status=status)
        return file

    def dump_all(self, contents):
        """Dumps all contents in one call, because starting the program is slow under emulation."""
        paths = [self.file(content, str(number)) for number, content in enumerate(contents)]
        done = run('--json', *paths)
        self.assertIn(done.returncode, (0, 1), done.stderr)
        return json.loads(done.stdout.decode())


class Text(DumpTest):

    def test_has_a_line_for_each_value(self):
        done = run('mixed.stream', cwd=GOLDEN)
        self.assertEqual(done.stdout.decode(), '''\
mixed.stream: object stream, 166 bytes
         0   504 Integer                       4  -7
        12   501 zntl_String                  11  "Gate 3"
        31   815 Resolution                    8  640x480
        47   900 -                             3  0a 0b 0c
        58     6 znsl_MemIOStream             24
        70   504   Integer                     4  -7
        82     1   znsl_EndOfFile              0
        90 10815 ResolutionSet                60  2 of type 815
       126   815   Resolution                  8  320x240
       142   815   Resolution                  8  640x480
       158     1 znsl_EndOfFile                0
''')
        self.assertEqual((done.returncode, done.stderr), (0, b''))

    def test_shows_typed_files(self):
        done = run('integer.typed', 'set.typed', 'end_of_file.typed', cwd=GOLDEN)
        self.assertEqual(done.stdout.decode(), '''\
integer.typed: typed file, 10 bytes
         0   504 Integer                       4  -7
set.typed: typed file, 66 bytes
         0 10815 ResolutionSet                60  2 of type 815
        34   815   Resolution                  8  320x240
        50   815   Resolution                  8  640x480
end_of_file.typed: typed file, 6 bytes
         0     1 znsl_EndOfFile                0
''')
        self.assertEqual((done.returncode, done.stderr), (0, b''))

    def test_shows_at_most_32_bytes_of_unknown_types(self):
        for size in (0, 32, 33, 5000):
            [line] = self.text(record(900, bytes([0xAB]) * size))
            shown = ' ab' * min(size, 32) + (' ...' if size > 32 else '')
            self.assertEqual(line, f'         0   900 -                   {size:11} {shown}')

    def test_escapes_what_a_terminal_would_not_show(self):
        for content, shown in (
                (b'Gr\xc3\xbc\xc3\x9fe \xe2\x82\xac \xf0\x9f\x98\x80', 'Gr\u00fc\u00dfe \u20ac \U0001f600'),
                (b'a"b\\c', 'a\\"b\\\\c'),
                (b'\n\r\x1b[2J\x7f', '\\n\\x0d\\x1b[2J\\x7f'),
                (b'\xc2\x9b1m', '\\xc2\\x9b1m'),
                (b'\xff\xc3', '\\xff\\xc3'),
                (b'\xc0\xaf\xed\xa0\x80', '\\xc0\\xaf\\xed\\xa0\\x80')):
            [line] = self.text(record(501, string(content)))
            self.assertTrue(line.endswith(f'  "{shown}"'), line)

    def test_escapes_file_names_in_messages(self):
        done = run(self.file(b'', 'a\x1b[31m"b'), self.folder / 'c\n')
        self.assertEqual(done.stderr.decode(),
                         f'zn-dump: {self.folder}/c\\n: No such file or directory\n')
        done = run(self.file(b'x', 'a\x1b[31m"b'))
        self.assertIn('a\\x1b[31m\\"b: damaged at offset', done.stderr.decode())

    def test_mentions_a_length_that_disagrees_with_the_string(self):
        [line] = self.text(record(501, string(b'ab\0cd')))
        self.assertTrue(line.endswith('  "ab" (its stored length is 5)'), line)


class Json(DumpTest):

    def test_holds_every_value(self):
        [file] = self.json(GOLDEN / 'mixed.stream')

        def entry(offset, type_id, name, length, **further):
            return {'offset': offset, 'type': type_id, 'name': name, 'length': length} | further

        def size(offset, width, height):
            return entry(offset, 815, 'Resolution', 8, value={'width': width, 'height': height})

        self.assertEqual(file, {
            'file': str(GOLDEN / 'mixed.stream'), 'form': 'stream', 'size': 166, 'damaged': False,
            'values': [
                entry(0, 504, 'Integer', 4, value=-7),
                entry(12, 501, 'zntl_String', 11, value='Gate 3'),
                size(31, 640, 480),
                entry(47, 900, None, 3, hex='0a0b0c'),
                entry(58, 6, 'znsl_MemIOStream', 24, values=[
                    entry(70, 504, 'Integer', 4, value=-7),
                    entry(82, 1, 'znsl_EndOfFile', 0)]),
                entry(90, 10815, 'ResolutionSet', 60, elementType=815, count=2, values=[
                    size(126, 320, 240), size(142, 640, 480)]),
                entry(158, 1, 'znsl_EndOfFile', 0)]})

    def test_is_an_array_of_the_files(self):
        files = self.json(GOLDEN / 'integer.typed', self.folder / 'missing', self.file(b''),
                          status=2)
        self.assertEqual([file.get('form') for file in files], ['typed', None, 'stream'])
        self.assertEqual(files[1], {'file': str(self.folder / 'missing'),
                                    'error': 'No such file or directory'})
        self.assertEqual(files[2]['values'], [])

    def test_holds_any_string(self):
        characters = ''.join(map(chr, range(1, 0x250))) + '\u2028\ufffe\U0010ffff"\\/'
        [value] = self.dump(record(501, string(characters.encode())))['values']
        self.assertEqual(value['value'], characters)
        for wrong in (b'\xff', b'a\xc3', b'\xed\xa0\x80', b'\xf4\x90\x80\x80', b'\xf0\x80\x80\x80'):
            [value] = self.dump(record(501, string(wrong)))['values']
            self.assertEqual(value['valueHex'], wrong.hex())
            self.assertNotIn('value', value)

    def test_holds_any_file_name(self):
        path = os.fsencode(self.folder) + b'/\xff"\n\\'
        Path(os.fsdecode(path)).write_bytes(b'')
        [file] = self.json(path)
        self.assertTrue(file['file'].endswith('/\ufffd"\n\\'))

    def test_is_valid_for_any_bytes(self):
        generator = random.Random(18)
        contents = []
        for _ in range(150):
            content = bytearray(MIXED)
            for _ in range(generator.randrange(1, 8)):
                content[generator.randrange(len(content))] = generator.randrange(256)
            contents.append(bytes(content))
            contents.append(generator.randbytes(generator.randrange(60)))
        self.assertEqual(len(self.dump_all(contents)), 300)


class IndependentReader(DumpTest):
    """The reader in examples/, written from the documentation alone, finds the same values."""

    NAMES = {'EndOfFile': 'znsl_EndOfFile', 'String': 'zntl_String', 'Integer': 'Integer',
             'Resolution': 'Resolution', 'ResolutionSet': 'ResolutionSet'}

    def describe(self, content):
        found = []
        for type_id, payload in object_stream_reader.records(content):
            if type_id == 6:
                nested = object_stream_reader.nested_content(payload)
                found.append(('znsl_MemIOStream', self.describe(nested)))
            else:
                name, text = object_stream_reader.describe(type_id, payload)
                found.append((self.NAMES.get(name), text))
        return found

    def describe_dumped(self, values):
        def size(value):
            return '{width}x{height}'.format(**value['value'])

        texts = {1: lambda value: '', 6: lambda value: self.describe_dumped(value['values']),
                 501: lambda value: f'"{value["value"]}"', 504: lambda value: str(value['value']),
                 815: size, 10815: lambda value: ' '.join(map(size, value['values']))}
        return [(value['name'], texts[value['type']](value) if value['type'] in texts else
                 bytes.fromhex(value['hex']).hex(' ')) for value in values]

    def test_agrees(self):
        for path in GOLDEN.glob('*.stream'):
            [file] = self.json(path)
            self.assertEqual(self.describe_dumped(file['values']), self.describe(path.read_bytes()))


class Form(DumpTest):

    def test_is_the_one_in_which_the_file_is_whole(self):
        for path in GOLDEN.iterdir():
            if path.suffix in ('.typed', '.stream'):
                [file] = self.json(path)
                self.assertEqual(file['form'], path.suffix[1:])
        self.assertEqual(self.dump(b'')['form'], 'stream')
        # The reserved field of a record is ignored.
        reserved = bytearray(MIXED)
        reserved[2] = 1
        self.assertEqual(self.dump(reserved)['form'], 'stream')
        self.assertEqual(self.dump(typed_file(900, bytes(65536)))['form'], 'typed')

    def test_depends_on_bytes_2_and_3_for_a_file_that_is_whole_in_both(self):
        both = typed_file(900, bytes(2))
        self.assertEqual(both, b'\x84\x03\x02\0\0\0\0\0')
        self.assertEqual(self.dump(both)['form'], 'typed')
        self.assertEqual(self.dump(both, '--stream')['values'][0]['length'], 0)

    def test_depends_on_bytes_2_and_3_for_a_file_that_is_whole_in_none(self):
        for content, form in ((MIXED[:-1], 'stream'), (typed_file(504, b'abcd')[:-1], 'typed'),
                              (typed_file(504, b'abcd') + b'e', 'typed'), (b'\1\2\3', 'stream')):
            self.assertEqual(self.dump(content, status=1)['form'], form)

    def test_can_be_chosen_by_an_option(self):
        self.assertEqual(self.dump(MIXED, '--typed', status=1)['form'], 'typed')
        self.assertEqual(self.dump(typed_file(504, b'abcd'), '--stream', status=1)['form'], 'stream')


class Damage(DumpTest):

    def test_of_a_file_cut_short_anywhere_follows_its_whole_records(self):
        starts = [0]
        for _, payload in object_stream_reader.records(MIXED):
            starts.append(starts[-1] + 8 + len(payload))
        whole = self.dump(MIXED)['values']
        for size, file in enumerate(self.dump_all(MIXED[:size] for size in range(len(MIXED)))):
            count = sum(start <= size for start in starts) - 1
            *values, last = file['values'] or [None]
            if size in starts:
                self.assertEqual(file['values'], whole[:count])
            else:
                self.assertEqual(values, whole[:count])
                self.assertEqual(last['offset'], starts[count])
                self.assertIn('cut short', last['damage'])
            self.assertEqual(file['damaged'], size not in starts)

    def test_is_reported_with_its_offset_and_status_1(self):
        path = self.file(MIXED[:100])
        done = run(path)
        self.assertEqual(done.returncode, 1)
        self.assertEqual(done.stderr.decode(), f'zn-dump: {path}: damaged at offset 90\n')
        lines = done.stdout.decode().splitlines()
        self.assertEqual(lines[-2], '        82     1   znsl_EndOfFile              0')
        self.assertEqual(lines[-1], '        90 damaged: a payload of type 10815 is cut short: '
                                    '60 bytes announced, 2 there')

    def test_of_a_header_is_reported(self):
        self.assertEqual(self.text(record(1, b'') + b'\x01\x02\x03', status=1)[-1],
                         '         8 damaged: the header of a record is cut short')
        self.assertEqual(self.text(b'\x01\x00\x02', '--typed', status=1)[-1],
                         '         0 damaged: the header of a typed file is cut short')

    def test_of_a_payload_leaves_the_records_that_follow(self):
        for type_id, payload, fault in (
                (504, b'abc', 'an integer is cut short'),
                (815, b'abcdefg', 'a resolution is cut short'),
                (501, b'\3\0\0\0abc', 'a string has no end'),
                (501, b'', 'a string has no end'),
                (6, b'abc', 'a stream is cut short'),
                (6, b'\4\0\0\0abc', 'a stream is cut short'),
                (10815, b'abc', 'a set does not begin with its element type and count'),
                (10815, stream(record(504, integer(504)), record(504, integer(0))),
                 'a set does not begin with its element type and count')):
            file = self.dump(record(type_id, payload) + record(504, integer(5)), status=1)
            self.assertEqual(file['values'][0]['hex'], payload.hex())
            self.assertEqual(file['values'][1], {'offset': 8, 'damage': fault})
            self.assertEqual(file['values'][2]['value'], 5)

    def test_in_a_nested_stream_is_reported_with_its_offset(self):
        content = record(6, stream(record(504, integer(5)), b'abc')) + record(504, integer(6))
        file = self.dump(content, status=1)
        self.assertEqual(file['values'][0]['values'][1],
                         {'offset': 24, 'damage': 'the header of a record is cut short'})
        self.assertEqual(file['values'][1]['value'], 6)

    def test_in_a_set_is_reported_with_its_offset(self):
        head = record(504, integer(815)) + record(504, integer(2))
        size = record(815, resolution(1, 2))
        for elements, offset, fault in (
                (size, 52, 'a set has 1 elements instead of 2'),
                (size + record(504, integer(1)), 52, 'an element of a set is of another type'),
                (size + size[:-1], 52, 'a payload of type 815 is cut short: 8 bytes announced, 7 there')):
            file = self.dump(record(10815, stream(head, elements)), status=1)
            self.assertEqual(file['values'][0]['values'][-1], {'offset': offset, 'damage': fault})
        # Objects that follow the last element are ignored by readers.
        self.dump(record(10815, stream(head, size, size, size)))

    def test_after_a_typed_file_is_reported(self):
        file = self.dump(typed_file(504, integer(5)) + b'x', status=1)
        self.assertEqual(file['values'][0]['value'], 5)
        self.assertEqual(file['values'][1],
                         {'offset': 10, 'damage': 'a typed file goes on after its payload'})


class Sets(DumpTest):

    def test_of_any_class_are_known_by_their_form(self):
        content = record(12001, stream(record(504, integer(2001)), record(504, integer(1)),
                                       record(2001, b'xyz')))
        self.assertEqual(self.text(content), [
            '         0 12001 set                          39  1 of type 2001',
            '        36  2001   -                           3  78 79 7a'])
        [value] = self.dump(content)['values']
        self.assertEqual((value['name'], value['elementType'], value['count']), (None, 2001, 1))

    def test_of_another_form_are_bytes(self):
        content = record(12001, stream(record(504, integer(2002)), record(504, integer(0))))
        self.assertIn('hex', self.dump(content)['values'][0])

    def test_of_sets_are_indented(self):
        inner = resolution_set((1, 2))
        lines = self.text(record(20815, stream(record(504, integer(10815)), record(504, integer(1)),
                                               record(10815, inner))))
        self.assertEqual([line.split()[1] for line in lines], ['20815', '10815', '815'])
        self.assertIn('   815     Resolution ', lines[2])


class Nesting(DumpTest):

    def nested(self, levels):
        content = record(504, integer(5))
        for _ in range(levels):
            content = record(6, stream(content))
        return content

    def test_is_followed_for_64_levels(self):
        self.assertTrue(self.text(self.nested(64))[-1].endswith('  5'))
        lines = self.text(self.nested(65))
        self.assertEqual(len(lines), 65)
        self.assertTrue(lines[-1].endswith('(nested too deeply to be shown)'), lines[-1])

    def test_of_any_depth_does_not_crash(self):
        # Built from the innermost level outwards; each level adds 12 bytes at the front.
        levels = 20000
        size = 12
        headers = []
        for _ in range(levels):
            headers.append(struct.pack('<HHII', 6, 0, size + 4, size))
            size += 12
        content = b''.join(reversed(headers)) + record(504, integer(5))
        file = self.dump(content)
        depth = 0
        values = file['values']
        while values:
            depth += 1
            [value] = values
            values = value.get('values')
        self.assertEqual((depth, value['tooDeep']), (65, True))


class Arguments(DumpTest):

    def test_ask_for_help(self):
        done = run('--help')
        self.assertEqual(done.returncode, 0)
        self.assertTrue(done.stdout.startswith(b'Usage: zn-dump '))

    def test_ask_for_the_version(self):
        done = run('--version')
        self.assertEqual((done.returncode, done.stdout.decode()),
                         (0, f'zn-dump {os.environ["ZN_VERSION"]}\n'))

    def test_that_are_wrong_are_status_2(self):
        for arguments, fault in (((), 'no file named'), (('--xml', 'x'), 'no such option: --xml')):
            done = run(*arguments)
            self.assertEqual((done.returncode, done.stdout), (2, b''))
            self.assertEqual(done.stderr.decode(), f"zn-dump: {fault}\nTry 'zn-dump --help'.\n")

    def test_name_the_standard_input(self):
        done = run('-', input=MIXED)
        self.assertEqual(done.returncode, 0)
        self.assertTrue(done.stdout.startswith(b'-: object stream, 166 bytes\n'))

    def test_may_begin_with_a_hyphen(self):
        self.file(b'', '--json')
        done = run('--', '--json', cwd=self.folder)
        self.assertEqual((done.returncode, done.stdout), (0, b'--json: object stream, 0 bytes\n'))

    def test_name_files_that_cannot_be_read(self):
        for path, reason in ((self.folder / 'missing', 'No such file or directory'),
                             (self.folder, 'Is a directory')):
            done = run(path, GOLDEN / 'integer.typed')
            self.assertEqual(done.returncode, 2)
            self.assertEqual(done.stderr.decode(), f'zn-dump: {path}: {reason}\n')
            self.assertEqual(len(done.stdout.splitlines()), 2)

    def test_have_the_highest_status_of_their_files(self):
        self.assertEqual(run(self.folder, self.file(b'x'), GOLDEN / 'mixed.stream').returncode, 2)
        self.assertEqual(run(GOLDEN / 'mixed.stream', self.file(b'x')).returncode, 1)


class Output(DumpTest):

    def test_that_cannot_be_written_is_status_2(self):
        full = self.folder / 'full'
        full.symlink_to('/dev/full')
        with open(full, 'wb') as out:
            done = run('--json', GOLDEN / 'mixed.stream', stdout=out)
        self.assertEqual(done.returncode, 2)
        self.assertEqual(done.stderr, b'zn-dump: cannot write: No space left on device\n')


if __name__ == '__main__':
    unittest.main()
