#!/usr/bin/env python3
"""The command `tallybook` on a terminal: questions that are asked, the progress line, and Ctrl-C as the user's cancel.

  console_test.py TALLYBOOK
"""

import fcntl
import json
import os
import pathlib
import pty
import select
import signal
import subprocess
import sys
import tempfile
import termios
import time
import unittest

TALLYBOOK = str(pathlib.Path(sys.argv.pop(1)).resolve())
TIMEOUT = 60


def book(name, level, codes, values=()):
    return {
        "system_name": name, "data_level": level,
        "calendar": {"kind": "months", "first_date": "2003-01-01", "years": 3},
        "accounts": [{"number": i + 1, "code": code} for i, code in enumerate(codes)],
        "fields": [{"number": 1, "description": "Sales"}],
        "values": list(values),
    }


class Terminal:
    """A command that runs on a terminal of its own."""

    def __init__(self, arguments, folder, env):
        self.master, slave = pty.openpty()
        self.process = subprocess.Popen([TALLYBOOK, *arguments], cwd=folder, env=env, stdin=slave,
                                        stdout=slave, stderr=slave, start_new_session=True,
                                        preexec_fn=lambda: fcntl.ioctl(0, termios.TIOCSCTTY))
        os.close(slave)
        self.shown = ""

    def wait_for(self, text):
        end = time.monotonic() + TIMEOUT
        while text not in self.shown:
            if not self._read(end):
                raise AssertionError(f"the terminal never showed {text!r}; it showed {self.shown!r}")

    def _read(self, end):
        ready, _, _ = select.select([self.master], [], [], max(0, end - time.monotonic()))
        try:
            block = os.read(self.master, 65536) if ready else b""
        except OSError:  # the other end has closed
            block = b""
        self.shown += block.decode("utf-8", "replace")
        return bool(block)

    def type(self, text):
        os.write(self.master, text.encode())

    def finish(self):
        end = time.monotonic() + TIMEOUT
        while self._read(end):
            pass
        os.close(self.master)
        return self.process.wait(TIMEOUT)


class ConsoleTest(unittest.TestCase):
    def setUp(self):
        self.temporary = tempfile.TemporaryDirectory(prefix="tallybook-console-")
        self.folder = pathlib.Path(self.temporary.name)
        self.env = {"PATH": os.environ["PATH"], "HOME": self.temporary.name, "TZ": "UTC", "LC_ALL": "C.UTF-8",
                    "TERM": "xterm"}

    def tearDown(self):
        self.temporary.cleanup()

    def run_command(self, *arguments, status=0):
        done = subprocess.run([TALLYBOOK, *arguments], cwd=self.folder, env=self.env, timeout=TIMEOUT,
                              stdin=subprocess.DEVNULL, capture_output=True, text=True, check=False)
        self.assertEqual(done.returncode, status, done.stdout + done.stderr)
        return done.stdout

    def make(self, name, description):
        (self.folder / f"{name}.json").write_text(json.dumps(description), encoding="utf-8")
        self.run_command("new", name, "--from", f"{name}.json")

    def terminal(self, *arguments):
        return Terminal(arguments, self.folder, self.env)

    def make_changed_import(self):
        """An import that asks, because an account has another code since the archive copy was made."""
        value = {"account": 1, "date": "2003-01-05", "field": 1, "value": 2.5}
        self.make("shop", book("Shop", "day", ["A"], [value]))
        self.make("later", book("Shop", "day", ["A", "B"], [value]))
        self.make("office", book("Office", "period", ["A"]))
        year = ["--from", "2003-01-01", "--to", "2003-12-31"]
        self.run_command("export", "qdx", "shop", "year.QDX", *year)
        self.run_command("definition", "add", "office", "--title", "Shop", "--file", "year.QDX", "--map-account", "A=A",
                         "--after", "keep")
        self.run_command("export", "qdx", "later", "year.QDX", *year)

    def values(self, name):
        return self.run_command("values", name, "--format", "csv").splitlines()[1:]

    # --- Questions

    def test_asks_and_takes_the_letter_of_a_button(self):
        self.make_changed_import()
        terminal = self.terminal("import", "qdx", "office", "--definition", "1")
        terminal.wait_for("OK/Cancel [Cancel]? ")
        terminal.type("o\n")
        self.assertEqual(terminal.finish(), 0)
        self.assertEqual(self.values("office"), ["1,A,2003-01-31,1,2.5"])

    def test_asks_again_until_a_button_is_named(self):
        self.make_changed_import()
        terminal = self.terminal("import", "qdx", "office", "--definition", "1")
        terminal.wait_for("OK/Cancel [Cancel]? ")
        terminal.type("maybe\n")
        terminal.wait_for("maybe\r\n  OK/Cancel [Cancel]? ")
        terminal.type("OK\n")
        self.assertEqual(terminal.finish(), 0)

    def test_takes_an_empty_line_the_end_of_input_and_ctrl_c_as_the_refusing_button(self):
        self.make_changed_import()
        for typed in ("\n", "\x04", "\x03"):
            with self.subTest(typed=typed):
                terminal = self.terminal("import", "qdx", "office", "--definition", "1")
                terminal.wait_for("OK/Cancel [Cancel]? ")
                terminal.type(typed)
                self.assertEqual(terminal.finish(), 3)
                self.assertEqual(self.values("office"), [])

    def make_text_import(self, *records):
        self.make("shop", book("Shop", "day", ["A"]))
        (self.folder / "figures.csv").write_text("".join(["1,5,2003,1,1\n", *records]), encoding="ascii")

    def test_asks_before_a_text_import_and_at_its_errors(self):
        self.make_text_import("A,1,2.5\n")
        terminal = self.terminal("import", "csv", "shop", "figures.csv")
        terminal.wait_for("OK/Cancel [Cancel]? ")
        terminal.type("o\n")
        self.assertEqual(terminal.finish(), 0)
        self.assertEqual(self.values("shop"), ["1,A,2003-01-05,1,2.5"])
        (self.folder / "figures.csv").write_text("1,5,2003,1,1\nB,1,1\nA,9,1\n", encoding="ascii")
        terminal = self.terminal("import", "csv", "shop", "figures.csv", "--answer", "ok")
        terminal.wait_for("Yes/No [No]? ")
        terminal.type("\n")
        self.assertEqual(terminal.finish(), 1)
        self.assertNotIn("Invalid Datafield", terminal.shown)

    def test_ctrl_c_at_the_question_of_a_text_import_is_the_users_cancel(self):
        self.make_text_import("A,1,2.5\n")
        terminal = self.terminal("import", "csv", "shop", "figures.csv")
        terminal.wait_for("OK/Cancel [Cancel]? ")
        terminal.type("\x03")
        self.assertEqual(terminal.finish(), 3)
        self.assertEqual(self.values("shop"), [])

    def test_ctrl_c_ends_the_process_of_a_running_text_import_and_the_book_stays_whole(self):
        self.make_text_import(*["A,1,1\n"] * 3_000_000)
        terminal = self.terminal("import", "csv", "shop", "figures.csv", "--yes")
        terminal.wait_for("Reading Import File [")
        terminal.process.send_signal(signal.SIGINT)
        self.assertEqual(terminal.finish(), -signal.SIGINT)
        self.assertEqual(self.values("shop"), [])
        self.run_command("import", "csv", "shop", "figures.csv", "--math", "replace", "--yes")
        self.assertEqual(self.values("shop"), ["1,A,2003-01-05,1,1"])

    def test_asks_when_the_given_answers_are_used_up(self):
        self.make("shop", book("Shop", "day", ["A"]))
        terminal = self.terminal("export", "qdx", "shop", "missing/x.QDX", "--from", "2003-01-01", "--to", "2003-01-02",
                                 "--answer", "retry")
        terminal.wait_for("Retry/Cancel: Retry")
        terminal.wait_for("Retry/Cancel [Cancel]? ")
        (self.folder / "missing").mkdir()
        terminal.type("r\n")
        self.assertEqual(terminal.finish(), 0)
        self.assertTrue((self.folder / "missing/x.QDX").exists())

    # --- File names

    DATES = ["--from", "2003-01-01", "--to", "2003-12-31"]

    def test_asks_for_the_exchange_file_that_is_left_out(self):
        self.make("shop", book("Shop", "day", ["A"]))
        terminal = self.terminal("export", "qdx", "shop", *self.DATES)
        terminal.wait_for("File name, = for shop.QDX [Cancel]? ")
        self.assertIn("Export from shop.tbk\r\n  Files:  Exchange Files (*.QDX); All Files (*.*)\r\n", terminal.shown)
        terminal.type("year\n")
        self.assertEqual(terminal.finish(), 0)
        self.assertRegex(terminal.shown, r"Wrote /.*/year\.QDX: 2003-01-01 to 2003-12-31")
        self.run_command("qdx", "check", "year.QDX")

    def test_asks_before_it_replaces_a_file_and_for_another_name(self):
        self.make("shop", book("Shop", "day", ["A"]))
        (self.folder / "shop.csv").write_text("mine", encoding="ascii")
        terminal = self.terminal("export", "table", "shop", "--type", "CSV", *self.DATES)
        terminal.wait_for("File name, = for shop.csv [Cancel]? ")
        terminal.type("=\n")
        terminal.wait_for("shop.csv already exists.\r\n  Do you want to replace it?\r\n  Yes/No [No]? ")
        terminal.type("n\n")
        terminal.wait_for("Yes/No [No]? n\r\n  File name, = for shop.csv [Cancel]? ")
        terminal.type("other\n")
        self.assertEqual(terminal.finish(), 0)
        self.assertEqual((self.folder / "shop.csv").read_text(encoding="ascii"), "mine")
        self.assertTrue((self.folder / "other.csv").exists())

    def test_an_empty_line_the_end_of_input_and_ctrl_c_cancel_at_a_file_name(self):
        self.make("shop", book("Shop", "day", ["A"]))
        for typed in ("\n", "\x04", "\x03"):
            with self.subTest(typed=typed):
                terminal = self.terminal("export", "qdx", "shop", *self.DATES)
                terminal.wait_for("[Cancel]? ")
                terminal.type(typed)
                self.assertEqual(terminal.finish(), 3)
                self.assertFalse((self.folder / "shop.QDX").exists())

    def test_ctrl_c_at_the_question_about_a_file_cancels_its_name_too(self):
        self.make("shop", book("Shop", "day", ["A"]))
        (self.folder / "shop.QDX").write_text("mine", encoding="ascii")
        terminal = self.terminal("export", "qdx", "shop", *self.DATES)
        terminal.wait_for("[Cancel]? ")
        terminal.type("=\n")
        terminal.wait_for("Yes/No [No]? ")
        terminal.type("\x03")
        self.assertEqual(terminal.finish(), 3)
        self.assertEqual((self.folder / "shop.QDX").read_text(encoding="ascii"), "mine")

    def test_yes_takes_the_proposed_file_on_a_terminal(self):
        self.make("shop", book("Shop", "day", ["A"]))
        self.assertEqual(self.terminal("export", "qdx", "shop", *self.DATES, "--yes").finish(), 0)
        self.assertTrue((self.folder / "shop.QDX").exists())
        terminal = self.terminal("import", "csv", "shop", "--yes")
        self.assertEqual(terminal.finish(), 1)
        self.assertIn("No name is proposed here", terminal.shown)

    def test_asks_for_a_text_file_until_one_exists(self):
        self.make_text_import("A,1,2.5\n")
        terminal = self.terminal("import", "csv", "shop")
        terminal.wait_for("File name [Cancel]? ")
        terminal.type("january\n")
        terminal.wait_for("january.csv\r\n  File name [Cancel]? ")
        terminal.type("figures\n")
        terminal.wait_for("OK/Cancel [Cancel]? ")
        terminal.type("o\n")
        self.assertEqual(terminal.finish(), 0)
        self.assertEqual(self.values("shop"), ["1,A,2003-01-05,1,2.5"])
        (self.folder / "lines.txt").write_text("1/6/2003,A,1,4\r\n", encoding="ascii")
        terminal = self.terminal("import", "delimited", "shop", "--math", "add")
        terminal.wait_for("File name [Cancel]? ")
        terminal.type("lines.txt\n")
        terminal.wait_for("OK/Cancel [Cancel]? ")
        terminal.type("o\n")
        self.assertEqual(terminal.finish(), 0)
        self.assertEqual(self.values("shop"), ["1,A,2003-01-05,1,2.5", "1,A,2003-01-06,1,4"])

    # --- Progress

    def test_shows_progress_on_a_terminal_and_takes_it_away(self):
        self.make("shop", book("Shop", "day", ["A"]))
        terminal = self.terminal("export", "qdx", "shop", "x.QDX", "--from", "2003-01-01", "--to", "2003-12-31")
        self.assertEqual(terminal.finish(), 0)
        self.assertIn("Writing Export File [", terminal.shown)
        self.assertRegex(terminal.shown, r"%\r\x1b\[KWrote x.QDX")

    def test_shows_no_progress_elsewhere(self):
        self.make("shop", book("Shop", "day", ["A"]))
        done = subprocess.run([TALLYBOOK, "export", "qdx", "shop", "x.QDX", "--from", "2003-01-01", "--to", "2003-12-31"],
                              cwd=self.folder, env=self.env, timeout=TIMEOUT, capture_output=True, text=True, check=True)
        self.assertEqual(done.stderr, "")

    # --- Ctrl-C

    def make_long_import(self):
        """An import with a zeroing step of a second or so, and figures to be zeroed on every date."""
        codes = [f"{n:05}" for n in range(1, 2001)]
        values = [{"account": 1, "date": f"2003-{month:02}-01", "field": 1, "value": month} for month in range(1, 13)]
        self.make("shop", book("Shop", "day", codes, values))
        self.run_command("export", "qdx", "shop", "all.QDX", "--from", "2003-01-01", "--to", "2005-12-31")
        self.run_command("definition", "add", "shop", "--title", "Self", "--file", "all.QDX")
        return self.values("shop")

    def cancel_import(self, times):
        terminal = self.terminal("import", "qdx", "shop", "--definition", "1", "--math", "replace")
        terminal.wait_for("Zeroing out data")
        for _ in range(times):
            terminal.process.send_signal(signal.SIGINT)
        return terminal, terminal.finish()

    def test_ctrl_c_ends_an_import_while_it_zeroes(self):
        before = self.make_long_import()
        for times in (1, 5):
            with self.subTest(times=times):
                terminal, status = self.cancel_import(times)
                self.assertEqual(status, 3)
                self.assertIn("Import Aborted by User", terminal.shown)
                self.assertNotIn("Completed Import", terminal.shown)
                after = self.values("shop")
                # What was zeroed stays zero, what was not reached stays; the journal takes it back.
                self.assertNotEqual(after, before)
                self.assertEqual(after, before[len(before) - len(after):])
                self.assertTrue((self.folder / "all.QDX").exists())
                self.assertIn("not finished", self.run_command("journal", "list", "shop"))
                self.run_command("journal", "undo", "shop")
                self.assertEqual(self.values("shop"), before)

    def test_ctrl_c_leaves_an_export_well_formed(self):
        codes = [f"{n:05}" for n in range(1, 9000)]
        self.make("shop", book("Shop", "day", codes))
        terminal = self.terminal("export", "qdx", "shop", "part.QDX", "--from", "2003-01-01", "--to", "2005-12-31")
        terminal.wait_for("Writing Export File")
        terminal.process.send_signal(signal.SIGINT)
        self.assertEqual(terminal.finish(), 3)
        self.assertIn("part.QDX is a part only", terminal.shown)
        found = self.run_command("qdx", "check", "part.QDX", status=1)
        self.assertRegex(found, r"of 8999|end mark")
        self.run_command("qdx", "info", "part.QDX")

    def test_ctrl_c_ends_the_printing_of_values(self):
        values = [{"account": a, "date": f"200{y}-{m:02}-{d:02}", "field": 1, "value": 1.25}
                  for a in range(1, 201) for y in (3, 4, 5) for m in range(1, 13) for d in range(1, 29)]
        self.make("shop", book("Shop", "day", [f"{n:05}" for n in range(1, 201)], values))
        self.assertLess(self.cancel_at_first_lines("values", "shop"), len(values))

    def cancel_at_first_lines(self, *arguments):
        """How many lines more a command prints that waits for somebody to read them when Ctrl-C comes."""
        read, write = os.pipe()
        process = subprocess.Popen([TALLYBOOK, *arguments], cwd=self.folder, env=self.env, stdout=write,
                                   stderr=subprocess.PIPE, text=True)
        os.close(write)
        with os.fdopen(read, "rb") as output:
            output.read(1000)  # it runs, and waits for the pipe to be emptied
            process.send_signal(signal.SIGINT)
            lines = output.read().count(b"\n")
        self.assertEqual(process.communicate(timeout=TIMEOUT)[1], "tallybook: cancelled\n")
        self.assertEqual(process.returncode, 3)
        return lines

    def test_ctrl_c_ends_a_look_at_a_file(self):
        self.make("shop", book("Shop", "day", ["00001"], []))
        (self.folder / "in.csv").write_text("1,1,2003,1,1\n" + "00001,1,5x\n" * 100_000, encoding="utf-8")
        lines = self.cancel_at_first_lines("check", "csv", "shop", "in.csv", "--sound", "rest.csv")
        self.assertLess(lines, 100_000)
        self.assertFalse((self.folder / "rest.csv").exists())

    def test_ctrl_c_ends_a_look_at_an_exchange_file(self):
        codes = [f"{n:05}" for n in range(1, 9000)]
        values = [{"account": n, "date": "2003-01-02", "field": 1, "value": 1e308} for n in range(1, 9000)]
        self.make("shop", book("Shop", "day", codes, values))
        self.run_command("export", "qdx", "shop", "all.QDX", "--from", "2003-01-01", "--to", "2003-12-31")
        self.run_command("definition", "add", "shop", "--title", "Self", "--file", "all.QDX")
        lines = self.cancel_at_first_lines("qdx", "check", "all.QDX", "--book", "shop", "--definition", "1")
        self.assertLess(lines, len(codes))

    # Twice as often as it needs: a machine that is busy may end the work before the key comes.
    CARE_TRIES = 20

    def cancel(self, title, *arguments):
        """Runs a command until Ctrl-C ends it in the midst, and holds that nothing has changed."""
        names = {path.name: path.read_bytes() for path in self.folder.iterdir() if path.is_file()}
        for _ in range(self.CARE_TRIES):
            terminal = self.terminal("book", *arguments)
            terminal.wait_for(title)
            terminal.process.send_signal(signal.SIGINT)
            status = terminal.finish()
            if status == 3:
                self.assertIn("cancelled", terminal.shown)
                after = {path.name: path.read_bytes() for path in self.folder.iterdir() if path.is_file()}
                self.assertEqual(after.keys(), names.keys())
                self.assertEqual([name for name in names if after[name] != names[name]], [])
                return
            self.assertEqual(status, 0)
            for path in self.folder.iterdir():
                if path.is_file() and path.name not in names:
                    path.unlink()
            for name, content in names.items():
                (self.folder / name).write_bytes(content)
        self.fail(f"never cancelled: {arguments}")

    def test_ctrl_c_ends_care_and_leaves_nothing(self):
        values = [{"account": a, "date": f"200{y}-{m:02}-01", "field": 1, "value": 1.25}
                  for a in range(1, 4001) for y in (3, 4) for m in range(1, 13, 3)]
        self.make("shop", book("Shop", "day", [f"{n:05}" for n in range(1, 4001)], values))
        self.run_command("set", "shop", "00001", "2003-01-01", "1", "7")
        self.run_command("book", "backup", "shop", "safe")
        before = self.values("shop")
        self.cancel("Check shop.tbk", "check", "shop", "--deep")
        self.cancel("Back up shop.tbk", "backup", "shop", "other")
        self.cancel("Compact shop.tbk", "compact", "shop")
        self.cancel("Salvage shop.tbk", "salvage", "shop", "saved")
        self.cancel("Restore safe", "restore", "safe", "shop", "--replace")
        self.assertEqual(self.values("shop"), before)

    def shown(self, *arguments, **env):
        terminal = Terminal(arguments, self.folder, {**self.env, **env})
        terminal.finish()
        return terminal.shown

    def test_headings_and_errors_are_coloured_on_a_terminal(self):
        self.assertIn("\x1b[1mUsage:\x1b[0m tallybook values BOOK", self.shown("values", "--help"))
        self.assertIn("\x1b[1;31mtallybook:\x1b[0m 'sell' is no command", self.shown("sell"))

    def test_boxes_lists_of_errors_and_tables_are_coloured_alike(self):
        self.make_text_import("B,1,1\n")
        wrong = self.shown("import", "csv", "shop", "figures.csv", "--yes", "--keep-auditing")
        self.assertIn("\x1b[1;31mTallybook:\x1b[0m Invalid Account Code B", wrong)
        self.assertIn("\x1b[1;31mtallybook:\x1b[0m figures.csv: ", wrong)
        self.assertIn("\nTallybook: OK to Add data", "\n" + wrong)  # a question is no error
        self.assertIn("\x1b[1mAccounts (1)\x1b[0m", self.shown("info", "shop"))

    def test_nothing_is_coloured_where_no_colour_is_wanted(self):
        for env in {"NO_COLOR": "1"}, {"TERM": "dumb"}, {"TERM": ""}:
            for arguments in ["values", "--help"], ["sell"]:
                shown = self.shown(*arguments, **env)
                self.assertNotIn("\x1b", shown, env)
                self.assertIn("tallybook", shown)

    def test_nothing_is_coloured_in_a_file(self):
        done = subprocess.run([TALLYBOOK, "values", "--help"], env=self.env, capture_output=True, text=True, check=True)
        self.assertNotIn("\x1b", done.stdout)


if __name__ == "__main__":
    unittest.main(verbosity=2)
