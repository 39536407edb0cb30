"""Turns the picture of a screen that Xvfb keeps in a file (an X window dump) into a PNG."""

import pathlib
import struct
import zlib

HEADER_FIELDS = 25  # big-endian words
COLOUR_ENTRY = 12  # bytes
BYTES_PER_PIXEL = 4  # blue, green, red, unused


def chunk(kind: bytes, body: bytes) -> bytes:
    return struct.pack(">I", len(body)) + kind + body + struct.pack(">I", zlib.crc32(kind + body))


def convert(dump: pathlib.Path, picture: pathlib.Path) -> None:
    data = dump.read_bytes()
    header = struct.unpack_from(f">{HEADER_FIELDS}I", data)
    header_size, width, height, bytes_per_line, colours = header[0], header[4], header[5], header[12], header[19]
    pixels = header_size + colours * COLOUR_ENTRY
    rows = bytearray()
    for y in range(height):
        start = pixels + y * bytes_per_line
        line = data[start:start + width * BYTES_PER_PIXEL]
        row = bytearray(3 * width)
        row[0::3], row[1::3], row[2::3] = line[2::4], line[1::4], line[0::4]
        rows += b"\0" + row  # each row begins with its filter: none
    picture.write_bytes(b"\x89PNG\r\n\x1a\n" + chunk(b"IHDR", struct.pack(">2I5B", width, height, 8, 2, 0, 0, 0)) +
                        chunk(b"IDAT", zlib.compress(bytes(rows))) + chunk(b"IEND", b""))
