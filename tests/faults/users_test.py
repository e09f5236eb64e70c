#!/usr/bin/env python3
"""Read-only folders and files, and files of other users: a look leaves nothing behind, a refusal has its reason.

  users_test.py TALLYBOOK DOUBLE [--only TEXT]

Permissions are what the system says of the effective user, so where the tests run as root the command runs as a user of
no name. Everything lies in a temporary folder.
"""

import os
import sys

sys.dont_write_bytecode = True
from trial import (Broken, Deed, Skips, Workshop, arguments_of, becoming, give, run_trials,  # pylint: disable=wrong-import-position
                   scratch)

USER, OTHER = 54321, 54322
SET = ("set", "office", "100", "2003-12-24", "1", "12.25")
EXPORT = ("export", "qdx", "north", "out.QDX", "--from", "2003-01-01", "--to", "2003-06-30", "--yes")
LOOKS = (("values", "office", "--format", "csv"), ("info", "office", "--json"), ("journal", "list", "office"))


class Tenant:
    """A place that belongs to the user as whom the command runs, and to nobody else."""

    def __init__(self, workshop, user):
        self.place = workshop.copy()
        self.place.environment()  # makes the folder for temporary files
        (self.place.folder / ".home").mkdir(exist_ok=True)
        self.within = becoming(user) if user else None
        if user:
            give(self.place.folder, user)
        self.folder = self.place.folder

    def chmod(self, name, mode):
        os.chmod(self.folder / name, mode)

    def run(self, *arguments):
        return self.place.run(*arguments, within=self.within)

    def done(self, *arguments):
        done = self.run(*arguments)
        if done.status != 0:
            raise Broken(f"was to succeed: {done}")
        return done

    def refused(self, *arguments, tells=""):
        """The command is to be refused with a reason, which holds a text, and to change no name and no file's bytes."""
        before = self.contents()
        done = self.run(*arguments)
        if done.status != 1:
            raise Broken(f"was to be refused: {done}")
        if not done.err.strip() or tells not in done.err:
            raise Broken(f"was to tell '{tells}': {done}")
        self.same(before, done)
        return done

    def looks(self, wanted):
        """Looks tell what they tell elsewhere, and leave names, bytes and modes as they are."""
        before = self.contents()
        for arguments, out in zip(LOOKS, wanted):
            done = self.done(*arguments)
            if done.out != out:
                raise Broken(f"tells something else: {done}")
            self.same(before, done)

    def contents(self):
        kept = {}
        for path in self.folder.rglob("*"):
            name = str(path.relative_to(self.folder))
            if not name.startswith(".home"):
                kept[name] = (path.lstat().st_mode, path.lstat().st_uid, path.read_bytes() if path.is_file() else b"")
        return kept

    def same(self, before, done):
        now = {name: what for name, what in self.contents().items() if not name.endswith(".tbk-lock")}
        gone = {name: what for name, what in before.items() if not name.endswith(".tbk-lock")}
        if now != gone:
            different = sorted(name for name in now.keys() | gone.keys() if now.get(name) != gone.get(name))
            raise Broken(f"has changed {', '.join(different)}: {done}")


class Cases:
    def __init__(self, workshop, user):
        self.workshop, self.user = workshop, user
        place = workshop.copy()
        self.wanted = [place.must(*arguments).out for arguments in LOOKS]
        self.killed = None

    def tenant(self):
        return Tenant(self.workshop, self.user)

    def with_log(self):
        """A place whose book a writer left with a log when it was killed, and what the book tells then."""
        workshop = self.workshop
        if self.killed is None:
            deed = Deed("set", SET)
            calls = workshop.expectation(Deed("set", SET, writes="office")).counts["any"]
            for call in range(calls, 0, -1):
                place = workshop.copy(name="killed")
                place.run(*deed.arguments, fault=f"any {call} 0 kill")
                if place.read("office.tbk-wal"):
                    break
            else:
                raise Broken("no killed writer leaves a log")
            self.killed = {name: place.read(name) for name in place.names() if name.startswith("office.tbk")}
            self.recovered = [place.must(*arguments).out for arguments in LOOKS]
            if self.recovered[0] == self.wanted[0]:
                raise Broken("the log holds no change, so that it shows nothing")
        tenant = self.tenant()
        for name, content in self.killed.items():
            tenant.place.write(name, content)
        if self.user:
            give(tenant.folder, self.user)
        return tenant

    def a_book_that_may_not_be_written_is_looked_at_and_can_be_written_later(self):
        tenant = self.tenant()
        tenant.chmod("office.tbk", 0o444)
        tenant.looks(self.wanted)
        tenant.refused(*SET)
        tenant.chmod("office.tbk", 0o644)
        tenant.done(*SET)

    def a_folder_that_may_not_be_written_is_looked_at(self):
        tenant = self.tenant()
        tenant.chmod(".", 0o555)
        tenant.looks(self.wanted)
        tenant.refused(*SET)
        tenant.refused(*EXPORT)
        tenant.refused("new", "fresh", "--from", "fresh.json")
        tenant.refused("book", "backup", "office", "kept", tells="kept")
        tenant.refused("book", "compact", "office")
        tenant.refused("book", "restore", "safe", "office", "--replace")
        tenant.refused("book", "restore", "safe", "saved")
        tenant.refused("book", "salvage", "office", "saved", tells="saved")
        tenant.refused("definition", "add", "office", "--title", "New", "--file", "x.QDX", "--yes")
        tenant.refused("definition", "edit", "office", "1", "--title", "New", "--yes")
        tenant.refused("definition", "delete", "office", "1", "--yes")
        tenant.chmod(".", 0o755)
        tenant.done(*SET)

    def a_book_and_a_folder_that_may_not_be_written_are_looked_at(self):
        tenant = self.tenant()
        tenant.chmod("office.tbk", 0o444)
        tenant.chmod(".", 0o555)
        tenant.looks(self.wanted)
        tenant.refused(*SET)

    def a_book_that_may_not_be_read_is_refused(self):
        tenant = self.tenant()
        tenant.chmod("office.tbk", 0o000)
        for arguments in LOOKS:
            tenant.refused(*arguments, tells="office.tbk")
        tenant.refused(*SET, tells="office.tbk")

    def a_book_that_may_not_be_written_is_backed_up_and_salvaged_and_stays(self):
        tenant = self.tenant()
        figures = tenant.done(*LOOKS[0]).out
        tenant.chmod("office.tbk", 0o400)
        tenant.refused("book", "compact", "office")
        tenant.refused("book", "restore", "safe", "office", "--replace")
        before = tenant.place.read("office.tbk")
        tenant.done("book", "backup", "office", "kept")
        tenant.done("book", "salvage", "office", "saved")
        if before != tenant.place.read("office.tbk") or os.stat(tenant.folder / "kept").st_mode & 0o077:
            raise Broken("the book has changed, or its backup is for more eyes")
        tenant.done("book", "restore", "kept", "again")
        for book in ("saved", "again"):
            if tenant.done("values", book, "--format", "csv").out != figures:
                raise Broken(f"{book} has other figures")

    def another_users_book_is_not_replaced(self):
        tenant = self.tenant()
        give(tenant.folder, OTHER)
        tenant.chmod(".", 0o777)
        tenant.refused("book", "restore", "safe", "office", "--replace")
        tenant.refused("book", "compact", "office")

    def another_users_book_is_looked_at(self):
        tenant = self.tenant()
        give(tenant.folder, OTHER)
        os.chmod(tenant.folder, 0o755)
        tenant.looks(self.wanted)
        tenant.refused(*SET, tells="office.tbk")

    def another_users_book_in_a_folder_for_all_is_looked_at_and_leaves_nothing_for_its_owner_to_stumble_over(self):
        tenant = self.tenant()
        give(tenant.folder, OTHER)
        tenant.chmod(".", 0o777)
        tenant.looks(self.wanted)
        tenant.refused(*SET, tells="office.tbk")
        tenant.within = becoming(OTHER)
        tenant.done(*SET)

    def a_log_is_taken_in_by_a_looker_who_may_write_it(self):
        tenant = self.with_log()
        for arguments, out in zip(LOOKS, self.recovered):
            if tenant.done(*arguments).out != out:
                raise Broken(f"{arguments} tells the state before the log")
        tenant.done(*SET)

    def _log_is_shown_or_refused(self, *modes):
        tenant = self.with_log()
        for name, mode in modes:
            tenant.chmod(name, mode)
        before = tenant.contents()
        words = set()
        for arguments, out in zip(LOOKS, self.recovered):
            done = tenant.run(*arguments)
            if done.status == 0 and done.out != out:
                raise Broken(f"tells the state before the log: {done}")
            if done.status != 0 and (done.status != 1 or not done.err.strip()):
                raise Broken(f"neither shown nor refused with a reason: {done}")
            tenant.same(before, done)
            words.add("shown" if done.status == 0 else "refused")
        for name, _ in modes:
            tenant.chmod(name, 0o755 if name == "." else 0o644)
        tenant.done(*SET)
        return " and ".join(sorted(words))

    def a_log_in_a_folder_that_may_not_be_written_is_shown_or_refused(self):
        return self._log_is_shown_or_refused((".", 0o555))

    def a_log_beside_a_book_that_may_not_be_written_is_shown_or_refused(self):
        return self._log_is_shown_or_refused(("office.tbk", 0o444))

    def a_log_that_may_not_be_written_is_shown_or_refused(self):
        return self._log_is_shown_or_refused(("office.tbk-wal", 0o444), ("office.tbk", 0o444))

    def a_log_that_may_not_be_read_is_refused(self):
        tenant = self.with_log()
        tenant.chmod("office.tbk-wal", 0o000)
        tenant.chmod("office.tbk", 0o444)
        for arguments in LOOKS:
            tenant.refused(*arguments)

    def an_index_of_a_log_that_another_user_left_keeps_nobody_out_in_silence(self):
        tenant = self.tenant()
        left = tenant.place.write("office.tbk-shm", bytes(32768))
        os.chown(left, OTHER, OTHER)
        os.chmod(left, 0o644)
        done = tenant.run(*LOOKS[0])
        if done.status != 0 or done.out != self.wanted[0]:
            raise Broken(f"the figures cannot be looked at: {done}")

    def a_definition_that_may_not_be_read_stops_what_would_use_it(self):
        tenant = self.tenant()
        tenant.chmod("TBQDX2.office", 0o000)
        tenant.refused("import", "qdx", "office", "--definition", "2", "--yes", tells="2")
        tenant.refused("import", "qdx", "office", "--all", "--yes", tells="2")
        tenant.refused("definition", "edit", "office", "2", "--title", "New", "--yes", tells="2")
        for mode in (0o444, 0o644):
            tenant.chmod("TBQDX2.office", mode)
            tenant.done("definition", "show", "office", "2")

    def a_definition_that_may_not_be_written_stays_as_it_is_where_an_edit_is_refused(self):
        tenant = self.tenant()
        tenant.chmod("TBQDX2.office", 0o444)
        before = tenant.place.read("TBQDX2.office")
        done = tenant.run("definition", "edit", "office", "2", "--title", "New", "--yes")
        found = tenant.place.read("TBQDX2.office")
        if done.status != 0 and (found != before or not done.err.strip()):
            raise Broken(f"the refused edit has changed it, or gives no reason: {done}")

    def an_exchange_file_that_may_not_be_read_is_refused(self):
        tenant = self.tenant()
        tenant.chmod("a.QDX", 0o000)
        tenant.refused("import", "qdx", "office", "--definition", "1", "--yes", tells="a.QDX")
        for verb in ("info", "dump", "check"):
            tenant.refused("qdx", verb, "a.QDX", tells="a.QDX")

    def text_files_that_may_not_be_read_are_refused(self):
        tenant = self.tenant()
        tenant.chmod("lines.txt", 0o000)
        tenant.chmod("figures.csv", 0o000)
        tenant.chmod("fresh.json", 0o000)
        tenant.refused("import", "csv", "office", "figures.csv", "--yes", tells="figures.csv")
        tenant.refused("import", "delimited", "office", "lines.txt", "--math", "add", "--date-order", "DMY", "--yes",
                       tells="lines.txt")
        tenant.refused("new", "fresh", "--from", "fresh.json", tells="fresh.json")

    def an_export_to_a_file_that_may_not_be_written_is_refused(self):
        tenant = self.tenant()
        tenant.chmod("out.QDX", 0o444)
        tenant.refused(*EXPORT, tells="out.QDX")
        for kind, name in (("CSV", "out.csv"), ("XLSX", "out.xlsx"), ("DBF", "out.dbf"), ("TXT", "out.txt"),
                           ("SQLT", "out.db")):
            tenant.chmod(name, 0o444)
            tenant.refused("export", "table", "north", name, "--type", kind, *EXPORT[4:], tells=name)

    def an_export_keeps_mode_and_owner(self):
        tenant = self.tenant()
        for arguments, name in ((EXPORT, "out.QDX"), (("export", "table", "north", "out.csv", "--type", "CSV",
                                                       *EXPORT[4:]), "out.csv")):
            tenant.chmod(name, 0o640)
            before = os.stat(tenant.folder / name)
            tenant.done(*arguments)
            after = os.stat(tenant.folder / name)
            if (after.st_mode, after.st_uid, after.st_gid) != (before.st_mode, before.st_uid, before.st_gid):
                raise Broken(f"{name} has another mode or owner now: {after}")

    def an_export_by_root_keeps_the_owner(self):
        tenant = self.tenant()
        tenant.within = None
        tenant.done(*EXPORT)
        found = os.stat(tenant.folder / "out.QDX")
        if (found.st_uid, found.st_gid) != (USER, USER):
            raise Broken(f"the file belongs to {found.st_uid} now")

    def an_imported_file_that_may_not_be_renamed_or_deleted_is_told(self):
        tenant = self.tenant()
        closed = tenant.folder / "closed"
        closed.mkdir()
        for name in ("a.QDX", "lines.txt"):
            (closed / name).write_bytes((tenant.folder / name).read_bytes())
        if self.user:
            give(tenant.folder, self.user)
        tenant.chmod("closed", 0o555)
        for after in ("rename", "delete"):
            tenant.done("definition", "edit", "office", "1", "--file", "closed/a.QDX", "--after", after, "--yes")
            self._is_done_with_a_warning(tenant, "closed/a.QDX", "import", "qdx", "office", "--definition", "1", "--again")
        self._is_done_with_a_warning(tenant, "closed/lines.txt", "import", "delimited", "office", "closed/lines.txt",
                                     "--math", "add", "--date-order", "DMY", "--yes")

    @staticmethod
    def _is_done_with_a_warning(tenant, file, *arguments):
        done = tenant.done(*arguments)
        if f"{file} keeps its name, and can be imported once more: " not in done.err:
            raise Broken(f"was to tell that {file} keeps its name: {done}")
        if not (tenant.folder / file).exists():
            raise Broken(f"{file} is gone from a folder that may not be written")

    def reports_and_messages_that_cannot_be_written_stop_the_import_before_it_begins(self):
        tenant = self.tenant()
        (tenant.folder / "closed").mkdir(mode=0o555)
        tenant.chmod("closed", 0o555)
        if self.user:
            give(tenant.folder, self.user)
        for option in ("--report", "--messages"):
            tenant.refused("import", "qdx", "office", "--definition", "1", "--yes", option, "closed/x.txt",
                           tells="closed/x.txt")

    def a_home_that_may_not_be_written_does_not_keep_the_command_from_its_work(self):
        tenant = self.tenant()
        tenant.chmod(".home", 0o555)
        tenant.done(*SET)
        tenant.refused("values", "nowhere", tells="nowhere")


NEED_ROOT = ("another_users_book_is_looked_at", "an_export_by_root_keeps_the_owner",
             "another_users_book_in_a_folder_for_all_is_looked_at_and_leaves_nothing_for_its_owner_to_stumble_over",
             "an_index_of_a_log_that_another_user_left_keeps_nobody_out_in_silence")


def main():
    arguments = arguments_of(__doc__.splitlines()[0])
    skips = Skips()
    is_root = os.geteuid() == 0
    with scratch() as folder:
        if is_root:
            os.chmod(folder, 0o755)
        workshop = Workshop(arguments.tallybook, folder, arguments.double)
        cases = Cases(workshop, USER if is_root else 0)
        names = [name for name in vars(Cases) if name[0] != "_" and name not in ("tenant", "with_log")]
        for name in () if is_root else NEED_ROOT:
            skips.add(name.replace("_", " "), "needs root")
            names.remove(name)
        run_trials([(name.replace("_", " "), lambda n=name: getattr(cases, n)() or "held") for name in names
                    if arguments.only in name.replace("_", " ")], arguments.without)
    skips.close()


if __name__ == "__main__":
    main()
