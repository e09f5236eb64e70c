#!/usr/bin/env python3
"""Runs one case of the command `tallybook` and compares what it prints with what the case says.

  run_case.py TALLYBOOK CASE [--update]

A case is a text file. Lines before the first file or command are its title. It holds files and commands, in order:

  == file NAME            the following lines, up to a line `== end`, are written to NAME
  $ COMMAND               run by the shell in an empty folder, with `tallybook` on its path
  > ...                   a further line of the command
  < ...                   a line for its standard input
  ! ...                   a line expected on standard error
  ? N                     the expected exit status; without this line it is 0
  anything else           a line expected on standard output

A case may also be a page of Markdown: its blocks fenced as ```console are run, all in one folder, and compared.

The clock is fixed, the time zone is UTC, and home and settings lie in the folder, so that output is the same
everywhere. The text of the folder's own path is shown as {DIR}, and the login name of whoever runs the case as {USER}
where the command tells who ran something. With --update the case is rewritten with what was
printed: read the change like code.
"""

import argparse
import difflib
import os
import pathlib
import pwd
import re
import subprocess
import sys
import tempfile

CLOCK = "1709294400"  # 2024-03-01 12:00:00 UTC
TIMEOUT = 120
USER = pwd.getpwuid(os.geteuid()).pw_name


class Command:
    def __init__(self, line):
        self.lines = [line]
        self.input = []
        self.expected = []

    def text(self):
        return "\n".join([self.lines[0][2:]] + [line[2:] for line in self.lines[1:]])


class File:
    def __init__(self, name):
        self.name = name
        self.lines = []


def parse(lines):
    title, steps = [], []
    file = None
    for line in lines:
        if file is not None:
            if line == "== end":
                file = None
            else:
                file.lines.append(line)
        elif line.startswith("== file "):
            file = File(line[len("== file "):])
            steps.append(file)
        elif line.startswith("$ "):
            steps.append(Command(line))
        elif not steps:
            title.append(line)
        elif isinstance(steps[-1], File):
            if line:
                raise SystemExit(f"a line stands behind a file and before a command: {line!r}")
        elif line.startswith("> ") and not steps[-1].expected:
            steps[-1].lines.append(line)
        elif line.startswith("< ") and not steps[-1].expected:
            steps[-1].input.append(line)
        else:
            steps[-1].expected.append(line)
    return title, steps


def environment(folder, tallybook):
    home = folder / ".home"
    leaks = pathlib.Path(__file__).resolve().with_name("leaks.txt")
    return {
        # Of the sanitizers; other builds do not look at them.
        **{name: value for name, value in os.environ.items() if name in ("ASAN_OPTIONS", "UBSAN_OPTIONS")},
        "LSAN_OPTIONS": f"suppressions={leaks}:print_suppressions=0",
        "PATH": f"{pathlib.Path(tallybook).resolve().parent}:/usr/local/bin:/usr/bin:/bin",
        "HOME": str(home),
        "XDG_CONFIG_HOME": str(home / "config"),
        "XDG_STATE_HOME": str(home / "state"),
        "SOURCE_DATE_EPOCH": CLOCK,
        "TZ": "UTC",
        "LC_ALL": "C.UTF-8",
    }


# Where the command tells who: in JSON, on a line of its own, in a sentence, and between the commas of CSV.
WHO = re.compile("|".join(before + re.escape(USER) + after for before, after in (
    (r'(?<="who": ")', r'(?=")'), (r"(?<=^  Who        )", "$"), (r"(?<= by )", r"(?= )"), (r"(?<=,)", r"(?=,)"))))


def run(command, folder, env):
    done = subprocess.run(["bash", "-c", command.text()], cwd=folder, env=env, timeout=TIMEOUT,
                          input="\n".join([line[2:] for line in command.input] + [""]) if command.input else "",
                          capture_output=True, text=True, encoding="utf-8", errors="backslashreplace", check=False)
    shown = done.stdout.splitlines() + ["! " + line for line in done.stderr.splitlines()]
    if done.returncode != 0:
        shown.append(f"? {done.returncode}")
    return [WHO.sub("{USER}", line.replace(str(folder), "{DIR}").rstrip()) for line in shown]


def render(title, steps):
    lines = list(title)
    for step in steps:
        if isinstance(step, File):
            lines += ["== file " + step.name] + step.lines + ["== end"]
        else:
            lines += step.lines + step.input + step.expected
    return lines


def without_trailing_blanks(lines):
    while lines and not lines[-1]:
        lines = lines[:-1]
    return lines


def pieces(text, is_page):
    """The text as pairs of a flag, true for what is to be run, and its lines."""
    if not is_page:
        return [(True, text.splitlines())]
    split = [(False, [])]
    for line in text.splitlines():
        if split[-1][0] and line == "```":
            split.append((False, []))
        split[-1][1].append(line)
        if line == "```console":
            split.append((True, []))
    return split


def run_piece(lines, folder, env):
    title, steps = parse(lines)
    for step in steps:
        if isinstance(step, File):
            (folder / step.name).write_text("\n".join(step.lines) + "\n", encoding="utf-8")
        else:
            # A blank line between steps is for the reader of the case.
            step.expected = without_trailing_blanks(run(step, folder, env)) + [""]
    return without_trailing_blanks(render(title, steps))


def main():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("tallybook")
    parser.add_argument("case")
    parser.add_argument("--update", action="store_true")
    arguments = parser.parse_args()

    path = pathlib.Path(arguments.case)
    text = path.read_text(encoding="utf-8")
    parts = pieces(text, path.suffix == ".md")
    if not any(line.startswith("$ ") for to_run, lines in parts if to_run for line in lines):
        raise SystemExit(f"{path}: the case runs nothing")
    with tempfile.TemporaryDirectory(prefix="tallybook-case-") as name:
        folder = pathlib.Path(name).resolve()
        env = environment(folder, arguments.tallybook)
        after = []
        for to_run, lines in parts:
            after += run_piece(lines, folder, env) if to_run else lines
    if arguments.update:
        path.write_text("\n".join(after) + "\n", encoding="utf-8")
        return
    # Blank lines are for the reader of the case and are not compared.
    before = text.splitlines()
    if [line for line in before if line] == [line for line in after if line]:
        return
    sys.stdout.writelines(line + "\n" for line in difflib.unified_diff(before, after, "expected", "printed", lineterm=""))
    raise SystemExit(1)


if __name__ == "__main__":
    main()
