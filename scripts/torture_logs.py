"""Damages event logs: finds the fields of a log and sets them to awkward values, flips bits, cuts,
swaps, repeats and splices.

`Source` is an undamaged log; `mutant(rng, sources)` is a small damaged one, the same bytes for the
same state of `rng`. Of large logs only some chunks or records are used, so that a run is short.
"""

import struct

HEADER = 4096
CHUNK = 65536
FRAGMENT = b"\x0f\x01\x01\x00"
CHUNKS_MOST = 3          # of a mutant, before any is repeated
EVT_RECORDS_MOST = 300   # the same for a legacy log
WIDTHS = {1: "<B", 2: "<H", 4: "<I", 8: "<Q"}
SLOT_TYPES = [0, 1, 2, 3, 4, 6, 8, 10, 11, 13, 14, 15, 16, 17, 18, 19, 20, 21, 32, 33, 0x81, 0x88,
              0x8f, 0x91, 0x95, 0xffff]


def u16(data, at):
    return struct.unpack_from("<H", data, at)[0] if at + 2 <= len(data) else 0


def u32(data, at):
    return struct.unpack_from("<I", data, at)[0] if at + 4 <= len(data) else 0


class Places:
    """Offsets of fields by kind; a kind's name begins with the width of the field in bytes."""

    def __init__(self):
        self.by_kind = {}

    def add(self, kind, at):
        self.by_kind.setdefault(kind, []).append(at)

    def any(self, rng):
        """A place: first its kind is chosen, so that rare kinds are hit as often."""
        kind = rng.choice(sorted(self.by_kind))
        return kind, rng.choice(self.by_kind[kind])


def chunk_places(data):
    """The fields of a sound chunk; existing damage ends the search in its record."""
    found = Places()
    for at in (8, 16, 24, 32):
        found.add("8 record range", at)
    for at in (40, 44, 48):
        found.add("4 chunk header", at)
    for at in range(128, 384, 4):
        found.add("4 string table", at)
    for at in range(384, 512, 4):
        found.add("4 template table", at)
    at = 512
    while u32(data, at) == 0x2a2a and u32(data, at + 4) >= 28 and at + u32(data, at + 4) <= CHUNK:
        size = u32(data, at + 4)
        found.add("4 record signature", at)
        found.add("4 record size", at + 4)
        found.add("8 record number", at + 8)
        found.add("8 record time", at + 16)
        found.add("4 record size copy", at + size - 4)
        instance_places(data, at + 24, at + size, found, 0)
        at += size
    return found


def instance_places(data, at, end, found, depth):
    """A template instance or a plain stream, and the slots behind an instance."""
    start = at
    if data[at:at + 4] == FRAGMENT:
        found.add("4 fragment", at)
        at += 4
    if data[at:at + 1] != b"\x0c":
        body_places(data, start, end, found)
        return
    found.add("4 instance id", at + 2)
    found.add("4 instance offset", at + 6)
    definition = u32(data, at + 6)
    at += 10
    if definition == at:
        found.add("4 definition link", at)
        found.add("4 definition id", at + 4)
        found.add("4 definition size", at + 20)
        size = u32(data, at + 20)
        body_places(data, at + 24, min(at + 24 + size, end), found)
        at += 24 + size
    count = u32(data, at)
    if count > 96 or at + 4 + 4 * count > end:
        return
    found.add("4 slot count", at)
    value = at + 4 + 4 * count
    for slot in range(count):
        entry = at + 4 + 4 * slot
        found.add("2 slot size", entry)
        found.add("2 slot type", entry + 2)
        if u16(data, entry + 2) == 0x21 and depth < 3:
            instance_places(data, value, min(value + u16(data, entry), end), found, depth + 1)
        elif u16(data, entry):
            found.add("1 slot value", value)
        value += u16(data, entry)


def body_places(data, at, end, found):
    """Token by token, up to the first that is not known."""
    while at < end:
        token = data[at] & 0x1f
        found.add("1 token", at)
        if token == 0x0f:
            at += 4
        elif token == 0x01:
            found.add("2 element slot", at + 1)
            found.add("4 element size", at + 3)
            name_at, at = at + 7, name_places(data, at + 7, found)
            if data[name_at - 7] & 0x40:
                found.add("4 attribute list size", at)
                at += 4
        elif token in (0x06, 0x09):
            at = name_places(data, at + 1, found)
        elif token == 0x05:
            found.add("2 text length", at + 2)
            at += 4 + 2 * u16(data, at + 2)
        elif token in (0x0d, 0x0e):
            found.add("2 substitution slot", at + 1)
            at += 4
        elif token == 0x08:
            at += 3
        elif token in (0x02, 0x03, 0x04):
            at += 1
        else:
            return


def name_places(data, at, found):
    found.add("4 name offset", at)
    if u32(data, at) != at + 4:
        return at + 4
    found.add("4 name link", at + 4)
    found.add("2 name length", at + 10)
    return at + 4 + 8 + 2 * u16(data, at + 10) + 2


def evt_records(data):
    """Offset and size of each record of a legacy log."""
    at, found = 48, []
    while at + 56 <= len(data):
        size = u32(data, at)
        if data[at + 4:at + 8] == b"LfLe" and 56 <= size <= len(data) - at:
            found.append((at, size))
            at += size
        else:
            at += 4
    return found


def evt_places(data):
    found = Places()
    for at in range(0, 48, 4):
        found.add("4 header", at)
    names = ["record size", "record signature", "number", "time", "time written", "event id"]
    for at, size in evt_records(data):
        for i, name in enumerate(names):
            found.add("4 " + name, at + 4 * i)
        found.add("2 type", at + 24)
        found.add("2 number of strings", at + 26)
        for i, name in enumerate(["string offset", "sid length", "sid offset", "data length",
                                  "data offset"]):
            found.add("4 " + name, at + 36 + 4 * i)
        found.add("4 record size copy", at + size - 4)
        found.add("2 text unit", at + 56 + (size - 60) // 4 * 2)
    return found


class Source:
    """A log to take from. Places are looked for when first asked for, and kept."""

    def __init__(self, path, data):
        self.path, self.data = path, data
        self.is_evtx = data[:8] == b"ElfFile\0"
        self.records = [] if self.is_evtx else evt_records(data)
        self.known = {}

    def chunks(self):
        return (len(self.data) - HEADER) // CHUNK

    def chunk(self, index):
        at = HEADER + index * CHUNK
        return self.data[at:at + CHUNK]

    def places_of_chunk(self, index):
        if index not in self.known:
            self.known[index] = chunk_places(self.chunk(index))
        return self.known[index]


def awkward(rng, data, kind, at, origin, places):
    """A value for the field at `at`, which counts from `origin`: what a reader may stumble over."""
    width = int(kind[0])
    top = (1 << 8 * width) - 1
    old = int.from_bytes(data[origin + at:origin + at + width], "little")
    if kind.endswith("slot type") and rng.random() < 0.8:
        return rng.choice(SLOT_TYPES)
    if kind == "1 token":
        return rng.choice([rng.randrange(16), rng.randrange(256), old ^ 0x40])
    choice = rng.randrange(12)
    if choice < 3:
        return (0, 1, top)[choice]
    if choice == 3:   # the sign bit, and one below
        return (top >> 1) + rng.randrange(2)
    if choice == 4:   # just past the chunk's end, or its last bytes
        return (CHUNK + rng.randrange(-8, 9)) & top
    if choice == 5:   # the field cites itself, or what is next to it
        return (at + rng.choice([-24, -10, -4, 0, 4, width, 10, 24])) & top
    if choice == 6:   # as far as the chunk goes from here
        return (CHUNK - at + rng.randrange(-2, 3)) & top
    if choice == 7:   # past the end of the data, or of all of it
        return (len(data) - origin - rng.choice([0, at]) + rng.randrange(-2, 3)) & top
    if choice == 8:   # another field of the kind
        other = origin + rng.choice(places.by_kind[kind])
        return int.from_bytes(data[other:other + width], "little")
    if choice == 9:   # where another field stands
        return rng.choice(places.by_kind[places.any(rng)[0]]) & top
    if choice == 10:
        return (old + rng.choice([-2, -1, 1, 2, 8, 16])) & top
    return rng.randrange(top + 1)


def set_field(rng, data, parts):
    origin, places = rng.choice(parts)
    kind, at = places.any(rng)
    # Mostly one place; at times many of its kind.
    targets = [at]
    if rng.random() < 0.15:
        targets = rng.choices(places.by_kind[kind], k=rng.randrange(2, 40))
    for target in targets:
        width = int(kind[0])
        if origin + target + width > len(data):
            continue
        value = awkward(rng, data, kind, target, origin, places)
        struct.pack_into(WIDTHS[width], data, origin + target, value)


def flip_bits(rng, data, parts):
    spread = rng.choice([64, 4096, len(data)])
    start = rng.randrange(max(1, len(data) - spread))
    for _ in range(rng.choice([1, 2, 8, 64])):
        at = min(start + rng.randrange(spread), len(data) - 1)
        data[at] ^= 1 << rng.randrange(8)


def fill(rng, data, parts):
    """Overwrites a stretch with one short thing over and over."""
    piece = rng.choice([b"\0", b"\xff", b"\x2a\x2a\0\0", FRAGMENT, FRAGMENT + b"\x0c\x01", b"A\0",
                        b"\n\r", b"LfLe", b"0\0\0\0LfLe", b"\x21\0", b"\x01", b"ElfChnk\0"])
    start = rng.randrange(len(data))
    length = min(rng.choice([8, 64, 1024, 32768]), len(data) - start)
    data[start:start + length] = (piece * (length // len(piece) + 1))[:length]


def splice(rng, data, parts):
    """Copies a stretch over another place, whose length stays."""
    length = rng.choice([24, 200, 2000, 20000])
    source = rng.randrange(len(data))
    piece = data[source:source + length]
    at = rng.randrange(len(data))
    data[at:at + len(piece)] = piece[:len(data) - at]


def shift(rng, data, parts):
    """Takes bytes out or puts some in, so that all behind them stands elsewhere."""
    at = rng.randrange(len(data))
    count = rng.choice([1, 2, 4, 8, 512, 4096])
    if rng.random() < 0.5:
        del data[at:at + count]
    else:
        data[at:at] = bytes(count)


def cut(rng, data, parts):
    """Ends the file early: anywhere, or close to where something begins."""
    places = [rng.randrange(len(data)), len(data) - rng.randrange(1, 600),
              rng.choice(parts)[0] + rng.choice([0, 8, 40, 511, 512, 513, 536, CHUNK - 1])]
    del data[max(1, rng.choice(places)):]


def repeat_chunk(rng, data, parts):
    """Makes the file longer than the blocks of 50 chunks in which it is read."""
    if rng.random() < 0.05 and len(data) >= HEADER + CHUNK:
        data += bytes(data[HEADER:HEADER + CHUNK]) * rng.choice([49, 50, 51])


def swap_chunks(rng, data, parts):
    count = (len(data) - HEADER) // CHUNK
    if count < 1:
        return
    first, second = (HEADER + rng.randrange(count) * CHUNK for _ in range(2))
    a, b = bytes(data[first:first + CHUNK]), bytes(data[second:second + CHUNK])
    if first == second or rng.random() < 0.5:
        data[second:second] = a  # once more, in front of it
    else:
        data[first:first + CHUNK], data[second:second + CHUNK] = b, a


COMMON = [set_field] * 10 + [flip_bits] * 3 + [fill, splice, shift]


def mutant(rng, sources):
    """Returns a damaged log and the path of the one that it was made of."""
    source = rng.choice(sources)
    data = bytearray()
    if source.is_evtx:
        data += source.data[:HEADER]
        parts = []
        count = min(source.chunks(), rng.randrange(1, CHUNKS_MOST + 1))
        for index in rng.sample(range(source.chunks()), count):
            parts.append((len(data), source.places_of_chunk(index)))
            data += source.chunk(index)
        if not parts:  # cut within its first chunk
            data = bytearray(source.data)
    else:
        parts = []
        data += source.data[:48]
        first = rng.randrange(max(1, len(source.records)))
        for at, size in source.records[first:first + rng.randrange(1, EVT_RECORDS_MOST)]:
            data += source.data[at:at + size]
        data += source.data[-64:]
        parts.append((0, evt_places(data)))
    if not parts:
        parts.append((0, chunk_places(bytes(CHUNK))))
    ways = COMMON + ([swap_chunks, repeat_chunk] if source.is_evtx else [])
    changes = [rng.choice(ways) for _ in range(rng.choice([1, 1, 2, 3, 5, 12]))]
    # What moves bytes comes last, so that the places hold for the rest.
    changes.sort(key=lambda change: change in (shift, swap_chunks, repeat_chunk))
    for change in changes:
        change(rng, data, parts)
    if rng.random() < 0.1:
        cut(rng, data, parts)
    return data, source
