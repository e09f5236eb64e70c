#include <functional>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "exchange/CDataExchange.h"
#include "import/DelimitedImport.h"
#include "support/Utility.h"
#include "tests/import/ExchangeFile.h"
#include "tests/support/FailsWith.h"
#include "tests/support/MemoryHost.h"
#include "tests/support/ScriptedPlatform.h"

namespace tallybook::testing {
namespace {

using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::Not;

const Date kDay = DateFromParts(2004, 2, 3);

class CDataExchangeTest : public ::testing::Test {
 protected:
  CDataExchangeTest() { ResetSharedHeader(); }
  ~CDataExchangeTest() override { ResetSharedHeader(); }

  // A definition that takes accounts and fields as they come, and keeps its file.
  void PutDefinition(int number, const Text& title, const Text& source) {
    platform_.memory.Put("/book/TBQDX" + std::to_string(number) + ".NORTH",
                         "\"" + title + "\",\"" + source + "\",3,-1,-1\r\n0,0\r\n0\r\n");
  }
  // A file with one figure of account "100" in field 1.
  void PutFile(const Text& name, Double value) {
    ExchangeFile file;
    file.first = file.last = kDay;
    file.accounts = {{"100", "Front of shop"}};
    file.fields = {{1, "Sales"}};
    file.blocks = {{1, {{kDay, {{1, value}}}}}};
    platform_.memory.Put("/in/" + name, file.Bytes());
  }
  void Bind() { exchange_.SetOwner(&book()); }
  // Binds, loads and selects one definition of one file.
  void PrepareImport() {
    PutDefinition(1, "Daily", "/in/*.QDX");
    PutFile("DAY.QDX", 2.5);
    ASSERT_TRUE(exchange_.OpenDefinitions(book(), 1));
    exchange_.SetFile(1);
  }
  [[nodiscard]] bool Import() { return exchange_.ImportQDXFile(host_->printer); }
  void SetWriteRollback(const Text& value) { host_->SetInstallationSetting("Files", "WriteRollback", value); }

  MemoryMasterfile& book() { return host_->book; }
  [[nodiscard]] Double Figure() const { return host_->book.Get(101, kDay, 1); }

  ScriptedPlatform platform_{FilesIn::kMemory};
  std::unique_ptr<MemoryHost> host_ = SmallBook();
  CDataExchange exchange_{host_->factory};
};

// --- The object itself -----------------------------------------------------------------------------------------------

TEST_F(CDataExchangeTest, StartsUnboundEmptyAndWithZeros) {
  EXPECT_EQ(exchange_.Owner(), nullptr);
  EXPECT_TRUE(exchange_.TransZeros());
  EXPECT_EQ(exchange_.ReportLength(), 0);
  EXPECT_EQ(exchange_.Math(), 0);
  EXPECT_EQ(exchange_.TrueFilename(), "");
  EXPECT_EQ(exchange_.File(), 0);
  EXPECT_EQ(exchange_.NumRecs(), 0);
  EXPECT_EQ(exchange_.NumActive(), 0);
  EXPECT_EQ(exchange_.MaxRecords(), 999);
  EXPECT_THAT(host_->record.calls, IsEmpty());
}

TEST_F(CDataExchangeTest, PlainPropertiesKeepWhatTheyAreGiven) {
  exchange_.SetTransZeros(false);
  EXPECT_FALSE(exchange_.TransZeros());
  exchange_.SetReportLength(7);
  EXPECT_EQ(exchange_.ReportLength(), 7);
  exchange_.SetMath(4);
  EXPECT_EQ(exchange_.Math(), 4);
}

TEST_F(CDataExchangeTest, TheReportInterfaceAnswersItsConstants) {
  EXPECT_EQ(exchange_.ReportClass(), "");
  EXPECT_FALSE(exchange_.UsesLastYear());
  EXPECT_EQ(exchange_.NumSequences(), 0);
  EXPECT_FALSE(exchange_.inPrintJob());
  EXPECT_EQ(exchange_.SubColumnType(), 0);
  EXPECT_EQ(exchange_.TransOrientation(), 0);
  EXPECT_FALSE(exchange_.CommandLinePrinting());
  EXPECT_EQ(exchange_.ReportPrinted(), 0);
  exchange_.RestoreOrigSequence();
  exchange_.SetOrientation(2);
  EXPECT_EQ(exchange_.TransOrientation(), 0);
  exchange_.SetSortColumn(5);
  EXPECT_EQ(exchange_.SortColumn(), 0);
  exchange_.SetTranspose(true);
  EXPECT_FALSE(exchange_.Transpose());
  exchange_.SetPrintMode(3);
  EXPECT_EQ(exchange_.PrintMode(), 9);
  exchange_.SetReportType(3);
  EXPECT_EQ(exchange_.ReportType(), 9);
  EXPECT_THAT(host_->record.calls, IsEmpty());
}

TEST_F(CDataExchangeTest, LineStyleIsTheBooksDataLevelWhateverIsSet) {
  for (const Integer level : {kDayLevel, kWeekLevel, kPeriodLevel}) {
    book().answers.data_level = level;
    Bind();
    exchange_.SetLineStyle(9);
    EXPECT_EQ(exchange_.LineStyle(), level);
  }
}

TEST_F(CDataExchangeTest, TheReportSwitchIsSetFromWithinOnly) {
  class Quiet : public CDataExchange {
   public:
    explicit Quiet(HostFactory& factory) : CDataExchange(factory) { SetCommandLinePrinting(true); }
  };
  EXPECT_TRUE(Quiet(host_->factory).CommandLinePrinting());
}

TEST_F(CDataExchangeTest, TheExportLibraryIsTakenUsedAndNeverGivenOut) {
  Bind();
  EXPECT_THAT([&] { (void)exchange_.DataExportObject(); }, FailsWith(FailureNumber::kObjectNotSet));
  const auto library = std::make_shared<MemoryExportObject>(host_->record);
  exchange_.SetDataExportObject(library);
  EXPECT_THAT([&] { (void)exchange_.DataExportObject(); }, FailsWith(FailureNumber::kObjectNotSet));
  const bool as_table = true;
  EXPECT_TRUE(exchange_.WriteQDXFile("/out/T.csv", kDay, kDay, as_table, 1.0F, "CSV"));
  EXPECT_EQ(library->Written()->size(), 1U);
  EXPECT_THAT(host_->factory.exports, IsEmpty());
}

TEST_F(CDataExchangeTest, ItsEndDropsTheExportLibrary) {
  const auto library = std::make_shared<MemoryExportObject>(host_->record);
  {
    CDataExchange exchange(host_->factory);
    exchange.SetDataExportObject(library);
    EXPECT_EQ(library.use_count(), 2);
  }
  EXPECT_EQ(library.use_count(), 1);
}

// --- The owner and its setting ---------------------------------------------------------------------------------------

TEST_F(CDataExchangeTest, BindingReadsTheInstallationsSettingOnce) {
  host_->record.Record("Ini.ReadValue", true);
  Bind();
  EXPECT_EQ(exchange_.Owner(), &book());
  EXPECT_THAT(host_->record.ArgumentsOf("Ini.ReadValue"),
              ElementsAre("/installation/tallybook.ini Files WriteRollback"));
}

TEST_F(CDataExchangeTest, BindingNothingUnbindsAndReadsNoSettings) {
  Bind();
  host_->record.Record("NewIniFile", true);
  exchange_.SetOwner(nullptr);
  EXPECT_EQ(exchange_.Owner(), nullptr);
  EXPECT_THAT(host_->record.calls, IsEmpty());
  EXPECT_THAT([&] { (void)exchange_.LineStyle(); }, FailsWith(FailureNumber::kObjectNotSet));
}

TEST_F(CDataExchangeTest, MembersThatUseTheDatabaseFailBeforeItIsBound) {
  Integer file_number = 0;
  const bool as_table = false;
  const std::vector<std::pair<const char*, std::function<void()>>> members = {
      {"LineStyle", [&] { (void)exchange_.LineStyle(); }},
      {"SetFile", [&] { exchange_.SetFile(0); }},
      {"InitFile", [&] { exchange_.InitFile(); }},
      {"Add", [&] { (void)exchange_.Add(0); }},
      {"Update", [&] { (void)exchange_.Update(0); }},
      {"FirstAvailRec", [&] { (void)exchange_.FirstAvailRec(); }},
      {"ReadQDXHeader", [&] { (void)exchange_.ReadQDXHeader("/in/DAY.QDX", file_number, true); }},
      {"QDXHeaderText", [&] { (void)exchange_.QDXHeaderText("/in/DAY.QDX"); }},
      {"QDXBackupName", [&] { (void)exchange_.QDXBackupName(); }},
      {"WriteQDXFile", [&] { (void)exchange_.WriteQDXFile("/out/X.QDX", kDay, kDay, as_table, 1.0F); }},
      {"MatchAccountCodes", [&] { exchange_.MatchAccountCodes(); }},
      {"ImportQDXFile", [&] { (void)Import(); }},
      {"ImportCSVFile", [&] { (void)exchange_.ImportCSVFile("/in/f.csv", true, {0}); }},
      {"ImportDelimitedFile", [&] { (void)exchange_.ImportDelimitedFile("/in/d.txt", eMath::mAdd, 1, 0, false); }}};
  for (const auto& [name, call] : members) EXPECT_THAT(call, FailsWith(FailureNumber::kObjectNotSet)) << name;
}

struct Setting {
  Text value;
  bool on;
};

class WriteRollbackTest : public CDataExchangeTest, public ::testing::WithParamInterface<Setting> {};

TEST_P(WriteRollbackTest, DecidesWhetherImportsKeepAJournal) {
  SetWriteRollback(GetParam().value);
  PrepareImport();
  EXPECT_TRUE(Import());
  EXPECT_EQ(Figure(), 2.5);
  EXPECT_EQ(book().Journal().size(), GetParam().on ? 1U : 0U);
}

INSTANTIATE_TEST_SUITE_P(TruthValues, WriteRollbackTest,
                         ::testing::Values(Setting{"-1", true}, Setting{"True", true}, Setting{"TRUE", true},
                                           Setting{"1", true}, Setting{"0", false}, Setting{"False", false}));

TEST_F(CDataExchangeTest, WithoutTheSettingAJournalIsKept) {
  PrepareImport();
  EXPECT_TRUE(Import());
  ASSERT_EQ(book().Journal().size(), 1U);
  EXPECT_TRUE(book().Journal()[0].closed);
}

TEST_F(CDataExchangeTest, ASettingThatIsNoTruthValueIsAnErrorOfTheBinding) {
  for (const char* value : {"", "maybe", "yes", "0x"}) {
    SetWriteRollback(value);
    exchange_.SetOwner(nullptr);
    EXPECT_THAT([&] { Bind(); }, FailsWith(FailureNumber::kTypeMismatch)) << value;
    EXPECT_EQ(exchange_.Owner(), &book()) << value;
  }
}

TEST_F(CDataExchangeTest, TheSettingIsReadAtEachBindingAndNeverInBetween) {
  SetWriteRollback("0");
  PrepareImport();
  SetWriteRollback("-1");
  EXPECT_TRUE(Import());
  EXPECT_THAT(book().Journal(), IsEmpty());
  Bind();
  EXPECT_TRUE(Import());
  EXPECT_EQ(book().Journal().size(), 1U);
}

// --- Text files ------------------------------------------------------------------------------------------------------

TEST_F(CDataExchangeTest, ImportsACommaSeparatedFileAsItIsTold) {
  Bind();
  platform_.memory.Put("/in/f.csv", "2,3,2004,1,1\n100,1,5\n200,2,6\n");
  book().Set(101, kDay, 1, 100);
  book().Set(101, kDay, 2, 50);
  const bool no_prompts = true;
  EXPECT_TRUE(exchange_.ImportCSVFile("/in/f.csv", no_prompts, {0, 0, 1}, eMath::mSubtract));
  EXPECT_EQ(Figure(), 95);
  EXPECT_EQ(book().Get(101, kDay, 2), 0) << "cleared";
  EXPECT_EQ(book().Get(102, kDay, 2), -6);
  EXPECT_THAT(platform_.boxes.Shown(), IsEmpty());
  EXPECT_EQ(exchange_.LastTextImport().records, 2);
  EXPECT_EQ(book().Journal().size(), 1U);

  platform_.boxes.Answer({kCancel});
  EXPECT_FALSE(exchange_.ImportCSVFile("/in/f.csv", !no_prompts, {0}));
  EXPECT_THAT(platform_.boxes.Texts(), ElementsAre("OK to Add data from the import file to the database, starting at "
                                                   "Tuesday, February 3, 2004"))
      << "the file's own math";
  EXPECT_EQ(exchange_.LastTextImport().records, 0);
}

TEST_F(CDataExchangeTest, ImportsADelimitedFileAsItIsTold) {
  Bind();
  platform_.memory.Put("/in/d.txt", "3.2.2004,100,7,5\r");
  platform_.boxes.Answer({kOk, kNo, kOk});
  EXPECT_FALSE(exchange_.ImportDelimitedFile("/in/d.txt", eMath::mReplace, kDayMonthYear, 1, false));
  EXPECT_EQ(platform_.boxes.Texts().size(), 2U) << "the confirmation, and the field that the system keeps";
  EXPECT_TRUE(exchange_.ImportDelimitedFile("/in/d.txt", eMath::mReplace, kDayMonthYear, 1, true));
  EXPECT_EQ(book().Get(101, kDay, 7), 5);
  EXPECT_EQ(exchange_.LastTextImport().records, 1);
  EXPECT_EQ(book().Journal().size(), 1U);

  platform_.memory.Put("/in/d.txt", "2004,2,3,100,1,9\r");
  platform_.boxes.Answer({kOk});
  EXPECT_TRUE(exchange_.ImportDelimitedFile("/in/d.txt", eMath::mAdd, kYearMonthDay, 0, false));
  EXPECT_EQ(Figure(), 9);

  EXPECT_FALSE(exchange_.ImportDelimitedFile("/in/none.txt", eMath::mAdd, kYearMonthDay, 0, false));
  EXPECT_EQ(exchange_.LastTextImport().records, 0);
}

TEST_F(CDataExchangeTest, TheSettingDecidesWhetherTextImportsKeepAJournal) {
  SetWriteRollback("0");
  Bind();
  platform_.memory.Put("/in/f.csv", "2,3,2004,1,1\n100,1,5\n");
  platform_.memory.Put("/in/d.txt", "2,3,2004,100,1,5\r");
  platform_.boxes.Answer({kOk});
  const bool no_prompts = true;
  EXPECT_TRUE(exchange_.ImportCSVFile("/in/f.csv", no_prompts, {0}));
  EXPECT_TRUE(exchange_.ImportDelimitedFile("/in/d.txt", eMath::mAdd, kMonthDayYear, 0, false));
  EXPECT_EQ(Figure(), 10);
  EXPECT_THAT(book().Journal(), IsEmpty());
}

// --- Definitions -----------------------------------------------------------------------------------------------------

TEST_F(CDataExchangeTest, OpenDefinitionsBindsAndLoads) {
  PutDefinition(1, "Daily", "/in/*.QDX");
  PutDefinition(4, "Weekly", "/in/W.QDX");
  EXPECT_TRUE(exchange_.OpenDefinitions(book(), 1));
  EXPECT_EQ(exchange_.Owner(), &book());
  EXPECT_EQ(exchange_.NumRecs(), 2);
  EXPECT_EQ(exchange_.NumActive(), 2);
  EXPECT_EQ(exchange_.Desc(2), "Weekly");
  EXPECT_EQ(exchange_.QdxFileName(2), "/in/W.QDX");
  EXPECT_EQ(exchange_.FileNum(2), 4);
  EXPECT_EQ(exchange_.Filename(2), "/book/TBQDX4.NORTH");
  EXPECT_EQ(exchange_.ReportType(), 9);
}

TEST_F(CDataExchangeTest, OpenDefinitionsTakesAFreshAccountRecordEachTime) {
  host_->record.Record("NewAccountRecord", true);
  for (int times = 1; times <= 2; ++times) {
    EXPECT_TRUE(exchange_.OpenDefinitions(book(), 1));
    EXPECT_EQ(host_->record.ArgumentsOf("NewAccountRecord").size(), static_cast<std::size_t>(times));
  }
}

TEST_F(CDataExchangeTest, CloseDefinitionsGivesZeroAndKeepsTheCounter) {
  PutDefinition(1, "Daily", "/in/*.QDX");
  EXPECT_TRUE(exchange_.OpenDefinitions(book(), 1));
  EXPECT_EQ(exchange_.CloseDefinitions(), 0);
  EXPECT_EQ(exchange_.NumRecs(), 1);
  EXPECT_THAT([&] { (void)exchange_.Desc(1); }, FailsWith(FailureNumber::kRange));
  EXPECT_EQ(exchange_.Desc(0), "");
}

TEST_F(CDataExchangeTest, EntriesAreReadAndSetByPositionOrAsTheSelectedOne) {
  PutDefinition(1, "Daily", "/in/*.QDX");
  EXPECT_TRUE(exchange_.OpenDefinitions(book(), 1));
  exchange_.SetFile(1);
  EXPECT_EQ(exchange_.File(), 1);
  EXPECT_EQ(exchange_.Desc(), "Daily");
  exchange_.SetDesc(1, "Nightly");
  exchange_.SetQdxFileName(1, "/in/N.QDX");
  exchange_.SetFilename(1, "/book/elsewhere");
  exchange_.SetFileNum(1, 77);
  EXPECT_EQ(exchange_.Desc(), "Nightly");
  EXPECT_EQ(exchange_.CurrentDefinition().Desc, "Nightly");
  EXPECT_EQ(exchange_.QdxFileName(), "/in/N.QDX");
  EXPECT_EQ(exchange_.Filename(), "/book/elsewhere");
  EXPECT_EQ(exchange_.FileNum(), 77);
  EXPECT_THAT([&] { exchange_.SetFileNum(1000, 1); }, FailsWith(FailureNumber::kRange));
  EXPECT_THAT([&] { exchange_.SetFilename(-2, ""); }, FailsWith(FailureNumber::kRange));
  EXPECT_THAT([&] { exchange_.SetQdxFileName(-2, ""); }, FailsWith(FailureNumber::kRange));
}

TEST_F(CDataExchangeTest, FieldsOfTheOpenDefinitionAreReadAndSet) {
  Bind();
  exchange_.InitFile();
  EXPECT_EQ(exchange_.Disp(), 2);
  exchange_.SetDisp(1);
  exchange_.SetAcctMatch(-2);
  exchange_.SetAcctAll(205);
  exchange_.SetFldMatch(-1);
  exchange_.SetNumAccounts(3);
  exchange_.SetNumFields(4);
  EXPECT_EQ(exchange_.Disp(), 1);
  EXPECT_EQ(exchange_.AcctMatch(), -2);
  EXPECT_EQ(exchange_.AcctAll(), 205);
  EXPECT_EQ(exchange_.FldMatch(), -1);
  EXPECT_EQ(exchange_.NumAccounts(), 3);
  EXPECT_EQ(exchange_.NumFields(), 4);
}

TEST_F(CDataExchangeTest, TableCellsHoldAsManyRowsAsTheBookAllows) {
  BookShape shape;
  shape.max_accounts = 300;
  shape.max_fields = 20;
  const auto host = SmallBook(shape);
  exchange_.SetOwner(&host->book);
  exchange_.InitFile();
  exchange_.SetAccountFrom(300, 5);
  exchange_.SetAccountTo(300, 101);
  exchange_.SetFieldFrom(20, 6);
  exchange_.SetFieldTo(20, 7);
  EXPECT_EQ(exchange_.AccountFrom(300), 5);
  EXPECT_EQ(exchange_.AccountTo(300), 101);
  EXPECT_EQ(exchange_.FieldFrom(20), 6);
  EXPECT_EQ(exchange_.FieldTo(20), 7);
  for (const Integer row : {Integer{0}, Integer{-1}, Integer{301}}) {
    EXPECT_THAT([&] { (void)exchange_.AccountFrom(row); }, FailsWith(FailureNumber::kRange)) << row;
    EXPECT_THAT([&] { exchange_.SetAccountFrom(row, 1); }, FailsWith(FailureNumber::kRange)) << row;
    EXPECT_THAT([&] { (void)exchange_.AccountTo(row); }, FailsWith(FailureNumber::kRange)) << row;
    EXPECT_THAT([&] { exchange_.SetAccountTo(row, 1); }, FailsWith(FailureNumber::kRange)) << row;
  }
  for (const Integer row : {Integer{0}, Integer{-1}, Integer{21}}) {
    EXPECT_THAT([&] { (void)exchange_.FieldFrom(row); }, FailsWith(FailureNumber::kRange)) << row;
    EXPECT_THAT([&] { exchange_.SetFieldFrom(row, 1); }, FailsWith(FailureNumber::kRange)) << row;
    EXPECT_THAT([&] { (void)exchange_.FieldTo(row); }, FailsWith(FailureNumber::kRange)) << row;
    EXPECT_THAT([&] { exchange_.SetFieldTo(row, 1); }, FailsWith(FailureNumber::kRange)) << row;
  }
}

TEST_F(CDataExchangeTest, AddGivesMinusOneOnSuccessAndZeroOnFailure) {
  EXPECT_TRUE(exchange_.OpenDefinitions(book(), 1));
  exchange_.InitFile();
  const Integer position = exchange_.FirstAvailRec();
  exchange_.SetDesc(position, "Daily");
  EXPECT_EQ(exchange_.Add(position), -1);
  EXPECT_EQ(exchange_.NumRecs(), 1);
  Text title = " daily ";
  EXPECT_EQ(exchange_.Find(title), 1);
  EXPECT_EQ(title, "DAILY");
  platform_.boxes.Answer({kCancel});
  EXPECT_EQ(exchange_.Add(0), 0);
  EXPECT_TRUE(exchange_.Update(position));
  EXPECT_TRUE(exchange_.Delete(position));
  EXPECT_EQ(exchange_.NumRecs(), 0);
}

TEST_F(CDataExchangeTest, ADefinitionIsWrittenWithTheCodesOfTheSharedHeader) {
  EXPECT_TRUE(exchange_.OpenDefinitions(book(), 1));
  exchange_.InitFile();
  const Integer position = exchange_.FirstAvailRec();
  exchange_.SetDesc(position, "Daily");
  exchange_.SetNumAccounts(1);
  exchange_.SetAccountFrom(1, 2);
  exchange_.SetAccountTo(1, 205);
  SharedHeader().AccountCodes(2) = "FROM";
  EXPECT_EQ(exchange_.Add(position), -1);
  EXPECT_EQ(platform_.memory.Bytes("/book/TBQDX1.NORTH"), "\"Daily\",\"\",2,0,0\r\n0,1\r\n\"FROM\",\"300\"\r\n0\r\n");
}

TEST_F(CDataExchangeTest, SaveIsTrueAndWritesNothing) {
  PutDefinition(1, "Daily", "/in/*.QDX");
  EXPECT_TRUE(exchange_.OpenDefinitions(book(), 1));
  exchange_.SetFile(1);
  const std::string before = platform_.memory.Bytes("/book/TBQDX1.NORTH");
  EXPECT_TRUE(exchange_.Save());
  exchange_.SetDesc(1, "Nightly");
  exchange_.SetDisp(1);
  EXPECT_TRUE(exchange_.Save());
  EXPECT_EQ(platform_.memory.Bytes("/book/TBQDX1.NORTH"), before);
  EXPECT_EQ(exchange_.Desc(1), "Nightly");
}

// --- Imports ---------------------------------------------------------------------------------------------------------

TEST_F(CDataExchangeTest, ImportsTheOpenDefinitionsFilesWithTheObjectsMode) {
  book().Set(101, kDay, 1, 10);
  PrepareImport();
  exchange_.SetMath(static_cast<Integer>(eMath::mSubtract));
  EXPECT_TRUE(Import());
  EXPECT_EQ(Figure(), 7.5);
  EXPECT_EQ(exchange_.TrueFilename(), "/in/DAY.QDX");
  EXPECT_EQ(platform_.memory.OpenHandles(), 0);
}

TEST_F(CDataExchangeTest, AFreshObjectAdds) {
  book().Set(101, kDay, 1, 10);
  PrepareImport();
  EXPECT_TRUE(Import());
  EXPECT_EQ(Figure(), 12.5);
}

TEST_F(CDataExchangeTest, TheImportComparesWithTheArchiveCopyOfItsDefinition) {
  PrepareImport();
  platform_.memory.Put("/book/TBQDX1.NORTH", "\"Daily\",\"/in/*.QDX\",3,0,-1\r\n1,0\r\n1,1\r\n0\r\n");
  exchange_.SetFile(1);
  ExchangeFile last;
  last.first = last.last = kDay;
  platform_.memory.Put(exchange_.QDXBackupName(), last.Bytes());
  platform_.boxes.Answer({kCancel});
  EXPECT_FALSE(Import());
  EXPECT_THAT(platform_.boxes.Texts(), ElementsAre("The following items have changed since the last import: \r\n\r\n"
                                                   "The number of Accountsand Datafields"));
  EXPECT_EQ(Figure(), 0);
}

TEST_F(CDataExchangeTest, AFailureWithinTheImportIsLoggedUnderItsName) {
  PrepareImport();
  host_->record.FailOn("WriteRecord", 1, Failure(FailureNumber::kDiskFull, "Full", "Disk"));
  platform_.boxes.Answer({kRetry});
  EXPECT_TRUE(Import());
  EXPECT_THAT(host_->app.log.errors, ElementsAre(MemoryLog::Error{"Disk - CDataExchange:ImportQDXFile", 215, -1}));
  EXPECT_EQ(Figure(), 2.5);
}

TEST_F(CDataExchangeTest, AFileThatCannotBeReadEndsTheImportWithAWordInTheLogOnly) {
  PrepareImport();
  platform_.files.FailNth(FileCall::kRead, 1, FailureNumber::kDeviceError);
  EXPECT_FALSE(Import());
  EXPECT_THAT(host_->app.log.errors,
              ElementsAre(MemoryLog::Error{"FaultyFileSystem - CDataExchange:MyReadQDXHeader", 0, -1}));
  EXPECT_THAT(platform_.boxes.Shown(), IsEmpty());
  EXPECT_THAT(host_->printer->Lines(), IsEmpty());
}

TEST_F(CDataExchangeTest, MatchAccountCodesWorksOnTheOpenDefinitionAndTheSharedHeader) {
  PutDefinition(1, "Daily", "/in/*.QDX");
  platform_.memory.Put("/book/TBQDX1.NORTH", "\"Daily\",\"\",2,0,0\r\n0,1\r\n\"X\",\"300\"\r\n0\r\n");
  EXPECT_TRUE(exchange_.OpenDefinitions(book(), 1));
  exchange_.SetFile(1);
  SharedHeader().NumAccounts = 2;
  SharedHeader().AccountCodes(2) = "X";
  exchange_.MatchAccountCodes();
  EXPECT_EQ(exchange_.AccountFrom(1), 2);
  EXPECT_EQ(exchange_.AccountTo(1), 205);
}

TEST_F(CDataExchangeTest, TheHeaderIsSharedByAllObjects) {
  PrepareImport();
  EXPECT_TRUE(Import());
  EXPECT_EQ(SharedHeader().AccountCodes(1), "100");
  ExchangeFile other;
  other.first = other.last = kDay;
  other.accounts = {{"XYZ", "Other"}};
  platform_.memory.Put("/in/OTHER", other.Bytes());
  CDataExchange second(host_->factory);
  second.SetOwner(&book());
  Integer file_number = 0;
  const bool backup_ok = false;
  EXPECT_TRUE(second.ReadQDXHeader("/in/OTHER", file_number, backup_ok));
  EXPECT_TRUE(CloseFileEx(file_number));
  EXPECT_EQ(SharedHeader().AccountCodes(1), "XYZ");
}

// --- Batches ---------------------------------------------------------------------------------------------------------

class CDataExchangeBatchTest : public CDataExchangeTest {
 protected:
  bool Run(const Text& import_type) { return exchange_.ImportQDXFileEX(0, book(), import_type); }
  // The report's lines behind its page head.
  std::vector<Text> Lines() {
    const std::vector<Text> lines = host_->factory.reports.back()->Lines();
    return {lines.begin() + 1, lines.end()};
  }
};

TEST_F(CDataExchangeBatchTest, AllImportsEveryDefinitionInTheOrderOfDescriptionsAsAReplacement) {
  book().Set(101, kDay, 1, 1000);
  PutDefinition(1, "Zebra", "/in/Z.QDX");
  PutDefinition(2, "Ant", "/in/A*.QDX");
  PutDefinition(3, "Mole", "/in/M.QDX");
  PutFile("Z.QDX", 4);
  PutFile("A1.QDX", 1);
  EXPECT_TRUE(Run("All"));
  const Text at = " at 2004-02-03 14:05:09";
  EXPECT_THAT(Lines(),
              ElementsAre("Importing QDX files for 3 Import Layouts", "", "Reading files for Ant",
                          "Number of matching Files: 1", "Begining Import of: /in/A1.QDX" + at,
                          "Completed Import of: /in/A1.QDX" + at, "", "", "Reading files for Mole",
                          "No matching files found.", "", "Reading files for Zebra", "Number of matching Files: 1",
                          "Begining Import of: /in/Z.QDX" + at, "Completed Import of: /in/Z.QDX" + at, ""));
  EXPECT_EQ(Figure(), 4) << "each replaces what was there";
  EXPECT_EQ(exchange_.Math(), 3);
  EXPECT_EQ(exchange_.File(), 1);
  EXPECT_EQ(exchange_.NumRecs(), 3);
  EXPECT_THAT([&] { (void)exchange_.Desc(1); }, FailsWith(FailureNumber::kRange)) << "the list is discarded";
}

TEST_F(CDataExchangeBatchTest, ANumberImportsThatDefinitionWithTheObjectsMode) {
  book().Set(101, kDay, 1, 1000);
  PutDefinition(1, "One", "/in/1.QDX");
  PutDefinition(2, "Two", "/in/2.QDX");
  PutFile("1.QDX", 1);
  PutFile("2.QDX", 2);
  EXPECT_TRUE(Run("2"));
  EXPECT_EQ(Figure(), 1002);
  EXPECT_EQ(exchange_.Math(), 0);
}

TEST_F(CDataExchangeBatchTest, WithoutDefinitionsAllIsAFailureLine) {
  EXPECT_FALSE(Run("ALL"));
  EXPECT_THAT(Lines(), ElementsAre("Importing QDX files for 0 Import Layouts", "Error: 972Tallybook"));
}

TEST_F(CDataExchangeBatchTest, ATextThatIsNeitherReadsAsDefinitionZeroWhichHasNoFiles) {
  PutDefinition(1, "One", "/in/1.QDX");
  PutFile("1.QDX", 1);
  EXPECT_TRUE(Run(" ALL"));
  EXPECT_THAT(Lines(), ElementsAre("No Files were imported.  None matched the filename: "));
  EXPECT_EQ(Figure(), 0);
}

TEST_F(CDataExchangeBatchTest, ANumberOutsideTheListIsAFailureLine) {
  EXPECT_FALSE(Run("1000"));
  EXPECT_THAT(Lines(), ElementsAre("Error: 970Tallybook"));
}

TEST_F(CDataExchangeBatchTest, AListThatWasLoadedBeforeStaysLoaded) {
  PutDefinition(1, "One", "/in/1.QDX");
  EXPECT_TRUE(exchange_.OpenDefinitions(book(), 1));
  EXPECT_TRUE(Run("ALL"));
  EXPECT_EQ(exchange_.Desc(1), "One");
}

TEST_F(CDataExchangeBatchTest, AFailingDefinitionLeavesWhatItLeftAndTheNextIsTried) {
  PutDefinition(1, "A", "/in/BAD.QDX");
  PutDefinition(2, "B", "/in/GOOD.QDX");
  platform_.memory.Put("/in/BAD.QDX", "no exchange file");
  PutFile("GOOD.QDX", 8);
  EXPECT_FALSE(Run("ALL"));
  EXPECT_EQ(Figure(), 8);
  EXPECT_THAT(platform_.boxes.Texts(),
              ElementsAre("File is NOT an QDX file.",
                          "At least one set of QDX files were not able to be Imported.  Please check the log of the "
                          "Import."));
  EXPECT_EQ(platform_.memory.OpenHandles(), 0) << "the next open has closed the refused file";
}

}  // namespace
}  // namespace tallybook::testing
