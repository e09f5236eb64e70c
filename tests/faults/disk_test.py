#!/usr/bin/env python3
"""Fills the disk at every command: nothing is lost, nothing is half, and the reason is told.

  disk_test.py TALLYBOOK [--share S] [--only TEXT]

Three kinds of trials: a small disk of the test's own with some bytes left, files that may not grow beyond a size, and
results that cannot be printed. The disk is mounted in a mount namespace of the test's own, and is gone with it.
"""

import contextlib
import os
import resource
import signal
import stat
import subprocess
import sys

sys.dont_write_bytecode = True
from trial import (Broken, Skips, Workshop, all_deeds, arguments_of, looks,  # pylint: disable=wrong-import-position
                   run_trials, scratch)

LEFT = (0, 4096, 12288, 32768, 65536, 131072, 262144)
SIZES = (1, 4096, 20000, 70000)
DISK_SIZE = 24 << 20
INSIDE = "TALLYBOOK_FAULTS_INSIDE"


def enter_namespace():
    """Starts over in a mount namespace; comes back where there is none to be had."""
    if os.environ.get(INSIDE) or os.geteuid() != 0:
        return
    unshare = ["unshare", "--mount", "--propagation", "private"]
    with contextlib.suppress(OSError):
        if subprocess.run([*unshare, "true"], check=False, stderr=subprocess.DEVNULL).returncode == 0:
            os.environ[INSIDE] = "1"
            os.execvp(unshare[0], [*unshare, sys.executable, *sys.argv])


def mount_disk(folder, skips):
    """A small disk at the folder; false where none can be mounted."""
    folder.mkdir()
    if not os.environ.get(INSIDE):
        skips.add("a full disk", "no mount namespace")
        return False
    mounted = subprocess.run(["mount", "-t", "tmpfs", "-o", f"size={DISK_SIZE}", "tmpfs", folder], check=False,
                             capture_output=True, text=True)
    if mounted.returncode != 0:
        skips.add("a full disk", mounted.stderr.strip())
    return mounted.returncode == 0


def judge(expectation, place, done):
    try:
        found = expectation.judge(place, done, killed=False)
    except Broken as broken:
        raise Broken(f"{broken}\n        {done}") from None
    return f"{'done' if done.status == 0 else 'refused'}: {found}"


def fill(place, left):
    """Fills the disk but for some bytes; gives the file that does."""
    filler = place.folder.parent / "filler"
    room = os.statvfs(place.folder)
    with open(filler, "wb") as file:
        os.posix_fallocate(file.fileno(), 0, room.f_bavail * room.f_frsize - left)
    return filler


def on_full_disk(workshop, expectation, left):
    place = workshop.copy(expectation.deed, "disk/place")
    place.environment()
    filler = fill(place, left)
    try:
        done = place.run(*expectation.deed.arguments)
    finally:
        filler.unlink()
    return judge(expectation, place, done)


def with_limit(workshop, expectation, size):
    def limit():
        signal.signal(signal.SIGXFSZ, signal.SIG_IGN)  # the failing call is what is tried, and no signal
        resource.setrlimit(resource.RLIMIT_FSIZE, (size, resource.RLIM_INFINITY))

    place = workshop.copy(expectation.deed)
    return judge(expectation, place, place.run(*expectation.deed.arguments, within=limit))


def without_output(workshop, deed, is_look, node):
    """Standard output takes nothing: results that nobody sees are no success, and what was committed stays one."""
    if not workshop.copy(deed).must(*deed.arguments).out:
        return "prints nothing"
    place = workshop.copy(deed)
    with open(node, "wb") as full:
        done = place.run(*deed.arguments, stdout=full)
    if not done.err.strip():
        raise Broken(f"the output is lost without a word: {done}")
    if done.status not in ((1,) if is_look else (0, 1)):
        raise Broken(f"the output is lost: {done}")
    if deed.writes and (done.status == 0) != (place.figures(deed.writes) != workshop.copy(deed).figures(deed.writes)):
        raise Broken(f"the commit does not decide: {done}")
    return f"output lost and told, status {done.status}"


def full_device(folder, skips):
    """A device that is always full, of the test's own."""
    node = folder / "full"
    try:
        os.mknod(node, 0o666 | stat.S_IFCHR, os.makedev(1, 7))
        with open(node, "wb") as file:
            file.write(b"x")
    except PermissionError as refused:
        skips.add("output to a full device", str(refused))
        return None
    except OSError:  # it is full, as it should be
        pass
    return node


def trials(workshop, skips, share, only):
    number = 0
    has_disk = mount_disk(workshop.folder / "disk", skips)
    node = full_device(workshop.folder, skips)
    for deed in all_deeds():
        expectation = None
        todo = [(f"{deed.name}: {left} bytes left", on_full_disk, left) for left in LEFT if has_disk]
        todo += [(f"{deed.name}: files of {size} bytes at most", with_limit, size) for size in SIZES]
        for text, trial, size in todo:
            number += 1
            if int(number * share) == int((number - 1) * share) or only not in text:
                continue
            expectation = expectation or workshop.expectation(deed)
            yield text, lambda t=trial, e=expectation, s=size: t(workshop, e, s)
    for deed, is_look in [(deed, False) for deed in all_deeds()] + [(deed, True) for deed in looks()]:
        if node is not None and only in f"{deed.name}: full output":
            yield f"{deed.name}: full output", lambda d=deed, i=is_look: without_output(workshop, d, i, node)


def main():
    arguments = arguments_of(__doc__.splitlines()[0], double=False)
    enter_namespace()
    skips = Skips()
    with scratch() as folder:
        workshop = Workshop(arguments.tallybook, folder)
        try:
            run_trials(trials(workshop, skips, arguments.share, arguments.only), arguments.without)
        finally:
            if os.environ.get(INSIDE):
                subprocess.run(["umount", folder / "disk"], check=False, stderr=subprocess.DEVNULL)
    skips.close()


if __name__ == "__main__":
    main()
