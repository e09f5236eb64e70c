"""The rules find what they are there to find: each is shown a small tree with one planted violation."""

import pathlib
import tempfile
import unittest

import check_includes
import check_lines
import check_sources_built
import check_usings
import check_width


class RuleTest(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.root = pathlib.Path(folder.name)
        self.write("src/base/Types.h")
        self.write("src/host/Masterfile.h", '#include "base/Types.h"')
        self.write("src/qdx/HeaderRecord.h", '#include "host/Masterfile.h"')

    def write(self, path, text=""):
        file = self.root / path
        file.parent.mkdir(parents=True, exist_ok=True)
        file.write_text(text + "\n", encoding="utf-8")


class IncludesTest(RuleTest):
    def found(self):
        return check_includes.violations(self.root)

    def expect_only(self, place, words):
        found = self.found()
        self.assertEqual(1, len(found), found)
        self.assertTrue(found[0].startswith(place + ": "), found)
        self.assertIn(words, found[0])

    def test_accepts_arrows_that_go_down(self):
        self.write("src/dialogs/dlgExport.cpp", '#include <vector>\n#include "qdx/HeaderRecord.h"')
        self.assertEqual([], self.found())

    def test_finds_an_arrow_that_climbs(self):
        self.write("src/exchange/CDataExchange.h")
        self.write("src/qdx/Exporter.cpp", '#include "qdx/HeaderRecord.h"\n#include "exchange/CDataExchange.h"')
        self.expect_only("src/qdx/Exporter.cpp:2", "qdx lies below exchange")

    def test_finds_a_climb_between_every_two_rows(self):
        rows = check_includes.FLOORS
        for below, above in zip(rows, rows[1:]):
            with self.subTest(below=below[0], above=above[0]):
                self.write(f"src/{above[0]}/Above.h")
                self.write(f"src/{below[0]}/Below.cpp", f'#include "{above[0]}/Above.h"')
                self.expect_only(f"src/{below[0]}/Below.cpp:1", "lies below")
                (self.root / f"src/{below[0]}/Below.cpp").unlink()

    def test_finds_a_floor_that_takes_what_it_is_to_do_without(self):
        self.write("src/forms/Form.cpp", '#include "qdx/HeaderRecord.h"')
        self.expect_only("src/forms/Form.cpp:1", "forms does without qdx")
        (self.root / "src/forms/Form.cpp").unlink()
        self.write("src/platform/Clock.h")
        self.write("src/host/Printer.h", '#include "platform/Clock.h"')
        self.expect_only("src/host/Printer.h:1", "host does without platform")

    def test_finds_the_component_knowing_the_application(self):
        self.write("tallybook/engine/Engine.h")
        self.write("src/import/QDXImport.cpp", '# include  "tallybook/engine/Engine.h"')
        self.expect_only("src/import/QDXImport.cpp:1", "nothing of tallybook/")

    def test_finds_a_way_round_by_dots(self):
        self.write("src/support/Utility.cpp", '#include "../qdx/HeaderRecord.h"')
        self.expect_only("src/support/Utility.cpp:1", "not written from a floor")
        self.write("src/support/Utility.cpp", '#include "support/../qdx/HeaderRecord.h"')
        self.expect_only("src/support/Utility.cpp:1", "not written from a floor")

    def test_finds_a_header_of_no_standard_library(self):
        for header in ("sqlite3.h", "unistd.h", "fmt/format.h", "string.h", "bits/stdc++.h"):
            with self.subTest(header=header):
                self.write("src/qdx/Body.cpp", f"#include <{header}>")
                self.expect_only("src/qdx/Body.cpp:1", "standard library")

    def test_finds_an_include_that_is_computed(self):
        self.write("src/qdx/Body.cpp", "#include BODY_HEADER")
        self.expect_only("src/qdx/Body.cpp:1", "standard library")

    def test_lets_the_platform_alone_talk_to_the_system(self):
        self.write("src/platform/posix/PosixPlatform.cpp", "#include <fcntl.h>")
        self.assertEqual([], self.found())
        self.write("src/platform/posix/PosixPlatform.cpp", '#include "qdx/HeaderRecord.h"')
        self.expect_only("src/platform/posix/PosixPlatform.cpp:1", "platform lies below qdx")

    def test_keeps_the_platforms_seam_itself_clear_of_the_system(self):
        self.write("src/platform/Clock.cpp", "#include <unistd.h>")
        self.expect_only("src/platform/Clock.cpp:1", "standard library")

    def test_finds_an_own_header_that_is_not_there(self):
        self.write("src/qdx/Body.cpp", '#include "support/Gone.h"')
        self.expect_only("src/qdx/Body.cpp:1", "no file of src/")

    def test_finds_a_folder_that_is_no_floor(self):
        self.write("src/attic/Thing.cpp")
        self.expect_only("src/attic/Thing.cpp:1", "no floor")

    def test_passes_over_comments(self):
        self.write("src/qdx/Body.cpp", '/* once:\n#include "exchange/CDataExchange.h"\n*/\n// #include <sqlite3.h>')
        self.assertEqual([], self.found())

    def test_counts_lines_behind_a_comment_rightly(self):
        self.write("src/qdx/Body.cpp", "/* one\ntwo */\n#include <sqlite3.h>")
        self.expect_only("src/qdx/Body.cpp:3", "sqlite3.h")

    def test_finds_an_engine_that_knows_the_command_line(self):
        self.write("tallybook/engine/Engine.cpp", '#include "tallybook/cli/Console.h"')
        self.expect_only("tallybook/engine/Engine.cpp:1", "engine lies below cli")

    def test_keeps_the_overlays_clear_of_the_host_below(self):
        self.write("tallybook/preview/Overlay.cpp", '#include "host/Masterfile.h"\n#include "tallybook/preview/Overlay.h"')
        self.assertEqual([], self.found())
        self.write("tallybook/preview/Overlay.cpp", '#include "tallybook/engine/Book.h"')
        self.expect_only("tallybook/preview/Overlay.cpp:1", "preview knows base, platform, host alone")

    def test_keeps_the_views_for_renderers(self):
        self.write("src/views/Views.h")
        self.write("tallybook/desktop/forms/ViewLayout.cpp", '#include "views/Views.h"')
        self.assertEqual([], self.found())
        self.write("tallybook/application/ReferenceApp.cpp", '#include "views/Views.h"')
        self.expect_only("tallybook/application/ReferenceApp.cpp:1", "for renderers alone")

    def test_keeps_the_views_clear_of_the_dialogs(self):
        self.write("src/dialogs/dlgExport.h")
        self.write("src/views/Views.cpp", '#include "dialogs/dlgExport.h"')
        self.expect_only("src/views/Views.cpp:1", "views does without dialogs")

    def test_finds_tests_that_reach_up(self):
        self.write("tests/qdx/ExporterTest.cpp", '#include "exchange/CDataExchange.h"')
        self.expect_only("tests/qdx/ExporterTest.cpp:1", "the tests of qdx reach up to exchange")


class SourcesBuiltTest(RuleTest):
    def found(self):
        return check_sources_built.violations(self.root)

    def test_accepts_sources_named_beside_them_or_from_above(self):
        self.write("tests/qdx/CMakeLists.txt", "tallybook_test(qdx_test SOURCES BodyTest.cpp deep/DeepTest.cpp)")
        self.write("tests/qdx/BodyTest.cpp")
        self.write("tests/qdx/deep/DeepTest.cpp")
        self.assertEqual([], self.found())

    def test_finds_a_test_that_is_in_no_build(self):
        self.write("tests/qdx/CMakeLists.txt", "tallybook_test(qdx_test SOURCES BodyTest.cpp)")
        self.write("tests/qdx/BodyTest.cpp")
        self.write("tests/qdx/LostTest.cpp")
        self.assertEqual(["tests/qdx/LostTest.cpp: named in no CMakeLists.txt"], self.found())

    def test_finds_a_test_that_is_commented_out_of_its_build(self):
        self.write("tests/qdx/CMakeLists.txt", "tallybook_test(qdx_test SOURCES\n  # BodyTest.cpp\n)")
        self.write("tests/qdx/BodyTest.cpp")
        self.assertEqual(["tests/qdx/BodyTest.cpp: named in no CMakeLists.txt"], self.found())

    def test_finds_a_test_of_which_only_the_way_to_compile_is_told(self):
        self.write("tests/base/CMakeLists.txt", "tallybook_compile_alone(TypesTest.cpp)")
        self.write("tests/base/TypesTest.cpp")
        self.assertEqual(["tests/base/TypesTest.cpp: named in no CMakeLists.txt"], check_sources_built.violations(self.root))

    def test_is_not_misled_by_a_namesake_elsewhere(self):
        self.write("tests/qdx/CMakeLists.txt", "tallybook_test(qdx_test SOURCES BodyTest.cpp)")
        self.write("tests/qdx/BodyTest.cpp")
        self.write("tests/import/BodyTest.cpp")
        self.assertEqual(["tests/import/BodyTest.cpp: named in no CMakeLists.txt"], self.found())


class UsingsTest(RuleTest):
    def test_accepts_names_that_are_used_and_what_a_class_inherits(self):
        self.write("tallybook/cli/A.cpp", "using a::b::Shown;\nText t = Shown(x);\nstruct C : D {\n  using D::D;\n};")
        self.assertEqual([], check_usings.violations(self.root))

    def test_finds_a_name_that_only_a_comment_uses(self):
        self.write("src/base/A.cpp", "\nusing a::Shown;\n// Shown\nint ShownHere;")
        self.assertEqual(["src/base/A.cpp:2: Shown is not used"], check_usings.violations(self.root))


class LinesTest(RuleTest):
    def test_accepts_lines_that_go_the_one_way_and_printers_of_standard_output(self):
        self.write("tallybook/cli/Lines.cpp", "std::cerr << line;")
        self.write("tallybook/cli/A.cpp", 'Warn("a");\ntable.Print(std::cout);\nstd::cout.flush();  // not std::cerr << a')
        self.assertEqual([], check_lines.violations(self.root))

    def test_finds_a_line_that_goes_another_way(self):
        for line in ("std::cerr << a;", "std::cout << a;", "std::cout\n    << a;", 'printf("%s", a);', "fmt::print(a);",
                     "std::ostream& out = std::cerr;"):
            with self.subTest(line=line):
                self.write("tallybook/cli/A.cpp", "\n" + line)
                found = check_lines.violations(self.root)
                self.assertEqual(1, len(found), found)
                self.assertTrue(found[0].startswith("tallybook/cli/A.cpp:"), found)


class WidthTest(RuleTest):
    LONG = "// " + "word " * 24

    def test_leaves_code_to_the_formatter(self):
        self.write("src/base/Long.h", "x" * 121 + "\n// " + "y" * 117)
        self.assertEqual([], check_width.violations(self.root))

    def test_finds_a_comment_that_is_too_long(self):
        self.write("tallybook/cli/Long.h", "#pragma once\n  " + self.LONG)
        found = check_width.violations(self.root)
        self.assertEqual(1, len(found), found)
        self.assertTrue(found[0].startswith("tallybook/cli/Long.h:2: a comment of "), found)

    def test_mends_running_text_and_leaves_what_is_laid_out(self):
        self.write("src/base/Long.h", f"{self.LONG}end\n// goes on\n//   table  row\n{self.LONG}end\n//   needs  more")
        check_width.mend(self.root)
        words = "// " + "word " * 22 + "word"
        self.assertEqual(f"{words}\n// word end goes on\n//   table  row\n{words}\n// word end\n//   needs  more\n",
                         (self.root / "src/base/Long.h").read_text(encoding="utf-8"))
        self.assertEqual([], check_width.violations(self.root))

    def test_mends_what_has_a_label_below_its_text(self):
        self.write("src/base/Long.h", "//   fails  " + "word " * 23 + "end\n//          goes on")
        check_width.mend(self.root)
        self.assertEqual("//   fails  " + "word " * 20 + "word\n//          word word end goes on\n",
                         (self.root / "src/base/Long.h").read_text(encoding="utf-8"))


if __name__ == "__main__":
    unittest.main()
