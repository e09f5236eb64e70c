"""Runs clang-tidy over the project's own sources and remembers which of them passed.

A source is remembered by a digest of its preprocessed text, its compile command and the checks' configuration: as long
as these stay, so does the verdict, in whatever folder the project stands. Only verdicts without findings are kept.
"""

import argparse
import concurrent.futures
import hashlib
import json
import os
import pathlib
import re
import shlex
import subprocess
import sys
import tempfile
import time

LINTED_FOLDERS = ("src", "tallybook")
# In a text that was made to compile several sources at once; that it includes sources is its purpose.
INCLUDED_SOURCE = re.compile(r'^#include "(.+)"$', re.MULTILINE)
CHECKS_OF_MADE_TEXTS = ["--checks=-bugprone-suspicious-include"]
# The compile commands are GCC's: warnings that only GCC knows are no news to clang.
SCOPE_SOURCE = pathlib.Path(__file__).with_name("lint_scope.cpp")
EXTRA_ARGUMENTS = ["--extra-arg=-Wno-unknown-warning-option", "--extra-arg=-Wno-ignored-optimization-argument"]


def main():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("--commands", type=pathlib.Path, required=True, help="folder of compile_commands.json")
    parser.add_argument("--remember", type=pathlib.Path, required=True, help="folder of the verdicts kept")
    parser.add_argument("--jobs", type=int, default=2)
    parser.add_argument("files", nargs="*", help="sources to look at; without any, all of them")
    options = parser.parse_args()

    root = pathlib.Path.cwd().resolve()
    try:
        jobs = sources(options.commands, root, [pathlib.Path(name).resolve() for name in options.files])
    except LookupError as error:
        print(f"lint: {error}", file=sys.stderr)
        return 2
    options.remember.mkdir(parents=True, exist_ok=True)
    configuration = (root / ".clang-tidy").read_bytes() + version() + SCOPE_SOURCE.read_bytes()
    try:
        scope = scope_plugin(options.remember)
    except subprocess.CalledProcessError as error:
        print(f"lint: {SCOPE_SOURCE} cannot be compiled\n{error.stderr}", file=sys.stderr)
        return 2

    began = time.monotonic()
    failed, checked, told = False, 0, set()
    with concurrent.futures.ThreadPoolExecutor(options.jobs) as pool:
        work = [pool.submit(lint, job, root, scope, options, configuration) for job in jobs]
        for job, result in zip(jobs, work):
            fresh, text = result.result()
            checked += len(job["holds"]) if fresh else 0
            if text is not None:
                failed = True
                for finding in findings(text):
                    # A header's finding comes with every source that includes it.
                    if finding not in told:
                        told.add(finding)
                        print(finding)
    print(f"lint: {sum(len(job['holds']) for job in jobs)} sources, {checked} looked at, {len(told)} findings, "
          f"{time.monotonic() - began:.0f} s")
    return 1 if failed else 0


def sources(commands, root, wanted):
    """The compile commands that hold sources of the linted folders, or the files asked for; LookupError if a file has
    none."""
    entries = []
    for entry in json.loads((commands / "compile_commands.json").read_text()):
        path = (pathlib.Path(entry["directory"]) / entry["file"]).resolve()
        made = path.is_relative_to(commands.resolve()) and path.name.startswith("unity_")
        holds = {pathlib.Path(name) for name in INCLUDED_SOURCE.findall(path.read_text())} if made else {path}
        holds = {each for each in holds if each.is_relative_to(root) and each.relative_to(root).parts[0] in LINTED_FOLDERS}
        if holds:
            entries.append(dict(entry, file=str(path), made=made, holds=holds))
    for path in wanted:
        if not any(path in entry["holds"] for entry in entries):
            raise LookupError(f"{path}: no compile command in {commands}; sources of {LINTED_FOLDERS} are linted")
    if not entries:
        raise LookupError(f"{commands}/compile_commands.json names no source of {LINTED_FOLDERS}")
    chosen = [entry for entry in entries if not wanted or entry["holds"].intersection(wanted)]
    # The longest first, so that no job is left alone at the end.
    return sorted(chosen, key=lambda entry: (-len(entry["holds"]), entry["file"]))


def findings(text):
    """clang-tidy's output cut before each line that begins a finding."""
    parts = re.split(r"^(?=\S+:\d+:\d+: (?:error|warning): )", text, flags=re.MULTILINE)
    return [part.rstrip() for part in parts if part.strip()]


def version():
    return subprocess.run(["clang-tidy", "--version"], check=True, capture_output=True).stdout


def scope_plugin(folder):
    """The compiled plugin, made where it or the compiler changed."""
    resources = pathlib.Path(subprocess.run(["clang", "-print-resource-dir"], check=True, capture_output=True,
                                            text=True).stdout.strip())
    plugin = folder / f"scope-{hashlib.sha256(SCOPE_SOURCE.read_bytes() + version()).hexdigest()}.so"
    if not plugin.exists():
        # Another run may be making it too: each makes its own, and the last name given counts.
        with tempfile.TemporaryDirectory(dir=folder) as apart:
            made = pathlib.Path(apart) / "scope.so"
            # <prefix>/lib/clang/<version>, with the headers in <prefix>/include.
            subprocess.run(["c++", "-std=gnu++17", "-O1", "-fPIC", "-shared", "-isystem", resources.parents[2] / "include",
                            SCOPE_SOURCE, "-o", made], check=True, capture_output=True, text=True)
            os.replace(made, plugin)
    return plugin


def lint(entry, root, scope, options, configuration):
    """(whether it was looked at, its findings or None)."""
    verdict = options.remember / digest(entry, root, configuration)
    if verdict.exists():
        verdict.touch()
        return False, None
    checks = CHECKS_OF_MADE_TEXTS if entry["made"] else []
    run = subprocess.run(["clang-tidy", f"--load={scope}", "--quiet", "-p", str(options.commands), *EXTRA_ARGUMENTS,
                          *checks, entry["file"]], capture_output=True, text=True)
    if run.returncode == 0:
        verdict.touch()
        return True, None
    # Without a finding on its standard output clang-tidy itself failed, and says why on the other.
    return True, run.stdout if run.stdout.strip() else run.stderr


def digest(entry, root, configuration):
    arguments = shlex.split(entry["command"])
    # The text as the compiler sees it, comments kept: a NOLINT is one.
    output = arguments.index("-o")
    preprocess = arguments[:output] + arguments[output + 2:] + ["-E", "-C"]
    text = subprocess.run(preprocess, cwd=entry["directory"], capture_output=True).stdout
    made_of = b"\0".join([configuration, entry["command"].encode(), text])
    return hashlib.sha256(made_of.replace(str(root).encode(), b".")).hexdigest()


if __name__ == "__main__":
    sys.exit(main())
