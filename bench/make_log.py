"""Makes a log of a wanted size out of the chunks of other logs.

  make_log.py OUT MIB CHUNKS LOG_OR_FOLDER...

Each chunk is used once before any is used again, so that a chunk and its repetition lie as far
apart as they can. With CHUNKS above 0 only so many chunks are used, taken at even distances.
Record numbers run on through the whole file, as in a real log; times and contents repeat with their
chunk. Only sound chunks are taken, and of chunks that are equal in every byte the first.

A log that was made before from the same files is kept as it is. OUT.from has what the log is made
of; its first line, how many chunks differ, is printed each time.
"""

import hashlib
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


def origin(paths, size_bytes, most):
    """What the log depends on, as text."""
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
