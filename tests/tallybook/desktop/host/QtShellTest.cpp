#include <QDir>
#include <QFile>
#include <QListWidget>
#include <QTemporaryDir>
#include <gmock/gmock.h>

#include "tallybook/desktop/host/ProgramChoice.h"
#include "tallybook/desktop/host/QtShell.h"
#include "tests/support/FailsWith.h"
#include "tests/tallybook/desktop/Waiting.h"

namespace tallybook::desktop {
namespace {

using tallybook::testing::FailsWith;
using ::testing::ElementsAre;
using testing::WhenShown;

class QtShellTest : public ::testing::Test {
 protected:
  void TearDown() override { qputenv("PATH", path_before_); }

  // The only program that the shell finds from here on.
  void UseOpener(const QByteArray& script) {
    Write("xdg-open", "#!/bin/sh\n" + script + "\n");
    QFile::setPermissions(In("xdg-open"), QFile::ReadOwner | QFile::ExeOwner);
    qputenv("PATH", folder_.path().toUtf8());
  }

  void Write(const QString& name, const QByteArray& text) {
    QDir(folder_.path()).mkpath(QFileInfo(name).path());
    QFile file(In(name));
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    file.write(text);
  }

  [[nodiscard]] QString In(const QString& name) const { return folder_.path() + "/" + name; }

  QTemporaryDir folder_;
  QByteArray path_before_ = qgetenv("PATH");
  QtShell shell_;
};

TEST_F(QtShellTest, AFileThatTheOpenerTakesIsOpened) {
  UseOpener("printf %s \"$1\" > " + In("opened").toUtf8());
  EXPECT_EQ(shell_.Open("/out/my file.csv", 2), QtShell::kOpened);
  QFile opened(In("opened"));
  ASSERT_TRUE(opened.open(QIODevice::ReadOnly));
  EXPECT_EQ(opened.readAll(), "/out/my file.csv");
}

TEST_F(QtShellTest, AnOpenerThatKnowsNoProgramOrIsNotThereSaysThatNothingIsAssociated) {
  UseOpener("exit 3");
  EXPECT_EQ(shell_.Open("/out/a.csv", 0), kNoAssociation);
  qputenv("PATH", "/nowhere");
  EXPECT_EQ(shell_.Open("/out/a.csv", 0), kNoAssociation);
}

TEST_F(QtShellTest, OtherTroubleOfTheOpenerIsNoSuccess) {
  UseOpener("exit 4");
  EXPECT_LE(shell_.Open("/out/a.csv", 0), 32);
  EXPECT_NE(shell_.Open("/out/a.csv", 0), kNoAssociation);
}

TEST_F(QtShellTest, WhatIsToBeSettledIsDoneBeforeAFileIsOpened) {
  UseOpener("exit 0");
  bool settled = false;
  shell_.SetBeforeOpen([&] { settled = true; });
  (void)shell_.Open("/out/a.csv", 0);
  EXPECT_TRUE(settled);
}

TEST_F(QtShellTest, ProgramsAreThoseThatTakeAFileAndWantToBeSeen) {
  Write("one/applications/calc.desktop",
        "[Desktop Entry]\nName=Sheets\nExec=sheets %U\n[Desktop Action New]\nName=New\n");
  Write("one/applications/hidden.desktop", "[Desktop Entry]\nName=Hidden\nExec=hidden %f\nNoDisplay=true\n");
  Write("two/applications/calc.desktop", "[Desktop Entry]\nName=Older sheets\nExec=old %U\n");
  Write("two/applications/clock.desktop", "[Desktop Entry]\nName=Clock\nExec=clock\n");
  Write("two/applications/edit.desktop", "[Desktop Entry]\nName=Editor\nExec=edit --new %f\n");
  const auto programs = ProgramsIn({In("one"), In("two")});
  ASSERT_EQ(programs.size(), 2U);
  EXPECT_EQ(programs[0].name, "Editor");
  EXPECT_EQ(programs[1].name, "Sheets");
}

TEST_F(QtShellTest, ACommandGetsTheFileWhereItAsksForIt) {
  EXPECT_THAT(CommandWords("edit --new %f", "/out/my file.csv"), ElementsAre("edit", "--new", "/out/my file.csv"));
  EXPECT_THAT(CommandWords("sheets %i %c %U --go", "/out/a.csv"), ElementsAre("sheets", "file:///out/a.csv", "--go"));
  EXPECT_THAT(CommandWords("\"my editor\"", "/out/a.csv"), ElementsAre("my editor", "/out/a.csv"));
  EXPECT_TRUE(CommandWords("", "/out/a.csv").isEmpty());
}

TEST_F(QtShellTest, TheProgramThatIsChosenGetsTheFile) {
  Write("applications/edit.desktop", "[Desktop Entry]\nName=Editor\nExec=edit %f\n");
  WhenShown user;
  user.Then("Open With",
            [](QWidget& window) { QTest::keyClick(&testing::Part<QListWidget>(window, "programs"), Qt::Key_Return); });
  EXPECT_THAT(ChooseProgram("/out/a.csv", {folder_.path()}, nullptr), ElementsAre("edit", "/out/a.csv"));
}

TEST_F(QtShellTest, ACancelledChoiceOfAProgramStartsNothing) {
  WhenShown user;
  user.Then("Open With", [](QWidget& window) { QTest::keyClick(&window, Qt::Key_Escape); });
  EXPECT_TRUE(ChooseProgram("/out/a.csv", {folder_.path()}, nullptr).isEmpty());
}

TEST_F(QtShellTest, AProgramThatIsNotThereIsAFailureWithItsName) {
  EXPECT_THAT([&] { shell_.Run("/nowhere/at-all", "x", ""); }, FailsWith(FailureNumber::kFileNotFound, "at-all"));
}

TEST_F(QtShellTest, TheFolderInForceCanBeToldAndChanged) {
  const Text before = shell_.CurrentFolder();
  shell_.SetCurrentFolder(folder_.path().toStdString());
  EXPECT_EQ(shell_.CurrentFolder(), QDir(folder_.path()).canonicalPath().toStdString());
  shell_.SetCurrentFolder(before);
  EXPECT_THAT([&] { shell_.SetCurrentFolder("/nowhere/at-all"); }, FailsWith(FailureNumber::kPathNotFound, "at-all"));
}

}  // namespace
}  // namespace tallybook::desktop
