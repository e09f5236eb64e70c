// Looking after a book from the menu of its window, by keys, to the files on disk.
#include <QtWidgets/QFileDialog>
#include <QtWidgets/QLineEdit>
#include <QtWidgets/QMenuBar>
#include <QtWidgets/QMessageBox>
#include <QtWidgets/QPlainTextEdit>
#include <QtWidgets/QProgressBar>
#include <QtWidgets/QPushButton>
#include <algorithm>
#include <atomic>
#include <chrono>
#include <sqlite3.h>
#include <thread>

#include "tallybook/application/BookCare.h"
#include "tallybook/desktop/host/ReportWindow.h"
#include "tests/support/FileSizeLimit.h"
#include "tests/tallybook/desktop/window/DeskFixture.h"

namespace tallybook::desktop {
namespace {

using tallybook::testing::Day;
using ::testing::AllOf;
using testing::FaultsOf;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using testing::Part;

class CareActsTest : public testing::DeskFixture {
 protected:
  [[nodiscard]] Text BackupPath() const { return folder_.Path("north.backup"); }
  QAction& Action(const QString& words) {
    for (auto* action : window_.findChildren<QAction*>()) {
      if (action->text().remove('&').startsWith(words)) return *action;
    }
    ADD_FAILURE() << "no menu has " << words.toStdString();
    std::abort();
  }
  static Act Name(const Text& path) {
    return [path](QWidget& dialog) {
      auto& line = Part<QLineEdit>(dialog, "fileNameEdit");
      line.setText(QString::fromStdString(path));
      QTest::keyClick(&line, Qt::Key_Return);
    };
  }
  static Act Choose(const char* words) {
    return [words](QWidget& box) {
      for (auto* button : box.findChildren<QPushButton*>()) {
        if (button->text().remove('&') == words) return QTest::mouseClick(button, Qt::LeftButton);
      }
      ADD_FAILURE() << "no button " << words;
    };
  }
  static bool ReportIsShown() {
    return std::ranges::any_of(QApplication::topLevelWidgets(), [](const QWidget* window) {
      return window->isVisible() && window->windowTitle().startsWith("Check of");
    });
  }
  bool was_reported_ = false;
  Text Status() { return window_.statusBar()->currentMessage().toStdString(); }
};

TEST_F(CareActsTest, BacksUpTheBookWithItsCompanionsWhileAnotherHasIt) {
  folder_.Write("TBQDX1.North", "\"Shop\",\"in/*.QDX\",1,-1,-1\r\n0,0\r\n0\r\n");
  const auto writer = Open();
  Then("Back Up the Book", Name(BackupPath()));
  PressInMain(Qt::Key_B, Qt::ControlModifier);
  EXPECT_THAT(Status(), HasSubstr("with 1 companion file"));
  EXPECT_EQ(engine::ReadBackup(BackupPath()).book_name, "North");
}

TEST_F(CareActsTest, AnOlderBackupIsReplacedOnlyAfterAQuestion) {
  application::BackUpBook(BookPath(), BackupPath(), false);
  const Text before = folder_.Read("north.backup");
  Then("Back Up the Book", Name(BackupPath()));
  Then("Back Up the Book", [](QWidget& box) {
    EXPECT_THAT(dynamic_cast<QMessageBox&>(box).text().toStdString(), HasSubstr("the backup of North from"));
    Press(box, Qt::Key_Return);
  });
  Action("Back Up").trigger();
  EXPECT_EQ(folder_.Read("north.backup"), before);
  EXPECT_EQ(Status(), "");
  Then("Back Up the Book", Name(BackupPath()));
  Then("Back Up the Book", Choose("Replace"));
  Action("Back Up").trigger();
  EXPECT_THAT(Status(), HasSubstr("Wrote "));
}

TEST_F(CareActsTest, NothingButABackupIsEverReplacedByOne) {
  folder_.Write("letter.txt", "Dear all");
  Then("Back Up the Book", Name(folder_.Path("letter.txt")));
  Then("Tallybook", [](QWidget& box) {
    EXPECT_THAT(AllWordsOf(box), HasSubstr("a file that is no backup is there already"));
    Press(box, Qt::Key_Return);
  });
  Action("Back Up").trigger();
  EXPECT_EQ(folder_.Read("letter.txt"), "Dear all");
}

TEST_F(CareActsTest, AFullDiskIsToldAndLeavesNoBackup) {
  std::optional<tallybook::testing::FileSizeLimit> limit;
  Then("Back Up the Book", [&](QWidget& dialog) {
    limit.emplace(4096);
    Name(BackupPath())(dialog);
  });
  Then("Tallybook", [](QWidget& box) {
    EXPECT_THAT(AllWordsOf(box), HasSubstr("north.backup"));
    Press(box, Qt::Key_Return);
  });
  Action("Back Up").trigger();
  limit.reset();
  EXPECT_FALSE(std::filesystem::exists(BackupPath()));
}

TEST_F(CareActsTest, CancelOfTheFileDialogDoesNothing) {
  Then("Back Up the Book", [](QWidget& dialog) { Press(dialog, Qt::Key_Escape); });
  Action("Back Up").trigger();
  EXPECT_EQ(Status(), "");
}

TEST_F(CareActsTest, ASoundBookIsReportedAsSound) {
  Then("Check of North.tbk", [this](QWidget& report) {
    EXPECT_THAT(AllWordsOf(report), HasSubstr("nothing is damaged"));
    EXPECT_THAT(report.findChild<QPlainTextEdit*>()->toPlainText().toStdString(), HasSubstr("nothing is damaged"));
    EXPECT_THAT(FaultsOf(report), IsEmpty());
    was_reported_ = true;
    Press(report, Qt::Key_Escape);
  });
  Action("Check").trigger();
  testing::WaitUntil([this] { return was_reported_ && !ReportIsShown(); }, "the report is shown and closed");
}

TEST_F(CareActsTest, DamageIsListedByAccountAndDates) {
  // Of an account that the window does not show.
  sqlite3* handle = nullptr;
  ASSERT_EQ(sqlite3_open(BookPath().c_str(), &handle), SQLITE_OK);
  ASSERT_EQ(sqlite3_exec(handle, "UPDATE chunk SET figures = x'00' WHERE key = 205 << 24", nullptr, nullptr, nullptr),
            SQLITE_OK);
  sqlite3_close(handle);
  Then("Check of North.tbk", [this](QWidget& report) {
    EXPECT_THAT(AllWordsOf(report), HasSubstr("1 finding"));
    EXPECT_THAT(report.findChild<QPlainTextEdit*>()->toPlainText().toStdString(),
                AllOf(HasSubstr("chunk"), HasSubstr("2003-01-01")));
    EXPECT_THAT(FaultsOf(report), IsEmpty());
    was_reported_ = true;
    Press(report, Qt::Key_Escape);
  });
  Action("Check").trigger();
  testing::WaitUntil([this] { return was_reported_ && !ReportIsShown(); }, "the report is shown and closed");
}

TEST_F(CareActsTest, WindowsLiveWhileWorkGoesOnAndNothingElseBegins) {
  Conversations run(means_, BookPath(), window_);
  std::atomic<bool> may_end = false;
  int turns = 0;
  QTimer turn;
  QObject::connect(&turn, &QTimer::timeout, [&] {
    if (++turns == 5) may_end = true;
    EXPECT_TRUE(run.IsRunning());
    EXPECT_FALSE(run.Beside("More", [](engine::WorkWatch& /*watch*/) { ADD_FAILURE() << "two at once"; }));
  });
  turn.start(20);
  EXPECT_TRUE(run.Beside("Long", [&](engine::WorkWatch& /*watch*/) {
    while (!may_end) std::this_thread::yield();
  }));
  EXPECT_GE(turns, 5);
  EXPECT_FALSE(run.IsRunning());
}

TEST_F(CareActsTest, ProgressShowsThatWorkGoesOn) {
  Conversations run(means_, BookPath(), window_);
  std::atomic<bool> may_end = false;
  Then("Long work", [&](QWidget& progress) {
    EXPECT_EQ(progress.findChild<QProgressBar*>()->maximum(), 0) << "how much is done nobody knows";
    EXPECT_THAT(FaultsOf(progress), IsEmpty());
    may_end = true;
  });
  EXPECT_TRUE(run.Beside("Long work", [&](engine::WorkWatch& /*watch*/) {
    while (!may_end) std::this_thread::sleep_for(std::chrono::milliseconds(5));
  }));
}

TEST_F(CareActsTest, WorkThatTellsHowFarItIsShowsThatAndIsCancelledWithoutAWord) {
  Conversations run(means_, BookPath(), window_);
  Then("Long work", [](QWidget& progress) {
    EXPECT_GT(progress.findChild<QProgressBar*>()->value(), 0);
    EXPECT_THAT(AllWordsOf(progress), HasSubstr("All stays as it was."));
    EXPECT_THAT(FaultsOf(progress), IsEmpty());
    Click("cancel")(progress);
  });
  EXPECT_FALSE(run.Beside("Long work", [](engine::WorkWatch& watch) {
    for (;;) {
      watch.Step(0.25F);
      std::this_thread::sleep_for(std::chrono::milliseconds(5));
    }
  }));
  EXPECT_FALSE(run.IsRunning());
}

TEST_F(CareActsTest, AnActMayWorkBesideWithTheBookThatItWasGiven) {
  Conversations run(means_, BookPath(), window_);
  std::thread::id worker;
  long long figures = 0;
  const auto count = [&](engine::Book& book) {
    run.WithinBeside("Count", [&](engine::WorkWatch& /*watch*/) {
      worker = std::this_thread::get_id();
      figures = book.CountFigures({});
    });
    return true;
  };
  EXPECT_TRUE(run.Look(count).ran);
  EXPECT_NE(worker, std::this_thread::get_id());
  EXPECT_EQ(figures, 2);
  EXPECT_FALSE(run.Change([&](engine::Book& /*book*/) {
                    run.WithinBeside("Count", [](engine::WorkWatch& /*watch*/) { throw engine::WorkCancelled(); });
                    return true;
                  })
                   .ran)
      << "a cancel ends the act, and is not told";
}

TEST_F(CareActsTest, WhatFailsBesideIsTold) {
  Conversations run(means_, BookPath(), window_);
  Then("Tallybook", [](QWidget& box) {
    EXPECT_THAT(AllWordsOf(box), HasSubstr("the device is gone"));
    Press(box, Qt::Key_Return);
  });
  EXPECT_FALSE(run.Beside("Long", [](engine::WorkWatch& /*watch*/) {
    throw Failure(FailureNumber::kDeviceError, "the device is gone", "Test");
  }));
}

TEST_F(CareActsTest, ABookIsCompactedAndWaitedFor) {
  auto other = Open();
  Then("Waiting for North.tbk", [&](QWidget&) { other->Close(); });
  Action("Compact").trigger();
  EXPECT_THAT(Status(), HasSubstr("bytes before"));
}

TEST_F(CareActsTest, ABookIsRestoredInThePlaceOfTheOpenOneWhichIsKept) {
  application::BackUpBook(BookPath(), BackupPath(), false);
  {
    const auto other = Open();
    tallybook::testing::Put(*other, 101, Day(2003, 1, 5), 1, 99);
    other->Close();
  }
  Then("Restore a Book: the Backup", Name(BackupPath()));
  Then("Restore a Book: Where To", Name(BookPath()));
  Then("Restore a Book", Choose("Replace"));
  Then("Restore a Book", [](QWidget& box) {
    EXPECT_THAT(AllWordsOf(box), HasSubstr("The book that was there is kept as"));
    Press(box, Qt::Key_Return);
  });
  Action("Restore").trigger();
  EXPECT_EQ(window_.BookPath(), BookPath());
  EXPECT_EQ(tallybook::testing::Get(*Open(), 101, Day(2003, 1, 5), 1), 2.5);
  EXPECT_TRUE(std::filesystem::exists(BookPath() + "-replaced"));
}

TEST_F(CareActsTest, ADamagedBookIsSalvagedAndWhatIsLostIsListed) {
  sqlite3* handle = nullptr;
  ASSERT_EQ(sqlite3_open(BookPath().c_str(), &handle), SQLITE_OK);
  ASSERT_EQ(sqlite3_exec(handle, "UPDATE chunk SET figures = x'00' WHERE key = 205 << 24", nullptr, nullptr, nullptr),
            SQLITE_OK);
  sqlite3_close(handle);
  Then("Salvage a Damaged Book: the Book", Name(BookPath()));
  std::filesystem::create_directory(folder_.Path("my.books"));
  Then("Salvage a Damaged Book: Where To", Name(folder_.Path("my.books/saved")));
  Then("Salvage of North.tbk", [this](QWidget& report) {
    EXPECT_THAT(AllWordsOf(report), HasSubstr("Made saved.tbk with 1 chunk"));
    EXPECT_THAT(report.findChild<QPlainTextEdit*>()->toPlainText().toStdString(), HasSubstr("cannot be read"));
    EXPECT_THAT(FaultsOf(report), IsEmpty());
    was_reported_ = true;
    Press(report, Qt::Key_Escape);
  });
  Action("Salvage").trigger();
  testing::WaitUntil([this] { return was_reported_; }, "the report is shown");
  EXPECT_EQ(window_.BookPath(), folder_.Path("my.books/saved.tbk"));
  EXPECT_TRUE(std::filesystem::exists(BookPath()));
}

TEST_F(CareActsTest, WhatIsNoBackupIsToldAndTheBookStaysOpen) {
  folder_.Write("letter.backup", "Dear all");
  Then("Restore a Book: the Backup", Name(folder_.Path("letter.backup")));
  Then("Restore a Book", [](QWidget& box) {
    EXPECT_THAT(AllWordsOf(box), HasSubstr("letter.backup"));
    Press(box, Qt::Key_Return);
  });
  Action("Restore").trigger();
  EXPECT_EQ(window_.BookPath(), BookPath());
}

}  // namespace
}  // namespace tallybook::desktop
