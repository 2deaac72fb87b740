"""Compares `zanvik export` with the .json files that lie beside .evtx logs in a folder.

    sigma_json.py PROGRAM FOLDER

Each .json holds the events of the log beside it in the tree that `--format jsonl` writes, but for
three differences: six digits in times, GUIDs without braces, no `zanvik` member. Prints how many
logs and events are equal, and each difference; ends with 1 when there is any, 77 when FOLDER is
missing.
"""

import json
import pathlib
import re
import subprocess
import sys

TIME = re.compile(r"^(\d{4}-\d\d-\d\dT\d\d:\d\d:\d\d\.\d{6})\dZ$")
GUID = re.compile(r"^\{([0-9A-F]{8}(?:-[0-9A-F]{4}){3}-[0-9A-F]{12})\}$")


def documents(text):
    """The JSON values that stand one behind the other in `text`."""
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
    for form, rewrite in ((TIME, r"\1Z"), (GUID, r"\1")):
        if form.match(ours) and form.sub(rewrite, ours) == expected:
            return True
    return False


def compare(program, log):
    """Returns the number of events and the differences of one log."""
    run = subprocess.run([program, "export", str(log)], capture_output=True, check=True)
    ours = [json.loads(line) for line in run.stdout.splitlines()]
    expected = list(documents(log.with_suffix(".json").read_text(encoding="utf-8-sig")))
    if len(ours) != len(expected):
        return len(ours), [f"{len(ours)} events where {len(expected)} are expected"]
    differences = []
    for mine, theirs in zip(ours, expected):
        del mine["zanvik"]
        one, other = list(leaves(mine)), list(leaves(theirs))
        if [path for path, _ in one] != [path for path, _ in other]:
            differences.append(f"other members: {one} where {other} are expected")
            continue
        for (path, value), (_, wanted) in zip(one, other):
            if not same(wanted, value):
                differences.append(f"{path}: {value!r} where {wanted!r} is expected")
    return len(ours), differences


def main():
    program, folder = sys.argv[1], pathlib.Path(sys.argv[2])
    logs = [path for path in sorted(folder.rglob("*.evtx")) if path.with_suffix(".json").exists()]
    if not logs:
        print(f"skipped: no logs with .json files beside them below {folder}")
        return 77
    events = failed = 0
    for log in logs:
        count, differences = compare(program, log)
        events += count
        failed += bool(differences)
        for difference in differences:
            print(f"{log.name}: {difference}")
    print(f"logs: {len(logs)}, events: {events}, logs that differ: {failed}")
    return 1 if failed else 0


if __name__ == "__main__":
    sys.exit(main())
