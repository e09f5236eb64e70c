#!/usr/bin/env python3
"""What a preview shows is what the import does: the same figures, over random books, files and definitions, one after the
other and all together; and an atomic import does the same as any.

  previews_test.py TALLYBOOK [--walks N] [--seed N]
"""

import argparse
import csv
import datetime
import io
import json
import os
import pathlib
import random
import shutil
import subprocess
import sys
import tempfile

TIMEOUT = 60
FIRST = datetime.date(2003, 1, 1)
DAYS = 365


class Walk:
    """A folder with two books, exchange files, text files and definitions, all of it random."""

    def __init__(self, tallybook, folder, chance):
        self.tallybook = tallybook
        self.folder = folder
        self.chance = chance
        folder.mkdir()
        self.env = {"PATH": "/usr/bin:/bin", "HOME": str(folder / "home"), "TZ": "UTC", "LC_ALL": "C.UTF-8",
                    "SOURCE_DATE_EPOCH": "1709294400",
                    **{name: value for name, value in os.environ.items() if name.endswith("SAN_OPTIONS")}}
        self.codes = [str(100 + number) for number in range(chance.randint(1, 5))]
        self.fields = sorted(chance.sample(range(1, 12), chance.randint(1, 4)))
        self.make_book("north", "day", 0.2)
        self.make_book("office", chance.choice(["day", "week", "period"]), 0.05)
        self.make_definitions()

    def run(self, *words, status=(0,)):
        done = subprocess.run([self.tallybook, *map(str, words)], cwd=self.folder, env=self.env, stdin=subprocess.DEVNULL,
                              capture_output=True, text=True, timeout=TIMEOUT, check=False)
        if done.returncode not in status:
            raise AssertionError(f"{words}: status {done.returncode}\n{done.stdout}{done.stderr}")
        return done

    def make_book(self, name, level, share):
        chance = self.chance
        dates = {str(FIRST + datetime.timedelta(days)) for days in range(DAYS) if chance.random() < share}
        values = {}
        for number in range(len(self.codes)):
            for date in sorted(dates):
                for field in self.fields:
                    if chance.random() < 0.5:
                        values[number + 1, date, field] = chance.choice([1, -2.5, chance.randint(-999, 999) / 4])
        if level != "day":  # a record of such a book holds many days
            values = {}
        kind = "months" if level != "week" else chance.choice(["months", "weeks", "4-4-5", "13x4"])
        description = {
            "system_name": name, "data_level": level,
            "calendar": {"kind": kind, "first_date": str(FIRST), "years": 1},
            "accounts": [{"number": n + 1, "code": code} for n, code in enumerate(self.codes)],
            "fields": [{"number": field, "description": f"Field {field}"} for field in self.fields],
            "values": [{"account": a, "date": d, "field": f, "value": v} for (a, d, f), v in values.items()]}
        (self.folder / f"{name}.json").write_text(json.dumps(description), encoding="utf-8")
        self.run("new", name, "--from", f"{name}.json")

    def make_definitions(self):
        chance = self.chance
        for number in range(chance.randint(1, 3)):
            stem = f"{chr(ord('a') + number)}"
            for file in range(chance.randint(1, 2)):
                first = FIRST + datetime.timedelta(chance.randrange(DAYS - 40))
                last = first + datetime.timedelta(chance.randrange(40))
                self.run("export", "qdx", "north", f"{stem}{file}.QDX", "--from", first, "--to", last)
                os.utime(self.folder / f"{stem}{file}.QDX", (1_000_000 + file, 1_000_000 + file))
            matching = []
            if chance.random() < 0.5:
                for code in chance.sample(self.codes, chance.randint(1, len(self.codes))):
                    matching += ["--map-account", f"{code}={chance.choice(self.codes)}"]
            if chance.random() < 0.5:
                for field in chance.sample(self.fields, chance.randint(1, len(self.fields))):
                    matching += ["--map-field", f"{field}={chance.choice(self.fields)}"]
            self.run("definition", "add", "office", "--title", f"Definition {stem}", "--file", f"{stem}?.QDX", "--after",
                     chance.choice(["keep", "rename", "delete"]), *matching)

    def figures(self, book="office"):
        rows = csv.DictReader(io.StringIO(self.run("values", book, "--format", "csv").stdout))
        return {(row["account_code"], row["date"], row["field"]): float(row["value"]) for row in rows}

    def files(self):
        """All but the log and the settings of whoever runs it."""
        return {str(path.relative_to(self.folder)): path.read_bytes() for path in self.folder.rglob("*") if path.is_file()}

    def deeds(self):
        """Imports, each of them one that can be done now."""
        chance = self.chance
        number = 1
        deeds = [("import", "qdx", "office", "--all")]
        while f"TBQDX{number}.office" in self.files():
            deeds.append(("import", "qdx", "office", "--definition", number, "--math",
                          chance.choice(["add", "subtract", "replace", "zero"])))
            number += 1
        lines = "".join(f"{chance.randint(1, 28)}.{chance.randint(1, 12)}.2003,{chance.choice(self.codes)},"
                        f"{chance.choice(self.fields)},{chance.randint(-99, 99)}\r\n" for _ in range(chance.randint(1, 9)))
        (self.folder / "lines.txt").write_text(lines, encoding="ascii", newline="")
        deeds.append(("import", "delimited", "office", "lines.txt", "--date-order", "DMY", "--math",
                      chance.choice(["add", "subtract", "replace"])))
        return chance.sample(deeds, 2)


def changed(figures, preview):
    """Figures as a preview says that they will be."""
    after = dict(figures)
    for row in csv.DictReader(io.StringIO(preview)):
        place = (row["account_code"], row["date"], row["field"])
        if after.pop(place, 0) != float(row["before"]):
            raise AssertionError(f"the preview takes {place} from another figure: {row}")
        if float(row["after"]) != 0:
            after[place] = float(row["after"])
    return after


def do_one(walk, deed):
    """Gives how many figures it changed."""
    deed = (*deed, "--again", "--yes")
    before, files = walk.figures(), walk.files()
    preview = walk.run(*deed, "--preview", "--format", "csv", status=(0, 1))
    if walk.files() != files:
        raise AssertionError(f"{deed}: the preview left {set(walk.files()) ^ set(files) or 'a file changed'}")
    other = Copy(walk)
    plain = walk.run(*deed, status=(0, 1))
    atomic = other.run(*deed, "--atomic", status=(0, 1))
    if preview.returncode != plain.returncode or plain.returncode != atomic.returncode:
        raise AssertionError(f"{deed}: status {preview.returncode}, {plain.returncode}, {atomic.returncode}")
    expected = changed(before, preview.stdout)
    if plain.returncode == 0 and walk.figures() != expected:
        raise AssertionError(f"{deed}: the import does other than its preview shows")
    wanted = walk.figures() if plain.returncode == 0 else before
    if other.figures() != wanted:
        raise AssertionError(f"{deed}: the atomic import gives other figures")
    names = walk.files().keys() if plain.returncode == 0 else files.keys()
    if {name for name in other.files() if ".tbk" not in name} != {name for name in names if ".tbk" not in name}:
        raise AssertionError(f"{deed}: the atomic import leaves other files")
    return len(set(before.items()) ^ set(expected.items()))


class Copy(Walk):
    """The same folder once more."""

    def __init__(self, walk):  # pylint: disable=super-init-not-called
        self.tallybook, self.env, self.chance = walk.tallybook, walk.env, walk.chance
        self.folder = walk.folder.with_name("copy")
        shutil.rmtree(self.folder, ignore_errors=True)
        shutil.copytree(walk.folder, self.folder)
        self.env = {**walk.env, "HOME": str(self.folder / "home")}


def main():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("tallybook")
    parser.add_argument("--walks", type=int, default=12)
    parser.add_argument("--seed", type=int, default=random.SystemRandom().randrange(1 << 32))
    arguments = parser.parse_args()
    print(f"seed {arguments.seed}")
    chance = random.Random(arguments.seed)
    figures = 0
    for number in range(arguments.walks):
        with tempfile.TemporaryDirectory(prefix="tallybook-previews-") as name:
            walk = Walk(str(pathlib.Path(arguments.tallybook).resolve()), pathlib.Path(name) / "walk", chance)
            for deed in walk.deeds():
                figures += do_one(walk, deed)
    print(f"{arguments.walks} walks, {figures} figures changed")
    if figures < arguments.walks:
        raise AssertionError("hardly a figure changed: the test has shown nothing")


if __name__ == "__main__":
    sys.exit(main())
