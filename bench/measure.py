"""Measures whole runs of the program beside md5sum on the same file: instructions, processor time,
page faults, wall time, peak memory. RECORDS and the two numbers after it are from check_output.py.
`all` adds runs of the other forms and reports, `count` adds instructions, which takes about half a
minute for each run of 128 MiB.

  measure.py PROGRAM LOG RUNS EVENT_ID RECORDS EVENT_RECORDS RECORD_BYTES [all] [count]

Each round runs every command once, so changes in the machine's speed affect all alike; the first
round is not counted. Instructions are those in user mode as cachegrind counts them. Other load on
the machine does not change them, so they are counted once. Page faults are the minor ones of the
finished process. Peak memory is the kernel's figure; it cannot be lower than the size of this
process, which starts each command. That floor is printed.
"""

import os
import re
import resource
import subprocess
import sys
import time


# A word that few records contain, and an event ID that none has.
RARE_WORD = "zanzibar"
ABSENT_ID = "65000"
OTHER_RUNS = [
    ("-logon -csv", ["-logon", "-csv"]),
    (f"-string {RARE_WORD} -csv", ["-string", RARE_WORD, "-csv"]),
    ("-csvl2t", ["-csvl2t"]),
    ("-bodyfile -allparams", ["-bodyfile", "-allparams"]),
    ("-inc_slack -csv", ["-inc_slack", "-csv"]),
    (f"-eventid {ABSENT_ID}", ["-eventid", ABSENT_ID, "-csv"]),
    ("the same with -stats", ["-eventid", ABSENT_ID, "-csv", "-stats", os.devnull]),
    ("padded (no form)", []),
]


EXPORT_RUNS = [
    ("export jsonl", ["-f", "jsonl"]),
    ("export xml", ["-f", "xml"]),
    ("export csv", ["-f", "csv"]),
]


class Command:
    """One command line, its number of rows (None where there are none), and what was measured."""

    def __init__(self, label, argv, rows):
        self.label, self.argv, self.rows = label, argv, rows
        self.seconds, self.processor = [], []
        self.peak_bytes, self.faults, self.instructions = 0, 0, 0

    def run(self):
        """One run with its output thrown away: wall time in seconds, the kernel's account of it."""
        nowhere = (os.POSIX_SPAWN_OPEN, 1, os.devnull, os.O_WRONLY, 0)
        start = time.perf_counter()
        child = os.posix_spawnp(self.argv[0], self.argv, os.environ, file_actions=[nowhere])
        _, status, usage = os.wait4(child, 0)
        seconds = time.perf_counter() - start
        if status != 0:
            sys.exit(f"refused: wait status {status} from {' '.join(self.argv)}")
        return seconds, usage

    def measure(self):
        seconds, usage = self.run()
        self.seconds.append(seconds)
        self.processor.append((usage.ru_utime + usage.ru_stime, usage.ru_utime, usage.ru_stime))
        self.faults = max(self.faults, usage.ru_minflt)
        self.peak_bytes = max(self.peak_bytes, usage.ru_maxrss * 1024)

    def count(self):
        """Counts the instructions of one run."""
        tool = ["valgrind", "--tool=cachegrind", "--cache-sim=no",
                f"--cachegrind-out-file={os.devnull}"]
        run = subprocess.run(tool + self.argv, stdout=subprocess.DEVNULL, stderr=subprocess.PIPE,
                             text=True, check=True)
        self.instructions = int(re.search(r"I +refs: +([0-9,]+)", run.stderr)[1].replace(",", ""))


def row(command, yardstick, size_bytes):
    best = min(command.seconds)
    processor = min(command.processor)
    rate = f"{command.rows / best:12,.0f}" if command.rows is not None else " " * 12
    counted = " " * 17
    if command.instructions:
        times = command.instructions / yardstick.instructions
        counted = f"{command.instructions / 1e6:10,.0f}{times:7.2f}"
    return (f"{command.label:<24}{counted}"
            f"{processor[0]:8.3f}{processor[1]:8.3f}{processor[2]:8.3f}"
            f"{processor[0] / min(yardstick.processor)[0]:7.2f}{command.faults:8,}"
            f"{best:8.3f}{max(command.seconds) - best:8.3f}{best / min(yardstick.seconds):7.2f}"
            f"{size_bytes / 1e6 / best:8.1f}{rate}"
            f"{command.peak_bytes / (1 << 20):8.1f}{command.peak_bytes / size_bytes:7.2f}")


HEADER = (f"{'':<24}{'10^6 instr':>10}{'x':>7}{'cpu s':>8}{'user':>8}{'system':>8}{'x':>7}"
          f"{'faults':>8}{'wall s':>8}{'spread':>8}{'x':>7}{'MB/s':>8}{'records/s':>12}"
          f"{'MiB':>8}{'x file':>7}")


def main():
    program, log, runs, event_id, records, event_records, record_bytes = sys.argv[1:8]
    words = sys.argv[8:]
    listing = [program, "-log", log, "-csv", "-quiet"]
    event = [program, "-log", log, "-eventid", event_id, "-csv", "-quiet"]
    commands = [
        Command("md5sum", ["md5sum", log], None),
        Command("-csv", listing, int(records)),
        Command(f"-eventid {event_id} -csv", event, int(records)),
    ]
    if "all" in words:
        for label, options in OTHER_RUNS:
            argv = [program, "-log", log, *options, "-quiet"]
            commands.append(Command(label, argv, int(records)))
        for label, options in EXPORT_RUNS:
            commands.append(Command(label, [program, "export", *options, log], int(records)))
        event_export = [program, "export", "--event-id", event_id, log]
        commands.append(Command(f"export --event-id {event_id}", event_export, int(records)))
    for command in commands:
        command.run()
    for _ in range(int(runs)):
        for command in commands:
            command.measure()
    if "count" in words:
        for command in commands:
            command.count()

    size_bytes = os.path.getsize(log)
    floor = resource.getrusage(resource.RUSAGE_SELF).ru_maxrss / 1024
    filled = int(record_bytes) / size_bytes
    print(f"log: {size_bytes} bytes, {filled:.0%} of them in {records} records, "
          f"{event_records} of event {event_id}")
    print(f"{int(runs)} runs each after one to warm up, least of each; memory floor {floor:.1f} MiB")
    print("x: as a multiple of md5sum's")
    print(HEADER)
    for command in commands:
        print(row(command, commands[0], size_bytes))


main()
