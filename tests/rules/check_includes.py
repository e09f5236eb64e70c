"""Checks the rules over include lines: arrows between the floors go down only, and the component stands on the
standard library alone.

    check_includes.py ROOT      exit status 0: kept; 1: broken, one line for each place, "file:line: what"

The floors, from the ground up, are the rows of FLOORS; a file may include its own floor and the rows below.
"""

import pathlib
import re
import sys

# Each row lies above the ones before it; floors of one row may include each other.
FLOORS = (
    ("base",),
    ("platform",),
    ("host",),
    ("support",),
    ("qdx",),
    ("import",),
    ("exchange",),
    ("forms",),
    ("reportdialog",),
    ("dialogs",),
    ("views",),
)
RANK = {floor: rank for rank, row in enumerate(FLOORS) for floor in row}

# Floors that do without some of those below them.
DO_WITHOUT = {
    "host": ("platform",),
    "forms": ("qdx", "import", "exchange"),
    # Data about forms, told by their names.
    "views": ("platform", "host", "support", "qdx", "import", "exchange", "forms", "reportdialog", "dialogs"),
}

# What only renderers of windows read, and who of the application's folders those are.
FOR_RENDERERS = "views"
RENDERERS = ("desktop",)

# What lies over any host and any machine knows neither: a folder of the application's that knows these floors alone.
OVERLAYS = "preview"
OVERLAYS_KNOW = ("base", "platform", "host")

# The command and the desktop stand on top of the embedded host, side by side; nothing below may know them.
APPLICATION_TOP = ("cli", "desktop")

# The only places in src/ that may talk to an operating system: the folders in the platform, one a system.
PLATFORM = re.compile(r"src/platform/[^/]+/")

# C++20, [headers]: the library's headers and the C library's under their C++ names.
STANDARD_HEADERS = frozenset(
    """
    algorithm any array atomic barrier bit bitset charconv chrono codecvt compare complex concepts condition_variable
    coroutine deque exception execution filesystem format forward_list fstream functional future initializer_list
    iomanip ios iosfwd iostream istream iterator latch limits list locale map memory memory_resource mutex new numbers
    numeric optional ostream queue random ranges ratio regex scoped_allocator semaphore set shared_mutex
    source_location span sstream stack stdexcept stop_token streambuf string string_view strstream syncstream
    system_error thread tuple type_traits typeindex typeinfo unordered_map unordered_set utility valarray variant
    vector version
    cassert cctype cerrno cfenv cfloat cinttypes climits clocale cmath csetjmp csignal cstdarg cstddef cstdint cstdio
    cstdlib cstring ctime cuchar cwchar cwctype
    """.split()
)

INCLUDE = re.compile(r'^\s*#\s*include\s*(?:<([^>]+)>|"([^"]+)"|(\S.*))')


def include_lines(text):
    """(line number, name, whether in angle brackets) of each include; what stands in a block comment is none."""
    text = re.sub(r"/\*.*?\*/", lambda comment: "\n" * comment.group().count("\n"), text, flags=re.DOTALL)
    for number, line in enumerate(text.splitlines(), start=1):
        found = INCLUDE.match(line)
        if found:
            angled, quoted, other = found.groups()
            yield number, angled or quoted or other, quoted is None


def component_fault(root, path, name, angled):
    """What is wrong with an include of a file of src/, or None."""
    if angled:
        if name in STANDARD_HEADERS or PLATFORM.match(path):
            return None
        return f"<{name}> is no header of the C++20 standard library"
    own, target = path.split("/")[1], name.split("/")[0]
    if target == "tallybook":
        return f'"{name}": src/ knows nothing of tallybook/'
    if target not in RANK or ".." in name.split("/"):
        return f'"{name}" is not written from a floor of src/'
    if RANK[target] > RANK[own]:
        return f'"{name}": {own} lies below {target}'
    if target in DO_WITHOUT.get(own, ()):
        return f'"{name}": {own} does without {target}'
    if not (root / "src" / name).is_file():
        return f'"{name}" is no file of src/'
    return None


def application_fault(path, name, angled):
    """What is wrong with an include of a file of tallybook/, or None."""
    parts = name.split("/")
    known = parts[:2] == ["tallybook", OVERLAYS] or parts[0] in OVERLAYS_KNOW
    if not angled and path.split("/")[1] == OVERLAYS and not known:
        return f'"{name}": {OVERLAYS} knows {", ".join(OVERLAYS_KNOW)} alone'
    if not angled and parts[0] == FOR_RENDERERS and path.split("/")[1] not in RENDERERS:
        return f'"{name}": {FOR_RENDERERS} is for renderers alone'
    if angled or parts[0] != "tallybook" or len(parts) < 3:
        return None
    own, target = path.split("/")[1], parts[1]
    if target in APPLICATION_TOP and target != own:
        return f'"{name}": {own} lies below {target} or beside it'
    return None


def test_fault(path, name, angled):
    """What is wrong with an include of a file of tests/, or None: a floor's tests do with that floor and those below."""
    own, target = path.split("/")[1], name.split("/")[0]
    # tests/support also holds the in-memory host, which stands in for an application of any height.
    if angled or own == "support" or own not in RANK or target not in RANK:
        return None
    if RANK[target] > RANK[own]:
        return f'"{name}": the tests of {own} reach up to {target}'
    return None


def violations(root):
    """All faults under `root`, as texts, in the order of the files' names."""
    found = []
    for path in sorted(path for top in ("src", "tallybook", "tests") for path in (root / top).rglob("*")):
        if path.suffix not in (".h", ".cpp", ".inc"):
            continue
        where = path.relative_to(root).as_posix()
        if where.startswith("src/") and where.split("/")[1] not in RANK:
            found.append(f"{where}:1: this folder is no floor that the rules know")
            continue
        for line, name, angled in include_lines(path.read_text(encoding="utf-8")):
            if where.startswith("src/"):
                fault = component_fault(root, where, name, angled)
            elif where.startswith("tallybook/"):
                fault = application_fault(where, name, angled)
            else:
                fault = test_fault(where, name, angled)
            if fault:
                found.append(f"{where}:{line}: {fault}")
    return found


def main(arguments):
    if len(arguments) != 1 or not (pathlib.Path(arguments[0]) / "src").is_dir():
        print("usage: check_includes.py ROOT, the folder that holds src/", file=sys.stderr)
        return 2
    found = violations(pathlib.Path(arguments[0]))
    print("\n".join(found) if found else "includes: every arrow goes down")
    return 1 if found else 0


if __name__ == "__main__":
    sys.exit(main(sys.argv[1:]))
