#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "base/Dates.h"
#include "tallybook/cli/Arguments.h"
#include "tallybook/cli/ConsoleMessageBoxes.h"

namespace tallybook::cli {
namespace {

using ::testing::ElementsAre;

// One argument of each kind, bound to members of the test.
class ArgumentsTest : public ::testing::Test {
 protected:
  // Hands the newest argument a text.
  void Take(const Text& text) { command.arguments.back().take(text); }

  // What the newest argument finds wrong with a text.
  Text Complaint(const Text& text) {
    try {
      Take(text);
    } catch (const WrongUse& error) {
      return error.what();
    }
    return "";
  }

  CommandTable command;
};

TEST_F(ArgumentsTest, ReadsNumbersThatAreWhole) {
  Integer number = 7;
  AddNumber(command, "--number", number, "N", "");
  Take("-12");
  EXPECT_EQ(number, -12);
  EXPECT_EQ(Complaint("one"), "'one' is no whole number");
  EXPECT_EQ(Complaint("1.5"), "'1.5' is no whole number");
  EXPECT_EQ(Complaint(""), "'' is no whole number");
  EXPECT_EQ(Complaint("99999"), "99999 is too large a number");
  EXPECT_EQ(number, -12) << "a refused text changes nothing";
}

TEST_F(ArgumentsTest, LeavesAnOptionalNumberEmptyUntilItIsGiven) {
  std::optional<Long> number;
  AddNumber(command, "ID", number, "", "");
  EXPECT_FALSE(number);
  Take("99999");
  EXPECT_EQ(number, 99999);
}

TEST_F(ArgumentsTest, GathersWhatMayBeGivenAgain) {
  std::vector<Integer> numbers;
  std::vector<Text> texts;
  AddNumber(command, "--field", numbers, "N", "");
  EXPECT_TRUE(command.arguments.back().repeatable);
  Take("1");
  Take("2");
  AddText(command, "--account", texts, "CODE", "");
  EXPECT_TRUE(command.arguments.back().repeatable);
  Take("a");
  Take("b");
  EXPECT_THAT(numbers, ElementsAre(1, 2));
  EXPECT_THAT(texts, ElementsAre("a", "b"));
}

TEST_F(ArgumentsTest, ReadsDatesAndAmounts) {
  Date date = kNoDate;
  Double amount = 0;
  AddDate(command, "--from", date, "");
  Take("2004-02-03");
  EXPECT_EQ(DateText(date), "2004-02-03");
  EXPECT_EQ(Complaint("2003-02-30"), "'2003-02-30' is no date; wanted is one like 2004-02-03");
  AddAmount(command, "VALUE", amount, "");
  Take("-.5");
  EXPECT_EQ(amount, -0.5);
  for (const char* text : {"twelve", "inf", "nan", "1e999", "1,5", ""}) {
    EXPECT_EQ(Complaint(text), "'" + Text(text) + "' is no amount; wanted is a number like 12.5");
  }
}

TEST_F(ArgumentsTest, ReadsAWordInAnyCase) {
  const Choices<Integer> choices = {{"table", 1}, {"json", 2}};
  Integer form = 0;
  AddChoice(command, "--format", form, choices, "");
  EXPECT_THAT(command.arguments.back().words, ElementsAre("table", "json"));
  Take("JSON");
  EXPECT_EQ(form, 2);
  EXPECT_EQ(Complaint("tabel"), "'tabel' is none of table, json; did you mean 'table'?");
  EXPECT_EQ(Complaint("xyzzy"), "'xyzzy' is none of table, json");
}

TEST_F(ArgumentsTest, ReadsAnswersAsTheirWords) {
  AskOptions options;
  AddAsking(command, options);
  const Argument* answer = OptionNamed(command, "--answer");
  ASSERT_NE(answer, nullptr);
  answer->take("YES");
  answer->take("retry");
  EXPECT_THAT(options.answers, ElementsAre("yes", "retry"));
}

TEST_F(ArgumentsTest, FindsAnOptionByEitherName) {
  bool yes = false;
  Text book;
  AddBook(command, book);
  AddFlag(command, "--yes", yes, "").Short("-y");
  ASSERT_NE(OptionNamed(command, "-y"), nullptr);
  EXPECT_EQ(OptionNamed(command, "-y"), OptionNamed(command, "--yes"));
  EXPECT_EQ(OptionNamed(command, "BOOK"), nullptr);
  EXPECT_EQ(OptionNamed(command, ""), nullptr) << "not one without a short name";
}

}  // namespace
}  // namespace tallybook::cli
