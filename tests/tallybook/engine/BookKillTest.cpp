// A process that is killed at any moment leaves a book that is sound, and that can be taken back to exactly the figures
// from before the operation that it was killed in.

#include <chrono>
#include <csignal>
#include <cstdlib>
#include <ctime>
#include <filesystem>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <memory>
#include <random>
#include <sqlite3.h>
#include <sys/wait.h>
#include <unistd.h>

#include "tallybook/engine/BookCheck.h"
#include "tallybook/engine/Journal.h"
#include "tests/tallybook/engine/BookFixture.h"
#include "tests/tallybook/engine/SampleBook.h"

namespace tallybook::testing {
namespace {

using engine::Book;
using engine::BookDescription;
using engine::BookOptions;
using engine::Journal;
using engine::JournalKind;
using engine::JournalState;

constexpr int kAccounts = 30;
constexpr int kFields = 60;
constexpr int kDays = 120;
constexpr int kRounds = 24;

class BookKillTest : public BookFixture {
 protected:
  void SetUp() override {
    BookDescription description = ShopDescription();
    description.accounts.clear();
    description.fields.clear();
    for (int number = 1; number <= kAccounts; ++number)
      description.accounts.push_back({number, "A" + std::to_string(number), ""});
    for (int number = 1; number <= kFields; ++number)
      description.fields.push_back({static_cast<Integer>(number), "", false});
    Create(description);
    options.cache_bytes = 40 * 16'000;  // about a third of the chunks
    options.commit_seconds = 0;
  }

  // The figure that a pass puts into a place; some are zero. The same for everyone who asks.
  static Double FigureOfPass(int pass, Long account, int day, Integer field) {
    const unsigned mixed = static_cast<unsigned>(pass) * 2654435761U + static_cast<unsigned>(account) * 40503U +
                           static_cast<unsigned>(day) * 9973U + static_cast<unsigned>(field) * 31U;
    return mixed % 5 == 0 ? 0 : static_cast<Double>(mixed % 100000) / 100;
  }

  // Writes half of the records, which half and in which order as the pass has it.
  static void Write(Book& book, int pass) {
    std::mt19937 random(static_cast<unsigned>(pass));
    for (int count = 0; count < kAccounts * kDays / 2; ++count) {
      const Long account = static_cast<Long>(random() % kAccounts) + 1;
      const int day = static_cast<int>(random() % kDays);
      if (!book.ReadRecord(account, Day(2003, 1, 1) + day)) std::abort();
      for (Integer field = 1; field <= kFields; ++field)
        book.SetFieldValue(field, FigureOfPass(pass, account, day, field));
      book.WriteRecord();
    }
  }

  static void WriteUnderTheJournal(Book& book, int pass) {
    book.BeginRollback(Day(2003, 1, 1), Day(2003, 1, 1) + kDays);
    Write(book, pass);
    book.EndRollback();
  }

  static constexpr int kWhenItIsDone = -1;

  // Runs `act` in a process of its own and kills that after so many microseconds.
  template <typename Act>
  static void RunAndKill(int microseconds, Act act) {
    int ends[2];
    ASSERT_EQ(pipe(ends), 0);
    const pid_t child = fork();
    if (child == 0) {
      try {
        act();
      } catch (...) {
        std::abort();
      }
      if (write(ends[1], "", 1) != 1) std::abort();
      for (;;) pause();
    }
    close(ends[1]);
    if (microseconds == kWhenItIsDone) {
      char byte = 0;
      EXPECT_EQ(read(ends[0], &byte, 1), 1);
    } else {
      const timespec wait = {microseconds / 1'000'000, (microseconds % 1'000'000) * 1000L};
      nanosleep(&wait, nullptr);
    }
    close(ends[0]);
    int status = 0;
    ASSERT_EQ(waitpid(child, &status, WNOHANG), 0) << "the child ended before it was killed, with " << status;
    kill(child, SIGKILL);
    ASSERT_EQ(waitpid(child, &status, 0), child);
  }

  void ExpectSoundFile() const {
    sqlite3* handle = nullptr;
    ASSERT_EQ(sqlite3_open(BookPath().c_str(), &handle), SQLITE_OK);
    Text verdict;
    const auto keep = [](void* text, int, char** values, char**) {
      *static_cast<Text*>(text) += values[0];
      return 0;
    };
    sqlite3_exec(handle, "PRAGMA integrity_check", keep, &verdict, nullptr);
    sqlite3_close(handle);
    EXPECT_EQ(verdict, "ok");
  }

  // Every figure is one from before or one that the pass writes.
  static void ExpectNothingElse(const FigureMap& before, const FigureMap& now, int pass) {
    for (const auto& [key, value] : now) {
      const auto& [account, date, field] = key;
      const auto old = before.find(key);
      const bool from_before = old != before.end() && old->second == value;
      const bool from_pass = FigureOfPass(pass, account, static_cast<int>(date - Day(2003, 1, 1)), field) == value;
      ASSERT_TRUE(from_before || from_pass) << "account " << account << " " << DateText(date) << " field " << field;
    }
  }

  // How long a piece of work takes here, so that the moments of the kills fit the machine.
  template <typename Act>
  static int Microseconds(Act act) {
    const auto begin = std::chrono::steady_clock::now();
    act();
    const auto took = std::chrono::steady_clock::now() - begin;
    return static_cast<int>(std::chrono::duration_cast<std::chrono::microseconds>(took).count()) + 1;
  }

  [[nodiscard]] int MomentWithin(int microseconds) {
    return static_cast<int>(random() % static_cast<unsigned>(microseconds));
  }

  static BookOptions ReadOnly() {
    BookOptions read_only;
    read_only.read_only = true;
    return read_only;
  }

  BookOptions options;
  std::mt19937 random{20040203};
};

TEST_F(BookKillTest, CanBeTakenBackWhereverAWriterIsKilled) {
  FigureMap before;
  int killed_while_open = 0;
  const int whole_pass = Microseconds([&] { WriteUnderTheJournal(*Open(options), 0); });
  Journal(*Open(options)).UndoNewest();
  for (int round = 0; round < kRounds; ++round) {
    SCOPED_TRACE("round " + std::to_string(round));
    const int pass = round + 1;
    RunAndKill(MomentWithin(whole_pass + whole_pass / 4), [&] { WriteUnderTheJournal(*Open(options), pass); });
    ExpectSoundFile();
    const auto book = Open(options);
    const FigureMap left = FiguresOf(*book);
    ExpectNothingElse(before, left, pass);
    const auto entries = Journal(*book).Entries();
    // The pass has left no entry where it was killed before its first commit.
    if (!entries.empty() && entries.back().kind == JournalKind::kImport && entries.back().keeps_images) {
      if (entries.back().state == JournalState::kOpen) ++killed_while_open;
      Journal(*book).UndoNewest();
    }
    ASSERT_EQ(FiguresOf(*book), before);
    // What the next round starts from is not always the same.
    if (round % 4 == 3) {
      Write(*book, 1000 + round);
      before = FiguresOf(*book);
    }
  }
  EXPECT_GT(killed_while_open, 0) << "no round killed a writer at work";
}

TEST_F(BookKillTest, IsUndoneWhollyOrNotAtAllWhereAnUndoIsKilled) {
  FigureMap before;
  {
    const auto book = Open(options);
    Write(*book, 500);
    before = FiguresOf(*book);
    WriteUnderTheJournal(*book, 0);
  }
  const int whole_undo = Microseconds([&] { Journal(*Open(options)).UndoNewest(); });
  ASSERT_EQ(FiguresOf(*Open(options)), before);
  for (int round = 0; round < kRounds; ++round) {
    SCOPED_TRACE("round " + std::to_string(round));
    FigureMap after;
    {
      const auto book = Open(options);
      WriteUnderTheJournal(*book, round + 1);
      after = FiguresOf(*book);
    }
    RunAndKill(MomentWithin(whole_undo), [&] { Journal(*Open(options)).UndoNewest(); });
    ExpectSoundFile();
    const auto book = Open(options);
    if (Journal(*book).Entries().back().kind == JournalKind::kUndo) {
      ASSERT_EQ(FiguresOf(*book), before);
      continue;
    }
    ASSERT_EQ(FiguresOf(*book), after);
    Journal(*book).UndoNewest();
    ASSERT_EQ(FiguresOf(*book), before);
  }
}

// Whatever of an older book's way to the present format is done, its figures are there, and a backup that bears its
// name is whole.
TEST_F(BookKillTest, ComesToThePresentFormatWhollyOrNotAtAll) {
  const std::filesystem::path sample = tallybook::testing::SampleBook("book-v1.tbk");
  const auto renew = [&] {
    for (const auto& entry : std::filesystem::directory_iterator(folder.Path())) std::filesystem::remove(entry.path());
    std::filesystem::copy_file(sample, BookPath());
  };
  const auto change = [&] {
    const auto book = Open();
    if (!book->ReadRecord(101, Day(2003, 1, 1))) std::abort();
    book->SetFieldValue(1, 12345);
    book->WriteRecord();
    book->Close();
  };
  renew();
  const FigureMap before = FiguresOf(*OpenToRead());
  FigureMap after = before;
  after[{101, Day(2003, 1, 1), 1}] = 12345;
  const int whole_change = Microseconds(change);
  int old_format = 0;
  int new_format = 0;
  for (int round = 0; round < 2 * kRounds; ++round) {
    SCOPED_TRACE("round " + std::to_string(round));
    renew();
    const bool is_first = round == 0;
    const bool is_last = round + 1 == 2 * kRounds;
    const int moment = MomentWithin(whole_change + whole_change / 4);
    RunAndKill(is_first ? 0 : is_last ? kWhenItIsDone : moment, change);
    ExpectSoundFile();
    const bool is_old = engine::CheckBook(BookPath(), true).format == 1;
    ++(is_old ? old_format : new_format);
    const FigureMap left = FiguresOf(*OpenToRead());
    EXPECT_TRUE(left == before || (!is_old && left == after));
    EXPECT_TRUE(is_old || folder.Has("North.tbk-v1"));
    if (folder.Has("North.tbk-v1")) {
      EXPECT_EQ(FiguresOf(*Book::Open(folder.Path("North.tbk-v1"), app, ReadOnly())), before);
    }
    change();
    EXPECT_EQ(FiguresOf(*OpenToRead()), after);
    EXPECT_TRUE(engine::CheckBook(BookPath(), true).findings.empty());
  }
  EXPECT_GT(old_format, 0) << "no round killed it before";
  EXPECT_GT(new_format, 0) << "no round killed it afterwards";
}

// Of a command with several entries all is taken back, or nothing.
TEST_F(BookKillTest, TakesACommandBackWhollyOrNotAtAllWhereItsUndoIsKilled) {
  const FigureMap before;
  const auto run_command = [&](int pass) {
    const auto book = Open(options);
    book->SetOperationName("import");
    WriteUnderTheJournal(*book, pass);
    WriteUnderTheJournal(*book, pass + 100);
    return FiguresOf(*book);
  };
  run_command(0);
  const int whole_undo = Microseconds([&] { Journal(*Open(options)).UndoNewest(); });
  for (int round = 0; round < kRounds / 2; ++round) {
    SCOPED_TRACE("round " + std::to_string(round));
    const FigureMap after = run_command(round + 1);
    RunAndKill(MomentWithin(whole_undo), [&] { Journal(*Open(options)).UndoNewest(); });
    ExpectSoundFile();
    const auto book = Open(options);
    const FigureMap left = FiguresOf(*book);
    if (left != before) {
      ASSERT_EQ(left, after);
      ASSERT_EQ(Journal(*book).UndoNewest().size(), 2U);
    }
    ASSERT_EQ(FiguresOf(*book), before);
  }
}

}  // namespace
}  // namespace tallybook::testing
