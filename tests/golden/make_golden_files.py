#!/usr/bin/env python3
"""Makes the golden files of every stored form from docs/formats.md, without the library.

    make_golden_files.py            writes the files next to this script
    make_golden_files.py --check    compares them with what it would write
"""

import struct
import sys
from pathlib import Path

END_OF_FILE, STREAM, STRING, INTEGER, RESOLUTION, RESOLUTION_SET = 1, 6, 501, 504, 815, 10815
FOREIGN = 900  # a type id that the library does not know


# Binary forms

def integer(value):
    return struct.pack("<i", value)


def string(text):
    return struct.pack("<I", len(text)) + text + b"\0"


def resolution(width, height):
    return integer(width) + integer(height)


def record(type_id, payload):
    return struct.pack("<HHI", type_id, 0, len(payload)) + payload


def stream(*records):
    content = b"".join(records)
    return struct.pack("<I", len(content)) + content


def resolution_set(*sizes):
    return stream(
        record(INTEGER, integer(RESOLUTION)),
        record(INTEGER, integer(len(sizes))),
        *(record(RESOLUTION, resolution(*size)) for size in sizes))


# Files

def typed_file(type_id, payload):
    return struct.pack("<HI", type_id, len(payload)) + payload


def object_stream_file(*records):
    return b"".join(records)


FORMS = {
    "integer.bin": integer(-7),
    "string.bin": string(b"Gate 3"),
    "resolution.bin": resolution(640, 480),
    "stream.bin": stream(record(INTEGER, integer(-7)), record(END_OF_FILE, b"")),
    "set.bin": resolution_set((320, 240), (640, 480)),
}

FILES = FORMS | {
    "end_of_file.typed": typed_file(END_OF_FILE, b""),
    "integer.typed": typed_file(INTEGER, FORMS["integer.bin"]),
    "resolution.typed": typed_file(RESOLUTION, FORMS["resolution.bin"]),
    "stream.typed": typed_file(STREAM, FORMS["stream.bin"]),
    "set.typed": typed_file(RESOLUTION_SET, FORMS["set.bin"]),
    "string.text": b"Gate 3\r\nGr\xc3\xbc\xc3\x9fe\n\0end",
    "mixed.stream": object_stream_file(
        record(INTEGER, FORMS["integer.bin"]),
        record(STRING, FORMS["string.bin"]),
        record(RESOLUTION, FORMS["resolution.bin"]),
        record(FOREIGN, b"\x0a\x0b\x0c"),
        record(STREAM, FORMS["stream.bin"]),
        record(RESOLUTION_SET, FORMS["set.bin"]),
        record(END_OF_FILE, b"")),
}


def main(check):
    folder = Path(__file__).parent
    if not check:
        for name, content in FILES.items():
            (folder / name).write_bytes(content)
        return 0
    differing = [name for name, content in FILES.items()
                 if not (folder / name).is_file() or (folder / name).read_bytes() != content]
    unknown = [file.name for file in folder.iterdir()
               if file.suffix in (".bin", ".typed", ".text", ".stream") and file.name not in FILES]
    for name in differing:
        print(f"{name} differs")
    for name in unknown:
        print(f"{name} is not made by this script")
    return 1 if differing or unknown else 0


if __name__ == "__main__":
    sys.exit(main("--check" in sys.argv[1:]))
