#!/usr/bin/env python3
"""Flips single bits of a closed book: each is refused, or every figure is as it was.

  flips_test.py TALLYBOOK [--trials N] [--share S] [--seed N] [--only TEXT]

A flipped book is looked at, exported and checked, then changed, and the change is taken back. A command that ends well
has to tell and write just what it does with the book as it was; one that does not gives its reason.
"""

import json
import random
import sys

sys.dont_write_bytecode = True
from trial import Broken, Workshop, arguments_of, describe, run_trials, scratch  # pylint: disable=wrong-import-position

WHOLE_RANGE = ("--from", "2003-01-01", "--to", "2006-12-31")
LOOKS = (("values", "book", "--format", "csv"), ("info", "book", "--json"), ("journal", "list", "book"),
         ("export", "qdx", "book", "all.QDX", *WHOLE_RANGE, "--yes"))
CHANGES = (("set", "book", "120", "2005-06-15", "2", "4711"), ("journal", "undo", "book"))
CHECK = ("book", "check", "book", "--deep")


def furnish(place, seed):
    """A book with a dense account, one of small whole numbers, a sparse one and an empty one, and a journal of images."""
    chance = random.Random(seed)
    days = [f"{year}-{month:02}-{day:02}" for year in range(2003, 2007) for month in range(1, 13)
            for day in range(1, 29)]
    values = [(100, day, field, chance.uniform(-1e6, 1e6)) for day in days[:600] for field in (1, 2, 3)]
    values += [(101, day, field, float(chance.randrange(1, 30000))) for day in days for field in (1, 2, 3)]
    values += [(102, day, chance.randrange(1, 4), chance.uniform(-9, 9)) for day in chance.sample(days, 90)]
    place.write("book.json", describe("Flips", ["100", "110", "120", "130"], values))
    place.must("new", "book", "--from", "book.json")
    other = [(account, day, field, round(chance.uniform(-99, 99), 2)) for account in (100, 101, 102, 103)
             for day in chance.sample(days, 60) for field in (1, 2, 3)]
    place.write("other.json", describe("Other", ["100", "110", "120", "130"], other))
    place.must("new", "other", "--from", "other.json")
    place.must("export", "qdx", "other", "other.QDX", *WHOLE_RANGE)
    place.must("definition", "add", "book", "--title", "Other", "--file", "other.QDX", "--after", "keep")
    place.must("import", "qdx", "book", "--definition", "1", "--yes")


class Truth:
    """What the commands tell and write where nothing is flipped."""

    def __init__(self, workshop):
        place = workshop.copy()
        self.content = place.read("book.tbk")
        self.told = {arguments: place.must(*arguments).out for arguments in LOOKS}
        self.export = place.read("all.QDX")
        place.must(*CHECK)
        self.figures = self.told[LOOKS[0]]
        self.changed = []
        for arguments in CHANGES:
            place.must(*arguments)
            self.changed.append(place.figures("book"))
        if self.changed[0] == self.figures or self.changed[1] != self.figures:
            raise Broken("the changes change nothing, or are not taken back: the test would show nothing")


def runs(place, arguments):
    """Runs a command on the flipped book; true where it ended well, false where it was refused for a reason."""
    done = place.run(*arguments)
    if done.status not in (0, 1):
        raise Broken(f"neither done nor refused: {done}")
    if done.status == 1 and not done.err.strip() and arguments != CHECK:
        raise Broken(f"refused without a word: {done}")
    return done


def try_one(workshop, truth, offset, bit):
    place = workshop.copy()
    content = bytearray(truth.content)
    content[offset] ^= 1 << bit
    place.write("book.tbk", bytes(content))
    refused = 0
    for arguments in LOOKS:
        done = runs(place, arguments)
        refused += done.status
        if done.status == 0 and done.out != truth.told[arguments]:
            raise Broken(f"tells what is not so: {done}")
    if place.read("all.QDX") not in (None, truth.export):
        raise Broken("the export holds what is not so")
    if place.read("book.tbk") != bytes(content):
        raise Broken("a look has changed the book")
    check = runs(place, CHECK)
    if refused and check.status == 0:
        raise Broken(f"{refused} commands refuse, and the check finds nothing: {check}")
    salvages(place, truth)
    cares(workshop, truth, bytes(content))
    changes(place, truth)
    return "harmless" if refused + check.status == 0 else "found by the check alone" if not refused else "refused"


def salvages(place, truth):
    """Makes a new book of the flipped one: its figures are those of before, and every other is in the list."""
    content = place.read("book.tbk")
    done = place.run("book", "salvage", "book", "saved", "--json")
    if done.status not in (0, 1) or (done.status == 1 and not done.err.strip()):
        raise Broken(f"neither done nor refused: {done}")
    if place.read("book.tbk") != content:
        raise Broken(f"the damaged book has changed: {done}")
    if place.read("saved.tbk") is None:
        return
    place.must("book", "check", "saved", "--deep")
    lost = json.loads(done.out)["findings"]
    if (done.status == 0) != (not lost):
        raise Broken(f"the status does not tell whether anything is lost: {done}")
    saved = set(place.figures("saved").splitlines())
    was = set(truth.figures.splitlines())
    if saved - was:
        raise Broken(f"saved what is not so, {sorted(saved - was)[0]}: {done}")
    for line in was - saved:
        account, _, date = line.decode().split(",")[:3]
        if not any(str(each.get("account")) == account and each["first"] <= date <= each["last"] for each in lost):
            raise Broken(f"missing without a word, {line}: {done}")


def cares(workshop, truth, content):
    """Whatever the flipped book can still be backed up or compacted to holds what it held before."""
    place = workshop.copy()
    place.write("book.tbk", content)
    if runs(place, ("book", "backup", "book", "safe")).status == 0:
        place.must("book", "restore", "safe", "again")
        if place.figures("again") != truth.figures:
            raise Broken("the backup holds what is not so")
    if runs(place, ("book", "compact", "book")).status == 0 and place.figures("book") != truth.figures:
        raise Broken("compacting has changed the figures")


def changes(place, truth):
    """Changes the flipped book; figures that are told then are those that an unflipped one would have."""
    known = [truth.figures]
    for arguments, figures in zip(CHANGES, truth.changed):
        done = runs(place, arguments)
        if done.status == 0:
            known = [figures]
        seen = runs(place, LOOKS[0])
        if seen.status == 0 and seen.out not in known:
            raise Broken(f"the figures are wrong after: {done}")
        if done.status != 0:
            return


def trials(workshop, chance, count, only):
    truth = Truth(workshop)
    for number in range(count):
        offset, bit = chance.randrange(len(truth.content)), chance.randrange(8)
        text = f"{number}: bit {bit} of byte {offset} (page {offset // 16384 + 1}, byte {offset % 16384} of it)"
        if only in text:
            yield text, lambda o=offset, b=bit: try_one(workshop, truth, o, b)


def main():
    arguments = arguments_of(__doc__.splitlines()[0], double=False, trials=(1000, "how many bits are flipped"))
    print(f"seed {arguments.seed}")
    with scratch() as folder:
        workshop = Workshop(arguments.tallybook, folder, seed=arguments.seed, furnisher=furnish)
        run_trials(trials(workshop, random.Random(arguments.seed), round(arguments.trials * arguments.share),
                          arguments.only), arguments.without)


if __name__ == "__main__":
    main()
