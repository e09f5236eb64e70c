#!/usr/bin/env python3
"""A record that cannot be read stops an import at once: the book opens again, and the journal restores what it held.

  import_stop_test.py TALLYBOOK

The files pass every check before their first figure; behind figures that have been written already stands a date that
the book does not hold. The process ends there, without closing its book; it tells the reason, and writes the report.
"""

import json
import pathlib
import struct
import subprocess
import sys
import tempfile

sys.dont_write_bytecode = True
from import_kill_test import TIMEOUT, Book  # pylint: disable=wrong-import-position

DAYS = range(1, 29)


def make_book(book):
    description = {
        "system_name": "Stop", "data_level": "day",
        "calendar": {"kind": "months", "first_date": "2003-01-01", "years": 1},
        "accounts": [{"number": 7, "code": "100"}, {"number": 9, "code": "200"}],
        "fields": [{"number": 1, "description": "Sales"}],
        "values": [{"account": account, "date": f"2003-02-{day:02}", "field": 1, "value": account + day / 100}
                   for account in (7, 9) for day in DAYS],
    }
    (book.folder / "book.json").write_text(json.dumps(description), encoding="utf-8")
    book.run("new", "book", "--from", "book.json")


def put_exchange_file(book):
    """The book's own figures, the last of them on a date of another century."""
    book.run("export", "qdx", "book", "bad.QDX", "--from", "2003-02-01", "--to", "2003-02-28")
    content = bytearray((book.folder / "bad.QDX").read_bytes())
    last_record = len(content) - 4 * 2 - 3 * 2 - (3 * 2 + 2 + 2 + 8)
    assert struct.unpack_from("<4h", content, last_record) == (2, 28, 2003, 1)
    struct.pack_into("<h", content, last_record + 4, 1903)
    (book.folder / "bad.QDX").write_bytes(content)
    book.run("definition", "add", "book", "--title", "Bad", "--file", "bad.QDX", "--after", "delete")


def put_delimited_file(book):
    """A comment in the first column is no line of the audit, and a record without a date of the second pass."""
    lines = [f"2,{day},2003,{code},1,5\r" for code in ("100", "200") for day in DAYS]
    (book.folder / "bad.txt").write_text("".join(lines) + ";the end\r", encoding="ascii", newline="")


def stops(book, told, report, *arguments):
    """Runs a command that is to stop, with `told` at the end of standard error; undone, the book is as it was."""
    before = book.figures()
    known = book.last_entry()
    done = subprocess.run([book.tallybook, *arguments], cwd=book.folder, env=book.env, stdin=subprocess.DEVNULL,
                          capture_output=True, text=True, timeout=TIMEOUT, check=False)
    if done.returncode != 1 or not done.stderr.endswith(f"tallybook: {told}\n"):
        raise AssertionError(f"{arguments}: was to stop and tell why, and ended with {done}")
    if report != (done.stdout.startswith("QDX Import Report\n") and done.stdout.endswith(f"Stopped: {told}\n")):
        raise AssertionError(f"{arguments}: the report is not as it was to be: {done.stdout}")
    entry = book.last_entry()
    if entry != known:
        if entry[1] != "open":
            raise AssertionError(f"{arguments}: the entry of a run that stopped is {entry[1]}")
        book.run("journal", "undo", "book")
    if book.figures() != before:
        raise AssertionError(f"{arguments}: the figures are not those from before")
    print(f"stopped, {'undone' if entry != known else 'nothing kept'}: {' '.join(arguments)}")


def main():
    with tempfile.TemporaryDirectory(prefix="tallybook-stop-") as folder:
        book = Book(sys.argv[1], pathlib.Path(folder))
        make_book(book)
        put_exchange_file(book)
        dates = "its dates are 2003-01-01 to 2003-12-31"
        size = (book.folder / "bad.QDX").stat().st_size
        told = (f"bad.QDX: byte {size - 26}, account 200: the database has no record of its account 9 on 1903-02-28; "
                f"{dates} (statement 204)")
        for math in ("add", "replace"):
            stops(book, told, True, "import", "qdx", "book", "--definition", "1", "--math", math)
            assert (book.folder / "bad.QDX").exists(), "a run that stopped disposes of nothing"
        put_delimited_file(book)
        told = (f"bad.txt: record {2 * len(DAYS) + 1}: the database has no record of its account 9 on 1999-11-30; "
                f"{dates} (statement 105)")
        stops(book, told, False, "import", "delimited", "book", "bad.txt", "--math", "add", "--date-parts",
              "--date-order", "MDY", "--yes")
        assert (book.folder / "bad.txt").exists(), "a run that stopped renames nothing"
        book.run("set", "book", "100", "2003-03-01", "1", "4")  # it takes changes again
        if ",2003-03-01,1,4\n" not in book.figures():
            raise AssertionError("the book does not take a change any more")


if __name__ == "__main__":
    main()
