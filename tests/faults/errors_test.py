#!/usr/bin/env python3
"""Fails each call that reaches a file, one after the other, in every command; nothing is lost, and nothing is silent.

  errors_test.py TALLYBOOK DOUBLE [--share S] [--only TEXT]

For each kind of call, n = 1, 2, ... until the command makes no n-th call of the kind; of more than 2 * MOST calls every
second, third, ... alone. A share below 1 takes every 1/S-th of these trials.
"""

import errno
import sys

sys.dont_write_bytecode = True
from trial import Broken, Workshop, all_deeds, arguments_of, looks, run_trials, scratch  # pylint: disable=wrong-import-position

# Which kinds are failed, with which error and for how long: "once", "on" from there, or "full" within the write.
FAULTS = (("open", errno.EACCES, "once"), ("read", errno.EIO, "once"), ("write", errno.EIO, "once"),
          ("write", errno.ENOSPC, "full"), ("sync", errno.EIO, "once"), ("truncate", errno.ENOSPC, "once"),
          ("rename", errno.EACCES, "once"), ("unlink", errno.EACCES, "once"), ("unlink", errno.EACCES, "on"),
          ("close", errno.EIO, "once"), ("link", errno.EPERM, "once"), ("map", errno.ENOMEM, "once"),
          ("folder", errno.EACCES, "once"), ("mode", errno.EPERM, "once"))


MOST = 10


def concerns(deed, only):
    """Whether a trial of the deed can hold the text, which may be that of one whole trial."""
    starts = [f"{deed.name}: {kind}" for kind, _, _ in FAULTS]
    return any(only in start or only.startswith(start + " ") for start in starts)


def trials(workshop, share, only):
    number = 0
    for deed in all_deeds() + looks():
        if not concerns(deed, only):
            continue
        expectation = workshop.expectation(deed)
        for kind, error, mode in FAULTS:
            calls = expectation.counts[kind]
            for call in range(1, calls + 1, max(1, calls // MOST)):
                number += 1
                if int(number * share) == int((number - 1) * share):
                    continue
                text = f"{deed.name}: {kind} {call} {errno.errorcode[error]} {mode}"
                if only in text:
                    yield text, lambda e=expectation, f=f"{kind} {call} {error} {mode}": try_one(workshop, e, f)


def try_one(workshop, expectation, fault):
    place = workshop.copy(expectation.deed)
    done = place.run(*expectation.deed.arguments, fault=fault)
    try:
        found = expectation.judge(place, done, killed=False)
    except Broken as broken:
        raise Broken(f"{broken}\n        {done}") from None
    return f"{'done' if done.status == 0 else 'refused'}{'' if done.hit else ' without a hit'}: {found}"


def main():
    arguments = arguments_of(__doc__.splitlines()[0])
    with scratch() as folder:
        workshop = Workshop(arguments.tallybook, folder, arguments.double)
        run_trials(trials(workshop, arguments.share, arguments.only), arguments.without)


if __name__ == "__main__":
    main()
