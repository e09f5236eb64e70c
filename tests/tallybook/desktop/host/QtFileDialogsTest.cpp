#include <QAbstractButton>
#include <QColorDialog>
#include <QDialogButtonBox>
#include <QFile>
#include <QFileDialog>
#include <QFontDialog>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QTemporaryDir>
#include <gmock/gmock.h>

#include "forms/CCommonDialog.h"
#include "tallybook/desktop/host/QtFileDialogs.h"
#include "tests/tallybook/desktop/Waiting.h"
#include "tests/tallybook/desktop/host/MapHandles.h"

namespace tallybook::desktop {
namespace {

using ::testing::ElementsAre;
using testing::MapHandles;
using testing::WhenShown;

class QtFileDialogsTest : public ::testing::Test {
 protected:
  static void SetUpTestSuite() { QCoreApplication::setAttribute(Qt::AA_DontUseNativeDialogs); }

  [[nodiscard]] Text In(const Text& name) const { return (folder_.path() + "/").toStdString() + name; }

  void Make(const Text& name) const {
    QFile file(QString::fromStdString(In(name)));
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
  }

  FileDialogRequest Request(bool save = false) const {
    FileDialogRequest request;
    request.save = save;
    request.title = "Open QDX File";
    request.filter = ConvertFilter("Exchange files (*.QDX)|*.QDX|All Files|*.*");
    request.filter_index = 1;
    request.initial_folder = folder_.path().toStdString();
    request.default_extension = "QDX";
    request.flags = kPathMustExist | kHideReadOnly;
    return request;
  }

  static WhenShown::Act TypeName(const Text& name) {
    return [name](QWidget& window) {
      auto& edit = testing::Part<QLineEdit>(window, "fileNameEdit");
      edit.clear();
      QTest::keyClicks(&edit, QString::fromStdString(name));
      QTest::keyClick(&edit, Qt::Key_Return);
    };
  }

  QTemporaryDir folder_;
  MapHandles handles_;
  QtFileDialogs dialogs_{handles_};
  WhenShown user_;
};

TEST_F(QtFileDialogsTest, GivesTheFileThatIsTypedWithItsFolder) {
  Make("north.QDX");
  user_.Then("Open QDX File", TypeName("north.QDX"));
  FileDialogRequest request = Request();
  EXPECT_NE(dialogs_.ShowFile(request), 0);
  EXPECT_EQ(request.file_name, In("north.QDX"));
  EXPECT_EQ(request.file_title, "north.QDX");
  EXPECT_EQ(request.filter_index, 1);
}

TEST_F(QtFileDialogsTest, ACancelLeavesTheRequestAsItWas) {
  user_.Then("Open QDX File", [](QWidget& window) { QTest::keyClick(&window, Qt::Key_Escape); });
  FileDialogRequest request = Request();
  request.file_name = "proposed.QDX";
  EXPECT_EQ(dialogs_.ShowFile(request), 0);
  EXPECT_EQ(request.file_name, "proposed.QDX");
  EXPECT_EQ(request.extended_error, 0);
}

TEST_F(QtFileDialogsTest, AProposedNameStandsInTheBox) {
  user_.Then("Open QDX File", [](QWidget& window) {
    EXPECT_EQ(testing::Part<QLineEdit>(window, "fileNameEdit").text(), "year.QDX");
    window.close();
  });
  FileDialogRequest request = Request(true);
  request.file_name = "year.QDX";
  (void)dialogs_.ShowFile(request);
}

TEST_F(QtFileDialogsTest, ANameWithoutExtensionGetsTheOneThatIsTheDefault) {
  user_.Then("Open QDX File", TypeName("year"));
  FileDialogRequest request = Request(true);
  EXPECT_NE(dialogs_.ShowFile(request), 0);
  EXPECT_EQ(request.file_name, In("year.QDX"));
}

TEST_F(QtFileDialogsTest, APatternMayBeGivenForAFileThatNeedNotBeThere) {
  user_.Then("Open QDX File", TypeName("north*.QDX"));
  FileDialogRequest request = Request();
  EXPECT_NE(dialogs_.ShowFile(request), 0);
  EXPECT_EQ(request.file_name, In("north*.QDX"));
}

TEST_F(QtFileDialogsTest, AFileThatMustBeThereAndIsNotIsToldAndTheDialogStays) {
  Make("north.QDX");
  user_
      .Then("Open QDX File",
            [&](QWidget& window) {
              WhenShown box;
              box.Then("Open QDX File", [](QWidget& told) {
                if (auto* const text = told.findChild<QLabel*>("text")) {
                  EXPECT_TRUE(text->text().contains("This file is not there"));
                } else {
                  ADD_FAILURE() << "no box";
                }
                told.close();
              });
              TypeName("south.QDX")(window);
            })
      .Then("Open QDX File", TypeName("north.QDX"));
  FileDialogRequest request = Request();
  request.flags |= kFileMustExist;
  EXPECT_NE(dialogs_.ShowFile(request), 0);
  EXPECT_EQ(request.file_name, In("north.QDX"));
}

TEST_F(QtFileDialogsTest, ANameLongerThanItsBufferEndsTheDialogWithTheErrorThatSaysSo) {
  user_.Then("Open QDX File", TypeName("a-name-that-is-too-long.QDX"));
  FileDialogRequest request = Request(true);
  request.max_file_size = 12;
  EXPECT_EQ(dialogs_.ShowFile(request), 0);
  EXPECT_EQ(request.extended_error, kBufferTooSmall);
}

TEST_F(QtFileDialogsTest, FiltersAreOfferedWithTheirPatternsInBrackets) {
  EXPECT_THAT(NameFilters(ConvertFilter("CSV Data File (*.csv)|*.csv|All Files (*.*)|*.*")),
              ElementsAre("CSV Data File (*.csv)", "All Files (*)"));
  EXPECT_THAT(NameFilters(ConvertFilter("Texts|*.txt;*.csv")), ElementsAre("Texts (*.txt *.csv)"));
  EXPECT_THAT(NameFilters(ConvertFilter("(All Files) *.*|*.*")), ElementsAre("(All Files) *.* (*)"));
  EXPECT_TRUE(NameFilters("").empty());
}

TEST_F(QtFileDialogsTest, TheDialogStandsOverItsOwner) {
  QWidget owner;
  owner.setWindowTitle("Owner");
  owner.show();
  user_.Then("Open QDX File", [&](QWidget& window) {
    EXPECT_EQ(window.parentWidget(), &owner);
    window.close();
  });
  FileDialogRequest request = Request();
  request.owner = handles_.HandleOf(owner);
  (void)dialogs_.ShowFile(request);
}

TEST_F(QtFileDialogsTest, AColourGoesInAndComesOut) {
  user_.Then("", [](QWidget& window) {
    auto& dialog = dynamic_cast<QColorDialog&>(window);
    EXPECT_EQ(dialog.currentColor(), QColor(0x12, 0x34, 0x56));
    dialog.setCurrentColor(QColor(1, 2, 3));
    QTest::keyClick(&dialog, Qt::Key_Return);
  });
  ColorDialogRequest request;
  request.color = 0x563412;
  request.custom_colors.assign(16, 0xFFFFFF);
  EXPECT_NE(dialogs_.ShowColor(request), 0);
  EXPECT_EQ(request.color, 0x030201);
}

TEST_F(QtFileDialogsTest, AFontGoesInAndComesOut) {
  user_.Then("", [](QWidget& window) {
    auto& dialog = dynamic_cast<QFontDialog&>(window);
    EXPECT_TRUE(dialog.currentFont().bold());
    QFont font = dialog.currentFont();
    font.setPointSizeF(14);
    font.setUnderline(true);
    dialog.setCurrentFont(font);
    QTest::keyClick(&dialog, Qt::Key_Return);
  });
  FontDialogRequest request;
  request.name = "DejaVu Sans";
  request.size = 10;
  request.bold = true;
  EXPECT_NE(dialogs_.ShowFont(request), 0);
  EXPECT_FLOAT_EQ(request.size, 14);
  EXPECT_TRUE(request.underline);
}

TEST_F(QtFileDialogsTest, AFolderIsChosenByItsName) {
  ASSERT_TRUE(QDir(folder_.path()).mkdir("out"));
  user_.Then("Folder for Export File", TypeName("out"));
  FolderDialogRequest request;
  request.title = "Folder for Export File";
  request.initial_folder = folder_.path().toStdString();
  EXPECT_EQ(dialogs_.ShowFolder(request), In("out"));
}

}  // namespace
}  // namespace tallybook::desktop
