#!/usr/bin/env python3
"""Links, devices, pipes, folders, and two processes at one book: refused by what a file is, and nothing lost.

  links_test.py TALLYBOOK DOUBLE [--share S] [--only TEXT]

Two processes meet at every call: the first is stopped before it, the second does its work or is refused, and the first
goes on. Nodes are made in a temporary folder; the machine's own are never opened.
"""

import contextlib
import fcntl
import os
import signal
import socket
import stat
import struct
import subprocess
import sys

sys.dont_write_bytecode = True
from trial import (TABLES, TIMEOUT, Broken, Deed, Done, Skips, Workshop, arguments_of,  # pylint: disable=wrong-import-position
                   run_trials, scratch)

RANGE = ("--from", "2003-01-01", "--to", "2003-06-30", "--yes")
SET = ("100", "2003-12-24", "1", "12.25")
IMPORT = ("--definition", "1", "--yes")
LOOK_TIMEOUT = 20
PATIENCE = 5  # seconds for a command beside one that stands still
KINDS = {"pipe": "pipe", "socket": "socket", "folder": "folder", "null": "device", "zero": "device"}


def exports(file):
    """Every command that writes a file of the user's, writing this one."""
    yield "export qdx", ("export", "qdx", "north", file, *RANGE)
    for kind in TABLES:
        yield f"export {kind}", ("export", "table", "north", file, "--type", kind, *RANGE)
    yield "report", ("import", "qdx", "office", *IMPORT, "--report", file)
    yield "messages", ("import", "qdx", "office", *IMPORT, "--messages", file)
    yield "backup", ("book", "backup", "north", file, "--replace")


def inputs(file):
    """Every command that reads a file of the user's, reading this one."""
    yield "import csv", ("import", "csv", "office", file, "--yes")
    yield "import delimited", ("import", "delimited", "office", file, "--math", "add", "--date-order", "DMY", "--yes")
    yield "new", ("new", "fresh", "--from", file)
    for verb in ("info", "dump", "check"):
        yield f"qdx {verb}", ("qdx", verb, file)
    yield "qdx diff", ("qdx", "diff", file, "a.QDX")
    yield "qdx diff with", ("qdx", "diff", "a.QDX", file)


def books(file):
    """Every command that opens a book, opening this one."""
    yield "values", ("values", file)
    yield "set", ("set", file, *SET)
    yield "import", ("import", "csv", file, "figures.csv", "--yes")
    yield "export", ("export", "qdx", file, "new.QDX", *RANGE)
    yield "journal", ("journal", "list", file)
    yield "backup", ("book", "backup", file, "kept")
    yield "compact", ("book", "compact", file)
    yield "restore", ("book", "restore", "safe", file, "--replace")
    yield "salvage", ("book", "salvage", file, "saved")


def contents(place):
    """Bytes of files, targets of links, kinds of nodes. The empty lock files may come and stay."""
    found = {}
    for path in place.folder.rglob("*"):
        name = str(path.relative_to(place.folder))
        if name.startswith(".home") or name.endswith(".tbk-lock"):
            continue
        mode = path.lstat().st_mode
        what = os.readlink(path) if stat.S_ISLNK(mode) else path.read_bytes() if stat.S_ISREG(mode) else b""
        found[name] = (stat.S_IFMT(mode), what)
    return found


def refuses(place, arguments, tells=""):
    """The command is to be refused for a reason, soon, and to leave every file and name as it was."""
    before = contents(place)
    try:
        done = place.run(*arguments, timeout=LOOK_TIMEOUT)
    except subprocess.TimeoutExpired:
        raise Broken(f"does not end: {' '.join(arguments)}") from None
    if done.status not in (1, 2) or not done.err.strip():
        raise Broken(f"was to be refused with a reason: {done}")
    if tells not in done.err:
        raise Broken(f"was to tell '{tells}': {done}")
    after = contents(place)
    if before != after:
        different = sorted(name for name in before.keys() | after.keys() if before.get(name) != after.get(name))
        raise Broken(f"has changed {', '.join(different)}: {done}")


# --- Outputs upon what must not be lost -------------------------------------------------------------------------------

def precious(place):
    """Names that lead to what no output may go onto, by the words for it."""
    place.write("office.tbk-lock", b"")
    place.write("damaged.tbk", place.read("north.tbk")[:5000] + bytes(3000))
    place.write("book.dat", place.read("north.tbk"))
    os.symlink("office.tbk", place.folder / "link.QDX")
    os.symlink(place.folder / "link.QDX", place.folder / "link2.csv")
    os.symlink("TBQDX1.office", place.folder / "link.def")
    os.link(place.folder / "old.tbk", place.folder / "hard.csv")
    return {"another book": "office.tbk", "its own book": "north.tbk",
            "a book by its path": str(place.folder / "north.tbk"), "a damaged book": "damaged.tbk", "a book of any name": "book.dat", "a link to a book": "link.QDX",
            "a link to a link": "link2.csv", "a hard link to a book": "hard.csv",
            "a companion": "office.tbk-lock", "a definition": "TBQDX1.office", "a link to a definition":
            "link.def"}


def outputs_refused(workshop, what):
    place = workshop.copy()
    file = precious(place)[what]
    for _, arguments in exports(file):
        refuses(place, arguments)
    return "refused"


def input_as_output_refused(workshop):
    place = workshop.copy()
    for option in ("--report", "--messages"):
        refuses(place, ("import", "qdx", "office", *IMPORT, option, "a.QDX"))
    refuses(place, ("import", "csv", "office", "figures.csv", "--yes", "--messages", "figures.csv"))
    refuses(place, ("import", "delimited", "office", "lines.txt", "--math", "add", "--yes", "--messages",
                    "./lines.txt"))
    refuses(place, ("import", "qdx", "office", *IMPORT, "--report", "x.txt", "--messages", "x.txt"))
    return "refused"


# --- Nodes ------------------------------------------------------------------------------------------------------------

def make_node(place, kind, skips):
    """A node of the kind, and a link to it; false where none can be made."""
    path = place.folder / f"{kind}.txt"
    try:
        if kind == "pipe":
            os.mkfifo(path)
        elif kind == "socket":
            with socket.socket(socket.AF_UNIX) as listener:
                # A socket's path may not be long, so it is made by its name alone.
                here = os.getcwd()
                os.chdir(place.folder)
                listener.bind(path.name)
                os.chdir(here)
        elif kind == "folder":
            path.mkdir()
        else:
            os.mknod(path, 0o666 | stat.S_IFCHR, os.makedev(1, {"null": 3, "zero": 5}[kind]))
    except PermissionError as refused:
        skips.add(f"a node of the kind {kind}", str(refused))
        return False
    os.symlink(path.name, place.folder / "link.txt")
    return True


def node_refused(workshop, skips, kind, commands, tells):
    place = workshop.copy()
    if not make_node(place, kind, skips):
        return "skipped"
    for name in (f"{kind}.txt", "link.txt"):
        for _, arguments in commands(name):
            refuses(place, arguments, tells)
    return "refused"


def node_behind_a_definition_refused(workshop, skips, kind):
    for name in (f"{kind}.txt", "link.txt"):
        place = workshop.copy()
        place.must("definition", "edit", "office", "1", "--file", name, "--yes")
        if not make_node(place, kind, skips):
            return "skipped"
        refuses(place, ("import", "qdx", "office", *IMPORT))
        done = place.run("definition", "edit", "office", "1", "--file", name, "--yes", timeout=LOOK_TIMEOUT)
        if done.status not in (0, 1):
            raise Broken(f"neither done nor refused: {done}")
    return "refused"


def node_as_definition_refused(workshop, skips, kind):
    place = workshop.copy()
    if not make_node(place, kind, skips):
        return "skipped"
    (place.folder / "TBQDX2.office").unlink()
    os.rename(place.folder / f"{kind}.txt", place.folder / "TBQDX2.office")
    (place.folder / "link.txt").unlink()
    refuses(place, ("import", "qdx", "office", "--definition", "2", "--yes"))
    refuses(place, ("definition", "edit", "office", "2", "--title", "New", "--yes"))
    return "refused"


# --- Links ------------------------------------------------------------------------------------------------------------

def a_book_through_a_link_is_the_book(workshop):
    place = workshop.copy()
    (place.folder / "elsewhere").mkdir()
    os.symlink("../office.tbk", place.folder / "elsewhere/linked.tbk")
    if place.figures("elsewhere/linked") != place.figures("office"):
        raise Broken("the figures are not the book's")
    place.must("set", "elsewhere/linked", *SET)
    if b",2003-12-24,1,12.25\n" not in place.figures("office"):
        raise Broken("the figure is not in the book")
    if place.must("definition", "list", "elsewhere/linked").out != place.must("definition", "list", "office").out:
        raise Broken("the definitions are not the book's")
    found = sorted(path.name for path in (place.folder / "elsewhere").iterdir())
    if found != ["linked.tbk"]:
        raise Broken(f"stands beside the link: {found}")


def a_book_with_two_names_is_refused(workshop):
    place = workshop.copy()
    os.link(place.folder / "office.tbk", place.folder / "second.tbk")
    for file in ("office", "second"):
        for _, arguments in books(file):
            refuses(place, arguments, "link")


def links_that_lead_nowhere_are_refused(workshop):
    place = workshop.copy()
    os.symlink("loop.tbk", place.folder / "loop.tbk")
    os.symlink("gone", place.folder / "dangling.tbk")
    for file in ("loop.tbk", "dangling.tbk"):
        for commands in (books, inputs):
            for _, arguments in commands(file):
                refuses(place, arguments)
    for _, arguments in exports("loop.tbk"):
        refuses(place, arguments)
    refuses(place, ("new", "loop.tbk", "--from", "fresh.json"))


def an_export_through_a_link_replaces_what_it_leads_to(workshop):
    place = workshop.copy()
    (place.folder / "far").mkdir()
    for name in ("out.QDX", "out.csv"):
        os.rename(place.folder / name, place.folder / "far" / name)
        os.symlink(f"far/{name}", place.folder / name)
    place.must("export", "qdx", "north", "out.QDX", *RANGE)
    place.must("export", "table", "north", "out.csv", "--type", "CSV", *RANGE)
    other = workshop.copy(name="other")
    other.must("export", "qdx", "north", "out.QDX", *RANGE)
    other.must("export", "table", "north", "out.csv", "--type", "CSV", *RANGE)
    for name in ("out.QDX", "out.csv"):
        if not (place.folder / name).is_symlink():
            raise Broken(f"{name} is no link any more")
        if place.read(f"far/{name}") != other.read(name):
            raise Broken(f"far/{name} is not the new file")


# --- Files in use -----------------------------------------------------------------------------------------------------

def held(path):
    """Holds a file as another program of the system does that lets nobody else in."""
    file = os.open(path, os.O_RDWR)
    at = (1 << 63) - 1 - 16
    for statement in range(4):
        lock = struct.pack("hhqqi4x", fcntl.F_RDLCK, os.SEEK_SET, at + statement, 1, 0)
        fcntl.fcntl(file, 37, lock)  # F_OFD_SETLK
    return file


def files_that_others_hold_are_refused(workshop):
    place = workshop.copy()
    open_files = [held(place.folder / name) for name in ("TBQDX2.office", "out.QDX", "lines.txt", "out.csv")]
    try:
        refuses(place, ("import", "qdx", "office", "--definition", "2", "--yes"), "2")
        refuses(place, ("import", "qdx", "office", "--all", "--yes"), "2")
        refuses(place, ("definition", "edit", "office", "2", "--title", "New", "--yes"), "2")
        refuses(place, ("export", "qdx", "north", "out.QDX", *RANGE), "out.QDX")
        refuses(place, ("export", "table", "north", "out.csv", "--type", "CSV", *RANGE), "out.csv")
    finally:
        for file in open_files:
            os.close(file)
    place.must("definition", "show", "office", "2")


# --- Two processes ----------------------------------------------------------------------------------------------------

FIRST = ("import", "csv", "{book}", "figures.csv", "--yes")
SECONDS = (("set", "{book}", *SET), ("import", "csv", "{book}", "figures.csv", "--yes"), ("values", "{book}", "--format",
                                                                                      "csv"))


def stop_at(place, arguments, call):
    """Starts a command that is stopped before its call of that number; it has ended where it makes fewer."""
    process = place.start(*arguments, fault=f"any {call} 0 stop")
    os.waitid(os.P_PID, process.pid, os.WSTOPPED | os.WEXITED | os.WNOWAIT)
    return process


def start_beside(place, arguments, first):
    """Starts a second command and lets the first go on once the second has ended, or waits for it."""
    second = place.start(*arguments)
    with contextlib.suppress(subprocess.TimeoutExpired):
        second.wait(PATIENCE)  # it prints less than a pipe holds
    first.send_signal(signal.SIGCONT)
    return second


def ended(arguments, process):
    out, err = process.communicate(timeout=TIMEOUT)
    return Done(arguments, process.returncode, out, err.decode(errors="replace"))


def two_at_once(workshop, figures, call, second, names):
    """The first is stopped before a call, the second does its work, the first goes on: each says done or why not."""
    place = workshop.copy()
    os.symlink("office.tbk", place.folder / "linked.tbk")
    first = stop_at(place, [word.format(book=names[0]) for word in FIRST], call)
    other = ended(second, start_beside(place, [word.format(book=names[1]) for word in second], first))
    done = ended(FIRST, first)
    for one in (done, other):
        if one.status not in (0, 1) or (one.status == 1 and not one.err.strip()):
            raise Broken(f"neither done nor refused with a reason: {one}")
        if "constraint" in one.err or "database is locked" in one.err:
            raise Broken(f"words of the library: {one}")
    found = place.figures("office")
    changes = [done.status == 0] + ([other.status == 0] if second[0] != "values" else [])
    if found != figures(changes):
        raise Broken(f"what was said to be done is not there, or more is:\n{done}\n{other}")
    if second[0] == "values" and other.status == 0 and other.out not in (figures([False]), figures([True])):
        raise Broken(f"shows figures between two states: {other}")
    return f"{'done' if done.status == 0 else 'refused'} and {'done' if other.status == 0 else 'refused'}"


def two_processes(workshop, share):
    """Trials of two processes at once, by pairs of commands, names of the book and moments."""
    calls = workshop.expectation(Deed("import csv", tuple(word.format(book="office") for word in FIRST),
                                      writes="office", undoable=True)).counts["any"]
    for second in SECONDS:
        known = {}

        def figures(changes, second=second, known=known):
            if tuple(changes) not in known:
                place = workshop.copy(name="other")
                for arguments, done in zip((FIRST, second), changes):
                    if done:
                        place.must(*[word.format(book="office") for word in arguments])
                known[tuple(changes)] = place.figures("office")
            return known[tuple(changes)]

        for names in (("office", "office"), ("linked", "office"), ("office", "linked")):
            for call in range(1, calls + 1, round(1 / share)):
                text = f"import csv {names[0]} stopped at call {call}, {second[0]} {names[1]}"
                yield text, lambda f=figures, c=call, s=second, n=names: two_at_once(workshop, f, c, s, n)


def two_new_at_once(workshop, call):
    """Two make a book of one name: one has it, the other is told, and the book is whole."""
    place = workshop.copy()
    wanted = workshop.copy(name="other")
    wanted.must("new", "fresh", "--from", "fresh.json")
    arguments = ("new", "fresh", "--from", "fresh.json")
    first = stop_at(place, arguments, call)
    other = ended(arguments, start_beside(place, arguments, first))
    done = ended(arguments, first)
    if sorted((done.status, other.status)) != [0, 1]:
        raise Broken(f"one was to succeed: {done}\n{other}")
    if place.figures("fresh") != wanted.figures("fresh"):
        raise Broken("the book is not whole")
    left = {name for name in place.names() - wanted.names() if not name.endswith("-lock")}
    if left:
        raise Broken(f"left behind: {left}")
    return "one of two"


def trials(workshop, skips, share):
    for what in precious(workshop.copy()):
        yield f"output onto {what}", lambda w=what: outputs_refused(workshop, w)
    yield "output onto the input", lambda: input_as_output_refused(workshop)
    for kind, word in KINDS.items():
        for name, commands in (("input", inputs), ("output", exports), ("book", books)):
            if (kind, name) == ("folder", "book"):
                word = ""
            yield f"{kind} as {name}", lambda k=kind, c=commands, w=word: node_refused(workshop, skips, k, c, w)
        if kind != "folder":  # the search passes folders over
            yield f"{kind} behind a definition", lambda k=kind: node_behind_a_definition_refused(workshop, skips, k)
            yield f"{kind} as a definition", lambda k=kind: node_as_definition_refused(workshop, skips, k)
    for case in (a_book_through_a_link_is_the_book, a_book_with_two_names_is_refused,
                 links_that_lead_nowhere_are_refused, an_export_through_a_link_replaces_what_it_leads_to,
                 files_that_others_hold_are_refused):
        yield case.__name__.replace("_", " "), lambda c=case: c(workshop) or "held"
    yield from two_processes(workshop, share)
    calls = workshop.expectation(Deed("new", ("new", "fresh", "--from", "fresh.json"))).counts["any"]
    for call in range(1, calls, round(1 / share)):
        yield f"two new at call {call}", lambda c=call: two_new_at_once(workshop, c)


def main():
    arguments = arguments_of(__doc__.splitlines()[0])
    skips = Skips()
    with scratch() as folder:
        workshop = Workshop(arguments.tallybook, folder, arguments.double)
        run_trials(((text, trial) for text, trial in trials(workshop, skips, arguments.share) if arguments.only in text),
                   arguments.without)
    skips.close()


if __name__ == "__main__":
    main()
