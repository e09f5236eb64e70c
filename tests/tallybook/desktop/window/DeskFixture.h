// The main window over a shop's book, with all that conversations need, as tests drive it by keys.
#pragma once

#include <QtCore/QTimer>
#include <QtTest/QTest>
#include <QtWidgets/QAbstractButton>
#include <QtWidgets/QApplication>
#include <QtWidgets/QLabel>
#include <QtWidgets/QStatusBar>
#include <filesystem>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tallybook/desktop/figures/FigureGrid.h"
#include "tallybook/desktop/figures/FigurePane.h"
#include "tallybook/engine/Journal.h"
#include "tests/import/ExchangeFile.h"
#include "tests/tallybook/desktop/Waiting.h"
#include "tests/tallybook/desktop/WindowCheck.h"
#include "tests/tallybook/desktop/window/DeskStage.h"
#include "tests/tallybook/engine/BookFixture.h"

namespace tallybook::desktop::testing {

class DeskFixture : public ::testing::Test, protected DeskStage {
 protected:
  using Act = WhenShown::Act;

  explicit DeskFixture(const engine::BookDescription& shop = ShopWithFigures()) : DeskStage("") {
    engine::Book::Create(BookPath(), shop);
    EXPECT_TRUE(window_.OpenBook(BookPath()));
    EXPECT_TRUE(BringToFront(window_));
    window_.Figures().Grid().setFocus();
  }
  ~DeskFixture() override { EXPECT_EQ(QApplication::activeModalWidget(), nullptr); }

  static engine::BookDescription ShopWithFigures() {
    engine::BookDescription shop = tallybook::testing::ShopDescription();
    shop.values = {{101, tallybook::testing::Day(2003, 1, 5), 1, 2.5},
                   {205, tallybook::testing::Day(2003, 1, 6), 4, 7}};
    return shop;
  }

  [[nodiscard]] Text BookPath() const { return folder_.Path("North.tbk"); }
  // Another program's hand on the book.
  std::unique_ptr<engine::Book> Open() { return engine::Book::Open(BookPath(), other_app_); }
  engine::BookDescription Lists() {
    engine::BookOptions options;
    options.read_only = true;
    return engine::Book::Open(BookPath(), other_app_, options)->Description();
  }
  std::vector<Text> Codes() {
    std::vector<Text> codes;
    for (const auto& account : Lists().accounts) codes.push_back(account.code);
    return codes;
  }
  // An exchange file of account 100, field 1: what the book has is 2.5 for the first day, and nothing for the second.
  static tallybook::testing::ExchangeFile ExchangeFileOf(Double first = 7.5, Double second = 1234.25) {
    tallybook::testing::ExchangeFile file;
    file.first = tallybook::testing::Day(2003, 1, 5);
    file.last = tallybook::testing::Day(2003, 1, 6);
    file.accounts = {{"100", "Front"}};
    file.fields = {{1, "Sales"}};
    file.blocks = {{Integer{1}, {{file.first, {{1, first}}}, {file.last, {{1, second}}}}}};
    return file;
  }
  // The same with so many dates that the work asks often whether it is cancelled.
  static tallybook::testing::ExchangeFile LargeExchangeFile() {
    tallybook::testing::ExchangeFile file = ExchangeFileOf();
    constexpr std::size_t kTimes = 5'000;
    file.blocks[0].days.insert(file.blocks[0].days.end(), kTimes, file.blocks[0].days[0]);
    return file;
  }
  // One for one; the file is deleted behind its import, where that is said.
  void WriteDefinition(int number, const Text& file, bool deletes = false) {
    folder_.Write("TBQDX" + std::to_string(number) + ".North",
                  "\"Shops\",\"" + folder_.Path(file) + "\"," + (deletes ? "1" : "3") + ",-1,-1\r\n0,0\r\n0\r\n");
  }
  // Has long work cancelled at a turn of its own, or the first behind it at which it can be, whatever the clock says.
  void CancelAtTurn(int turn) {
    platform_.Progress().OnTurn([this, turn, turns = 0]() mutable {
      if (++turns >= turn) platform_.Progress().AskToCancel();
    });
  }
  // What ran, oldest first.
  std::vector<Text> Ran() {
    engine::BookOptions options;
    options.read_only = true;
    const auto book = engine::Book::Open(BookPath(), other_app_, options);
    std::vector<Text> ran;
    for (const auto& entry : engine::Journal(*book).Entries()) ran.push_back(entry.what_ran);
    return ran;
  }

  // Does acts one behind the other, each when its window stands there (Waiting.h), and each behind the look that found
  // the window: what an act opens is the next one's while it waits for that.
  void Then(const QString& title, const Act& act) {
    user_.Then(title, [act](QWidget& window) { QTimer::singleShot(0, &window, [act, &window] { act(window); }); });
  }

  static void Press(QWidget& window, Qt::Key key, Qt::KeyboardModifiers modifiers = Qt::NoModifier) {
    QWidget* const focus = window.focusWidget();
    QTest::keyClick(focus != nullptr ? focus : &window, key, modifiers);
  }
  static void Type(QWidget& window, const char* text) { QTest::keyClicks(window.focusWidget(), text); }
  static Act Keys(std::initializer_list<std::pair<Qt::Key, Qt::KeyboardModifiers>> keys) {
    return [keys = std::vector(keys)](QWidget& window) {
      for (const auto& [key, modifiers] : keys) Press(window, key, modifiers);
    };
  }
  static Act Click(const char* part) {
    return [part](QWidget& window) { QTest::mouseClick(&Part<QAbstractButton>(window, part), Qt::LeftButton); };
  }
  static void PressOk(QWidget& window) {
    for (auto* button : window.findChildren<QAbstractButton*>()) {
      if (button->text().remove('&') == "OK") return QTest::mouseClick(button, Qt::LeftButton);
    }
    ADD_FAILURE() << "no OK";
  }
  static Text WordsOf(const QWidget& window, const char* part) {
    return Part<QLabel>(window, part).text().toStdString();
  }
  static Text AllWordsOf(const QWidget& window) {
    QStringList words;
    for (const auto* label : window.findChildren<QLabel*>()) words << label->text();
    return words.join('|').toStdString();
  }
  // In the main window.
  void PressInMain(Qt::Key key, Qt::KeyboardModifiers modifiers) {
    const auto is_active = [this] {
      if (!window_.isActiveWindow()) window_.activateWindow();
      return window_.isActiveWindow() && QApplication::focusWidget() != nullptr;
    };
    ASSERT_TRUE(QTest::qWaitFor(is_active, kLimit)) << "the main window never came to the front";
    QTest::keyClick(QApplication::focusWidget(), key, modifiers);
  }

  tallybook::testing::CallRecord record_;
  tallybook::testing::MemoryApp other_app_{record_};
  WhenShown user_;
};

}  // namespace tallybook::desktop::testing
