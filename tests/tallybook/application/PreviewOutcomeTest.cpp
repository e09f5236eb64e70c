// What an import would come to, as the engine's record and the preview tell it.
#include <gmock/gmock.h>

#include "platform/Platform.h"
#include "support/Utility.h"
#include "tallybook/application/PreviewOutcome.h"
#include "tests/support/MemoryHost.h"
#include "tests/support/ScriptedPlatform.h"
#include "tests/support/TempFolder.h"

namespace tallybook::application {
namespace {

using preview::FileFate;
using preview::ImportPreview;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

class PreviewOutcomeTest : public ::testing::Test {
 protected:
  PreviewOutcomeTest()
      : host_(testing::SmallBook()), preview_({.book = host_->book, .factory = host_->factory, .app = host_->app}) {
    for (const char* name : {"a.QDX", "b.QDX", "c.QDX"}) folder_.Write(name, "x");
  }

  void Write(const Text& name, Double value) {
    preview_.BeginFile(folder_.Path(name));
    ASSERT_TRUE(preview_.Book().ReadRecord(101, host_->book.FirstDate()));
    preview_.Book().SetFieldValue(1, value);
    ASSERT_TRUE(preview_.Book().WriteRecord());
  }

  testing::ScriptedPlatform platform_;
  testing::TempFolder folder_;
  std::unique_ptr<testing::MemoryHost> host_;
  ImportPreview preview_;
};

TEST_F(PreviewOutcomeTest, TellsOfEveryFileOfARunThatStops) {
  Write("a.QDX", 7);
  ASSERT_TRUE(RenameFile(folder_.Path("a.QDX"), folder_.Path("a.XDQ")));
  preview_.End();
  QDXDefinitionImport definition;
  definition.files.push_back({.file = folder_.Path("a.QDX"), .stored = true});
  definition.files.push_back({.file = folder_.Path("b.QDX")});
  definition.stop = StopReason{.words = "no exchange file"};
  definition.not_begun = {folder_.Path("c.QDX")};
  const auto imports = ImportsOf({.definitions = {definition}, .stop = {}}, preview_);
  ASSERT_EQ(imports.size(), 3);
  EXPECT_TRUE(imports[0].imported);
  EXPECT_EQ(imports[0].figures, 1);
  EXPECT_EQ(imports[0].records.changed, 1);
  EXPECT_EQ(FateText(imports[0].fate), "renamed to " + folder_.Path("a.XDQ"));
  EXPECT_FALSE(imports[1].imported);
  EXPECT_EQ(imports[1].figures, 0);
  EXPECT_EQ(imports[1].reason, "no exchange file");
  EXPECT_EQ(imports[2].reason, "the run stops before it");
}

TEST_F(PreviewOutcomeTest, TellsWhyAFileStays) {
  Write("a.QDX", 7);
  preview_.End();
  TextImportTally tally;
  tally.stored = true;
  tally.stays = StopReason{.words = "it is in use"};
  const PreviewedImport import = ImportOf(folder_.Path("a.QDX"), tally, preview_);
  EXPECT_TRUE(import.imported);
  EXPECT_EQ(import.reason, "it is in use");
  EXPECT_EQ(FateText(import.fate), "kept");
}

TEST_F(PreviewOutcomeTest, StandardInputBecomesNothing) {
  preview_.BeginFile("-");
  preview_.End();
  EXPECT_EQ(FateText(ImportOf("-", {}, preview_).fate), "kept");
}

TEST(PreviewOutcome, SaysWhatBecomesOfAFile) {
  EXPECT_EQ(FateText({.kind = FileFate::Kind::kDeleted}), "deleted");
  EXPECT_EQ(FateText({.kind = FileFate::Kind::kRenamed, .new_path = "a.XDQ", .replaces = true}),
            "renamed to a.XDQ, in place of an older file");
}

TEST(PreviewOutcome, TakesTheLinesOfAReport) {
  EXPECT_THAT(LinesOf("a\n\nb\n\n"), ElementsAre("a", "", "b"));
  EXPECT_THAT(LinesOf(""), IsEmpty());
}

}  // namespace
}  // namespace tallybook::application
