"""The camera simulator: its sizes, failures, record and exports."""

import os
import re
import subprocess
import tempfile
import unittest
from pathlib import Path

from simulator import PROFILES, SIMULATOR, run

PROBE = os.environ['ZN_PROBE']
READELF = os.environ['ZN_READELF']

REFUSED = -1000

# The initial content of the two records, except the settings' pointers.
STATE_PATTERN = bytes(range(0xa0, 0xb0))
MODE_PATTERN = b'\x5a' * 4
FLAGS_PATTERN = b'\x5a\xff'


def probe(*calls, **camera):
    return run(PROBE, *calls, **camera)


def delivered(**camera):
    """Returns the sizes that the simulator delivers. Asserts that every other call succeeds."""
    session = probe('init', 'all', 'deinit', **camera)
    started, *sizes, ended, stopped = session.output.decode().splitlines()
    assert (started, ended, stopped) == ('init 0', 'next 1', 'deinit 0'), session
    return sizes


class Camera(unittest.TestCase):

    def test_has_six_sizes_by_default(self):
        self.assertEqual(delivered(),
                         ['640x480', '320x240', '176x144', '320x180', '160x120', '176x144'])

    def test_has_six_sizes_when_its_variables_are_empty(self):
        self.assertEqual(len(delivered(profile='', count='', init_result='', end_result='',
                                       deinit_result='', new_handles='', record='')), 6)

    def test_has_the_sizes_of_its_profile_in_their_order(self):
        self.assertEqual(delivered(text=b'3x4\n1x2\n3x4\n'), ['3x4', '1x2', '3x4'])

    def test_generates_the_chosen_number_of_sizes(self):
        sizes = delivered(count=100_002)
        self.assertEqual(len(sizes), 100_002)
        self.assertEqual(sizes[:2], ['0x0', '1x0'])
        self.assertEqual(sizes[399:401], ['399x0', '0x1'])
        self.assertEqual(sizes[99_999:], ['399x249', '0x0', '1x0'])

    def test_has_no_sizes_if_the_chosen_number_is_0(self):
        self.assertEqual(delivered(count=0), [])

    def test_starts_anew_in_each_session(self):
        session = probe('init', 'next', 'next', 'deinit', 'init', 'next', 'next', count=3)
        self.assertEqual(session.output.decode().split(),
                         ['init', '0', '0x0', '1x0', 'deinit', '0', 'init', '0', '0x0', '1x0'])
        self.assertEqual([call.fields.get('kept') for call in session.calls
                          if call.name == 'csdk_next_resolution'], [None, '1', None, '1'])
        session = probe('init', 'next', 'deinit', 'init', 'next', 'deinit')
        self.assertEqual(session.output.decode().split('\n'),
                         ['init 0', '640x480', 'deinit 0'] * 2 + [''])


class Profile(unittest.TestCase):

    WELL_FORMED = {
        'empty': (b'', []),
        'no newline at the end': (b'1x2\n3x4', ['1x2', '3x4']),
        'CR LF': (b'1x2\r\n\r\n3x4\r\n', ['1x2', '3x4']),
        'blank lines': (b'\n1x2\n\n \t\n3x4\n\n', ['1x2', '3x4']),
        'comments': (b'# a\n#\n1x2 # b\n3x4# 5x6\n \t# c', ['1x2', '3x4']),
        'blanks around a size': (b' \t1x2\t \n', ['1x2']),
        'leading zeros': (b'007x0000000000000000000000008\n', ['7x8']),
        'negative': (b'-1x2\n1x-2\n-0x0\n', ['-1x2', '1x-2', '0x0']),
        'extremes': (b'2147483647x-2147483648\n-2147483648x2147483647\n',
                     ['2147483647x-2147483648', '-2147483648x2147483647']),
        'long comment': (b'#' * 100_000 + b'\n1x2\n', ['1x2']),
    }

    MALFORMED = {
        'a word': (b'1x2\nsmall\n', 2),
        'no width': (b'x2\n', 1),
        'no height': (b'1x\n', 1),
        'no separator': (b'12\n', 1),
        'another separator': (b'1X2\n', 1),
        'blank before the separator': (b'1 x2\n', 1),
        'blank after the separator': (b'1x 2\n', 1),
        'two sizes': (b'1x2 3x4\n', 1),
        'three numbers': (b'1x2x3\n', 1),
        'plus': (b'+1x2\n', 1),
        'two minuses': (b'--1x2\n', 1),
        'minus alone': (b'-x2\n', 1),
        'fraction': (b'1.5x2\n', 1),
        'hexadecimal': (b'0x10x2\n', 1),
        'width above 32 bits': (b'2147483648x2\n', 1),
        'height above 32 bits': (b'1x2147483648\n', 1),
        'width below 32 bits': (b'-2147483649x2\n', 1),
        'vertical tab before a size': (b'\v1x2\n', 1),
        'number beyond 64 bits': (b'1x18446744073709551617\n', 1),
        'NUL': (b'1x2\n\n# c\n1x2\x00\n', 4),
        'CR between sizes': (b'1x2\r3x4\n', 1),
        'byte order mark': (b'\xef\xbb\xbf1x2\n', 1),
        'the last line, without newline': (b'\n\n1x2\n1x', 4),
    }

    def test_well_formed(self):
        for name, (text, sizes) in self.WELL_FORMED.items():
            with self.subTest(name):
                self.assertEqual(delivered(text=text), sizes)

    def test_malformed_is_reported_with_file_and_line(self):
        for name, (text, line) in self.MALFORMED.items():
            with self.subTest(name), tempfile.TemporaryDirectory() as folder:
                profile = Path(folder, 'camera.txt')
                profile.write_bytes(text)
                session = probe('init', 'next', profile=profile)
                self.assertEqual(session.output, b'init -1000\nnext -1000\n')
                self.assertEqual(session.errors,
                                 f'csdk simulator: {profile}:{line}: expected WIDTHxHEIGHT, '
                                 'two numbers that fit 32 bits\n')

    UNREADABLE = {
        '/no/such/profile': 'No such file or directory',
        '/': 'Is a directory',
        '/dev/zero': 'File too large',
    }

    def test_unreadable_is_reported_with_the_reason(self):
        for path, reason in self.UNREADABLE.items():
            with self.subTest(path):
                session = probe('init', profile=path)
                self.assertEqual(session.output, b'init -1000\n')
                self.assertEqual(session.errors, f'csdk simulator: {path}: {reason}\n')

    def test_shipped_ones_are_well_formed(self):
        profiles = sorted(path.name for path in PROFILES.iterdir())
        self.assertEqual(profiles, ['benchmark.txt', 'full-hd.txt', 'indoor.txt', 'unordered.txt'])
        counts = [len(delivered(profile=PROFILES / name)) for name in profiles]
        self.assertEqual(counts, [24, 20, 9, 16])


class Results(unittest.TestCase):

    NUMBERS = [1, -1, 42, 2147483647, -2147483648]

    def test_start_fails_with_the_chosen_code(self):
        for code in self.NUMBERS:
            with self.subTest(code):
                self.assertEqual(probe('init', 'next', 'deinit', init_result=code).output.decode(),
                                 f'init {code}\nnext -1000\ndeinit -1000\n')

    def test_list_ends_with_the_chosen_code(self):
        for code in self.NUMBERS:
            with self.subTest(code):
                self.assertEqual(probe('init', 'next', 'next', 'next', sizes=['1x2'],
                                       end_result=code).output.decode(),
                                 f'init 0\n1x2\nnext {code}\nnext {code}\n')

    def test_stop_returns_the_chosen_code(self):
        for code in self.NUMBERS:
            with self.subTest(code):
                self.assertEqual(probe('init', 'deinit', 'init', deinit_result=code).output.decode(),
                                 f'init 0\ndeinit {code}\ninit 0\n')

    MISTAKES = [
        ({'init_result': 'x'}, 'CSDK_SIMULATOR_INIT_RESULT=x: '
                               'expected a number from -2147483648 to 2147483647'),
        ({'init_result': '2147483648'}, 'CSDK_SIMULATOR_INIT_RESULT=2147483648: '
                                        'expected a number from -2147483648 to 2147483647'),
        ({'init_result': '1 '}, 'CSDK_SIMULATOR_INIT_RESULT=1 : '
                                'expected a number from -2147483648 to 2147483647'),
        ({'end_result': '0'}, 'CSDK_SIMULATOR_END_RESULT=0: the list would never end'),
        ({'end_result': '1.0'}, 'CSDK_SIMULATOR_END_RESULT=1.0: '
                                'expected a number from -2147483648 to 2147483647'),
        ({'deinit_result': '-'}, 'CSDK_SIMULATOR_DEINIT_RESULT=-: '
                                 'expected a number from -2147483648 to 2147483647'),
        ({'new_handles': '2'}, 'CSDK_SIMULATOR_NEW_HANDLES=2: expected a number from 0 to 1'),
        ({'new_handles': 'yes'}, 'CSDK_SIMULATOR_NEW_HANDLES=yes: expected a number from 0 to 1'),
        ({'count': '-1'}, 'CSDK_SIMULATOR_COUNT=-1: expected a number from 0 to 2147483647'),
        ({'count': '1', 'profile': '/dev/null'},
         'CSDK_SIMULATOR_PROFILE and CSDK_SIMULATOR_COUNT: expected only one of them'),
        ({'count': '0', 'profile': '/dev/null'},
         'CSDK_SIMULATOR_PROFILE and CSDK_SIMULATOR_COUNT: expected only one of them'),
        ({'record': '/no/such/folder/record'},
         '/no/such/folder/record: No such file or directory'),
    ]

    def test_mistakes_are_reported_and_fail_the_start(self):
        for options, message in self.MISTAKES:
            with self.subTest(options):
                session = probe('init', **options)
                self.assertEqual(session.output, b'init -1000\n')
                self.assertEqual(session.errors, f'csdk simulator: {message}\n')


class Handles(unittest.TestCase):

    def test_one_handle_is_good_for_a_session(self):
        self.assertEqual(probe('init', 'next', 'stale').output, b'init 0\n640x480\n320x240\n')

    def test_new_handles_make_the_last_one_stale(self):
        session = probe('init', 'next', 'stale', 'next', new_handles=1)
        self.assertEqual(session.output, b'init 0\n640x480\nnext -1000\n320x240\n')
        handles = [(call['handle'], call['expected']) for call in session.calls[1:]]
        self.assertEqual(handles, [('1001', '1001'), ('1001', '1002'), ('1003', '1003')])

    def test_calls_outside_a_session_are_refused(self):
        self.assertEqual(probe('next', 'zero', 'deinit').output,
                         b'next -1000\nnext -1000\ndeinit -1000\n')
        self.assertEqual(probe('init', 'deinit', 'next', 'deinit').output,
                         b'init 0\ndeinit 0\nnext -1000\ndeinit -1000\n')

    def test_second_start_is_refused_and_has_no_effect(self):
        session = probe('init', 'init', 'next', 'deinit')
        self.assertEqual(session.output, b'init 0\ninit -1000\n640x480\ndeinit 0\n')
        self.assertEqual(session.errors, 'csdk simulator: csdk_init() called twice\n')


class Record(unittest.TestCase):

    def test_has_every_call_in_order(self):
        calls = probe('init', 'next', 'next', 'next', 'deinit',
                      sizes=['1x2', '-3x4'], end_result=-7).calls
        self.assertEqual([call.name for call in calls],
                         ['csdk_init', *['csdk_next_resolution'] * 3, 'csdk_deinit'])
        self.assertEqual([call.fields for call in calls[1:4]], [
            {'result': '0', 'handle': '1001', 'expected': '1001', 'width': '1', 'height': '2'},
            {'result': '0', 'handle': '1001', 'expected': '1001', 'kept': '1',
             'width': '-3', 'height': '4'},
            {'result': '-7', 'handle': '1001', 'expected': '1001', 'kept': '1'},
        ])

    def test_reports_whether_the_variables_were_changed(self):
        for change in ('wider', 'higher'):
            with self.subTest(change):
                calls = probe('init', 'next', change, 'next', 'next').calls
                self.assertEqual([call['kept'] for call in calls[2:]], ['0', '1'])

    def test_that_cannot_be_written_fails_the_start(self):
        with tempfile.TemporaryDirectory() as folder:
            # A link, because tests run as root: faulty code must not replace the device itself.
            full = Path(folder, 'full')
            full.symlink_to('/dev/full')
            session = probe('init', 'next', 'deinit', record=full)
            self.assertEqual(session.output, b'init -1000\nnext -1000\ndeinit -1000\n')
            self.assertEqual(session.errors,
                             f'csdk simulator: {full}: No space left on device\n' * 3)
            self.assertTrue(full.is_symlink())

    def test_has_both_records_as_the_library_set_them_up(self):
        start, stop = probe('init', 'deinit').calls
        for call, handle in ((start, 1001), (stop, -1)):
            self.assertEqual(call.result, 0)
            self.assertEqual(bytes.fromhex(call['csdk']),
                             handle.to_bytes(4, 'little', signed=True) + STATE_PATTERN)
            settings = bytes.fromhex(call['csdk_settings'])
            self.assertEqual(len(settings), 40)
            pointers, rest = settings.split(MODE_PATTERN + FLAGS_PATTERN)
            self.assertEqual(pointers, bytes(len(pointers)))
            self.assertIn(len(pointers), (8, 16))
            self.assertEqual(rest, bytes(range(0xb0, 0xb0 + 34 - len(pointers))))
            self.assertNotIn('application', call.fields)
            self.assertNotIn('vendor', call.fields)

    def test_has_texts_on_one_line(self):
        start, = probe('name', 'init').calls
        self.assertEqual(start['application'], r'a\x09b\x5cc\x0a\x7f\xff ~=')
        self.assertNotIn('vendor', start.fields)

    def test_has_a_start_that_failed(self):
        start, = probe('init', init_result=5).calls
        self.assertEqual((start.name, start.result), ('csdk_init', 5))

    def test_is_appended_to(self):
        with tempfile.TemporaryDirectory() as folder:
            record = Path(folder, 'record')
            for _ in range(2):
                session = probe('init', 'deinit', record=record)
            self.assertEqual([call.name for call in session.calls],
                             ['csdk_init', 'csdk_deinit'] * 2)


class Library(unittest.TestCase):
    """The library's symbols and dependencies."""

    def readelf(self, option):
        done = subprocess.run([READELF, '-W', option, SIMULATOR / 'libsdk.so'], check=True,
                              stdout=subprocess.PIPE, encoding='utf-8', env={})
        return done.stdout

    def test_exports_the_interface_and_nothing_else(self):
        exported = {}
        for line in self.readelf('--dyn-syms').splitlines():
            fields = line.split()
            if len(fields) == 8 and fields[4] != 'LOCAL' and fields[6].isdigit():
                exported[fields[7]] = (fields[3], int(fields[2]))
        self.assertEqual(sorted(exported), ['csdk', 'csdk_deinit', 'csdk_init',
                                            'csdk_next_resolution', 'csdk_settings'])
        self.assertEqual(exported['csdk'], ('OBJECT', 20))
        self.assertEqual(exported['csdk_settings'], ('OBJECT', 40))

    def test_has_the_name_that_programs_ask_for(self):
        self.assertEqual(re.findall(r'\(SONAME\).*\[(.*)\]', self.readelf('--dynamic')),
                         ['libsdk.so'])


if __name__ == '__main__':
    unittest.main()
