#include "dialogs/QdxFiles.h"
#include "exchange/CDataExchange.h"
#include "tests/dialogs/DefinitionsFixture.h"

namespace tallybook::testing {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

class QdxFilesTest : public DefinitionsFixture {
 protected:
  QdxFilesTest() {
    exchange.SetOwner(&book());
    exchange.InitFile();
  }
  // The open definition, of number 0, names this file.
  void Name(const Text& path) { exchange.SetQdxFileName(kSelected, path); }

  CDataExchange exchange{host->factory};
};

TEST_F(QdxFilesTest, CountsOneForAFileOfExactlyThatName) {
  folder.Write("A.QDX", "a");
  folder.Write("A1.QDX", "a");
  EXPECT_EQ(CountMatchingFiles(Path("A.QDX")), 1);
}

TEST_F(QdxFilesTest, CountsWhatAPatternMatches) {
  for (const char* name : {"A1.QDX", "a2.qdx", "A3.QDX", "B.QDX"}) folder.Write(name, "a");
  EXPECT_EQ(CountMatchingFiles(Path("A*.QDX")), 3);
  EXPECT_EQ(CountMatchingFiles(Path("C*.QDX")), 0);
}

TEST_F(QdxFilesTest, CountsNothingForABadPathAndForASearchThatFails) {
  EXPECT_EQ(CountMatchingFiles(Path("none/A*.QDX")), 0);
  EXPECT_EQ(CountMatchingFiles(""), 0);
  platform.files.FailNth(FileCall::kFind, 1, FailureNumber::kDeviceError);
  EXPECT_EQ(CountMatchingFiles(Path("A*.QDX")), 0);
}

TEST_F(QdxFilesTest, ResolvesAPatternToTheFirstMatchInItsFolder) {
  for (const char* name : {"B2.QDX", "B1.QDX"}) folder.Write(name, "a");
  EXPECT_EQ(ResolveQdxFileName(Path("B*.QDX")), Path("B1.QDX"));
}

TEST_F(QdxFilesTest, ResolvesANameToItselfWhereItExistsAndWhereNothingMatches) {
  folder.Write("B.QDX", "a");
  EXPECT_EQ(ResolveQdxFileName(Path("B.QDX")), Path("B.QDX"));
  EXPECT_EQ(ResolveQdxFileName(Path("C*.QDX")), Path("C*.QDX"));
  EXPECT_EQ(ResolveQdxFileName(""), "");
}

TEST_F(QdxFilesTest, ReplacesTheArchiveCopyByTheFile) {
  folder.Write("A.QDX", "new");
  folder.Write(CopyOf(0), "old and longer");
  Name(Path("A.QDX"));
  BackupQdxFile(exchange, book());
  EXPECT_EQ(folder.Read(CopyOf(0)), "new");
  EXPECT_EQ(folder.Read("A.QDX"), "new");
}

TEST_F(QdxFilesTest, KeepsTheArchiveCopyWhereThereIsNoFileOfThatName) {
  folder.Write("A1.QDX", "new");
  folder.Write(CopyOf(0), "old");
  Name(Path("A*.QDX"));
  BackupQdxFile(exchange, book());
  EXPECT_EQ(folder.Read(CopyOf(0)), "old");
}

TEST_F(QdxFilesTest, KeepsTheArchiveCopyThatTheDefinitionItselfNames) {
  folder.Write(CopyOf(0), "only");
  Name(Path(CopyOf(0)));
  BackupQdxFile(exchange, book());
  EXPECT_EQ(folder.Read(CopyOf(0)), "only");
}

TEST_F(QdxFilesTest, LogsACopyThatFailsAndGoesOn) {
  folder.Write("A.QDX", "new");
  Name(Path("A.QDX"));
  platform.files.FailNth(FileCall::kCopy, 1, FailureNumber::kDiskFull);
  BackupQdxFile(exchange, book());
  ASSERT_EQ(Logged().size(), 1U);
  EXPECT_THAT(Logged()[0].message, ::testing::EndsWith(" - BackupQdxFile"));
  EXPECT_EQ(Logged()[0].line_number, 50);
  EXPECT_THAT(Boxes(), IsEmpty());
}

}  // namespace
}  // namespace tallybook::testing
