#include <cfenv>
#include <cmath>
#include <gmock/gmock.h>
#include <limits>
#include <rapidcheck.h>
#include <rapidcheck/gtest.h>

#include "base/Narrow.h"
#include "tests/support/FailsWith.h"

namespace tallybook::testing {
namespace {

TEST(NarrowTest, WholeNumbersKeepTheirValueUpToTheLimits) {
  EXPECT_EQ(ToInteger(32767), 32767);
  EXPECT_EQ(ToInteger(-32768), -32768);
  EXPECT_EQ(ToLong(2147483647), 2147483647);
  EXPECT_EQ(ToLong(-2147483648LL), -2147483647 - 1);
}

TEST(NarrowTest, WholeNumbersBeyondTheLimitsOverflowAndAreNamed) {
  EXPECT_THAT([] { (void)ToInteger(32768); }, FailsWith(FailureNumber::kOverflow, "32768"));
  EXPECT_THAT([] { (void)ToInteger(-32769); }, FailsWith(FailureNumber::kOverflow, "-32769"));
  EXPECT_THAT([] { (void)ToLong(2147483648LL); }, FailsWith(FailureNumber::kOverflow, "2147483648"));
  EXPECT_THAT([] { (void)ToLong(-2147483649LL); }, FailsWith(FailureNumber::kOverflow, "-2147483649"));
}

TEST(NarrowTest, TiesRoundToTheEvenNeighbour) {
  EXPECT_EQ(RoundToInteger(0.5), 0);
  EXPECT_EQ(RoundToInteger(1.5), 2);
  EXPECT_EQ(RoundToInteger(2.5), 2);
  EXPECT_EQ(RoundToInteger(-0.5), 0);
  EXPECT_EQ(RoundToInteger(-1.5), -2);
  EXPECT_EQ(RoundToInteger(-2.5), -2);
  EXPECT_EQ(RoundToLong(100000.5), 100000);
  EXPECT_EQ(RoundToLong(100001.5), 100002);
}

TEST(NarrowTest, OtherFractionsRoundToTheNearest) {
  EXPECT_EQ(RoundToLong(2.4999), 2);
  EXPECT_EQ(RoundToLong(2.5001), 3);
  EXPECT_EQ(RoundToLong(-2.4999), -2);
  EXPECT_EQ(RoundToLong(-2.5001), -3);
}

TEST(NarrowTest, RoundingDoesNotAskTheProcessorsRoundingMode) {
  const int before = std::fegetround();
  std::fesetround(FE_UPWARD);
  const Long rounded = RoundToLong(2.5);
  std::fesetround(before);
  EXPECT_EQ(rounded, 2);
}

TEST(NarrowTest, FractionsOverflowOnlyWhereTheRoundedValueDoesNotFit) {
  EXPECT_EQ(RoundToInteger(32767.4), 32767);
  EXPECT_EQ(RoundToInteger(-32768.5), -32768);
  EXPECT_THAT([] { (void)RoundToInteger(32767.5); }, FailsWith(FailureNumber::kOverflow, "32767.5"));
  EXPECT_THAT([] { (void)RoundToInteger(-32768.6); }, FailsWith(FailureNumber::kOverflow));
  EXPECT_THAT([] { (void)RoundToLong(2147483647.5); }, FailsWith(FailureNumber::kOverflow));
}

TEST(NarrowTest, NotANumberAndInfinityOverflow) {
  EXPECT_THAT([] { (void)RoundToLong(std::nan("")); }, FailsWith(FailureNumber::kOverflow));
  EXPECT_THAT([] { (void)RoundToInteger(std::numeric_limits<Double>::infinity()); },
              FailsWith(FailureNumber::kOverflow));
}

TEST(NarrowTest, SumOfThreeOverflowsOnlyInTheEnd) {
  EXPECT_EQ(SumOf(1, 2, 3), 6);
  EXPECT_EQ(SumOf(32767, 1, -1), 32767);
  EXPECT_THAT([] { (void)SumOf(32767, 1, 0); }, FailsWith(FailureNumber::kOverflow, "32768"));
}

TEST(NarrowTest, LeadingNumberReadsAsFarAsItIsANumber) {
  EXPECT_EQ(LeadingNumber("12.5 boxes"), 12.5);
  EXPECT_EQ(LeadingNumber("   -7"), -7);
  EXPECT_EQ(LeadingNumber("+3x"), 3);
  EXPECT_EQ(LeadingNumber("1,234"), 1);
  EXPECT_EQ(LeadingNumber("1.2.3"), 1.2);
  EXPECT_EQ(LeadingNumber(".5"), 0.5);
  EXPECT_EQ(LeadingNumber("5."), 5);
}

TEST(NarrowTest, LeadingLongIsTheLeadingNumberRounded) {
  for (const char* text : {"", "0", "7", "007", "123456789", "1234567890", "2147483647", "-2147483648", " 12", "12 ",
                           "+5", "-5", "2.5", "3.5", "1e3", "12 boxes", "boxes"}) {
    EXPECT_EQ(LeadingLong(text), RoundToLong(LeadingNumber(text))) << text;
  }
  EXPECT_EQ(LeadingLong("999999999"), 999'999'999);
  EXPECT_THAT([] { (void)LeadingLong("2147483648"); }, FailsWith(FailureNumber::kOverflow));
  EXPECT_THAT([] { (void)LeadingLong("9999999999"); }, FailsWith(FailureNumber::kOverflow));
}

TEST(NarrowTest, LeadingNumberTakesExponentsWithESmallOrLarge) {
  EXPECT_EQ(LeadingNumber("1e3"), 1000);
  EXPECT_EQ(LeadingNumber("1E+3"), 1000);
  EXPECT_EQ(LeadingNumber("1e-2"), 0.01);
  EXPECT_EQ(LeadingNumber("2.5E2kg"), 250);
  EXPECT_EQ(LeadingNumber("1d-2"), 1) << "no other letter is one of an exponent";
  EXPECT_EQ(LeadingNumber("7e"), 7) << "an exponent without digits is none";
  EXPECT_EQ(LeadingNumber("7e+"), 7);
}

TEST(NarrowTest, LeadingNumberIsZeroWhereThereIsNone) {
  for (const char* text : {"", " ", "abc", "-", "+", ".", "-.", "e5", "--1", "inf", "nan", "x1"})
    EXPECT_EQ(LeadingNumber(text), 0) << '"' << text << '"';
}

TEST(NarrowTest, LeadingNumberPassesOverBlanksTabsAndLineEndsInFront) {
  EXPECT_EQ(LeadingNumber(" \t\r\n 12"), 12);
}

TEST(NarrowTest, ANumberAsAWholeAllowsBlanksAroundItAndNothingElse) {
  EXPECT_EQ(WholeNumberText(" -12.5e1 "), -125);
  EXPECT_EQ(WholeNumberText("+.5"), 0.5);
  for (const char* text : {"", " ", "12x", "1 2", "\t1", "1\n", "0x10", "inf", "nan", "1,5", "--1"})
    EXPECT_THAT([&] { (void)WholeNumberText(text); }, FailsWith(FailureNumber::kTypeMismatch)) << text;
  EXPECT_THAT([] { (void)WholeNumberText("1e999"); }, FailsWith(FailureNumber::kOverflow, "1e999"));
}

TEST(NarrowTest, AWholeNumberOfText) {
  EXPECT_EQ(WholeLongText(" 42 "), 42);
  EXPECT_EQ(WholeLongText("-2147483648"), -2147483647 - 1);
  EXPECT_THAT([] { (void)WholeLongText("1.5"); }, FailsWith(FailureNumber::kTypeMismatch, "1.5"));
  EXPECT_THAT([] { (void)WholeLongText("2147483648"); }, FailsWith(FailureNumber::kOverflow));
}

TEST(NarrowTest, LeadingNumberBeyondTheRangeIsEndlessOrZero) {
  EXPECT_EQ(LeadingNumber("1e999"), std::numeric_limits<Double>::infinity());
  EXPECT_EQ(LeadingNumber("-1e999"), -std::numeric_limits<Double>::infinity());
  EXPECT_EQ(LeadingNumber(Text(400, '9')), std::numeric_limits<Double>::infinity());
  EXPECT_EQ(LeadingNumber("1e-999"), 0);
  EXPECT_EQ(LeadingNumber("0." + Text(400, '0') + "1"), 0);
  EXPECT_EQ(LeadingNumber("0e999"), 0);
}

TEST(NarrowTest, TruthValuesAreWordsInAnyCaseOrNumbers) {
  for (const char* text : {"True", "TRUE", "true", " true ", "-1", "1", "0.5", "+2"})
    EXPECT_TRUE(ToBoolean(text)) << text;
  for (const char* text : {"False", "fALSE", "0", "0.0", "-0", " 0 "}) EXPECT_FALSE(ToBoolean(text)) << text;
}

TEST(NarrowTest, AnythingElseIsNoTruthValue) {
  for (const char* text : {"", " ", "yes", "1x", "truely", "-", "nan", "inf", "1 2"})
    EXPECT_THAT([&] { (void)ToBoolean(text); }, FailsWith(FailureNumber::kTypeMismatch, text)) << text;
}

RC_GTEST_PROP(NarrowProperties, RoundingIsNeverFartherThanHalf, (int whole, int thousandths)) {
  const Double value = whole / 2000 + (thousandths % 1000) / 1000.0;
  const Double off = std::fabs(RoundToLong(value) - value);
  RC_ASSERT(off <= 0.5);
  if (off == 0.5) RC_ASSERT(RoundToLong(value) % 2 == 0);
}

RC_GTEST_PROP(NarrowProperties, LeadingNumberReadsBackWhatWasPrinted, (long long digits, short exponent)) {
  const Text printed = std::to_string(digits) + "e" + std::to_string(exponent % 250);
  RC_ASSERT(LeadingNumber(printed + "x") == std::strtod(printed.c_str(), nullptr));
}

RC_GTEST_PROP(NarrowProperties, DecimalsReadAsTheNearestDouble, (unsigned long long digits, unsigned char decimals)) {
  Text printed = std::to_string(digits % (1ULL << (digits % 64)));
  const std::size_t point = printed.size() - std::min<std::size_t>(printed.size(), decimals % 20U);
  printed.insert(point, ".");
  RC_ASSERT(LeadingNumber(printed) == std::strtod(printed.c_str(), nullptr));
  RC_ASSERT(LeadingNumber(printed + "kg") == std::strtod(printed.c_str(), nullptr));
}

TEST(NarrowTest, ManyDigitsReadAsTheNearestDoubleToo) {
  for (const char* text : {"123456789012345", "1234567890123456", "0.1234567890123456789", "99999999999999999999999",
                           "000000000000000000012.5", "12345678901234.56789e2", "0.000000000000000000001"})
    EXPECT_EQ(LeadingNumber(text), std::strtod(text, nullptr)) << text;
}

}  // namespace
}  // namespace tallybook::testing
