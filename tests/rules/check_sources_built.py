"""Checks that every source is in the build: a test file that is not does not exist.

    check_sources_built.py ROOT     exit status 0: all are; 1: some are not, one line for each

A *.cpp counts as built when a CMakeLists.txt of its folder or of one above names it, by its path from there.
"""

import pathlib
import re
import sys

FOLDERS = ("src", "tallybook", "tests", "bench", "fuzz", "examples")


def names_in(lists_file):
    """The words of a CMakeLists.txt, without comments and what only tells how to compile a source."""
    text = re.sub(r"#.*|tallybook_compile_alone\([^)]*\)", "", lists_file.read_text(encoding="utf-8"))
    words = re.findall(r'[^\s()"]+', text)
    return {word.removeprefix("${CMAKE_CURRENT_SOURCE_DIR}/") for word in words}


def is_named(root, source, names):
    """Whether a CMakeLists.txt between `source` and `root` names it; `names` keeps what was read of each folder."""
    for folder in source.parents:
        if folder not in names:
            lists_file = folder / "CMakeLists.txt"
            names[folder] = names_in(lists_file) if lists_file.is_file() else set()
        if source.relative_to(folder).as_posix() in names[folder]:
            return True
        if folder == root:
            return False
    return False


def violations(root):
    names = {}
    sources = sorted(source for folder in FOLDERS for source in (root / folder).rglob("*.cpp"))
    return [
        f"{source.relative_to(root).as_posix()}: named in no CMakeLists.txt"
        for source in sources
        if not is_named(root, source, names)
    ]


def main(arguments):
    if len(arguments) != 1 or not (pathlib.Path(arguments[0]) / "src").is_dir():
        print("usage: check_sources_built.py ROOT, the folder that holds src/", file=sys.stderr)
        return 2
    found = violations(pathlib.Path(arguments[0]))
    print("\n".join(found) if found else "sources: all are in the build")
    return 1 if found else 0


if __name__ == "__main__":
    sys.exit(main(sys.argv[1:]))
