"""Faults for scripts/mutate: where they are put, the build, and the tests that should notice them.

A fault is one change in a line of a source: a condition reversed, a bound off by one, a constant
changed, a statement removed. Each is put into a copy of the tree, and the test programs are built
and run, the most likely first, until one fails. A fault is

    caught     if a test fails, crashes or runs far longer than without the fault,
    unnoticed  if all pass,
    idle       if the object file stays the same: the change has no effect.

Faults that do not compile are not counted; another takes their place. Tests that need logs from
outside the checkout are skipped in the copy and do not help.
"""

import os
import pathlib
import random
import re
import resource
import shutil
import signal
import subprocess
import sys
import time

BUILD_TYPE = ["-DCMAKE_BUILD_TYPE=Release", "-DCMAKE_CXX_FLAGS_RELEASE=-O1"]
# Test programs that are slow, or rarely the first to notice, run last.
LATE = ["test_run", "fuzz_replay"]
SLACK_SECONDS = 10  # beyond four times what a program takes without a fault

# Replacements: (expression, replacement), tried wherever the expression matches.
SWAPS = [
    (r" == ", " != "), (r" != ", " == "), (r" < ", " <= "), (r" <= ", " < "), (r" > ", " >= "),
    (r" >= ", " > "), (r" && ", " || "), (r" \|\| ", " && "), (r" \+ ", " - "), (r" - ", " + "),
    (r" \+= ", " -= "), (r" -= ", " += "), (r" \+ 1\b", ""), (r" - 1\b", ""),
    (r"\btrue\b", "false"), (r"\bfalse\b", "true"), (r"\bcontinue;", "break;"),
    (r"\bbreak;", "continue;"), (r"\+\+", "--"), (r" \? (.+) : (.+);", r" ? \2 : \1;"),
    (r"\bmin\(", "max("), (r"\bmax\(", "min("), (r" & ", " | "), (r" << ", " >> "),
]
CONDITION = re.compile(r"\b(?:if|while) \((?!constexpr)(.*)\)(?: (?:\{|return|continue|break).*)?$")
STATEMENT = re.compile(r"^\s*(?:\(void\))?[A-Za-z_*+-][\w.\->\[\]*+:]*(?:\(.*\)| [-+|&^]?= .*);$")
NO_STATEMENT = re.compile(
    r"^\s*(?:return|using|typedef|const|constexpr|static|auto|case|goto|delete|throw)\b")
NUMBER = re.compile(r"(?<![\w.])(0x[0-9a-fA-F]+|0|[1-9]\d*)(?:u|U|ull|l)?(?![\w.'])")


def masked(line):
    """The line with comments and texts blanked out, of the same length."""
    blank = lambda match: "\0" * len(match.group())
    line = re.sub(r'"(?:\\.|[^"\\])*"' + r"|'(?:\\.|[^'\\])+'", blank, line)
    return re.sub(r"//.*", blank, line)


def faults_of_line(line):
    """All faults of one line, as its new texts."""
    shown = masked(line)
    if re.match(r"\s*(#|\0*$|template\b|static_assert\b|assert\()", shown):
        return []
    found = []
    for expression, by in SWAPS:
        for match in re.finditer(expression, shown):
            found.append(line[:match.start()] + re.sub(expression, by, line[match.start():], 1))
    for match in NUMBER.finditer(shown):
        value = int(match.group(1), 0)
        for other in {value + 1, max(value - 1, 0)} - {value}:
            text = hex(other) if match.group(1).startswith("0x") else str(other)
            found.append(line[:match.start(1)] + text + line[match.end(1):])
    condition = CONDITION.search(shown)
    if condition and shown.count("(") == shown.count(")"):
        begin = condition.start(1)
        depth, end = 1, begin
        while depth and end < len(shown):
            depth += {"(": 1, ")": -1}.get(shown[end], 0)
            end += 1
        inner = line[begin:end - 1]
        if ";" not in shown[begin:end]:
            found.append(line[:begin] + f"!({inner})" + line[end - 1:])
    if STATEMENT.match(shown) and not NO_STATEMENT.match(shown):
        found.append(re.match(r"\s*", line).group() + ";")
    return found


def bounded():
    """A fault may allocate without end; not here."""
    resource.setrlimit(resource.RLIMIT_AS, (4 << 30, 4 << 30))
    resource.setrlimit(resource.RLIMIT_CORE, (0, 0))


class Tree:
    """The copy of the checkout, its build folder and its test programs."""

    def __init__(self, root):
        self.root = root
        self.base = root / "build" / "mutate"
        self.source = self.base / "tree"
        self.build_dir = self.base / "build"
        self.copy()
        self.scratch = self.base / "tmp"
        self.configure()
        self.seconds = {}

    def copy(self):
        """Brings the copy up to the checkout; files that are the same keep their times."""
        names = subprocess.run(["git", "ls-files", "-z"], cwd=self.root, check=True,
                               capture_output=True, text=True).stdout.split("\0")
        wanted = {name for name in names if name and (self.root / name).is_file()}
        for name in wanted:
            to = self.source / name
            data = (self.root / name).read_bytes()
            if not to.is_file() or to.read_bytes() != data:
                to.parent.mkdir(parents=True, exist_ok=True)
                shutil.copy(self.root / name, to)
        for path in self.source.rglob("*"):
            if path.is_file() and str(path.relative_to(self.source)) not in wanted:
                path.unlink()

    def configure(self):
        launcher = ["-DCMAKE_CXX_COMPILER_LAUNCHER=ccache"] if shutil.which("ccache") else []
        subprocess.run(["cmake", "-G", "Ninja", "-S", self.source, "-B", self.build_dir,
                        "-DZANVIK_TESTS=ON", "-DCMAKE_GTEST_DISCOVER_TESTS_DISCOVERY_MODE=PRE_TEST",
                        *BUILD_TYPE, *launcher], check=True, stdout=subprocess.DEVNULL)
        text = (self.source / "CMakeLists.txt").read_text()
        self.uses = {name: re.findall(r"zanvik_(\w+)", used)
                     for name, used in re.findall(r"^zanvik_folder\((\w+)(.*)\)", text, re.M)}
        targets = subprocess.run(["ninja", "-C", self.build_dir, "-t", "targets", "all"], check=True,
                                 capture_output=True, text=True).stdout
        self.programs = sorted(set(re.findall(r"^(test_\w+|fuzz_replay): phony", targets, re.M)))

    def build(self, *targets):
        return subprocess.run(["cmake", "--build", self.build_dir, "--target", *targets],
                              stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True)

    def passes(self, program, limit):
        """Whether all tests of a built program pass within the limit of seconds."""
        path = str(self.build_dir / "tests" / program)
        runs = [[path, "--gtest_fail_fast", "--gtest_brief=1"]]
        if program == "fuzz_replay":
            corpus = self.source / "fuzz" / "corpus"
            runs = [[path, folder.name, str(folder)] for folder in sorted(corpus.iterdir())]
        shutil.rmtree(self.scratch, ignore_errors=True)
        self.scratch.mkdir(parents=True)
        end = time.monotonic() + limit
        return all(self.ends_well(run, end - time.monotonic()) for run in runs)

    def ends_well(self, command, limit):
        """Whether a command ends by itself with status 0, in a folder and with bounds of its own."""
        env = {"PATH": "/usr/sbin:/sbin:/usr/bin:/bin", "TMPDIR": str(self.scratch),
               "TEST_TMPDIR": str(self.scratch), "LANG": "C"}
        run = subprocess.Popen(command, stdin=subprocess.DEVNULL, stdout=subprocess.DEVNULL,
                               stderr=subprocess.DEVNULL, cwd=self.scratch, env=env,
                               start_new_session=True, preexec_fn=bounded)
        try:
            return run.wait(timeout=max(limit, 0.1)) == 0
        except subprocess.TimeoutExpired:
            os.killpg(run.pid, signal.SIGKILL)
            run.wait()
            return False

    def prepare(self):
        """Builds everything without a fault; what a test program takes then is its measure."""
        done = self.build(*self.programs)
        if done.returncode:
            sys.exit(done.stdout[-3000:] + "\nmutate: the tree does not build")
        for program in self.programs:
            begin = time.monotonic()
            if not self.passes(program, 600):
                sys.exit(f"mutate: {program} fails without a fault")
            self.seconds[program] = time.monotonic() - begin

    def order(self, folder):
        """All programs, the likeliest to notice a fault in a folder of src/ first: its own, those
        of folders that use it, quick ones."""
        def depends(name):
            return name == folder or any(depends(used) for used in self.uses.get(name, []))

        def key(program):
            name = program.removeprefix("test_")
            return (name != folder, program in LATE, not depends(name), self.seconds[program])

        return sorted(self.programs, key=key)

    def objects(self, path):
        """The bytes of what the source compiled to; of nothing for a header."""
        found = self.build_dir.glob(f"CMakeFiles/*.dir/{path.relative_to(self.source)}.o")
        return b"".join(file.read_bytes() for file in sorted(found))

    def judge(self, path, number, text):
        """Puts a line in place of another, builds and tests; the file is as before in the end."""
        original = path.read_text()
        lines = original.split("\n")
        before = self.objects(path)
        lines[number] = text
        folder = path.relative_to(self.source / "src").parts[0]
        try:
            path.write_text("\n".join(lines))
            for program in self.order(folder):
                done = self.build(program)
                if done.returncode:
                    return "does not compile"
                if before and before == self.objects(path):
                    return "idle"
                if not self.passes(program, 4 * self.seconds[program] + SLACK_SECONDS):
                    return "caught by " + program
            return "unnoticed"
        finally:
            path.write_text(original)


def drawn(tree, names, seed):
    """Faults in an order that the seed decides: (path, line number from 0, new line)."""
    paths = [tree.source / name for name in names] or sorted((tree.source / "src").rglob("*.cpp"))
    sites = []
    for path in paths:
        for number, line in enumerate(path.read_text().split("\n")):
            sites += [(path, number, text) for text in faults_of_line(line)]
    random.Random(seed).shuffle(sites)
    return sites


def listed(tree, list_path):
    """The faults of a list; a line that moved is found again by its text."""
    for row in pathlib.Path(list_path).read_text().split("\n"):
        cells = [cell.strip(" `").replace("\\|", "|") for cell in re.split(r"(?<!\\)\|", row)]
        if len(cells) < 5 or ":" not in cells[1]:
            continue
        name, _, number = cells[1].rpartition(":")
        path = tree.source / "src" / name
        lines = path.read_text().split("\n") if path.is_file() else []
        places = [i for i, line in enumerate(lines) if line.strip() == cells[2]]
        if not places:
            print(f"gone: {cells[1]}  {cells[2]}", flush=True)
            continue
        at = min(places, key=lambda place: abs(place - int(number)))
        yield path, at, re.match(r"\s*", lines[at]).group() + cells[3]


def main():
    root, count, seed, again = pathlib.Path(sys.argv[1]), *map(int, sys.argv[2:4]), sys.argv[4]
    tree = Tree(root)
    tree.prepare()
    sites = listed(tree, again) if again else drawn(tree, sys.argv[5:], seed)
    tally = {}
    survivors = []
    for path, number, text in sites:
        if not again and sum(tally.values()) - tally.get("does not compile", 0) >= count:
            break
        was = path.read_text().split("\n")[number].strip()
        verdict = tree.judge(path, number, text)
        place = f"{path.relative_to(tree.source / 'src')}:{number + 1}"
        print(f"{verdict}: {place}  {was}  ->  {text.strip()}", flush=True)
        kind = "caught" if verdict.startswith("caught") else verdict
        tally[kind] = tally.get(kind, 0) + 1
        if kind == "unnoticed":
            cells = [cell.replace("|", "\\|") for cell in (was, text.strip())]
            survivors.append(f"| {place} | `{cells[0]}` | `{cells[1]}` |")
    if survivors:
        print("\n| where | was | fault |\n|---|---|---|\n" + "\n".join(survivors))
    print(f"\nseed {seed}: " + ", ".join(f"{n} {kind}" for kind, n in sorted(tally.items())))


main()
