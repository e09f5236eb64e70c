#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tallybook/cli/ArgumentParser.h"
#include "tallybook/cli/ConsoleMessageBoxes.h"

namespace tallybook::cli {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

// A program of its own: `try look BOOK [FILE]` with an option of each kind, `try move qdx ...` with alternatives.
class ArgumentParserTest : public ::testing::Test {
 protected:
  ArgumentParserTest() : program_(MakeGroup("try", "Tries it", {Look(), MakeGroup("move", "Moves", {Qdx()})})) {
    AddHelpEverywhere(program_);
    AddVersion(program_);
  }

  UnderstoodLine Understand(const std::vector<Text>& words) { return UnderstandLine(program_, words); }

  // What is wrong with a line: the reason, and behind " | " the help to read.
  Text Complaint(const std::vector<Text>& words) {
    try {
      (void)Understand(words);
    } catch (const WrongUse& error) {
      Text text = error.what();
      return text.replace(text.find('\n'), 1, " | ");
    }
    return "";
  }

  Text book;
  Text file;
  Text title;
  std::vector<Text> codes;
  Integer number = 0;
  Double amount = 0;
  bool all = false;
  bool loud = false;
  AskOptions asking;

 private:
  CommandTable Look() {
    CommandTable command;
    command.name = "look";
    AddBook(command, book);
    AddText(command, "FILE", file, "", "");
    AddText(command, "--title", title, "TEXT", "");
    AddText(command, "--code", codes, "CODE", "");
    AddAmount(command, "--amount", amount, "");
    AddFlag(command, "--loud", loud, "").Short("-l");
    AddAsking(command, asking);
    return command;
  }

  CommandTable Qdx() {
    CommandTable command;
    command.name = "qdx";
    AddBook(command, book);
    AddNumber(command, "--number", number, "N", "");
    AddFlag(command, "--all", all, "");
    AddFlag(command, "--loud", loud, "");
    NeedOneOf(command, {"--number", "--all"});
    Exclude(command, "--loud", "--all");
    return command;
  }

  CommandTable program_;
};

TEST_F(ArgumentParserTest, LeadsToTheCommandThatTheWordsName) {
  EXPECT_EQ(PathText(Understand({"look", "shop"}).path), "try look");
  EXPECT_EQ(PathText(Understand({"move", "qdx", "shop", "--all"}).path), "try move qdx");
  EXPECT_EQ(book, "shop");
  EXPECT_TRUE(all);
}

TEST_F(ArgumentParserTest, TakesOptionsAnywhereBehindTheCommand) {
  (void)Understand({"look", "--code", "a", "shop", "--title=The shop", "x.csv", "--code=b", "-l"});
  EXPECT_EQ(book, "shop");
  EXPECT_EQ(file, "x.csv");
  EXPECT_EQ(title, "The shop");
  EXPECT_THAT(codes, ElementsAre("a", "b"));
  EXPECT_TRUE(loud);
}

TEST_F(ArgumentParserTest, TakesAnyTextAsAValue) {
  (void)Understand({"look", "look", "--title", "--code", "--code", "[a,b]", "--amount", "-5"});
  EXPECT_EQ(book, "look") << "a command's name";
  EXPECT_EQ(title, "--code") << "an option's name";
  EXPECT_THAT(codes, ElementsAre("[a,b]"));
  EXPECT_EQ(amount, -5);
}

TEST_F(ArgumentParserTest, TakesAnEmptyTextForWhatItIs) {
  title = "before";
  (void)Understand({"look", "--title=", "shop", ""});
  EXPECT_EQ(title, "");
  EXPECT_EQ(book, "shop");
  EXPECT_EQ(file, "");
}

TEST_F(ArgumentParserTest, TakesEverythingBehindTwoDashesForAWord) {
  (void)Understand({"look", "shop", "--", "--title="});
  EXPECT_EQ(file, "--title=");
}

TEST_F(ArgumentParserTest, SplitsAListOfWordsAtItsCommas) {
  (void)Understand({"look", "shop", "--answer", "ok,Cancel", "--answer", "no"});
  EXPECT_THAT(asking.answers, ElementsAre("ok", "cancel", "no"));
  EXPECT_EQ(Complaint({"look", "shop", "--answer", "ok,"}),
            "--answer: '' is none of ok, cancel, yes, no, retry | See: try look --help");
}

TEST_F(ArgumentParserTest, AsksForTheCommandThatIsMissing) {
  EXPECT_EQ(Complaint({}), "a command is required: look or move | See: try --help");
  EXPECT_EQ(Complaint({"move"}), "a command is required: qdx | See: try move --help");
}

TEST_F(ArgumentParserTest, NamesTheCommandsWhereThereIsNoSuchOne) {
  EXPECT_EQ(Complaint({"sell", "shop"}), "'sell' is no command; there are look and move | See: try --help");
  EXPECT_EQ(Complaint({"lok", "shop"}), "'lok' is no command; did you mean 'look'? | See: try --help");
  EXPECT_EQ(Complaint({"move", "look"}), "'look' is no command of `try move`; there are qdx | See: try move --help");
}

TEST_F(ArgumentParserTest, NamesAnOptionThatIsNone) {
  EXPECT_EQ(Complaint({"look", "shop", "--tilte", "x"}),
            "--tilte is no option of `try look`; did you mean '--title'? | See: try look --help");
  EXPECT_EQ(Complaint({"look", "shop", "--sideways=3"}),
            "--sideways=3 is no option of `try look` | See: try look --help");
  EXPECT_EQ(Complaint({"look", "shop", "-x"}), "-x is no option of `try look` | See: try look --help");
  EXPECT_EQ(Complaint({"--loud", "look", "shop"}), "--loud is no option of `try` | See: try --help");
}

TEST_F(ArgumentParserTest, NamesAWordTooMany) {
  EXPECT_EQ(Complaint({"look", "a", "b", "c", "d"}), "'c' is a word too many | See: try look --help");
}

TEST_F(ArgumentParserTest, NamesAllThatIsMissing) {
  EXPECT_EQ(Complaint({"look"}), "BOOK is required | See: try look --help");
  EXPECT_EQ(Complaint({"move", "qdx", "shop"}), "--number or --all is required | See: try move qdx --help");
}

TEST_F(ArgumentParserTest, RefusesWhatDoesNotGoTogether) {
  EXPECT_EQ(Complaint({"move", "qdx", "shop", "--all", "--number", "1"}),
            "--number and --all do not go together | See: try move qdx --help");
  EXPECT_EQ(Complaint({"move", "qdx", "shop", "--all", "--loud"}),
            "--loud and --all do not go together | See: try move qdx --help");
}

TEST_F(ArgumentParserTest, RefusesAValueTooFewOrTooMany) {
  EXPECT_EQ(Complaint({"look", "shop", "--title"}), "--title wants a TEXT behind it | See: try look --help");
  EXPECT_EQ(Complaint({"look", "shop", "--title", "a", "--title", "b"}),
            "--title is given 2 times | See: try look --help");
  EXPECT_EQ(Complaint({"look", "shop", "--loud=no"}), "--loud takes no value | See: try look --help");
}

TEST_F(ArgumentParserTest, NamesTheArgumentWhoseTextCannotBeRight) {
  EXPECT_EQ(Complaint({"look", "shop", "--amount", "x"}),
            "--amount: 'x' is no amount; wanted is a number like 12.5 | See: try look --help");
}

TEST_F(ArgumentParserTest, GivesHelpWhateverElseIsWrong) {
  const UnderstoodLine line = Understand({"look", "--sideways", "--help"});
  EXPECT_TRUE(line.wants_help);
  EXPECT_EQ(PathText(line.path), "try look");
  EXPECT_TRUE(Understand({"move", "-h"}).wants_help);
  EXPECT_THAT(book, IsEmpty());
  EXPECT_TRUE(Understand({"--version"}).wants_version);
}

TEST_F(ArgumentParserTest, FindsACommandByItsNames) {
  const CommandTable program = MakeGroup("try", "", {MakeGroup("move", "", {MakeGroup("qdx", "", {})})});
  EXPECT_EQ(PathText(FindCommand(program, {})), "try");
  EXPECT_EQ(PathText(FindCommand(program, {"move", "qdx"})), "try move qdx");
  EXPECT_THROW((void)FindCommand(program, {"move", "qd"}), WrongUse);
  EXPECT_THROW((void)FindCommand(program, {"move", "qdx", "x"}), WrongUse);
}

}  // namespace
}  // namespace tallybook::cli
