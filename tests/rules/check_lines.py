"""Checks that the command says every line through tallybook/cli/Lines.h, which makes names harmless to a terminal.

    check_lines.py ROOT      exit status 0: kept; 1: broken, one line for each place, "file:line: what"

Standard output may be handed to a printer (a table, figures, a book's description), which makes names harmless itself or
writes for programs; nobody writes to it, nor names standard error, but the sources of WRITERS.
"""

import pathlib
import re
import sys

WRITERS = {
    "Lines.cpp": "the one way",
    "ConsoleProgress.cpp": "draws and takes away the progress line",
    "pages.cpp": "a program of the build",
}

WRITES = re.compile(r"std::(cerr|clog)|std::cout\s*<<|std::cout\.(write|put)|\b(printf|puts|fputs|fprintf|fwrite)\s*\(|fmt::print")


def without_comments(text):
    return re.sub(r"//[^\n]*|/\*.*?\*/", lambda comment: "\n" * comment.group().count("\n"), text, flags=re.DOTALL)


def violations(root):
    found = []
    for path in sorted((root / "tallybook" / "cli").glob("*.*")):
        if path.suffix not in (".cpp", ".h") or path.name in WRITERS:
            continue
        text = without_comments(path.read_text(encoding="utf-8"))
        for place in WRITES.finditer(text):
            number = text.count("\n", 0, place.start()) + 1
            found.append(f"{path.relative_to(root)}:{number}: lines are said through tallybook/cli/Lines.h")
    return found


def main():
    found = violations(pathlib.Path(sys.argv[1]))
    for line in found:
        print(line)
    return 1 if found else 0


if __name__ == "__main__":
    sys.exit(main())
