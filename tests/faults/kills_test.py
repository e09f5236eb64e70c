#!/usr/bin/env python3
"""Kills every command that writes, at random moments: figures and files are old or new, and the next command works.

  kills_test.py TALLYBOOK DOUBLE [--kills N] [--share S] [--seed N] [--only TEXT]

Half of the kills come right before a call that reaches a file, drawn from all of them, so that every moment between two
changes on the disk can be met; the other half come after a random time.
"""

import random
import signal
import sys
import time

sys.dont_write_bytecode = True
from trial import (TIMEOUT, Broken, Done, Workshop, all_deeds, arguments_of, run_trials,  # pylint: disable=wrong-import-position
                   scratch)


def trials(workshop, chance, kills, only):
    deeds = [deed for deed in all_deeds() if only in deed.name]
    expectations = {}
    for number in range(kills):
        deed = deeds[number % len(deeds)]
        if deed.name not in expectations:
            expectations[deed.name] = workshop.expectation(deed)
        expectation = expectations[deed.name]
        if number // len(deeds) % 2 == 0:
            call = chance.randint(1, expectation.counts["any"])
            yield f"{deed.name}: kill at call {call}", lambda e=expectation, c=call: kill_at_call(workshop, e, c)
        else:
            delay = chance.uniform(0, 1.2) * expectation.seconds
            yield f"{deed.name}: kill after {delay:.4f} s", lambda e=expectation, d=delay: kill_after(workshop, e, d)


def judge(expectation, place, done):
    try:
        found = expectation.judge(place, done, killed=done.status == -signal.SIGKILL)
    except Broken as broken:
        raise Broken(f"{broken}\n        {done}") from None
    return ("killed: " if done.status == -signal.SIGKILL else "done before: ") + found


def kill_at_call(workshop, expectation, call):
    place = workshop.copy(expectation.deed)
    return judge(expectation, place, place.run(*expectation.deed.arguments, fault=f"any {call} 0 kill"))


def kill_after(workshop, expectation, delay):
    place = workshop.copy(expectation.deed)
    process = place.start(*expectation.deed.arguments)
    time.sleep(delay)
    process.send_signal(signal.SIGKILL)
    out, err = process.communicate(timeout=TIMEOUT)
    return judge(expectation, place,
                 Done(expectation.deed.arguments, process.returncode, out, err.decode(errors="replace")))


def main():
    arguments = arguments_of(__doc__.splitlines()[0], kills=(500, "how many kills"))
    print(f"seed {arguments.seed}")
    with scratch() as folder:
        workshop = Workshop(arguments.tallybook, folder, arguments.double)
        kills = round(arguments.kills * arguments.share)
        run_trials(trials(workshop, random.Random(arguments.seed), kills, arguments.only), arguments.without)


if __name__ == "__main__":
    main()
