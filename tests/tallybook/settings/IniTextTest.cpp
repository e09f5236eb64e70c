#include <algorithm>
#include <gtest/gtest.h>
#include <rapidcheck/gtest.h>

#include "tallybook/settings/IniText.h"
#include "tests/support/FailsWith.h"

namespace tallybook::settings {
namespace {

using testing::FailsWith;

TEST(IniText, FindsAKeyOfASectionWithoutRegardToCase) {
  const IniText text("[Files]\nWriteRollback=-1\n[CSV]\nImportFile=/in/a.csv\n");
  EXPECT_EQ(text.Get("FILES", "writerollback"), "-1");
  EXPECT_EQ(text.Get("CSV", "ImportFile"), "/in/a.csv");
}

TEST(IniText, HasNothingForAMissingSectionOrKey) {
  const IniText text("[Files]\na=1\n");
  EXPECT_EQ(text.Get("Files", "b"), std::nullopt);
  EXPECT_EQ(text.Get("CSV", "a"), std::nullopt);
  EXPECT_EQ(text.Get("", "a"), std::nullopt);
}

TEST(IniText, TellsAnEmptyValueFromAMissingOne) {
  EXPECT_EQ(IniText("[A]\nk=\n").Get("A", "k"), "");
}

TEST(IniText, DropsTheBlanksAroundKeyAndValueButNotThoseInQuotes) {
  const IniText text("[ A ]\n  k =  some value \t\n q = \"  kept  \"\n");
  EXPECT_EQ(text.Get("A", "k"), "some value");
  EXPECT_EQ(text.Get("A", "q"), "  kept  ");
}

TEST(IniText, TakesWhatFollowsTheFirstEqualsSignAsTheValue) {
  EXPECT_EQ(IniText("[A]\nfilter=a=b;c\n").Get("A", "filter"), "a=b;c");
}

TEST(IniText, ReadsTheFirstOfEqualKeysAcrossEqualSections) {
  const IniText text("[A]\nx=1\nx=2\n[B]\nx=3\n[a]\nx=4\ny=5\n");
  EXPECT_EQ(text.Get("A", "x"), "1");
  EXPECT_EQ(text.Get("A", "y"), "5");
}

TEST(IniText, PassesOverComments) {
  const IniText text("[A]\n;x=1\n#x=2\nx=3\n");
  EXPECT_EQ(text.Get("A", "x"), "3");
  EXPECT_EQ(text.Get("A", ";x"), std::nullopt);
}

TEST(IniText, ChangesNothingButTheLineOfTheKey) {
  const Text before =
      "; of the file\n\nglobal=1\n[A] ; why\n; above\nx = 1\nno setting here\nx=2\n\n; behind\n[B]\ny=\"q\"\n; last\n";
  IniText text(before);
  text.Set("A", "X", "new");
  EXPECT_EQ(
      text.ToText(),
      "; of the file\n\nglobal=1\n[A] ; why\n; above\nx=new\nno setting here\nx=2\n\n; behind\n[B]\ny=\"q\"\n; last\n");
}

TEST(IniText, PutsANewKeyBehindTheLastLineOfItsSection) {
  IniText text("[A]\nx=1\n; behind\n\n[B]\ny=2\n");
  text.Set("A", "z", "3");
  EXPECT_EQ(text.ToText(), "[A]\nx=1\n; behind\nz=3\n\n[B]\ny=2\n");
}

TEST(IniText, PutsANewKeyIntoAnEmptySection) {
  IniText text("[A]\n[B]\ny=2\n");
  text.Set("A", "x", "1");
  EXPECT_EQ(text.ToText(), "[A]\nx=1\n[B]\ny=2\n");
}

TEST(IniText, AppendsANewSectionBehindAnEmptyLine) {
  IniText text("[A]\nx=1");
  text.Set("QDX", "ImportFile", "a.qdx");
  EXPECT_EQ(text.ToText(), "[A]\nx=1\n\n[QDX]\nImportFile=a.qdx\n");
}

TEST(IniText, BeginsAnEmptyTextWithTheSection) {
  IniText text;
  text.Set("CSV", "ImportFile", "Import.csv");
  EXPECT_EQ(text.ToText(), "[CSV]\nImportFile=Import.csv\n");
}

TEST(IniText, PutsAKeyOfNoSectionAboveTheSections) {
  IniText text("[A]\nx=1\n");
  text.Set("", "global", "1");
  EXPECT_EQ(text.ToText(), "global=1\n[A]\nx=1\n");
  EXPECT_EQ(text.Get("", "global"), "1");
}

TEST(IniText, KeepsTheLineEndsOfTheFile) {
  IniText text("[A]\r\nx=1\r\n");
  text.Set("A", "y", "2");
  EXPECT_EQ(text.ToText(), "[A]\r\nx=1\r\ny=2\r\n");
}

TEST(IniText, DropsAByteOrderMark) {
  EXPECT_EQ(IniText("\xEF\xBB\xBF[A]\nx=1\n").Get("A", "x"), "1");
}

TEST(IniText, ReadsBytesThatAreNoUtf8AsWindows1252) {
  IniText text("[A]\nname=Caf\xE9\n");
  EXPECT_EQ(text.Get("A", "name"), "Caf\xC3\xA9");
  text.Set("A", "x", "1");
  EXPECT_EQ(text.ToText(), "[A]\nname=Caf\xC3\xA9\nx=1\n");
}

TEST(IniText, RefusesWhatALineCannotHold) {
  IniText text;
  EXPECT_THAT([&] { text.Set("A", "k", "two\nlines"); }, FailsWith(FailureNumber::kInvalidArgument, "two\nlines"));
  EXPECT_THAT([&] { text.Set("A", "k", Text("a\0b", 3)); }, FailsWith(FailureNumber::kInvalidArgument));
  EXPECT_THAT([&] { text.Set("A", "k", "\xFF"); }, FailsWith(FailureNumber::kInvalidArgument));
  for (const char* key : {"", "a=b", ";a", "#a", "[a", " a", "a\r"})
    EXPECT_THAT([&] { text.Set("A", key, "v"); }, FailsWith(FailureNumber::kInvalidArgument)) << key;
  for (const char* section : {"a]", "a\nb", " a"})
    EXPECT_THAT([&] { text.Set(section, "k", "v"); }, FailsWith(FailureNumber::kInvalidArgument)) << section;
  EXPECT_EQ(text.ToText(), "");
}

RC_GTEST_PROP(IniText, GivesBackEveryValueThatItTook, ()) {
  const auto character = rc::gen::element<char>('a', 'Z', '0', ' ', '\t', '"', '=', ';', '#', '[', ']', '\\');
  const auto value = *rc::gen::container<Text>(character);
  IniText text("[Other]\nk=other\n; end\n");
  text.Set("Section", "k", "old");
  text.Set("Section", "k", value);
  const IniText again(text.ToText());
  RC_ASSERT(again.Get("Section", "k") == value);
  RC_ASSERT(again.Get("Other", "k") == Text("other"));
}

}  // namespace
}  // namespace tallybook::settings
