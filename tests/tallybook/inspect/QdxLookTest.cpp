#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <limits>
#include <rapidcheck/gtest.h>

#include "tallybook/inspect/QdxLook.h"
#include "tests/import/ImportSetup.h"
#include "tests/support/FailsWith.h"
#include "tests/tallybook/inspect/Findings.h"

namespace tallybook::inspect {
namespace {

using ::testing::AllOf;
using ::testing::Contains;
using ::testing::ElementsAre;
using testing::ExchangeFile;
using testing::February;
using ::testing::HasSubstr;
using ::testing::IsEmpty;

const Text kFile = "/in/DAY.QDX";

// "byte 9 record 1 account 100 2004-02-03 field 1 "2.5" silent: reason", without what a finding does not have.
Text WordsOf(const Finding& finding) {
  Text words;
  if (finding.offset) words += "byte " + std::to_string(*finding.offset) + " ";
  if (finding.record > 0) words += "record " + std::to_string(finding.record) + " ";
  if (finding.account) words += "account " + *finding.account + " ";
  if (finding.date) words += DateText(*finding.date) + " ";
  if (finding.field) words += "field " + std::to_string(*finding.field) + " ";
  if (!finding.text.empty()) words += "\"" + finding.text + "\" ";
  return words + WordOf(finding.effect) + ": " + finding.reason;
}

struct Looked {
  std::vector<Text> words;
  QdxLookTally tally;
};

Looked LookAt(testing::ImportSetup& setup) {
  testing::FindingList list;
  Looked looked;
  looked.tally = LookAtQdx(
      setup.host->book,
      {.file = kFile, .definition = setup.definition, .math = setup.math, .archive_copy = testing::kArchive}, list);
  for (const Finding& finding : list.findings) looked.words.push_back(WordsOf(finding));
  return looked;
}

// One figure of account "100" on 3 February; the other accounts have none.
ExchangeFile OneFigure(Double value = 2.5) {
  ExchangeFile file = testing::OneFigure(value);
  file.blocks.push_back({2, {}});
  file.blocks.push_back({3, {}});
  return file;
}

testing::BookShape BookOfLevel(Integer level) {
  testing::BookShape shape;
  shape.data_level = level;
  return shape;
}

class QdxLookTest : public ::testing::Test {
 protected:
  explicit QdxLookTest(Integer level = kDayLevel) : setup_(BookOfLevel(level)) {}

  const std::vector<Text>& Words(const std::string& bytes) {
    setup_.Put("DAY.QDX", bytes);
    const auto before = setup_.host->book.Figures();
    looked_ = LookAt(setup_);
    EXPECT_EQ(setup_.host->book.Figures(), before);
    EXPECT_EQ(setup_.platform.memory.OpenHandles(), 0);
    EXPECT_THAT(setup_.platform.boxes.Shown(), IsEmpty());
    return looked_.words;
  }
  const std::vector<Text>& Words(const ExchangeFile& file) { return Words(file.Bytes()); }
  [[nodiscard]] const QdxLookTally& Tally() const { return looked_.tally; }

  testing::ImportSetup setup_;
  Looked looked_;
};

class PeriodQdxLookTest : public QdxLookTest {
 protected:
  PeriodQdxLookTest() : QdxLookTest(kPeriodLevel) {}
};

class WeekQdxLookTest : public QdxLookTest {
 protected:
  WeekQdxLookTest() : QdxLookTest(kWeekLevel) {}
};

TEST_F(QdxLookTest, ASoundFileHasNoFindings) {
  EXPECT_THAT(Words(testing::ManyFigures()), IsEmpty());
  EXPECT_TRUE(Tally().begins_as_one);
  EXPECT_EQ(Tally().accounts, 3);
  EXPECT_EQ(Tally().records, 4);
  EXPECT_EQ(Tally().figures, 6);
  EXPECT_EQ(Tally().applied, 6);
  EXPECT_EQ(Tally().not_mapped, 0);
}

TEST_F(QdxLookTest, WhatBreaksTheFormatIsTold) {
  EXPECT_THAT(
      Words("no exchange file"),
      ElementsAre("byte 0 audit: the file begins with \"no exchan\"; an exchange file begins with \"Kelvo QDX\""));
  EXPECT_FALSE(Tally().begins_as_one);
  const std::string whole = OneFigure().Bytes();
  const auto end = std::to_string(whole.size() - 8);
  EXPECT_THAT(
      Words(whole.substr(0, whole.size() - 8)),
      ElementsAre("byte " + end + " record 1 silent: the file ends without the end mark, behind the last account"));
}

TEST_F(QdxLookTest, AFileThatEndsInItsHeaderIsTold) {
  EXPECT_THAT(Words(""), Contains(HasSubstr("audit: the file is no exchange file")));
  const std::string head = OneFigure().Head();
  EXPECT_THAT(Words(head.substr(0, 60)), Contains(HasSubstr("the file is cut short")));
}

TEST_F(QdxLookTest, RowsOfTheDefinitionThatFileOrBookLackAreAllTold) {
  setup_.MatchAccounts({{"100", "100"}, {"400", "100"}, {"500", "200"}, {"200", "900"}});
  setup_.MatchFields({{1, 1}, {8, 1}, {2, 99}});
  EXPECT_THAT(Words(OneFigure()),
              ElementsAre("account 400 audit: is in the definition and not in the file",
                          "account 500 audit: is in the definition and not in the file",
                          "account 200 audit: goes to \"900\", which is no account code of the book",
                          "field 8 audit: is in the definition and not in the file",
                          "field 2 audit: goes to field 99, which is no field number of the book",
                          HasSubstr("account 300 note: is sent nowhere by the definition; it has no figures")));
}

TEST_F(QdxLookTest, AFileThatTheBookLacksAnAccountOfIsRefusedOneForOne) {
  ExchangeFile file = OneFigure();
  file.accounts[1].code = "201";
  EXPECT_THAT(Words(file), ElementsAre("account 201 audit: goes to \"201\", which is no account code of the book"));
}

TEST_F(QdxLookTest, WhatTheDefinitionSendsNowhereIsToldWithItsFigures) {
  setup_.MatchAccounts({{"300", "100"}});
  setup_.MatchFields({{2, 7}});
  EXPECT_THAT(Words(testing::ManyFigures()),
              ElementsAre(HasSubstr("account 100 silent: is sent nowhere by the definition: 3 figures are left out"),
                          HasSubstr("account 200 note: is sent nowhere by the definition; it has no figures"),
                          HasSubstr("field 1 silent: is sent nowhere by the definition: 1 figure is left out")));
  EXPECT_EQ(Tally().applied, 2);
  EXPECT_EQ(Tally().not_mapped, 4);
  EXPECT_EQ(Tally().All(), 2) << "a note is no finding";
  EXPECT_EQ(Tally().Of(Effect::kNote), 1);
}

TEST_F(QdxLookTest, AccountsAndFieldsThatMeetAreTold) {
  setup_.MatchAccounts({{"100", "200"}, {"300", "200"}, {"200", "300"}});
  setup_.MatchFields({{1, 7}, {2, 7}});
  EXPECT_THAT(Words(testing::ManyFigures()),
              ElementsAre("account 300 silent: goes to the same account as \"100\": their figures are added up",
                          "field 2 silent: goes to the same field as field 1: their figures are added up"));
}

TEST_F(QdxLookTest, TwoRowsOfOneSourceAreTold) {
  setup_.MatchAccounts({{"100", "200"}, {"100", "300"}, {"200", "100"}, {"300", "200"}});
  setup_.MatchFields({{1, 1}, {1, 7}, {2, 2}});
  EXPECT_THAT(Words(testing::ManyFigures()),
              ElementsAre("account 100 silent: has two rows in the definition: only the one to \"300\" counts",
                          "field 1 silent: has two rows in the definition: only the one to field 7 counts"));
}

TEST_F(QdxLookTest, ACodeThatTheFileHasTwiceLosesItsSecondPlace) {
  ExchangeFile file = testing::ManyFigures();
  file.accounts[2].code = "100";
  EXPECT_THAT(Words(file),
              ElementsAre(HasSubstr("account 100 silent: stands in the file's table before, and only the first "
                                    "place is looked for: 3 figures are left out")));
}

TEST_F(QdxLookTest, AnAllToOneDefinitionJoinsAccountsAsItIsToldTo) {
  setup_.definition.AcctMatch = kAllToOne;
  setup_.definition.AcctAll = 102;
  EXPECT_THAT(Words(testing::ManyFigures()), IsEmpty());
  setup_.definition.AcctAll = 999;
  EXPECT_THAT(Words(testing::ManyFigures()), Contains(HasSubstr("audit: ")));
}

TEST_F(QdxLookTest, ARangeBeyondTheBookIsTold) {
  ExchangeFile file = OneFigure();
  file.last = DateFromParts(2006, 1, 1);
  EXPECT_THAT(Words(file), ElementsAre("byte 33 audit: the file's dates are 2004-02-01 to 2006-01-01, and the book has "
                                       "2003-01-01 to 2005-12-31"));
}

TEST_F(QdxLookTest, DatesThatNoCalendarHasAreToldAsTheyStand) {
  std::string bytes = OneFigure().Bytes();
  bytes.replace(33, 12, std::string(12, '\x76'));
  EXPECT_THAT(Words(bytes),
              Contains("byte 33 audit: the file's dates are 30326-30326-30326 to 30326-30326-30326, and the book "
                       "has 2003-01-01 to 2005-12-31"));
  bytes = OneFigure().Bytes();
  const std::size_t date = bytes.find(testing::FileBytes().I2(1).MonthDayYear(February(3)).Bytes());
  bytes.replace(date + 2, 6, testing::FileBytes().I2(1).I2(1).I2(32000).Bytes());
  EXPECT_THAT(Words(bytes), Contains(HasSubstr("record 1 account 100 stop: ")));
}

TEST_F(QdxLookTest, ADateThatTheBookHasNoRecordOfEndsTheImport) {
  ExchangeFile file = OneFigure();
  file.blocks[0].days.push_back({DateFromParts(2010, 1, 1), {{1, 5}}});
  EXPECT_THAT(
      Words(file),
      ElementsAre(HasSubstr("record 2 account 100 2010-01-01 silent: the date 2010-01-01 is outside the header's"),
                  HasSubstr("record 2 account 100 2010-01-01 stop: is no date that the book has a record of")));
  setup_.MatchAccounts({{"200", "200"}});
  EXPECT_EQ((Words(file), Tally().Of(Effect::kStop)), 0) << "of an account that goes nowhere it is passed over";
}

TEST_F(QdxLookTest, AFigureThatIsNoneEndsTheImport) {
  ExchangeFile file = OneFigure(std::numeric_limits<Double>::infinity());
  EXPECT_THAT(Words(file),
              ElementsAre(HasSubstr("account 100 2004-02-03 field 1 \"inf\" stop: the value of field index 1 is inf")));
  setup_.MatchFields({{2, 2}});
  EXPECT_EQ((Words(file), Tally().Of(Effect::kStop)), 0);
  setup_.MatchFields({{1, 1}});
  EXPECT_THAT(Words(OneFigure(1e308)), Contains(HasSubstr("silent: is so large that its sum")));
}

TEST_F(QdxLookTest, AFieldIndexBeyondEveryTableEndsTheImport) {
  ExchangeFile file = OneFigure();
  file.blocks[0].days[0].values.push_back({12000, 1});
  EXPECT_THAT(Words(file), ElementsAre(HasSubstr("stop: field index 12000 is outside 1 to 2")));
  file.blocks[0].days[0].values[1].field_position = 9;
  EXPECT_THAT(Words(file), ElementsAre(HasSubstr("silent: field index 9 is outside 1 to 2")));
}

TEST_F(QdxLookTest, TheSameFigureTwiceIsTold) {
  ExchangeFile file = OneFigure();
  file.blocks[0].days.push_back({February(3), {{1, 7}, {2, 1}}});
  EXPECT_THAT(Words(file),
              ElementsAre(HasSubstr("the date 2004-02-03 does not come behind 2004-02-03"),
                          AllOf(HasSubstr("field 1 \"7\" silent: "), HasSubstr("names this figure before"))));
  file.blocks.push_back({1, {}});
  EXPECT_THAT(Words(file), Contains(HasSubstr("account 100 silent: has a block of figures before")));
}

TEST_F(QdxLookTest, TablesThatHaveChangedSinceTheLastImportAreTold) {
  ExchangeFile last = OneFigure();
  last.accounts = {{"100", "Front of shop"}, {"200", "Cellar"}};
  setup_.platform.memory.Put(testing::kArchive, last.Bytes());
  EXPECT_THAT(
      Words(OneFigure()),
      ElementsAre(
          "audit: the file has 3 accounts, and the one that was imported last had 2",
          "audit: account 2 of the file is \"200\" (Back of shop), and in the one that was imported last it was "
          "\"200\" (Cellar)"));
  setup_.definition.AcctMatch = kAllToOne;
  setup_.definition.AcctAll = 102;
  EXPECT_THAT(Words(OneFigure()), IsEmpty()) << "nothing depends on them";
}

TEST_F(QdxLookTest, WhatBecomesOfTheFileIsTold) {
  setup_.definition.Disp = kDispDelete;
  EXPECT_THAT(Words(OneFigure()), ElementsAre("note: the file is deleted after the import"));
  setup_.definition.Disp = kDispRename;
  EXPECT_THAT(Words(OneFigure()), ElementsAre("note: the file is renamed to /in/DAY.XDQ after the import"));
  setup_.Put("DAY.XDQ", "older");
  EXPECT_THAT(Words(OneFigure()), Contains("silent: /in/DAY.XDQ is there already, and is deleted for it"));
}

TEST_F(QdxLookTest, WhereNothingIsReadFiguresAreNotLookedAt) {
  setup_.math = kZeroOnly;
  EXPECT_THAT(Words(OneFigure(std::numeric_limits<Double>::infinity())),
              ElementsAre(HasSubstr("silent: the value of field index 1 is inf"),
                          "note: no figure of the file is read; its range is set to 0"));
  EXPECT_EQ(Tally().applied, 0);
}

TEST_F(PeriodQdxLookTest, DaysOfAPeriodAreToldWithItAndPartsOfOne) {
  EXPECT_THAT(Words(testing::ManyFigures()),
              ElementsAre("2004-02-29 note: takes the figures of 3 dates, 2004-02-01 to 2004-02-03",
                          "2004-02-03 note: the file ends within the book's 2004-02-01 to 2004-02-29"));
  setup_.math = static_cast<Integer>(eMath::mReplace);
  EXPECT_THAT(
      Words(testing::ManyFigures()),
      Contains("2004-02-03 silent: the file ends within the book's 2004-02-01 to 2004-02-29, which is not set to 0 "
               "first: its figures are added to those that stand"));
  EXPECT_EQ(Tally().All(), 1);
}

TEST_F(WeekQdxLookTest, DaysOfAWeekAreToldWithIt) {
  EXPECT_THAT(Words(testing::ManyFigures()),
              Contains("2004-02-07 note: takes the figures of 3 dates, 2004-02-01 to 2004-02-03"));
}

// Nothing is said of the whole then, of which a part was seen.
TEST_F(QdxLookTest, ACancelledLookEndsWithWhatItHasSeen) {
  setup_.MatchAccounts({{"300", "100"}});
  Words(testing::ManyFigures());
  const long long records = Tally().records;
  ASSERT_GT(records, 1);
  for (long long record = 1; record <= records; ++record) {
    setup_.host->book.progress.CancelAtPoll(record);
    EXPECT_THAT(Words(testing::ManyFigures()), IsEmpty()) << "behind record " << record;
    EXPECT_TRUE(Tally().cancelled);
    EXPECT_EQ(Tally().records, record);
  }
  EXPECT_THAT(Words(testing::ManyFigures()), Not(IsEmpty()));
  EXPECT_FALSE(Tally().cancelled);
}

TEST_F(QdxLookTest, AFileThatCannotBeOpenedIsAFailure) {
  testing::FindingList list;
  EXPECT_THAT(([&] { LookAtQdx(setup_.host->book, {.file = "/in/none.QDX"}, list); }),
              testing::FailsWith(FailureNumber::kFileNotFound));
}

// --- Against the import
// ------------------------------------------------------------------------------------------------

template <typename Value>
std::vector<Value> Few(int most, rc::Gen<Value> value) {
  return *rc::gen::resize(most, rc::gen::container<std::vector<Value>>(rc::gen::resize(rc::kNominalSize, value)));
}

ExchangeFile SomeFile() {
  ExchangeFile file;
  file.first = February(*rc::gen::inRange(1, 10));
  file.last = file.first + *rc::gen::element(0, 3, 20, 20, 20, 900);
  for (const Text& code : Few(4, rc::gen::element<Text>("100", "200", "300", "300", "999")))
    file.accounts.push_back({code, "x"});
  for (const Integer number : Few(3, rc::gen::element<Integer>(1, 2, 7, 8))) file.fields.push_back({number, "y"});
  for (const Integer account : Few(5, rc::gen::element<Integer>(1, 1, 2, 3, 4, 9))) {
    auto& block = file.blocks.emplace_back(ExchangeFile::Block{account, {}});
    for (const int day : Few(4, rc::gen::element(1, 2, 3, 4, 9, 20, 29, 40))) {
      auto& made = block.days.emplace_back(ExchangeFile::Day{February(day), {}});
      for (const auto& [field, value] :
           Few(4, rc::gen::pair(rc::gen::element<Integer>(1, 1, 2, 2, 3, 4, 0),
                                rc::gen::element(1.5, -2.0, 0.0, std::numeric_limits<Double>::quiet_NaN())))) {
        made.values.push_back({field, value});
      }
    }
  }
  return file;
}

RC_GTEST_PROP(QdxLookProperties, TheLookSaysWhatTheImportThenDoes, ()) {
  testing::ImportSetup setup(BookOfLevel(*rc::gen::element(kDayLevel, kWeekLevel, kPeriodLevel)));
  setup.math = *rc::gen::element<Integer>(0, 1, 2, 3, 4);
  setup.definition.AcctMatch = *rc::gen::element(kManually, kOneForOne, kAllToOne);
  setup.definition.AcctAll = *rc::gen::element<Integer>(102, 102, 102, 999);
  if (setup.definition.AcctMatch == kManually) {
    setup.MatchAccounts(Few(3, rc::gen::pair(rc::gen::element<Text>("100", "200", "300", "300"),
                                             rc::gen::element<Text>("100", "200", "300", "300", "900"))));
  }
  if (*rc::gen::arbitrary<bool>()) {
    setup.MatchFields(
        Few(3, rc::gen::pair(rc::gen::element<Integer>(1, 2, 7), rc::gen::element<Integer>(1, 2, 7, 7, 99))));
  }
  std::string bytes = SomeFile().Bytes();
  if (*rc::gen::inRange(0, 4) == 0) bytes.resize(*rc::gen::inRange<std::size_t>(0, bytes.size()));
  setup.Put("DAY.QDX", bytes);
  const auto before = setup.host->book.Figures();

  const Looked looked = LookAt(setup);
  RC_ASSERT(setup.host->book.Figures() == before);
  for (const Text& words : looked.words) RC_LOG() << words << '\n';
  // A record that cannot be read would end this process with the import.
  const auto ends_program = [](const Text& words) { return words.find("at which the program stops") != Text::npos; };
  if (std::ranges::any_of(looked.words, ends_program)) return;

  setup.platform.boxes.Answer({kCancel, kCancel});
  const bool done = setup.Import();
  const QdxLookTally& tally = looked.tally;
  RC_ASSERT(done == (tally.Of(Effect::kAudit) + tally.Of(Effect::kStop) == 0));
  const QDXFileImport& file = setup.record.files.at(0);
  RC_ASSERT(file.begun == (tally.Of(Effect::kAudit) == 0));
  if (!file.begun) RC_ASSERT(setup.host->book.Figures() == before);
  if (!done) return;
  RC_ASSERT(file.applied == tally.applied);
  RC_ASSERT(file.not_mapped == tally.not_mapped);
  if (setup.math != kZeroOnly) RC_ASSERT(file.read == tally.figures);
}

}  // namespace
}  // namespace tallybook::inspect
