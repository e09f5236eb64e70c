#include <filesystem>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <memory>
#include <optional>

#include "forms/CCommonDialog.h"
#include "forms/modBrowse.h"
#include "tallybook/cli/ConsoleFileDialogs.h"
#include "tallybook/cli/ConsolePlatform.h"
#include "tests/support/FailsWith.h"
#include "tests/support/TempFolder.h"
#include "tests/tallybook/cli/PseudoTerminal.h"

namespace tallybook::cli {
namespace {

using tallybook::testing::FailsWith;
using tallybook::testing::PseudoTerminal;
using tallybook::testing::TempFolder;
using ::testing::EndsWith;
using ::testing::HasSubstr;
using ::testing::StartsWith;

// A test runs in a folder of its own, with the console's platform and a dialog of the component before it.
class ConsoleFileDialogsTest : public ::testing::Test {
 protected:
  ConsoleFileDialogsTest() : before_(std::filesystem::current_path()) {
    std::filesystem::current_path(folder.Path());
    here = std::filesystem::current_path().string();
    dialog.SetDialogTitle("Export Data");
    dialog.SetFilter("CSV Files|*.csv|All Files (*.*)|*.*");
    dialog.SetFilename("north.csv");
    dialog.SetFlags(kExplorerStyle | kPathMustExist);
    dialog.SetCancelError(false);
  }
  ~ConsoleFileDialogsTest() override { std::filesystem::current_path(before_); }

  // The chosen path; empty where the dialog ended without one. What was shown is kept in `shown`.
  Text Save(const Text& typed, const AskOptions& options = {}) {
    return Show(typed, options, [this] { dialog.ShowSave(); });
  }
  Text Open(const Text& typed, const AskOptions& options = {}) {
    return Show(typed, options, [this] { dialog.ShowOpen(); });
  }
  Text Browse(const Text& typed, const Text& initial, const AskOptions& options = {}) {
    Text chosen;
    Show(typed, options, [&] { chosen = BrowseForFolder(0, "Folder for Export File", initial, false); });
    return chosen;
  }

  template <typename Act>
  Text Show(const Text& typed, const AskOptions& options, Act act) {
    PseudoTerminal terminal(typed);
    ConsolePlatform platform(options);
    act();
    platform.Boxes().StartMessages();  // what was shown before is not lost
    refused = platform.Boxes().WasRefused();
    misanswered = platform.Boxes().WasMisanswered();
    shown = terminal.End();
    return dialog.APIReturn() == 0 ? Text() : dialog.Filename();
  }

  static AskOptions Answers(std::vector<Text> words) {
    AskOptions options;
    options.answers = std::move(words);
    return options;
  }
  static AskOptions Yes() {
    AskOptions options;
    options.yes = true;
    return options;
  }

  // How often the user was asked for a name.
  [[nodiscard]] long Prompts() const {
    long count = 0;
    for (std::size_t at = shown.find(" [Cancel]? "); at != Text::npos; at = shown.find(" [Cancel]? ", at + 1)) ++count;
    return count;
  }

  TempFolder folder;
  Text here;  // the folder's path, without a separator at its end
  CCommonDialog dialog;
  Text shown;
  bool refused = false;
  bool misanswered = false;

 private:
  std::filesystem::path before_;
};

TEST_F(ConsoleFileDialogsTest, ShowsTitleFiltersFolderAndProposalAndTakesTheTypedName) {
  EXPECT_EQ(Save("year.csv\n"), here + "/year.csv");
  EXPECT_EQ(dialog.FileTitle(), "year.csv");
  EXPECT_EQ(shown,
            "Export Data\n"
            "  Files:  CSV Files (*.csv); All Files (*.*)\n"
            "  Folder: " +
                here +
                "\n"
                "  File name, = for north.csv [Cancel]? ");
  EXPECT_FALSE(refused);
}

TEST_F(ConsoleFileDialogsTest, WithoutTitleFilterAndProposalTheLinesAreFewer) {
  dialog.SetDialogTitle("");
  dialog.SetFilter("");
  dialog.SetFilename("");
  EXPECT_EQ(Save("a\n"), here + "/a");
  EXPECT_EQ(shown, "Save As\n  Folder: " + here + "\n  File name [Cancel]? ");
  Open("a\n");
  EXPECT_THAT(shown, StartsWith("Open\n"));
}

TEST_F(ConsoleFileDialogsTest, AnEmptyLineBlanksAndTheEndOfTheInputCancelAndLeaveTheName) {
  for (const char* typed : {"\n", "   \n", "\x04"}) {
    EXPECT_EQ(Save(typed), "");
    EXPECT_EQ(dialog.Filename(), "north.csv");
    EXPECT_EQ(dialog.APIReturn(), 0);
    EXPECT_EQ(dialog.ExtendedError(), 0);
    EXPECT_EQ(Prompts(), 1);
    EXPECT_TRUE(refused);
  }
}

TEST_F(ConsoleFileDialogsTest, ACancelIsRaisedWhereTheCallerWantsIt) {
  dialog.SetCancelError(true);
  EXPECT_THAT([&] { Save("\n"); }, FailsWith(FailureNumber::kDialogCancelled));
}

TEST_F(ConsoleFileDialogsTest, AnEqualsSignTakesTheProposedName) {
  EXPECT_EQ(Save("=\n"), here + "/north.csv");
  dialog.SetFilename("");
  EXPECT_EQ(Save("=\n"), here + "/=");
}

TEST_F(ConsoleFileDialogsTest, NamesCountFromTheFolderGivenAndTheOneInForceStays) {
  std::filesystem::create_directories("out/deep");
  dialog.SetInitDir("out");
  EXPECT_EQ(Save("a.csv\n"), here + "/out/a.csv");
  EXPECT_THAT(shown, HasSubstr("  Folder: " + here + "/out\n"));
  EXPECT_EQ(Save("deep/a.csv\n"), here + "/out/deep/a.csv");
  EXPECT_EQ(Save("/a.csv\n"), "/a.csv");
  EXPECT_EQ(std::filesystem::current_path().string(), here);
}

TEST_F(ConsoleFileDialogsTest, TheNameOfAFolderMakesItTheOneThatNamesCountFrom) {
  std::filesystem::create_directory("out");
  EXPECT_EQ(Save("out\na.csv\n"), here + "/out/a.csv");
  EXPECT_THAT(shown, HasSubstr("  Folder: " + here + "/out\n"));
}

TEST_F(ConsoleFileDialogsTest, AFolderThatIsMissingIsToldAndAskedAgain) {
  EXPECT_EQ(Save("nowhere/a.csv\na.csv\n"), here + "/a.csv");
  EXPECT_THAT(shown, HasSubstr("  There is no such folder: " + here + "/nowhere/\n"));
  EXPECT_EQ(Prompts(), 2);
  EXPECT_EQ(Save("nowhere/\na.csv\n"), here + "/a.csv");
  EXPECT_EQ(Prompts(), 2);
}

TEST_F(ConsoleFileDialogsTest, WithoutTheFlagAnyFolderWillDo) {
  dialog.SetFlags(kExplorerStyle);
  EXPECT_EQ(Save("nowhere/a.csv\n"), here + "/nowhere/a.csv");
  EXPECT_EQ(Save("nowhere/\n\n"), "") << "no file is named";
}

TEST_F(ConsoleFileDialogsTest, AFileToBeOpenedMustExistWhereTheFlagAsksForIt) {
  folder.Write("there.csv", "");
  EXPECT_EQ(Open("missing.csv\n"), here + "/missing.csv");
  dialog.SetFlags(kExplorerStyle | kFileMustExist);
  EXPECT_EQ(Open("missing.csv\nthere.csv\n"), here + "/there.csv");
  EXPECT_THAT(shown, HasSubstr("  There is no such file: " + here + "/missing.csv\n"));
  EXPECT_EQ(Open("missing.csv\n\n"), "");
}

TEST_F(ConsoleFileDialogsTest, AnOldFileIsReplacedAfterAQuestionWhereTheFlagAsksForIt) {
  folder.Write("old.csv", "1");
  EXPECT_EQ(Save("old.csv\n"), here + "/old.csv");
  EXPECT_EQ(shown.find("already exists"), Text::npos);
  dialog.SetFlags(kExplorerStyle | kPathMustExist | kPromptToOverwrite);
  EXPECT_EQ(Save("old.csv\ny\n"), here + "/old.csv");
  EXPECT_THAT(shown, HasSubstr("Export Data: " + here +
                               "/old.csv already exists.\n  Do you want to replace it?\n  Yes/No [No]? "));
  EXPECT_EQ(Save("old.csv\nn\nnew.csv\n"), here + "/new.csv");
  EXPECT_FALSE(refused) << "the name that was taken at last counts";
  EXPECT_EQ(Open("old.csv\n"), here + "/old.csv");
  EXPECT_EQ(folder.Read("old.csv"), "1");
}

TEST_F(ConsoleFileDialogsTest, ANewFileIsMadeAfterAQuestionWhereTheFlagAsksForIt) {
  dialog.SetFlags(kExplorerStyle | kPathMustExist | kPromptToCreate);
  EXPECT_EQ(Save("new.csv\nn\nnew.csv\ny\n"), here + "/new.csv");
  EXPECT_THAT(shown, HasSubstr(here + "/new.csv does not exist.\n  Do you want to create it?\n"));
}

TEST_F(ConsoleFileDialogsTest, TheDefaultExtensionGoesOntoANameWithoutOne) {
  dialog.SetDefaultExt("*.CSV");
  EXPECT_EQ(Save("year\n"), here + "/year.CSV");
  EXPECT_EQ(Save("year.txt\n"), here + "/year.txt");
  for (const auto* none : {"*.*", "*", ""}) {
    dialog.SetDefaultExt(none);
    EXPECT_EQ(Save("year\n"), here + "/year");
  }
}

TEST_F(ConsoleFileDialogsTest, AFileOfTheBareNameIsOpenedBeforeOneWithTheDefaultExtension) {
  dialog.SetDefaultExt("csv");
  folder.Write("both.csv", "");
  EXPECT_EQ(Open("both\n"), here + "/both.csv");
  folder.Write("both", "");
  EXPECT_EQ(Open("both\n"), here + "/both");
  EXPECT_EQ(Save("both\n"), here + "/both.csv");
}

TEST_F(ConsoleFileDialogsTest, WildcardsListTheFilesThatMatch) {
  for (const char* name : {"b.csv", "A.csv", "c.txt"}) folder.Write(name, "");
  EXPECT_EQ(Open("*.csv\nb.csv\n"), here + "/b.csv");
  EXPECT_THAT(shown, HasSubstr("]?   A.csv\n  b.csv\n  File name"));
  EXPECT_EQ(Open("*.dbf\n\n"), "");
  EXPECT_THAT(shown, HasSubstr("  No file matches " + here + "/*.dbf\n"));
  for (int i = 10; i < 35; ++i) folder.Write("many" + std::to_string(i), "");
  Open("many*\n\n");
  EXPECT_THAT(shown, HasSubstr("  many29\n  and 5 more\n"));
}

TEST_F(ConsoleFileDialogsTest, SeveralNamesAreTakenWhereTheFlagAllowsThem) {
  for (const char* name : {"a.csv", "b c.csv"}) folder.Write(name, "");
  dialog.SetFlags(kExplorerStyle | kFileMustExist);
  EXPECT_EQ(Open("a.csv b.csv\n\n"), "") << "one name with a blank in it";
  FileDialogRequest request;
  request.flags = kExplorerStyle | kFileMustExist | kSeveralFiles;
  Show("a.csv \"b c.csv\"\n", {}, [&] { EXPECT_EQ(ThePlatform().file_dialogs->ShowFile(request), 1); });
  EXPECT_THAT(shown, HasSubstr("  File names [Cancel]? "));
  EXPECT_EQ(request.file_name, here + Text("\0a.csv\0b c.csv", 14));
  EXPECT_EQ(request.file_title, "");
  request.flags = kFileMustExist | kSeveralFiles;
  Show("a.csv \"b c.csv\"\n", {}, [&] { EXPECT_EQ(ThePlatform().file_dialogs->ShowFile(request), 1); });
  EXPECT_EQ(request.file_name, here + " a.csv b c.csv");
  Show("\"b c.csv\"\n", {}, [&] { EXPECT_EQ(ThePlatform().file_dialogs->ShowFile(request), 1); });
  EXPECT_EQ(request.file_name, here + "/b c.csv");
}

TEST_F(ConsoleFileDialogsTest, SeveralNamesMustAllExistAndLieInOneFolder) {
  std::filesystem::create_directory("out");
  for (const char* name : {"a.csv", "b.csv", "out/c.csv"}) folder.Write(name, "");
  FileDialogRequest request;
  request.flags = kExplorerStyle | kFileMustExist | kSeveralFiles;
  Show("a.csv out/c.csv\na.csv d.csv\na.csv out\n\"\"\n\n", {},
       [&] { EXPECT_EQ(ThePlatform().file_dialogs->ShowFile(request), 0); });
  EXPECT_THAT(shown, HasSubstr("Several files must lie in " + here + ", and this one does not: out/c.csv\n"));
  EXPECT_THAT(shown, HasSubstr("There is no such file: " + here + "/d.csv\n"));
  EXPECT_THAT(shown, HasSubstr("This is a folder, and no file: " + here + "/out\n"));
  EXPECT_THAT(shown, HasSubstr("There is no name in this: \"\"\n"));
  EXPECT_EQ(request.file_name, "");
}

TEST_F(ConsoleFileDialogsTest, ANameLongerThanTheBufferIsToldAndAskedAgain) {
  dialog.SetMaxFileSize(static_cast<Long>(here.size()) + 6);
  EXPECT_EQ(Save("seven.x\nfive5\n"), here + "/five5");
  EXPECT_THAT(shown, HasSubstr("  This has " + std::to_string(here.size() + 8) + " characters, " +
                               std::to_string(here.size() + 6) + " at most can be taken: " + here + "/seven.x\n"));
}

TEST_F(ConsoleFileDialogsTest, YesTakesTheProposedNameAndReplaces) {
  folder.Write("north.csv", "");
  dialog.SetFlags(kExplorerStyle | kPathMustExist | kPromptToOverwrite);
  EXPECT_EQ(Save("", Yes()), here + "/north.csv");
  EXPECT_THAT(shown, HasSubstr("  File name: north.csv\n"));
  EXPECT_THAT(shown, EndsWith("  Yes/No: Yes\n"));
}

TEST_F(ConsoleFileDialogsTest, AProposalThatWillNotDoEndsTheDialogWithoutAQuestion) {
  dialog.SetFlags(kExplorerStyle | kFileMustExist);
  EXPECT_EQ(Open("", Yes()), "");
  EXPECT_THAT(shown, EndsWith("  File name: north.csv\n  There is no such file: " + here + "/north.csv\n"));
  EXPECT_FALSE(refused) << "nobody has cancelled";
  dialog.SetFilename("");
  EXPECT_EQ(Open("", Yes()), "");
  EXPECT_THAT(shown, EndsWith("  No name is proposed here\n"));
  FileDialogRequest request;
  request.file_name = "longer";
  request.max_file_size = 3;
  Show("", Yes(), [&] { EXPECT_EQ(ThePlatform().file_dialogs->ShowFile(request), 0); });
  EXPECT_EQ(request.extended_error, kBufferTooSmall);
  EXPECT_EQ(request.file_name, "longer");
}

TEST_F(ConsoleFileDialogsTest, GivenAnswersAreUsedUpInTurn) {
  folder.Write("north.csv", "");
  dialog.SetFlags(kExplorerStyle | kPathMustExist | kPromptToOverwrite);
  EXPECT_EQ(Save("", Answers({"ok", "yes"})), here + "/north.csv");
  EXPECT_EQ(Save("", Answers({"ok", "no"})), "");
  EXPECT_TRUE(refused);
  EXPECT_EQ(Save("", Answers({"cancel"})), "");
  EXPECT_THAT(shown, EndsWith("  File name: Cancel\n"));
  EXPECT_TRUE(refused);
  EXPECT_EQ(Save("", Answers({"retry"})), "");
  EXPECT_TRUE(misanswered);
}

TEST_F(ConsoleFileDialogsTest, EachDialogIsALineOfTheMessagesFile) {
  AskOptions options;
  options.messages_file = folder.Path("m.json");
  Save("year.csv\n", options);
  EXPECT_EQ(folder.Read("m.json"),
            "{\"text\":\"Export Data\",\"icon\":\"\",\"buttons\":[\"ok\",\"cancel\"],"
            "\"answer\":\"ok\",\"path\":\"" +
                here + "/year.csv\"}\n");
  Save("\n", options);
  EXPECT_EQ(folder.Read("m.json"),
            "{\"text\":\"Export Data\",\"icon\":\"\",\"buttons\":[\"ok\",\"cancel\"],\"answer\":\"cancel\"}\n");
}

TEST_F(ConsoleFileDialogsTest, WhereNobodyCanBeAskedItIsACancelThatIsTold) {
  std::optional<Text> chosen;
  ::testing::internal::CaptureStderr();
  const int input = ::dup(STDIN_FILENO);
  const int nothing = ::open("/dev/null", O_RDONLY);
  ::dup2(nothing, STDIN_FILENO);
  {
    const ConsolePlatform platform({});
    dialog.ShowSave();
    chosen = BrowseForFolder(0, "Folder for Export File", "", false);
    EXPECT_TRUE(platform.Boxes().WasRefused());
  }
  ::dup2(input, STDIN_FILENO);
  ::close(input);
  ::close(nothing);
  const Text told = ::testing::internal::GetCapturedStderr();
  EXPECT_EQ(dialog.APIReturn(), 0);
  EXPECT_EQ(dialog.Filename(), "north.csv");
  EXPECT_EQ(chosen, "");
  EXPECT_THAT(told, HasSubstr("Export Data\n"));
  EXPECT_THAT(told, HasSubstr("  File name: Cancel\n"));
  EXPECT_THAT(told, EndsWith("  Folder: Cancel\n"));
}

TEST_F(ConsoleFileDialogsTest, AFolderIsAskedForUntilOneExists) {
  std::filesystem::create_directory("out");
  EXPECT_EQ(Browse("nowhere\nout\n", ""), here + "/out");
  EXPECT_EQ(shown, "Folder for Export File\n  Folder: " + here + "\n  Folder, = for " + here +
                       " [Cancel]?   There is no such folder: " + here + "/nowhere\n  Folder, = for " + here +
                       " [Cancel]? ");
  EXPECT_EQ(Browse("=\n", "out"), here + "/out");
  EXPECT_EQ(Browse("=\n", ""), here);
  EXPECT_EQ(Browse("\n", "out"), "");
  EXPECT_TRUE(refused);
  EXPECT_EQ(Browse("", "out", Yes()), here + "/out");
  EXPECT_EQ(Browse("", "nowhere", Yes()), "");
  EXPECT_EQ(std::filesystem::current_path().string(), here);
}

TEST_F(ConsoleFileDialogsTest, ATerminalHasNoOtherDialogs) {
  const ConsolePlatform platform({});
  EXPECT_THAT([&] { dialog.ShowColor(); }, FailsWith(FailureNumber::kFeatureUnavailable, "colours"));
  EXPECT_THAT([&] { dialog.ShowFont(); }, FailsWith(FailureNumber::kFeatureUnavailable, "fonts"));
  EXPECT_THAT([&] { dialog.ShowPrinter(); }, FailsWith(FailureNumber::kFeatureUnavailable, "printers"));
  dialog.SetHelpFile("help.chm");
  EXPECT_THAT([&] { dialog.ShowHelp(); }, FailsWith(FailureNumber::kFeatureUnavailable, "help.chm"));
}

}  // namespace
}  // namespace tallybook::cli
