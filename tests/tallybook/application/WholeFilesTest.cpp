// The file system of applications that write outputs whole: what the component does with it comes out as ever, and the
// old file stands until the application has said so.
#include <gmock/gmock.h>
#include <sys/stat.h>

#include "support/FileNumber.h"
#include "support/Utility.h"
#include "tallybook/application/WholeFiles.h"
#include "tallybook/application/WholeTables.h"
#include "tallybook/tables/ExportLibrary.h"
#include "tests/support/FailsWith.h"
#include "tests/support/InChild.h"
#include "tests/support/OtherProcess.h"
#include "tests/support/ScriptedPlatform.h"
#include "tests/support/TempFolder.h"

namespace tallybook::application {
namespace {

using testing::FailsWith;
using testing::FileCall;
using ::testing::HasSubstr;
using ::testing::Not;
using ::testing::UnorderedElementsAre;

class WholeFilesTest : public ::testing::Test {
 protected:
  WholeFilesTest() : files_(platform_.files) { ThePlatform().files = &files_; }

  // What an export does with its file: it clears the way, makes the file, writes and closes it.
  void Export(const Text& name, const Text& text) {
    ASSERT_TRUE(KillFile(folder_.Path(name)));
    Integer number = 0;
    Text path = folder_.Path(name);
    ASSERT_TRUE(OpenFileEx("BL", number, path));
    EXPECT_EQ(OpenFileName(number), folder_.Path(name));
    FileOf(number).Write(std::as_bytes(std::span(text)));
    CloseFileEx(number);
  }
  [[nodiscard]] std::vector<Text> Names() const {
    std::vector<Text> names;
    for (const auto& entry : std::filesystem::directory_iterator(folder_.Path()))
      names.push_back(entry.path().filename().string());
    return names;
  }

  testing::ScriptedPlatform platform_;
  testing::TempFolder folder_;
  WholeFiles files_;
};

TEST_F(WholeFilesTest, WhatIsToBeSettledFirstIsBeforeAFileOfTheUsersGoesOrGetsAnotherName) {
  folder_.Write("one", "1");
  folder_.Write("two", "2");
  std::vector<std::vector<Text>> seen;
  files_.SettleFirst([&] { seen.push_back(Names()); });
  ASSERT_TRUE(KillFile(folder_.Path("one")));
  ThePlatform().files->Rename(folder_.Path("two"), folder_.Path("two.bak"));
  EXPECT_THAT(seen, ::testing::ElementsAre(UnorderedElementsAre("one", "two"), UnorderedElementsAre("two")));
  EXPECT_THAT(Names(), UnorderedElementsAre("two.bak"));
}

TEST_F(WholeFilesTest, AFileStaysWhereWhatIsToBeSettledFirstCannotBe) {
  folder_.Write("one", "1");
  files_.SettleFirst([] { throw Failure(FailureNumber::kDeviceError, "the disk has failed"); });
  EXPECT_FALSE(KillFile(folder_.Path("one")));
  EXPECT_THAT([&] { ThePlatform().files->Rename(folder_.Path("one"), folder_.Path("one.bak")); },
              FailsWith(FailureNumber::kDeviceError));
  EXPECT_THAT(Names(), UnorderedElementsAre("one"));
  files_.SettleFirst({});
  EXPECT_TRUE(KillFile(folder_.Path("one")));
}

TEST_F(WholeFilesTest, AnOutputThatIsWrittenAnewSettlesNothing) {
  folder_.Write("out", "old");
  bool settled = false;
  files_.SettleFirst([&] { settled = true; });
  WholeOutput output(files_, folder_.Path("out"));
  Export("out", "new");
  EXPECT_TRUE(output.Keep());
  EXPECT_FALSE(settled);
}

TEST_F(WholeFilesTest, AnOutputStandsUnderItsNameWhenItIsKept) {
  folder_.Write("out", "old");
  WholeOutput output(files_, folder_.Path("out"));
  Export("out", "new");
  EXPECT_EQ(folder_.Read("out"), "old");
  EXPECT_TRUE(output.Keep());
  EXPECT_EQ(folder_.Read("out"), "new");
  EXPECT_THAT(Names(), UnorderedElementsAre("out"));
}

TEST_F(WholeFilesTest, AnOutputOfManyMebibytesIsKeptAsItWasWritten) {
  Text text;
  while (text.size() < 9'000'000) text += std::to_string(text.size()) + ";";
  files_.Announce(folder_.Path("out"));
  Export("out", text);
  EXPECT_TRUE(files_.Keep(folder_.Path("out")));
  EXPECT_TRUE(folder_.Read("out") == text);
}

TEST_F(WholeFilesTest, TheComponentSeesTheOldFileGoneAndTheNewOneThere) {
  folder_.Write("out", "old");
  WholeOutput output(files_, folder_.Path("out"));
  EXPECT_TRUE(FileExists(folder_.Path("out")));
  EXPECT_TRUE(KillFile(folder_.Path("out")));
  EXPECT_FALSE(FileExists(folder_.Path("out")));
  Export("out", "new");
  EXPECT_TRUE(FileExists(folder_.Path("out")));
}

TEST_F(WholeFilesTest, AnOutputThatIsNotKeptLeavesTheOldFile) {
  folder_.Write("out", "old");
  {
    WholeOutput output(files_, folder_.Path("out"));
    Export("out", "new");
  }
  EXPECT_EQ(folder_.Read("out"), "old");
  EXPECT_THAT(Names(), UnorderedElementsAre("out"));
}

TEST_F(WholeFilesTest, AFileThatWasNotAnnouncedIsWrittenAndDeletedAtOnce) {
  folder_.Write("out", "old");
  Export("out", "new");
  EXPECT_EQ(folder_.Read("out"), "new");
  EXPECT_TRUE(KillFile(folder_.Path("out")));
  EXPECT_FALSE(folder_.Has("out"));
}

TEST_F(WholeFilesTest, TheDeleteOfAFileThatOthersHoldIsRefusedAsEver) {
  folder_.Write("out", "old");
  const testing::OtherProcess other("BR", folder_.Path("out"));
  ASSERT_TRUE(other.Holds());
  const WholeOutput output(files_, folder_.Path("out"));
  EXPECT_FALSE(KillFile(folder_.Path("out")));
  EXPECT_THAT(files_.LastRefusal(), HasSubstr("it is in use"));
}

TEST_F(WholeFilesTest, AWriteThatFailedBreaksTheOutputUntilItIsRepeated) {
  folder_.Write("out", "old");
  for (const bool repeated : {false, true}) {
    WholeOutput output(files_, folder_.Path("out"));
    const auto file = files_.Open(folder_.Path("out"), Access::kWrite, Sharing::kLockReadWrite, Creation::kReplace);
    const Text text = "new";
    platform_.files.FailNth(FileCall::kWrite, 1, FailureNumber::kDiskFull);
    EXPECT_THAT([&] { file->WriteAt(0, std::as_bytes(std::span(text))); }, FailsWith(FailureNumber::kDiskFull));
    if (repeated) file->WriteAt(0, std::as_bytes(std::span(text)));
    file->Close();
    EXPECT_EQ(output.Keep(), repeated);
    EXPECT_EQ(folder_.Read("out"), repeated ? "new" : "old");
  }
}

TEST_F(WholeFilesTest, AnOutputThatWasNeverClosedIsBroken) {
  folder_.Write("out", "old");
  WholeOutput output(files_, folder_.Path("out"));
  files_.Open(folder_.Path("out"), Access::kWrite, Sharing::kLockReadWrite, Creation::kReplace).reset();
  EXPECT_FALSE(output.Keep());
  EXPECT_EQ(folder_.Read("out"), "old");
}

TEST_F(WholeFilesTest, FailuresShowTheUsersName) {
  WholeOutput output(files_, folder_.Path("out"));
  const auto file = files_.Open(folder_.Path("out"), Access::kRead, Sharing::kShared, Creation::kReplace);
  const Text text = "new";
  try {
    file->WriteAt(0, std::as_bytes(std::span(text)));
    ADD_FAILURE() << "a file that is open for reading took a write";
  } catch (const Failure& failure) {
    EXPECT_THAT(failure.Description(), HasSubstr("\"" + folder_.Path("out") + "\""));
    EXPECT_THAT(failure.Description(), Not(HasSubstr(".part-")));
  }
}

TEST_F(WholeFilesTest, ACopyOntoAnOutputIsWholeToo) {
  folder_.Write("from", "new");
  folder_.Write("out", "old");
  {
    WholeOutput output(files_, folder_.Path("out"));
    platform_.files.FailNth(FileCall::kWrite, 1, FailureNumber::kDiskFull);
    EXPECT_THAT([&] { files_.Copy(folder_.Path("from"), folder_.Path("out")); }, FailsWith(FailureNumber::kDiskFull));
    EXPECT_FALSE(output.Keep());
  }
  EXPECT_EQ(folder_.Read("out"), "old");
  WholeOutput output(files_, folder_.Path("out"));
  files_.Copy(folder_.Path("from"), folder_.Path("out"));
  EXPECT_TRUE(output.Keep());
  EXPECT_EQ(folder_.Read("out"), "new");
}

TEST_F(WholeFilesTest, AnOutputCanBeKeptElsewhere) {
  WholeOutput output(files_, "-", folder_.Path("place"));
  Integer number = 0;
  Text name = "-";
  EXPECT_TRUE(KillFile("-"));
  ASSERT_TRUE(OpenFileEx("BL", number, name));
  CloseFileEx(number);
  EXPECT_TRUE(output.Keep());
  EXPECT_THAT(Names(), UnorderedElementsAre("place"));
}

TEST_F(WholeFilesTest, WhatIsNoFileIsNeitherOpenedNorRenamedNorDeleted) {
  const Text pipe = folder_.Path("pipe");
  ASSERT_EQ(::mkfifo(pipe.c_str(), 0600), 0);
  for (const std::function<void()>& act : std::vector<std::function<void()>>{
           [&] { (void)files_.Open(pipe, Access::kRead, Sharing::kShared, Creation::kMustExist); },
           [&] { files_.Delete(pipe); }, [&] { files_.Rename(pipe, pipe + ".bak"); },
           [&] { files_.Copy(pipe, folder_.Path("copy")); }}) {
    EXPECT_THAT(act, FailsWith(FailureNumber::kPathOrAccess, "is a pipe"));
  }
  EXPECT_THAT(Names(), UnorderedElementsAre("pipe"));
}

TEST_F(WholeFilesTest, AFolderThatCannotBeListedIsNoEmptyOne) {
  std::filesystem::create_directory(folder_.Path("closed"));
  folder_.Write("closed/a.QDX", "x");
  ::chmod(folder_.Path().c_str(), 0777);
  ::chmod(folder_.Path("closed").c_str(), 0311);
  EXPECT_THAT(testing::InChild([&] {
                testing::BecomeNobody();
                (void)files_.Find(folder_.Path("closed/*.QDX"));
              }),
              HasSubstr("cannot be listed: Permission denied"));
  EXPECT_TRUE(files_.Find(folder_.Path("missing/*.QDX")).empty());
  EXPECT_TRUE(files_.Find(folder_.Path("*.QDX")).empty());
}

TEST_F(WholeFilesTest, AnInputThatStandsForAnotherIsReadAndNeitherRenamedNorDeleted) {
  folder_.Write("spooled", "text");
  files_.StandFor("-", folder_.Path("spooled"));
  EXPECT_TRUE(FileExists("-"));
  Text bytes(4, '\0');
  EXPECT_EQ(files_.Open("-", Access::kRead, Sharing::kShared, Creation::kMustExist)
                ->ReadAt(0, std::as_writable_bytes(std::span(bytes))),
            4U);
  EXPECT_EQ(bytes, "text");
  folder_.Write("spooled.bak", "beside it");
  EXPECT_TRUE(files_.Attributes("-.bak").found);
  EXPECT_FALSE(files_.Attributes("-other").found);
  EXPECT_TRUE(RenameFile("-", "-.bak"));
  EXPECT_TRUE(KillFile("-"));
  EXPECT_THAT(Names(), UnorderedElementsAre("spooled", "spooled.bak"));
}

// --- Tables ----------------------------------------------------------------------------------------------------------

class WholeTablesTest : public WholeFilesTest, public ::testing::WithParamInterface<const char*> {
 protected:
  // A table of one column; `rows` of them are written.
  void WriteTable(const Text& name, int rows) {
    Long handle = 0;
    ASSERT_TRUE(tables_.CreateTable(folder_.Path(name), GetParam(), "Table1", 1, handle)) << files_.LastRefusal();
    ASSERT_TRUE(tables_.AddColumn(handle, 1, ColumnType::kText, 10, 0, "Account"));
    for (int i = 0; i < rows; ++i) {
      ASSERT_TRUE(tables_.SetText(handle, 1, "row"));
      ASSERT_EQ(tables_.CommitRow(handle), kRowCommitted);
    }
    tables_.CloseTable(handle);
  }

  WholeTables tables_{std::make_shared<tables::ExportLibrary>(), files_};
};

TEST_P(WholeTablesTest, ATableStandsUnderItsNameWhenItIsKept) {
  folder_.Write("out", "old");
  WholeOutput output(files_, folder_.Path("out"));
  WriteTable("out", 3);
  EXPECT_EQ(folder_.Read("out"), "old");
  EXPECT_TRUE(output.Keep());
  EXPECT_GT(folder_.Read("out").size(), 10U);
  EXPECT_THAT(Names(), UnorderedElementsAre("out"));
}

TEST_P(WholeTablesTest, ATableThatIsNotKeptLeavesTheOldFile) {
  folder_.Write("out", "old");
  {
    WholeOutput output(files_, folder_.Path("out"));
    WriteTable("out", 3);
  }
  EXPECT_EQ(folder_.Read("out"), "old");
  EXPECT_THAT(Names(), UnorderedElementsAre("out"));
}

TEST_P(WholeTablesTest, ATableWhoseRowFailedIsNotKept) {
  folder_.Write("out", "old");
  WholeOutput output(files_, folder_.Path("out"));
  Long handle = 0;
  ASSERT_TRUE(tables_.CreateTable(folder_.Path("out"), GetParam(), "Table1", 1, handle));
  ASSERT_TRUE(tables_.AddColumn(handle, 1, ColumnType::kText, 10, 0, "Account"));
  EXPECT_FALSE(tables_.SetText(handle, 1, "\xFF"));
  EXPECT_NE(tables_.CommitRow(handle), kRowCommitted);
  tables_.CloseTable(handle);
  EXPECT_FALSE(output.Keep());
  EXPECT_EQ(folder_.Read("out"), "old");
}

INSTANTIATE_TEST_SUITE_P(Formats, WholeTablesTest, ::testing::Values("CSV", "XLSX", "DBF", "TXT", "SQLT"),
                         [](const auto& format) { return Text(format.param); });

}  // namespace
}  // namespace tallybook::application
