#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tallybook/application/EntryFacts.h"

namespace tallybook::application {
namespace {

EntryFacts WholeFacts() {
  EntryFacts facts;
  facts.kind = "qdx";
  facts.definition = 3;
  facts.title = "Café \"North\"";
  facts.math = "as told";
  facts.told_math = "replace";
  facts.options = "clear 5";
  facts.counts = {.read = 10,
                  .applied = 7,
                  .not_mapped = 2,
                  .refused = 1,
                  .zeroed = 12,
                  .records = 5,
                  .accounts = 4,
                  .fields = 3,
                  .dates = 2};
  facts.result = "imported";
  facts.warnings = {"one", "two"};
  return facts;
}

TEST(EntryFacts, AreReadAsTheyWerePrinted) {
  EXPECT_EQ(FactsOf(TextOfFacts(WholeFacts())), WholeFacts());
}

TEST(EntryFacts, LeaveOutWhatIsNotKnown) {
  EXPECT_EQ(TextOfFacts({}), "");
  EntryFacts facts;
  facts.kind = "csv";
  facts.counts.records = 0;
  EXPECT_EQ(TextOfFacts(facts), R"({"kind":"csv","counts":{"record_count":0}})");
  EXPECT_EQ(FactsOf(TextOfFacts(facts)), facts);
}

TEST(EntryFacts, PassOverWhatTheyDoNotKnow) {
  for (const char* text :
       {"", "{", "[1]", "7", R"({"kind":7,"definition":"x","counts":[1],"warnings":{"a":1},"new":1})"}) {
    EXPECT_EQ(FactsOf(text), EntryFacts()) << text;
  }
  EXPECT_EQ(FactsOf(R"({"kind":"csv","counts":{"read":"x","date_count":2},"warnings":[1,"two"]})").warnings,
            std::vector<Text>{"two"});
}

TEST(EntryFacts, ShowBytesOfNamesThatAreNoText) {
  EntryFacts facts;
  facts.title = "a\xFF";
  EXPECT_EQ(FactsOf(TextOfFacts(facts)).title, "a\xEF\xBF\xBD");
}

TEST(EntryFacts, AreThoseOfTheSameImportByDefinitionAloneAndOtherwiseByAllThatWasChosen) {
  const auto qdx = [](Integer definition, const Text& math) {
    EntryFacts facts;
    facts.kind = "qdx";
    facts.definition = definition;
    facts.math = math;
    return facts;
  };
  const auto text = [](const Text& kind, const Text& math, const Text& options) {
    EntryFacts facts;
    facts.kind = kind;
    facts.math = math;
    facts.options = options;
    return facts;
  };
  EXPECT_TRUE(IsSameImport(qdx(1, "add"), qdx(1, "replace")));
  EXPECT_FALSE(IsSameImport(qdx(1, "add"), qdx(2, "add")));
  EXPECT_FALSE(IsSameImport(qdx(1, "zero"), qdx(1, "add")));
  EXPECT_FALSE(IsSameImport(qdx(1, "add"), qdx(1, "zero")));
  EXPECT_TRUE(IsSameImport(text("csv", "add", ""), text("csv", "add", "")));
  EXPECT_FALSE(IsSameImport(text("csv", "add", ""), text("csv", "replace", "")));
  EXPECT_FALSE(IsSameImport(text("csv", "add", ""), text("csv", "add", "clear 5")));
  EXPECT_FALSE(IsSameImport(text("csv", "add", ""), text("delimited", "add", "")));
  EXPECT_FALSE(IsSameImport({}, {}));
}

}  // namespace
}  // namespace tallybook::application
