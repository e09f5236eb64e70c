#include <filesystem>
#include <thread>

#include "tallybook/engine/BookBackup.h"
#include "tallybook/engine/BookCheck.h"
#include "tallybook/engine/BookFormat.h"
#include "tests/support/FileSizeLimit.h"
#include "tests/tallybook/engine/BookFixture.h"

namespace tallybook::testing {
namespace {

using engine::BackupContents;
using engine::ReadBackup;
using engine::UnpackBackup;
using engine::WriteBackup;
using ::testing::IsEmpty;

class BookBackupTest : public BookFixture {
 protected:
  void SetUp() override {
    const auto book = CreateAndOpen();
    Put(*book, 101, Day(2003, 1, 5), 1, 1.5);
    book->Close();
    folder.Write("TBQDX1.North", "a definition");
    folder.Write("safe", "");
    folder.Write("Back.tbk", "");
  }

  [[nodiscard]] Text Backup() const { return folder.Path("safe"); }
  BackupContents Write() { return WriteBackup(BookPath(), Backup(), "the backup"); }
  void Unpack() { UnpackBackup(Backup(), folder.Path("Back.tbk"), "the book"); }
  void MeddleWithBackup(const Text& sql) {
    std::filesystem::rename(Backup(), BookPath());
    Meddle(sql);
    std::filesystem::rename(BookPath(), Backup());
  }
};

TEST_F(BookBackupTest, TellsWhatItHolds) {
  const BackupContents written = Write();
  const BackupContents read = ReadBackup(Backup());
  for (const BackupContents& contents : {written, read}) {
    EXPECT_EQ(contents.book_name, "North");
    EXPECT_EQ(contents.format, engine::kBookFormat);
    EXPECT_EQ(contents.companions, 1U);
  }
  EXPECT_EQ(written.time, read.time);
  EXPECT_TRUE(engine::LooksLikeBackup(Backup()));
  EXPECT_FALSE(engine::LooksLikeBackup(BookPath()));
  EXPECT_FALSE(engine::LooksLikeBackup(folder.Path("none")));
}

TEST_F(BookBackupTest, GivesABookThatPutsItsCompanionsBesideItWhenItIsOpened) {
  const FigureMap figures = FiguresOf(*OpenToRead());
  Write();
  Unpack();
  EXPECT_FALSE(folder.Has("TBQDX1.Back"));
  const auto book = engine::Book::Open(folder.Path("Back.tbk"), app);
  EXPECT_EQ(FiguresOf(*book), figures);
  EXPECT_EQ(folder.Read("TBQDX1.Back"), "a definition");
  book->Close();
  EXPECT_THAT(engine::CheckBook(folder.Path("Back.tbk"), true).findings, IsEmpty());
}

TEST_F(BookBackupTest, HasWhatAWriterHasCommittedAndNothingElse) {
  const auto writer = Open();
  Put(*writer, 101, Day(2003, 1, 6), 1, 2);
  writer->Commit();
  Put(*writer, 101, Day(2003, 1, 7), 1, 3);
  Write();
  Unpack();
  const auto book = engine::Book::Open(folder.Path("Back.tbk"), app);
  EXPECT_EQ(Get(*book, 101, Day(2003, 1, 6), 1), 2);
  EXPECT_EQ(Get(*book, 101, Day(2003, 1, 7), 1), 0);
}

TEST_F(BookBackupTest, IsRefusedWhileSomebodyChangesCompanionsAllTheTime) {
  std::atomic<bool> ends = false;
  std::thread other([&] {
    for (int round = 0; !ends; ++round) {
      folder.Write("TBQDX1.North", "definition " + std::to_string(round));
      std::this_thread::yield();
    }
  });
  EXPECT_THAT([&] { Write(); }, FailsWith(FailureNumber::kPermissionDenied, "companion files are being changed"));
  ends = true;
  other.join();
  EXPECT_EQ(Write().companions, 1U);
}

TEST_F(BookBackupTest, TakesNothingElseForABackup) {
  EXPECT_THAT([&] { static_cast<void>(ReadBackup(BookPath())); },
              FailsWith(FailureNumber::kPathOrAccess, "is not the backup of a book"));
  EXPECT_THAT([&] { static_cast<void>(ReadBackup(folder.Path("TBQDX1.North"))); },
              FailsWith(FailureNumber::kPathOrAccess));
  EXPECT_THAT([&] { static_cast<void>(ReadBackup(folder.Path("none"))); }, FailsWith(FailureNumber::kPathOrAccess));
  EXPECT_THAT([&] { UnpackBackup(BookPath(), folder.Path("Back.tbk"), "the book"); },
              FailsWith(FailureNumber::kPathOrAccess, "is not the backup of a book"));
  EXPECT_EQ(folder.Read("Back.tbk"), "");
}

TEST_F(BookBackupTest, IsRefusedWhereItIsDamagedOrOfAFormatThatIsYetToCome) {
  Write();
  MeddleWithBackup("UPDATE companion SET content = x'00'");
  EXPECT_THAT([&] { static_cast<void>(ReadBackup(Backup())); },
              FailsWith(FailureNumber::kDeviceError, "the backup is damaged"));
  MeddleWithBackup("PRAGMA user_version = 99");
  EXPECT_THAT([&] { static_cast<void>(ReadBackup(Backup())); }, FailsWith(FailureNumber::kFeatureUnavailable));
  EXPECT_THAT([&] { Unpack(); }, FailsWith(FailureNumber::kFeatureUnavailable));
}

TEST_F(BookBackupTest, SaysThatThereIsNoRoom) {
  {
    const FileSizeLimit full_disk(20'000);
    EXPECT_THAT([&] { Write(); }, FailsWith(FailureNumber::kDiskFull, "the backup"));
  }
  folder.Write("safe", "");
  Write();
  const FileSizeLimit full_disk(20'000);
  EXPECT_THAT([&] { Unpack(); }, FailsWith(FailureNumber::kDiskFull, "the book"));
}

}  // namespace
}  // namespace tallybook::testing
