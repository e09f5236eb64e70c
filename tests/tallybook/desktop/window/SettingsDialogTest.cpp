#include <QtTest/QTest>
#include <QtWidgets/QApplication>
#include <QtWidgets/QCheckBox>
#include <QtWidgets/QComboBox>
#include <QtWidgets/QLineEdit>
#include <QtWidgets/QMessageBox>
#include <QtWidgets/QSpinBox>
#include <filesystem>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tallybook/desktop/window/SettingsDialog.h"
#include "tests/support/ScriptedPlatform.h"
#include "tests/support/TempFolder.h"
#include "tests/tallybook/desktop/Waiting.h"
#include "tests/tallybook/desktop/WindowCheck.h"

namespace tallybook::desktop {
namespace {

using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::Not;
using testing::Part;
using testing::WhenShown;

class SettingsDialogTest : public ::testing::Test {
 protected:
  ~SettingsDialogTest() override { ApplyFont({}); }

  // Shows the page and does `act` in it.
  void Show(const std::function<void(SettingsDialog& dialog)>& act) {
    WhenShown user;
    user.Then("Settings", [&](QWidget& window) { act(dynamic_cast<SettingsDialog&>(window)); });
    SettingsDialog(nullptr, Path()).exec();
  }
  static void Press(int key, Qt::KeyboardModifiers modifiers = Qt::NoModifier) {
    QTest::keyClick(QApplication::focusWidget(), static_cast<Qt::Key>(key), modifiers);
  }
  [[nodiscard]] Text Path() const { return folder_.Path("config/tallybook.ini"); }
  [[nodiscard]] std::string File() const { return folder_.Read("config/tallybook.ini"); }

  tallybook::testing::ScriptedPlatform platform_;
  tallybook::testing::TempFolder folder_;
};

TEST_F(SettingsDialogTest, HoldsToWhatEveryWindowMust) {
  Show([](SettingsDialog& dialog) {
    testing::Picture(dialog, "settings");
    EXPECT_THAT(testing::FaultsOf(dialog), IsEmpty());
    dialog.reject();
  });
}

TEST_F(SettingsDialogTest, EveryMnemonicLeadsToItsSetting) {
  Show([](SettingsDialog& dialog) {
    const std::vector<std::pair<int, const char*>> places = {{Qt::Key_O, "FontSize"}, {Qt::Key_F, "FontName"},
                                                             {Qt::Key_N, "Numbers"},  {Qt::Key_D, "Dates"},
                                                             {Qt::Key_L, "Folder"},   {Qt::Key_M, "CacheMiB"}};
    for (const auto& [key, name] : places) {
      Press(key, Qt::AltModifier);
      EXPECT_EQ(QApplication::focusWidget()->objectName().toStdString(), name);
    }
    dialog.reject();
  });
}

TEST_F(SettingsDialogTest, WritesWhatWasChangedAndNothingElse) {
  Show([](SettingsDialog& dialog) {
    Press(Qt::Key_O, Qt::AltModifier);
    Press(Qt::Key_A, Qt::ControlModifier);
    QTest::keyClicks(QApplication::focusWidget(), "14");
    Press(Qt::Key_N, Qt::AltModifier);
    Press(Qt::Key_Down);
    Press(Qt::Key_Down);
    Press(Qt::Key_B, Qt::AltModifier);
    testing::WaitUntil([&] { return Part<QCheckBox>(dialog, "OpenLastBook").isChecked(); }, "the box is ticked");
    QTest::keyClick(&dialog, Qt::Key_Return);
  });
  EXPECT_THAT(File(), HasSubstr("FontSize=14"));
  EXPECT_THAT(File(), HasSubstr("Numbers=comma"));
  EXPECT_THAT(File(), HasSubstr("OpenLastBook=-1"));
  EXPECT_THAT(File(), Not(HasSubstr("CacheMiB")));
  EXPECT_THAT(File(), Not(HasSubstr("Dates")));
  Show([](SettingsDialog& dialog) {
    EXPECT_EQ(Part<QSpinBox>(dialog, "FontSize").value(), 14);
    EXPECT_EQ(Part<QComboBox>(dialog, "Numbers").currentText(), "1.234,56");
    EXPECT_TRUE(Part<QCheckBox>(dialog, "OpenLastBook").isChecked());
    dialog.reject();
  });
}

TEST_F(SettingsDialogTest, ACancelChangesNothing) {
  Show([](SettingsDialog&) {
    Press(Qt::Key_M, Qt::AltModifier);
    Press(Qt::Key_Up);
    Press(Qt::Key_Escape);
  });
  EXPECT_FALSE(std::filesystem::exists(Path()));
}

TEST_F(SettingsDialogTest, AFolderThatIsNotThereIsToldAndTheCursorGoesBackToIt) {
  QString told;
  QTimer watch;
  QObject::connect(&watch, &QTimer::timeout, [&] {
    auto* box = qobject_cast<QMessageBox*>(QApplication::activeModalWidget());
    if (box == nullptr) return;
    told = box->text();
    box->close();
  });
  watch.start(20);
  Show([](SettingsDialog& dialog) {
    Press(Qt::Key_L, Qt::AltModifier);
    QTest::keyClicks(QApplication::focusWidget(), "/there/is/none");
    Press(Qt::Key_Return);
    EXPECT_TRUE(dialog.isVisible());
    EXPECT_EQ(dialog.focusWidget()->objectName().toStdString(), "Folder");
    dialog.reject();
  });
  EXPECT_THAT(told.toStdString(), HasSubstr("/there/is/none"));
  EXPECT_FALSE(std::filesystem::exists(Path()));
}

TEST_F(SettingsDialogTest, WhatCannotBeWrittenIsTold) {
  folder_.Write("config", "a file where the folder has to be");
  bool told = false;
  QTimer watch;
  QObject::connect(&watch, &QTimer::timeout, [&] {
    auto* box = qobject_cast<QMessageBox*>(QApplication::activeModalWidget());
    if (box == nullptr) return;
    told = !box->text().isEmpty();
    box->close();
  });
  watch.start(20);
  Show([](SettingsDialog& dialog) {
    Press(Qt::Key_M, Qt::AltModifier);
    Press(Qt::Key_Up);
    QTest::keyClick(&dialog, Qt::Key_Return);
    EXPECT_TRUE(dialog.isVisible());
    dialog.reject();
  });
  EXPECT_TRUE(told);
}

TEST_F(SettingsDialogTest, TheFontOfAllWindowsFollowsAndTheSystemsComesBack) {
  const qreal before = QApplication::font().pointSizeF();
  Preferences large;
  large.font_size = 20;
  ApplyFont(large);
  EXPECT_EQ(QApplication::font().pointSizeF(), 20);
  ApplyFont({});
  EXPECT_EQ(QApplication::font().pointSizeF(), before);
}

}  // namespace
}  // namespace tallybook::desktop
