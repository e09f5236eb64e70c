#!/usr/bin/env python3
"""Exchange files that are cut and flipped are harmless: little memory, no crash, a reason, and the figures come back.

  damage_test.py TALLYBOOK [--trials N] [--share S] [--seed N] [--megabytes N]

Each damaged file is looked into by `qdx info`, `dump`, `check` and `diff`, and is imported.
"""

import random
import sys

sys.dont_write_bytecode = True
from trial import Broken, Workshop, arguments_of, run_trials, scratch  # pylint: disable=wrong-import-position

TELLING = (("qdx", "check"), ("qdx", "diff"))  # these tell what they found on standard output
KINDS = ("cut", "flip", "flips", "stretch", "number")
COMMANDS = (("qdx", "info", "bad.QDX"), ("qdx", "dump", "bad.QDX"), ("qdx", "check", "bad.QDX"),
            ("qdx", "diff", "bad.QDX", "b.QDX"),
            ("import", "qdx", "office", "--definition", "1", "--math", "replace", "--yes"))


def damaged(content, kind, chance):
    """The content with one kind of damage, and what was done to it."""
    content = bytearray(content)
    # The header is where counts and sizes stand, so half of the damage goes there.
    at = chance.randrange(min(len(content), 2048) if chance.random() < 0.5 else len(content))
    if kind == "cut":
        del content[at:]
    elif kind == "flip":
        content[at] ^= 1 << chance.randrange(8)
    elif kind == "flips":
        for _ in range(20):
            content[chance.randrange(len(content))] ^= 1 << chance.randrange(8)
    elif kind == "stretch":
        content[at:at] = bytes([chance.choice((0, 0x7F, 0x80, 0xFF))]) * chance.randrange(1, 5000)
    else:
        content[at:at + 4] = chance.choice((b"\xff\x7f", b"\xff\xff\xff\x7f", b"\x00\x80", b"\xff\xff", b"\x00\x00"))
    return bytes(content), f"{kind} at {at}"


def run(place, arguments, megabytes):
    """Runs a command and holds that it ends well and within the memory that it may take."""
    done, peak = place.measure(*arguments)
    if megabytes and peak > megabytes:
        raise Broken(f"took {peak} megabytes: {done}")
    if done.status < 0:
        raise Broken(f"ended by signal {-done.status}: {done}")
    if done.status not in (0, 1):
        raise Broken(f"where only 0 and 1 can be: {done}")
    is_told = done.err.strip() or (arguments[:2] in TELLING and done.out)
    if done.status == 1 and not is_told:
        raise Broken(f"status 1 without a word: {done}")
    return done


def try_one(workshop, content, megabytes):
    place = workshop.copy()
    place.write("bad.QDX", content)
    place.must("definition", "edit", "office", "1", "--file", "bad.QDX")
    before = place.figures("office")
    statuses = [run(place, arguments, megabytes).status for arguments in COMMANDS]
    if place.read("bad.QDX") != content:
        raise Broken("the exchange file has changed")
    if place.figures("office") != before:
        place.must("journal", "undo", "office")
        if place.figures("office") != before:
            raise Broken("the journal does not take the figures back")
    return "imported" if statuses[-1] == 0 else "refused"


def trials(workshop, chance, count, megabytes, only):
    good = workshop.model.read("a.QDX")
    for number in range(count):
        content, text = damaged(good, KINDS[number % len(KINDS)], chance)
        if only in text:
            yield f"{number}: {text}", lambda c=content: try_one(workshop, c, megabytes)


def main():
    arguments = arguments_of(__doc__.splitlines()[0], double=False, trials=(500, "how many damaged files"),
                             megabytes=(64, "the most memory that a command may take; 0 for any"))
    print(f"seed {arguments.seed}")
    with scratch() as folder:
        workshop = Workshop(arguments.tallybook, folder)
        run_trials(trials(workshop, random.Random(arguments.seed), round(arguments.trials * arguments.share),
                          arguments.megabytes, arguments.only), arguments.without)


if __name__ == "__main__":
    main()
