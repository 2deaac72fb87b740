"""Runs the program over damaged logs; see scripts/torture, which calls this.

  torture_runs.py PROGRAM ROOT KEPT FOLDER COUNT SEED JOBS

Every run must end by itself, with status 0, with nothing on standard error, and within

  time    0.25 s plus 1 s per MiB of the log, of processor time, user and system. The budgets of
          src/base/limits.h let the records of a chunk consume about 140 times its bytes, 64 in
          template bodies and 64 in slack; at 150 MB per second, a third of the speed on sound logs,
          that is 1 s. The quarter of a second is for starting, and for noise.
  memory  32 MiB plus 16 MiB per MiB of the log. Two blocks of 3.1 MiB, tables and the results'
          buffer need 12 MiB for any log. Kept values need 3 times the 4 chunk lengths that slots may
          consume; damage uses up little of the 8 of plain streams, and names of columns take the
          rest. (Crafted logs can need more; bench/bounds has those.)

A build with sanitizers gets 20 times the time, and 512 MiB plus 16 times the memory: it holds freed
memory back and needs shadow bytes. Wall time only ends a run that hangs. KEPT is the folder for
logs that fail.
"""

import json
import os
import random
import shlex
import signal
import sys
import time

from torture_logs import Source, mutant

MIB = 1 << 20
KEPT_FAILURES = 50


def bounds(size_bytes, sanitized):
    """Seconds and bytes for a log of that size."""
    seconds = 0.25 + size_bytes / MIB
    memory = 32 * MIB + 16 * size_bytes
    return (20 * seconds, 512 * MIB + 16 * memory) if sanitized else (seconds, memory)


def forms(root):
    """Stem of the log's name, options. The name decides the channel, so reports have theirs."""
    commands = os.path.join(root, "examples")
    plain = [
        ("any", []),
        ("any", ["-csv"]),
        ("any", ["-csvl2t"]),
        ("any", ["-bodyfile"]),
        ("any", ["-bodyfile", "-allparams"]),
        ("any", ["-string", "service"]),
        ("any", ["-csv", "-eventid", "4624,7036,6005,4688,1,3"]),
        ("any", ["-csv", "-stats", os.devnull]),
        ("any", ["-csv", "-stats", os.devnull, "-hist", "EventID|Computer"]),
        ("any", ["-csv", "-pair_datetime", "-base16", "-show_offsets"]),
        ("any", ["-enable_quoted_csv_fields", "-dateformat", "mm/dd/yyyy"]),
        ("any", ["-csv", "-start_time", "01/01/2000 00:00:00", "-stop_time",
                 "01/01/2020 00:00:00"]),
        ("any", ["-no_whitespace", "-csv_separator", "tab"]),
        ("security", ["-logon"]),
        ("security", ["-pw", "-time", "-creds", "-csv"]),
        ("security", ["-logon", "-csvl2t", "-hist", "name", "-stats", os.devnull]),
        ("system", ["-startstop", "-csv"]),
        ("system", ["-startstop", "-time", "-usb", "-bodyfile"]),
        ("driverframeworks-usermode", ["-usb"]),
        ("microsoft-windows-partition-diagnostic", ["-partition_metadata", "-csv"]),
    ]
    for name in sorted(n for n in os.listdir(commands) if n.endswith(".cmd")):
        plain.append(("security", ["-csv", "-cmdfile", os.path.join(commands, name)]))
    return [(name, options + slack) for name, options in plain for slack in ([], ["-inc_slack"])]


class Expired(Exception):
    pass


def expire(_signal, _frame):
    raise Expired


def run_once(argv, errors, wall_seconds):
    """Wait status (None when it had to be ended), processor seconds, peak bytes."""
    actions = [(os.POSIX_SPAWN_OPEN, 0, os.devnull, os.O_RDONLY, 0),
               (os.POSIX_SPAWN_OPEN, 1, os.devnull, os.O_WRONLY, 0),
               (os.POSIX_SPAWN_OPEN, 2, errors, os.O_WRONLY | os.O_CREAT | os.O_TRUNC, 0o600)]
    child = os.posix_spawn(argv[0], argv, os.environ, file_actions=actions)
    hung = False
    try:
        signal.setitimer(signal.ITIMER_REAL, wall_seconds)
        _, status, usage = os.wait4(child, 0)
        signal.setitimer(signal.ITIMER_REAL, 0)
    except Expired:
        hung = True
        os.kill(child, signal.SIGKILL)
        _, status, usage = os.wait4(child, 0)
    return None if hung else status, usage.ru_utime + usage.ru_stime, usage.ru_maxrss * 1024


def verdict(status, seconds, peak, errors, most_seconds, most_peak):
    """What is wrong with a run, or nothing."""
    if status is None:
        return "did not end"
    if os.WIFSIGNALED(status):
        return f"ended by signal {os.WTERMSIG(status)}"
    if status != 0:
        return f"status {os.WEXITSTATUS(status)}"
    if seconds > most_seconds:
        return f"{seconds:.2f} s, over the bound of {most_seconds:.2f}"
    if peak > most_peak:
        return f"{peak / MIB:.0f} MiB, over the bound of {most_peak / MIB:.0f}"
    if os.path.getsize(errors):
        return "text on standard error"
    return None


def serve(orders, answers):
    """A runner: takes orders from one pipe, gives answers on the other. It is a process of its own,
    small, since the peak memory that the kernel tells of a child is never below its parent's."""
    signal.signal(signal.SIGALRM, expire)
    for line in orders:
        order = json.loads(line)
        status, seconds, peak = run_once(order["argv"], order["errors"], order["wall"])
        wrong = verdict(status, seconds, peak, order["errors"], order["seconds"], order["peak"])
        answers.write(json.dumps({"seconds": seconds, "peak": peak, "wrong": wrong}) + "\n")
        answers.flush()


class Runner:
    """The parent's side of a runner, with one order in work at the most."""

    def __init__(self):
        here, there = os.pipe(), os.pipe()
        self.pid = os.fork()
        if self.pid == 0:
            os.close(here[1])
            os.close(there[0])
            serve(os.fdopen(here[0]), os.fdopen(there[1], "w"))
            os._exit(0)
        os.close(here[0])
        os.close(there[1])
        self.orders, self.answers = os.fdopen(here[1], "w"), os.fdopen(there[0])
        self.work = None

    def give(self, work, order):
        self.work = work
        self.orders.write(json.dumps(order) + "\n")
        self.orders.flush()

    def take(self):
        answer = json.loads(self.answers.readline())
        work, self.work = self.work, None
        return work, answer


class Torture:
    def __init__(self, program, root, kept, jobs, seed):
        self.program, self.seed, self.kept = program, seed, kept
        self.forms = forms(root)
        self.runners = [Runner() for _ in range(jobs)]  # before there are logs in memory
        os.makedirs(self.kept, exist_ok=True)
        with open(program, "rb") as file:
            self.sanitized = b"__asan_init" in file.read()
        self.count = self.failed = self.input_bytes = 0
        self.slowest = self.hungriest = (0.0, "")
        self.floor = 0

    def order(self, argv, place, size_bytes):
        seconds, peak = bounds(size_bytes, self.sanitized)
        return {"argv": argv, "errors": os.path.join(place, "stderr"), "seconds": seconds,
                "peak": peak, "wall": 30 + 10 * seconds}

    def measure_floor(self):
        """Peak memory of a run that does nothing."""
        self.runners[0].give(None, self.order([self.program, "-h"], self.kept, MIB))
        self.floor = self.runners[0].take()[1]["peak"]

    def start(self, runner, number, sources):
        # Each run has a generator of its own, so that it does not matter who runs it, or when.
        rng = random.Random(f"{self.seed}:{number}")
        data, source = mutant(rng, sources)
        name, options = self.forms[number % len(self.forms)]
        place = os.path.join(self.kept, f"work{self.runners.index(runner)}")
        os.makedirs(place, exist_ok=True)
        path = os.path.join(place, name + (".evtx" if source.is_evtx else ".evt"))
        with open(path, "wb") as out:
            out.write(data)
        argv = [self.program, "-log", path, "-quiet", *options]
        runner.give((number, argv, path, len(data), place), self.order(argv, place, len(data)))

    def finish(self, runner):
        (number, argv, path, size, place), answer = runner.take()
        self.count += 1
        self.input_bytes += size
        # A log below a quarter of a MiB would be judged by what every run costs.
        mib = max(size / MIB, 0.25)
        options = " ".join(argv[4:]) or "(padded)"
        self.slowest = max(self.slowest, (answer["seconds"] / mib, f"run {number}, {options}"))
        grown = max(0, answer["peak"] - self.floor) / MIB
        self.hungriest = max(self.hungriest, (grown / mib, f"run {number}, {options}"))
        if answer["wrong"]:
            self.keep(number, argv, path, place, answer["wrong"])

    def keep(self, number, argv, path, place, wrong):
        self.failed += 1
        print(f"run {number}: {wrong}: {shlex.join(argv[4:])}")
        if self.failed > KEPT_FAILURES:
            return
        folder = os.path.join(self.kept, f"seed{self.seed}-run{number}")
        os.makedirs(folder, exist_ok=True)
        log = os.path.join(folder, os.path.basename(path))
        os.replace(path, log)
        os.replace(os.path.join(place, "stderr"), os.path.join(folder, "stderr"))
        command = shlex.join([argv[0], "-log", log, *argv[3:]])
        with open(os.path.join(folder, "command"), "w", encoding="utf-8") as out:
            out.write(f"# {wrong}\n{command}\n")
        print(f"  {command}")

    def run(self, count, sources):
        for number in range(count):
            runner = self.runners[number % len(self.runners)]
            if runner.work is not None:
                self.finish(runner)
            self.start(runner, number, sources)
        for runner in self.runners:
            if runner.work is not None:
                self.finish(runner)
            runner.orders.close()
            os.waitpid(runner.pid, 0)


def logs_below(places):
    found = []
    for place in places:
        for folder, _, names in os.walk(place):
            found += (os.path.join(folder, name) for name in names
                      if name.lower().endswith((".evt", ".evtx")))
    return sorted(found)


def load(paths):
    sources = []
    for path in paths:
        with open(path, "rb") as file:
            sources.append(Source(path, file.read()))
    return [source for source in sources if source.chunks() > 0 or source.records]


def main():
    program, root, kept, folder, count, seed, jobs = sys.argv[1:8]
    torture = Torture(program, root, kept, max(1, min(2, int(jobs))), int(seed))
    torture.measure_floor()
    sources = load(logs_below({os.path.realpath(folder), os.path.join(root, "samples")}))
    start = time.monotonic()
    torture.run(int(count), sources)
    print(f"{torture.count} runs over {len(sources)} logs, seed {seed}, "
          f"{torture.input_bytes / MIB:.0f} MiB, {time.monotonic() - start:.0f} s")
    print(f"failures: {torture.failed}")
    print(f"slowest: {torture.slowest[0]:.2f} s a MiB ({torture.slowest[1]})")
    print(f"most memory: {torture.hungriest[0]:.1f} MiB a MiB above a floor of "
          f"{torture.floor / MIB:.0f} ({torture.hungriest[1]})")
    sys.exit(1 if torture.failed else 0)


main()
