"""Makes a log of a wanted size by repeating the chunks of other logs.

  make_log.py OUT MIB LOG_OR_FOLDER...

Record numbers run on through the whole file, as in a real log, so that no record is like another;
times and contents repeat. Only sound chunks are taken. A file that was made before from the same
logs is kept as it is; OUT.from tells from what.
"""

import os
import sys

import logfile

# The header counts chunks in 16 bits; a log beyond this would not be a true one.
MOST_CHUNKS = 65535


def logs_below(places):
    """The .evtx files named, or below the folders named, in a fixed order."""
    found = []
    for place in places:
        if os.path.isfile(place):
            found.append(place)
        for folder, _, names in os.walk(place):
            found += (os.path.join(folder, name) for name in names
                      if name.lower().endswith(".evtx"))
    return sorted(found)


def origin(paths, size_bytes):
    """What the made file depends on, as text."""
    lines = [f"{size_bytes} bytes, numbered through"]
    for path in paths:
        state = os.stat(path)
        lines.append(f"{path} {state.st_size} {state.st_mtime_ns}")
    return "\n".join(lines) + "\n"


def read_if_there(path):
    try:
        with open(path, encoding="utf-8", errors="surrogateescape") as text:
            return text.read()
    except FileNotFoundError:
        return None


def write_log(path, chunks, size_bytes):
    count = max(1, (size_bytes - logfile.HEADER_BYTES) // logfile.CHUNK_BYTES)
    if count > MOST_CHUNKS:
        sys.exit(f"a log holds {MOST_CHUNKS} chunks at most; {count} were asked for")
    number = 1
    with open(path, "wb") as out:
        out.write(bytes(logfile.HEADER_BYTES))
        for index in range(count):
            chunk = logfile.renumbered(chunks[index % len(chunks)], number)
            number = logfile.declared_range(chunk)[1] + 1
            out.write(chunk)
        out.seek(0)
        out.write(logfile.file_header(count, number))
    print(f"  {count} chunks made from {len(chunks)}, {number - 1} record numbers")


def main():
    out, size_bytes = sys.argv[1], int(sys.argv[2]) << 20
    paths = logs_below(sys.argv[3:])
    wanted = origin(paths, size_bytes)
    if os.path.exists(out) and read_if_there(out + ".from") == wanted:
        return
    every = [chunk for path in paths for chunk in logfile.file_chunks(path)]
    sound = [chunk for chunk in every if logfile.walk(chunk)]
    print(f"making {out}: {len(paths)} logs, {len(every)} chunks, {len(sound)} of them sound")
    if not sound:
        sys.exit("no sound chunk to make a log of")
    # The note comes last: a half-made log has none and is made anew.
    if os.path.exists(out + ".from"):
        os.remove(out + ".from")
    write_log(out, sound, size_bytes)
    with open(out + ".from", "w", encoding="utf-8", errors="surrogateescape") as note:
        note.write(wanted)


main()
