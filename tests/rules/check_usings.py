"""Checks that a source uses each name that it takes over from another namespace.

    check_usings.py ROOT     exit status 0: all are used; 1: some are not, one line for each, "file:line: what"

The linter knows this rule, but looks only at sources that are compiled alone. Lines that stand indented are passed over:
constructors that a class inherits are used without being named.
"""

import pathlib
import re
import sys

FOLDERS = ("src", "tallybook")
USING = re.compile(r"^using (?:\w*::)+(\w+);", re.MULTILINE)
COMMENT = re.compile(r"//[^\n]*")


def violations(root):
    found = []
    for path in sorted(source for folder in FOLDERS for source in (root / folder).rglob("*.cpp")):
        text = COMMENT.sub("", path.read_text(encoding="utf-8"))
        for using in USING.finditer(text):
            name = using.group(1)
            if not re.search(rf"\b{name}\b", text[: using.start()] + text[using.end() :]):
                number = text.count("\n", 0, using.start()) + 1
                found.append(f"{path.relative_to(root).as_posix()}:{number}: {name} is not used")
    return found


def main(arguments):
    if len(arguments) != 1 or not (pathlib.Path(arguments[0]) / "src").is_dir():
        print("usage: check_usings.py ROOT, the folder that holds src/", file=sys.stderr)
        return 2
    found = violations(pathlib.Path(arguments[0]))
    print("\n".join(found) if found else "usings: all are used")
    return 1 if found else 0


if __name__ == "__main__":
    sys.exit(main(sys.argv[1:]))
