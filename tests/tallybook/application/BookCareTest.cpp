// Backups of books, and books out of them: with companion files, beside writers and readers, over damage.
#include <filesystem>
#include <functional>
#include <map>
#include <sys/stat.h>
#include <unistd.h>

#include "tallybook/application/BookCare.h"
#include "tallybook/application/OutputRules.h"
#include "tallybook/engine/BookCheck.h"
#include "tallybook/engine/BookFile.h"
#include "tallybook/engine/BookHold.h"
#include "tallybook/engine/BookSalvage.h"
#include "tests/support/InChild.h"
#include "tests/tallybook/engine/BookFixture.h"

namespace tallybook::application {
namespace {

using testing::Day;
using ::testing::ElementsAre;
using testing::FailsWith;
using testing::FigureMap;
using testing::FiguresOf;
using testing::Get;
using ::testing::HasSubstr;
using testing::InChild;
using ::testing::IsEmpty;
using testing::Put;
using ::testing::UnorderedElementsAre;

constexpr bool kReplace = true;
constexpr bool kNotReplace = false;

class BookCareTest : public testing::BookFixture {
 protected:
  void SetUp() override {
    auto description = testing::ShopDescription();
    description.values = {{101, Day(2003, 1, 5), 1, 1.5}, {205, Day(2004, 5, 5), 4, 7}};
    Create(description);
    folder.Write("TBQDX1.North", "a definition");
    folder.Write("TBQDBU1.North", "an archive");
    folder.Write("North.ini", "[Settings]\n");
    folder.Write("TBQDX1.South", "another book's");
  }

  [[nodiscard]] Text Backup() const { return folder.Path("safe"); }
  BackupDone BackUp(bool replace = kNotReplace) { return BackUpBook(BookPath(), Backup(), replace); }
  RestoreDone Restore(bool replace = kNotReplace) { return RestoreBook(Backup(), BookPath(), {.replace = replace}); }
  void Change() { Put(*Open(), 101, Day(2003, 1, 6), 1, 99); }
  FigureMap Figures() { return FiguresOf(*OpenToRead()); }

  std::unique_ptr<engine::Book> OpenAt(const Text& path) {
    engine::BookOptions options;
    options.read_only = true;
    return engine::Book::Open(path, app, options);
  }

  void RemoveBook() {
    for (const char* name : {"North.tbk", "TBQDX1.North", "TBQDBU1.North", "North.ini"}) {
      std::filesystem::remove(folder.Path(name));
    }
  }
  [[nodiscard]] std::vector<Text> Names() const {
    std::vector<Text> names;
    for (const auto& entry : std::filesystem::directory_iterator(folder.Path())) {
      names.push_back(entry.path().filename().string());
    }
    return names;
  }
};

TEST_F(BookCareTest, GivesTheBookBackWithItsCompanionFiles) {
  const FigureMap figures = Figures();
  const BackupDone done = BackUp();
  EXPECT_EQ(done.contents.book_name, "North");
  EXPECT_EQ(done.contents.companions, 3U);
  EXPECT_EQ(done.size, static_cast<std::int64_t>(folder.Read("safe").size()));
  RemoveBook();

  EXPECT_EQ(Restore().kept_as, "");
  EXPECT_EQ(folder.Read("TBQDX1.North"), "a definition");
  EXPECT_EQ(folder.Read("TBQDBU1.North"), "an archive");
  EXPECT_EQ(folder.Read("North.ini"), "[Settings]\n");
  EXPECT_EQ(Figures(), figures);
  EXPECT_THAT(engine::CheckBook(BookPath(), true).findings, IsEmpty());
  EXPECT_THAT(Names(), UnorderedElementsAre("North.tbk", "North.tbk-lock", "TBQDX1.North", "TBQDBU1.North", "North.ini",
                                            "TBQDX1.South", "safe"));
}

TEST_F(BookCareTest, NamesTheCompanionFilesAfterTheBookThatIsMade) {
  BackUp();
  RestoreBook(Backup(), folder.Path("West.tbk"), {});
  EXPECT_EQ(folder.Read("TBQDX1.West"), "a definition");
  EXPECT_EQ(folder.Read("West.ini"), "[Settings]\n");
}

TEST_F(BookCareTest, LeavesNothingBesideTheBackup) {
  const auto before = Names();
  BackUp();
  std::filesystem::remove(Backup());
  EXPECT_EQ(Names().size(), before.size());
}

TEST_F(BookCareTest, BacksUpWhatIsCommittedWhileAWriterHasTheBook) {
  const auto writer = Open();
  Put(*writer, 101, Day(2003, 1, 6), 1, 99);
  writer->Commit();
  Put(*writer, 101, Day(2003, 1, 7), 1, 100);
  BackUp();
  RestoreBook(Backup(), folder.Path("West.tbk"), {});
  const auto west = OpenAt(folder.Path("West.tbk"));
  EXPECT_EQ(Get(*west, 101, Day(2003, 1, 6), 1), 99);
  EXPECT_EQ(Get(*west, 101, Day(2003, 1, 7), 1), 0);
}

TEST_F(BookCareTest, ReplacesABackupOnlyWhereItIsTold) {
  BackUp();
  const std::string before = folder.Read("safe");
  Change();
  EXPECT_THAT([&] { BackUp(); }, FailsWith(FailureNumber::kPathOrAccess, "the backup of North from "));
  EXPECT_EQ(folder.Read("safe"), before);
  BackUp(kReplace);
  EXPECT_NE(folder.Read("safe"), before);
}

TEST_F(BookCareTest, NeverReplacesWhatIsNoBackup) {
  folder.Write("safe", "a letter");
  EXPECT_THAT([&] { BackUp(kReplace); }, FailsWith(FailureNumber::kPathOrAccess, "a file that is no backup"));
  EXPECT_EQ(folder.Read("safe"), "a letter");
  const auto onto = [&](const Text& name) { BackUpBook(BookPath(), folder.Path(name), kReplace); };
  EXPECT_THAT([&] { onto("North.tbk"); }, FailsWith(FailureNumber::kPathOrAccess, "is the book of this command"));
  EXPECT_THAT([&] { onto("TBQDX1.North"); }, FailsWith(FailureNumber::kPathOrAccess, "belongs to the book"));
  EXPECT_THAT([&] { onto("TBQDX7.North"); }, FailsWith(FailureNumber::kPathOrAccess, "belongs to the book"));
  EXPECT_THAT([&] { onto(""); }, FailsWith(FailureNumber::kPathOrAccess, "is a folder"));
}

TEST_F(BookCareTest, MakesNoBackupOfABookThatIsDamaged) {
  BackUp();
  const std::string before = folder.Read("safe");
  Meddle("UPDATE chunk SET figures = x'0100000000' WHERE key = 101 << 24");
  EXPECT_THAT([&] { BackUp(kReplace); }, FailsWith(FailureNumber::kDeviceError, "do not agree with their checksum"));
  EXPECT_EQ(folder.Read("safe"), before);
}

TEST_F(BookCareTest, GivesABackupToNobodyWhoMayNotReadTheBook) {
  ::chmod(BookPath().c_str(), 0600);
  BackUp();
  struct stat status {};
  ASSERT_EQ(::stat(Backup().c_str(), &status), 0);
  EXPECT_EQ(status.st_mode & 0777, 0600U);
}

TEST_F(BookCareTest, LetsNoOtherOutputGoOntoABackup) {
  BackUp();
  EXPECT_THAT([&] { OutputRules().Check(Backup()); },
              FailsWith(FailureNumber::kPathOrAccess, "is the backup of a book"));
}

TEST_F(BookCareTest, SalvagesADamagedBackupWithItsCompanionFiles) {
  const FigureMap figures = Figures();
  BackUp();
  std::string bytes = folder.Read("safe");
  bytes[70] = 'x';  // its mark
  folder.Write("safe", bytes);
  EXPECT_THAT(engine::SalvageBook(Backup(), folder.Path("West.tbk"), false).lost, IsEmpty());
  EXPECT_EQ(FiguresOf(*OpenAt(folder.Path("West.tbk"))), figures);
  EXPECT_EQ(folder.Read("TBQDX1.West"), "a definition");
}

TEST_F(BookCareTest, TakesABackupForNoBook) {
  BackUp();
  EXPECT_THAT([&] { OpenAt(Backup()); }, FailsWith(FailureNumber::kPathOrAccess, "the backup of a book"));
  EXPECT_THAT(engine::CheckBook(Backup(), true).findings, IsEmpty());
}

TEST_F(BookCareTest, FindsDamageInTheCompanionFilesOfABackup) {
  BackUp();
  std::string bytes = folder.Read("safe");
  const std::size_t place = bytes.find("a definition");
  ASSERT_NE(place, std::string::npos);
  bytes[place] = 'A';
  folder.Write("safe", bytes);
  const auto findings = engine::CheckBook(Backup(), false).findings;
  ASSERT_EQ(findings.size(), 1U);
  EXPECT_EQ(findings[0].kind, engine::FindingKind::kCompanions);
  RemoveBook();
  EXPECT_THAT([&] { Restore(); }, FailsWith(FailureNumber::kDeviceError, "companion files do not agree"));
  EXPECT_FALSE(std::filesystem::exists(BookPath()));
}

TEST_F(BookCareTest, ReplacesABookOnlyWhereItIsTold) {
  BackUp();
  Change();
  const FigureMap changed = Figures();
  EXPECT_THAT([&] { Restore(); }, FailsWith(FailureNumber::kPathOrAccess, "a book is there already"));
  EXPECT_EQ(Figures(), changed);
}

TEST_F(BookCareTest, KeepsTheBookThatItReplacesAsABackup) {
  const FigureMap figures = Figures();
  BackUp();
  Change();
  const FigureMap changed = Figures();
  folder.Write("TBQDX1.North", "a newer definition");
  folder.Write("TBQDX2.North", "a second definition");

  const RestoreDone done = Restore(kReplace);
  EXPECT_EQ(done.kept_as, BookPath() + "-replaced");
  EXPECT_EQ(Figures(), figures);
  EXPECT_EQ(folder.Read("TBQDX1.North"), "a definition");
  EXPECT_FALSE(std::filesystem::exists(folder.Path("TBQDX2.North")));
  EXPECT_EQ(folder.Read("TBQDX1.South"), "another book's");

  EXPECT_EQ(RestoreBook(done.kept_as, BookPath(), {.replace = true}).kept_as, BookPath() + "-replaced-2");
  EXPECT_EQ(Figures(), changed);
  EXPECT_EQ(folder.Read("TBQDX1.North"), "a newer definition");
  EXPECT_EQ(folder.Read("TBQDX2.North"), "a second definition");
}

TEST_F(BookCareTest, KeepsADamagedBookThatItReplacesAsItIs) {
  const FigureMap figures = Figures();
  BackUp();
  Meddle("UPDATE property SET value = 'South' WHERE name = 'system_name'");
  const std::string damaged = folder.Read("North.tbk");
  const RestoreDone done = Restore(kReplace);
  EXPECT_EQ(Figures(), figures);
  EXPECT_EQ(folder.Read("North.tbk-replaced"), damaged);
  EXPECT_EQ(folder.Read("TBQDX1.North.tbk-replaced"), "a definition");
  EXPECT_EQ(folder.Read("North.tbk-replaced.ini"), "[Settings]\n");
}

TEST_F(BookCareTest, DoesNotReplaceABookThatOthersHaveOpen) {
  BackUp();
  Change();
  const FigureMap changed = Figures();
  for (const bool read_only : {true, false}) {
    EXPECT_EQ(InChild([&] {
                const auto other = read_only ? OpenToRead() : Open();
                // Another process still: what it tries is what a third would.
                if (InChild([&] { static_cast<void>(Restore(kReplace)); }) == "done") throw std::runtime_error("taken");
              }),
              "done");
    EXPECT_EQ(Figures(), changed);
  }
  EXPECT_FALSE(std::filesystem::exists(folder.Path("North.tbk-replaced")));
}

TEST_F(BookCareTest, RefusesWhereCompanionFilesOfAnotherBookOfTheNameStand) {
  BackUp();
  EXPECT_THAT([&] { RestoreBook(Backup(), folder.Path("South.tbk"), {.replace = true}); },
              FailsWith(FailureNumber::kPathOrAccess, "TBQDX1.South, which would belong to it"));
  EXPECT_EQ(folder.Read("TBQDX1.South"), "another book's");
}

TEST_F(BookCareTest, RestoresNothingButBackups) {
  folder.Write("letter", "a letter");
  const auto from = [&](const Text& name) { RestoreBook(folder.Path(name), folder.Path("West.tbk"), {}); };
  EXPECT_THAT([&] { from("letter"); }, FailsWith(FailureNumber::kPathOrAccess, "not the backup of a book"));
  EXPECT_THAT([&] { from("North.tbk"); }, FailsWith(FailureNumber::kPathOrAccess, "not the backup of a book"));
  EXPECT_THAT([&] { from("none"); }, FailsWith(FailureNumber::kFileNotFound, "no such file"));
  EXPECT_FALSE(std::filesystem::exists(folder.Path("West.tbk")));
}

TEST_F(BookCareTest, RefusesABackupThatIsDamagedAndLeavesTheBook) {
  BackUp();
  std::string bytes = folder.Read("safe");
  bytes.resize(bytes.size() / 2);
  folder.Write("safe", bytes);
  const FigureMap figures = Figures();
  EXPECT_THROW(Restore(kReplace), Failure);
  EXPECT_EQ(Figures(), figures);
  EXPECT_FALSE(std::filesystem::exists(folder.Path("North.tbk-replaced")));
}

TEST_F(BookCareTest, FollowsLinksToTheBookAndToTheBackup) {
  std::filesystem::create_directory(folder.Path("far"));
  std::filesystem::create_symlink("far/target", Backup());
  BackUp();
  EXPECT_TRUE(std::filesystem::is_symlink(Backup()));
  EXPECT_TRUE(engine::LooksLikeBackup(folder.Path("far/target")));
  std::filesystem::create_symlink("far/East.tbk", folder.Path("link"));
  EXPECT_THAT([&] { RestoreBook(Backup(), folder.Path("link"), {}); },
              FailsWith(FailureNumber::kPathOrAccess, "leads nowhere"));
  RestoreBook(Backup(), folder.Path("far/East.tbk"), {});
  EXPECT_EQ(RestoreBook(Backup(), folder.Path("link"), {.replace = true}).kept_as,
            folder.Path("far/East.tbk-replaced"));
  EXPECT_TRUE(std::filesystem::is_symlink(folder.Path("link")));
  EXPECT_EQ(folder.Read("far/TBQDX1.East"), "a definition");
}

// Cancels when it has been asked so many times.
class LimitedWatch final : public engine::WorkWatch {
 public:
  explicit LimitedWatch(int asks_before_cancel) : left_(asks_before_cancel) {}
  void Done(Single fraction) override { done = fraction; }
  [[nodiscard]] bool IsCancelled() override {
    if (left_ > 0) --left_;
    return left_ == 0;
  }
  Single done = 0;

 private:
  int left_;
};

class CancelledCare : public BookCareTest {
 protected:
  // Cancels at each moment that the work asks, up to its end; gives how often that was.
  int CancelEverywhere(const std::function<void(engine::WorkWatch& watch)>& work) {
    const auto before = Files();
    constexpr int kMostAsks = 1000;
    for (int asks = 1; asks < kMostAsks; ++asks) {
      LimitedWatch watch(asks);
      try {
        work(watch);
        EXPECT_EQ(watch.done, 1);
        return asks;
      } catch (const engine::WorkCancelled&) {
        EXPECT_EQ(Files(), before) << "cancelled at ask " << asks;
      }
    }
    return 0;
  }
  std::map<Text, std::string> Files() {
    std::map<Text, std::string> files;
    for (const Text& name : Names()) files[name] = folder.Read(name);
    return files;
  }
};

TEST_F(CancelledCare, LeavesNoBackupAndTheOneThatIsThereAsItWas) {
  const auto back_up = [&](bool replace) {
    return CancelEverywhere([&](engine::WorkWatch& watch) { BackUpBook(BookPath(), Backup(), replace, watch); });
  };
  EXPECT_GT(back_up(kNotReplace), 3);
  EXPECT_GT(back_up(kReplace), 3);
}

TEST_F(CancelledCare, LeavesTheBookThatWasToBeReplacedAndNothingBesideIt) {
  BackUp();
  Change();
  const FigureMap changed = Figures();
  EXPECT_GT(CancelEverywhere([&](engine::WorkWatch& watch) {
              EXPECT_EQ(Figures(), changed);
              RestoreBook(Backup(), BookPath(), {.replace = true}, watch);
            }),
            6);
  EXPECT_NE(Figures(), changed);
}

TEST_F(CancelledCare, LeavesNoBookWhereNoneWas) {
  BackUp();
  EXPECT_GT(
      CancelEverywhere([&](engine::WorkWatch& watch) { RestoreBook(Backup(), folder.Path("West.tbk"), {}, watch); }),
      3);
}

// What a restore that was killed right behind the moment that counts leaves: the book in place, its companions within.
class RestoredHalf : public BookCareTest {
 protected:
  void SetUp() override {
    BookCareTest::SetUp();
    BackUp();
    folder.Write("TBQDX1.North", "a newer definition");
    folder.Write("TBQDX2.North", "a second definition");
    std::filesystem::remove(BookPath());
    folder.Write("North.tbk", "");
    engine::UnpackBackup(Backup(), BookPath(), BookPath());
  }
};

TEST_F(RestoredHalf, GetsItsCompanionFilesFromWhoeverLooksFirst) {
  OpenToRead();
  EXPECT_EQ(folder.Read("TBQDX1.North"), "a definition");
  EXPECT_FALSE(std::filesystem::exists(folder.Path("TBQDX2.North")));
}

TEST_F(RestoredHalf, GetsItsCompanionFilesFromWhoeverChangesItFirstAndOnlyOnce) {
  Open();
  EXPECT_EQ(folder.Read("TBQDX1.North"), "a definition");
  folder.Write("TBQDX1.North", "changed since");
  Open();
  EXPECT_EQ(folder.Read("TBQDX1.North"), "changed since");
}

// The same with damage in the companion files within.
class RestoredDamaged : public RestoredHalf {
 protected:
  void SetUp() override {
    RestoredHalf::SetUp();
    Meddle("UPDATE companion SET content = x'00' WHERE stem = 'TBQDX1'");
  }
  std::vector<Text> NoticesOf(bool read_only) {
    std::vector<Text> notices;
    engine::BookOptions options;
    options.read_only = read_only;
    options.notice = [&](const Text& line) { notices.push_back(line); };
    EXPECT_EQ(FiguresOf(*BookFixture::Open(options)), figures);
    return notices;
  }
  const FigureMap figures = {{{101, Day(2003, 1, 5), 1}, 1.5}, {{205, Day(2004, 5, 5), 4}, 7}};
};

TEST_F(RestoredDamaged, IsOpenedAllTheSameWhichIsTold) {
  for (const bool read_only : {true, false, true}) {
    EXPECT_THAT(NoticesOf(read_only), ElementsAre(HasSubstr("are damaged within it, and are not put in place")));
  }
  EXPECT_EQ(folder.Read("TBQDX1.North"), "a newer definition");
  EXPECT_EQ(folder.Read("TBQDX2.North"), "a second definition");
}

TEST_F(RestoredDamaged, IsReadAndChangedAsAnyOther) {
  EXPECT_EQ(Figures(), figures);
  Change();
  EXPECT_EQ(Get(*OpenToRead(), 101, Day(2003, 1, 6), 1), 99);
}

TEST_F(RestoredDamaged, IsNamedByTheCheck) {
  for (const bool deep : {false, true}) {
    const auto findings = engine::CheckBook(BookPath(), deep).findings;
    ASSERT_EQ(findings.size(), 1U);
    EXPECT_EQ(findings[0].kind, engine::FindingKind::kCompanions);
  }
}

TEST_F(RestoredDamaged, IsSalvagedWithoutItsCompanionFiles) {
  const auto lost = engine::SalvageBook(BookPath(), folder.Path("Saved.tbk"), false).lost;
  ASSERT_EQ(lost.size(), 1U);
  EXPECT_EQ(lost[0].kind, engine::FindingKind::kCompanions);
  EXPECT_EQ(FiguresOf(*OpenAt(folder.Path("Saved.tbk"))), figures);
  EXPECT_FALSE(folder.Has("TBQDX1.Saved"));
}

TEST_F(RestoredDamaged, HasNoBackupAndIsKeptAsItIsWhereItIsReplaced) {
  EXPECT_THAT([&] { BackUpBook(BookPath(), folder.Path("other"), kNotReplace); },
              FailsWith(FailureNumber::kDeviceError, "North.tbk: the book is damaged: the companion files"));
  EXPECT_FALSE(folder.Has("other"));
  const std::string damaged = folder.Read("North.tbk");
  EXPECT_EQ(Restore(kReplace).kept_as, BookPath() + "-replaced");
  EXPECT_EQ(folder.Read("North.tbk-replaced"), damaged);
  EXPECT_EQ(folder.Read("TBQDX1.North"), "a definition");
}

}  // namespace
}  // namespace tallybook::application
