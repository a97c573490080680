"""Every byte that the program writes to standard output, and its exit status."""

import unittest

from program import HEADER, LARGEST, SMALLEST, ProgramTest, response, run
from simulator import PROFILES


class Example(ProgramTest):
    """The expected bytes are literal, so this also tests the helper of the other tests."""

    ANSWER = (b'Content-Type: text/plain\r\n'
              b'\r\n'
              b'[{"resolution": "160x120", "default": true },'
              b'{"resolution": "176x144", "default": false },'
              b'{"resolution": "320x180", "default": false }]')

    def test_sizes_are_listed_with_the_smallest_as_default(self):
        sizes = ['640x480', '320x240', '176x144', '320x180', '160x120', '176x144']
        self.assert_answers(run(sizes=sizes), self.ANSWER)

    def test_camera_of_the_simulator(self):
        self.assert_answers(run(), self.ANSWER)

    def test_helper(self):
        self.assertEqual(response('160x120', '176x144', '320x180'), self.ANSWER)


class EmptyList(ProgramTest):

    ANSWER = b'Content-Type: text/plain\r\n\r\n[]'

    def test_nothing_offered(self):
        self.assert_answers(run(sizes=[]), self.ANSWER)

    def test_nothing_small_enough(self):
        self.assert_answers(run(sizes=['1920x1080', '321x200', '320x201', '-1x-1']), self.ANSWER)


class Filter(ProgramTest):
    """The largest size is 320x200, and the comparison is unsigned."""

    KEPT = ['320x200', '320x199', '319x200', '320x0', '0x200', '1x1', '0x0']

    DROPPED = ['321x200', '320x201', '321x201', '321x0', '0x201', '640x480',
               '-1x120', '160x-1', '-1x-1', '-320x-200', '-320x200', '320x-200',
               f'{LARGEST}x1', f'1x{LARGEST}', f'{LARGEST}x{LARGEST}',
               f'{SMALLEST}x1', f'1x{SMALLEST}', f'{SMALLEST}x{SMALLEST}', f'{SMALLEST}x0',
               f'0x{SMALLEST}', f'{SMALLEST + 1}x1', f'{SMALLEST + 320}x200',
               '65536x100', '65636x100', '256x65536', '256x65636']

    def test_kept(self):
        for size in self.KEPT:
            with self.subTest(size):
                self.assert_lists([size], size)

    def test_dropped_without_ending_the_list(self):
        for size in self.DROPPED:
            with self.subTest(size):
                self.assert_lists(['300x150', size, '160x120'], '160x120', '300x150')

    def test_all_dropped_ones_together(self):
        self.assert_lists([*self.DROPPED, '320x200', *self.DROPPED], '320x200')


class Order(ProgramTest):

    def test_by_width(self):
        self.assert_lists(['300x1', '20x3', '1x2'], '1x2', '20x3', '300x1')

    def test_by_height_for_equal_widths(self):
        self.assert_lists(['176x150', '176x144', '160x200'], '160x200', '176x144', '176x150')

    def test_as_numbers_and_not_as_text(self):
        self.assert_lists(['100x9', '20x100', '20x20', '9x200', '3x30'],
                          '3x30', '9x200', '20x20', '20x100', '100x9')

    def test_whatever_the_order_of_the_camera(self):
        ascending = ['0x0', '0x1', '1x0', '160x90', '160x120', '176x144', '320x180', '320x200']
        rotations = [ascending[at:] + ascending[:at] for at in range(len(ascending))]
        for offered in [ascending, ascending[::-1], *rotations]:
            with self.subTest(offered):
                self.assert_lists(offered, *ascending)

    def test_of_every_size_of_a_grid(self):
        widths, heights = range(314, 324), range(194, 204)
        offered = [f'{width}x{height}' for height in reversed(heights) for width in widths]
        kept = [f'{width}x{height}' for width in range(314, 321) for height in range(194, 201)]
        self.assert_lists(offered, *kept)


class Default(ProgramTest):

    def test_is_the_only_entry(self):
        self.assert_answers(run(sizes=['7x8']),
                            HEADER + b'[{"resolution": "7x8", "default": true }]')

    def test_is_0x0_when_the_camera_has_it(self):
        self.assert_answers(run(sizes=['1x0', '0x1', '0x0']),
                            HEADER + b'[{"resolution": "0x0", "default": true },'
                            b'{"resolution": "0x1", "default": false },'
                            b'{"resolution": "1x0", "default": false }]')

    def test_is_the_smallest_by_width_even_if_it_is_larger_by_area(self):
        self.assert_lists(['160x1', '159x200'], '159x200', '160x1')


class Duplicates(ProgramTest):

    def test_side_by_side(self):
        self.assert_lists(['5x6', '5x6', '5x6'], '5x6')

    def test_apart(self):
        self.assert_lists(['5x6', '7x8', '5x6', '1x2', '7x8'], '1x2', '5x6', '7x8')

    def test_width_and_height_exchanged_is_none(self):
        self.assert_lists(['120x160', '160x120'], '120x160', '160x120')

    def test_of_the_default(self):
        self.assert_lists(['9x9', '1x1', '1x1'], '1x1', '9x9')


class ShippedProfiles(ProgramTest):

    SIZES = {
        'indoor.txt': ['160x90', '160x120', '176x144', '240x180', '320x180'],
        'full-hd.txt': ['160x90', '160x120', '176x144', '240x180', '320x180'],
        'unordered.txt': ['0x0', '7x199', '96x96', '160x120', '160x200', '176x144', '176x150',
                          '319x1', '320x200'],
        'benchmark.txt': ['160x90', '160x120', '176x144', '192x144', '240x135', '240x180',
                          '256x144', '256x192', '300x200', '320x180', '320x192', '320x200'],
    }

    def test_every_one(self):
        self.assertEqual(sorted(self.SIZES), sorted(path.name for path in PROFILES.iterdir()))
        for name, sizes in self.SIZES.items():
            with self.subTest(name):
                self.assert_answers(run(profile=PROFILES / name), response(*sizes))


class FailedStart(ProgramTest):

    def assert_fails(self, done):
        self.assertEqual((done.status, done.output), (1, b''))

    def test_any_code_but_0_gives_status_1_and_no_output(self):
        for code in (1, -1, 2, 255, 256, 65536, LARGEST, SMALLEST):
            with self.subTest(code):
                done = run(init_result=code)
                self.assert_fails(done)
                self.assertEqual(done.errors, '')

    def test_camera_without_a_usable_profile(self):
        done = run(text=b'320x200\n160 by 120\n')
        self.assert_fails(done)
        self.assertRegex(done.errors, r'/profile\.txt:2: expected WIDTHxHEIGHT')

    def test_camera_without_its_profile(self):
        done = run(profile='/no/such/camera.txt')
        self.assert_fails(done)
        self.assertRegex(done.errors, r'/no/such/camera\.txt: No such file or directory')


class Surroundings(ProgramTest):
    """The program takes no arguments, reads no input and reads no variables."""

    def test_arguments(self):
        for arguments in (['--help'], ['-'], [''], ['320x200', '-v', '%s%n'], ['x' * 100_000],
                          ['x'] * 1_000):
            with self.subTest(arguments[0][:10]):
                self.assert_answers(run(*arguments), Example.ANSWER)

    def test_input(self):
        for length in (0, 1, 1_000_000):
            with self.subTest(length):
                process = {'stdin': None, 'input': b'1x2\n' * length}
                self.assert_answers(run(process=process), Example.ANSWER)

    def test_variables_of_a_request(self):
        variables = {
            'GATEWAY_INTERFACE': 'CGI/1.1', 'REQUEST_METHOD': 'HEAD', 'QUERY_STRING': 'a=%s&b=%n',
            'SERVER_PROTOCOL': 'HTTP/1.0', 'CONTENT_LENGTH': '1000000',
            'CONTENT_TYPE': 'application/json', 'HTTP_ACCEPT': 'application/xml',
        }
        self.assert_answers(run(extra_environment=variables), Example.ANSWER)

    def test_locale(self):
        for locale in ('de_DE.UTF-8', 'tr_TR', 'no such locale'):
            with self.subTest(locale):
                variables = {'LC_ALL': locale, 'LANG': locale}
                self.assert_answers(run(extra_environment=variables), Example.ANSWER)

    def test_folder(self):
        self.assert_answers(run(process={'cwd': '/'}), Example.ANSWER)


if __name__ == '__main__':
    unittest.main()
