"""Times runs with one thread and with several, in turn.

  threads.py PROGRAM LOG FOLDER LOGS THREADS RUNS RULES BEFORE SAMPLE...

FOLDER/many gets LOGS small logs. BEFORE is an earlier program, or empty. The first run of each is not
counted, and compares their outputs.
"""

import hashlib
import os
import subprocess
import sys

import folder_logs


def forms(log, folder, rules):
    """What is measured: a name, the arguments, and the option for threads."""
    listed = {"one log": ["-log", log], "folder": ["-enumdir", folder]}
    named = {"one log": [log], "folder": [folder]}
    for what in listed:
        yield f"-csv, {what}", [*listed[what], "-csv", "-quiet"], "-threads"
        yield f"-csvl2t, {what}", [*listed[what], "-csvl2t", "-quiet"], "-threads"
        yield f"export jsonl, {what}", ["export", "-q", *named[what]], "--threads"
        yield f"hunt, {what}", ["hunt", "-q", "--rules", rules, *named[what]], "--threads"


def digest(argv):
    """The sum of the output, without the line in which classic results repeat their command."""
    run = subprocess.Popen(argv, stdout=subprocess.PIPE, stderr=subprocess.DEVNULL)
    text = hashlib.sha256()
    for line in run.stdout:
        if b"-threads" not in line:
            text.update(line)
    run.wait()
    return text.hexdigest()


def main(program, log, folder, logs, threads, runs, rules, before, *samples):
    folder_logs.make(folder, int(logs), samples)
    print(f"{'':24} {'threads':>8} {'wall s':>8} {'cpu s':>8} {'MiB':>6} {'share':>6}")
    for name, args, option in forms(log, os.path.join(folder, "many"), rules):
        ways = {"1": [program, *args, option, "1"], threads: [program, *args, option, threads]}
        if len({digest(argv) for argv in ways.values()}) != 1:
            sys.exit(f"refused: {name}: {threads} threads do not give what one gives")
        if before:
            ways["before"] = [before, *args]
        best = {way: (float("inf"), float("inf"), 0) for way in ways}
        for _ in range(int(runs)):
            for way, argv in ways.items():
                wall, cpu, memory = folder_logs.measure(argv, (0, 1, 3))
                least = best[way]
                best[way] = (min(wall, least[0]), min(cpu, least[1]), max(memory, least[2]))
        for way, (wall, cpu, memory) in best.items():
            print(f"{name:24} {way:>8} {wall:8.3f} {cpu:8.3f} {memory >> 20:6} "
                  f"{wall / best['1'][0]:6.2f}", flush=True)


main(*sys.argv[1:])
