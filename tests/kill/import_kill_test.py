#!/usr/bin/env python3
"""Kills `tallybook import qdx` at random moments: the book opens again, and the journal restores exactly what it held.

  import_kill_test.py TALLYBOOK [--kills N] [--seed N]

Each round kills one import of some 200,000 figures. Whatever it left, the figures must be those from before once the
journal entry, if there is one by then, is undone. Some rounds change the book in between, so that "before" moves on.
"""

import argparse
import json
import pathlib
import random
import signal
import subprocess
import sys
import tempfile
import time

ACCOUNTS, FIELDS, DAYS = 100, 6, 365
TIMEOUT = 120
MIN_HITS = 10  # kills within an open journal entry, which are what the test is about
MAX_KILLS = 200


class Book:
    def __init__(self, tallybook, folder):
        self.tallybook = tallybook
        self.folder = folder
        self.env = {"PATH": "/usr/bin:/bin", "HOME": str(folder), "TZ": "UTC"}
        # A cache that is too small for the book, so that an import commits on its way and its entry is open meanwhile.
        settings = folder / ".config" / "tallybook" / "tallybook.ini"
        settings.parent.mkdir(parents=True)
        settings.write_text("[Files]\nCacheMiB=1\n", encoding="ascii")

    def start(self, *arguments):
        return subprocess.Popen([self.tallybook, *arguments], cwd=self.folder, env=self.env, stdin=subprocess.DEVNULL,
                                stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)

    def run(self, *arguments):
        done = subprocess.run([self.tallybook, *arguments], cwd=self.folder, env=self.env, stdin=subprocess.DEVNULL,
                              capture_output=True, text=True, timeout=TIMEOUT, check=False)
        if done.returncode != 0:
            raise AssertionError(f"{arguments}: status {done.returncode}\n{done.stdout}{done.stderr}")
        return done.stdout

    def figures(self):
        return self.run("values", "book", "--format", "csv")

    def last_entry(self):
        """Number and state of the newest journal entry; None where there is none."""
        lines = self.run("journal", "list", "book").splitlines()[1:]
        if not lines:
            return None
        state = "open" if "not finished" in lines[-1] else "undone" if "undone" in lines[-1] else "done"
        return int(lines[-1].split()[0]), state


def make_book(book, seed):
    """A book of some 200,000 figures, and an exchange file with as many other ones."""
    figures = random.Random(seed)
    days = [f"2003-{month:02}-{day:02}" for month, length in
            enumerate((31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31), 1) for day in range(1, length + 1)]
    assert len(days) == DAYS

    def description(share):
        return {
            "system_name": "Kill", "data_level": "day",
            "calendar": {"kind": "months", "first_date": "2003-01-01", "years": 1},
            "accounts": [{"number": a, "code": f"{a:04}"} for a in range(1, ACCOUNTS + 1)],
            "fields": [{"number": f, "description": f"Field {f}"} for f in range(1, FIELDS + 1)],
            "values": [{"account": a, "date": day, "field": f, "value": round(figures.uniform(-999, 999), 2)}
                       for a in range(1, ACCOUNTS + 1) for day in days for f in range(1, FIELDS + 1)
                       if figures.random() < share],
        }

    for name, share in (("book", 0.92), ("sender", 0.92)):
        (book.folder / f"{name}.json").write_text(json.dumps(description(share)), encoding="utf-8")
        book.run("new", name, "--from", f"{name}.json")
    book.run("export", "qdx", "sender", "year.QDX", "--from", "2003-01-01", "--to", "2003-12-31")
    book.run("definition", "add", "book", "--title", "Year", "--file", "year.QDX", "--after", "keep")


def time_of_import(book):
    began = time.monotonic()
    book.run("import", "qdx", "book", "--definition", "1", "--math", "replace")
    took = time.monotonic() - began
    book.run("journal", "undo", "book")
    return took


def kill_round(book, delay, math, before):
    """Kills one import and gives what state its journal entry was in: None, "open" or "done"."""
    known = book.last_entry()
    process = book.start("import", "qdx", "book", "--definition", "1", "--math", math, "--again")
    time.sleep(delay)
    process.send_signal(signal.SIGKILL)
    process.wait(TIMEOUT)
    entry = book.last_entry()
    state = None if entry == known else entry[1]
    after = book.figures()
    if state is None and after != before:
        raise AssertionError("the figures changed without a journal entry")
    if state is not None:
        book.run("journal", "undo", "book")
        if book.figures() != before:
            raise AssertionError(f"the undo of a {state} entry did not restore the figures")
    return state


def main():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("tallybook")
    parser.add_argument("--kills", type=int, default=60)
    parser.add_argument("--seed", type=int, default=random.SystemRandom().randrange(1 << 32))
    arguments = parser.parse_args()
    print(f"seed {arguments.seed}")
    chance = random.Random(arguments.seed)
    with tempfile.TemporaryDirectory(prefix="tallybook-kill-") as name:
        book = Book(str(pathlib.Path(arguments.tallybook).resolve()), pathlib.Path(name))
        make_book(book, arguments.seed)
        latest = time_of_import(book)
        before = book.figures()
        if before.count("\n") < ACCOUNTS * FIELDS * DAYS * 0.9:
            raise AssertionError("the book holds fewer figures than it should")
        states = []
        while len(states) < arguments.kills or (states.count("open") < MIN_HITS and len(states) < MAX_KILLS):
            if len(states) % 10 == 9:
                book.run("set", "book", "0001", "2003-06-15", "1", str(len(states)))
                before = book.figures()
            states.append(kill_round(book, chance.uniform(0.2, 1) * latest, chance.choice(["add", "replace", "zero"]),
                                     before))
            # The machine's pace changes; the moments stay spread over an import's time.
            latest *= {None: 1.1, "open": 1.0, "done": 0.93}[states[-1]]
        counts = {state: states.count(state) for state in (None, "open", "done")}
        print(f"{len(states)} kills: before the journal entry {counts[None]}, within it {counts['open']}, "
              f"behind it {counts['done']}; the last moments within {latest:.3f} s")
        if counts["open"] < MIN_HITS:
            raise AssertionError("too few kills hit an import at work: the test has shown nothing")


if __name__ == "__main__":
    sys.exit(main())
