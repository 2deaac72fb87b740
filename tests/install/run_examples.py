"""Runs the commands of the installed pages and compares what they print with what the pages show.

    run_examples.py PREFIX

In the Markdown pages, a block whose lines begin with "$ " shows commands and their output; a line
with nothing but an ellipsis stands for output that is not shown. A command without output only has
to run; so have the commands of a block that begins with "zanvik", and the examples of the verbs'
manual pages. Where such a command names a file that is not here, its options are checked. All run in a copy of the installed folder. Examples whose tools are missing are skipped
and listed.
"""
import os
import re
import shutil
import subprocess
import sys
import tarfile
import tempfile
from pathlib import Path

TOOLS = ["jq", "sqlite3", "mactime", "xmllint", "libreoffice", "mkntfs"]
ELLIPSIS = "…"


def is_whole(command):
    """Whether the shell would ask for no further line."""
    return not command.endswith("\\") and not subprocess.run(
        ["bash", "-n", "-c", command], stderr=subprocess.DEVNULL).returncode


def split_shown(block):
    """(command, expected lines) for each command of a block with output."""
    lines = block.splitlines()
    while lines:
        command = lines.pop(0)[2:]
        while not is_whole(command):
            command += "\n" + lines.pop(0)
        output = []
        while lines and not lines[0].startswith("$ "):
            output.append(lines.pop(0))
        yield command, output or None


def split_plain(block):
    command = ""
    for line in block.splitlines():
        command += line
        if is_whole(command):
            yield command, None
            command = ""
        else:
            command += "\n"


def markdown_examples(page):
    for block in re.findall(r"^```[a-z]*\n(.*?)^```$", page.read_text(), re.M | re.S):
        if block.startswith("$ "):
            yield from split_shown(block)
        elif block.startswith("zanvik "):
            yield from split_plain(block)


def manual_examples(page):
    text = page.read_text().replace("\\e", "\\").partition("\n.Sh EXAMPLES\n")[2]
    text = text.partition("\n.Sh ")[0]
    for block in re.findall(r"^\.Dl (.*\n)|^\.Bd.*\n((?:.*\n)*?)\.Ed", text, re.M):
        block = "".join(block)
        if block.startswith(("zanvik ", "tar ")):
            yield from split_plain(block)


def make_room(doc, room):
    """The installed folder, and the logs and rules that examples name beside it."""
    shutil.copytree(doc, room, dirs_exist_ok=True)
    shutil.copytree(room / "samples", room / "logs")
    shutil.copytree(room / "examples" / "rules", room / "rules")
    for name in ("Security", "System"):
        shutil.copy(room / "samples" / (name.lower() + ".evtx"), room / (name + ".evtx"))
    with tarfile.open(room / "logs.tar", "w") as archive:
        archive.add(room / "Security.evtx", "logs/Security.evtx")


def fits(expected, got):
    """Ellipses stand for any lines. Empty lines at the end do not count."""
    while expected[-1] == "":
        expected.pop()
    while got and got[-1] == "":
        got.pop()
    parts = [re.escape(line) if line != ELLIPSIS else r"(?:.*\n)*?.*" for line in expected]
    return re.fullmatch("\n".join(parts), "\n".join(got)) is not None


def fault_of(command, expected, room, environment):
    run = subprocess.run(["bash", "-c", command], cwd=room, env=environment, text=True,
                         stdin=subprocess.DEVNULL, capture_output=True, errors="replace")
    if "a disk image" in run.stderr:
        print(f"skipped, built without images: {command}")
        return None
    if expected is None and run.stderr.endswith(": No such file or directory\n"):
        print(f"only its options were read, its file is not here: {command}")
        return None
    if expected is None:
        bad = run.stderr.startswith("zanvik") or run.returncode not in (0, 3, 4)
        return f"status {run.returncode}\n{run.stderr}" if bad else None
    got = (run.stdout + run.stderr).splitlines()
    return None if fits(expected, got) else "printed:\n" + "\n".join(got)


def main():
    prefix = Path(sys.argv[1])
    doc = prefix / "share/doc/zanvik"
    environment = dict(os.environ, PATH=f"{prefix}/bin:{os.environ['PATH']}", TZ="UTC", LC_ALL="C.UTF-8")
    examples = [(page.name, *example) for page in [doc / "README.md", *sorted(doc.glob("docs/*.md"))]
                for example in markdown_examples(page)]
    examples += [(page.name, *example) for page in sorted(prefix.glob("share/man/man1/zanvik-*.1"))
                 for example in manual_examples(page)]
    run, faults = 0, 0
    with tempfile.TemporaryDirectory() as folder:
        room = Path(folder) / "zanvik"
        make_room(doc, room)
        environment["HOME"] = folder
        for name, command, expected in examples:
            missing = [tool for tool in TOOLS
                       if re.search(rf"\b{tool}\b", command) and not shutil.which(tool)]
            if missing:
                print(f"skipped, no {missing[0]}: {name}: {command}")
                continue
            run += 1
            fault = fault_of(command, expected, room, environment)
            if fault:
                faults += 1
                print(f"{name}: {command}\n{fault}\n")
    print(f"{run} examples run, {faults} wrong")
    sys.exit(faults != 0 or run < 20)


main()
