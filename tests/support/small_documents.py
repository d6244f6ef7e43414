"""Writes the smallest documents that have a text."""

import pathlib
import zipfile

STORAGE_TYPE = 2001
CHUNK_SIZE = 65536


def varint(value: int) -> bytes:
    out = bytearray()
    while value > 0x7F:
        out.append(value & 0x7F | 0x80)
        value >>= 7
    out.append(value)
    return bytes(out)


def field(number: int, payload: bytes) -> bytes:
    return varint(number << 3 | 2) + varint(len(payload)) + payload


def archive(identifier: int, kind: int, payload: bytes) -> bytes:
    info = b"\x08" + varint(kind) + b"\x18" + varint(len(payload))
    header = b"\x08" + varint(identifier) + field(2, info)
    return varint(len(header)) + header + payload


def member(objects: bytes) -> bytes:
    """One chunk, its block written as literals."""
    literals = bytearray()
    for start in range(0, len(objects), CHUNK_SIZE):
        piece = objects[start : start + CHUNK_SIZE]
        literals += b"\xf4" + (len(piece) - 1).to_bytes(2, "little") + piece
    block = varint(len(objects)) + bytes(literals)
    return b"\0" + len(block).to_bytes(3, "little") + block


def write_document(path: pathlib.Path, text: str) -> None:
    """A package with one text."""
    objects = archive(1, STORAGE_TYPE, field(3, text.encode()))
    with zipfile.ZipFile(path, "w", zipfile.ZIP_STORED) as package:
        package.writestr("Index/Document.iwa", member(objects))
