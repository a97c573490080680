"""The example programs work, and the reader in Python reads files that the library wrote."""

import contextlib
import io
import os
import struct
import subprocess
import sys
import tempfile
import unittest
from pathlib import Path

ROOT = Path(__file__).resolve().parents[2]
EXAMPLES = ROOT / "examples"
GOLDEN = ROOT / "tests" / "golden"
COLLECT = [*os.environ["ZN_EMULATOR"].split(), os.environ["ZN_COLLECT_RESOLUTIONS"]]

sys.path.insert(0, str(EXAMPLES))
import object_stream_reader  # noqa: E402


def run(*command):
    return subprocess.run(command, capture_output=True, text=True, timeout=60, check=False)


def read_file(path):
    return run(sys.executable, "-B", EXAMPLES / "object_stream_reader.py", path)


def read_bytes(content):
    """Returns the reader's output for these bytes."""
    with contextlib.redirect_stdout(io.StringIO()) as output:
        object_stream_reader.print_records(content)
    return output.getvalue()


def record(type_id, payload):
    return struct.pack("<HHI", type_id, 0, len(payload)) + payload


class CollectResolutions(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.path = str(Path(folder.name) / "resolutions")

    def test_prints_what_it_saves_and_reads_back(self):
        result = run(*COLLECT, self.path)
        self.assertEqual(result.stderr, "")
        self.assertEqual(result.stdout,
                         'saving 5 objects, 146 bytes\n'
                         'format 2, place "Gate 3", in the first 31 bytes\n'
                         'skipping type 900, 23 bytes\n'
                         '320x240\n'
                         'CIF\n'
                         '640x480\n'
                         'complete\n')
        self.assertEqual(result.returncode, 0)

    def test_writes_a_file_that_another_language_reads(self):
        run(*COLLECT, self.path)
        result = read_file(self.path)
        self.assertEqual(result.stderr, "")
        self.assertEqual(result.stdout,
                         'Integer        2\n'
                         'String         "Gate 3"\n'
                         'type 900       0a 00 00 00 6e 6f 72 74 68 20 77 61 6c 6c 00\n'
                         'ResolutionSet  320x240 352x288 640x480\n'
                         'EndOfFile\n')
        self.assertEqual(result.returncode, 0)

    def test_fails_where_it_cannot_write(self):
        result = run(*COLLECT, str(Path(self.path).parent))
        self.assertEqual(result.returncode, 1)

    def test_asks_for_a_file(self):
        result = run(*COLLECT)
        self.assertEqual(result.returncode, 2)
        self.assertEqual(result.stderr, "usage: collect_resolutions FILE\n")


class ObjectStreamReader(unittest.TestCase):
    def test_prints_every_type(self):
        result = read_file(GOLDEN / "mixed.stream")
        self.assertEqual(result.stderr, "")
        self.assertEqual(result.stdout,
                         'Integer        -7\n'
                         'String         "Gate 3"\n'
                         'Resolution     640x480\n'
                         'type 900       0a 0b 0c\n'
                         'MemIOStream\n'
                         '  Integer        -7\n'
                         '  EndOfFile\n'
                         'ResolutionSet  320x240 640x480\n'
                         'EndOfFile\n')
        self.assertEqual(result.returncode, 0)

    def test_prints_nothing_of_an_empty_file(self):
        self.assertEqual(read_bytes(b""), "")

    def test_refuses_a_file_that_is_cut_short(self):
        content = (GOLDEN / "mixed.stream").read_bytes()
        whole = [0]
        for _, payload in object_stream_reader.records(content):
            whole.append(whole[-1] + 8 + len(payload))
        for size in range(len(content)):
            if size in whole:
                read_bytes(content[:size])
            else:
                with self.assertRaises(object_stream_reader.Malformed, msg=size):
                    read_bytes(content[:size])

    def test_reports_the_fault(self):
        with tempfile.NamedTemporaryFile() as file:
            file.write(record(504, b"\x07\0\0\0") + b"\x01\x02")
            file.flush()
            result = read_file(file.name)
        self.assertEqual(result.stdout, "Integer        7\n")
        self.assertEqual(result.stderr, f"{file.name}: a record's header is cut short\n")
        self.assertEqual(result.returncode, 1)

    def test_survives_malformed_payloads(self):
        for type_id in (1, 6, 501, 504, 815, 900, 10815):
            for payload in (b"", b"\x01", b"\xff" * 4, b"\0" * 12, b"\xff" * 64):
                try:
                    read_bytes(record(type_id, payload))
                except object_stream_reader.Malformed:
                    self.assertEqual(type_id, 6)

    def test_survives_deep_nesting(self):
        content = b""
        for _ in range(3000):
            content = record(6, struct.pack("<I", len(content)) + content)
        self.assertEqual(read_bytes(content).count("MemIOStream"), object_stream_reader.MAX_DEPTH)


if __name__ == "__main__":
    unittest.main()
