"""Just enough of the .evtx layout to build a big log from real chunks, and to know without the
program under test which records it must list.

Takes whole files and 64 KiB chunks; returns sound chunks and the numbers of their records. A chunk
is sound if it has every record that its header declares. Other chunks are left out, so that the
right answer is certain.
"""

import struct
import zlib

HEADER_BYTES = 4096
CHUNK_BYTES = 65536
FIRST_RECORD = 512
RECORD_SIGNATURE = 0x00002A2A
ALL_ONES = (1 << 64) - 1


def declared_range(chunk):
    """The first and the last record number that the chunk's header gives."""
    return struct.unpack_from("<QQ", chunk, 24)


def walk(chunk):
    """Offsets of the chunk's records, or None if the chunk is not sound."""
    first, last = declared_range(chunk)
    if not chunk.startswith(b"ElfChnk\0") or struct.unpack_from("<Q", chunk, 16)[0] == ALL_ONES:
        return None
    if last < first or last - first > CHUNK_BYTES // 24:
        return None
    offsets = []
    at = FIRST_RECORD
    for _ in range(last - first + 1):
        if at + 24 > CHUNK_BYTES:
            return None
        signature, size = struct.unpack_from("<II", chunk, at)
        if signature != RECORD_SIGNATURE or size < 28 or size > CHUNK_BYTES - at:
            return None
        offsets.append(at)
        at += size
    return offsets


def visible_numbers(chunk, offsets):
    """Numbers of the records that a listing shows: those within the chunk's own range."""
    first, last = declared_range(chunk)
    numbers = (struct.unpack_from("<Q", chunk, at + 8)[0] for at in offsets)
    return [number for number in numbers if first <= number <= last]


def record_bytes(chunk, offsets):
    """How much of the chunk its records take."""
    return sum(struct.unpack_from("<I", chunk, at + 4)[0] for at in offsets)


def file_chunks(path):
    """The whole 64 KiB pieces behind a log's header; none when the file is no .evtx log."""
    with open(path, "rb") as log:
        if not log.read(HEADER_BYTES).startswith(b"ElfFile\0"):
            return
        while len(chunk := log.read(CHUNK_BYTES)) == CHUNK_BYTES:
            yield chunk


def renumbered(chunk, first_number):
    """A copy of a sound chunk whose records begin at `first_number`, checksums made right."""
    copy = bytearray(chunk)
    shift = first_number - declared_range(chunk)[0]

    def move(offset):
        value = struct.unpack_from("<Q", copy, offset)[0]
        struct.pack_into("<Q", copy, offset, (value + shift) & ALL_ONES)

    for offset in (8, 16, 24, 32):
        move(offset)
    for at in walk(chunk):
        move(at + 8)
    free = min(max(struct.unpack_from("<I", copy, 48)[0], FIRST_RECORD), CHUNK_BYTES)
    struct.pack_into("<I", copy, 52, zlib.crc32(copy[FIRST_RECORD:free]))
    struct.pack_into("<I", copy, 124, zlib.crc32(copy[:120] + copy[128:FIRST_RECORD]))
    return copy


def file_header(chunk_count, next_record):
    """The 4,096 bytes in front of the chunks, version 3.1."""
    head = struct.pack("<8sQQQIHHHH76x", b"ElfFile\0", 0, chunk_count - 1, next_record, 128, 1, 3,
                       HEADER_BYTES, chunk_count)
    return (head + struct.pack("<II", 0, zlib.crc32(head))).ljust(HEADER_BYTES, b"\0")
