// Numbered files: the modes and who may open together, retries, the table of numbers, existence, deleting and
// renaming, and items at a file's position.
#include <array>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <string>

#include "support/Utility.h"
#include "tests/support/FailsWith.h"
#include "tests/support/OtherProcess.h"
#include "tests/support/ScriptedPlatform.h"
#include "tests/support/TempFolder.h"

namespace tallybook::testing {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

constexpr Integer kRecordLength = 16;
constexpr std::array kModes{"BS", "BR", "BL", "RS", "RR", "RL", "O", "A", "I"};

std::span<const std::byte> BytesOf(const std::string& text) {
  return std::as_bytes(std::span(text));
}

class UtilityFilesTest : public ::testing::Test {
 protected:
  // The number that the file is open under; 0 where it was refused.
  Integer Open(const Text& mode, const Text& name = "file", Integer number = 0) {
    Text path = folder_.Path(name);
    const bool opened = OpenFileEx(mode, number, path, kRecordLength);
    EXPECT_EQ(opened, number != 0);
    return number;
  }
  static void Close(Integer number) { EXPECT_TRUE(CloseFileEx(number)); }
  [[nodiscard]] Text Path(const Text& name = "file") const { return folder_.Path(name); }
  // How often the system has been asked to open.
  int Opens() { return platform_.files.Calls(FileCall::kOpen); }

  TempFolder folder_;
  ScriptedPlatform platform_;
};

// --- Modes -----------------------------------------------------------------------------------------------------------

struct ModeCase {
  const char* mode;
  bool reads;
  bool makes_a_missing_file;
  const char* after_writing_z;  // what "abc" becomes; null where writing is refused
};

class ModeTest : public UtilityFilesTest, public ::testing::WithParamInterface<ModeCase> {};

TEST_P(ModeTest, ReadsWhereItsAccessSaysSo) {
  folder_.Write("file", "abc");
  const Integer number = Open(GetParam().mode);
  ASSERT_NE(number, 0);
  FileStream& stream = FileOf(number);
  stream.Seek(0);
  std::array<std::byte, 1> byte{};
  if (!GetParam().reads || GetParam().mode == Text("O")) {
    EXPECT_THAT([&] { (void)stream.ReadWhole(byte); }, FailsWith(FailureNumber::kPermissionDenied));
    return;
  }
  EXPECT_TRUE(stream.ReadWhole(byte));
  EXPECT_EQ(byte[0], std::byte{'a'});
}

TEST_P(ModeTest, WritesWhereItsAccessSaysSoAndInItsPlace) {
  folder_.Write("file", "abc");
  const Integer number = Open(GetParam().mode);
  ASSERT_NE(number, 0);
  FileOf(number).Write(BytesOf("Z"));
  if (GetParam().after_writing_z == nullptr) {
    EXPECT_THAT([&] { FileOf(number).Flush(); }, FailsWith(FailureNumber::kPermissionDenied));
  } else {
    FileOf(number).Flush();
  }
  Close(number);
  EXPECT_EQ(folder_.Read("file"), GetParam().after_writing_z == nullptr ? "abc" : GetParam().after_writing_z);
}

TEST_P(ModeTest, MakesAMissingFileWhereItWrites) {
  EXPECT_EQ(Open(GetParam().mode) != 0, GetParam().makes_a_missing_file);
  EXPECT_EQ(folder_.Has("file"), GetParam().makes_a_missing_file);
}

INSTANTIATE_TEST_SUITE_P(All, ModeTest,
                         ::testing::Values(ModeCase{"BS", true, true, "Zbc"}, ModeCase{"BR", true, false, nullptr},
                                           ModeCase{"BL", true, true, "Zbc"}, ModeCase{"RS", true, true, "Zbc"},
                                           ModeCase{"RR", true, false, nullptr}, ModeCase{"RL", true, true, "Zbc"},
                                           ModeCase{"O", false, true, "Z"}, ModeCase{"A", false, true, "abcZ"},
                                           ModeCase{"I", true, false, nullptr}),
                         [](const auto& tested) { return std::string(tested.param.mode); });

TEST_F(UtilityFilesTest, UnknownModeIsToldWithTheStopIcon) {
  for (const Text mode : {"X", "bs", "BSS", ""}) {
    platform_.boxes.ForgetShown();
    EXPECT_EQ(Open(mode), 0);
    ASSERT_EQ(platform_.boxes.Shown().size(), 1U);
    EXPECT_EQ(platform_.boxes.Shown()[0].text, "ERROR WITH FILE TYPE: " + mode);
    EXPECT_EQ(platform_.boxes.Shown()[0].style & kIconMask, kStopIcon);
  }
  EXPECT_FALSE(folder_.Has("file"));
}

// --- Sharing ---------------------------------------------------------------------------------------------------------

// Which modes may be opened (across) while the file is open in another (down), in the order of kModes.
constexpr std::array<const char*, kModes.size()> kTogether{
    //  B  B  B  R  R  R  O  A  I
    //  S  R  L  S  R  L
    "y y n y y n n n n",  // BS
    "y y n y y n n n y",  // BR
    "n n n n n n n n n",  // BL
    "y y n y y n n n n",  // RS
    "y y n y y n n n y",  // RR
    "n n n n n n n n n",  // RL
    "n n n n n n n n n",  // O
    "n n n n n n n n n",  // A
    "n y n n y n n n y",  // I
};

bool MayBeTogether(std::size_t first, std::size_t second) {
  return kTogether[first][second * 2] == 'y';
}

TEST_F(UtilityFilesTest, HandlesOfOneProcessShareAsTheModesSay) {
  folder_.Write("file", "abc");
  for (std::size_t first = 0; first < kModes.size(); ++first) {
    for (std::size_t second = 0; second < kModes.size(); ++second) {
      const Integer held = Open(kModes[first]);
      ASSERT_NE(held, 0) << kModes[first];
      EXPECT_EQ(Open(kModes[second]) != 0, MayBeTogether(first, second)) << kModes[first] << " then " << kModes[second];
      ResetOpenFiles();
    }
  }
}

TEST_F(UtilityFilesTest, ProcessesShareAsTheModesSay) {
  folder_.Write("file", "abc");
  for (std::size_t first = 0; first < kModes.size(); ++first) {
    const OtherProcess other(kModes[first], Path());
    ASSERT_TRUE(other.Holds()) << kModes[first];
    for (std::size_t second = 0; second < kModes.size(); ++second) {
      EXPECT_EQ(Open(kModes[second]) != 0, MayBeTogether(first, second)) << kModes[first] << " then " << kModes[second];
      ResetOpenFiles();
    }
    if (kModes[first] == Text("O")) folder_.Write("file", "abc");
  }
}

TEST_F(UtilityFilesTest, FileOfAProcessThatDiedIsFree) {
  folder_.Write("file", "abc");
  {
    const OtherProcess other("BL", Path());
    ASSERT_TRUE(other.Holds());
    EXPECT_EQ(Open("BS"), 0);
  }
  EXPECT_NE(Open("BL"), 0);
}

TEST_F(UtilityFilesTest, FileLockedByAnotherProcessIsWaitedForThreeTimes) {
  folder_.Write("file", "abc");
  const OtherProcess other("BL", Path());
  ASSERT_TRUE(other.Holds());
  EXPECT_EQ(Open("BS", "file", 4), 0);
  EXPECT_EQ(Opens(), 4);
  EXPECT_NEAR(platform_.clock.Slept(), 3, 0.2);
  EXPECT_THAT(platform_.boxes.Shown(), IsEmpty());
}

// --- Retries ---------------------------------------------------------------------------------------------------------

TEST_F(UtilityFilesTest, PermissionDeniedThreeTimesStillOpens) {
  platform_.files.FailNth(FileCall::kOpen, 1, FailureNumber::kPermissionDenied, 3);
  EXPECT_EQ(Open("BS"), 1);
  EXPECT_EQ(Opens(), 4);
  EXPECT_NEAR(platform_.clock.Slept(), 3, 0.2);
}

TEST_F(UtilityFilesTest, PermissionDeniedAFourthTimeIsTheEnd) {
  platform_.files.FailNth(FileCall::kOpen, 1, FailureNumber::kPermissionDenied, 4);
  EXPECT_EQ(Open("BS"), 0);
  EXPECT_EQ(Opens(), 4);
  EXPECT_NEAR(platform_.clock.Slept(), 3, 0.2);
  EXPECT_THAT(platform_.boxes.Shown(), IsEmpty());
}

TEST_F(UtilityFilesTest, FeatureUnavailableIsTriedOnceMoreAtOnce) {
  platform_.files.FailNth(FileCall::kOpen, 1, FailureNumber::kFeatureUnavailable);
  EXPECT_EQ(Open("BS"), 1);
  EXPECT_EQ(Opens(), 2);
  EXPECT_EQ(platform_.clock.Slept(), 0);
}

TEST_F(UtilityFilesTest, FeatureUnavailableTwiceIsTheEnd) {
  platform_.files.FailNth(FileCall::kOpen, 1, FailureNumber::kFeatureUnavailable, 2);
  EXPECT_EQ(Open("BS"), 0);
  EXPECT_EQ(Opens(), 2);
}

TEST_F(UtilityFilesTest, FeatureUnavailableAfterARetryIsTheEnd) {
  platform_.files.FailNth(FileCall::kOpen, 1, FailureNumber::kPermissionDenied);
  platform_.files.FailNth(FileCall::kOpen, 2, FailureNumber::kFeatureUnavailable);
  EXPECT_EQ(Open("BS"), 0);
  EXPECT_EQ(Opens(), 2);
}

TEST_F(UtilityFilesTest, OtherFailuresAreNotTriedAgain) {
  for (const FailureNumber number : {FailureNumber::kFileNotFound, FailureNumber::kPathNotFound,
                                     FailureNumber::kPathOrAccess, FailureNumber::kDeviceError}) {
    const int before = Opens();
    platform_.files.FailNth(FileCall::kOpen, 1, number);
    EXPECT_EQ(Open("BS"), 0);
    EXPECT_EQ(Opens(), before + 1);
  }
  EXPECT_EQ(platform_.clock.Slept(), 0);
  EXPECT_THAT(platform_.boxes.Shown(), IsEmpty());
}

TEST(UtilityRemoteDriveTest, NameOfARemoteDriveIsOpenedAsALocalOne) {
  ScriptedPlatform platform(FilesIn::kMemory);
  platform.memory.Put("C:\\data\\x", "abc");
  Integer number = 0;
  Text name = "\\\\tsclient\\C\\data\\x";
  EXPECT_TRUE(OpenFileEx("I", number, name));
  EXPECT_EQ(name, "C:\\data\\x");
  EXPECT_EQ(OpenFileName(number), "C:\\data\\x");
}

TEST(UtilityRemoteDriveTest, LocalNameThatIsMissingTooIsTheEnd) {
  ScriptedPlatform platform(FilesIn::kMemory);
  Integer number = 5;
  Text name = "\\\\tsclient\\C\\data\\x";
  EXPECT_FALSE(OpenFileEx("I", number, name));
  EXPECT_EQ(number, 0);
  EXPECT_EQ(platform.files.Calls(FileCall::kOpen), 2);
}

TEST_F(UtilityFilesTest, PlainOpensIgnoreSharingAndDoNotWait) {
  EXPECT_FALSE(NoFileSharing());
  SetNoFileSharing(true);
  EXPECT_NE(Open("BL"), 0);
  EXPECT_NE(Open("BL"), 0);
  platform_.files.FailNth(FileCall::kOpen, 1, FailureNumber::kPermissionDenied, 2);
  EXPECT_EQ(Open("BL"), 0);
  EXPECT_EQ(platform_.clock.Slept(), 0);
  EXPECT_TRUE(NoFileSharing());
}

// --- The table of open files -----------------------------------------------------------------------------------------

TEST_F(UtilityFilesTest, TableBeginsWithTenAtTheFirstOpenAndGrowsByTen) {
  EXPECT_EQ(OpenFilesTop(), 0);
  for (Integer expected = 1; expected <= 10; ++expected) EXPECT_EQ(Open("BS"), expected);
  EXPECT_EQ(OpenFilesTop(), 10);
  EXPECT_EQ(Open("BS"), 11);
  EXPECT_EQ(OpenFilesTop(), 20);
  EXPECT_EQ(Open("BS", "file", 35), 35);
  EXPECT_EQ(OpenFilesTop(), 40);
}

TEST_F(UtilityFilesTest, TheFirstCallMakesTheTableEvenWhereItFails) {
  EXPECT_EQ(Open("BR"), 0);
  EXPECT_EQ(OpenFilesTop(), 10);
  Integer number = 10;
  EXPECT_TRUE(CloseFileEx(number)) << "a number of the table, open or not";
}

TEST_F(UtilityFilesTest, NumberZeroGivesTheLowestFreeOne) {
  for (int i = 0; i < 3; ++i) EXPECT_NE(Open("BS"), 0);
  Close(2);
  EXPECT_EQ(Open("BS"), 2);
  EXPECT_EQ(Open("BS"), 4);
}

TEST_F(UtilityFilesTest, OpenNumberIsClosedFirst) {
  folder_.Write("other", "xyz");
  EXPECT_EQ(Open("BL", "file", 3), 3);
  EXPECT_EQ(Open("BS", "other", 3), 3);
  EXPECT_EQ(OpenFileName(3), Path("other"));
  EXPECT_EQ(Open("BL"), 1);
  EXPECT_EQ(Open("BL", "file", 1), 1) << "the number's own lock does not stand in its way";
}

TEST_F(UtilityFilesTest, NegativeNumberIsRefused) {
  EXPECT_EQ(Open("BS", "file", -1), 0);
  EXPECT_FALSE(folder_.Has("file"));
}

TEST_F(UtilityFilesTest, ClosingOtherThanANumberOfTheTableIsFalseAndHarmless) {
  Integer before_any = 1;
  EXPECT_FALSE(CloseFileEx(before_any));
  const Integer open = Open("BS");
  for (const Integer number : std::array<Integer, 3>{0, -1, 11}) {
    Integer closed = number;
    EXPECT_FALSE(CloseFileEx(closed)) << number;
    EXPECT_EQ(closed, number);
  }
  EXPECT_EQ(OpenFileName(open), Path());
}

TEST_F(UtilityFilesTest, ClosingClearsNameAndNumberAndHandlesPendingInput) {
  Integer number = Open("BS");
  EXPECT_EQ(OpenFileName(1), Path());
  const int looks = platform_.input.Looks();
  EXPECT_TRUE(CloseFileEx(number));
  EXPECT_EQ(number, 0);
  EXPECT_EQ(OpenFileName(1), "");
  EXPECT_EQ(platform_.input.Looks(), looks + 1);
  EXPECT_THAT([] { (void)FileOf(1); }, FailsWith(FailureNumber::kBadFileNumber, "1"));
}

TEST_F(UtilityFilesTest, ClosingWritesWhatWasBuffered) {
  const Integer number = Open("O");
  FileOf(number).Write(BytesOf("abc"));
  Close(number);
  EXPECT_EQ(folder_.Read("file"), "abc");
}

TEST_F(UtilityFilesTest, FailureToCloseIsPassedOver) {
  Integer number = Open("BS");
  platform_.files.FailNth(FileCall::kClose, 1, FailureNumber::kDiskFull);
  EXPECT_TRUE(CloseFileEx(number));
  EXPECT_EQ(number, 0);
  EXPECT_NE(Open("BL"), 0);
}

TEST_F(UtilityFilesTest, OpeningHandlesPendingInputOnce) {
  platform_.input.SetPending(1);
  EXPECT_NE(Open("BS"), 0);
  EXPECT_EQ(platform_.input.Runs(), 1);
}

// --- Existence, deleting, renaming -----------------------------------------------------------------------------------

TEST_F(UtilityFilesTest, FileExistsForAFileAndNotForAFolder) {
  folder_.Write("file", "");
  EXPECT_TRUE(FileExists(Path()));
  EXPECT_FALSE(FileExists(Path("")));
  EXPECT_FALSE(FileExists(Path("missing")));
  EXPECT_FALSE(FileExists(""));
}

TEST_F(UtilityFilesTest, FileInUseExists) {
  folder_.Write("file", "");
  const OtherProcess other("BL", Path());
  ASSERT_TRUE(other.Holds());
  EXPECT_TRUE(FileExists(Path()));
}

TEST_F(UtilityFilesTest, FileThatTheSystemReportsAsInUseExists) {
  platform_.files.HideAttributes("secret");
  EXPECT_TRUE(FileExists(Path("secret")));
}

TEST_F(UtilityFilesTest, FileThatCannotBeAskedAboutDoesNotExist) {
  folder_.Write("file", "");
  platform_.files.FailNth(FileCall::kAttributes, 1, FailureNumber::kDeviceError);
  EXPECT_FALSE(FileExists(Path()));
}

TEST_F(UtilityFilesTest, KillFileDeletesWhatIsThere) {
  folder_.Write("file", "abc");
  EXPECT_TRUE(KillFile(Path()));
  EXPECT_FALSE(folder_.Has("file"));
  EXPECT_TRUE(KillFile(Path()));
}

TEST_F(UtilityFilesTest, KillFileLeavesAFolder) {
  std::filesystem::create_directory(Path("sub"));
  EXPECT_TRUE(KillFile(Path("sub")));
  EXPECT_TRUE(folder_.Has("sub"));
}

TEST_F(UtilityFilesTest, KillFileIsFalseWhereTheFileStays) {
  folder_.Write("file", "abc");
  const Integer number = Open("BR");
  EXPECT_FALSE(KillFile(Path()));
  Close(number);
  platform_.files.FailNth(FileCall::kDelete, 1, FailureNumber::kPermissionDenied);
  EXPECT_FALSE(KillFile(Path()));
  EXPECT_EQ(folder_.Read("file"), "abc");
}

TEST_F(UtilityFilesTest, RenameFileReplacesTheNewName) {
  folder_.Write("old", "abc");
  EXPECT_TRUE(RenameFile(Path("old"), Path("new")));
  EXPECT_FALSE(folder_.Has("old"));
  EXPECT_EQ(folder_.Read("new"), "abc");
  folder_.Write("old", "second");
  EXPECT_TRUE(RenameFile(Path("old"), Path("new")));
  EXPECT_EQ(folder_.Read("new"), "second");
}

TEST_F(UtilityFilesTest, RenameFileOfNothingIsTrueAndTouchesNothing) {
  folder_.Write("new", "abc");
  EXPECT_TRUE(RenameFile(Path("missing"), Path("new")));
  EXPECT_EQ(folder_.Read("new"), "abc");
}

TEST_F(UtilityFilesTest, RenameFileToItsOwnNameKeepsIt) {
  folder_.Write("file", "abc");
  EXPECT_TRUE(RenameFile(Path(), Path()));
  EXPECT_EQ(folder_.Read("file"), "abc");
}

TEST_F(UtilityFilesTest, RenameFileIsFalseWhereTheNewNameIsHeld) {
  folder_.Write("old", "abc");
  folder_.Write("new", "xyz");
  ASSERT_NE(Open("I", "new"), 0);
  EXPECT_FALSE(RenameFile(Path("old"), Path("new")));
  EXPECT_EQ(folder_.Read("old"), "abc");
  EXPECT_EQ(folder_.Read("new"), "xyz");
}

TEST_F(UtilityFilesTest, RenameFileIsFalseWhereTheOldNameIsHeld) {
  folder_.Write("old", "abc");
  const OtherProcess other("BS", Path("old"));
  ASSERT_TRUE(other.Holds());
  EXPECT_FALSE(RenameFile(Path("old"), Path("new")));
  EXPECT_EQ(folder_.Read("old"), "abc");
  EXPECT_FALSE(folder_.Has("new"));
}

TEST_F(UtilityFilesTest, RenameFileIsFalseWhereTheFolderIsMissing) {
  folder_.Write("old", "abc");
  EXPECT_FALSE(RenameFile(Path("old"), Path("missing/new")));
  EXPECT_EQ(folder_.Read("old"), "abc");
}

// --- Items -----------------------------------------------------------------------------------------------------------

class ItemsTest : public UtilityFilesTest {
 protected:
  // Opens a file of these bytes at its start.
  Integer OpenOn(const std::string& bytes) {
    folder_.Write("file", bytes);
    return Open("BS");
  }
  std::string Written(Integer number) {
    FileOf(number).Flush();
    return folder_.Read("file");
  }
};

TEST_F(ItemsTest, NumbersAreLittleEndian) {
  const Integer number = OpenOn("");
  PutInt16(number, -2);
  PutInt32(number, 0x01020304);
  EXPECT_EQ(Written(number), "\xFE\xFF\x04\x03\x02\x01");
  FileOf(number).Seek(0);
  Integer small = 0;
  Long large = 0;
  GetInt16(number, small);
  GetInt32(number, large);
  EXPECT_EQ(small, -2);
  EXPECT_EQ(large, 0x01020304);
}

TEST_F(ItemsTest, NumberThatIsNotWholeLeavesTheValueAndStandsAtTheEnd) {
  const Integer number = OpenOn("\x01");
  Integer small = 77;
  GetInt16(number, small);
  EXPECT_EQ(small, 77);
  EXPECT_EQ(FileOf(number).Position(), 1);
  FileOf(number).Seek(0);
  Long large = 78;
  GetInt32(number, large);
  EXPECT_EQ(large, 78);
  EXPECT_EQ(FileOf(number).Position(), 1);
}

TEST_F(ItemsTest, ShortStringIsALengthAndTheBytesOfTheCodePage) {
  const Integer number = OpenOn("");
  WriteShortString(number, "b\xC3\xA4r  ");
  WriteShortString(number, "   ");
  WriteShortString(number, " x");
  EXPECT_EQ(Written(number), std::string("\x03\0b\xE4r\0\0\x02\0 x", 11));
  FileOf(number).Seek(0);
  Text first, second = "old", third;
  ReadShortString(number, first);
  ReadShortString(number, second);
  ReadShortString(number, third);
  EXPECT_THAT((std::vector<Text>{first, second, third}), ElementsAre("b\xC3\xA4r", "", " x"));
}

TEST_F(ItemsTest, ShortStringThatIsNotWholeLeavesTheText) {
  for (const std::string& bytes : {std::string(), std::string("\x05"), std::string("\x05\0ab", 4)}) {
    const Integer number = OpenOn(bytes);
    Text text = "before";
    ReadShortString(number, text);
    EXPECT_EQ(text, "before");
    EXPECT_TRUE(FileOf(number).AtEnd());
    Close(number);
  }
}

TEST_F(ItemsTest, NegativeLengthIsAnInvalidArgumentAndDoesNotMove) {
  const Integer number = OpenOn("\xFF\xFF rest");
  Text text = "before";
  EXPECT_THAT([&] { ReadShortString(number, text); }, FailsWith(FailureNumber::kInvalidArgument, "-1"));
  EXPECT_EQ(text, "before");
  EXPECT_EQ(FileOf(number).Position(), 0);
}

TEST_F(ItemsTest, LongestShortStringComesBackWhole) {
  const Integer number = OpenOn("");
  const Text longest(32767, 'x');
  WriteShortString(number, longest + "   ");
  FileOf(number).Seek(0);
  Text text;
  ReadShortString(number, text);
  EXPECT_EQ(text, longest);
}

TEST_F(ItemsTest, LongerShortStringOverflowsAndWritesNothing) {
  const Integer number = OpenOn("");
  EXPECT_THAT([&] { WriteShortString(number, Text(32768, 'x')); }, FailsWith(FailureNumber::kOverflow, "32768"));
  EXPECT_EQ(Written(number), "");
}

TEST_F(ItemsTest, NumberThatIsNotOpenIsABadFileNumber) {
  Integer value = 0;
  Text text;
  EXPECT_THAT([] { PutInt16(7, 1); }, FailsWith(FailureNumber::kBadFileNumber, "7"));
  EXPECT_THAT([&] { GetInt16(0, value); }, FailsWith(FailureNumber::kBadFileNumber, "0"));
  EXPECT_THAT([&] { ReadShortString(-1, text); }, FailsWith(FailureNumber::kBadFileNumber, "-1"));
}

}  // namespace
}  // namespace tallybook::testing
