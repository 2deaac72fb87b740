"""Times whole runs of the program beside md5sum on the same file, and takes their peak memory.
RECORDS and the two behind it are what check_output.py found; a word behind them asks for the runs
of the other forms and reports as well.

  measure.py PROGRAM LOG RUNS EVENT_ID RECORDS EVENT_RECORDS RECORD_BYTES [all]

The runs are interleaved, one of each command in turn, so that a drift of the machine hits all of
them alike; a first round of each is not counted. Peak memory is the kernel's figure for the ended
process. It cannot fall below the size of this process, from which each command starts; that
floor is printed.
"""

import os
import resource
import sys
import time


# A word that few records hold, and an event ID that none has.
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


class Command:
    """One command line, its number of rows (None where there are none), and what was measured."""

    def __init__(self, label, argv, rows):
        self.label, self.argv, self.rows = label, argv, rows
        self.seconds, self.peak_bytes = [], 0

    def run(self):
        """One run with its output thrown away: wall time in seconds, peak memory in bytes."""
        nowhere = (os.POSIX_SPAWN_OPEN, 1, os.devnull, os.O_WRONLY, 0)
        start = time.perf_counter()
        child = os.posix_spawnp(self.argv[0], self.argv, os.environ, file_actions=[nowhere])
        _, status, usage = os.wait4(child, 0)
        seconds = time.perf_counter() - start
        if status != 0:
            sys.exit(f"refused: wait status {status} from {' '.join(self.argv)}")
        return seconds, usage.ru_maxrss * 1024

    def measure(self):
        seconds, peak_bytes = self.run()
        self.seconds.append(seconds)
        self.peak_bytes = max(self.peak_bytes, peak_bytes)


def row(command, yardstick, size_bytes):
    best = min(command.seconds)
    rate = f"{command.rows / best:12,.0f}" if command.rows is not None else " " * 12
    return (f"{command.label:<28}{best:9.3f}{max(command.seconds) - best:9.3f}"
            f"{size_bytes / 1e6 / best:9.1f}{rate}{best / min(yardstick.seconds):9.2f}"
            f"{command.peak_bytes / (1 << 20):10.1f}{command.peak_bytes / size_bytes:8.2f}")


def main():
    program, log, runs, event_id, records, event_records, record_bytes = sys.argv[1:8]
    listing = [program, "-log", log, "-csv", "-quiet"]
    event = [program, "-log", log, "-eventid", event_id, "-csv", "-quiet"]
    commands = [
        Command("md5sum", ["md5sum", log], None),
        Command("-csv", listing, int(records)),
        Command(f"-eventid {event_id} -csv", event, int(records)),
    ]
    if len(sys.argv) > 8:  # the runs of the other forms and reports
        for label, options in OTHER_RUNS:
            argv = [program, "-log", log, *options, "-quiet"]
            commands.append(Command(label, argv, int(records)))
    for command in commands:
        command.run()
    for _ in range(int(runs)):
        for command in commands:
            command.measure()

    size_bytes = os.path.getsize(log)
    floor = resource.getrusage(resource.RUSAGE_SELF).ru_maxrss / 1024
    filled = int(record_bytes) / size_bytes
    print(f"log: {size_bytes} bytes, {filled:.0%} of them in {records} records, "
          f"{event_records} of event {event_id}")
    print(f"{int(runs)} runs each after one to warm up; memory floor {floor:.1f} MiB")
    print(f"{'':<28}{'min s':>9}{'spread':>9}{'MB/s':>9}{'records/s':>12}{'x md5sum':>9}"
          f"{'peak MiB':>10}{'x file':>8}")
    for command in commands:
        print(row(command, commands[0], size_bytes))


main()
