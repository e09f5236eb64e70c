#include <algorithm>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "exchange/DefinitionStore.h"
#include "tests/support/FailsWith.h"
#include "tests/support/MemoryHost.h"
#include "tests/support/ScriptedPlatform.h"

namespace tallybook::testing {
namespace {

using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::Not;

Text NameOf(int number) {
  return "/book/TBQDX" + std::to_string(number) + ".NORTH";
}
Text OlderNameOf(const Text& number) {
  return "/book/KVQDX" + number + ".NORTH";
}

// A definition without rows, as it stands in its file.
std::string FileOf(const std::string& title, const std::string& source = "DAY.QDX") {
  return "\"" + title + "\",\"" + source + "\",3,-1,-1\r\n0,0\r\n0\r\n";
}

class DefinitionStoreTest : public ::testing::Test {
 protected:
  void Put(int number, const std::string& title) { platform_.memory.Put(NameOf(number), FileOf(title)); }
  void Load() { store_.Load(host_->book); }
  // Loads the definitions of these titles, numbered from 1.
  void LoadTitles(const std::vector<std::string>& titles) {
    for (std::size_t i = 0; i < titles.size(); ++i) Put(static_cast<int>(i + 1), titles[i]);
    Load();
  }
  void Select(Integer position) { store_.Select(position, host_->book); }
  bool Add(Integer position) { return store_.Add(position, host_->book, header_); }
  bool Update(Integer position) { return store_.Update(position, host_->book, header_); }
  Integer FirstAvailRec() { return store_.FirstAvailRec(host_->book); }
  std::vector<Text> Titles() {
    std::vector<Text> titles;
    for (Integer position = 1; position <= store_.Count(); ++position) titles.push_back(store_.At(position).Desc);
    return titles;
  }
  [[nodiscard]] bool Has(const Text& path) const { return platform_.memory.Has(path); }
  [[nodiscard]] std::string Bytes(const Text& path) const { return platform_.memory.Bytes(path); }
  [[nodiscard]] std::vector<Text> Boxes() const { return platform_.boxes.Texts(); }

  ScriptedPlatform platform_{FilesIn::kMemory};
  std::unique_ptr<MemoryHost> host_ = SmallBook();
  HeaderRecord header_;
  DefinitionStore store_;
};

// --- Loading ---------------------------------------------------------------------------------------------------------

TEST_F(DefinitionStoreTest, WithoutAnyFileTheListIsEmptyAndTheFirstPlaceIsFree) {
  EXPECT_FALSE(store_.IsLoaded());
  Load();
  EXPECT_TRUE(store_.IsLoaded());
  EXPECT_EQ(store_.Count(), 0);
  EXPECT_EQ(FirstAvailRec(), 1);
  EXPECT_EQ(store_.At(1).FileNum, 1);
  EXPECT_EQ(store_.At(1).Filename, NameOf(1));
  EXPECT_EQ(store_.Count(), 0) << "the counter is Add's business";
}

TEST_F(DefinitionStoreTest, EntriesFollowTheDirectoryAndKeepTheirNumbers) {
  Put(10, "Ten");
  Put(2, "Two");
  Put(1, "One");
  Load();
  EXPECT_THAT(Titles(), ElementsAre("One", "Ten", "Two"));
  EXPECT_EQ(store_.At(2).FileNum, 10);
  EXPECT_EQ(store_.At(2).Filename, NameOf(10));
  EXPECT_EQ(store_.At(2).QdxFileName, "DAY.QDX");
  EXPECT_EQ(store_.At(4).Filename, "");
}

TEST_F(DefinitionStoreTest, TheNumberEndsAtTheFirstCharacterThatCannotContinueIt) {
  platform_.memory.Put("/book/TBQDX7b.NORTH", FileOf("Seven"));
  platform_.memory.Put("/book/TBQDXx.NORTH", FileOf("None"));
  platform_.memory.Put("/book/TBQDX.NORTH", FileOf("Nothing"));
  platform_.memory.Put("/book/TBQDX9.SOUTH", FileOf("Of another book"));
  Load();
  EXPECT_THAT(Titles(), ElementsAre("Nothing", "Seven", "None"));
  EXPECT_EQ(store_.At(1).FileNum, 0);
  EXPECT_EQ(store_.At(2).FileNum, 7);
  EXPECT_EQ(store_.At(3).FileNum, 0);
}

TEST_F(DefinitionStoreTest, AnExtensionOfDigitsIsNoPartOfTheNumber) {
  BookShape shape;
  shape.file_extension = "5";
  const auto host = SmallBook(shape);
  platform_.memory.Put("/book/TBQDX3.5", FileOf("Three"));
  store_.Load(host->book);
  EXPECT_EQ(store_.At(1).FileNum, 3);
}

TEST_F(DefinitionStoreTest, AFileThatCannotBeReadShowsTheDefinitionBeforeIt) {
  for (int number = 1; number <= 3; ++number) Put(number, "Title " + std::to_string(number));
  platform_.files.FailPath(FileCall::kOpen, "TBQDX2", FailureNumber::kDeviceError);
  Load();
  EXPECT_THAT(Titles(), ElementsAre("Title 1", "Title 1", "Title 3"));
  EXPECT_EQ(store_.At(2).FileNum, 2);
  EXPECT_EQ(store_.At(2).Filename, NameOf(2));
  EXPECT_THAT(Boxes(), IsEmpty());
}

TEST_F(DefinitionStoreTest, LoadingAgainStartsAfresh) {
  LoadTitles({"One", "Two"});
  platform_.memory.Delete(NameOf(1));
  Load();
  EXPECT_EQ(store_.Count(), 1);
  EXPECT_THAT(Titles(), ElementsAre("Two"));
  EXPECT_EQ(store_.At(2).Desc, "");
}

TEST_F(DefinitionStoreTest, DiscardLeavesPositionZeroAndTheCounter) {
  LoadTitles({"One", "Two"});
  store_.Discard();
  EXPECT_FALSE(store_.IsLoaded());
  EXPECT_EQ(store_.Count(), 2);
  EXPECT_EQ(store_.At(0).Desc, "");
  EXPECT_THAT([&] { (void)store_.At(1); }, FailsWith(FailureNumber::kRange));
}

TEST_F(DefinitionStoreTest, AStoreOf999DefinitionsIsFull) {
  for (int number = 1; number <= 999; ++number) Put(number, std::to_string(number));
  Load();
  EXPECT_EQ(store_.Count(), 999);
  EXPECT_EQ(store_.At(999).Desc, "999");
  EXPECT_EQ(FirstAvailRec(), 0);
}

TEST_F(DefinitionStoreTest, ANumberThatFitsNoIntegerCountsAsNoneAndTheRestLoads) {
  Put(1, "One");
  Put(40'000, "Stray");
  platform_.memory.Put("/book/TBQDX1e9.NORTH", FileOf("Power"));
  Put(7, "Seven");
  Load();
  EXPECT_THAT(Titles(), ElementsAre("One", "Power", "Stray", "Seven"));
  EXPECT_EQ(store_.At(1).FileNum, 1);
  EXPECT_EQ(store_.At(2).FileNum, 0);
  EXPECT_EQ(store_.At(3).FileNum, 0);
  EXPECT_EQ(store_.At(4).FileNum, 7);
}

TEST_F(DefinitionStoreTest, AThousandthFileFailsTheLoad) {
  for (int number = 1; number <= 1000; ++number) Put(number, "One too many");
  EXPECT_THAT([&] { Load(); }, FailsWith(FailureNumber::kRange, "1000"));
}

// --- Conversion of older files ---------------------------------------------------------------------------------------

TEST_F(DefinitionStoreTest, OlderFilesAreConvertedByteForByteAndStay) {
  const std::string old = "\"DAILY SALES\",\"C:\\DAY\",1,0,0\r\n1,1\r\n3,4\r\n\"100\",\"200\"\r\n";
  platform_.memory.Put(OlderNameOf("12"), old);
  Load();
  EXPECT_EQ(Bytes(NameOf(12)), "\"Daily Sales\",\"C:\\DAY.QDX\",1,0,0\r\n1,1\r\n3,4\r\n\"100\",\"200\"\r\n");
  EXPECT_EQ(Bytes(OlderNameOf("12")), old);
  EXPECT_THAT(Titles(), ElementsAre("Daily Sales"));
  EXPECT_EQ(store_.At(1).FileNum, 12);
  EXPECT_EQ(store_.At(1).QdxFileName, "C:\\DAY.QDX");
  EXPECT_THAT(host_->record.calls, ElementsAre("EndProgress"));
  Select(1);
  EXPECT_EQ(store_.Current().AcctAll, 0);
}

TEST_F(DefinitionStoreTest, OneNewFileStopsTheConversionForGood) {
  platform_.memory.Put(OlderNameOf("1"), FileOf("Old"));
  Put(900, "New");
  Load();
  EXPECT_THAT(Titles(), ElementsAre("New"));
  EXPECT_FALSE(Has(NameOf(1)));
  EXPECT_THAT(host_->record.calls, IsEmpty());
}

TEST_F(DefinitionStoreTest, OlderFilesWithoutANumberAboveZeroAreLeftAlone) {
  for (const char* number : {"", "0", "x", "-4", "40000", "1e9"})
    platform_.memory.Put(OlderNameOf(number), FileOf("Old"));
  Load();
  EXPECT_EQ(store_.Count(), 0);
  EXPECT_THAT(Boxes(), IsEmpty());
}

TEST_F(DefinitionStoreTest, OfTwoOlderFilesOfOneNumberTheFirstIsConverted) {
  platform_.memory.Put(OlderNameOf("01"), FileOf("First"));
  platform_.memory.Put(OlderNameOf("1"), FileOf("Second"));
  Load();
  EXPECT_THAT(Titles(), ElementsAre("First"));
}

TEST_F(DefinitionStoreTest, AnOlderFileThatCannotBeOpenedIsTold) {
  platform_.memory.Put(OlderNameOf("1"), FileOf("One"));
  platform_.memory.Put(OlderNameOf("2"), FileOf("Two"));
  platform_.files.FailPath(FileCall::kOpen, "KVQDX1", FailureNumber::kDeviceError);
  Load();
  EXPECT_THAT(platform_.boxes.Shown(), ElementsAre(ShownBox{"Error Opening file: " + OlderNameOf("1"),
                                                            kExclamationIcon | kOkOnly, "Tallybook", kOk}));
  EXPECT_THAT(Titles(), ElementsAre("Two"));
  EXPECT_EQ(platform_.memory.OpenHandles(), 0);
}

TEST_F(DefinitionStoreTest, ANewFileThatCannotBeCreatedIsTold) {
  platform_.memory.Put(OlderNameOf("1"), FileOf("One"));
  platform_.files.FailPath(FileCall::kOpen, "TBQDX1", FailureNumber::kDeviceError);
  Load();
  EXPECT_THAT(platform_.boxes.Shown(),
              ElementsAre(ShownBox{"Error Creating file: " + NameOf(1), kExclamationIcon | kOkOnly, "Tallybook", kOk}));
  EXPECT_EQ(store_.Count(), 0);
  EXPECT_EQ(platform_.memory.OpenHandles(), 0);
}

// --- Selecting -------------------------------------------------------------------------------------------------------

TEST_F(DefinitionStoreTest, SelectReadsTheFileInFullAndRefreshesTheTitle) {
  LoadTitles({"One", "Two"});
  platform_.memory.Put(NameOf(2), "\"Changed\",\"OTHER.QDX\",1,0,0\r\n1,1\r\n3,4\r\n\"100\",\"200\"\r\n205\r\n");
  Select(2);
  EXPECT_EQ(store_.Selected(), 2);
  EXPECT_EQ(store_.At(2).Desc, "Changed");
  EXPECT_EQ(store_.At(2).QdxFileName, "DAY.QDX") << "only the title is refreshed";
  EXPECT_EQ(store_.Current().QdxFileName, "OTHER.QDX");
  EXPECT_EQ(store_.Current().fields(1).FieldTo, 4);
  EXPECT_EQ(store_.Current().accounts(1).to_code, "200");
  EXPECT_EQ(store_.Current().AcctAll, 205);
  EXPECT_EQ(store_.Current().accounts.Rows(), 9999);
}

TEST_F(DefinitionStoreTest, SelectOfAnEntryWithoutAFileClearsTheDefinition) {
  LoadTitles({"One"});
  Select(1);
  Select(0);
  EXPECT_EQ(store_.Current().Desc, "");
  EXPECT_EQ(store_.Current().Disp, kDispRename);
  EXPECT_EQ(store_.Current().accounts.Rows(), host_->book.MaxAccounts());
  EXPECT_EQ(store_.Current().fields.Rows(), host_->book.MaxFields());
}

TEST_F(DefinitionStoreTest, ClearBlanksEveryField) {
  LoadTitles({"One"});
  Select(1);
  store_.Current().AcctAll = 9;
  store_.Clear(host_->book);
  const DefinitionRecord& record = store_.Current();
  EXPECT_EQ(record.Desc, "");
  EXPECT_EQ(record.QdxFileName, "");
  EXPECT_EQ(record.Disp, 2);
  EXPECT_EQ(record.FldMatch, 0);
  EXPECT_EQ(record.AcctMatch, 0);
  EXPECT_EQ(record.NumFields, 0);
  EXPECT_EQ(record.NumAccounts, 0);
  EXPECT_EQ(record.AcctAll, 0);
}

TEST_F(DefinitionStoreTest, MinusOneMeansTheSelectedEntry) {
  LoadTitles({"One", "Two", "Three"});
  Select(2);
  EXPECT_EQ(store_.At(kSelected).Desc, "Two");
  store_.SetDesc(kSelected, "New");
  EXPECT_EQ(store_.At(2).Desc, "New");
}

TEST_F(DefinitionStoreTest, TheTitleOfTheSelectedEntryIsTheOpenDefinitionsToo) {
  LoadTitles({"One", "Two"});
  Select(2);
  store_.SetDesc(1, "Not open");
  EXPECT_EQ(store_.Current().Desc, "Two");
  store_.SetDesc(2, "Open");
  EXPECT_EQ(store_.Current().Desc, "Open");
}

TEST_F(DefinitionStoreTest, PositionsOutsideTheListAreRangeFailures) {
  LoadTitles({"One"});
  for (const Integer position : {Integer{-2}, Integer{1000}, Integer{32'767}, Integer{-32'768}}) {
    EXPECT_THAT([&] { (void)store_.At(position); }, FailsWith(FailureNumber::kRange)) << position;
    EXPECT_THAT([&] { store_.SetDesc(position, "x"); }, FailsWith(FailureNumber::kRange)) << position;
    EXPECT_THAT([&] { Select(position); }, FailsWith(FailureNumber::kRange)) << position;
    EXPECT_THAT([&] { (void)store_.Delete(position); }, FailsWith(FailureNumber::kRange)) << position;
    EXPECT_THAT([&] { (void)Update(position); }, FailsWith(FailureNumber::kRange)) << position;
  }
  EXPECT_EQ(store_.At(0).Filename, "");
  EXPECT_EQ(store_.At(999).Filename, "");
}

// --- Find ------------------------------------------------------------------------------------------------------------

TEST_F(DefinitionStoreTest, FindTakesAnyCaseAndOuterBlanksAndChangesItsArgument) {
  LoadTitles({"One", "Daily Sales", "daily sales"});
  Text title = "  daily SALES ";
  EXPECT_EQ(store_.Find(title), 2);
  EXPECT_EQ(title, "DAILY SALES");
  title = "Daily  Sales";
  EXPECT_EQ(store_.Find(title), 0);
  EXPECT_EQ(title, "DAILY  SALES");
}

TEST_F(DefinitionStoreTest, BlanksBehindAStoredTitlePreventTheMatch) {
  LoadTitles({"One"});
  store_.SetDesc(1, "One ");
  Text title = "One ";
  EXPECT_EQ(store_.Find(title), 0);
}

TEST_F(DefinitionStoreTest, AnEmptyTitleFindsTheFirstUnusedEntry) {
  LoadTitles({"One", "Two"});
  Text title = "   ";
  EXPECT_EQ(store_.Find(title), 3);
  EXPECT_EQ(title, "");
}

// --- Adding and updating ---------------------------------------------------------------------------------------------

TEST_F(DefinitionStoreTest, TheLowestFreeNumberGoesToThePlaceBehindTheLast) {
  Put(1, "One");
  Put(3, "Three");
  Load();
  EXPECT_EQ(FirstAvailRec(), 3);
  EXPECT_EQ(store_.At(3).FileNum, 2);
  EXPECT_EQ(store_.At(3).Filename, NameOf(2));
}

TEST_F(DefinitionStoreTest, ANumberIsTakenInWhateverCaseItsFileIsNamed) {
  platform_.memory.Put("/book/tbqdx1.north", FileOf("Small"));
  platform_.memory.Put("/book/TbQdx2.NORTH", FileOf("Mixed"));
  Load();
  EXPECT_EQ(FirstAvailRec(), 3);
  EXPECT_EQ(store_.At(3).FileNum, 3);
}

TEST_F(DefinitionStoreTest, AddWritesTheOpenDefinitionWithTheEntrysTitleAndSource) {
  LoadTitles({"One"});
  const Integer position = FirstAvailRec();
  store_.Clear(host_->book);
  store_.Current().Desc = "not this";
  store_.Current().AcctMatch = kAllToOne;
  store_.Current().AcctAll = 205;
  store_.SetDesc(position, "Daily");
  store_.At(position).QdxFileName = "/in/*.QDX";
  EXPECT_TRUE(Add(position));
  EXPECT_EQ(Bytes(NameOf(2)), "\"Daily\",\"/in/*.QDX\",2,0,-2\r\n0,0\r\n205\r\n");
  EXPECT_EQ(store_.Count(), 2);
  EXPECT_EQ(store_.Current().Desc, "Daily");
  EXPECT_EQ(store_.Current().QdxFileName, "/in/*.QDX");
}

TEST_F(DefinitionStoreTest, UpdateWritesAndDoesNotCount) {
  LoadTitles({"One", "Two"});
  Select(1);
  store_.SetDesc(1, "Uno");
  EXPECT_TRUE(Update(1));
  EXPECT_EQ(Bytes(NameOf(1)), FileOf("Uno"));
  EXPECT_EQ(store_.Count(), 2);
}

TEST_F(DefinitionStoreTest, MinusOneSetsTheTitleOfTheOpenDefinitionToo) {
  LoadTitles({"One", "Two"});
  Select(2);
  store_.SetDesc(kSelected, "Due");
  EXPECT_EQ(store_.At(2).Desc, "Due");
  EXPECT_EQ(store_.Current().Desc, "Due");
  store_.SetDesc(1, "Uno");
  EXPECT_EQ(store_.Current().Desc, "Due") << "another entry's title is its own";
}

TEST_F(DefinitionStoreTest, NothingIsWrittenBeforeAddOrUpdate) {
  LoadTitles({"One"});
  Select(1);
  store_.SetDesc(1, "Uno");
  store_.Current().Disp = kDispDelete;
  (void)FirstAvailRec();
  EXPECT_EQ(Bytes(NameOf(1)), FileOf("One"));
  EXPECT_FALSE(Has(NameOf(2)));
}

TEST_F(DefinitionStoreTest, AccountRowsTakeTheirCodesFromHeaderAndBook) {
  LoadTitles({"One"});
  Select(1);
  header_.AccountCodes(3) = "FROM";
  DefinitionRecord& record = store_.Current();
  record.NumAccounts = 2;
  record.accounts(1) = {.AccountFrom = 3, .AccountTo = 205, .from_code = "old", .to_code = "old"};
  record.accounts(2) = {.AccountFrom = 3, .AccountTo = 999, .from_code = "old", .to_code = "old"};
  EXPECT_TRUE(Update(1));
  EXPECT_EQ(Bytes(NameOf(1)), "\"One\",\"DAY.QDX\",3,-1,-1\r\n0,2\r\n\"FROM\",\"300\"\r\n\"FROM\",\"\"\r\n0\r\n");
}

TEST_F(DefinitionStoreTest, AnAccountRowWithoutAPlaceInTheHeaderIsAFailureAndCancelDeletesTheFile) {
  LoadTitles({"One"});
  Select(1);
  store_.Current().NumAccounts = 1;
  platform_.boxes.Answer({kCancel});
  EXPECT_FALSE(Update(1));
  EXPECT_THAT(platform_.boxes.Shown(), ElementsAre(ShownBox{"Error creating file: " + NameOf(1),
                                                            kQuestionIcon | kRetryCancel, "Tallybook", kCancel}));
  EXPECT_FALSE(Has(NameOf(1)));
  EXPECT_EQ(platform_.memory.OpenHandles(), 0);
}

TEST_F(DefinitionStoreTest, RetryStartsOverUntilTheFileStands) {
  LoadTitles({"One"});
  Select(1);
  const std::string before = Bytes(NameOf(1));
  // Each try writes twice: for itself, and once more when the file is closed.
  platform_.files.FailNth(FileCall::kWrite, 1, FailureNumber::kDiskFull, 4);
  platform_.boxes.Answer({kRetry, kRetry});
  EXPECT_TRUE(Update(1));
  EXPECT_EQ(Boxes().size(), 2U);
  EXPECT_EQ(Bytes(NameOf(1)), before);
}

TEST_F(DefinitionStoreTest, CancelOfAnAddCountsNothingAndLeavesNoFile) {
  LoadTitles({"One"});
  const Integer position = FirstAvailRec();
  store_.Clear(host_->book);
  platform_.files.FailNth(FileCall::kWrite, 1, FailureNumber::kDiskFull);
  platform_.boxes.Answer({kCancel});
  EXPECT_FALSE(Add(position));
  EXPECT_THAT(Boxes(), ElementsAre("Error creating file: " + NameOf(2)));
  EXPECT_EQ(store_.Count(), 1);
  EXPECT_FALSE(Has(NameOf(2)));
}

TEST_F(DefinitionStoreTest, EveryCallOfTheHostMayFailWhileADefinitionIsWritten) {
  int nth = 0;
  for (bool struck = true; struck;) {
    LoadTitles({"One"});
    Select(1);
    header_.AccountCodes(1) = "FROM";
    store_.Current().NumAccounts = 1;
    store_.Current().accounts(1) = {.AccountFrom = 1, .AccountTo = 101, .from_code = "", .to_code = ""};
    host_->record.FailOn(kAnyOperation, ++nth, Failure(FailureNumber::kDeviceError, "It has failed"));
    platform_.boxes.Answer({kRetry});
    EXPECT_TRUE(Update(1)) << nth;
    struck = host_->record.AllFaultsStruck();
    EXPECT_EQ(platform_.boxes.AnswersLeft(), struck ? 0U : 1U) << nth;
    EXPECT_EQ(Bytes(NameOf(1)), "\"One\",\"DAY.QDX\",3,-1,-1\r\n0,1\r\n\"FROM\",\"100\"\r\n0\r\n") << nth;
  }
  EXPECT_GT(nth, 3);
}

TEST_F(DefinitionStoreTest, TheReasonWhyADefinitionCannotBeWrittenIsLogged) {
  LoadTitles({"One"});
  Select(1);
  store_.SetDesc(1, "\xE6\x97\xA5");  // no character of the code page
  platform_.boxes.Answer({kCancel, kCancel});
  EXPECT_FALSE(Update(1));
  host_->record.FailOn("NewAccountRecord", 1, Failure(FailureNumber::kDeviceError, "It has failed", "Engine"));
  EXPECT_FALSE(Add(1));
  EXPECT_THAT(host_->app.log.errors, ElementsAre(MemoryLog::Error{"Tallybook - CDataExchange:Update", 10, -1},
                                                 MemoryLog::Error{"Engine - CDataExchange:Add", 10, -1}));
  EXPECT_THAT(host_->app.log.handled, ElementsAre(::testing::HasSubstr("\xE6\x97\xA5"), "It has failed"));
  EXPECT_EQ(store_.Count(), 1);
}

TEST_F(DefinitionStoreTest, AddAtPositionZeroHasNoPathToWriteTo) {
  LoadTitles({"One"});
  store_.Clear(host_->book);
  platform_.boxes.Answer({kCancel});
  EXPECT_FALSE(Add(0));
  EXPECT_THAT(Boxes(), ElementsAre("Error creating file: "));
  EXPECT_EQ(store_.Count(), 1);
}

// --- Deleting --------------------------------------------------------------------------------------------------------

TEST_F(DefinitionStoreTest, DeleteLeavesAHole) {
  LoadTitles({"One", "Two", "Three"});
  EXPECT_TRUE(store_.Delete(2));
  EXPECT_FALSE(Has(NameOf(2)));
  EXPECT_EQ(store_.Count(), 2);
  EXPECT_EQ(store_.At(2).Desc, "");
  EXPECT_EQ(store_.At(2).Filename, "");
  EXPECT_EQ(store_.At(2).FileNum, 0);
  EXPECT_EQ(store_.At(2).QdxFileName, "DAY.QDX");
  EXPECT_EQ(store_.At(3).Desc, "Three");
}

TEST_F(DefinitionStoreTest, BehindADeletionTheFirstAvailableEntryMayBeOneInUse) {
  LoadTitles({"One", "Two", "Three"});
  EXPECT_TRUE(store_.Delete(2));
  EXPECT_EQ(FirstAvailRec(), 3);
  EXPECT_EQ(store_.At(3).FileNum, 2);
  EXPECT_EQ(store_.At(3).Desc, "Three");
}

TEST_F(DefinitionStoreTest, AFileThatCannotBeDeletedLeavesTheListAsItWas) {
  LoadTitles({"One", "Two"});
  platform_.files.FailPath(FileCall::kDelete, "TBQDX1", FailureNumber::kPermissionDenied);
  EXPECT_FALSE(store_.Delete(1));
  EXPECT_EQ(store_.Count(), 2);
  EXPECT_EQ(store_.At(1).Desc, "One");
  EXPECT_EQ(store_.At(1).Filename, NameOf(1));
  EXPECT_EQ(store_.At(1).FileNum, 1);
}

TEST_F(DefinitionStoreTest, AFileThatIsGoneAlreadyCountsAsDeleted) {
  LoadTitles({"One", "Two"});
  platform_.memory.Delete(NameOf(1));
  EXPECT_TRUE(store_.Delete(1));
  EXPECT_EQ(store_.Count(), 1);
}

}  // namespace
}  // namespace tallybook::testing
