"""Measures hunts beside md5sum on the same log.

  measure_hunt.py PROGRAM RULES RUNS LOG...

Each LOG is one of make_log.py: chunks that are repeated in the same order. A log is refused unless
each repetition of a chunk has the matches of the first one. Runs are interleaved with md5sum; the
first of each is not counted. Times are the least of the runs; those of reading and compiling the
rules and of the hunt are the program's own (--stats), of its wall clock; `whole` is the wall time of
the run, `cpu` its processor time, which other load on the machine changes less.
"""

import json
import os
import re
import subprocess
import sys
import time

CHUNK_BYTES, HEADER_BYTES = 65536, 4096


def hunt(program, rules, log, threads, matches):
    """One run. Returns the seconds of its parts, of the whole, and of the processor; the numbers of
    events and matches; the peak memory in MiB."""
    argv = [program, "hunt", "-q", "--rules", rules, "--stats", "--format", "jsonl", log]
    argv += ["--threads", str(threads)] if threads else []
    reader, writer = os.pipe()
    start = time.perf_counter()
    child = os.posix_spawnp(argv[0], argv, os.environ, file_actions=[
        (os.POSIX_SPAWN_OPEN, 1, matches, os.O_WRONLY | os.O_CREAT | os.O_TRUNC, 0o600),
        (os.POSIX_SPAWN_DUP2, writer, 2), (os.POSIX_SPAWN_CLOSE, reader)])
    os.close(writer)
    with os.fdopen(reader) as text:
        said = text.read()
    _, status, usage = os.wait4(child, 0)
    seconds = time.perf_counter() - start
    if os.waitstatus_to_exitcode(status) not in (0, 3):
        sys.exit(f"refused: {' '.join(argv)} ended with {os.waitstatus_to_exitcode(status)}: {said}")
    parts = re.search(r"rules read ([\d.]+), compiled ([\d.]+), events hunted ([\d.]+)", said)
    counts = [int(re.search(rf"^{name} +(\d+)", said, re.M)[1]) for name in ("events", "matches")]
    processor = usage.ru_utime + usage.ru_stime
    return ([float(part) for part in parts.groups()] + [seconds, processor], counts,
            usage.ru_maxrss / 1024)


def check_repetitions(log, matches):
    """Ends the program unless all repetitions of a chunk have the same matches."""
    with open(log + ".from", encoding="utf-8", errors="surrogateescape") as note:
        differ = int(re.search(r"(\d+) of them differ", note.readline())[1])
    rounds = {}
    with open(matches, encoding="utf-8") as lines:
        for line in lines:
            match = json.loads(line)
            place = match["zanvik"]["offset"] - HEADER_BYTES
            chunk, offset = divmod(place, CHUNK_BYTES)
            found = rounds.setdefault((chunk % differ, chunk // differ), [])
            found.append((offset, match["rule"]["file"], match["rule"]["title"]))
    chunks = (os.path.getsize(log) - HEADER_BYTES) // CHUNK_BYTES
    for chunk in range(chunks):
        first = rounds.get((chunk % differ, 0), [])
        if rounds.get((chunk % differ, chunk // differ), []) != first:
            sys.exit(f"refused: chunk {chunk} of {log} has other matches than the first of its kind")


def md5sum(log):
    """Wall time and processor time."""
    start = time.perf_counter()
    nowhere = (os.POSIX_SPAWN_OPEN, 1, os.devnull, os.O_WRONLY, 0)
    child = os.posix_spawnp("md5sum", ["md5sum", log], os.environ, file_actions=[nowhere])
    _, _, usage = os.wait4(child, 0)
    return time.perf_counter() - start, usage.ru_utime + usage.ru_stime


def knows_threads(program):
    text = subprocess.run([program, "hunt", "--help"], capture_output=True, text=True, check=False)
    return "--threads" in text.stdout


def measure(program, rules, runs, log, threads):
    matches = log + ".matches"
    hunt(program, rules, log, threads, matches)
    check_repetitions(log, matches)
    os.remove(matches)
    md5sum(log)
    yardstick, parts, peak = [], [], 0
    for _ in range(runs):
        yardstick.append(md5sum(log))
        seconds, (events, found), memory = hunt(program, rules, log, threads, os.devnull)
        parts.append(seconds)
        peak = max(peak, memory)
    read, compiled, hunted, whole, processor = (min(column) for column in zip(*parts))
    md5, md5_processor = (min(column) for column in zip(*yardstick))
    rules_seconds = min(part[0] + part[1] for part in parts)
    print(f"{os.path.basename(log):<36}{threads or 1:>8}{events:>9}{found:>9}"
          f"{read:8.3f}{compiled:8.3f}{rules_seconds:8.3f}{hunted:8.3f}"
          f"{max(part[2] for part in parts) - hunted:8.3f}{events / hunted:10,.0f}"
          f"{md5:8.3f}{hunted / md5:7.2f}{whole:8.3f}{processor:8.3f}{md5_processor:8.3f}{peak:7.0f}")


def main():
    program, rules, runs, logs = sys.argv[1], sys.argv[2], int(sys.argv[3]), sys.argv[4:]
    print(f"{runs} runs each after one to warm up, least of each; seconds; x: multiples of md5sum")
    print(f"{'log':<36}{'threads':>8}{'events':>9}{'matches':>9}{'read':>8}{'compile':>8}"
          f"{'rules':>8}{'hunt':>8}{'spread':>8}{'events/s':>10}{'md5sum':>8}{'x':>7}{'whole':>8}{'cpu':>8}{'md5 cpu':>8}"
          f"{'MiB':>7}")
    for log in logs:
        for threads in (1, 2) if knows_threads(program) else (None,):
            measure(program, rules, runs, log, threads)


main()
