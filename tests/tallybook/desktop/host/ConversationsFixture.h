// A book of a shop with four hundred days of figures, and the conversations over it in real windows: what a user does
// there goes to widgets.
#pragma once

#include <QLineEdit>
#include <QMainWindow>
#include <QPushButton>
#include <gmock/gmock.h>
#include <string>

#include "forms/Form.h"
#include "forms/modAllUI.h"
#include "tallybook/desktop/forms/FormWindow.h"
#include "tallybook/desktop/host/Conversations.h"
#include "tallybook/desktop/host/DesktopApp.h"
#include "tallybook/desktop/host/DesktopFactory.h"
#include "tallybook/desktop/host/QtPlatform.h"
#include "tests/import/ExchangeFile.h"
#include "tests/support/TempFolder.h"
#include "tests/tallybook/desktop/Waiting.h"
#include "tests/tallybook/engine/BookFixture.h"

namespace tallybook::desktop::testing {

using tallybook::testing::Day;
using tallybook::testing::ExchangeFile;
using tallybook::testing::FigureMap;
using tallybook::testing::FiguresOf;
using tallybook::testing::ShopDescription;
using tallybook::testing::TempFolder;

inline constexpr Long kShop = 101;
inline constexpr Integer kSales = 1;
inline constexpr const char* kCsvPrompt = "Import CSV Data File";
inline constexpr const char* kList = "QDX Import Layouts";
inline constexpr const char* kReport = "QDX Import Report";
inline const std::string kFigures = "2,3,2004,1,1\r\n100,1,12.5\r\n200,4,3\r\n";

class ConversationsFixture : public ::testing::Test {
 protected:
  ConversationsFixture() {
    engine::BookDescription description = ShopDescription();
    for (int day = 0; day < 400; ++day) description.values.push_back({kShop, first_ + day, kSales, 100.0 + day});
    engine::Book::Create(BookPath(), description);
    platform_.SetMainWindow(&main_);
    platform_.SetApp(&app_);
    main_.setWindowTitle("Main");
    main_.resize(900, 600);
    main_.show();
    EXPECT_TRUE(QTest::qWaitForWindowActive(&main_));
  }
  ~ConversationsFixture() override {
    EXPECT_EQ(ModalDepth(), 0);
    EXPECT_FALSE(conversations_.IsRunning());
  }

  [[nodiscard]] Text BookPath() const { return folder_.Path("North.tbk"); }
  [[nodiscard]] FigureMap Stored() {
    engine::BookOptions options;
    options.read_only = true;
    return FiguresOf(*engine::Book::Open(BookPath(), app_, options));
  }

  void WriteExchangeFile(const Text& name, Double sales = 7.5) {
    ExchangeFile file;
    file.first = day_;
    file.last = day_;
    file.accounts = {{"100", "Front"}};
    file.blocks = {{Integer{1}, {{day_, {{kSales, sales}}}}}};
    file.fields = {{kSales, "Sales"}};
    folder_.Write(name, file.Bytes());
  }
  void WriteDefinition(int number, const Text& title, const Text& qdx_file) {
    folder_.Write("TBQDX" + std::to_string(number) + ".North",
                  "\"" + title + "\",\"" + folder_.Path(qdx_file) + "\",3,-1,-1\r\n0,0\r\n0\r\n");
  }

  // --- What the user does --------------------------------------------------------------------------------------------

  static WhenShown::Act Press(Qt::Key key, Qt::KeyboardModifiers modifiers = Qt::NoModifier) {
    return [=](QWidget& window) {
      QWidget* const focus = window.focusWidget();
      QTest::keyClick(focus != nullptr ? focus : &window, key, modifiers);
    };
  }
  // The widget that has the focus where the form's control of this name has it.
  static QWidget& WidgetOf(QWidget& window, const char* control) {
    auto& form_window = dynamic_cast<FormWindow&>(window);
    QWidget* const widget = form_window.WidgetOf(*form_window.Shown().Find(control));
    EXPECT_NE(widget, nullptr) << control;
    return *widget;
  }
  static QLineEdit& FileBox(QWidget& window) { return dynamic_cast<QLineEdit&>(WidgetOf(window, "Text1")); }
  // Types a file's path into the prompt and presses Enter.
  WhenShown::Act Name(const Text& name) {
    return [path = folder_.Path(name)](QWidget& window) {
      QLineEdit& box = FileBox(window);
      box.setFocus();
      QTest::keyClick(&box, Qt::Key_A, Qt::ControlModifier);
      QTest::keyClicks(&box, QString::fromStdString(path));
      QTest::keyClick(&box, Qt::Key_Return);
    };
  }
  static WhenShown::Act PressButton(const char* control, Integer index) {
    return [=](QWidget& window) {
      auto& form_window = dynamic_cast<FormWindow&>(window);
      Control* const button = form_window.Shown().Find(control, index);
      ASSERT_NE(button, nullptr);
      QTest::mouseClick(form_window.WidgetOf(*button), Qt::LeftButton);
    };
  }
  static WhenShown::Act Click(const char* part) {
    return [part](QWidget& window) { QTest::mouseClick(&Part<QPushButton>(window, part), Qt::LeftButton); };
  }

  const Date first_ = Day(2003, 1, 1);
  const Date day_ = Day(2004, 2, 3);
  TempFolder folder_;
  QMainWindow main_;
  QtPlatform platform_;
  DesktopApp app_{{.title = "Tallybook",
                   .settings_file = folder_.Path("tallybook.ini"),
                   .log_file = folder_.Path("tallybook.log"),
                   .import_folder = folder_.Path(),
                   .data_folder = folder_.Path()}};
  DesktopFactory factory_{platform_.Handles(), platform_.Progress()};
  Conversations conversations_{{.platform = platform_, .app = app_, .factory = factory_}, BookPath(), main_};
  WhenShown user_;
};

}  // namespace tallybook::desktop::testing
