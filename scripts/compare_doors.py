"""Compares the fields of the classic listing with those of `zanvik export`, value by value.

    compare_doors.py PROGRAM [--damaged COUNT] LOG-OR-FOLDER...

Each row of `-log LOG -csv` must be an event of `export`, once, with the same value in every field.
Values are compared as far as their forms go: the two command lines write times, SIDs, GUIDs,
hexadecimal numbers, floats and bytes in their own ways, and the listing cleans texts for its cells.
With --damaged, COUNT copies of the logs with changed bytes are compared as well; the bytes are the
same in each run. Prints each difference and what was compared. The status is 1 if there is a
difference, 77 if there is nothing to compare.
"""

import codecs
import collections
import datetime
import itertools
import json
import pathlib
import random
import re
import subprocess
import sys
import tempfile
import uuid

CELL_TIME = re.compile(r"^(\d{4}-\d\d-\d\d) (\d\d:\d\d:\d\d)\.(\d+)$")
US_TIME = re.compile(r"^(\d\d)/(\d\d)/(\d{4}) : (\d\d:\d\d:\d\d\.\d+)$")
LATE_TIME = re.compile(r"^(\d{5})-\d\d-\d\d ")
ISO_TIME = re.compile(r"^(\d{4}-\d\d-\d\d)T(\d\d:\d\d:\d\d)\.(\d+)Z$")
GUID = re.compile(r"^\{?([0-9A-Fa-f]{8}(?:-[0-9A-Fa-f]{4}){3}-[0-9A-Fa-f]{12})\}?$")
SID = re.compile(r"^S-\d+-")
HEX = re.compile(r"^0x[0-9a-fA-F]+$")
BYTES = re.compile(r"^([0-9A-F]{2})*$")
NUMBERED = re.compile(r"^\d+:")
# Columns that the listing makes itself.
MADE = {"Date", " Time-UTC", "Level (translated)", "event log"}


def run(command):
    return subprocess.run(command, stdout=subprocess.PIPE, stderr=subprocess.DEVNULL, check=False).stdout


def rows_of(program, log):
    """The rows of the listing: a dictionary for each, from the column's name to its cells."""
    text = run([program, "-log", str(log), "-csv", "-quiet"]).decode("utf-8", "mark")
    header = None
    for line in text.split("\n"):
        if line.startswith("Record#,"):
            header = line.split(",")
        elif header and line:
            cells = line.split(",")
            if len(cells) != len(header):
                yield {"?": [line]}
                continue
            row = {}
            for name, cell in zip(header, cells):
                row.setdefault(NUMBERED.sub("", name), []).append(cell)
            yield row
        elif not line:
            pass


def leaves(value, names=()):
    """Names and value of each leaf; an attribute has the name of its element before its own."""
    if isinstance(value, dict):
        for name, member in value.items():
            if name == "#attributes":
                for attribute, text in member.items():
                    yield names + (attribute,), text
            elif name == "#text":
                yield names, member
                if title := value.get("#attributes", {}).get("Name"):
                    yield names + (title,), member
            else:
                yield from leaves(member, names + (name,))
    else:
        yield names, value


def cleaned(text):
    """A text as the listing's cells have it."""
    text = text.split("\0")[0].replace("\r", "").replace("\t", "").replace(",", ";")
    text = text.replace("\n", ":")
    return text[1:] if text.startswith(":") else text


def marked(text):
    """The same of items of an array and of records without a template: line ends have marks."""
    text = text.split("\0")[0].replace(",", ";")
    return text.replace("\r\n", "[CRLF]").replace("\n", "[LF]").replace("\r", "[CR]")


def ticks(date, time, fraction):
    return f"{date}T{time}.{(fraction + '0' * 9)[:9]}"


def same_text(cell, text):
    if cell == cleaned(text) or cell == marked(text) or cell.replace("&#10", "\n") == text:
        return True
    if time := US_TIME.match(cell):
        cell = f"{time[3]}-{time[1]}-{time[2]} {time[4]}"
    if time := CELL_TIME.match(cell):
        shown = 20 + len(time[3])
        if other := ISO_TIME.match(text):
            return ticks(*other.groups())[:shown] == ticks(*time.groups())[:shown]
    if (one := GUID.match(cell)) and (other := GUID.match(text)):
        return one[1].lower() == other[1].lower()
    if HEX.match(cell) and HEX.match(text):
        return int(cell, 16) == int(text, 16)
    if SID.match(text):
        return cell == "" or bool(SID.match(cell))
    if BYTES.match(text):
        return same_bytes(cell, bytes.fromhex(text)) or same_start(cell, bytes.fromhex(text))
    if time := LATE_TIME.match(cell):
        return int(time[1]) > 9999 and text.isdigit()  # no such time in ISO 8601
    if text.startswith("1601-01-01T00:00:00"):
        return cell.strip() == ""
    return False


def same_bytes(cell, value):
    if cell in ("", "[null]"):
        return not value
    shown = cell.replace(" ", "")
    if re.fullmatch(r"([0-9A-Fa-f]{2})*", shown):
        return value.hex().startswith(shown.lower())
    # Or the texts that are in the bytes.
    texts = value.decode("utf-16-le", "replace") + value.decode("latin-1")
    rest = iter(texts.replace(",", ";"))
    return all(c in rest for c in cell if not c.isspace())


def same_start(cell, value):
    """Whether the cell is what the first of these bytes are, as a number, a time or a GUID: `export`
    shows values whose size is not that of their type as bytes."""
    if GUID.match(cell):
        return uuid.UUID(cell).bytes_le == value[:16]
    if CELL_TIME.match(cell):
        since = datetime.datetime(1601, 1, 1)
        time = since + datetime.timedelta(microseconds=int.from_bytes(value[:8], "little") // 10)
        return cell.startswith(time.strftime("%Y-%m-%d %H:%M:%S"))
    numbers = [int.from_bytes(value[:size], "little") for size in (1, 2, 4, 8)]
    return cell.isdigit() and int(cell) in numbers


def same(cell, value):
    """Whether a cell shows this value."""
    if value is None:
        return cell in ("", "0")
    if isinstance(value, bool):  # the listing looks at the lowest byte alone
        return cell == ("true" if value else "false") or cell == "false"
    if isinstance(value, int):
        if re.fullmatch(r"-?\d+", cell):
            # Its bytes have no sign, and its 64-bit numbers have one.
            return int(cell) in (value, value + 256 if -128 <= value < 0 else value,
                                 value - 2**64 if value >= 2**63 else value)
        if re.fullmatch(r"-?\d+\.\d+", cell):
            return float(cell) == value
        return HEX.match(cell) is not None and int(cell, 16) == value
    if isinstance(value, float):
        try:
            return abs(float(cell) - value) <= 1e-6 * max(1.0, abs(value))
        except ValueError:
            return False
    if isinstance(value, list):
        if cell == "":  # it shows no arrays but those of texts
            return not any(isinstance(item, str) and not HEX.match(item) for item in value)
        joined = "; ".join(str(item) for item in value if item is not None)
        return cell in (cleaned(joined), marked(joined)) or any(same(cell, item) for item in value)
    return same_text(cell, value)


def plain(name):
    """A member's name without the number that sets it apart."""
    return re.sub(r"_\d+$", "", name)


def found_in_markup(cell, found):
    """Whether the cell, an element with all that it contains, has each value below UserData."""
    cell = cell.replace("&quot;", "").replace('"', "")
    below = [value for names, value in found if "UserData" in names and value is not None]
    return bool(below) and all(cleaned(str(value)).replace('"', "") in cell for value in below)


def values_of(column, event, found):
    """The values that the column may show: those of its name, else of its name's last word."""
    if column == "TimeCreated (Collector) UTC":
        return [event["zanvik"]["written"]]
    words = column.split(" ")
    exact = [value for names, value in found
             if column in (names[-1], plain(names[-1])) or list(names[-len(words):]) == words]
    return exact or [value for names, value in found if words[-1] in (names[-1], plain(names[-1]))]


def is_shown(column, cell, found, values):
    """Whether one of the values is in the cell, or the cell shows something that is no value."""
    if cell in ("", "0") and not values or any(same(cell, value) for value in values):
        return True
    if cell == "" and not any(names[-1] == column for names, _ in found):
        return True  # no such value, and another one of a name like it
    if column == "Unknown" and cell == "":
        return True  # the sample has a value of a type that the listing shows nothing of
    if column == "Name":  # an element without a value gives its name
        return cell == "" or any(names[-1] == cell and value is None for names, value in found)
    return cell.startswith("<") and found_in_markup(cell, found)


def difference(row, event, known, counts):
    """The first field of the row that the event does not have, or nothing. `known`: names of
    columns, for a damaged log, whose listing also has columns named after bytes nearby."""
    found = [(names, value) for names, value in leaves(event["Event"] or {}) if names]
    for column, cells in row.items():
        if column in MADE or column == "Record#":
            continue
        values = values_of(column, event, found)
        for cell in cells:
            if is_shown(column, cell, found, values):
                continue
            if column == "<unnamed>":  # a slot that the template has no element for
                counts["unplaced"] += 1
                continue
            # Damage to a template moves values to other names, and takes words for values.
            # What is behind a break in binary XML of the record's own is lost to `export`.
            own = event["zanvik"].get("cut") and any(
                names[-1] == "EventID" and isinstance(value, str) for names, value in found)
            if known and (own or column not in known or column in ("Name", "UserData") or
                          any(same(cell, value) for _, value in found)):
                continue
            return f"{column}: {cell!r} and {values!r}"[:400]
    return ""


def compare(program, log, name, known, counts):
    """Adds to the counts what was compared; returns the differences."""
    events = {}
    text = run([program, "export", "--quiet", str(log)]).decode("utf-8")
    for line in text.split("\n")[:-1]:
        event = json.loads(line)
        events.setdefault(event["zanvik"]["record"], []).append(event)
    differences = []
    for row in rows_of(program, log):
        if "?" in row:
            differences.append(f"{name}: a row that is none: {row['?'][0][:200]}")
            continue
        counts["rows"] += 1
        counts["values"] += sum(len(cells) for cells in row.values())
        number = int(row["Record#"][0])
        candidates = events.get(number, [])
        reasons = [difference(row, event, known, counts) for event in candidates]
        if "" in reasons:
            del candidates[reasons.index("")]
        else:
            differences.append(f"{name}: record {number}: {reasons[0] if reasons else 'not exported'}")
    counts["logs"] += 1
    counts["differ"] += len(differences)
    return differences


def damaged(logs, count, folder):
    """Copies of the logs with some bytes changed where records are."""
    chance = random.Random(20)
    for number in range(count):
        source = chance.choice(logs)
        data = bytearray(source.read_bytes())
        for _ in range(chance.randint(1, 6)):
            data[chance.randrange(4096 + 512, min(len(data), 4096 + 24000))] = chance.randrange(256)
        copy = folder / f"damaged-{number}{source.suffix}"
        copy.write_bytes(data)
        yield copy, f"{source.name}, damaged copy {number}"
        copy.unlink()


def main(arguments):
    program, arguments = arguments[0], arguments[1:]
    count = 0
    if arguments[:1] == ["--damaged"]:
        count, arguments = int(arguments[1]), arguments[2:]
    # A surrogate alone has three bytes.
    codecs.register_error("mark", lambda error: ("\ufffd", error.start + (
        3 if error.object[error.start] == 0xED else 1)))
    logs = []
    for path in map(pathlib.Path, arguments):
        if not path.exists():
            print(f"{path} is not there: skipped")
            continue
        found = [path] if path.is_file() else sorted(path.rglob("*"))
        logs += [log for log in found if log.suffix in (".evtx", ".evt") and log.is_file()]
    if not logs:
        return 77
    counts = collections.Counter()
    columns = set()
    if count:
        columns = {column for log in logs for row in rows_of(program, log) for column in row}
    with tempfile.TemporaryDirectory() as folder:
        for log, name in itertools.chain([(log, "") for log in logs],
                                         damaged(logs, count, pathlib.Path(folder))):
            for line in compare(program, log, name or str(log), columns if name else None, counts)[:5]:
                print(line)
    print(f"{counts['logs']} logs, {counts['rows']} rows, {counts['values']} values compared;",
          f"{counts['unplaced']} values that no element shows; {counts['differ']} rows differ")
    return 1 if counts["differ"] else 0


if __name__ == "__main__":
    sys.exit(main(sys.argv[1:]))
