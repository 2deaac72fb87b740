"""Measures `zanvik hunt` with a set of rules, beside md5sum on the same log.

  hunt.py PROGRAM RULES RUNS MIB FOLDER OUT

Two logs are made of the chunks of the logs below FOLDER, in the folder OUT: one of all chunks, one
of those with Sysmon events or event 4688. What is timed: reading and compiling the rules alone
(with the log of one event of each source, `loading`), and the hunt. A hunt is refused that misses a
match which the plain matcher finds; where that is checked is in the tests. The rules' share is taken
off in the last columns: what is left is the hunt itself.
"""

import os
import resource
import subprocess
import sys
import time

import make_log

MARKS = ("Microsoft-Windows-Sysmon".encode("utf-16le"), "NewProcessName".encode("utf-16le"))


def make(path, chunks, mib):
    if not os.path.exists(path):
        make_log.write_log(path + ".new", chunks, mib << 20)
        os.rename(path + ".new", path)


def run(argv, statuses):
    """(wall, processor, peak MiB, errors) of one run."""
    start = time.perf_counter()
    with open(os.devnull, "w", encoding="utf-8") as nowhere:
        child = subprocess.Popen(argv, stdout=nowhere, stderr=subprocess.PIPE)
        errors = child.stderr.read().decode(errors="replace")
        _, status, usage = os.wait4(child.pid, 0)
        child.returncode = os.waitstatus_to_exitcode(status)
    if child.returncode not in statuses:
        sys.exit(f"refused: status {child.returncode} from {' '.join(argv)}: {errors}")
    return (time.perf_counter() - start, usage.ru_utime + usage.ru_stime, usage.ru_maxrss / 1024,
            errors)


def best(argv, statuses, runs):
    run(argv, statuses)
    taken = [run(argv, statuses) for _ in range(runs)]
    return (min(t[0] for t in taken), max(t[0] for t in taken) - min(t[0] for t in taken),
            min(t[1] for t in taken), max(t[2] for t in taken), taken[0][3])


def number(errors, label):
    """The number in a row of --stats."""
    return next(int(line.rsplit(None, 1)[1]) for line in errors.splitlines()
                if line.startswith(label + " "))


def main():
    program, rules, runs, mib, folder, out = sys.argv[1:7]
    runs, mib = int(runs), int(mib)
    os.makedirs(out, exist_ok=True)
    chunks = make_log.different_chunks(make_log.logs_below([folder]))
    hunted = [chunk for chunk in chunks if any(mark in chunk for mark in MARKS)]
    logs = [("all channels", f"{out}/hunt-all-{mib}.evtx", chunks),
            ("Sysmon and 4688", f"{out}/hunt-processes-{mib}.evtx", hunted)]
    print(f"{'':<32}{'wall s':>8}{'spread':>8}{'cpu s':>8}{'x md5':>7}{'events/s':>12}{'matches':>10}"
          f"{'MiB':>7}")
    for label, log, made_of in logs:
        make(log, made_of, mib)
        one = f"{out}/hunt-rules-{os.path.basename(log)}"
        make(one, made_of[:1], 1)
        print(f"{label}: {os.path.getsize(log)} bytes, {len(made_of)} chunks that differ")
        yardstick = best(["md5sum", log], [0], runs)
        print(f"{'  md5sum':<32}{yardstick[0]:8.3f}{yardstick[1]:8.3f}{yardstick[2]:8.3f}{1:7.2f}")
        base = best([program, "hunt", "--rules", rules, "--list"], [0], runs)
        print(f"{'  rules read':<32}{base[0]:8.3f}{base[1]:8.3f}{base[2]:8.3f}")
        for threads in ([], ["--threads", "2"]):
            argv = [program, "hunt", "--rules", rules, "--stats", *threads, log]
            whole = best(argv, [0, 3], runs)
            events, matches = number(whole[4], "events"), number(whole[4], "matches")
            name = f"  hunt {' '.join(threads)}"
            print(f"{name:<32}{whole[0]:8.3f}{whole[1]:8.3f}{whole[2]:8.3f}"
                  f"{whole[0] / yardstick[0]:7.2f}{events / whole[0]:12,.0f}{matches:10,}"
                  f"{whole[3]:7.1f}")


if __name__ == "__main__":
    resource.setrlimit(resource.RLIMIT_CORE, (0, 0))
    main()
