"""Measures `export --order time` over one log that is named many times; see bench/order.

  order.py PROGRAM LOG FORM MEMORY TEMP_DIR EVENTS GIB
"""

import hashlib
import os
import subprocess
import sys
import tempfile
import time

# Where the time stands in a line: after this text, so many characters. They sort as text.
TIME_AT = {
    "csv": (b"", 28),
    "elastic": (b'{"@timestamp":"', 28),
    "jsonl": (b'"SystemTime":"', 28),
    "timesketch": (b'"timestamp":', 16),
    "l2t": (b"", 24),
}
BLOCK = 16 << 20


class Order:
    """Counts lines and checks that their times rise."""

    def __init__(self, form):
        self.mark, self.size = TIME_AT[form]
        self.events = self.bytes = 0
        self.last, self.rest = b"", b""

    def take(self, block):
        self.bytes += len(block)
        lines = (self.rest + block).split(b"\n")
        self.rest = lines.pop()
        for line in lines:
            at = line.find(self.mark) + len(self.mark) if self.mark else 0
            shown = line[at:at + self.size]
            if not shown[:1].isdigit():
                continue  # a header
            if shown < self.last:
                sys.exit(f"order.py: {shown} comes behind {self.last}")
            self.last = shown
            self.events += 1


def run(argv, names, use):
    """Runs the command, its list of logs on standard input; time, processor time, peak in bytes.

    time(1) starts it, from a process so small that its own size is not taken for the peak.
    """
    with tempfile.TemporaryFile() as listed, tempfile.NamedTemporaryFile() as account:
        listed.write(names)
        listed.seek(0)
        start = time.perf_counter()
        timed = ["/usr/bin/time", "-o", account.name, "-f", "%M %U %S"] + argv
        child = subprocess.Popen(timed, stdin=listed, stdout=subprocess.PIPE)
        while block := child.stdout.read(BLOCK):
            use(block)
        status = child.wait()
        seconds = time.perf_counter() - start
        if status != 0:
            sys.exit(f"order.py: {' '.join(argv)}: status {status}")
        peak, user, system = account.read().split()
    return seconds, float(user) + float(system), int(peak) * 1024


def main():
    program, log, form, memory, temporary = sys.argv[1:6]
    events, gib = int(sys.argv[6]), int(sys.argv[7])
    export = [program, "export", "-q", "-f", form, "--from-list", "-", "--temp-dir", temporary]
    name = os.fsencode(log) + b"\n"

    digests = []
    for size in ("1M", "2G"):
        digest = hashlib.sha256()
        run(export + ["--order", "time", "--memory", size], name, digest.update)
        digests.append(digest.hexdigest())
    if digests[0] != digests[1]:
        sys.exit("order.py: little memory and much do not give the same")

    one = Order(form)
    run(export + ["--order", "time"], name, one.take)
    size = os.path.getsize(log)
    copies = gib * (1 << 30) // size if gib else -(-events // one.events)
    print(f"{copies} times a log of {size >> 20} MiB with {one.events:,} events")
    for title, options in ((f"in order of time, --memory {memory}",
                            ["--order", "time", "--memory", memory]),
                           ("in order of the logs", ["--order", "log"])):
        order = Order(form)
        if options[1] == "log":
            seconds, processor, peak = run(export + options, name * copies, len)
            print(f"{title}: {seconds:.1f} s, processor {processor:.1f} s, "
                  f"peak {peak / 2**20:.1f} MiB")
            continue
        seconds, processor, peak = run(export + options, name * copies, order.take)
        if order.events != copies * one.events:
            sys.exit(f"order.py: {order.events} events")
        print(f"{title}: {order.events:,} events, {order.bytes / 2**30:.2f} GiB of {form}, "
              f"{copies * size / 2**30:.2f} GiB of logs: {seconds:.1f} s, "
              f"processor {processor:.1f} s, peak {peak / 2**20:.1f} MiB", flush=True)


if __name__ == "__main__":
    main()
