#!/usr/bin/env python3
"""Prints the objects in an object stream file.

    object_stream_reader.py FILE

It follows docs/formats.md and does not use the library. It checks every length before it reads the
bytes, so it accepts untrusted files. The exit status is 1 when the file is not a sequence of whole
records.
"""

import struct
import sys

BYTE_ORDER = "<"  # little-endian, as on all machines that the library supports
MAX_DEPTH = 16    # of streams within streams


class Malformed(Exception):
    """Raised for bytes that do not follow the format."""


# Records

def records(content):
    """Yields the type id and the payload of each record."""
    position = 0
    while position < len(content):
        if len(content) - position < 8:
            raise Malformed("a record's header is cut short")
        type_id, _, length = struct.unpack_from(BYTE_ORDER + "HHI", content, position)
        position += 8
        if len(content) - position < length:
            raise Malformed(f"a record of type {type_id} is cut short")
        yield type_id, content[position:position + length]
        position += length


def nested_content(payload):
    """Returns the records of a stream that is itself stored as an object."""
    if len(payload) < 4:
        raise Malformed("a stream without its length")
    (size,) = struct.unpack_from(BYTE_ORDER + "I", payload)
    if len(payload) - 4 < size:
        raise Malformed("a stream is cut short")
    return payload[4:4 + size]


# Payloads: each function returns a name and a string

def integer(payload):
    if len(payload) < 4:
        raise Malformed("an integer is cut short")
    return "Integer", str(struct.unpack_from(BYTE_ORDER + "i", payload)[0])


def string(payload):
    text, end, _ = payload[4:].partition(b"\0")
    if len(payload) < 4 or not end:
        raise Malformed("a string without its end")
    return "String", f'"{text.decode(errors="backslashreplace")}"'


def resolution(payload):
    if len(payload) < 8:
        raise Malformed("a resolution is cut short")
    return "Resolution", "{}x{}".format(*struct.unpack_from(BYTE_ORDER + "ii", payload))


def resolution_set(payload):
    objects = list(records(nested_content(payload)))
    if len(objects) < 2 or any(type_id != 504 for type_id, _ in objects[:2]):
        raise Malformed("a set without its element type and count")
    (_, element_type), (_, count) = (integer(payload) for _, payload in objects[:2])
    elements = objects[2:2 + max(int(count), 0)]
    if int(element_type) != 815 or any(type_id != 815 for type_id, _ in elements):
        raise Malformed("a set of something else")
    if len(elements) < int(count):
        raise Malformed("a set with fewer elements than it says")
    return "ResolutionSet", " ".join(resolution(payload)[1] for _, payload in elements)


def end_of_file(_):
    return "EndOfFile", ""


STREAM = 6
PAYLOADS = {1: end_of_file, 501: string, 504: integer, 815: resolution, 10815: resolution_set}


# Printing

def describe(type_id, payload):
    if type_id in PAYLOADS:
        try:
            return PAYLOADS[type_id](payload)
        except Malformed as fault:
            return f"type {type_id}", f"malformed: {fault}"
    return f"type {type_id}", payload.hex(" ")


def print_records(content, depth=0):
    for type_id, payload in records(content):
        if type_id == STREAM and depth < MAX_DEPTH:
            print("  " * depth + "MemIOStream")
            print_records(nested_content(payload), depth + 1)
        else:
            name, text = describe(type_id, payload)
            print(("  " * depth + f"{name:<14} {text}").rstrip())


def main():
    if len(sys.argv) != 2:
        sys.exit(__doc__.strip().splitlines()[2].strip())
    with open(sys.argv[1], "rb") as file:
        content = file.read()
    try:
        print_records(content)
    except Malformed as fault:
        sys.exit(f"{sys.argv[1]}: {fault}")


if __name__ == "__main__":
    main()
