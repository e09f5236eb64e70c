"""The verbs of the fault trials: places with books, the command under faults, and what must hold afterwards.

A Place is a folder with two books, exchange definitions, exchange files, text files and old exports. A Deed is one use
of the command there. A trial copies the place, does the deed while something is made to fail, and judges what is left:
figures, definitions, outputs and names are those from before or those of a deed that nothing disturbed, or the journal
takes the figures back.
"""

import argparse
import contextlib
import dataclasses
import json
import mmap
import os
import pathlib
import random
import re
import shutil
import struct
import subprocess
import tempfile
import threading
import time

CLOCK = "1709294400"  # 2024-03-01 12:00:00 UTC
TIMEOUT = 120
KINDS = ("open", "read", "write", "sync", "truncate", "rename", "unlink", "close", "link", "map", "folder", "mode")
FIRST_DATE, LAST_DATE = "2003-01-01", "2006-12-31"


class Broken(AssertionError):
    """What had to hold did not."""


@dataclasses.dataclass
class Done:
    """How a run of the command ended, and which call was hit, if any was."""

    arguments: tuple
    status: int
    out: bytes
    err: str
    hit: str = ""

    def __str__(self):
        return (f"tallybook {' '.join(map(str, self.arguments))}: status {self.status}"
                f"{', hit ' + self.hit if self.hit else ''}\n{self.out[-600:].decode(errors='replace')}{self.err}")


class FaultDouble:
    """The preloaded library, and the file in which it tells what it counted (see FaultDouble.cpp)."""

    def __init__(self, library, folder):
        self.library = library
        self.told = pathlib.Path(folder) / "told"

    def environment(self, below, fault):
        self.told.write_bytes(bytes(mmap.PAGESIZE))
        return {"LD_PRELOAD": str(self.library), "FAULT_BELOW": str(below), "FAULT_TOLD": str(self.told),
                "FAULT": fault}

    def counts(self):
        """How many calls of each kind the last run made; "any" is their sum."""
        numbers = struct.unpack_from("<16Q", self.told.read_bytes())
        return dict(zip(KINDS + ("any",), numbers))

    def hit(self):
        told = self.told.read_bytes()
        if struct.unpack_from("<Q", told, 128)[0] == 0:
            return ""
        return told[136:136 + 512].split(b"\0")[0].decode(errors="replace")


class Place:
    """A folder with books in it, in which the command runs."""

    def __init__(self, tallybook, folder, double=None):
        self.tallybook = str(tallybook)
        self.folder = pathlib.Path(folder)
        self.double = double

    def environment(self):
        home = self.folder / ".home"
        scratch = self.folder / ".tmp"
        scratch.mkdir(parents=True, exist_ok=True)
        # Of the sanitizers; other builds do not look at them.
        kept = {name: value for name, value in os.environ.items() if name in ("ASAN_OPTIONS", "UBSAN_OPTIONS")}
        return {**kept, "LSAN_OPTIONS": "detect_leaks=0", "PATH": "/usr/bin:/bin", "HOME": str(home),
                "XDG_CONFIG_HOME": str(home / "config"), "XDG_STATE_HOME": str(home / "state"),
                "TMPDIR": str(scratch), "SOURCE_DATE_EPOCH": CLOCK, "TZ": "UTC", "LC_ALL": "C.UTF-8"}

    def start(self, *arguments, fault=None):
        env = self.environment()
        if fault is not None:
            env.update(self.double.environment(self.folder, fault))
        return subprocess.Popen([self.tallybook, *map(str, arguments)], cwd=self.folder, env=env,
                                stdin=subprocess.DEVNULL, stdout=subprocess.PIPE, stderr=subprocess.PIPE)

    def run(self, *arguments, fault=None, within=None, cwd=None, environment=None, stdout=subprocess.PIPE,
            timeout=TIMEOUT, **options):
        """Runs the command. `fault` is for the double; `within` is called in the child before the command begins."""
        env = {**self.environment(), **(environment or {})}
        if fault is not None:
            env.update(self.double.environment(self.folder, fault))
        done = subprocess.run([self.tallybook, *map(str, arguments)], cwd=cwd or self.folder, env=env,
                              stdin=subprocess.DEVNULL, stdout=stdout, stderr=subprocess.PIPE, timeout=timeout,
                              preexec_fn=within, check=False, **options)
        hit = self.double.hit() if fault else ""
        return Done(arguments, done.returncode, done.stdout or b"", done.stderr.decode(errors="replace"), hit)

    def measure(self, *arguments):
        """Runs the command; gives how it ended, and its peak of memory in mebibytes (that of this program at least)."""
        with tempfile.TemporaryFile() as out, tempfile.TemporaryFile() as err:
            process = subprocess.Popen([self.tallybook, *map(str, arguments)], cwd=self.folder, stdout=out, stderr=err,
                                       env=self.environment(), stdin=subprocess.DEVNULL)
            stopper = threading.Timer(TIMEOUT, process.kill)
            stopper.start()
            _, status, used = os.wait4(process.pid, 0)
            stopper.cancel()
            process.returncode = os.waitstatus_to_exitcode(status)
            out.seek(0)
            err.seek(0)
            done = Done(arguments, process.returncode, out.read(), err.read().decode(errors="replace"))
        return done, used.ru_maxrss >> 10

    def must(self, *arguments, **options):
        done = self.run(*arguments, **options)
        if done.status != 0:
            raise Broken(f"was to succeed: {done}")
        return done

    def figures(self, book):
        return self.must("values", book, "--format", "csv").out

    def write(self, name, text):
        path = self.folder / name
        path.parent.mkdir(parents=True, exist_ok=True)
        path.write_bytes(text if isinstance(text, bytes) else text.encode())
        return path

    def read(self, name):
        path = self.folder / name
        return path.read_bytes() if path.exists() else None

    def names(self):
        """Every name in the folder, but for the log and what lies in the home."""
        return {str(path.relative_to(self.folder)) for path in self.folder.rglob("*")
                if path.relative_to(self.folder).parts[0] not in (".home",)}


def describe(name, accounts, values, fields=3, **more):
    return json.dumps({
        "system_name": name, "data_level": "day",
        "calendar": {"kind": "months", "first_date": FIRST_DATE, "years": 4},
        "accounts": [{"number": 100 + i, "code": code, "description": f"Account {code}"}
                     for i, code in enumerate(accounts)],
        "fields": [{"number": f, "description": f"Field {f}"} for f in range(1, fields + 1)],
        "values": [{"account": a, "date": d, "field": f, "value": v} for a, d, f, v in values], **more})


def some_values(chance, accounts, count):
    """Figures on random dates of all years, so that each account has several chunks."""
    places = {(100 + chance.randrange(accounts), f"{chance.randrange(2003, 2007)}-{chance.randrange(1, 13):02}-"
               f"{chance.randrange(1, 29):02}", chance.randrange(1, 4)) for _ in range(count)}
    return [(*place, round(chance.uniform(-9999, 9999), chance.randrange(0, 5))) for place in sorted(places)]


def furnish(place, seed):
    """Fills an empty place: what it holds is what the deeds below work on."""
    chance = random.Random(seed)
    codes = ["100", "110", "120", "130", "140"]
    place.write("north.json", describe("North Shop", codes, some_values(chance, 5, 400)))
    place.write("office.json", describe("Head Office", codes, some_values(chance, 5, 150)))
    place.write("fresh.json", describe("Fresh", codes, some_values(chance, 5, 60)))
    place.must("new", "north", "--from", "north.json")
    place.must("new", "office", "--from", "office.json")
    for name, first, last in (("a", "2003-01-01", "2003-12-31"), ("b", "2004-01-01", "2004-06-30"),
                              ("c", "2004-07-01", "2005-12-31")):
        place.must("export", "qdx", "north", f"{name}.QDX", "--from", first, "--to", last)
    for title, after in (("a", "keep"), ("b", "rename"), ("c", "delete")):
        place.must("definition", "add", "office", "--title", f"From {title}", "--file", f"{title}.QDX", "--after",
                   after)
    place.write("figures.csv", "2,3,2004,1,1\n100,1,1250.75\n100,2,38\n110,1,99.5\n,,\n3,9,2005\n120,3,17\n")
    place.write("lines.txt", "".join(f"{day}.2.2004,{code},1,{day}.5,3,{day}\r\n" for day in range(1, 20)
                                     for code in codes))
    # Exports of before, of fewer dates than those of the deeds.
    place.must("export", "qdx", "north", "out.QDX", "--from", "2003-01-01", "--to", "2003-01-31")
    for kind, name in TABLES.items():
        place.must("export", "table", "north", name, "--type", kind, "--from", "2003-01-01", "--to", "2003-01-31")
    place.write("old.tbk", SAMPLE.read_bytes())  # a book of the format's first version
    place.must("book", "backup", "office", "safe")
    place.must("definition", "add", "north", "--title", "Other", "--file", "x.QDX")
    place.must("book", "backup", "north", "other.backup")
    place.write("report.txt", "an old report\n")
    place.write("messages.json", "old messages\n")


SAMPLE = pathlib.Path(__file__).resolve().parent.parent / "tallybook/engine/samples/book-v1.tbk"
TABLES = {"CSV": "out.csv", "XLSX": "out.xlsx", "DBF": "out.dbf", "TXT": "out.txt", "SQLT": "out.db"}
BOOKS = ("north", "office", "old")


@dataclasses.dataclass
class Deed:
    """One use of the command.

    `writes` is the book whose figures it changes; `whole` the outputs that are old or new and never half; `inputs` what
    it may rename or delete; `undoable` whether a run that failed may leave figures for the journal to take back;
    `prepare` is done in the place before. `swaps`: its book and its files change together, whatever disturbs it, and no
    journal takes that back. `again` is what is done when it is done again, where that cannot be the same.
    `atomic`: as long as the figures are those from before, its inputs are as well.
    """

    name: str
    arguments: tuple
    writes: str = ""
    whole: tuple = ()
    inputs: tuple = ()
    undoable: bool = False
    prepare: object = None
    changes_names: tuple = ()
    swaps: bool = False
    again: tuple = ()
    atomic: bool = False


RANGE = ("--from", "2003-01-01", "--to", "2003-06-30")


def all_deeds():
    import_all = ("import", "qdx", "office", "--all", "--yes")
    first = ("import", "qdx", "office", "--definition", "1", "--math", "replace", "--yes")
    exports = [Deed("export qdx", ("export", "qdx", "north", "out.QDX", *RANGE, "--yes"), whole=("out.QDX",))]
    exports += [Deed(f"export {kind}", ("export", "table", "north", name, "--type", kind, *RANGE, "--yes"),
                     whole=(name,)) for kind, name in TABLES.items()]
    lines = ("import", "delimited", "office", "lines.txt", "--math", "add", "--date-order", "DMY", "--yes")
    definitions = tuple(f"TBQDX{n}.office" for n in range(1, 5))
    return exports + [
        Deed("new", ("new", "fresh", "--from", "fresh.json"), changes_names=("fresh",)),
        Deed("set", ("set", "office", "100", "2003-05-01", "1", "7.5"), writes="office"),
        Deed("upgrade", ("set", "old", "100", "2003-05-01", "1", "7.5"), writes="old", changes_names=("old.tbk",)),
        Deed("import qdx", first, writes="office", inputs=("a.QDX",), undoable=True),
        Deed("import qdx with report", (*first, "--report", "report.txt", "--messages", "messages.json"),
             writes="office", whole=("report.txt",), inputs=("a.QDX",), undoable=True),
        Deed("import qdx --all", import_all, writes="office", inputs=("a.QDX", "b.QDX", "c.QDX"), undoable=True),
        Deed("import csv", ("import", "csv", "office", "figures.csv", "--yes"), writes="office",
             inputs=("figures.csv",), undoable=True),
        Deed("import delimited", lines, writes="office", inputs=("lines.txt",), undoable=True),
        Deed("import qdx --all --atomic", (*import_all, "--atomic"), writes="office", inputs=("a.QDX", "b.QDX", "c.QDX"),
             again=(*import_all, "--atomic", "--again"), atomic=True),
        Deed("import delimited --atomic", (*lines, "--atomic"), writes="office", inputs=("lines.txt",),
             again=(*lines, "--atomic", "--again"), atomic=True),
        Deed("definition add", ("definition", "add", "office", "--title", "New", "--file", "a.QDX", "--map-account",
                                "100=110", "--map-field", "1=2", "--yes"), whole=definitions),
        Deed("definition edit", ("definition", "edit", "office", "2", "--title", "Other", "--map-account", "110=100",
                                 "--yes"), whole=definitions),
        Deed("definition delete", ("definition", "delete", "office", "2", "--yes"), whole=definitions),
        Deed("journal undo", ("journal", "undo", "office"), writes="office",
             prepare=lambda place: place.must(*import_all)),
        Deed("journal undo of an older entry", ("journal", "undo", "office", "1", "--force"), writes="office",
             prepare=lambda place: (place.must(*import_all), place.must("set", "office", "100", "2003-05-01", "1", "7.5"))),
        Deed("demo", ("demo", "shown"), changes_names=("shown",)),
        Deed("book backup", ("book", "backup", "north", "safe", "--replace"), whole=("safe",)),
        Deed("book restore", ("book", "restore", "other.backup", "office", "--replace"), writes="office",
             whole=definitions, changes_names=("office.tbk",), swaps=True),
        Deed("book compact", ("book", "compact", "office")),
        Deed("new --from-book", ("new", "months", "--from-book", "north", "--level", "period"),
             changes_names=("months",)),
        Deed("new --from-book --first-year", ("new", "later", "--from-book", "north", "--first-year", "2005"),
             changes_names=("later",)),
        # Removes an account with figures and a field, moves, renames, adds a year, and sets figures.
        Deed("apply", ("apply", "office", "lists.json", "--with-figures"), writes="office",
             prepare=lambda place: place.write("lists.json", changed_lists(["140", "110", "101", "130"]))),
        # With so many fields all chunks are stored anew. Numbers that come are not given again, not even after an undo.
        Deed("apply with definitions", ("apply", "office", "grown.json", "--with-definitions"), writes="office",
             whole=("TBQDX4.office",), prepare=prepare_definitions, again=("apply", "office", "again.json",
                                                                          "--with-definitions")),
        Deed("book salvage", ("book", "salvage", "office", "saved"), changes_names=("saved",)),
    ]


def changed_lists(codes, more=(), fields=(2, 1)):
    """Lists for the office: accounts by their codes, of which 101 is account 100 renamed, and `more` that come."""
    number_of = {"100": 100, "101": 100, "110": 101, "120": 102, "130": 103, "140": 104}
    accounts = [{"number": number_of[code], "code": code} for code in codes]
    return json.dumps({
        "calendar": {"years": 5, "years_in_use": 5}, "accounts": accounts + [{"number": n, "code": str(n)} for n in more],
        "fields": [{"number": f} for f in fields],
        "values": [{"account": 100, "date": "2003-05-01", "field": 1, "value": 7.5},
                   {"account": 103, "date": "2004-05-01", "field": 2, "value": -1}]})


def prepare_definitions(place):
    place.must("definition", "add", "office", "--title", "Renamed", "--file", "a.QDX", "--map-account", "100=100",
               "--map-account", "110=110", "--map-field", "1=1")
    codes = ["101", "110", "120", "130", "140"]
    place.write("grown.json", changed_lists(codes, (200, 201), (1, 2, 3, *range(11, 19))))
    place.write("again.json", changed_lists(codes, (202, 203), (1, 2, 3, *range(21, 29))))


def looks():
    """Uses that change nothing: they tell the truth or refuse."""
    return [Deed(" ".join(arguments[:2]), arguments) for arguments in (
        ("values", "office", "--format", "csv"), ("info", "office", "--json"), ("journal", "list", "office"),
        ("definition", "list", "office"), ("definition", "show", "office", "1"), ("qdx", "info", "a.QDX"),
        ("qdx", "dump", "a.QDX"), ("qdx", "check", "a.QDX"), ("qdx", "diff", "a.QDX", "a.QDX"))]


class Workshop:
    """Furnishes a place once, copies it for each trial, and keeps what each deed gives where nothing fails."""

    def __init__(self, tallybook, folder, double=None, seed=1, furnisher=furnish):
        self.tallybook = pathlib.Path(tallybook).resolve()
        self.folder = pathlib.Path(folder).resolve()
        self.double = FaultDouble(pathlib.Path(double).resolve(), self.folder) if double else None
        self.model = Place(self.tallybook, self.folder / "model", self.double)
        self.model.folder.mkdir()
        furnisher(self.model, seed)

    def copy(self, deed=None, name="place"):
        """A fresh copy of the model, or of the model after the deed's preparation."""
        source = self.model.folder
        if deed is not None and deed.prepare is not None:
            source = self.folder / ("model of " + deed.name.replace("/", " "))
            if not source.exists():
                shutil.copytree(self.model.folder, source, symlinks=True)
                deed.prepare(Place(self.tallybook, source, self.double))
        folder = self.folder / name
        shutil.rmtree(folder, ignore_errors=True)
        shutil.copytree(source, folder, symlinks=True)
        return Place(self.tallybook, folder, self.double)

    def expectation(self, deed):
        return Expectation(self, deed)


class State:
    """What a place holds that users care for."""

    def __init__(self, place, deed):
        self.figures = {book: place.figures(book) for book in BOOKS}
        self.files = {name: place.read(name) for name in deed.whole}
        self.inputs = {name: place.read(name) for name in deed.inputs}
        self.names = place.names()


# What standard error tells of an import: that a file was not deleted or renamed, that it ended between two commits or
# could not commit its last figures, and that some files are in and others not.
KEEPS_NAME = "keeps its name"
HALF_WAY = ("ended half way", "what was not committed before is not kept")
SOME_FILES = re.compile("[,;] imported: ")


class Expectation:
    """Before, after, and the output of a deed that nothing disturbs; judges what a disturbed one has left."""

    def __init__(self, workshop, deed):
        self.deed = deed
        place = workshop.copy(deed)
        place.environment()
        self.before = State(place, deed)
        began = time.monotonic()
        self.done = place.must(*deed.arguments)
        self.seconds = time.monotonic() - began
        self.after = State(place, deed)
        if deed.writes and self.before.figures == self.after.figures:
            raise Broken(f"{deed.name}: changes no figure, so that it shows nothing")
        if deed.whole and self.before.files == self.after.files:
            raise Broken(f"{deed.name}: changes no file, so that it shows nothing")
        self.counts = {}
        if workshop.double is not None:
            place = workshop.copy(deed)
            place.environment()
            self.counts = self._count(place)

    def _count(self, place):
        done = place.run(*self.deed.arguments, fault=" ")
        if done.status != 0:
            raise Broken(f"the double disturbs a run that it is only to count: {done}")
        counts = place.double.counts()
        if counts["any"] < 3:
            raise Broken(f"the double sees nothing of {self.deed.name}: {counts}")
        return counts

    def judge(self, place, done, killed):
        """Raises Broken where the place holds anything that it may not; gives a word for what was found."""
        if not killed:
            self._judge_words(done)
            self._judge_leftovers(place, done)
        found = self._judge_figures(place, done, killed)
        self._judge_files(place, done, killed)
        if self.deed.swaps:
            self._judge_swap(place, found)
        if self.deed.atomic and found == "before":
            self._judge_inputs_from_before(place)
        self._go_on(place, done.hit.startswith(("unlink", "remove")), killed)
        return found

    def _judge_words(self, done):
        if done.status < 0:
            raise Broken(f"ended by signal {-done.status}")
        if done.status != 0 and not done.err.strip():
            raise Broken(f"status {done.status} without a word on standard error")
        if done.status not in (0, 1):
            raise Broken(f"status {done.status}, where only 0 and 1 can be")
        if done.status == 0:
            self._judge_output(done)

    def _judge_output(self, done):
        """That of a deed that nothing disturbs; but the report tells of a file that could not be renamed, too."""
        lines = done.out.splitlines()
        told = [line for line in lines if b"could not be renamed to: " not in line]
        if told != self.done.out.splitlines():
            raise Broken(f"status 0 with another output:\n{done.out[:800].decode(errors='replace')}")
        if told != lines and KEEPS_NAME not in done.err:
            raise Broken("the report alone tells of a file that could not be renamed")

    def _judge_leftovers(self, place, done):
        known = self.before.names | self.after.names if done.status != 0 or self.deed.swaps else self.after.names
        # An input that could not be renamed or deleted stays.
        left = {name for name in place.names() - known - set(self.deed.inputs) if not self._is_own(name)}
        # SQLite's log may stay where closing it was made to fail; the next open takes it in.
        left = {name for name in left if not name.endswith(("-wal", "-shm", ".tbk-lock"))}
        # So may what is only there for a moment, where taking its name away was made to fail.
        if done.hit.startswith(("unlink", "remove")):
            left = set()
        if left:
            raise Broken(f"left behind: {', '.join(sorted(left))}")

    def _is_own(self, name):
        # A book that was replaced is kept as it is, with companions of its own, where no backup of it could be made.
        if self.deed.swaps and name.endswith(".tbk-replaced"):
            return True
        return any(name == own or name.startswith((own + ".", own + "/", own + "-")) for own in self.deed.changes_names)

    def _judge_figures(self, place, done, killed):
        deed, before, after = self.deed, self.before.figures, self.after.figures
        found = {book: place.figures(book) for book in BOOKS}
        changed = [book for book in BOOKS if found[book] != before[book]]
        if not changed:
            if not killed and done.status == 0 and before != after:
                raise Broken("status 0, and the figures have not changed")
            return "before"
        if changed != [deed.writes]:
            raise Broken(f"the figures of {', '.join(changed)} have changed")
        whole = found == after
        if not whole and not deed.undoable:
            raise Broken("the figures are neither those from before nor those from after")
        if not killed and not whole and done.status == 0:
            raise Broken("status 0, and the figures are not those from after")
        if not killed and done.status != 0:
            self._judge_change_of_a_failure(done, whole)
        if whole and (deed.name.startswith("journal undo") or deed.swaps):
            return "after"
        for _ in range(5):
            if place.figures(deed.writes) == before[deed.writes]:
                break
            place.must("journal", "undo", deed.writes)
        if place.figures(deed.writes) != before[deed.writes]:
            raise Broken("the journal does not take the figures back")
        return "after, undone" if whole else "part, undone"

    def _judge_change_of_a_failure(self, done, whole):
        """The commit decides; an import with several of them says what it leaves."""
        if not self.deed.undoable:
            raise Broken(f"status {done.status}, and the figures have changed")
        if not any(words in done.err for words in HALF_WAY) and (whole or not SOME_FILES.search(done.err)):
            raise Broken(f"status {done.status}, and the figures have changed without a word")

    def _judge_swap(self, place, found):
        """The book that stands there has all its own files, and no other's."""
        of = self.before if found == "before" else self.after
        for name in self.deed.whole:
            if place.read(name) != of.files[name]:
                raise Broken(f"the book is that from {found}, and {name} is not")
        others = {name for name in place.names() if name.endswith("." + self.deed.writes)} - of.names
        if others:
            raise Broken(f"the book is that from {found}, and has files of the other: {', '.join(sorted(others))}")
        for kept in place.folder.glob(f"{self.deed.writes}.tbk-replaced*"):
            place.must("book", "check", kept.name, "--deep")

    def _judge_disposal(self, place, done):
        """What was to be deleted or renamed has been, or that is told."""
        for name, content in self.after.inputs.items():
            told = f"{name} {KEEPS_NAME}" in done.err or f"{name} is still to be " in done.err
            if content is None and place.read(name) is not None and not told:
                raise Broken(f"{name} keeps its name without a word")

    def _judge_inputs_from_before(self, place):
        for name, content in self.before.inputs.items():
            if place.read(name) != content:
                raise Broken(f"no figure of the import stays, and {name} is not as it was")

    def _judge_files(self, place, done, killed):
        for name in self.deed.whole:
            found = place.read(name)
            old, new = self.before.files[name], self.after.files[name]
            # A report that was begun tells a run that stopped, too.
            if not killed and done.status != 0 and name == "report.txt" and (found or b"").startswith(new[:20]):
                continue
            if found not in (old, new):
                raise Broken(f"{name} is neither the old file nor the new one: " +
                             ("missing" if found is None else f"{len(found)} bytes"))
            # The figures are in the book by then, so an import that cannot write its report is done, and says so; and so
            # is a change of lists that a definition cannot follow, whose old code is told.
            is_told = self.deed.writes and (f"the report {name} was not written" in done.err or (
                f"it is done, but ./{name}: " in done.err and "names what changes: " in done.err))
            if not killed and done.status == 0 and found != new and not is_told:
                raise Broken(f"status 0, and {name} is the old file")
        if not killed and done.status == 0:
            self._judge_disposal(place, done)
            return
        for name, content in self.before.inputs.items():
            # A disturbed import may have disposed of its file already, but whatever has the name is the same bytes.
            if place.read(name) not in (None, content):
                raise Broken(f"the input {name} has changed")

    def _go_on(self, place, may_leave, killed):
        """Nothing may be left that keeps the next command from working."""
        if self.deed.name.startswith("journal undo"):
            place.must("set", "office", "140", "2006-01-01", "2", "1")
        else:
            self._repeat(place, may_leave, killed)
            place.must("definition", "list", "office")

    def _repeat(self, place, may_leave, killed):
        deed = self.deed
        for name in deed.changes_names:
            self._remove_whole_book(place, name)
        for name, content in {**self.before.inputs, **{n: c for n, c in self.before.files.items() if "TBQDX" in n}}.items():
            if content is None:
                (place.folder / name).unlink(missing_ok=True)
            else:
                place.write(name, content)
        # The file of an import stands in the book's history by then, wholly or begun.
        done = place.must(*(deed.again or deed.arguments), *(("--again",) if deed.undoable else ()))
        if {book: place.figures(book) for book in BOOKS} != self.after.figures:
            raise Broken(f"done again, it gives other figures: {done}")
        for name in deed.whole:
            if place.read(name) != self.after.files[name]:
                raise Broken(f"done again, it gives another {name}")
        left = {name for name in place.names() - self.after.names - self.before.names if not self._is_own(name)}
        # The library that writes workbooks makes a temporary file and takes its name away at once. A kill between the two
        # leaves the name of an empty file, which nobody can tell from another program's.
        if killed:
            left = {name for name in left if not (re.fullmatch(r"tmp\.\w+", name) and place.read(name) == b"")}
            # The same is so of the database, and of the folder of a copy that is read before there is a copy.
            left = {name for name in left if not name.startswith(".tmp/etilqs_") and not (
                name.startswith(".tmp/tallybook-look-") and (place.folder / name).is_dir() and
                not any((place.folder / name).iterdir()))}
        if left and not may_leave:
            raise Broken(f"left behind once it was done again: {', '.join(sorted(left))}")
        self._judge_backups(place)

    def _judge_backups(self, place):
        """A copy of a book that was brought to a later format is whole, or is not there."""
        for backup in place.folder.glob("*.tbk-v[0-9]*"):
            book = backup.name.partition(".tbk")[0]
            shutil.copy(backup, place.folder / "backup.tbk")
            if place.figures("backup") != self.before.figures[book]:
                raise Broken(f"{backup.name} is not the book from before")

    @staticmethod
    def _remove_whole_book(place, name):
        """What `new` or `demo` left under its name is a whole book, and makes room for the next."""
        path = place.folder / f"{name}.tbk"
        if path.exists():
            place.figures(name)
            path.unlink()
        for companion in (*place.folder.glob(f"TBQD*.{name}"), *place.folder.glob(f"{name}.ini")):
            companion.unlink()
        shutil.rmtree(place.folder / name, ignore_errors=True)


def run_trials(trials, without=()):
    """Does the trials, pairs of a text that tells how to repeat one and a function; ends in failure where one failed."""
    counts, failures = {}, []
    for part in without:
        print(f"LEFT OUT for now: {part}")
    for text, trial in trials:
        if any(part in text for part in without):
            continue
        try:
            found = trial()
            counts[found] = counts.get(found, 0) + 1
        except (Broken, subprocess.TimeoutExpired) as broken:
            failures.append(text)
            print(f"FAILED  {text}\n        {broken}", flush=True)
    print(f"{sum(counts.values()) + len(failures)} trials: " +
          ", ".join(f"{count} {found}" for found, count in sorted(counts.items(), key=str)) +
          f"; {len(failures)} failed")
    if failures:
        raise SystemExit(1)
    if not counts:
        raise SystemExit("nothing was tried: the test has shown nothing")


class Skips:
    """What cannot be tried where the tests run is named; where nothing may be left out, that is a failure."""

    def __init__(self):
        self.names = []

    def add(self, name, reason):
        self.names.append(name)
        print(f"SKIPPED {name}: {reason}", flush=True)

    def close(self):
        if self.names and os.environ.get("CI") == "true":
            raise SystemExit(f"skipped, and here nothing may be: {', '.join(self.names)}")


def becoming(user):
    """What a child does to go on as an unprivileged user."""
    def become():
        os.setgroups([])
        os.setgid(user)
        os.setuid(user)
    return become


def give(folder, user):
    """Hands a folder and all in it to a user."""
    for path in [folder, *folder.rglob("*")]:
        os.chown(path, user, user, follow_symlinks=False)


def arguments_of(description, double=True, **more):
    parser = argparse.ArgumentParser(description=description)
    parser.add_argument("tallybook")
    if double:
        parser.add_argument("double", help="the library that fails calls")
    parser.add_argument("--seed", type=int, default=1, help="what chance is taken from")
    parser.add_argument("--share", type=float, default=1.0, help="which part of the trials is done: 0.1 a fixed tenth")
    parser.add_argument("--only", default="", help="just the trials whose text holds this")
    parser.add_argument("--without", action="append", default=[], help="not the trials whose text holds this")
    for name, (default, words) in more.items():
        parser.add_argument(f"--{name}", type=type(default), default=default, help=words)
    return parser.parse_args()


@contextlib.contextmanager
def scratch():
    """A temporary folder with a name that holds no links, removed on every way out."""
    with tempfile.TemporaryDirectory(prefix="tallybook-faults-") as name:
        yield pathlib.Path(name).resolve()
