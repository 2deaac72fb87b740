"""Makes a log of the chunks in which Sysmon and event 4688 have at least half of the records.

  watched_log.py PROGRAM OUT MIB LOG_OR_FOLDER...

Which records these are PROGRAM says (`export --format jsonl`); the chunks are taken as they stand in
their files, repeated up to the wanted size and numbered through, as make_log.py does it. A log that
is there already is kept: remove it to have it made anew.
"""

import collections
import json
import os
import subprocess
import sys

import logfile
import make_log

WANTED = [["--channel", "Microsoft-Windows-Sysmon/*"], ["--channel", "Security", "-i", "4688"]]


def records_by_chunk(program, paths):
    """For each log and number of its chunk, how many of its records are wanted."""
    counts = collections.Counter()
    for conditions in WANTED:
        run = subprocess.run([program, "export", "-q", "-f", "jsonl", *conditions, *paths],
                             stdout=subprocess.PIPE, stderr=subprocess.DEVNULL, check=False)
        for line in run.stdout.splitlines():
            place = json.loads(line)["zanvik"]
            chunk = (place["offset"] - logfile.HEADER_BYTES) // logfile.CHUNK_BYTES
            counts[place["log"], chunk] += 1
    return counts


def watched_chunks(counts):
    """The sound chunks with enough of them, none twice."""
    chunks = {}
    for path in sorted({log for log, _ in counts if log.lower().endswith(".evtx")}):
        for index, chunk in enumerate(logfile.file_chunks(path)):
            offsets = logfile.walk(chunk)
            if offsets and 2 * counts[path, index] >= len(offsets):
                chunks.setdefault(chunk)
    return list(chunks)


def main():
    program, out, size_bytes = sys.argv[1], sys.argv[2], int(sys.argv[3]) << 20
    note = out + ".from"
    summary = make_log.read_if_there(note)
    if not os.path.exists(out) or not summary:
        chunks = watched_chunks(records_by_chunk(program, sys.argv[4:]))
        if not chunks:
            sys.exit("no chunk with such records")
        summary = make_log.write_log(out, chunks, size_bytes)
        with open(note, "w", encoding="utf-8") as text:
            text.write(summary)
    print(f"{out}: {summary}")


if __name__ == "__main__":
    main()
