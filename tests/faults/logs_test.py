#!/usr/bin/env python3
"""Cuts and flips the log that a killed writer left: the book opens at a state that was committed, or is refused.

  logs_test.py TALLYBOOK DOUBLE [--trials N] [--share S] [--seed N] [--only TEXT]

The writers are killed before each of their writes in turn, so that every state they commit is known.
"""

import random
import shutil
import sys

sys.dont_write_bytecode = True
from trial import (Broken, Place, Workshop, all_deeds, arguments_of, run_trials,  # pylint: disable=wrong-import-position
                   scratch)

WRITERS = ("set", "import qdx", "import qdx --all", "journal undo")
BOOK = "office"
LOG = f"{BOOK}.tbk-wal"
DAY = "2003-12-24"


class Killed:
    """The places that a deed left when it was killed with a log, and every state of figures that it committed."""

    def __init__(self, workshop, deed):
        self.deed = deed
        self.places, self.states = [], set()
        expectation = workshop.expectation(deed)
        for call in range(1, expectation.counts["write"] + 1):
            self._kill(workshop, call)
        self.states |= {expectation.before.figures[BOOK], expectation.after.figures[BOOK]}
        if not self.places:
            raise Broken(f"{deed.name}: leaves no log wherever it is killed, so that this shows nothing")

    def _kill(self, workshop, call):
        place = workshop.copy(self.deed)
        place.run(*self.deed.arguments, fault=f"write {call} 0 kill")
        log = place.read(LOG)
        if log:
            kept = workshop.folder / f"killed {self.deed.name} {call}"
            shutil.copytree(place.folder, kept, symlinks=True)
            self.places.append((call, kept))
        self.states.add(place.figures(BOOK))


def damaged(log, chance):
    """A log with one kind of damage, and what was done to it. Some cuts are between the pages that it holds."""
    kind = chance.choice(("cut", "cut between pages", "flip", "flips"))
    at = chance.randrange(len(log))
    if kind == "cut":
        return log[:at], f"cut at {at}"
    if kind == "cut between pages":
        page = 16384 + 24
        at = 32 + at // page * page
        return log[:at], f"cut at {at}"
    content = bytearray(log)
    for _ in range(1 if kind == "flip" else 8):
        content[at] ^= 1 << chance.randrange(8)
        at = chance.randrange(len(log))
    return bytes(content), kind


def try_one(workshop, killed, kept, log, without_index):
    folder = workshop.folder / "place"
    shutil.rmtree(folder, ignore_errors=True)
    shutil.copytree(kept, folder, symlinks=True)
    place = Place(workshop.tallybook, folder, workshop.double)
    place.write(LOG, log)
    if without_index:
        (folder / f"{BOOK}.tbk-shm").unlink(missing_ok=True)
    return judge(place, killed)


def judge(place, killed):
    look = place.run("values", BOOK, "--format", "csv")
    if look.status not in (0, 1) or (look.status == 1 and not look.err.strip()):
        raise Broken(f"neither figures nor a reason: {look}")
    if look.status == 0 and look.out not in killed.states:
        raise Broken("figures that were never there")
    change = place.run("set", BOOK, "100", DAY, "1", "12.25")
    if change.status not in (0, 1) or (change.status == 1 and not change.err.strip()):
        raise Broken(f"neither done nor a reason: {change}")
    again = place.run("values", BOOK, "--format", "csv")
    if look.status == 0 and change.status != 0:
        raise Broken(f"the book can be read, and not be changed: {change}")
    # A log that was on its way into the book when it was killed, and is damaged then, leaves a damaged book. Its sound
    # parts can be changed, and the whole of it is refused as before.
    seen = again
    if look.status != 0 and again.status != 0:
        seen = place.run("values", BOOK, "--format", "csv", "--account", "100", "--from", DAY, "--to", DAY)
    if change.status == 0 and (seen.status != 0 or f",{DAY},1,12.25\n".encode() not in seen.out):
        raise Broken(f"the change is not there: {seen}")
    if look.status != 0:
        return "refused"
    states = sorted(killed.states)
    return "a committed state" if len(states) > 2 or look.out == states[0] else "another committed state"


def trials(workshop, chance, count, only):
    deeds = [deed for deed in all_deeds() if deed.name in WRITERS]
    killed = [Killed(workshop, deed) for deed in deeds]
    print("; ".join(f"{one.deed.name}: {len(one.places)} logs, {len(one.states)} states" for one in killed))
    for number in range(count):
        one = killed[number % len(killed)]
        call, kept = chance.choice(one.places)
        log, what = damaged((kept / LOG).read_bytes(), chance)
        without_index = chance.random() < 0.5
        text = f"{number}: {one.deed.name} killed at write {call}, log {what}{', no index' if without_index else ''}"
        if only in text:
            yield text, lambda o=one, k=kept, l=log, w=without_index: try_one(workshop, o, k, l, w)


def main():
    arguments = arguments_of(__doc__.splitlines()[0], trials=(400, "how many logs are damaged"))
    print(f"seed {arguments.seed}")
    with scratch() as folder:
        workshop = Workshop(arguments.tallybook, folder, arguments.double)
        run_trials(trials(workshop, random.Random(arguments.seed), round(arguments.trials * arguments.share),
                          arguments.only), arguments.without)


if __name__ == "__main__":
    main()
