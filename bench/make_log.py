"""Makes a log of a given size from the chunks of other logs.

  make_log.py OUT MIB CHUNKS LOG_OR_FOLDER...

Each chunk is used once before any is used again, so that repetitions are as far apart as possible.
With CHUNKS above 0 only that many chunks are used, at even distances. Record numbers continue
through the whole file, as in a real log; times and contents repeat with their chunk. Only sound
chunks are used, and equal chunks only once.

A log that was made from the same files before is reused. OUT.from describes what the log is made of;
its first line, the number of different chunks, is printed each time.
"""

import hashlib
import os
import sys

import logfile

# The header counts chunks in 16 bits; a larger log would not be valid.
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


def origin(paths, size_bytes, most):
    """Everything that the log depends on, as text."""
    lines = [f"{size_bytes} bytes, numbered through, at most {most or 'all'} chunks"]
    for path in paths:
        state = os.stat(path)
        lines.append(f"{path} {state.st_size} {state.st_mtime_ns}")
    return "\n".join(lines) + "\n"


def read_if_there(path):
    try:
        with open(path, encoding="utf-8", errors="surrogateescape") as text:
            return text.read()
    except FileNotFoundError:
        return ""


def different_chunks(paths):
    """The sound chunks of the logs in order, none twice."""
    seen = {}
    for path in paths:
        for chunk in logfile.file_chunks(path):
            if logfile.walk(chunk):
                seen.setdefault(hashlib.sha256(chunk).digest(), chunk)
    return list(seen.values())


def evenly(chunks, most):
    """At most `most` of the chunks, at even distances; all of them when `most` is 0."""
    if most == 0 or len(chunks) <= most:
        return chunks
    return [chunks[index * len(chunks) // most] for index in range(most)]


def write_log(path, chunks, size_bytes):
    """Writes the log and returns a line that tells of what."""
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
    differ = min(count, len(chunks))
    return f"{count} chunks, {differ} of them differ, each used {count / differ:.1f} times"


def main():
    out, size_bytes, most = sys.argv[1], int(sys.argv[2]) << 20, int(sys.argv[3])
    paths = logs_below(sys.argv[4:])
    wanted = origin(paths, size_bytes, most)
    summary, _, made_from = read_if_there(out + ".from").partition("\n")
    if not os.path.exists(out) or made_from != wanted:
        chunks = evenly(different_chunks(paths), most)
        if not chunks:
            sys.exit("no sound chunk to make a log of")
        # The note comes last: a half-made log has none and is made anew.
        if os.path.exists(out + ".from"):
            os.remove(out + ".from")
        summary = f"{len(paths)} logs: {write_log(out, chunks, size_bytes)}"
        with open(out + ".from", "w", encoding="utf-8", errors="surrogateescape") as note:
            note.write(summary + "\n" + wanted)
    print(f"{out}: {summary}")


if __name__ == "__main__":
    main()
