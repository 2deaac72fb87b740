"""Times cases beside md5sum; see bench/case.

  case.py PROGRAM FOLDER RUNS LOG...
"""

import os
import sqlite3
import subprocess
import sys
import tempfile
import time


class Times:
    """Wall and processor time of each run of a command, in turn with others."""

    def __init__(self, label, argv, fresh=None):
        self.label, self.argv, self.fresh = label, argv, fresh
        self.wall, self.processor, self.peak = [], [], 0

    def run(self):
        for path in (self.fresh, f"{self.fresh}-wal"):
            if self.fresh and os.path.exists(path):
                os.remove(path)
        # time(1) is so small that its own size is not taken for the peak.
        with tempfile.NamedTemporaryFile() as account:
            argv = ["/usr/bin/time", "-o", account.name, "-f", "%M"] + self.argv
            start = time.perf_counter()
            child = subprocess.Popen(argv, stdout=subprocess.DEVNULL)
            _, status, used = os.wait4(child.pid, 0)
            self.wall.append(time.perf_counter() - start)
            if status:
                sys.exit(f"case.py: status {status}: {self.argv}")
            self.peak = max(self.peak, int(account.read()))
        self.processor.append(used.ru_utime + used.ru_stime)

    def line(self, rows, yardstick):
        best = min(self.processor)
        per_second = f"{rows / best:12,.0f}" if rows else " " * 12
        return (f"{self.label:24}{best:8.2f}{max(self.processor):8.2f}"
                f"{best / min(yardstick.processor):7.1f}{min(self.wall):8.2f}{max(self.wall):8.2f}"
                f"{min(self.wall) / min(yardstick.wall):7.1f}{per_second}{self.peak / 1024:8.0f}")


def check(program, log, case):
    """Rows in the case, which have to be as many as lines of JSON."""
    lines = subprocess.run([program, "export", "-q", log], stdout=subprocess.PIPE, check=True)
    base = sqlite3.connect(case)
    rows = base.execute("SELECT count(*) FROM event").fetchone()[0]
    sound = base.execute("PRAGMA integrity_check").fetchone()[0]
    base.close()
    if rows != lines.stdout.count(b"\n") or sound != "ok":
        sys.exit(f"case.py: {rows} rows, {sound}: not what {log} holds")
    return rows


def main(program, folder, runs, *logs):
    export = [program, "export", "-q", "-f", "sqlite", "-o"]
    cases = [os.path.join(folder, f"bench-{i}.db") for i in range(len(logs))]
    full, merged = os.path.join(folder, "bench-full.db"), os.path.join(folder, "bench-all.db")
    groups = []
    for log, case in zip(logs, cases):
        group = [Times("md5sum", ["md5sum", log]),
                 Times("case", export + [case, log], case),
                 Times("case --full-text", export + [full, "--full-text", log], full)]
        group[1].run()
        groups.append((log, check(program, log, case), group))
        group[1].wall.clear()
        group[1].processor.clear()
    for _ in range(int(runs)):
        for _, _, group in groups:
            for timed in group:
                timed.run()
    total = sum(rows for _, rows, _ in groups)
    merge = Times("merge of both", [program, "merge", "-o", merged] + cases, merged)
    for _ in range(int(runs)):
        merge.run()
    print(f"{'':24}{'processor s':>16}{'x md5':>7}{'wall s':>16}{'x md5':>7}{'rows/s':>12}{'MiB':>8}")
    for log, rows, group in groups:
        size = os.path.getsize(log) / 2**20
        print(f"{os.path.basename(log)}: {size:.0f} MiB, {rows:,} events, least and most of {runs}")
        for timed in group:
            print(timed.line(rows if timed is not group[0] else 0, group[0]))
    print(merge.line(total, groups[0][2][0]))
    for path in cases + [full, merged]:
        os.remove(path)


if __name__ == "__main__":
    main(*sys.argv[1:])
