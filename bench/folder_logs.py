"""Makes a folder of small logs, one chunk each, and one log of the same chunks, and times the walk
of the folder beside the listing of the one log.

  folder_logs.py PROGRAM FOLDER LOGS RUNS SAMPLE...

FOLDER/many gets the logs, FOLDER/one.evtx the one. Both ways must list every record that the chunks
declare exactly once before anything is timed. The first round is not counted.
"""

import os
import re
import resource
import shutil
import subprocess
import sys
import time

import logfile

ROW = re.compile(rb"^ *([0-9]+), *[0-9]+,", re.MULTILINE)


def make(folder, count, samples):
    """Writes the logs; returns the numbers of the records in them, in ascending order."""
    sound = [chunk for path in samples for chunk in logfile.file_chunks(path) if logfile.walk(chunk)]
    shutil.rmtree(folder, ignore_errors=True)
    os.makedirs(os.path.join(folder, "many"))
    numbers, following = [], 1
    with open(os.path.join(folder, "one.evtx"), "wb") as one:
        one.write(bytes(logfile.HEADER_BYTES))
        for index in range(count):
            chunk = logfile.renumbered(sound[index % len(sound)], following)
            following = logfile.declared_range(chunk)[1] + 1
            numbers += logfile.visible_numbers(chunk, logfile.walk(chunk))
            one.write(chunk)
            with open(os.path.join(folder, "many", f"log{index:05}.evtx"), "wb") as small:
                small.write(logfile.file_header(1, following) + chunk)
        one.seek(0)
        one.write(logfile.file_header(count, following))
    return sorted(numbers)


def check(label, argv, numbers):
    text = subprocess.run(argv, stdout=subprocess.PIPE, check=True).stdout
    listed = sorted(int(match[1]) for match in ROW.finditer(text))
    if not numbers or listed != numbers:
        sys.exit(f"refused: {label} gives {len(listed)} records, the chunks hold {len(numbers)}")


def measure(argv, statuses=(0,)):
    """Wall time and time of the processor, in seconds, and peak memory in bytes, of one run."""
    nowhere = (os.POSIX_SPAWN_OPEN, 1, os.devnull, os.O_WRONLY, 0)
    start = time.perf_counter()
    child = os.posix_spawn(argv[0], argv, os.environ, file_actions=[nowhere])
    _, status, usage = os.wait4(child, 0)
    seconds = time.perf_counter() - start
    if os.waitstatus_to_exitcode(status) not in statuses:
        sys.exit(f"refused: wait status {status} from {' '.join(argv)}")
    return seconds, usage.ru_utime + usage.ru_stime, usage.ru_maxrss * 1024


def main():
    program, folder, count, runs = sys.argv[1], sys.argv[2], int(sys.argv[3]), int(sys.argv[4])
    numbers = make(folder, count, sys.argv[5:])
    many = os.path.join(folder, "many")
    commands = {
        "one log": [program, "-log", os.path.join(folder, "one.evtx"), "-csv", "-quiet"],
        f"{count} logs": [program, "-enumdir", many, "-num_subdirs", "1", "-csv", "-quiet"],
    }
    for label, argv in commands.items():
        check(label, argv, numbers)
        measure(argv)
    measured = {label: [] for label in commands}
    for _ in range(runs):
        for label, argv in commands.items():
            measured[label].append(measure(argv))
    floor = resource.getrusage(resource.RUSAGE_SELF).ru_maxrss / 1024
    print(f"{len(numbers)} records; {runs} runs each after one to warm up; "
          f"memory floor {floor:.1f} MiB")
    print(f"{'':<12}{'min s':>9}{'spread':>9}{'min cpu s':>11}{'peak MiB':>10}{'x one log':>11}")
    yardstick = min(run[0] for run in measured["one log"])
    for label, results in measured.items():
        wall = [run[0] for run in results]
        print(f"{label:<12}{min(wall):9.3f}{max(wall) - min(wall):9.3f}"
              f"{min(run[1] for run in results):11.3f}"
              f"{max(run[2] for run in results) / (1 << 20):10.1f}{min(wall) / yardstick:11.2f}")


if __name__ == "__main__":
    main()
