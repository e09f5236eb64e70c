#include <gmock/gmock.h>
#include <utility>
#include <vector>

#include "forms/CCommonDialog.h"
#include "tests/support/FailsWith.h"
#include "tests/support/ScriptedPlatform.h"

namespace tallybook::testing {
namespace {

using ::testing::Each;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::SizeIs;

const Text kZero(1, '\0');
const Text kFailedChoice = "Error retrieving filename from OpenFileName structure.  The Extended return code is: ";

TEST(ConvertFilterTest, BarsBecomeZeroCharactersAndTwoMoreEndTheText) {
  EXPECT_EQ(ConvertFilter("Text (*.txt)|*.txt"), "Text (*.txt)" + kZero + "*.txt" + kZero + kZero);
  EXPECT_EQ(ConvertFilter(""), kZero + kZero);
  EXPECT_EQ(ConvertFilter("A|*.a|B|*.b"), "A" + kZero + "*.a" + kZero + "B" + kZero + "*.b" + kZero + kZero);
}

TEST(ConvertFilterTest, AColonSplitsTooAsMeant) {
  EXPECT_EQ(ConvertFilter("Tables: all|C:\\*.db"),
            "Tables" + kZero + " all" + kZero + "C" + kZero + "\\*.db" + kZero + kZero);
}

class CommonDialogTest : public ::testing::Test {
 protected:
  [[nodiscard]] const FileDialogRequest& Asked() { return platform_.file_dialogs.Requests().back(); }

  ScriptedPlatform platform_{FilesIn::kMemory};
  ScriptedFileDialogs& dialogs_ = platform_.file_dialogs;
  CCommonDialog dialog_;
};

// --- Files -----------------------------------------------------------------------------------------------------------

class FileDialogTest : public CommonDialogTest {};

TEST_F(FileDialogTest, AsksForWhatThePropertiesSay) {
  dialog_.SetHWnd(77);
  dialog_.SetFilename("proposed.txt");
  dialog_.SetFileTitle("title");
  dialog_.SetFilter("Text|*.txt");
  dialog_.SetFilterIndex(2);
  dialog_.SetInitDir("/import/");
  dialog_.SetDialogTitle("Choose");
  dialog_.SetDefaultExt("txt");
  dialog_.SetFlags(kExplorerStyle | 4);
  dialogs_.Choose("/import/a.txt");
  dialog_.ShowOpen();
  EXPECT_FALSE(Asked().save);
  EXPECT_EQ(Asked().owner, 77);
  EXPECT_EQ(Asked().file_name, "proposed.txt");
  EXPECT_EQ(Asked().file_title, "title");
  EXPECT_EQ(Asked().filter, "Text" + kZero + "*.txt" + kZero + kZero);
  EXPECT_EQ(Asked().filter_index, 2);
  EXPECT_EQ(Asked().initial_folder, "/import/");
  EXPECT_EQ(Asked().title, "Choose");
  EXPECT_EQ(Asked().default_extension, "txt");
  EXPECT_EQ(Asked().flags, kExplorerStyle | 4);
  EXPECT_EQ(Asked().max_file_size, 255);
}

TEST_F(FileDialogTest, GivesTheChoice) {
  dialogs_.Choose("/import/a.txt", 3);
  dialog_.ShowSave();
  EXPECT_TRUE(Asked().save);
  EXPECT_EQ(dialog_.Filename(), "/import/a.txt");
  EXPECT_EQ(dialog_.FileTitle(), "a.txt");
  EXPECT_EQ(dialog_.FilterIndex(), 3);
  EXPECT_EQ(dialog_.APIReturn(), 1);
}

TEST_F(FileDialogTest, ActionTellsTheDialogLastShown) {
  EXPECT_EQ(dialog_.Action(), 0);
  dialogs_.Choose("/a");
  dialog_.ShowOpen();
  EXPECT_EQ(dialog_.Action(), 1);
  dialogs_.Cancel();
  dialog_.ShowSave();
  EXPECT_EQ(dialog_.Action(), 2);
}

TEST_F(FileDialogTest, TheOldStyleGetsTwoBitsMoreWhichDoNotComeBack) {
  dialog_.SetFlags(4);
  dialogs_.Answer([](FileDialogRequest& request) {
    EXPECT_EQ(request.flags, 4 | 0x20 | 0x20000);
    request.file_name = "/a";
    request.flags |= 1;
    return 1;
  });
  dialog_.ShowOpen();
  EXPECT_EQ(dialog_.flags(), 4 | 1);
}

TEST_F(FileDialogTest, ANameLongerThanTheBufferIsCut) {
  dialog_.SetMaxFileSize(8);
  dialog_.SetFilename("M\xC3\xBCller-long.txt");
  dialog_.SetFileTitle("123456789");
  dialogs_.Cancel();
  dialog_.ShowOpen();
  EXPECT_EQ(Asked().file_name, "M\xC3\xBCller-l") << "8 characters";
  EXPECT_EQ(Asked().file_title, "12345678");
  EXPECT_EQ(Asked().max_file_size, 8);
}

TEST_F(FileDialogTest, WithoutALengthTheBufferHas255Characters) {
  for (const Long none : std::vector<Long>{0, -1}) {
    dialog_.SetMaxFileSize(none);
    dialog_.SetFilename(Text(300, 'x'));
    dialogs_.Cancel();
    dialog_.ShowOpen();
    EXPECT_EQ(Asked().file_name, Text(255, 'x'));
    EXPECT_EQ(Asked().max_file_size, 255);
  }
}

TEST_F(FileDialogTest, TheChoiceEndsAtItsFirstZeroCharacter) {
  dialogs_.Answer([](FileDialogRequest& request) {
    request.file_name = "/import/a.txt" + kZero + "rest";
    request.file_title = "a.txt" + kZero;
    return 1;
  });
  dialog_.ShowOpen();
  EXPECT_EQ(dialog_.Filename(), "/import/a.txt");
  EXPECT_EQ(dialog_.FileTitle(), "a.txt");
}

TEST_F(FileDialogTest, AnEmptyNameTakesTheTitle) {
  dialogs_.Answer([](FileDialogRequest& request) {
    request.file_name = "";
    request.file_title = "a.txt";
    return 1;
  });
  dialog_.ShowOpen();
  EXPECT_EQ(dialog_.Filename(), "a.txt");
  EXPECT_THAT(platform_.boxes.Shown(), IsEmpty());
}

TEST_F(FileDialogTest, ANameAndATitleThatAreEmptyAreToldWithTheExtendedError) {
  dialogs_.Answer([](FileDialogRequest& request) {
    request.file_name = "";
    request.extended_error = 12290;
    return 1;
  });
  dialog_.ShowOpen();
  EXPECT_EQ(dialog_.Filename(), "");
  EXPECT_EQ(dialog_.ExtendedError(), 12290);
  EXPECT_THAT(platform_.boxes.Texts(), ElementsAre(kFailedChoice + "12290"));
}

TEST_F(FileDialogTest, ACancelWithoutCancelErrorLeavesAllAsItWas) {
  dialog_.SetFilename("before.txt");
  dialog_.SetFileTitle("before");
  dialog_.SetFilterIndex(2);
  dialogs_.Answer([](FileDialogRequest& request) {
    request.file_name = "half typed";
    request.filter_index = 5;
    return 0;
  });
  dialog_.ShowOpen();
  EXPECT_EQ(dialog_.APIReturn(), 0);
  EXPECT_EQ(dialog_.Filename(), "before.txt");
  EXPECT_EQ(dialog_.FileTitle(), "before");
  EXPECT_EQ(dialog_.FilterIndex(), 2);
  EXPECT_THAT(platform_.boxes.Shown(), IsEmpty());
}

TEST_F(FileDialogTest, ACancelWithCancelErrorRaisesItWithoutAText) {
  dialog_.SetCancelError(true);
  dialogs_.Cancel();
  dialogs_.Cancel();
  const auto cancelled = ::testing::Throws<Failure>(
      ::testing::AllOf(::testing::Property(&Failure::Number, FailureNumber::kDialogCancelled),
                       ::testing::Property(&Failure::Description, "")));
  EXPECT_THAT([&] { dialog_.ShowOpen(); }, cancelled);
  EXPECT_THAT([&] { dialog_.ShowSave(); }, cancelled);
  EXPECT_THAT(platform_.boxes.Shown(), IsEmpty());
}

TEST_F(FileDialogTest, TheCancelsNumberIsTheLowHalfOfTheSystemsError) {
  EXPECT_EQ(static_cast<std::uint32_t>(kDialogCancelledError), 0x8004037EU);
  EXPECT_EQ(static_cast<Long>(FailureNumber::kDialogCancelled), 0x037E);
}

TEST_F(FileDialogTest, TheFolderInForceIsTheSameOnEveryWayOut) {
  const auto in_force = [&] { return std::exchange(platform_.shell.current_folder, "/here/"); };
  dialogs_.Choose("/a");
  dialog_.ShowOpen();
  EXPECT_EQ(in_force(), "/here/");
  dialogs_.Cancel();
  dialog_.ShowSave();
  EXPECT_EQ(in_force(), "/here/");
  dialogs_.Fail(FailureNumber::kDeviceError, "broken");
  dialog_.ShowOpen();
  EXPECT_EQ(in_force(), "/here/");
  dialog_.SetCancelError(true);
  dialogs_.Cancel();
  EXPECT_THAT([&] { dialog_.ShowOpen(); }, FailsWith(FailureNumber::kDialogCancelled));
  EXPECT_EQ(in_force(), "/here/");
  dialogs_.Fail(FailureNumber::kDeviceError, "broken");
  EXPECT_THAT([&] { dialog_.ShowOpen(); }, FailsWith(FailureNumber::kDialogCancelled));
  EXPECT_EQ(in_force(), "/here/");
}

TEST_F(FileDialogTest, AFailureInsideIsToldWithItsStatementAndCountsAsACancel) {
  dialog_.SetFilename("before.txt");
  dialogs_.Fail(FailureNumber::kDeviceError, "broken");
  dialog_.ShowOpen();
  EXPECT_THAT(platform_.boxes.Texts(),
              ElementsAre("Error Getting name of file in ShowFileDialog - Err = 57 in line: 80 - broken - extended "
                          "error:0"));
  EXPECT_EQ(dialog_.APIReturn(), 0);
  EXPECT_EQ(dialog_.Filename(), "before.txt");
}

TEST_F(FileDialogTest, AFolderThatCannotBeSetBackIsToldAndTheChoiceStands) {
  platform_.shell.before_set_folder = [](const Text& path) { throw Failure(FailureNumber::kPathNotFound, path); };
  dialogs_.Choose("/import/a.txt");
  dialog_.ShowOpen();
  EXPECT_EQ(dialog_.Filename(), "/import/a.txt");
  EXPECT_THAT(platform_.boxes.Texts(),
              ElementsAre("Error Getting name of file in ShowFileDialog - Err = 76 in line: 120 - /here/ - extended "
                          "error:0"));
}

TEST_F(FileDialogTest, AChoiceLongerThanTheBufferIsToldAndNeverCut) {
  dialog_.SetMaxFileSize(10);
  dialog_.SetFilename("before");
  dialogs_.Choose("/import/abc.txt");
  dialog_.ShowOpen();
  EXPECT_EQ(dialog_.Filename(), "before");
  EXPECT_EQ(dialog_.APIReturn(), 0);
  EXPECT_EQ(dialog_.ExtendedError(), 0x3003);
  EXPECT_THAT(
      platform_.boxes.Texts(),
      ElementsAre("Error Getting name of file in ShowFileDialog - Err = 75 in line: 90 - The chosen name has 15 "
                  "characters, 10 at most can be taken: /import/abc.txt - extended error:12291"));
}

TEST_F(FileDialogTest, TheLastResultsAreClearedBeforeTheNextDialog) {
  dialogs_.Answer([](FileDialogRequest& request) {
    request.file_name = "";
    request.extended_error = 7;
    return 1;
  });
  dialog_.ShowOpen();
  dialogs_.Cancel(9);
  dialog_.ShowOpen();
  EXPECT_EQ(dialog_.APIReturn(), 0);
  EXPECT_EQ(dialog_.ExtendedError(), 0);
}

TEST_F(FileDialogTest, APlatformWithoutDialogsAndShellSaysSoAndCancels) {
  ThePlatform().file_dialogs = nullptr;
  ThePlatform().shell = nullptr;
  dialog_.SetCancelError(true);
  EXPECT_THAT([&] { dialog_.ShowOpen(); }, FailsWith(FailureNumber::kDialogCancelled));
  EXPECT_THAT(platform_.boxes.Texts(),
              ElementsAre("Error Getting name of file in ShowFileDialog - Err = 73 in line: 80 - This platform has no "
                          "standard dialogs - extended error:0"));
}

// --- Colour, font, printer, help -------------------------------------------------------------------------------------

using ColorDialogTest = CommonDialogTest;

TEST_F(ColorDialogTest, OffersSixteenWhiteColoursAndTakesTheChoice) {
  dialog_.SetColor(0x0000FF);
  dialog_.SetFlags(1);
  dialogs_.on_color = [](ColorDialogRequest& request) {
    EXPECT_EQ(request.color, 0x0000FF);
    EXPECT_EQ(request.flags, 1);
    EXPECT_THAT(request.custom_colors, SizeIs(16));
    EXPECT_THAT(request.custom_colors, Each(0xFFFFFF));
    request.color = 0x00FF00;
    return 1;
  };
  dialog_.ShowColor();
  EXPECT_EQ(dialog_.Color(), 0x00FF00);
  EXPECT_EQ(dialog_.Action(), 3);
  EXPECT_EQ(dialog_.APIReturn(), 1);
}

TEST_F(ColorDialogTest, ACancelKeepsTheColourAndTellsTheExtendedError) {
  dialog_.SetColor(5);
  dialogs_.on_color = [](ColorDialogRequest& request) {
    request.color = 6;
    request.extended_error = 3;
    return 0;
  };
  dialog_.ShowColor();
  EXPECT_EQ(dialog_.Color(), 5);
  EXPECT_EQ(dialog_.ExtendedError(), 3);
  dialog_.SetCancelError(true);
  EXPECT_THAT([&] { dialog_.ShowColor(); }, FailsWith(FailureNumber::kDialogCancelled, "Cancel Pressed"));
}

using FontDialogTest = CommonDialogTest;

TEST_F(FontDialogTest, TakesTheFontInAndOut) {
  dialog_.SetFontName(Text(40, 'F'));
  dialog_.SetFontSize(8.25F);
  dialog_.SetFontBold(true);
  dialog_.SetFontItalic(true);
  dialog_.SetHdc(-1);
  dialogs_.on_font = [](FontDialogRequest& request) {
    EXPECT_EQ(request.name, Text(31, 'F')) << "with its end 32 bytes of the system's record";
    EXPECT_EQ(request.size, 8.25F);
    EXPECT_TRUE(request.bold && request.italic);
    EXPECT_FALSE(request.underline || request.strikethrough);
    EXPECT_EQ(request.device_context, -1);
    request.name = "Chosen";
    request.size = 10;
    request.bold = false;
    request.italic = false;
    request.underline = true;
    request.strikethrough = true;
    request.color = 9;
    return 1;
  };
  dialog_.ShowFont();
  EXPECT_EQ(dialog_.Action(), 4);
  EXPECT_EQ(dialog_.FontName(), "Chosen");
  EXPECT_EQ(dialog_.FontSize(), 10);
  EXPECT_FALSE(dialog_.FontBold() || dialog_.FontItalic());
  EXPECT_TRUE(dialog_.FontUnderline() && dialog_.FontStrikethru());
  EXPECT_EQ(dialog_.Color(), 9);
}

TEST_F(FontDialogTest, ACancelKeepsTheFont) {
  dialog_.SetFontName("Before");
  dialogs_.on_font = [](FontDialogRequest& request) {
    request.name = "Other";
    return 0;
  };
  dialog_.ShowFont();
  EXPECT_EQ(dialog_.FontName(), "Before");
  dialog_.SetCancelError(true);
  EXPECT_THAT([&] { dialog_.ShowFont(); }, FailsWith(FailureNumber::kDialogCancelled));
}

using PrinterDialogTest = CommonDialogTest;

TEST_F(PrinterDialogTest, ANamedPrinterIsHandedInWithItsSettings) {
  dialog_.SetDeviceName("Laser");
  dialog_.SetOrientation(2);
  dialog_.SetPaperSize(9);
  dialog_.SetBinNum(4);
  dialog_.SetCopies(3);
  dialog_.SetFromPage(1);
  dialog_.SetToPage(2);
  dialog_.SetMin(1);
  dialog_.SetMax(5);
  dialogs_.on_printer = [](PrinterDialogRequest& request) {
    EXPECT_EQ(request.device_name, "Laser");
    EXPECT_EQ(request.orientation, 2);
    EXPECT_EQ(request.paper_size, 9);
    EXPECT_EQ(request.bin, 4);
    EXPECT_EQ(request.copies, 3);
    EXPECT_EQ(request.from_page + 10 * request.to_page + 100 * request.min_page + 1000 * request.max_page, 5121);
    request.device_name = "Ink";
    request.copies = 1;
    request.to_page = 4;
    request.orientation = 1;
    return 1;
  };
  dialog_.ShowPrinter();
  EXPECT_EQ(dialog_.Action(), 5);
  EXPECT_EQ(dialog_.DeviceName(), "Ink");
  EXPECT_EQ(dialog_.Copies(), 1);
  EXPECT_EQ(dialog_.ToPage(), 4);
  EXPECT_EQ(dialog_.Orientation(), 1);
}

TEST_F(PrinterDialogTest, WithoutANameThePrinterHasNoSettingsToBeginWith) {
  dialog_.SetOrientation(2);
  dialog_.SetPaperSize(9);
  dialogs_.on_printer = [](PrinterDialogRequest& request) {
    EXPECT_EQ(request.orientation, 0);
    EXPECT_EQ(request.paper_size, 0);
    return 0;
  };
  dialog_.ShowPrinter();
  EXPECT_EQ(dialog_.Orientation(), 2) << "a cancel leaves it";
}

using HelpDialogTest = CommonDialogTest;

TEST_F(HelpDialogTest, ShowsTheHelpFileAtTheTopic) {
  dialog_.SetHdc(12);
  dialog_.SetHelpFile("/installation/tallybook.hlp");
  dialog_.SetHelpCommand(1);
  dialog_.SetHelpContext("4100");
  dialog_.ShowHelp();
  dialog_.SetHelpContext("");
  dialog_.ShowHelp();
  EXPECT_EQ(dialog_.Action(), 6);
  EXPECT_THAT(dialogs_.HelpShown(), ElementsAre(ScriptedFileDialogs::Help{12, "/installation/tallybook.hlp", 1, 4100},
                                                ScriptedFileDialogs::Help{12, "/installation/tallybook.hlp", 1, 0}));
}

TEST_F(HelpDialogTest, ATopicThatIsNoNumberIsAFailure) {
  dialog_.SetHelpContext("intro");
  EXPECT_THAT([&] { dialog_.ShowHelp(); }, FailsWith(FailureNumber::kTypeMismatch, "intro"));
}

TEST_F(HelpDialogTest, WithoutDialogsEachOfTheseFails) {
  ThePlatform().file_dialogs = nullptr;
  EXPECT_THAT([&] { dialog_.ShowColor(); }, FailsWith(FailureNumber::kFeatureUnavailable));
  EXPECT_THAT([&] { dialog_.ShowFont(); }, FailsWith(FailureNumber::kFeatureUnavailable));
  EXPECT_THAT([&] { dialog_.ShowPrinter(); }, FailsWith(FailureNumber::kFeatureUnavailable));
  EXPECT_THAT([&] { dialog_.ShowHelp(); }, FailsWith(FailureNumber::kFeatureUnavailable));
}

TEST_F(CommonDialogTest, PropertiesThatNoDialogReadsAreKept) {
  dialog_.SetHelpKey("key");
  dialog_.SetPrinterDefault(true);
  dialog_.SetObject(Text("anything"));
  EXPECT_EQ(dialog_.HelpKey(), "key");
  EXPECT_TRUE(dialog_.PrinterDefault());
  EXPECT_EQ(std::any_cast<Text>(dialog_.Object()), "anything");
}

}  // namespace
}  // namespace tallybook::testing
