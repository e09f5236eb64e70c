#!/usr/bin/env python3
"""Books of earlier programs: what the one that wrote them did not keep, and what no figure may be any more, an infinity. It
is listed, kept, and replaced by whoever gives the figure anew.

  older_books_test.py TALLYBOOK
"""

import json
import os
import pathlib
import shutil
import sqlite3
import struct
import subprocess
import sys
import tempfile
import unittest

TALLYBOOK = str(pathlib.Path(sys.argv.pop(1)).resolve())
SAMPLES = pathlib.Path(__file__).resolve().parents[1] / "engine" / "samples"
TIMEOUT = 60

CHUNK = 7 << 24  # account 7's first; dense, from row 30 on
PLACE = 5        # its first figure: 2003-01-31, field 1


class OlderBooks(unittest.TestCase):
    def setUp(self):
        temporary = tempfile.TemporaryDirectory(prefix="tallybook-older-")
        self.addCleanup(temporary.cleanup)
        self.folder = pathlib.Path(temporary.name)
        self.env = {"PATH": "/usr/bin:/bin", "HOME": temporary.name, "LC_ALL": "C.UTF-8", "TZ": "UTC",
                    **{name: value for name, value in os.environ.items() if name.endswith("SAN_OPTIONS")}}

    def run_line(self, *words, status=0, tells=""):
        done = subprocess.run([TALLYBOOK, *words], cwd=self.folder, env=self.env, stdin=subprocess.DEVNULL, capture_output=True,
                              text=True, timeout=TIMEOUT, check=False)
        self.assertEqual(done.returncode, status, done.stdout + done.stderr)
        self.assertIn(tells, done.stderr)
        return done.stdout


class ReverseTest(OlderBooks):
    """Books from before format 4 do not tell whether an import added: what it changed is taken out, and that is said."""

    def reverse(self, version, tells):
        book = f"old{version}"
        shutil.copy(SAMPLES / f"book-v{version}.tbk", self.folder / f"{book}.tbk")
        before = self.run_line("values", book, "--format", "csv")
        entry = next(str(entry["entry"]) for entry in json.loads(self.run_line("journal", "list", book, "--json"))
                     if entry["what_ran"] == "import qdx #1")
        self.run_line("journal", "undo", book, entry, "--reverse", tells=tells and f"journal entry {entry} {tells}")
        self.assertNotEqual(self.run_line("values", book, "--format", "csv"), before)
        undo = json.loads(self.run_line("journal", "list", book, "--json"))[-1]
        self.assertEqual(undo["undoes"], int(entry))
        self.run_line("journal", "undo", book, str(undo["entry"]))
        self.assertEqual(self.run_line("values", book, "--format", "csv"), before)

    def test_is_done_and_told_of_books_that_do_not_tell_the_math(self):
        for version in (1, 2, 3):
            with self.subTest(version=version):
                self.reverse(version, "does not tell whether it added or replaced")

    def test_is_done_of_a_book_that_tells_that_it_added(self):
        self.reverse(4, "")


class HistoryTest(OlderBooks):
    def test_of_format_1_says_that_it_tells_no_changes(self):
        shutil.copy(SAMPLES / "book-v1.tbk", self.folder / "old.tbk")
        self.assertEqual(self.run_line("history", "old", "100", "2003-03-01", "1"),
                         "Nothing is known of what stood before entry 4: a book of format 1 does not tell which figures an entry "
                         "changed.\n100 2003-03-01 field 1: 84.63\n")


class InfinityTest(OlderBooks):
    def setUp(self):
        super().setUp()
        shutil.copy(SAMPLES / "book-v1.tbk", self.folder / "old.tbk")
        book = sqlite3.connect(self.folder / "old.tbk")
        (figures,) = book.execute("SELECT figures FROM chunk WHERE key = ?", (CHUNK,)).fetchone()
        self.assertEqual(figures[:5].hex(), "011e004700")
        changed = figures[:PLACE] + struct.pack("<d", float("inf")) + figures[PLACE + 8:]
        book.execute("UPDATE chunk SET figures = ? WHERE key = ?", (changed, CHUNK))
        book.commit()
        book.close()
        figures = self.run_line("values", "old", "--format", "csv", "--from", "2003-01-31", "--to", "2003-01-31").splitlines()
        self.code = next(row.split(",")[1] for row in figures if row.startswith("7,"))

    def figure(self):
        """The figure as CSV has it."""
        rows = self.run_line("values", "old", "--format", "csv", "--account", self.code, "--field", "1", "--from", "2003-01-31",
                             "--to", "2003-01-31").splitlines()[1:]
        self.assertEqual(len(rows), 1, rows)
        return rows[0].split(",")[-1]

    def test_is_listed_where_a_form_has_words_for_it(self):
        self.assertEqual(self.figure(), "inf")
        self.assertRegex(self.run_line("values", "old", "--account", self.code, "--field", "1", "--to", "2003-01-31"), r" inf\n")
        self.run_line("values", "old", "--json", status=1, tells="JSON has no form for the value inf of account number 7 on 2003-01-31, field 1")
        self.run_line("book", "check", "old", "--deep")

    def test_stays_when_others_are_changed(self):
        self.run_line("set", "old", self.code, "2003-01-31", "2", "4.5")
        self.run_line("set", "old", self.code, "2003-02-01", "1", "4.5")
        self.assertEqual(self.figure(), "inf")
        self.run_line("book", "check", "old", "--deep")

    def test_is_replaced_by_set_and_comes_back_by_undo(self):
        self.assertIn(": inf becomes 12.5", self.run_line("set", "old", self.code, "2003-01-31", "1", "12.5"))
        self.assertEqual(self.figure(), "12.5")
        self.run_line("journal", "undo", "old")
        self.assertEqual(self.figure(), "inf")

    def test_is_replaced_by_an_import_that_replaces(self):
        (self.folder / "a.csv").write_text(f"1,31,2003,3,1\n{self.code},1,12.5\n", encoding="ascii")
        self.run_line("import", "csv", "old", "a.csv", "--yes", tells="Imported a.csv: 1 record")
        self.assertEqual(self.figure(), "12.5")

    def test_takes_no_figure_that_an_import_adds(self):
        (self.folder / "a.csv").write_text(f"1,31,2003,1,1\n{self.code},1,12.5\n", encoding="ascii")
        self.run_line("import", "csv", "old", "a.csv", "--yes", status=1, tells="error 6: number too large")
        self.assertEqual(self.figure(), "inf")


if __name__ == "__main__":
    unittest.main(verbosity=2)
