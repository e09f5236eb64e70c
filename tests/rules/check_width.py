"""Checks that lines of comments have at most 120 letters, which the formatter leaves as they are.

    check_width.py ROOT [--mend]      exit status 0: kept; 1: broken, one line for each place, "file:line: what"

Code is the formatter's business, and so are texts within it. With --mend a line that is too long is broken at a blank, and
what is left over goes to the front of the next line where that one goes on with it.
"""

import pathlib
import re
import sys

LIMIT = 120
FLOORS = ("src", "tallybook", "tests", "bench", "fuzz", "examples")
COMMENT = re.compile(r"\s*// +")
LABELLED = re.compile(r"(\s*// +)(\S+ {2,})(?=\S)")  # "//   fails  5 for ...", which goes on below its text
# What begins or holds a table or a list is laid out by hand, and nothing is put in front of it.
LAID_OUT = re.compile(r"[-*|=] |\d+[.)] |.*\s{2,}|NOLINT|clang-format")


def sources(root):
    return sorted(path for floor in FLOORS for path in (root / floor).rglob("*.*") if path.suffix in (".cpp", ".h"))


def is_too_long(line):
    return len(line) > LIMIT and COMMENT.match(line) is not None


def violations(root):
    return [f"{path.relative_to(root)}:{number}: a comment of {len(line)} letters; {LIMIT} is the most (check_width.py --mend)"
            for path in sources(root)
            for number, line in enumerate(path.read_text(encoding="utf-8").split("\n"), 1) if is_too_long(line)]


def prefix_of_more(line):
    """What a line begins with that goes on with this one."""
    labelled = LABELLED.match(line)
    return labelled[1] + " " * len(labelled[2]) if labelled else COMMENT.match(line).group()


def goes_on(line, prefix):
    """Whether a line is running text of the same comment."""
    text = line[len(prefix):]
    return line.startswith(prefix) and text != "" and not text.startswith(" ") and not LAID_OUT.match(text)


def mended(lines):
    lines, at = list(lines), 0
    while at < len(lines):
        if is_too_long(lines[at]):
            prefix = prefix_of_more(lines[at])
            cut = lines[at].rfind(" ", len(prefix), LIMIT + 1)
            if cut > 0:
                lines[at], rest = lines[at][:cut].rstrip(), prefix + lines[at][cut + 1:]
                if at + 1 < len(lines) and goes_on(lines[at + 1], prefix):
                    lines[at + 1] = rest + " " + lines[at + 1][len(prefix):]
                else:
                    lines.insert(at + 1, rest)
        at += 1
    return lines


def mend(root):
    for path in sources(root):
        text = path.read_text(encoding="utf-8")
        new = "\n".join(mended(text.split("\n")))
        if new != text:
            path.write_text(new, encoding="utf-8")


def main():
    root = pathlib.Path(sys.argv[1])
    if "--mend" in sys.argv[2:]:
        mend(root)
    found = violations(root)
    for line in found:
        print(line)
    return 1 if found else 0


if __name__ == "__main__":
    sys.exit(main())
