#!/usr/bin/env python3
"""No import ends in silence: every status but 0 has its reason on standard error, with the file and the place.

  reasons_test.py TALLYBOOK [--whole] [--seed N] [--list]

Small good files of each form are cut at every byte, flipped, and changed by hand into what other programs and other
books write; the command is run over all of them. Without --whole a fixed part runs, a few hundred files. --list prints
each trial. A trial can be repeated: its name tells what was done to which file, and the seed is printed.

A reason is a line `tallybook: FILE...: WORDS`. It tells a place, "record 3" or "byte 1204", wherever the run had begun
to read. Standard error that holds nothing but the question asked beforehand is silence.

Files that may not be read, and a full disk under the report and the messages, are tried besides. The one takes an
unprivileged user, the other a mount of its own; what cannot be had is left out by name, and where nothing may be left out
(CI is "true") that is a failure.
"""

import argparse
import collections
import json
import os
import pathlib
import random
import re
import struct
import subprocess
import sys
import tempfile

TIMEOUT = 60
PART = 9  # without --whole every ninth file runs

BOOK = {
    "system_name": "Shop", "data_level": "day",
    "calendar": {"kind": "months", "first_date": "2003-01-01", "years": 2},
    "accounts": [{"number": 101, "code": "100", "description": "Front"},
                 {"number": 102, "code": "200", "description": "Garden"}],
    "fields": [{"number": 1, "description": "Sales"}, {"number": 5, "description": "Customers"},
               {"number": 7, "description": "Weather", "system": True}],
    "values": [{"account": account, "date": f"2003-01-{day:02}", "field": field, "value": day + field / 8}
               for account in (101, 102) for day in (2, 3) for field in (1, 5)],
}

CSV = b"1,6,2003,1,1\r\n100,1,700.5\r\n200,5,88\r\n,,\r\n1,7,2003\r\n100,1,12\r\n"
CSV_BY_NUMBER = b"1,6,2003,3,0\r\n101,1,700.5\r\n-1,,\r\n1,7,2003\r\n102,1,12\r\n"
DELIMITED = b"1/6/2003,100,1,5,5,2\r\n1/6/2003,200,1,7.25\r\n1/7/2003,100,1,9\r\n"


class Trial:
    """A file and the command that is to import it."""

    def __init__(self, name, kind, content, *options):
        self.name = name
        self.kind = kind  # qdx, csv or delimited
        self.content = content
        self.options = options


def cuts(name, kind, content, *options):
    return [Trial(f"{name} cut at {length}", kind, content[:length], *options) for length in range(len(content))]


def flips(name, kind, content, count, rng, *options):
    trials = []
    for _ in range(count):
        changed = bytearray(content)
        place, bit = rng.randrange(len(changed)), rng.randrange(8)
        changed[place] ^= 1 << bit
        trials.append(Trial(f"{name} byte {place} bit {bit} flipped", kind, bytes(changed), *options))
    return trials


def by_hand_qdx(good):
    """What stands at fixed places: the version at 9, the range at 33 and 39; the body holds dates of 2003."""
    def put(place, *numbers):
        changed = bytearray(good)
        struct.pack_into(f"<{len(numbers)}h", changed, place, *numbers)
        return bytes(changed)

    dates = [place for place in range(60, len(good) - 8)
             if struct.unpack_from("<3h", good, place) in ((1, 2, 2003), (1, 3, 2003))]
    found = [("first date before the book", put(33, 12, 31, 2002)), ("last date behind the book", put(39, 1, 1, 2005)),
             ("version 2", good[:9] + struct.pack("<f", 2.0) + good[13:]), ("empty", b""), ("text", b"no exchange file\n"),
             ("zeros", bytes(64)), ("unknown account", good.replace(b"\x03\x00100", b"\x03\x00199")),
             ("bytes behind the end", good + b"more")]
    for place in dates:
        for year in (1903, 2002, 2005, 9999, -5, 32000):
            found.append((f"year {year} at {place}", put(place + 4, year)))
        found.append((f"10,000 values at {place}", put(place + 6, 10_000)))
        found.append((f"field 99 at {place}", put(place + 8, 99)))
        found.append((f"field -1 at {place}", put(place + 8, -1)))
    return [Trial(f"exchange file: {name}", "qdx", content) for name, content in found]


def by_hand_text():
    lines = {
        "line feeds alone": DELIMITED.replace(b"\r\n", b"\n"), "mixed line ends": DELIMITED.replace(b"\r\n", b"\n", 1),
        "no end": DELIMITED.rstrip(), "empty": b"", "blank": b"\r\n", "a comment": b";closed\r\n" + DELIMITED,
        "a comment at the end": DELIMITED + b";the end\r\n", "an empty line": DELIMITED + b"\r\n" + DELIMITED,
        "a comment behind a value": DELIMITED.replace(b"7.25", b"7.25;note"),
        "a comment behind a code": DELIMITED.replace(b"200,", b"200;note,"),
        "a value that is none": DELIMITED.replace(b"7.25", b"many"), "a field that is none": DELIMITED.replace(b",5,2", b",x,2"),
        "field 0": DELIMITED.replace(b",5,2", b",0,2"), "field 99": DELIMITED.replace(b",5,2", b",99,2"),
        "a system field": DELIMITED.replace(b",5,2", b",7,2"), "a long code": DELIMITED.replace(b"200", b"200       x1234"),
        "an unknown code": DELIMITED.replace(b"200", b"999"), "a day beyond": DELIMITED.replace(b"1/7/2003", b"1/7/2009"),
        "a huge number": DELIMITED.replace(b"7.25", b"1e999"), "a huge date": DELIMITED.replace(b"1/7/2003", b"1/7/99999"),
        "NUL bytes": b"\0" * 40 + b"\r\n", "UTF-16": DELIMITED.decode().encode("utf-16"), "a semicolon file": DELIMITED.replace(b",", b";"),
        "a quote that stays open": DELIMITED.replace(b"200", b"\"200"),
    }
    fields = {
        "no header": b"100,1,700.5\r\n", "empty": b"", "math 0": CSV.replace(b"2003,1,1", b"2003,0,1"),
        "a period": b"-1,1,2003,1,1\r\n100,1,5\r\n", "a date beyond": CSV.replace(b"1,6,2003", b"1,6,2010"),
        "a later date beyond": CSV.replace(b"1,7,2003", b"1,7,2010"), "an unknown code": CSV.replace(b"200,", b"900,"),
        "field 0": CSV.replace(b"200,5", b"200,0"), "a long code": CSV.replace(b"200", b"200       x1234"),
        "a huge field": CSV.replace(b"200,5", b"200,99999999999"), "a date change cut": CSV[:CSV.index(b"1,7,2003") + 3],
        "line feeds alone": CSV.replace(b"\r\n", b"\n"), "by number, unknown": CSV_BY_NUMBER.replace(b"102", b"999"),
        "by number, a date beyond": CSV_BY_NUMBER.replace(b"1,7,2003", b"1,7,2010"), "huge header": b"99999,1,2003,1,1\r\n",
    }
    trials = []
    for asks in (("--yes",), ("--yes", "--keep-auditing"), ("--answer", "ok,yes,yes,yes,yes")):
        trials += [Trial(f"delimited file: {name} {asks[-1]}", "delimited", content, *asks) for name, content in lines.items()]
        trials += [Trial(f"comma-separated file: {name} {asks[-1]}", "csv", content, *asks)
                   for name, content in fields.items()]
    trials += [Trial("delimited file: nobody answers", "delimited", DELIMITED),
               Trial("comma-separated file: nobody answers", "csv", CSV),
               Trial("comma-separated file: cleared at a date beyond", "csv", CSV.replace(b"1,7,2003", b"1,7,2010"),
                     "--answer", "ok,yes", "--clear", "5")]
    return trials


class Folder:
    """A folder with a book, a definition for in.QDX, and the settings of nobody."""

    def __init__(self, tallybook, path):
        self.tallybook = str(pathlib.Path(tallybook).resolve())
        self.path = path
        self.log_file = path / ".home" / ".local" / "state" / "tallybook" / "tallybook.log"
        self.env = {"PATH": "/usr/bin:/bin", "HOME": str(path / ".home"), "LC_ALL": "C.UTF-8", "TZ": "UTC",
                    **{name: value for name, value in os.environ.items() if name in ("ASAN_OPTIONS", "UBSAN_OPTIONS", "LSAN_OPTIONS")}}
        (path / "book.json").write_text(json.dumps(BOOK), encoding="utf-8")
        self.must("new", "book", "--from", "book.json")
        self.must("export", "qdx", "book", "in.QDX", "--from", "2003-01-01", "--to", "2003-01-31")
        self.good = (path / "in.QDX").read_bytes()
        self.must("definition", "add", "book", "--title", "In", "--file", "in.QDX", "--after", "keep")
        self.kept = {name: (path / name).read_bytes() for name in ("book.tbk", "TBQDX1.book")}
        for copy in path.glob("TBQDBU*"):
            copy.unlink()

    def run(self, *arguments, within=(), become=None):
        return subprocess.run([*within, self.tallybook, *arguments], cwd=self.path, env=self.env, stdin=subprocess.DEVNULL,
                              capture_output=True, timeout=TIMEOUT, check=False, preexec_fn=become)

    def must(self, *arguments):
        done = self.run(*arguments)
        if done.returncode != 0:
            raise AssertionError(f"{arguments}: {done.stderr.decode()}")

    def reset(self):
        for name in os.listdir(self.path):
            if name.startswith(("in.", "book.tbk-", "report")):
                (self.path / name).unlink()
        for name, content in self.kept.items():
            (self.path / name).write_bytes(content)
        self.log_file.unlink(missing_ok=True)

    def log(self):
        return self.log_file.read_text(encoding="utf-8", errors="replace") if self.log_file.exists() else ""

    def messages(self):
        text = (self.path / "m.json").read_text(encoding="utf-8", errors="replace")
        return [json.loads(line) for line in text.splitlines()]


FILES = {"qdx": "in.QDX", "csv": "in.csv", "delimited": "in.txt"}
PLACE = re.compile(r"(record|byte|line|lines?) |(first|last) figure|its dates are|not imported|cancelled|no such file|is too short"
                   r"|does not exist|Cannot open|the audit found|errors? found by the audit|no valid header|period|Add, subtract")


def command_of(trial):
    if trial.kind == "qdx":
        return ["import", "qdx", "book", "--definition", "1", "--messages", "m.json", "--report", "report.txt", *trial.options]
    command = ["import", trial.kind, "book", FILES[trial.kind], "--messages", "m.json", *trial.options]
    return command + (["--math", "add"] if trial.kind == "delimited" else [])


def is_question(line):
    return line.startswith(("Tallybook: OK to ", "  OK/Cancel", "  Yes/No", "  Retry/Cancel"))


def judge(folder, trial, done):
    """What is wrong with the way a trial ended; empty where nothing is."""
    if done.returncode == 0:
        return ""
    if done.returncode not in (1, 2, 3):
        return "crash"
    lines = done.stderr.decode(errors="replace").splitlines()
    if not [line for line in lines if line and not is_question(line)]:
        return "silence"
    file = FILES[trial.kind]
    reasons = [line for line in lines if line.lower().startswith("tallybook: ") and file in line and not is_question(line)
               and " is called " not in line]
    if not reasons:
        return "no file"
    if not [line for line in reasons if PLACE.search(line)]:
        return "no place"
    words = reasons[-1][len("tallybook: "):]
    if words not in folder.log():
        return "not in the log"
    if not [box for box in folder.messages() if words in box["text"]]:
        return "not among the messages"
    if trial.kind == "qdx" and "QDX Import Report" not in (folder.path / "report.txt").read_text(encoding="utf-8"):
        return "no report"
    return ""


# --- Files that may not be read, and a full disk

NOBODY = 65534  # the overflow user of Linux (user_namespaces(7))


def become_nobody():
    os.setgroups([])
    os.setgid(NOBODY)
    os.setuid(NOBODY)


def unreadable_files(folder, skips):
    """What each import says of a file that its user may not read: (name, verdict, what was said)."""
    become = None
    if os.geteuid() == 0:
        become = become_nobody
        for path in [folder.path, *folder.path.rglob("*")]:
            os.chown(path, NOBODY, NOBODY)
        try:
            reached = folder.run("--version", become=become).returncode == 0
        except PermissionError:
            reached = False
        if not reached:
            skips.append("files that may not be read: the program is out of an unprivileged user's reach")
            return
    for kind, options in ("qdx", ()), ("csv", ("--yes",)), ("delimited", ("--yes",)):
        folder.reset()
        trial = Trial(f"{kind}: a file that may not be read", kind, b"", *options)
        file = folder.path / FILES[kind]
        file.write_bytes(folder.good if kind == "qdx" else CSV if kind == "csv" else DELIMITED)
        file.chmod(0)
        if become:
            for path in folder.path.iterdir():
                os.chown(path, NOBODY, NOBODY)
        done = folder.run(*command_of(trial), become=become)
        verdict = judge(folder, trial, done)
        if not verdict and b"ermission denied" not in done.stderr:
            verdict = "why is not told"
        file.chmod(0o600)
        yield trial.name, verdict or ("read" if done.returncode == 0 else ""), done


def figures(folder):
    return folder.run("values", "book", "--format", "csv").stdout


FULL = '''mount -t tmpfs -o size=16k tmpfs full && { head -c 1M /dev/zero > full/filler 2>/dev/null || true; } && exec "$@"'''


def full_disks(folder, skips):
    """What an import says whose report or messages find a full disk, and that no figure is lost or half there."""
    within = ["unshare", "--mount", "--propagation", "private", "sh", "-c", FULL, "sh"]
    (folder.path / "full").mkdir()
    try:
        mounts = os.geteuid() == 0 and folder.run("--version", within=within).returncode == 0
    except OSError:
        mounts = False
    if not mounts:
        skips.append("a full disk under report and messages: nothing can be mounted")
        return
    for kind in FILES:
        for what, option, file in ("the report", "--report", "full/r.txt"), ("the messages", "--messages", "full/m.json"):
            if what == "the report" and kind != "qdx":
                continue
            folder.reset()
            (folder.path / FILES[kind]).write_bytes({"qdx": folder.good, "csv": CSV, "delimited": DELIMITED}[kind])
            before = figures(folder)
            command = {"qdx": ("import", "qdx", "book", "--definition", "1"), "csv": ("import", "csv", "book", "in.csv", "--yes"),
                       "delimited": ("import", "delimited", "book", "in.txt", "--math", "add", "--yes")}[kind]
            done = folder.run(*command, option, file, within=within)
            words = done.stderr.decode()
            verdict = ""
            told = [line for line in words.splitlines() if line.startswith("tallybook: ") and file in line]
            shows_boxes = kind != "qdx"  # one that shows none has no message to lose
            if not told:
                verdict = "lost without a word" if what == "the report" or shows_boxes else ""
            elif done.returncode != 0 and file not in folder.log():
                verdict = "not in the log"
            whole = done.returncode == 0 or figures(folder) == before
            yield f"{kind}: {what} on a full disk", verdict or ("" if whole else "changed without a word"), done


def tell(name, verdict, done, lists):
    if verdict or lists:
        print(f"--- {name}: status {done.returncode}: {verdict or 'told'}\n{done.stderr.decode(errors='replace')}", end="")


def all_trials(folder, rng):
    trials = cuts("exchange file", "qdx", folder.good) + by_hand_qdx(folder.good) + by_hand_text()
    trials += cuts("comma-separated file", "csv", CSV, "--yes") + cuts("file by number", "csv", CSV_BY_NUMBER, "--yes")
    trials += cuts("delimited file", "delimited", DELIMITED, "--yes")
    trials += flips("exchange file", "qdx", folder.good, 600, rng, "--math", "replace")
    trials += flips("comma-separated file", "csv", CSV, 200, rng, "--answer", "ok")
    trials += flips("delimited file", "delimited", DELIMITED, 200, rng, "--answer", "ok")
    return trials


def main():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("tallybook")
    parser.add_argument("--whole", action="store_true")
    parser.add_argument("--list", action="store_true")
    parser.add_argument("--seed", type=int, default=8)
    options = parser.parse_args()
    print(f"seed {options.seed}")
    found = collections.Counter()
    statuses = collections.Counter()
    with tempfile.TemporaryDirectory() as name:
        folder = Folder(options.tallybook, pathlib.Path(name))
        trials = all_trials(folder, random.Random(options.seed))
        if not options.whole:
            by_hand = [trial for trial in trials if " cut " not in trial.name and " flipped" not in trial.name]
            trials = by_hand + [trial for trial in trials if trial not in by_hand][::PART]
        for trial in trials:
            folder.reset()
            (folder.path / FILES[trial.kind]).write_bytes(trial.content)
            done = folder.run(*command_of(trial))
            verdict = judge(folder, trial, done)
            statuses[done.returncode] += 1
            found[verdict] += 1
            tell(trial.name, verdict, done, options.list)
        skips = []
        for name, verdict, done in [*full_disks(folder, skips), *unreadable_files(folder, skips)]:
            statuses[done.returncode] += 1
            found[verdict] += 1
            tell(name, verdict, done, options.list)
    total = sum(statuses.values())
    print(f"{total} files; " + ", ".join(f"status {status}: {count}" for status, count in sorted(statuses.items())))
    bad = {verdict: count for verdict, count in found.items() if verdict}
    print(", ".join(f"{verdict}: {count}" for verdict, count in sorted(bad.items())) or "every reason was told")
    for skip in skips:
        print(f"SKIPPED {skip}")
    return 1 if bad or (skips and os.environ.get("CI") == "true") else 0


if __name__ == "__main__":
    sys.exit(main())
