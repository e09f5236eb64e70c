// What imports say should stand, beside a map of the same figures.
#include <gmock/gmock.h>
#include <limits>
#include <map>
#include <rapidcheck.h>
#include <tuple>

#include "base/Dates.h"
#include "tallybook/preview/ExpectedMasterfile.h"
#include "tests/support/FailsWith.h"
#include "tests/support/MemoryHost.h"
#include "tests/support/ScriptedPlatform.h"

namespace tallybook::preview {
namespace {

using ::testing::ElementsAre;
using testing::FailsWith;

constexpr std::size_t kSmallCache = 300;
const Date kNewYear = DateFromParts(2003, 1, 1);

// Knows the figures before of one field alone.
class KnownField : public FigureBaseline {
 public:
  KnownField(Integer field, Double before) : field_(field), before_(before) {}
  [[nodiscard]] std::optional<std::size_t> PlaceOf(Integer field) const override {
    return field == field_ ? std::optional<std::size_t>(0) : std::nullopt;
  }
  [[nodiscard]] const Double* Select(Long /*account*/, Date /*date*/) override { return &before_; }

 private:
  Integer field_;
  Double before_;
};

std::vector<ExpectedFigure> FiguresOf(const ExpectedRecord& record) {
  std::vector<ExpectedFigure> figures;
  for (std::size_t place = 0; place < record.fields.size(); ++place) {
    if (!IsUnwritten(record.expected[place])) figures.push_back(record.Figure(place));
  }
  return figures;
}

class ExpectedMasterfileTest : public ::testing::Test {
 protected:
  ExpectedMasterfileTest() { expected_.BeginFile(nullptr); }

  void Add(Long account, Date date, Integer field, Double value) {
    ASSERT_TRUE(expected_.ReadRecord(account, date));
    expected_.SetFieldValue(field, expected_.FieldValue(field) + value);
    ASSERT_TRUE(expected_.WriteRecord());
  }
  std::vector<Text> Told() {
    std::vector<Text> told;
    expected_.Visit([&](const ExpectedRecord& record) {
      for (const ExpectedFigure& figure : FiguresOf(record)) {
        const Text expected = figure.expected ? std::to_string(static_cast<Long>(*figure.expected)) : "?";
        told.push_back(std::to_string(figure.account_number) + " " + DateText(figure.date) + " " +
                       std::to_string(figure.field_number) + ": " + expected + ", stands " +
                       std::to_string(static_cast<Long>(figure.stands)) + ", file " + std::to_string(figure.file));
      }
      return true;
    });
    return told;
  }

  testing::ScriptedPlatform platform_;
  std::unique_ptr<testing::MemoryHost> host_ = testing::SmallBook({});
  ExpectedMasterfile expected_{host_->book, host_->factory, host_->app, kSmallCache};
};

TEST_F(ExpectedMasterfileTest, BeginsAtZeroWhateverStandsBelow) {
  ASSERT_EQ(host_->book.Get(101, kNewYear, 2), 3);
  Add(101, kNewYear, 2, 5);
  Add(101, kNewYear, 2, 2);
  EXPECT_THAT(Told(), ElementsAre("101 2003-01-01 2: 7, stands 3, file 0"));
  EXPECT_EQ(host_->book.Get(101, kNewYear, 2), 3);
}

TEST_F(ExpectedMasterfileTest, TellsFiguresThatEndAsTheyStandToo) {
  Add(101, kNewYear, 2, 3);
  Add(205, kNewYear, 7, 0);
  EXPECT_THAT(Told(), ElementsAre("101 2003-01-01 2: 3, stands 3, file 0", "205 2003-01-01 7: 0, stands 0, file 0"));
}

TEST_F(ExpectedMasterfileTest, BeginsAtWhatWasKnownOfBefore) {
  KnownField before(2, 100);
  expected_.BeginFile(&before);
  Add(101, kNewYear, 2, 5);
  Add(101, kNewYear, 2, 1);
  Add(101, kNewYear, 1, 5);
  Add(101, kNewYear, 1, 5);
  EXPECT_THAT(Told(), ElementsAre("101 2003-01-01 1: ?, stands 12, file 1", "101 2003-01-01 2: 106, stands 3, file 1"));
}

TEST_F(ExpectedMasterfileTest, AZeroThatIsSetIsKnownWhateverWasBefore) {
  KnownField nothing(0, 0);
  expected_.BeginFile(&nothing);
  ASSERT_TRUE(expected_.ReadRecord(101, kNewYear));
  expected_.SetFieldValue(1, 0);
  ASSERT_TRUE(expected_.WriteRecord());
  Add(101, kNewYear, 1, 5);
  EXPECT_THAT(Told(), ElementsAre("101 2003-01-01 1: 5, stands 12, file 1"));
}

TEST_F(ExpectedMasterfileTest, ALaterFileBeginsAnewAndNamesItself) {
  Add(101, kNewYear, 1, 5);
  Add(101, kNewYear, 2, 6);
  expected_.BeginFile(nullptr);
  Add(101, kNewYear, 2, 7);
  expected_.BeginFile(nullptr);
  Add(102, kNewYear, 2, 8);
  EXPECT_THAT(Told(), ElementsAre("101 2003-01-01 1: 5, stands 12, file 0", "101 2003-01-01 2: 7, stands 3, file 1",
                                  "102 2003-01-01 2: 8, stands 0, file 2"));
}

TEST_F(ExpectedMasterfileTest, DropsWhatWasSetAndNotWritten) {
  ASSERT_TRUE(expected_.ReadRecord(101, kNewYear));
  expected_.SetFieldValue(2, 8);
  EXPECT_EQ(expected_.FieldValue(2), 8);
  ASSERT_TRUE(expected_.ReadRecord(101, kNewYear));
  EXPECT_EQ(expected_.FieldValue(2), 0);
  EXPECT_THAT(Told(), ElementsAre());
}

TEST_F(ExpectedMasterfileTest, RefusesWhatADatabaseRefuses) {
  EXPECT_FALSE(expected_.ReadRecord(999, kNewYear));
  EXPECT_FALSE(expected_.ReadRecord(101, DateFromParts(1999, 1, 1)));
  EXPECT_FALSE(expected_.WriteRecord());
  EXPECT_THAT([&] { (void)expected_.FieldValue(1); }, FailsWith(FailureNumber::kInvalidArgument));
  ASSERT_TRUE(expected_.ReadRecord(101, kNewYear));
  EXPECT_THAT([&] { (void)expected_.FieldValue(55); }, FailsWith(FailureNumber::kInvalidArgument));
  EXPECT_THAT([&] { expected_.SetFieldValue(55, 1); }, FailsWith(FailureNumber::kInvalidArgument));
  EXPECT_THAT([&] { expected_.SetFieldValue(1, std::numeric_limits<Double>::infinity()); },
              FailsWith(FailureNumber::kOverflow));
}

TEST_F(ExpectedMasterfileTest, SumsUpAsAMapDoesWhateverTheCacheHolds) {
  const auto ok = rc::check("sums of several files", [&] {
    using Key = std::tuple<Long, Date, Integer>;
    struct Sum {
      Double figure = 0;
      std::size_t file = 0;
    };
    std::map<Key, Sum> model;
    ExpectedMasterfile expected(host_->book, host_->factory, host_->app, kSmallCache);
    const auto files = *rc::gen::inRange<std::size_t>(1, 4);
    for (std::size_t file = 0; file < files; ++file) {
      expected.BeginFile(nullptr);
      const int figures = *rc::gen::inRange(0, 60);
      std::map<Key, Double> of_file;
      for (int count = 0; count < figures; ++count) {
        const Long account = *rc::gen::element<Long>(101, 102, 205);
        const Date date = kNewYear + *rc::gen::inRange(0, 70);
        const auto field = *rc::gen::element<Integer>(1, 2, 7);
        const Double value = *rc::gen::inRange(-3, 4) * 0.5;
        RC_ASSERT(expected.ReadRecord(account, date));
        RC_ASSERT(expected.FieldValue(field) == (of_file[{account, date, field}]));
        expected.SetFieldValue(field, expected.FieldValue(field) + value);
        RC_ASSERT(expected.WriteRecord());
        of_file[{account, date, field}] += value;
      }
      for (const auto& [key, figure] : of_file) model[key] = {figure, file};
    }
    std::size_t seen = 0;
    expected.Visit([&](const ExpectedRecord& record) {
      RC_ASSERT(!FiguresOf(record).empty());
      for (const ExpectedFigure& figure : FiguresOf(record)) {
        const auto found = model.find({figure.account_number, figure.date, figure.field_number});
        RC_ASSERT(found != model.end());
        RC_ASSERT(figure.expected == found->second.figure);
        RC_ASSERT(figure.file == found->second.file);
        ++seen;
      }
      return true;
    });
    RC_ASSERT(seen == model.size());
  });
  EXPECT_TRUE(ok);
}

}  // namespace
}  // namespace tallybook::preview
