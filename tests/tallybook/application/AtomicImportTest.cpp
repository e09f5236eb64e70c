#include <filesystem>
#include <functional>
#include <optional>

#include "platform/Platform.h"
#include "support/Utility.h"
#include "tallybook/application/AtomicImport.h"
#include "tallybook/application/FileLayer.h"
#include "tallybook/application/FileRemoval.h"
#include "tallybook/engine/Journal.h"
#include "tallybook/engine/JournalNotes.h"
#include "tests/tallybook/engine/BookFixture.h"

namespace tallybook::application {
namespace {

using testing::Day;
using ::testing::ElementsAre;
using testing::FailsWith;
using testing::FiguresOf;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::SizeIs;
using Result = DisposalOutcome::Result;

class AtomicImportTest : public testing::BookFixture {
 protected:
  void SetUp() override {
    book = CreateAndOpen();
    for (const char* name : {"a.QDX", "b.QDX"}) folder.Write(name, name);
    platform_files_ = ThePlatform().files;
    files.emplace(*platform_files_);
    ThePlatform().files = &*files;
  }
  void TearDown() override { ThePlatform().files = platform_files_; }

  void Begin() {
    book->SetOperationName("import");
    atomic.emplace(*book, *files, [this](const Text& path) { need_removable(path); });
  }
  void Write() {
    book->BeginRollback(Day(2003, 5, 5), Day(2003, 5, 5));
    testing::Put(*book, 101, Day(2003, 5, 5), 1, next_++);
    book->EndRollback();
  }
  [[nodiscard]] Text At(const Text& name) const { return folder.Path(name); }
  void ImportBoth() {
    Write();
    EXPECT_TRUE(KillFile(At("a.QDX")));
    Write();
    EXPECT_TRUE(RenameFile(At("b.QDX"), At("b.XDQ")));
  }
  [[nodiscard]] std::vector<Text> Found(const Text& pattern) const {
    std::vector<Text> names;
    for (const FoundFile& found : ThePlatform().files->Find(At(pattern))) names.push_back(found.name);
    return names;
  }
  [[nodiscard]] Text ReadByThePlatform(const Text& name) const {
    const auto file = ThePlatform().files->Open(At(name), Access::kRead, Sharing::kShared, Creation::kMustExist);
    std::vector<std::byte> bytes(static_cast<std::size_t>(file->Size()));
    (void)file->ReadAt(0, bytes);
    Text text;
    for (const std::byte byte : bytes) text += static_cast<char>(byte);
    return text;
  }
  void ExpectNothingDone() {
    EXPECT_THAT(FiguresOf(*book), IsEmpty());
    EXPECT_THAT(engine::Journal(*book).Entries(), IsEmpty());
    EXPECT_EQ(folder.Read("a.QDX"), "a.QDX");
    EXPECT_EQ(folder.Read("b.QDX"), "b.QDX");
    EXPECT_FALSE(folder.Has("b.XDQ"));
    EXPECT_EQ(ThePlatform().files, &*files);
  }

  std::unique_ptr<engine::Book> book;
  std::optional<WholeFiles> files;
  std::optional<AtomicImport> atomic;
  std::function<void(const Text&)> need_removable = [](const Text&) {};

 private:
  FileSystem* platform_files_ = nullptr;
  Double next_ = 1;
};

TEST_F(AtomicImportTest, SeesFilesAsGoneThatAreStillThere) {
  Begin();
  EXPECT_FALSE(atomic->HasWork());
  ImportBoth();
  EXPECT_TRUE(atomic->HasWork());
  EXPECT_THAT(Found("*.QDX"), IsEmpty());
  EXPECT_THAT(Found("*.XDQ"), ElementsAre("b.XDQ"));
  EXPECT_FALSE(FileExists(At("a.QDX")));
  EXPECT_EQ(ReadByThePlatform("b.XDQ"), "b.QDX");
  EXPECT_EQ(atomic->PlaceOf(At("b.XDQ")), At("b.QDX"));
  EXPECT_EQ(atomic->PlaceOf(At("a.QDX")), At("a.QDX"));
  EXPECT_TRUE(folder.Has("a.QDX"));
  EXPECT_TRUE(folder.Has("b.QDX"));
  EXPECT_FALSE(folder.Has("b.XDQ"));
}

TEST_F(AtomicImportTest, KeepsFiguresAndDisposesOfFiles) {
  Begin();
  ImportBoth();
  EXPECT_THAT(FiguresOf(*OpenToRead()), IsEmpty());
  const auto outcomes = atomic->Keep();
  ASSERT_THAT(outcomes, SizeIs(2));
  EXPECT_EQ(outcomes[0].result, Result::kDone);
  EXPECT_EQ(outcomes[0].entry, 1);
  EXPECT_EQ(outcomes[1].entry, 2);
  EXPECT_THAT(FiguresOf(*OpenToRead()), SizeIs(1));
  EXPECT_FALSE(folder.Has("a.QDX"));
  EXPECT_FALSE(folder.Has("b.QDX"));
  EXPECT_EQ(folder.Read("b.XDQ"), "b.QDX");
  EXPECT_EQ(ThePlatform().files, &*files);
  EXPECT_THAT(engine::JournalNotes(*book).Due(), IsEmpty());
}

TEST_F(AtomicImportTest, LeavesAllAsItWasWhenItIsDropped) {
  Begin();
  ImportBoth();
  atomic->Drop();
  ExpectNothingDone();
}

TEST_F(AtomicImportTest, LeavesAllAsItWasWhereItEndsWithoutAWord) {
  Begin();
  ImportBoth();
  atomic.reset();
  ExpectNothingDone();
}

TEST_F(AtomicImportTest, LeavesAllAsItWasWhereItCannotBeKept) {
  book->Close();
  Meddle("CREATE TRIGGER refuse BEFORE INSERT ON journal_text BEGIN SELECT RAISE(FAIL, 'refused'); END");
  book = Open();
  Begin();
  ImportBoth();
  EXPECT_THAT([&] { (void)atomic->Keep(); }, FailsWith(FailureNumber::kDeviceError, "refused"));
  atomic->Drop();
  ExpectNothingDone();
}

TEST_F(AtomicImportTest, LeavesToTheNextWhatCannotBeDisposedOfNow) {
  Begin();
  ImportBoth();
  folder.Write("b.XDQ", "another's");
  const auto outcomes = atomic->Keep();
  ASSERT_THAT(outcomes, SizeIs(2));
  EXPECT_EQ(outcomes[1].result, Result::kStays);
  EXPECT_EQ(folder.Read("b.XDQ"), "another's");
  EXPECT_THAT(FiguresOf(*book), SizeIs(1));
  atomic.reset();
  book->Close();
  std::filesystem::remove(At("b.XDQ"));
  book = Open();
  EXPECT_THAT(CarryOutDue(*book, *files), SizeIs(1));
  EXPECT_EQ(folder.Read("b.XDQ"), "b.QDX");
}

TEST_F(AtomicImportTest, LeavesAFileAloneThatTookTheNameOfTheOneThatWasRead) {
  Begin();
  Write();
  for (const char* name : {"a.QDX", "b.QDX"}) {
    EXPECT_EQ(ReadByThePlatform(name), name);
    folder.Write("new", "not read");
    std::filesystem::rename(At("new"), At(name));
  }
  EXPECT_TRUE(KillFile(At("a.QDX")));
  EXPECT_TRUE(RenameFile(At("b.QDX"), At("b.XDQ")));
  for (const DisposalOutcome& outcome : atomic->Keep()) EXPECT_EQ(outcome.result, Result::kChanged);
  EXPECT_EQ(folder.Read("a.QDX"), "not read");
  EXPECT_EQ(folder.Read("b.QDX"), "not read");
  EXPECT_FALSE(folder.Has("b.XDQ"));
}

TEST_F(AtomicImportTest, DeletesALinkAndNotTheFileThatItLeadsTo) {
  folder.Write("elsewhere", "figures");
  std::filesystem::create_symlink(At("elsewhere"), At("c.QDX"));
  Begin();
  Write();
  EXPECT_EQ(ReadByThePlatform("c.QDX"), "figures");
  EXPECT_TRUE(KillFile(At("c.QDX")));
  EXPECT_TRUE(folder.Has("c.QDX"));
  for (const DisposalOutcome& outcome : atomic->Keep()) EXPECT_EQ(outcome.result, Result::kDone);
  EXPECT_FALSE(std::filesystem::is_symlink(At("c.QDX")));
  EXPECT_EQ(folder.Read("elsewhere"), "figures");
}

TEST_F(AtomicImportTest, IsToldAtOnceWhatCannotBeTakenAway) {
  need_removable = [](const Text& path) { throw Failure(FailureNumber::kPermissionDenied, path + ": held", "Test"); };
  Begin();
  Write();
  EXPECT_FALSE(KillFile(At("a.QDX")));
  EXPECT_THAT(atomic->Keep(), IsEmpty());
  EXPECT_TRUE(folder.Has("a.QDX"));
  EXPECT_THAT(FiguresOf(*book), SizeIs(1));
}

TEST_F(AtomicImportTest, PutsARenamedFileInThePlaceOfAnOlderOneAndDeletesItAgain) {
  folder.Write("a.XDQ", "older");
  Begin();
  Write();
  EXPECT_TRUE(RenameFile(At("a.QDX"), At("a.XDQ")));
  EXPECT_EQ(ReadByThePlatform("a.XDQ"), "a.QDX");
  EXPECT_TRUE(RenameFile(At("b.QDX"), At("b.XDQ")));
  EXPECT_TRUE(KillFile(At("b.XDQ")));
  EXPECT_EQ(folder.Read("a.XDQ"), "older");
  for (const DisposalOutcome& outcome : atomic->Keep()) EXPECT_EQ(outcome.result, Result::kDone);
  EXPECT_EQ(folder.Read("a.XDQ"), "a.QDX");
  EXPECT_FALSE(folder.Has("a.QDX"));
  EXPECT_FALSE(folder.Has("b.QDX"));
  EXPECT_FALSE(folder.Has("b.XDQ"));
}

TEST_F(AtomicImportTest, DisposesOfAFileThatHadNoFigures) {
  Begin();
  EXPECT_TRUE(KillFile(At("a.QDX")));
  EXPECT_TRUE(folder.Has("a.QDX"));
  EXPECT_THAT(atomic->Keep(), SizeIs(1));
  EXPECT_FALSE(folder.Has("a.QDX"));
  EXPECT_THAT(engine::Journal(*book).Entries(), IsEmpty());
}

TEST_F(AtomicImportTest, LiesOverTheLayersThatLieOverTheFiles) {
  class LookedAt : public FileLayer {
   public:
    using FileLayer::FileLayer;
    [[nodiscard]] std::unique_ptr<OpenFile> Open(const Text& path, Access access, Sharing sharing,
                                                 Creation creation) override {
      ++opened;
      return Below().Open(path, access, sharing, creation);
    }
    int opened = 0;
  };
  LookedAt layer(*files);
  ThePlatform().files = &layer;
  Begin();
  ImportBoth();
  EXPECT_EQ(ReadByThePlatform("b.XDQ"), "b.QDX");
  EXPECT_EQ(layer.opened, 1);
  EXPECT_THAT(atomic->Keep(), SizeIs(2));
  EXPECT_EQ(ThePlatform().files, &layer);
  EXPECT_FALSE(folder.Has("a.QDX"));
  atomic.reset();
  ThePlatform().files = &*files;
}

TEST_F(AtomicImportTest, LetsOutputsBeWrittenAtOnce) {
  Begin();
  ThePlatform().files->Open(At("report.txt"), Access::kWrite, Sharing::kLockReadWrite, Creation::kReplace)->Close();
  EXPECT_TRUE(folder.Has("report.txt"));
}

TEST_F(AtomicImportTest, LeavesAloneWhatStandsForAnInputElsewhere) {
  files->StandFor("-", At("a.QDX"));
  Begin();
  Write();
  EXPECT_TRUE(RenameFile("-", "-.bak"));
  EXPECT_THAT(atomic->Keep(), IsEmpty());
  EXPECT_TRUE(folder.Has("a.QDX"));
}

}  // namespace
}  // namespace tallybook::application
