#include <filesystem>
#include <utility>

#include "platform/Platform.h"
#include "tallybook/application/FileDisposals.h"
#include "tallybook/application/FileLayer.h"
#include "tallybook/engine/Journal.h"
#include "tallybook/engine/JournalNotes.h"
#include "tests/tallybook/engine/BookFixture.h"

namespace tallybook::application {
namespace {

using testing::Day;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::SizeIs;
using Result = DisposalOutcome::Result;

// Lets no file go while it is told so.
class HeldFiles : public FileLayer {
 public:
  using FileLayer::FileLayer;
  void Delete(const Text& path) override {
    if (held == path) throw Failure(FailureNumber::kPermissionDenied, path + ": held", "FileSystem");
    Below().Delete(path);
  }
  Text held;
};

class FileDisposalsTest : public testing::BookFixture {
 protected:
  void SetUp() override {
    for (const char* name : {"a.QDX", "b.QDX"}) folder.Write(name, name);
  }

  [[nodiscard]] FileDisposal Deleted(const Text& name) const {
    return {.path = folder.Path(name), .new_path = {}, .stamp = *StampOf(folder.Path(name))};
  }
  [[nodiscard]] FileDisposal Renamed(const Text& name, const Text& new_name) const {
    FileDisposal disposal = Deleted(name);
    disposal.new_path = folder.Path(new_name);
    return disposal;
  }
  Result Do(const FileDisposal& disposal) { return CarryOut(disposal, files).result; }

  // An import of one file, which is due.
  void Import(engine::Book& book, const std::vector<FileDisposal>& due) {
    book.SetOperationName("import");
    book.BeginRollback(Day(2003, 5, 5), Day(2003, 5, 5));
    testing::Put(book, 101, Day(2003, 5, 5), 1, next_++);
    book.EndRollback();
    engine::JournalNotes(book).SaveDue(book.LastEntry(), TextOfDisposals(due));
  }
  static std::vector<Result> Results(const std::vector<DisposalOutcome>& outcomes) {
    std::vector<Result> results;
    for (const DisposalOutcome& outcome : outcomes) results.push_back(outcome.result);
    return results;
  }

  HeldFiles files{*ThePlatform().files};
  Double next_ = 1;
};

TEST_F(FileDisposalsTest, AreKeptAsWordsWithEveryByteOfTheirPaths) {
  const std::vector<FileDisposal> disposals = {
      {.path = "/in/caf\xC3\xA9/\xFF\x80.QDX", .new_path = {}, .stamp = {.inode = ~0ULL, .size = 3, .modified = -5}},
      {.path = "/in/\"b\"\n.QDX", .new_path = "/in/b.XDQ", .stamp = {.inode = 7, .size = 0, .modified = 1LL << 62U}}};
  EXPECT_EQ(DisposalsOf(TextOfDisposals(disposals)), disposals);
  EXPECT_EQ(TextOfDisposals({}), "");
}

TEST_F(FileDisposalsTest, AreNoneWhereTheWordsAreOthers) {
  for (const char* words : {"", "{}", "[", "[1]", R"([{"path":5}])", "words"}) {
    EXPECT_THAT(DisposalsOf(words), IsEmpty()) << words;
  }
}

TEST_F(FileDisposalsTest, DeleteAndRename) {
  EXPECT_EQ(Do(Deleted("a.QDX")), Result::kDone);
  EXPECT_FALSE(folder.Has("a.QDX"));
  EXPECT_EQ(Do(Renamed("b.QDX", "b.XDQ")), Result::kDone);
  EXPECT_FALSE(folder.Has("b.QDX"));
  EXPECT_EQ(folder.Read("b.XDQ"), "b.QDX");
}

TEST_F(FileDisposalsTest, LeaveAFileAloneThatHasChangedOrIsAnother) {
  const FileDisposal changed = Deleted("a.QDX");
  folder.Write("a.QDX", "A.QDX!");
  EXPECT_EQ(Do(changed), Result::kChanged);
  EXPECT_EQ(folder.Read("a.QDX"), "A.QDX!");
  const FileDisposal replaced = Renamed("b.QDX", "b.XDQ");
  folder.Write("new", "b.QDX");
  std::filesystem::last_write_time(folder.Path("new"), std::filesystem::last_write_time(folder.Path("b.QDX")));
  std::filesystem::rename(folder.Path("new"), folder.Path("b.QDX"));
  EXPECT_EQ(Do(replaced), Result::kChanged);
  EXPECT_TRUE(folder.Has("b.QDX"));
}

TEST_F(FileDisposalsTest, LeaveAFolderAloneThatCameToTheName) {
  const FileDisposal disposal = Deleted("a.QDX");
  std::filesystem::remove(folder.Path("a.QDX"));
  std::filesystem::create_directory(folder.Path("a.QDX"));
  EXPECT_EQ(Do(disposal), Result::kChanged);
  EXPECT_TRUE(folder.Has("a.QDX"));
}

TEST_F(FileDisposalsTest, TellAFileThatIsGone) {
  const FileDisposal disposal = Deleted("a.QDX");
  std::filesystem::remove(folder.Path("a.QDX"));
  EXPECT_EQ(Do(disposal), Result::kGone);
}

TEST_F(FileDisposalsTest, KnowARenameThatWasDoneAlready) {
  const FileDisposal disposal = Renamed("a.QDX", "a.XDQ");
  EXPECT_EQ(Do(disposal), Result::kDone);
  EXPECT_EQ(Do(disposal), Result::kDone);
  EXPECT_EQ(folder.Read("a.XDQ"), "a.QDX");
}

TEST_F(FileDisposalsTest, ReplaceNothingThatCameToTheNewName) {
  const FileDisposal disposal = Renamed("a.QDX", "a.XDQ");
  folder.Write("a.XDQ", "other");
  EXPECT_EQ(Do(disposal), Result::kStays);
  EXPECT_EQ(folder.Read("a.XDQ"), "other");
  EXPECT_TRUE(folder.Has("a.QDX"));
}

TEST_F(FileDisposalsTest, OfABookAreDoneOnceAndInTheirOrder) {
  const auto book = CreateAndOpen();
  folder.Write("a.XDQ", "older");
  Import(*book, {Deleted("a.XDQ"), Renamed("a.QDX", "a.XDQ")});
  Import(*book, {Deleted("b.QDX")});
  EXPECT_THAT(Results(CarryOutDue(*book, files)), ElementsAre(Result::kDone, Result::kDone, Result::kDone));
  EXPECT_EQ(folder.Read("a.XDQ"), "a.QDX");
  EXPECT_FALSE(folder.Has("a.QDX"));
  EXPECT_FALSE(folder.Has("b.QDX"));
  EXPECT_THAT(engine::JournalNotes(*book).Due(), IsEmpty());
  EXPECT_THAT(CarryOutDue(*book, files), IsEmpty());
}

TEST_F(FileDisposalsTest, OfABookStayDueWhileAFileCannotBeTakenAway) {
  const auto book = CreateAndOpen();
  Import(*book, {Deleted("a.QDX"), Deleted("b.QDX")});
  files.held = folder.Path("a.QDX");
  const auto outcomes = CarryOutDue(*book, files);
  EXPECT_THAT(Results(outcomes), ElementsAre(Result::kStays, Result::kDone));
  EXPECT_THAT(DisposalText(outcomes[0]),
              HasSubstr("a.QDX is still to be deleted since its import (journal entry 1): "));
  EXPECT_THAT(engine::JournalNotes(*book).Due(), ElementsAre(std::pair{1, TextOfDisposals({Deleted("a.QDX")})}));
  files.held.clear();
  EXPECT_THAT(Results(CarryOutDue(*book, files)), ElementsAre(Result::kDone));
  EXPECT_FALSE(folder.Has("a.QDX"));
  EXPECT_THAT(engine::JournalNotes(*book).Due(), IsEmpty());
}

TEST_F(FileDisposalsTest, OfAnImportThatWasTakenBackAreLeftUndone) {
  const auto book = CreateAndOpen();
  Import(*book, {Deleted("a.QDX")});
  engine::Journal(*book).UndoNewest();
  EXPECT_THAT(Results(CarryOutDue(*book, files)), ElementsAre(Result::kTakenBack));
  EXPECT_TRUE(folder.Has("a.QDX"));
  EXPECT_THAT(engine::JournalNotes(*book).Due(), IsEmpty());
}

TEST_F(FileDisposalsTest, TellWhatBecameOfAFile) {
  const auto words = [](Result result, const Text& why, const Text& new_path = "") {
    const FileDisposal disposal{.path = "/in/a.QDX", .new_path = new_path, .stamp = {}};
    return DisposalText({.disposal = disposal, .entry = 3, .result = result, .why = why});
  };
  EXPECT_EQ(words(Result::kDone, ""), "/in/a.QDX is deleted now, as was due since its import (journal entry 3)");
  EXPECT_EQ(
      words(Result::kDone, "no room", "/in/a.XDQ"),
      "/in/a.QDX is renamed to /in/a.XDQ now, as was due since its import (journal entry 3), which the book could "
      "not be told: no room");
  EXPECT_EQ(words(Result::kGone, ""), "/in/a.QDX was to be deleted since its import (journal entry 3), and is gone");
  EXPECT_THAT(words(Result::kChanged, ""), HasSubstr("it has changed, so it is left alone"));
  EXPECT_THAT(words(Result::kTakenBack, ""), HasSubstr("that has been taken back, so it is left alone"));
}

}  // namespace
}  // namespace tallybook::application
