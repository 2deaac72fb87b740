"""Compares the program's CSV with the log itself, record by record, before anything is timed.

  check_output.py PROGRAM LOG EVENT_ID [KEEP_FOLDER]

The last line printed has three numbers: the records, those of the event ID, and the bytes of the
log that are records. The status is 1 if a record that the chunks declare is missing from the
listing, if one is listed twice or not declared, or if the run with an event ID does not give
exactly the rows of that ID. KEEP_FOLDER gets a copy of both outputs.
"""

import os
import re
import subprocess
import sys

import logfile

# A record is one line: number, event ID, date and so on; line ends within values are marks. The
# rest is the identification line, header lines, and empty lines between tables.
ROW = re.compile(rb" *([0-9]+), *([0-9]+),")


def expected_marks(log):
    """One byte for each record number, how often it must be listed; and the size of the records."""
    marks, size_bytes = bytearray(), 0
    for chunk in logfile.file_chunks(log):
        offsets = logfile.walk(chunk) or []
        size_bytes += logfile.record_bytes(chunk, offsets)
        for number in logfile.visible_numbers(chunk, offsets):
            if number >= len(marks):
                marks.extend(bytes(number + 4096 - len(marks)))
            marks[number] = min(marks[number] + 1, 255)
    return marks, size_bytes


def rows(program, arguments, copy):
    """Record number and event ID of each row of a run; `copy` is a path or None."""
    others = 0
    with subprocess.Popen([program, *arguments], stdout=subprocess.PIPE) as run, \
            open(copy or os.devnull, "wb") as kept:
        kept.write(next(run.stdout, b""))  # the identification line
        for line in run.stdout:
            kept.write(line)
            if match := ROW.match(line):
                yield int(match[1]), int(match[2])
            elif line != b"\n" and not line.lstrip().startswith(b"Record#"):
                others += 1
    if run.returncode != 0:
        sys.exit(f"refused: status {run.returncode} from {program} {' '.join(arguments)}")
    if others:
        print(f"  {others} lines are neither row nor header nor empty")


def differences(marks, other):
    """The numbers at which two mark tables differ, at most ten."""
    size = max(len(marks), len(other))
    pairs = zip(marks.ljust(size, b"\0"), other.ljust(size, b"\0"))
    found = (number for number, (a, b) in enumerate(pairs) if a != b)
    return [number for number, _ in zip(found, range(10))]


def main():
    program, log, event_id = sys.argv[1:4]
    keep = (lambda name: os.path.join(sys.argv[4], name)) if len(sys.argv) > 4 else lambda _: None
    expected, record_bytes = expected_marks(log)
    listed, of_event = bytearray(len(expected)), bytearray(len(expected))
    unannounced = 0
    for number, event in rows(program, ["-log", log, "-csv", "-quiet"], keep("all.csv")):
        if number >= len(listed):
            unannounced += 1
            continue
        listed[number] = min(listed[number] + 1, 255)
        if event == int(event_id):
            of_event[number] = min(of_event[number] + 1, 255)
    if sum(expected) == 0 or unannounced or listed != expected:
        sys.exit(f"refused: {sum(expected)} records in the log, {sum(listed) + unannounced} in the "
                 f"listing, {unannounced} unannounced; first numbers that differ: "
                 f"{differences(expected, listed)}")

    chosen = bytearray(len(expected))
    arguments = ["-log", log, "-eventid", event_id, "-csv", "-quiet"]
    for number, _ in rows(program, arguments, keep("event.csv")):
        chosen[number] = min(chosen[number] + 1, 255)
    if chosen != of_event:
        sys.exit(f"refused: event ID {event_id} gives {sum(chosen)} rows, {sum(of_event)} in the "
                 f"full listing; first numbers that differ: {differences(of_event, chosen)}")
    print(sum(expected), sum(of_event), record_bytes)


main()
