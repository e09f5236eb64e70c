#include <cmath>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <rapidcheck/gtest.h>

#include "base/Failure.h"
#include "base/Narrow.h"
#include "support/EncodedText.h"
#include "support/FileStream.h"
#include "tallybook/inspect/BookTables.h"
#include "tallybook/inspect/Troubles.h"
#include "tests/import/TextImportSetup.h"

namespace tallybook::inspect {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

Text ReasonOf(const std::optional<Trouble>& trouble) {
  return trouble ? trouble->reason : "";
}

TEST(TroublesTest, ANumberInGroupsOrWithACommaIsKnownForWhatItWasMeant) {
  EXPECT_THAT(MeantNumbers("1.234,50"), ElementsAre("1234.50"));
  EXPECT_THAT(MeantNumbers("1,234.50"), ElementsAre("1234.50"));
  EXPECT_THAT(MeantNumbers("1 234 567"), ElementsAre("1234567"));
  EXPECT_THAT(MeantNumbers("1'234.5"), ElementsAre("1234.5"));
  EXPECT_THAT(MeantNumbers("1.234.567"), ElementsAre("1234567"));
  EXPECT_THAT(MeantNumbers("12,5"), ElementsAre("12.5"));
  EXPECT_THAT(MeantNumbers(",5"), ElementsAre(".5"));
  EXPECT_THAT(MeantNumbers("1\xC2\xA0"
                           "234,5"),
              ElementsAre("1234.5"));
}

TEST(TroublesTest, OneMarkBeforeThreeDigitsMayMeanTwoNumbers) {
  EXPECT_THAT(MeantNumbers("1,234"), ElementsAre("1234", "1.234"));
  EXPECT_THAT(MeantNumbers("-12,345"), ElementsAre("-12345", "-12.345"));
}

TEST(TroublesTest, SignsAroundANumberAreTakenOffAndAMinusKept) {
  EXPECT_THAT(MeantNumbers("12 EUR"), ElementsAre("12"));
  EXPECT_THAT(MeantNumbers("\xE2\x82\xAC 12,50"), ElementsAre("12.50"));
  EXPECT_THAT(MeantNumbers("12.5-"), ElementsAre("-12.5"));
  EXPECT_THAT(MeantNumbers("(12.5)"), ElementsAre("-12.5"));
  EXPECT_THAT(MeantNumbers("15 %"), ElementsAre("15"));
}

TEST(TroublesTest, WhatIsNoNumberIsNotGuessedAt) {
  for (const char* text : {"", "n/a", "1/2", "12:30", "1.2.3,4", "1,23,4", "1a2"}) {
    EXPECT_THAT(MeantNumbers(text), IsEmpty()) << text;
  }
}

RC_GTEST_PROP(TroublesProperties, WhatIsProposedReadsAsAWholeNumberText, ()) {
  const auto text = *rc::gen::container<Text>(rc::gen::element('0', '1', '9', '.', ',', ' ', '-', '\'', 'e', '(', ')'));
  for (const Text& number : MeantNumbers(text)) RC_ASSERT(std::isfinite(WholeNumberText(number)));
}

TEST(TroublesTest, TextBehindALooseNumberIsTold) {
  EXPECT_EQ(ReasonOf(LooseNumberTrouble("12 EUR")), "is read as 12: what stands behind the number is passed over");
  EXPECT_EQ(ReasonOf(LooseNumberTrouble("n/a")), "is read as 0: it does not begin with a number");
  EXPECT_EQ(ReasonOf(LooseNumberTrouble("-")), "is read as 0: it does not begin with a number");
  for (const char* sound : {"", " ", "12", " -12.5 ", "1e3", "+.5", "7."}) {
    EXPECT_EQ(LooseNumberTrouble(sound), std::nullopt) << sound;
  }
}

// A text without trouble is a number as a whole; one with trouble is not.
RC_GTEST_PROP(TroublesProperties, ALooseNumberIsSoundWhereAllOfItIsRead, ()) {
  const auto text = *rc::gen::container<Text>(rc::gen::element('0', '7', '.', ',', ' ', '-', '+', 'e', 'x'));
  bool whole = true;
  try {
    static_cast<void>(WholeNumberText(text));
  } catch (const Failure&) {
    whole = false;
  }
  const bool blank = text.find_first_not_of(' ') == Text::npos;
  const auto trouble = LooseNumberTrouble(text);
  RC_ASSERT(!trouble == (whole || blank));
}

TEST(TroublesTest, ANumberBeyondADoubleEndsTheImport) {
  const auto trouble = LooseNumberTrouble("1e999");
  ASSERT_TRUE(trouble);
  EXPECT_EQ(trouble->effect, Effect::kStop);
  EXPECT_EQ(trouble->reason, "is too large for a number");
}

TEST(TroublesTest, AWholeNumberIsRoundedAndHasItsBounds) {
  EXPECT_EQ(LooseWholeTrouble("32767", -32768, 32767), std::nullopt);
  EXPECT_EQ(ReasonOf(LooseWholeTrouble("32768", -32768, 32767)), "is beyond -32768 to 32767");
  EXPECT_EQ(ReasonOf(LooseWholeTrouble("1e999", -32768, 32767)), "is beyond -32768 to 32767");
  EXPECT_EQ(ReasonOf(LooseWholeTrouble("2.5", -32768, 32767)), "is rounded to 2");
  EXPECT_EQ(ReasonOf(LooseWholeTrouble("3rd", -32768, 32767)),
            "is read as 3: what stands behind the number is passed over");
}

TEST(TroublesTest, AStrictNumberMustBeWholeAndSaysWhatWouldMendIt) {
  EXPECT_EQ(StrictNumberTrouble("12.5"), std::nullopt);
  const auto trouble = StrictNumberTrouble("12,5");
  ASSERT_TRUE(trouble);
  EXPECT_EQ(trouble->effect, Effect::kStop);
  EXPECT_EQ(trouble->reason, "\"12,5\" is not a number");
  EXPECT_EQ(trouble->help, "write 12.5");
  EXPECT_EQ(ReasonOf(StrictWholeTrouble("1.5")), "\"1.5\" is not a whole number");
  EXPECT_EQ(ReasonOf(StrictWholeTrouble("")), "\"\" is not a number");
}

class BookTroublesTest : public ::testing::Test {
 protected:
  std::optional<Trouble> CodeTroubleOf(const std::string& bytes, const std::string& file) {
    setup_.platform.memory.Put("/in", file);
    FileStream stream(setup_.platform.memory.Open("/in", Access::kRead, Sharing::kShared, Creation::kMustExist));
    EncodedText encoding(stream, TextEncoding::kDetect);
    const BookTables tables(setup_.book());
    return CodeTrouble(tables, encoding, true, bytes);
  }

  testing::TextImportSetup setup_;
};

TEST_F(BookTroublesTest, ADateMustBeOneOfTheBookAndOfTheCalendar) {
  EXPECT_EQ(DateTrouble(setup_.book(), 2004, 2, 29), std::nullopt);
  const auto beyond = DateTrouble(setup_.book(), 2007, 1, 1);
  ASSERT_TRUE(beyond);
  EXPECT_EQ(beyond->effect, Effect::kAudit);
  EXPECT_EQ(beyond->reason, "2007-01-01 is no date of the book, which has 2003-01-01 to 2005-12-31");
  const auto rolled = DateTrouble(setup_.book(), 2004, 2, 31);
  ASSERT_TRUE(rolled);
  EXPECT_EQ(rolled->effect, Effect::kSilent);
  EXPECT_EQ(rolled->reason, "2004-2-31 is in no calendar and is read as 2004-03-02");
  EXPECT_EQ(ReasonOf(DateTrouble(setup_.book(), 2000, 0, 0)),
            "2000-0-0, read as 1999-11-30, is no date of the book, which has 2003-01-01 to 2005-12-31");
}

TEST_F(BookTroublesTest, ACodeMustBeKnownAndFit) {
  EXPECT_EQ(CodeTroubleOf(" 100 ", ""), std::nullopt);
  EXPECT_EQ(ReasonOf(CodeTroubleOf("999", "")), "is no account code of the book");
  setup_.book().AddAccount(301, "NORTH YARD");
  const auto trouble = CodeTroubleOf("north yards", "");
  ASSERT_TRUE(trouble);
  EXPECT_EQ(trouble->effect, Effect::kStop);
  EXPECT_EQ(trouble->help, "write NORTH YARD");
}

// U+00C9 in UTF-8 is two characters of the code page.
TEST_F(BookTroublesTest, ACodeThatIsAnAccountInTheOtherEncodingSaysSo) {
  setup_.book().AddAccount(301, "CAF\xC3\x83\xE2\x80\xB0");
  const std::string bytes = "CAF\xC3\x89";
  const auto other = CodeTroubleOf(bytes, bytes);
  ASSERT_TRUE(other);
  EXPECT_EQ(other->effect, Effect::kAudit);
  EXPECT_EQ(other->reason,
            "is read as UTF-8, which is no account of the book; as Windows-1252 it is the account "
            "\"CAF\xC3\x83\xE2\x80\xB0\"");
  EXPECT_EQ(other->help, "have the file read as Windows-1252");
}

TEST_F(BookTroublesTest, ACodeThatIsAnAccountInBothEncodingsIsTold) {
  setup_.book().AddAccount(301, "CAF\xC3\x83\xE2\x80\xB0");
  setup_.book().AddAccount(302, "CAF\xC3\x89");
  const std::string bytes = "CAF\xC3\x89";
  const auto both = CodeTroubleOf(bytes, bytes);
  ASSERT_TRUE(both);
  EXPECT_EQ(both->effect, Effect::kSilent);
  EXPECT_EQ(both->help, "say which encoding the file has");
}

TEST_F(BookTroublesTest, AFileWithOneByteThatIsNoUtf8IsReadThroughTheCodePage) {
  setup_.book().AddAccount(302, "CAF\xC3\x89");
  const auto trouble = CodeTroubleOf("CAF\xC3\x89", "CAF\xC3\x89 and \xE9");
  ASSERT_TRUE(trouble);
  EXPECT_EQ(trouble->help, "have the file read as UTF-8");
}

TEST_F(BookTroublesTest, AFieldMustBeKnownAndLetIn) {
  const BookTables tables(setup_.book());
  EXPECT_EQ(FieldTrouble(tables, 1, false), std::nullopt);
  EXPECT_EQ(ReasonOf(FieldTrouble(tables, 99, false)), "is no field number of the book");
  EXPECT_EQ(ReasonOf(FieldTrouble(tables, 7, false)), "is a field that the system keeps by itself");
  EXPECT_EQ(FieldTrouble(tables, 7, true), std::nullopt);
}

}  // namespace
}  // namespace tallybook::inspect
