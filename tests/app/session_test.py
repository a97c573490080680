"""The program's calls to the SDK, their order, and every byte of both records."""

import struct
import unittest

from program import LARGEST, SMALLEST, ProgramTest, response, run

INIT, NEXT, DEINIT = 'csdk_init', 'csdk_next_resolution', 'csdk_deinit'


def names(done):
    return [call.name for call in done.calls]


class Calls(ProgramTest):

    def test_start_then_every_resolution_then_stop(self):
        done = run(sizes=['640x480', '1x2', '3x4'])
        self.assertEqual(names(done), [INIT, NEXT, NEXT, NEXT, NEXT, DEINIT])
        self.assertEqual([call.result for call in done.calls], [0, 0, 0, 0, 1, 0])

    def test_empty_list_is_asked_for_once(self):
        self.assertEqual(names(run(sizes=[])), [INIT, NEXT, DEINIT])

    def test_failed_start_is_the_only_call(self):
        for code in (1, -1, LARGEST, SMALLEST):
            with self.subTest(code):
                self.assertEqual(names(run(init_result=code)), [INIT])

    def test_any_result_but_0_ends_the_list(self):
        for code in (1, -1, 2, 256, 65536, LARGEST, SMALLEST):
            with self.subTest(code):
                done = run(sizes=['5x6', '1x2'], end_result=code)
                self.assert_answers(done, response('1x2', '5x6'))
                self.assertEqual([(call.name, call.result) for call in done.calls[1:]],
                                 [(NEXT, 0), (NEXT, 0), (NEXT, code), (DEINIT, 0)])

    def test_any_result_but_0_at_once_gives_the_empty_list(self):
        for code in (1, -1, LARGEST, SMALLEST):
            with self.subTest(code):
                self.assert_answers(run(sizes=[], end_result=code), response())

    def test_result_of_the_stop_is_ignored(self):
        for code in (1, -1, LARGEST, SMALLEST):
            with self.subTest(code):
                done = run(sizes=['1x2'], deinit_result=code)
                self.assert_answers(done, response('1x2'))
                self.assertEqual((done.calls[-1].name, done.calls[-1].result), (DEINIT, code))

    def test_delivered_sizes_stay_in_the_two_variables_until_the_next_call(self):
        done = run(sizes=['640x480', '-1x-1', '1x2', '1x2'])
        self.assertEqual([call['kept'] for call in done.calls if 'kept' in call.fields], ['1'] * 4)


class Handle(ProgramTest):

    def test_is_the_one_of_the_started_sdk(self):
        done = run()
        self.assertEqual({(call['handle'], call['expected'])
                          for call in done.calls if call.name == NEXT}, {('1001', '1001')})

    def test_is_read_again_for_every_call(self):
        done = run(sizes=['640x480', '1x2', '3x4'], new_handles=1)
        self.assert_answers(done, response('1x2', '3x4'))
        self.assertEqual([call['handle'] for call in done.calls if call.name == NEXT],
                         ['1001', '1002', '1003', '1004'])


class Settings(ProgramTest):
    """All 40 bytes of the settings, as csdk_init finds them."""

    def fields(self, call):
        """Splits the settings record into pointers, word, option, flags and reserved bytes."""
        record = bytes.fromhex(call['csdk_settings'])
        # The word's offset depends on the size of a pointer.
        pointer = 'I' if record[8:12] == b'\x01\0\0\0' else 'Q'
        head = f'<2{pointer}I2B'
        self.assertEqual(len(record), 40)
        return *struct.unpack_from(head, record), record[struct.calcsize(head):]

    def test_five_fields_are_written_and_the_others_are_unchanged(self):
        start = run().calls[0]
        application, vendor, mode, option, flags, reserved = self.fields(start)
        self.assertEqual((start.name, start['application'], start['vendor']),
                         (INIT, 'Resolution', 'Zenthra, Inc.'))
        self.assertNotIn(0, (application, vendor))
        self.assertEqual((mode, option), (1, 1))
        self.assertEqual(flags, 0x7f, 'the top bit is cleared, the others are unchanged')
        self.assertEqual(reserved, bytes(range(0xb0, 0xb0 + len(reserved))))
        self.assertIn(len(reserved), (18, 26))

    def test_are_the_same_when_the_start_fails(self):
        def but_pointers(call):
            return self.fields(call)[2:], call['application'], call['vendor']
        self.assertEqual(but_pointers(run(init_result=7).calls[0]),
                         but_pointers(run().calls[0]))

    def test_are_the_same_when_the_sdk_stops(self):
        calls = run().calls
        for name in ('csdk_settings', 'application', 'vendor'):
            self.assertEqual(calls[-1][name], calls[0][name])


class State(ProgramTest):

    def test_is_not_written(self):
        calls = run(new_handles=1).calls
        reserved = bytes(range(0xa0, 0xb0))
        self.assertEqual(bytes.fromhex(calls[0]['csdk']), struct.pack('<i', 1001) + reserved)
        self.assertEqual(bytes.fromhex(calls[-1]['csdk']), struct.pack('<i', -1) + reserved)


if __name__ == '__main__':
    unittest.main()
