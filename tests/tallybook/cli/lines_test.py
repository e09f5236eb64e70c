#!/usr/bin/env python3
"""No name can reach the terminal as anything but text: folders, books, accounts, fields, definitions and exchange files
whose names hold an escape sequence, a line break and characters that turn text round go through every command.

  lines_test.py TALLYBOOK

Standard output and standard error must hold no control character but line ends, and no line that begins with what
stands behind a name's line break. Output for programs (CSV and JSON) keeps names as they are and is not looked at.
"""

import contextlib
import json
import os
import pathlib
import pty
import re
import shutil
import sqlite3
import subprocess
import sys
import tempfile
import unittest

TALLYBOOK = str(pathlib.Path(sys.argv.pop(1)).resolve())
SAMPLES = pathlib.Path(__file__).resolve().parents[1] / "engine" / "samples"
TIMEOUT = 60

FORGED = "tallybook: FORGED"
NAME = f"x\x1b[2J\n{FORGED}\u202e\x9b"  # for what takes any text
SHORT = "7\x1b\nFORG"  # for an account's code
IN_FILE = f"x\x1b[2J\n{FORGED}\x8d"  # for exchange files, which refuse what Windows-1252 lacks
PLAIN_FILE = "y\x1b[2J\x8d"  # for definitions, which refuse a line break, too

# What the command itself draws: bold, bold red, and the end of both; a line taken away.
DRAWN = re.compile(r"\x1b\[(1|1;31|0)m|\r\x1b\[K|\r(?=\n)")
UNREADABLE = re.compile("[\x00-\x09\x0b-\x1f\x7f-\x9f\u200e\u200f\u2028-\u202e\u2066-\u2069]")


def book(level="day", name=NAME, code=SHORT, values=True):
    return {
        "system_name": name, "type_name": name, "data_level": level,
        "calendar": {"kind": "months", "first_date": "2003-01-01", "years": 2},
        "accounts": [{"number": 1, "code": code, "description": name}, {"number": 2, "code": "200"}],
        "fields": [{"number": 1, "description": name}, {"number": 3, "description": "kept", "system": True}],
        "values": [{"account": 1, "date": "2003-01-05", "field": 1, "value": 2.5}] if values else [],
    }


class LinesTest(unittest.TestCase):
    tried = set()  # commands, "import qdx"

    def setUp(self):
        temporary = tempfile.TemporaryDirectory(prefix="tallybook-lines-")
        self.addCleanup(temporary.cleanup)
        self.root = pathlib.Path(temporary.name)
        self.folder = self.root / NAME
        self.folder.mkdir()
        self.env = {"PATH": "/usr/bin:/bin", "HOME": str(self.root / "home"), "LC_ALL": "C.UTF-8", "TZ": "UTC", "TERM": "xterm",
                    **{name: value for name, value in os.environ.items() if name.endswith("SAN_OPTIONS")}}

    # --- What the tests are written in

    def judge(self, words, shown):
        text = DRAWN.sub("", shown.decode("utf-8"))
        self.assertIsNone(UNREADABLE.search(text), f"{words}: {text!r}")
        for line in text.splitlines():
            self.assertFalse(line.startswith(("FORG", FORGED)), f"{words}: {text!r}")
        return text

    def note(self, words):
        names = [word for word in words if re.fullmatch("[a-z]+", word)]
        for count in (1, 2):
            self.tried.add(" ".join(names[:count]))

    def run_line(self, *words, status=0, typed=b"", tells=""):
        """Both streams of a command, judged; `tells` is what standard error must hold."""
        self.note(words)
        done = subprocess.run([TALLYBOOK, *words], cwd=self.root, env=self.env, input=typed, capture_output=True,
                              timeout=TIMEOUT, check=False)
        printed, told = self.judge(words, done.stdout), self.judge(words, done.stderr)
        self.assertEqual(done.returncode, status, f"{words}: {printed}{told}")
        self.assertIn(tells, told, words)
        return printed + told

    def on_terminal(self, *words, typed="", status=0):
        self.note(words)
        master, slave = pty.openpty()
        process = subprocess.Popen([TALLYBOOK, *words], cwd=self.folder, env=self.env, stdin=slave, stdout=slave, stderr=slave)
        os.close(slave)
        os.write(master, typed.encode())
        shown = b""
        with contextlib.suppress(OSError):  # the other end has closed
            while block := os.read(master, 65536):
                shown += block
        os.close(master)
        self.assertEqual(process.wait(TIMEOUT), status, shown)
        return self.judge(words, shown)

    def path(self, name):
        return str(self.folder / name)

    def write(self, name, content):
        pathlib.Path(self.path(name)).write_bytes(content.encode() if isinstance(content, str) else content)
        return self.path(name)

    def make(self, file="book", **what):
        source = self.write(file + ".json", json.dumps(book(**what)))
        self.assertIn("Made ", self.run_line("new", self.path(file), "--from", source))
        return self.path(file)

    def exchange_file(self, shop, name="in.QDX"):
        self.run_line("export", "qdx", shop, self.path(name), "--from", "2003-01-01", "--to", "2003-12-31", "--yes")
        return self.path(name)

    def definition(self, shop, *more, file="in.QDX"):
        """A definition with a file beside it; its own folder is one whose name a definition can keep."""
        folder = self.root / PLAIN_FILE
        folder.mkdir(exist_ok=True)
        shutil.copy(self.path("in.QDX"), folder / file)
        return self.run_line("definition", "add", shop, "--title", PLAIN_FILE, "--file", str(folder / file), "--after", "keep",
                             *more)

    # --- Commands

    def test_books(self):
        shop = self.make()
        for words in (["info", shop], ["values", shop], ["book", "check", shop], ["journal", "list", shop],
                      ["definition", "list", shop], ["set", shop, SHORT, "2003-01-06", "1", "4"], ["journal", "list", shop],
                      ["journal", "undo", shop], ["values", shop, "--account", SHORT, "--field", "1"], ["help"],
                      ["help", "import", "qdx"]):
            self.run_line(*words)

    def test_refusals(self):
        shop = self.make()
        for words in (["new", shop, "--from", self.path("book.json")], ["new", self.path("a"), "--from", self.path("none")],
                      ["new", self.path("a"), "--from", self.write("bad.json", "{ " + NAME)],
                      ["new", self.path("a"), "--from", self.write("odd.json", json.dumps({**book(), NAME: 1}))],
                      ["info", self.path("none")], ["values", shop, "--account", NAME], ["set", shop, NAME, "2003-01-05", "1", "1"],
                      ["book", "check", self.path("none")], ["qdx", "info", self.path("none")], ["journal", "undo", shop],
                      ["qdx", "check", self.write("bad.QDX", NAME)], ["qdx", "dump", self.path("bad.QDX")],
                      ["export", "qdx", shop, shop + ".tbk", "--from", "2003-01-01", "--to", "2003-01-31"],
                      ["export", "qdx", shop, self.path("none/x.QDX"), "--from", "2003-01-01", "--to", "2003-01-31"],
                      ["demo", str(self.folder)], ["definition", "show", shop, "9"], ["definition", "delete", shop, "9"],
                      ["definition", "edit", shop, "9", "--title", "x"], ["import", "csv", shop, self.path("none"), "--yes"],
                      ["import", "delimited", shop, self.path("none"), "--math", "add", "--yes"],
                      ["import", "qdx", shop, "--definition", "9"],
                      ["definition", "add", shop, "--title", "a", "--file", self.path("a.QDX")]):
            wrong_use = 2 if words[:2] == ["definition", "add"] else 1
            self.run_line(*words, status=wrong_use, tells="tallybook: ")
        os.truncate(shop + ".tbk", 30)
        self.run_line("info", shop, status=1, tells="tallybook: ")

    def test_wrong_use(self):
        for words in ([NAME], ["values", "a", NAME], ["values", "a", "--" + NAME], ["values", "a", "--from", NAME],
                      ["values", "a", "--format", NAME], ["set", "a", "1", "2003-01-01", NAME, "1"], ["help", NAME],
                      ["set", "a", "1", "2003-01-01", "1", NAME], ["export", "table", "a", "b", "--type", NAME, "--from",
                                                                  "2003-01-01", "--to", "2003-01-31"],
                      ["definition", "add", "a", "--title", NAME, "--file", "b"],
                      ["definition", "add", "a", "--title", "t", "--file", "b", "--map-field", NAME],
                      ["definition", "add", "a", "--title", "t", "--file", "b", "--map-account", NAME],
                      ["definition", "add", "a", "--title", "t", "--file", "b", "--accounts", NAME]):
            told = self.run_line(*words, status=2, tells="tallybook: ")
            self.assertRegex(told, r"\nSee: tallybook [^\n]*--help\n$")
        self.env["SOURCE_DATE_EPOCH"] = NAME
        self.run_line("info", "a", status=2, tells="SOURCE_DATE_EPOCH is 'x\\x1b[2J\\ntallybook: FORGED\\u202e\\x9b'")

    def test_exchange_files(self):
        shop, other = self.make("shop", name=IN_FILE), self.make("other", name="Other" + IN_FILE, code="8" + SHORT)
        self.exchange_file(shop)
        self.exchange_file(other, "other.QDX")
        for words in (["qdx", "info", self.path("in.QDX")], ["qdx", "dump", self.path("in.QDX")],
                      ["qdx", "check", self.path("in.QDX")], ["qdx", "diff", self.path("in.QDX"), self.path("in.QDX")]):
            self.run_line(*words)
        self.run_line("qdx", "diff", self.path("in.QDX"), self.path("other.QDX"), status=1, tells="difference")
        whole = pathlib.Path(self.path("in.QDX")).read_bytes()
        cut = self.write("cut.QDX", whole[:-9])
        for command in ("dump", "check"):
            self.run_line("qdx", command, cut, status=1, tells="tallybook: ")

    def test_exports(self):
        shop = self.make(name=IN_FILE)
        year = ["--from", "2003-01-01", "--to", "2003-12-31"]
        self.assertIn("Wrote ", self.run_line("export", "table", shop, self.path("a.csv"), "--type", "CSV", *year))
        self.assertIn("Wrote ", self.run_line("export", "qdx", shop, self.path("a.QDX"), *year, "--yes"))
        os.chmod(self.folder, 0o500)
        if os.geteuid() != 0:
            self.run_line("export", "qdx", shop, self.path("b.QDX"), *year, status=1, tells="tallybook: ")
        os.chmod(self.folder, 0o700)
        shown = self.on_terminal("export", "table", shop, "--type", "CSV", *year, typed="*\na.csv\nn\n\n", status=3)
        for words in "Folder: ", "Do you want to replace it?", "File name":
            self.assertIn(words, shown)

    def test_imports_of_exchange_files(self):
        shop, office = self.make("shop", name=IN_FILE), self.make("office", values=False)
        self.exchange_file(shop)
        self.definition(office)
        self.run_line("qdx", "check", self.path("in.QDX"), "--book", office, "--definition", "1")
        for command in (["list", office], ["show", office, "1"], ["check", office, "1"]):
            self.run_line("definition", *command)
        self.run_line("definition", "edit", office, "1", "--title", PLAIN_FILE + "2")
        self.assertIn("Import", self.run_line("import", "qdx", office, "--definition", "1"))  # the report on standard output
        self.run_line("import", "qdx", office, "--all", "--report", self.path("report.txt"), status=1, tells="it was imported")
        self.run_line("import", "qdx", office, "--all", "--again", "--report", self.path("report.txt"))
        self.judge("report", pathlib.Path(self.path("report.txt")).read_bytes())
        self.on_terminal("import", "qdx", office, "--definition", "1", typed="y\n")
        self.run_line("journal", "list", office)
        self.run_line("journal", "show", office, "1")
        self.run_line("history", office, SHORT, "2003-01-05", "1")
        self.run_line("verify", office, "--definition", "1")
        self.run_line("journal", "undo", office)
        self.run_line("journal", "trim", office, "--before", "2000-01-01")
        file = self.root / PLAIN_FILE / "in.QDX"
        whole = file.read_bytes()
        file.write_bytes(whole[:-40])
        self.run_line("import", "qdx", office, "--definition", "1", tells="the file ends early")
        file.write_bytes(whole[:30])
        self.run_line("import", "qdx", office, "--definition", "1", status=3)
        file.unlink()
        self.run_line("import", "qdx", office, "--definition", "1", tells="no file for the definition")
        self.run_line("import", "qdx", office, "--definition", "1", "--expect-files", status=1, tells="tallybook: ")
        for archive in self.folder.glob("TBQDBU*"):
            archive.unlink()
        self.run_line("definition", "edit", office, "1", "--map-field", "1=1", tells="not looked at")
        definition = self.folder / "TBQDX1.office"
        definition.write_bytes(definition.read_bytes()[:9])
        self.run_line("definition", "list", office, status=1, tells="cannot be read: it is cut short")
        definition.unlink()
        self.run_line("definition", "list", office)

    def test_the_question_about_a_changed_exchange_file(self):
        shop, office = self.make("shop", name=IN_FILE), self.make("office", values=False)
        self.exchange_file(shop)
        self.definition(office, "--map-account", f"{SHORT}={SHORT}", "--map-field", "1=1")
        changed = self.make("changed", name="Changed" + IN_FILE)
        self.exchange_file(changed)
        shutil.copy(self.path("in.QDX"), self.root / PLAIN_FILE / "in.QDX")
        for answer, status in (["--answer", "cancel"], 3), (["--answer", "no"], 2), (["--yes"], 0):
            told = self.run_line("import", "qdx", office, "--definition", "1", *answer, status=status)
            self.assertIn("have changed since the last import", told)

    def test_imports_of_text_files(self):
        shop = self.make()
        good = f"1,6,2003,1,1\r\n200,1,5\r\n"
        self.assertIn("Imported ", self.run_line("import", "csv", shop, self.write("a.csv", good), "--yes"))
        bad = self.write("bad.csv", f"1,6,2003,1,1\r\n\x1b[2J,1,5\r\n200,9,1\r\n,,\r\n1,7,2010\r\n")
        for more in (["--yes"], ["--yes", "--keep-auditing"], ["--answer", "ok,yes,no"], []):
            self.run_line("import", "csv", shop, bad, *more, status=3 if not more else 1, tells="allybook: ")
        line = self.write("a.txt", "1/6/2003,200,1,7.25\r\n")
        self.assertIn("Imported ", self.run_line("import", "delimited", shop, line, "--math", "add", "--yes"))
        for content in ("1/6/2003,\x1b[2J,1,7.25\r\n1/6/2013,200,1,\x1b]0;x\x07\r\n", f"1/6/2003,200,1,\x1b[2J\r\n",
                        f"1/6/2003,200,1,5\n{FORGED}"):
            for more in (["--yes"], ["--yes", "--keep-auditing"], ["--answer", "ok,no"]):
                line = self.write("b.txt", content)
                self.run_line("import", "delimited", shop, line, "--math", "add", *more, status=1, tells="allybook: ")
        self.run_line("import", "csv", shop, "-", "--yes", "--again", typed=good.encode())
        self.on_terminal("import", "csv", shop, self.path("a.csv"), typed="y\no\n")
        self.assertIn("File name", self.on_terminal("import", "csv", shop, typed="*\n\n", status=3))

    def test_changes_of_lists(self):
        shop = self.make()
        for words in (["account", "add", shop, "9", "--description", NAME], ["account", "edit", shop, "9", "--description", "x" + NAME],
                      ["account", "list", shop], ["account", "move", shop, "9", "1"], ["account", "remove", shop, "9"],
                      ["field", "add", shop, NAME, "--number", "50"], ["field", "edit", shop, "50", "--description", "x" + NAME],
                      ["field", "list", shop], ["field", "move", shop, "50", "1"], ["field", "remove", shop, "50"],
                      ["calendar", "show", shop], ["calendar", "extend", shop, "--years", "1"],
                      ["calendar", "use", shop, "--years", "1"], ["journal", "list", shop], ["journal", "undo", shop]):
            self.run_line(*words)
        self.run_line("apply", shop, self.write("other.json", json.dumps({"system_name": NAME + "2"})))
        for command in "add", "remove":
            self.run_line("account", command, shop, NAME, status=1, tells="tallybook: ")

    def test_care(self):
        shop = self.make()
        self.run_line("book", "backup", shop, self.path("safe"))
        self.run_line("book", "backup", shop, self.path("safe"), status=1, tells="tallybook: ")
        self.run_line("book", "restore", self.path("safe"), shop, "--replace")
        self.run_line("book", "compact", shop)
        self.run_line("book", "salvage", shop, self.path("saved"))

    def test_warnings(self):
        shutil.copy(SAMPLES / "book-v1.tbk", self.path("old.tbk"))
        code = json.loads(subprocess.run([TALLYBOOK, "info", self.path("old"), "--json"], cwd=self.root, env=self.env, check=True,
                                         capture_output=True).stdout)
        first = code["accounts"][0]["code"], code["calendar"]["first_date"], str(code["fields"][0]["number"])
        told = self.run_line("set", self.path("old"), *first, "1", tells="tallybook: ")
        self.assertIn("old.tbk-v1", told)
        shop = self.make()
        os.link(shop + ".tbk", self.path("link.tbk"))
        self.run_line("info", shop, status=1, tells="tallybook: ")
        os.unlink(self.path("link.tbk"))
        damaged = sqlite3.connect(shop + ".tbk")
        damaged.execute("UPDATE chunk SET figures = zeroblob(length(figures))")
        damaged.commit()
        damaged.close()
        self.run_line("book", "check", shop, "--deep", status=1, tells="finding")

    def test_text_files_that_are_looked_through(self):
        shop = self.make()
        csv = self.write("look.csv", f'1,1,2003,1,1\r\n"{IN_FILE}",1,5\r\n200,1,"{IN_FILE}"\r\n')
        self.assertIn("2 records", self.run_line("check", "csv", shop, csv, status=1, tells="2 findings"))
        lines = self.write("look.txt", f'01/01/2003,200,1,"{PLAIN_FILE}"\r\n{PLAIN_FILE},200,{PLAIN_FILE},1\r\n')
        self.assertIn("2 records", self.run_line("check", "delimited", shop, lines, "--math", "add", status=1, tells="findings"))

    def test_zz_every_command_was_tried(self):
        """Runs last: what the program has is asked of the program itself."""
        def commands(*path):
            done = subprocess.run([TALLYBOOK, "complete", "command", "--", "help", *path], cwd=self.root, env=self.env,
                                  capture_output=True, text=True, check=True)
            names = [line.split("\t")[0] for line in done.stdout.splitlines()]
            return [" ".join([*path, name]) for name in names] + [below for name in names for below in commands(*path, name)]
        self.run_line("demo", str(self.root / PLAIN_FILE))
        every = commands()
        self.assertIn("import delimited", every)
        self.assertEqual([name for name in every if name not in self.tried], [])


if __name__ == "__main__":
    unittest.main(verbosity=2)
