#include <filesystem>

#include "platform/Platform.h"
#include "tallybook/application/FileDisposals.h"
#include "tallybook/application/OpenToChange.h"
#include "tallybook/engine/JournalNotes.h"
#include "tests/tallybook/engine/BookFixture.h"

namespace tallybook::application {
namespace {

using testing::Day;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;

class OpenToChangeTest : public testing::BookFixture {
 protected:
  // An import has been kept, and its file is still to be deleted.
  void LeaveDue(const Text& name) {
    folder.Write(name, name);
    const auto book = Open();
    book->BeginRollback(Day(2003, 5, 5), Day(2003, 5, 5));
    testing::Put(*book, 101, Day(2003, 5, 5), 1, next_++);
    book->EndRollback();
    const FileDisposal disposal{.path = folder.Path(name), .new_path = {}, .stamp = *StampOf(folder.Path(name))};
    engine::JournalNotes(*book).SaveDue(book->LastEntry(), TextOfDisposals({disposal}));
    book->Close();
  }
  std::vector<Text> LinesOfOpening() {
    std::vector<Text> lines;
    engine::BookOptions options;
    options.notice = [&](const Text& line) { lines.push_back(line); };
    OpenToChange(BookPath(), app, options, *ThePlatform().files)->Close();
    return lines;
  }

 private:
  Double next_ = 1;
};

TEST_F(OpenToChangeTest, DoesWhatIsDueWithFilesOnceAndTellsIt) {
  CreateAndOpen()->Close();
  EXPECT_THAT(LinesOfOpening(), IsEmpty());
  LeaveDue("a.QDX");
  EXPECT_THAT(LinesOfOpening(), ElementsAre(HasSubstr("a.QDX is deleted now")));
  EXPECT_FALSE(folder.Has("a.QDX"));
  EXPECT_THAT(LinesOfOpening(), IsEmpty());
}

TEST_F(OpenToChangeTest, OpensTheBookWhereNobodyListens) {
  CreateAndOpen()->Close();
  LeaveDue("a.QDX");
  const auto book = OpenToChange(BookPath(), app, {}, *ThePlatform().files);
  EXPECT_FALSE(folder.Has("a.QDX"));
  EXPECT_FALSE(book->ReadOnly());
}

TEST_F(OpenToChangeTest, OpensTheBookWhereWhatIsDueCannotBeTold) {
  CreateAndOpen()->Close();
  LeaveDue("a.QDX");
  Meddle("UPDATE journal_text SET value = 'other' WHERE name = 'due'");
  EXPECT_THAT(LinesOfOpening(), ElementsAre(HasSubstr("cannot be told: ")));
  EXPECT_TRUE(folder.Has("a.QDX"));
}

}  // namespace
}  // namespace tallybook::application
