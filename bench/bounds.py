"""Times the program on crafted logs, at one size and at twice that; see bench/bounds.

  bounds.py PROGRAM SMALL.tsv LARGE.tsv

make_hostile writes the lists: path, options and name of the trick in each line. Seconds are
processor time, the minimum of three runs. Memory is the peak of the finished process above that of
a run that does nothing. Output goes through a pipe, to count its bytes.
"""

import os
import sys

MIB = 1 << 20
RUNS = 3
MOST_SECONDS = 120


def run(argv, messages=True):
    """Seconds, peak bytes, bytes written. Without `messages` standard error is discarded."""
    reader, writer = os.pipe()
    actions = [(os.POSIX_SPAWN_DUP2, writer, 1), (os.POSIX_SPAWN_CLOSE, reader)]
    if not messages:
        actions.append((os.POSIX_SPAWN_OPEN, 2, os.devnull, os.O_WRONLY, 0))
    child = os.posix_spawn(argv[0], argv, os.environ, file_actions=actions)
    os.close(writer)
    written = 0
    buffer = bytearray(MIB)
    while got := os.readv(reader, [buffer]):
        written += got
    os.close(reader)
    _, status, usage = os.wait4(child, 0)
    if status != 0:
        sys.exit(f"wait status {status} from {' '.join(argv)}")
    return usage.ru_utime + usage.ru_stime, usage.ru_maxrss * 1024, written


def measure(program, line, floor):
    """Figures per MiB of a log: seconds, MiB of memory, MiB written."""
    path, options, name = line.rstrip("\n").split("\t")
    mib = os.path.getsize(path) / MIB
    runs = [run([program, "-log", path, "-quiet", *options.split()])]
    while len(runs) < RUNS and runs[0][0] < MOST_SECONDS / RUNS:
        runs.append(run([program, "-log", path, "-quiet", *options.split()]))
    seconds = min(one[0] for one in runs)
    peak = max(0, max(one[1] for one in runs) - floor)
    return name, mib, [seconds / mib, peak / MIB / mib, runs[0][2] / MIB / mib]


def main():
    program, small, large = sys.argv[1:4]
    floor = run([program, "-h"], messages=False)[1]
    print(f"floor of memory: {floor / MIB:.1f} MiB; each figure is for a MiB of the log")
    print(f"{'':32}{'MiB':>7}{'s':>9}{'memory':>9}{'output':>9}{'MiB':>9}{'s':>9}{'memory':>9}"
          f"{'output':>9}")
    with open(small, encoding="utf-8") as first, open(large, encoding="utf-8") as second:
        for pair in zip(first, second):
            columns = ""
            for line in pair:
                name, mib, costs = measure(program, line, floor)
                columns += f"{mib:9.1f}" + "".join(f"{cost:9.3f}" for cost in costs)
            print(f"{name:32}{columns[2:]}", flush=True)


main()
