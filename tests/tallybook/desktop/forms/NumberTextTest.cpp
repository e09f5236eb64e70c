#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <rapidcheck/gtest.h>

#include "tallybook/desktop/forms/NumberText.h"

namespace tallybook::desktop {
namespace {

using ::testing::HasSubstr;

const NumberStyle kEnglish{".", ","};
const NumberStyle kGerman{",", "."};
const NumberStyle kFrench{",", "\u202f"};

Double Read(const Text& typed, const NumberStyle& style = kEnglish) {
  const ReadFigure read = ParseFigure(typed, style);
  EXPECT_TRUE(read.value) << typed << ": " << read.why;
  return read.value.value_or(-99999);
}

Text WhyNot(const Text& typed, const NumberStyle& style = kEnglish) {
  const ReadFigure read = ParseFigure(typed, style);
  EXPECT_FALSE(read.value) << typed << " was read as " << read.value.value_or(0);
  return read.why;
}

TEST(NumberText, GroupsThousandsAndHasATrueMinusSign) {
  EXPECT_EQ(NumberText(1234567.5, 2, kEnglish), "1,234,567.50");
  EXPECT_EQ(NumberText(-1234.5, 2, kGerman), "\u22121.234,50");
  EXPECT_EQ(NumberText(999, 0, kEnglish), "999");
  EXPECT_EQ(NumberText(1000, 0, kFrench), "1\u202f000");
  EXPECT_EQ(NumberText(12345, 0, {".", ""}), "12345");
}

TEST(NumberText, ShowsZeroAsADash) {
  EXPECT_EQ(NumberText(0, 2, kEnglish), "\u2013");
  EXPECT_EQ(NumberText(0.001, 2, kEnglish), "0.00") << "what is not zero is no dash";
}

TEST(NumberText, LeavesNumbersBeyondTheDigitsOfADoubleUngrouped) {
  EXPECT_EQ(NumberText(1e21, 2, kEnglish), "1e+21");
}

TEST(NumberText, CopiesWithAPlainMinusAndAZero) {
  EXPECT_EQ(CopiedText(-1234.5, 2, kEnglish), "-1,234.50");
  EXPECT_EQ(CopiedText(0, 2, kEnglish), "0.00");
}

TEST(NumberText, NeedsAsManyDecimalsAsTheFigureHas) {
  EXPECT_EQ(DecimalsNeeded(0), 0);
  EXPECT_EQ(DecimalsNeeded(12), 0);
  EXPECT_EQ(DecimalsNeeded(12.5), 1);
  EXPECT_EQ(DecimalsNeeded(-12.25), 2);
  EXPECT_EQ(DecimalsNeeded(1.0 / 3), kMostDecimals);
  EXPECT_EQ(DecimalsNeeded(1e18), 0);
}

TEST(NumberText, NeedsNoDecimalsForWhatAddingUpLeaves) {
  EXPECT_EQ(DecimalsNeeded(0.1 + 0.2), 1);
  Double sum = 0;
  for (int day = 0; day < 3650; ++day) sum += 812.41;
  EXPECT_EQ(DecimalsNeeded(sum), 1);  // 2965296.5
}

TEST(NumberText, ReadsWhatTheStyleWrites) {
  EXPECT_EQ(Read("1234.5"), 1234.5);
  EXPECT_EQ(Read("1,234.5"), 1234.5);
  EXPECT_EQ(Read("1.234,5", kGerman), 1234.5);
  EXPECT_EQ(Read("12,5", kGerman), 12.5);
  EXPECT_EQ(Read("1 234,5", kFrench), 1234.5);
  EXPECT_EQ(Read("1\u00a0234,5", kGerman), 1234.5);
  EXPECT_EQ(Read("1'234.5"), 1234.5);
  EXPECT_EQ(Read("12,34,567.5"), 1234567.5) << "groups of two before the last";
  EXPECT_EQ(Read(".5"), 0.5);
  EXPECT_EQ(Read("5."), 5);
}

TEST(NumberText, ReadsEverySignThatPeopleWrite) {
  for (const char* minus : {"-12.5", "\u221212.5", "\u201312.5", "- 12.5", "12.5-", "(12.5)", " (12.5) "}) {
    EXPECT_EQ(Read(minus), -12.5) << minus;
  }
  EXPECT_EQ(Read("+12.5"), 12.5);
  EXPECT_EQ(Read("1.5E+03"), 1500);
  EXPECT_EQ(Read("25e-2"), 0.25);
}

TEST(NumberText, ReadsNothingAndADashAsZero) {
  for (const char* nothing : {"", "  ", "-", "\u2013", "\u2212", "0", "0.00", "-0"})
    EXPECT_EQ(Read(nothing), 0) << nothing;
}

TEST(NumberText, NeverGuessesAtAMarkOfAnotherLocale) {
  EXPECT_THAT(WhyNot("12,5"), HasSubstr("a comma groups thousands and does not stand at one"));
  EXPECT_THAT(WhyNot("12.5", kGerman), HasSubstr("the decimals stand behind a comma here"));
  EXPECT_THAT(WhyNot("12.5", kFrench), HasSubstr("the decimals stand behind a comma here"));
  EXPECT_THAT(WhyNot("1.234.5"), HasSubstr("the decimals begin twice"));
  EXPECT_THAT(WhyNot("1,23,4"), HasSubstr("groups thousands"));
}

TEST(NumberText, SaysWhatItCouldNotRead) {
  EXPECT_EQ(WhyNot("12x"), "\"12x\" is no figure: \"x\" is no part of a number");
  EXPECT_THAT(WhyNot("€5"), HasSubstr("\"€\" is no part of a number"));
  EXPECT_THAT(WhyNot("12%"), HasSubstr("write a share as a plain number"));
  EXPECT_THAT(WhyNot("--5"), HasSubstr("more than one sign"));
  EXPECT_THAT(WhyNot("-5-"), HasSubstr("more than one sign"));
  EXPECT_THAT(WhyNot("1e999"), HasSubstr("larger"));
  EXPECT_THAT(WhyNot("."), HasSubstr("no digits"));
  EXPECT_THAT(WhyNot("1 234,567"), HasSubstr("two kinds of marks"));
  EXPECT_THAT(WhyNot("nan"), HasSubstr("is no part of a number"));
  EXPECT_THAT(WhyNot("inf"), HasSubstr("is no part of a number"));
}

RC_GTEST_PROP(NumberText, EveryFigureCanBeTypedAsItIsOfferedForChanging, (Double value)) {
  RC_PRE(std::isfinite(value));
  for (const NumberStyle& style : {kEnglish, kGerman, kFrench}) {
    RC_ASSERT(ParseFigure(TypedText(value, style), style).value == value);
  }
}

RC_GTEST_PROP(NumberText, WhatATableShowsIsReadBackAsShown, ()) {
  const auto hundredths = *rc::gen::inRange<long long>(-1'000'000'000'000, 1'000'000'000'000);
  const Double value = static_cast<Double>(hundredths) / 100;
  for (const NumberStyle& style : {kEnglish, kGerman, kFrench}) {
    RC_ASSERT(ParseFigure(NumberText(value, 2, style), style).value == value);
    RC_ASSERT(ParseFigure(CopiedText(value, 2, style), style).value == value);
  }
}

}  // namespace
}  // namespace tallybook::desktop
