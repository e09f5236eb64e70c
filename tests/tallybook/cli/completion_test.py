#!/usr/bin/env python3
"""The man pages and the completions of bash, zsh and fish that the build makes: each shell is asked as its user would.

  completion_test.py TALLYBOOK PAGES
"""

import json
import os
import pathlib
import pty
import re
import select
import subprocess
import sys
import tempfile
import time
import unittest

PAGES = pathlib.Path(sys.argv.pop(2)).resolve()
TALLYBOOK = pathlib.Path(sys.argv.pop(1)).resolve()
TIMEOUT = 30

# The line editor parts words at their signs of equality.
BASH = r"""
source "$1"
read -ra COMP_WORDS <<<"${2//=/ = }"
[[ $2 == *' ' ]] && COMP_WORDS+=('')
COMP_CWORD=$((${#COMP_WORDS[@]} - 1))
_tallybook tallybook
printf '%s\n' "${COMPREPLY[@]}"
"""


def strip_controls(text):
    return re.sub(r"\x1b\[[0-9;?]*[A-Za-z]|\r", " ", text)


class CompletionTest(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.temporary = tempfile.TemporaryDirectory(prefix="tallybook-completion-")
        cls.folder = pathlib.Path(cls.temporary.name)
        cls.env = {"PATH": f"{TALLYBOOK.parent}:/usr/local/bin:/usr/bin:/bin", "HOME": str(cls.folder / "home"),
                   "LC_ALL": "C.UTF-8", "TERM": "xterm", "ZDOTDIR": str(cls.folder / "home")}
        (cls.folder / "home").mkdir()
        book = {"system_name": "Shop", "data_level": "day",
                "calendar": {"kind": "months", "first_date": "2003-01-01", "years": 1},
                "accounts": [{"number": 1, "code": "100", "description": "Front of shop"},
                             {"number": 2, "code": "150", "description": "Gar\tden"},
                             {"number": 3, "code": "200", "description": "Yard"}],
                "fields": [{"number": 1, "description": "Sales"}, {"number": 5, "description": "Customers"}]}
        (cls.folder / "shop.json").write_text(json.dumps(book), encoding="utf-8")
        cls.run_command("new", "shop", "--from", "shop.json")
        cls.run_command("definition", "add", "shop", "--title", "North Shop", "--file", "north.QDX")
        cls.run_command("definition", "add", "shop", "--title", "South Shop", "--file", "south.QDX")
        (cls.folder / "year.QDX").write_text("", encoding="utf-8")
        book["accounts"] = [{"number": 7, "code": "A7", "description": "Till"}, {"number": 8, "code": "B8"}]
        book["fields"] = [{"number": 3, "description": "Takings"}, {"number": 4, "description": "Weather"}]
        (cls.folder / "till.json").write_text(json.dumps(book), encoding="utf-8")
        cls.run_command("new", "till", "--from", "till.json")
        cls.run_command("export", "qdx", "till", "till.QDX", "--from", "2003-01-01", "--to", "2003-01-31")
        cls.run_command("definition", "add", "shop", "--title", "Till", "--file", "till.QDX", "--after", "keep")

    @classmethod
    def tearDownClass(cls):
        cls.temporary.cleanup()

    @classmethod
    def run_command(cls, *arguments):
        subprocess.run([TALLYBOOK, *arguments], cwd=cls.folder, env=cls.env, check=True, capture_output=True)

    def run_shell(self, *arguments):
        done = subprocess.run(arguments, cwd=self.folder, env=self.env, check=True, capture_output=True, text=True,
                              timeout=TIMEOUT)
        self.assertEqual(done.stderr, "")
        return [line for line in done.stdout.splitlines() if line]

    # --- What each shell offers at the end of a line

    def bash(self, line):
        return self.run_shell("bash", "--norc", "-c", BASH, "bash", str(PAGES / "bash" / "tallybook"), line)

    def fish(self, line):
        script = f"source {PAGES}/fish/tallybook.fish; complete -C '{line}'"
        return [offer.split("\t")[0] for offer in self.run_shell("fish", "--no-config", "-c", script)]

    def zsh(self, line):
        """Types the line and a tab, twice, into a shell on a terminal and gives the words of what it shows."""
        pid, terminal = pty.fork()
        if pid == 0:
            os.chdir(self.folder)
            os.execvpe("zsh", ["zsh", "-f", "-i"], {**self.env, "PS1": "ready> ", "COLUMNS": "200"})
        try:
            start = (f"fpath=({PAGES}/zsh $fpath); autoload -Uz compinit; compinit -u -D; unsetopt beep; LISTMAX=1000; "
                     "stty columns 200; PS1='pro''mpt> '\n")
            shown = self.read_until(terminal, "ready> ")
            os.write(terminal, start.encode())
            self.read_until(terminal, "prompt> ")
            # What follows the tabs is read when they are done; it clears the line and says so.
            os.write(terminal, (line + "\t\t\x15echo do''ne\n").encode())
            shown = self.read_until(terminal, "done\r\n")
            return re.split(r"\s+", strip_controls(shown))
        finally:
            os.close(terminal)
            os.waitpid(pid, 0)

    def read_until(self, terminal, text):
        shown, end = "", time.monotonic() + TIMEOUT
        while text not in shown:
            ready, _, _ = select.select([terminal], [], [], max(0, end - time.monotonic()))
            self.assertTrue(ready, f"the shell never showed {text!r}; it showed {shown!r}")
            shown += os.read(terminal, 65536).decode("utf-8", "replace")
        return shown

    def expect_offers(self, line, *wanted, but=()):
        for shell in self.bash, self.fish, self.zsh:
            offered = [word for offer in shell(line) for word in offer.split()] if shell != self.zsh else shell(line)
            with self.subTest(shell=shell.__name__, line=line):
                for word in wanted:
                    self.assertIn(word, offered)
                for word in but:
                    self.assertNotIn(word, offered)

    def test_offers_commands_and_nothing_hidden(self):
        self.expect_offers("tallybook ", "new", "info", "values", "import", "help", but=["complete", "--help"])
        self.expect_offers("tallybook import ", "qdx", "csv", "delimited", but=["new"])

    def test_offers_options_and_the_words_of_a_choice(self):
        self.expect_offers("tallybook import qdx shop -", "--definition", "--all", "--math", "--yes", but=["--clear"])
        self.expect_offers("tallybook import qdx shop --math ", "add", "subtract", "replace", "zero")

    def test_offers_books_and_files(self):
        self.expect_offers("tallybook info s", "shop.tbk", but=["shop.json"])
        self.expect_offers("tallybook qdx check y", "year.QDX")
        self.expect_offers("tallybook qdx check year.QDX --math ", "add", "subtract", "replace", "zero")

    def test_offers_what_the_book_holds(self):
        self.expect_offers("tallybook import qdx shop --math add --definition ", "1", "2")
        self.expect_offers("tallybook qdx check year.QDX --book shop --definition ", "1", "2")
        self.expect_offers("tallybook definition show shop ", "1", "2")
        self.expect_offers("tallybook values shop --account 1", "100", "150", but=["200"])
        self.expect_offers("tallybook set shop ", "100", "150", "200")
        self.expect_offers("tallybook values shop --field ", "1", "5")

    def test_offers_the_exchange_files_accounts_and_fields_before_a_pairs_sign(self):
        edit = "tallybook definition edit shop 3 --map-"
        self.expect_offers(edit + "account ", "A7=", "B8=", but=["100=", "100"])
        self.expect_offers(edit + "field ", "3=", "4=", but=["1="])
        add = "tallybook definition add shop --title T --file till.QDX --map-"
        self.expect_offers(add + "account A", "A7=", but=["B8="])
        self.expect_offers(add + "field 4", "4=", but=["3="])

    def test_offers_the_books_own_where_there_is_no_exchange_file_yet(self):
        self.expect_offers("tallybook definition edit shop 1 --map-account ", "100=", "150=", "200=", but=["A7="])
        self.expect_offers("tallybook definition add shop --title T --file none.QDX --map-field ", "1=", "5=")

    def test_offers_the_books_accounts_and_fields_behind_a_pairs_sign(self):
        edit = "tallybook definition edit shop 3 --map-"
        for line, values in (edit + "account A7=", ["100", "150", "200"]), (edit + "account A7=2", ["200"]), \
                            (edit + "account A7=100 --map-account B8=1", ["100", "150"]), (edit + "field 3=", ["1", "5"]), \
                            (edit + "account=A7=", ["100", "150", "200"]), (edit + "field 3=1 --map-field=4=", ["1", "5"]):
            with self.subTest(line=line):
                self.assertEqual([offer.split()[0] for offer in self.bash(line)], values)
                self.assertEqual([offer.split("=")[-1] for offer in self.fish(line)], values)
        for line, values in (edit + "account A7=1", ["A7=100", "A7=150"]), (edit + "field=3=", ["3=1", "3=5"]):
            with self.subTest(line=line):
                shown = self.zsh(line)
                for value in values:
                    self.assertIn(value, shown)

    def test_counts_the_arguments_behind_a_pair(self):
        line = "tallybook definition edit --map-account A7=100 shop "
        self.expect_offers(line, "1", "2", "3")

    def test_offers_titles_with_definitions(self):
        self.assertIn("1  (North Shop)", self.bash("tallybook definition show shop "))
        for word in "North", "South":
            self.assertIn(word, self.zsh("tallybook definition show shop "))

    def test_offers_the_commands_behind_help(self):
        self.expect_offers("tallybook help import ", "qdx", "csv", "delimited")

    def test_is_silent_on_trouble(self):
        for words in ["account", "--", "values", "nobook", "--account"], ["account", "--"], \
                     ["command", "--", "help", "sell"], ["journal", "--", "import", "qdx", "shop.json", "--definition"]:
            done = subprocess.run([TALLYBOOK, "complete", *words], cwd=self.folder, env=self.env, capture_output=True)
            self.assertEqual((done.stdout, done.stderr), (b"", b""), words)

    def test_leaves_nothing_behind(self):
        before = sorted(path.name for path in self.folder.iterdir())
        self.bash("tallybook values shop --account ")
        self.assertEqual(sorted(path.name for path in self.folder.iterdir()), before)

    def test_shows_what_a_name_hides(self):
        done = subprocess.run([TALLYBOOK, "complete", "account", "--", "values", "shop"], cwd=self.folder, env=self.env,
                              capture_output=True, text=True, check=True)
        self.assertIn("150\tGar\\tden\n", done.stdout)

    # --- Every option of every command, by what the command itself tells

    def commands(self, *path):
        text = self.help(*path)
        yield list(path), text
        listed = re.search(r"\nCommands:\n(.*?)\n\n", text, re.S)
        for name in re.findall(r"^  ([a-z]\S*)", listed.group(1), re.M) if listed else []:
            yield from self.commands(*path, name)

    def help(self, *path):
        return subprocess.run([TALLYBOOK, *path, "--help"], env=self.env, capture_output=True, text=True,
                              check=True).stdout

    def test_every_option_stands_in_the_man_page_and_in_each_completion(self):
        bash, zsh, fish = ((PAGES / name).read_text() for name in ("bash/tallybook", "zsh/_tallybook",
                                                                  "fish/tallybook.fish"))
        pages = set()
        for path, text in self.commands():
            page = PAGES / "man" / ("-".join(["tallybook", *path]) + ".1")
            pages.add(page.name)
            shown = page.read_text().replace("\\-", "-")
            place = " ".join(path)
            listed = re.search(f"^    '{place}'\\)\n.*\n      options='(.*)'", bash, re.M).group(1).split()
            function = re.search(f"^_tallybook_{'_'.join(path)}\\(\\) {{\n.*?^}}", zsh, re.S | re.M).group(0)
            options = re.findall(r"^  (?:-\w, )?(--[a-z-]+)", text, re.M)
            self.assertIn("--help", options)
            for option in options:
                with self.subTest(path=path, option=option):
                    self.assertRegex(shown, rf"(?m)^\.B (-\w, )?{option}( |$)")
                    self.assertIn(option, listed)
                    self.assertRegex(function, rf"{option}[=\[,}}]")
                    self.assertIn(f"complete -c tallybook -n '__tallybook_at \\'{place}\\'' -l {option[2:]} ", fish)
        self.assertEqual(pages, {page.name for page in (PAGES / "man").iterdir()})

    def test_the_man_pages_are_sound(self):
        for page in sorted((PAGES / "man").iterdir()):
            done = subprocess.run(["mandoc", "-T", "lint", "-W", "warning", page], capture_output=True, text=True)
            self.assertEqual(done.stdout + done.stderr, "", page.name)


if __name__ == "__main__":
    unittest.main(verbosity=2)
