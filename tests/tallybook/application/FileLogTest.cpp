#include <gmock/gmock.h>
#include <sys/stat.h>

#include "tallybook/application/FileLog.h"
#include "tests/support/ScriptedPlatform.h"
#include "tests/support/TempFolder.h"

namespace tallybook::application {
namespace {

class FileLogTest : public ::testing::Test {
 protected:
  testing::ScriptedPlatform platform_;
  testing::TempFolder folder_;
};

TEST_F(FileLogTest, AppendsOneLineForEachEntry) {
  folder_.Write("t.log", "before\n");
  FileLog log(folder_.Path("t.log"));
  EXPECT_EQ(log.LogError("Tallybook - CDataExchange:WriteQDXFile", 40, -1), 1);
  platform_.clock.Advance(1);
  EXPECT_EQ(log.AuditEntry("Sales", "Import", "System Fields", {"/books/Import.txt", "b.txt"}), 1);
  EXPECT_EQ(folder_.Read("t.log"),
            "before\n"
            "2004-02-03 14:05:09 error Tallybook - CDataExchange:WriteQDXFile (statement 40)\n"
            "2004-02-03 14:05:10 audit Sales: Import: System Fields: /books/Import.txt; b.txt\n");
  EXPECT_EQ(log.LostEntries(), 0);
}

TEST_F(FileLogTest, KeepsNothingWhereALookMustLeaveNothingBehind) {
  FileLog log(folder_.Path("new/t.log"));
  log.KeepNothing();
  EXPECT_EQ(log.LogError("Tallybook", 40, -1), 1);
  EXPECT_EQ(log.StopEntry("stop"), 1);
  EXPECT_FALSE(folder_.Has("new"));
  EXPECT_EQ(log.LostEntries(), 0);
}

TEST_F(FileLogTest, LosesAnEntryRatherThanWaitForTheReaderOfAPipe) {
  ASSERT_EQ(::mkfifo(folder_.Path("t.log").c_str(), 0600), 0);
  FileLog log(folder_.Path("t.log"));
  EXPECT_EQ(log.StopEntry("stop"), 0);
  EXPECT_EQ(log.LostEntries(), 1);
}

TEST_F(FileLogTest, WritesAnAuditEntryWithoutItems) {
  FileLog log(folder_.Path("t.log"));
  log.AuditEntry("Sales", "Import", "System Fields", {});
  EXPECT_EQ(folder_.Read("t.log"), "2004-02-03 14:05:09 audit Sales: Import: System Fields\n");
}

TEST_F(FileLogTest, WritesTheReasonOfAnOperationThatStopped) {
  FileLog log(folder_.Path("t.log"));
  EXPECT_EQ(log.StopEntry("january.txt: record 3: \"x\" is not a number"), 1);
  EXPECT_EQ(folder_.Read("t.log"), "2004-02-03 14:05:09 stop january.txt: record 3: \"x\" is not a number\n");
}

TEST_F(FileLogTest, KeepsAnEntryOnOneLine) {
  FileLog log(folder_.Path("t.log"));
  log.LogError("first\r\nsecond", 0, -1);
  EXPECT_EQ(folder_.Read("t.log"), "2004-02-03 14:05:09 error first second (statement 0)\n");
}

TEST_F(FileLogTest, ShowsControlCharactersOfNames) {
  FileLog log(folder_.Path("t.log"));
  log.AuditEntry("North\x1b[2J", "Import", "System Fields", {"a\nb"});
  EXPECT_EQ(folder_.Read("t.log"), "2004-02-03 14:05:09 audit North\\x1b[2J: Import: System Fields: a b\n");
}

TEST_F(FileLogTest, MakesTheFoldersThatAreMissing) {
  FileLog log(folder_.Path("state/tallybook/t.log"));
  EXPECT_EQ(log.LogError("m", 1, -1), 1);
  EXPECT_TRUE(folder_.Has("state/tallybook/t.log"));
}

TEST_F(FileLogTest, CountsAnEntryThatCannotBeWrittenAndFailsNobody) {
  FileLog folder_in_its_place(folder_.Path());
  EXPECT_EQ(folder_in_its_place.LogError("m", 1, -1), 0);
  EXPECT_EQ(folder_in_its_place.LostEntries(), 1);
  FileLog full("/dev/full");
  EXPECT_EQ(full.LogError("m", 1, -1), 0);
  EXPECT_EQ(full.AuditEntry("a", "b", "c", {}), 0);
  EXPECT_EQ(full.LostEntries(), 2);
}

}  // namespace
}  // namespace tallybook::application
