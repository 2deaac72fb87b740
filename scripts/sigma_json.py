"""Compares `zanvik export` with the .json files beside .evtx logs in a folder.

    sigma_json.py PROGRAM FOLDER

Each .json has the events of its log in the tree that `--format jsonl` writes, with three
differences: fewer digits in times, GUIDs without braces, no `zanvik` member. Its values have also
lost their trailing blanks, which the logs have; these are counted. Prints how many logs and events
are equal, and every other difference. The status is 1 if there is one, 77 if FOLDER is missing.
"""

import json
import pathlib
import re
import subprocess
import sys

TIME = re.compile(r"^(\d{4}-\d\d-\d\dT\d\d:\d\d:\d\d\.\d{6})(\d)Z$")
GUID = re.compile(r"^\{([0-9A-F]{8}(?:-[0-9A-F]{4}){3}-[0-9A-F]{12})\}$")
# The published value has "Explorer.exe"; the bytes of the log have "Explorer.EXE".
KNOWN = {("ad691d92-15f2-4181-9aa4-723c74f9ddc3", "/Event/EventData/ParentCommandLine")}


def documents(text):
    """The JSON values in `text`, one after the other."""
    decoder, at = json.JSONDecoder(), 0
    while text[at:].strip():
        at += len(text[at:]) - len(text[at:].lstrip())
        value, at = decoder.raw_decode(text, at)
        yield value


def leaves(value, path=""):
    """Path and value of each leaf, in order."""
    if isinstance(value, dict) and value:
        for name, member in value.items():
            yield from leaves(member, f"{path}/{name}")
    else:
        yield path, value


def same(expected, ours):
    """Whether a leaf is equal but for the digits of times and the braces of GUIDs."""
    if expected == ours and type(expected) is type(ours):
        return True
    if not isinstance(expected, str) or not isinstance(ours, str):
        return False
    if time := TIME.match(ours):
        return expected in (f"{time[1]}Z", f"{time[1]}{time[2]}00Z")
    return bool(GUID.match(ours)) and GUID.sub(r"\1", ours) == expected


def compare(program, log):
    """Returns the number of events, that of values without their blanks, and the differences."""
    run = subprocess.run([program, "export", str(log)], capture_output=True, check=True)
    ours = [json.loads(line) for line in run.stdout.splitlines()]
    expected = list(documents(log.with_suffix(".json").read_text(encoding="utf-8-sig")))
    if len(ours) != len(expected):
        return len(ours), 0, [f"{len(ours)} events where {len(expected)} are expected"]
    differences, blanks = [], 0
    for mine, theirs in zip(ours, expected):
        del mine["zanvik"]
        one, other = list(leaves(mine)), list(leaves(theirs))
        if [path for path, _ in one] != [path for path, _ in other]:
            differences.append(f"other members: {one} where {other} are expected")
            continue
        for (path, value), (_, wanted) in zip(one, other):
            if same(wanted, value) or (log.stem, path) in KNOWN:
                continue
            if isinstance(value, str) and value.rstrip() == wanted:
                blanks += 1
            else:
                differences.append(f"{path}: {value!r} where {wanted!r} is expected")
    return len(ours), blanks, differences


def main():
    program, folder = sys.argv[1], pathlib.Path(sys.argv[2])
    logs = [path for path in sorted(folder.rglob("*.evtx")) if path.with_suffix(".json").exists()]
    if not logs:
        print(f"skipped: no logs with .json files beside them below {folder}")
        return 77
    events = failed = blanks = 0
    for log in logs:
        count, without_blanks, differences = compare(program, log)
        events += count
        blanks += without_blanks
        failed += bool(differences)
        for difference in differences:
            print(f"{log.name}: {difference}")
    print(f"logs: {len(logs)}, events: {events}, logs that differ: {failed}, "
          f"values published without the blanks at their end: {blanks}")
    return 1 if failed else 0


if __name__ == "__main__":
    sys.exit(main())
