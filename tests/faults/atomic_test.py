#!/usr/bin/env python3
"""Kills atomic batches, imports, undos and previews at random moments: the journal tells the truth, and undo is exact.

  atomic_test.py TALLYBOOK DOUBLE [--kills N] [--share S] [--seed N] [--only TEXT]

Each of the four is killed as often. An atomic batch leaves all of its figures and files or none; what a killed one has left
to do with files is told by its entries, and done by the next command that changes the book. An import that is killed can be
taken back, an undo is whole or not begun, and a preview leaves nothing. Half of the kills come right before a call that
reaches a file, drawn from all of them, from those that delete or rename, or from those that hand bytes to the disk; the
other half come after a random time.

Besides: two batches at once, and files in a folder that lets none of them go.
"""

import json
import os
import pathlib
import random
import signal
import sys
import time

sys.dont_write_bytecode = True
from trial import (TIMEOUT, Broken, Deed, Done, Skips, Workshop, arguments_of, becoming,  # pylint: disable=wrong-import-position
                   describe, give, run_trials, scratch)

CODES = [str(code) for code in range(100, 140)]
BATCH = ("import", "qdx", "office", "--all", "--atomic", "--again", "--yes")
PROBE = ("set", "office", "100", "2006-12-31", "1")  # a figure of no file
UNPRIVILEGED = 65534
KINDS = ("any", "rename", "unlink", "sync")  # of calls; files are deleted and renamed by few of them


def furnish(place, seed):
    """A book with figures, and four exchange files; the cache is too small for them, so that imports write on their way."""
    chance = random.Random(seed)
    settings = "[Files]\nCacheMiB=1\n"
    place.write(".home/config/tallybook/tallybook.ini", settings)
    values = [(100 + account, f"{year}-{month:02}-{day:02}", field, round(chance.uniform(-999, 999), 2))
              for account in range(len(CODES)) for year in range(2003, 2006) for month in range(1, 13)
              for day in range(1, 29) for field in range(1, 4) if chance.random() < 0.6]
    place.write("north.json", describe("North Shop", CODES, values))
    place.write("office.json", describe("Head Office", CODES, chance.sample(values, len(values) // 3)))
    place.must("new", "north", "--from", "north.json")
    place.must("new", "office", "--from", "office.json")
    place.must(*PROBE, "1")
    for name, first, last in (("a", "2003-01-01", "2003-12-31"), ("b1", "2004-01-01", "2004-06-30"),
                              ("b2", "2004-04-01", "2004-12-31"), ("c", "2005-01-01", "2005-12-31")):
        place.must("export", "qdx", "north", f"{name}.QDX", "--from", first, "--to", last)
    place.write("b1.XDQ", "an older file")
    for title, pattern, after in (("a", "a.QDX", "delete"), ("b", "b?.QDX", "rename"), ("c", "c.QDX", "rename")):
        place.must("definition", "add", "office", "--title", f"From {title}", "--file", pattern, "--after", after)


def deeds():
    first = ("import", "qdx", "office", "--definition", "1", "--math", "add", "--again", "--yes")
    return {
        "batch": Deed("batch", BATCH),
        "import": Deed("import", first),
        "undo": Deed("undo", ("journal", "undo", "office"), prepare=lambda place: place.must(*BATCH)),
        "preview": Deed("preview", ("import", "qdx", "office", "--all", "--again", "--yes", "--preview")),
    }


class Held:
    """What a place holds that a trial asks about."""

    def __init__(self, place):
        self.figures = place.figures("office")
        self.entries = [{key: entry[key] for key in ("entry", "command", "what_ran", "state")} for entry in
                        json.loads(place.must("journal", "list", "office", "--json").out)]
        self.files = {path.name: path.read_bytes() for path in place.folder.glob("*.?D?")}


class Trials:
    """The deeds with what they give where nothing disturbs them."""

    def __init__(self, workshop):
        self.workshop = workshop
        self.deeds = deeds()
        self.before, self.after, self.seconds, self.counts = {}, {}, {}, {}
        for name, deed in self.deeds.items():
            place = workshop.copy(deed)
            self.before[name] = Held(place)
            began = time.monotonic()
            place.must(*deed.arguments)
            self.seconds[name] = time.monotonic() - began
            self.after[name] = Held(place)
            place = workshop.copy(deed)
            place.environment()
            place.run(*deed.arguments, fault=" ")
            self.counts[name] = {kind: calls for kind, calls in place.double.counts().items() if calls > 0}
        if self.before["batch"].figures == self.after["batch"].figures:
            raise Broken("the batch changes no figure, so that it shows nothing")
        if set(self.after["batch"].files) != {"b1.XDQ", "b2.XDQ", "c.XDQ"}:
            raise Broken(f"the batch leaves other files: {set(self.after['batch'].files)}")

    def kill_at_call(self, name, call):
        place = self.workshop.copy(self.deeds[name])
        return self.judge(name, place, place.run(*self.deeds[name].arguments, fault=f"{call} 0 kill"))

    def kill_after(self, name, delay):
        place = self.workshop.copy(self.deeds[name])
        process = place.start(*self.deeds[name].arguments)
        time.sleep(delay)
        process.send_signal(signal.SIGKILL)
        out, err = process.communicate(timeout=TIMEOUT)
        return self.judge(name, place, Done(self.deeds[name].arguments, process.returncode, out,
                                            err.decode(errors="replace")))

    def judge(self, name, place, done):
        try:
            if done.status not in (0, -signal.SIGKILL):
                raise Broken("it was killed or is done, and there is no third")
            found = getattr(self, f"judge_{name}")(place)
            if json.loads(place.must("book", "check", "office", "--deep", "--json").out)["findings"]:
                raise Broken("the book is damaged")
        except Broken as broken:
            raise Broken(f"{broken}\n        {done}") from None
        return f"{name} {'killed' if done.status else 'done before'}: {found}"

    def judge_batch(self, place):
        """All of it or none, in figures, journal and files; the next change does what is left to do with files."""
        before, after, now = self.before["batch"], self.after["batch"], Held(place)
        if now.figures not in (before.figures, after.figures):
            raise Broken("the figures are neither those from before nor those from after")
        held = before if now.figures == before.figures else after
        if now.entries != held.entries:
            raise Broken(f"the journal tells of other figures: {now.entries}")
        if held is before and now.files != before.files:
            raise Broken("no figure stays, and files do")
        lost = set(before.files.values()) - {b"an older file"} - set(now.files.values())
        if lost - {before.files["a.QDX"]}:
            raise Broken("the bytes of a file are gone")
        left = [name for name in now.files if name.endswith(".QDX")] if held is after else []
        self.judge_due(place, now, left)
        told = place.must(*PROBE, "2").err
        if Held(place).files != held.files:
            raise Broken(f"the next change leaves other files: {set(Held(place).files)}\n{told}")
        for name in left:
            if f"/{name} is " not in told:
                raise Broken(f"{name} is disposed of without a word: {told}")
        if place.must(*PROBE, "3").err:
            raise Broken("what has been done is told again")
        self.undo(place, before, 3 if held is after else 2)
        if held is before:
            return "nothing of it"
        return f"all of it, {'files were left to the next' if left else 'files as well'}"

    @staticmethod
    def judge_due(place, now, left):
        """The entries tell the files that are still there; one that was taken away a moment ago may be told as well."""
        shown = [json.loads(place.must("journal", "show", "office", entry["entry"], "--json").out) for entry in now.entries]
        due = {name for entry in shown for one in entry.get("due", [])
               if (name := pathlib.Path(one["file"]).name).endswith(".QDX")}
        if set(left) - due or len(due) > len(left) + 1:
            raise Broken(f"still due is {left}, and the journal tells {due}")

    @staticmethod
    def undo(place, before, commands):
        for _ in range(commands):
            place.must("journal", "undo", "office")
        if place.figures("office") != before.figures:
            raise Broken("undone, the figures are not those from before")

    def judge_import(self, place):
        """Whatever is there is in the journal, and goes."""
        before, now = self.before["import"], Held(place)
        new = now.entries[len(before.entries):]
        if now.figures != before.figures and not new:
            raise Broken("the figures changed without a journal entry")
        if now.files != before.files and (not new or new[-1]["state"] != "done"):
            raise Broken("the file is gone, and its import is not done")
        self.undo(place, before, len(new))
        return new[-1]["state"] if new else "nothing"

    def judge_undo(self, place):
        """Whole or not begun."""
        before, after, now = self.before["undo"], self.after["undo"], Held(place)
        if now.figures == after.figures and now.entries == after.entries:
            return "undone"
        if now.figures != before.figures or now.entries != before.entries:
            raise Broken("the undo is neither whole nor not begun")
        place.must("journal", "undo", "office")
        if place.figures("office") != after.figures:
            raise Broken("done again, the undo gives other figures")
        return "not begun"

    def judge_preview(self, place):
        """Not a byte, but for the empty log of a database that nobody has open, which the next look takes away."""
        model = self.workshop.model.folder
        place.must("info", "office")
        for path in model.rglob("*"):
            name = path.relative_to(model)
            if path.is_file() and name.parts[0] != ".home" and place.read(name) != path.read_bytes():
                raise Broken(f"{name} is not as it was")
        left = {name for name in place.names() if not name.startswith(".tmp")} - {
            str(path.relative_to(model)) for path in model.rglob("*")}
        if left:
            raise Broken(f"left behind: {left}")
        return "nothing left"


def two_at_once(trials):
    """The second is refused while the first is under way, and a look sees the state before; then the first goes on."""
    place = trials.workshop.copy(trials.deeds["batch"])
    early = trials.counts["batch"]["write"] // 4  # the log that is kept, and the book behind it, come later
    first = place.start(*BATCH, fault=f"write {early} 0 stop")
    os.waitid(os.P_PID, first.pid, os.WSTOPPED | os.WEXITED | os.WNOWAIT)
    try:
        second = place.run(*BATCH)
        now = Held(place)
    finally:
        first.send_signal(signal.SIGCONT)
        first.communicate(timeout=TIMEOUT)
    if second.status != 1 or "open for writing elsewhere" not in second.err:
        return _fail(f"the second was to be refused: {second}")
    if now.figures != trials.before["batch"].figures or now.files != trials.before["batch"].files:
        return _fail("the second, or a look, changed what the first had not kept yet")
    if first.returncode != 0 or place.figures("office") != trials.after["batch"].figures:
        return _fail("the first did not go on")
    return "one at a time"


def _fail(words):
    raise Broken(words)


def in_a_closed_folder(trials, skips):
    """Files in a folder that lets none of them go: they are imported, keep their names, and that is told; nothing is due."""
    if os.geteuid() != 0:
        skips.add("a folder that lets no file go", "not the administrator")
        return "skipped"
    place = trials.workshop.copy(trials.deeds["batch"])
    place.environment()
    inputs = place.folder / "in"
    inputs.mkdir()
    for name in ("a", "b1", "b2", "c"):
        (place.folder / f"{name}.QDX").rename(inputs / f"{name}.QDX")
    for number, pattern in ((1, "in/a.QDX"), (2, "in/b?.QDX"), (3, "in/c.QDX")):
        place.must("definition", "edit", "office", number, "--file", pattern)
    place.folder.parent.chmod(0o755)
    give(place.folder, UNPRIVILEGED)
    inputs.chmod(0o555)
    done = place.run(*BATCH, within=becoming(UNPRIVILEGED))
    if done.status != 0 or done.err.count("keeps its name") != 4:
        raise Broken(f"was to be done, with four files that stay: {done}")
    if len(list(inputs.iterdir())) != 4 or place.figures("office") != trials.after["batch"].figures:
        raise Broken("figures or files are others than they were to be")
    if "still to be" in place.must(*PROBE, "2", within=becoming(UNPRIVILEGED)).err:
        raise Broken("what cannot be is still due")
    return "kept, and told"


def all_trials(trials, chance, kills, only, skips):
    for number in range(kills):
        name = tuple(trials.deeds)[number % len(trials.deeds)]
        if number // len(trials.deeds) % 2 == 0:
            kinds = [kind for kind in KINDS if kind in trials.counts[name]]
            kind = chance.choice(kinds)
            call = f"{kind} {chance.randint(1, trials.counts[name][kind])}"
            text, trial = f"{name}: kill at {call}", lambda n=name, c=call: trials.kill_at_call(n, c)
        else:
            delay = chance.uniform(0, 1.2) * trials.seconds[name]
            text, trial = f"{name}: kill after {delay:.4f} s", lambda n=name, d=delay: trials.kill_after(n, d)
        if only in text:
            yield text, trial
    if only in "two batches at once":
        yield "two batches at once", lambda: two_at_once(trials)
    if only in "files in a closed folder":
        yield "files in a closed folder", lambda: in_a_closed_folder(trials, skips)


def main():
    arguments = arguments_of(__doc__.splitlines()[0], kills=(800, "how many kills, all four together"))
    print(f"seed {arguments.seed}")
    skips = Skips()
    with scratch() as folder:
        pathlib.Path(folder).chmod(0o755)
        trials = Trials(Workshop(arguments.tallybook, folder, arguments.double, furnisher=furnish))
        kills = round(arguments.kills * arguments.share)
        run_trials(all_trials(trials, random.Random(arguments.seed), kills, arguments.only, skips), arguments.without)
    skips.close()


if __name__ == "__main__":
    main()
