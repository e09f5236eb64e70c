#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include "tallybook/cli/ArgumentParser.h"
#include "tallybook/cli/PrintForm.h"

namespace tallybook::cli {
namespace {

struct Options {
  PrintForm form = PrintForm::kTable;
};

class PrintFormTest : public ::testing::Test {
 protected:
  // The form that the words ask for, of a command whose forms `add` adds.
  static PrintForm Form(void (*add)(CommandTable&, PrintForm&), const std::vector<Text>& words) {
    const auto options = std::make_shared<Options>();
    CommandTable show =
        MakeCommand<Options>("show", "Shows", {}, options, [](const Options&) { return ExitStatus::kDone; });
    add(show, options->form);
    std::vector<Text> line = {"show"};
    line.insert(line.end(), words.begin(), words.end());
    (void)UnderstandLine(MakeGroup("try", "Tries it", {show}), line);
    return options->form;
  }
};

TEST_F(PrintFormTest, IsATableUnlessTheUserSaysOtherwise) {
  EXPECT_EQ(Form(AddForm, {}), PrintForm::kTable);
  EXPECT_EQ(Form(AddForm, {"--format", "table"}), PrintForm::kTable);
  EXPECT_EQ(Form(AddForm, {"--format", "csv"}), PrintForm::kCsv);
  EXPECT_EQ(Form(AddForm, {"--format", "JSON"}), PrintForm::kJson);
  EXPECT_EQ(Form(AddFormWithoutCsv, {"--format", "json"}), PrintForm::kJson);
}

TEST_F(PrintFormTest, JsonIsTheShortForm) {
  EXPECT_EQ(Form(AddForm, {"--json"}), PrintForm::kJson);
  EXPECT_EQ(Form(AddFormWithoutCsv, {"--json"}), PrintForm::kJson);
}

TEST_F(PrintFormTest, BothAtOnceAreWrongUse) {
  EXPECT_THROW(Form(AddForm, {"--json", "--format", "json"}), WrongUse);
  EXPECT_THROW(Form(AddFormWithoutCsv, {"--json", "--format", "table"}), WrongUse);
}

TEST_F(PrintFormTest, ACommandWithoutRowsOfOneKindHasNoCsv) {
  EXPECT_THROW(Form(AddFormWithoutCsv, {"--format", "csv"}), WrongUse);
}

TEST_F(PrintFormTest, ACsvFieldIsQuotedWhereItHasTo) {
  EXPECT_EQ(CsvField(""), "");
  EXPECT_EQ(CsvField("Front of shop"), "Front of shop");
  EXPECT_EQ(CsvField("a,b"), "\"a,b\"");
  EXPECT_EQ(CsvField("a\nb"), "\"a\nb\"");
  EXPECT_EQ(CsvField("a\rb"), "\"a\rb\"");
  EXPECT_EQ(CsvField("the \"best\""), "\"the \"\"best\"\"\"");
}

TEST_F(PrintFormTest, JsonStandsInLinesOrOnOne) {
  const nlohmann::ordered_json value = {{"file", "a"}, {"accounts", {1, 2}}};
  EXPECT_EQ(JsonText(value), "{\n  \"file\": \"a\",\n  \"accounts\": [\n    1,\n    2\n  ]\n}\n");
  EXPECT_EQ(JsonLine(value), R"({"file":"a","accounts":[1,2]})");
}

TEST_F(PrintFormTest, JsonKeepsCharactersAndReplacesBytesThatAreNone) {
  EXPECT_EQ(JsonLine({{"what", "5 €"}}), "{\"what\":\"5 €\"}");
  EXPECT_EQ(JsonLine({{"what", "a\xFF"}}), "{\"what\":\"a\xEF\xBF\xBD\"}");
  EXPECT_EQ(JsonText({{"what", "\x1b"}}), "{\n  \"what\": \"\\u001b\"\n}\n");
}

}  // namespace
}  // namespace tallybook::cli
