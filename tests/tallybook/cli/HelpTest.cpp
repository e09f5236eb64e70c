#include <functional>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sstream>

#include "base/CodePage.h"
#include "tallybook/cli/Help.h"
#include "tallybook/cli/Program.h"

namespace tallybook::cli {
namespace {

using ::testing::HasSubstr;
using ::testing::Not;

Text Plain(const Text& text) {
  return text;
}

// Calls `visit` for every command and group of the program.
void VisitCommands(const CommandPath& path, const std::function<void(const CommandPath&)>& visit) {
  visit(path);
  for (const CommandTable& command : path.back()->commands) {
    CommandPath longer = path;
    longer.push_back(&command);
    VisitCommands(longer, visit);
  }
}

TEST(HelpTest, HoldsEveryArgumentOfEveryCommand) {
  const CommandTable program = Program();
  VisitCommands({&program}, [](const CommandPath& path) {
    const Text help = HelpText(path, Plain);
    for (const Argument& argument : path.back()->arguments) {
      EXPECT_THAT(help, HasSubstr("\n  " + ArgumentText(argument))) << PathText(path);
    }
  });
}

TEST(HelpTest, SaysWhatEveryCommandAndEveryArgumentIsFor) {
  const CommandTable program = Program();
  VisitCommands({&program}, [](const CommandPath& path) {
    const CommandTable& command = *path.back();
    EXPECT_NE(command.what, "") << PathText(path);
    EXPECT_EQ(command.IsGroup(), command.examples.empty()) << PathText(path) << ": each command has an example";
    EXPECT_EQ(command.IsGroup(), command.run == nullptr) << PathText(path);
    for (const Argument& argument : command.arguments) {
      EXPECT_NE(argument.what, "") << PathText(path) << " " << argument.name;
      const bool is_valued_option = argument.IsOption() && argument.kind != ArgumentKind::kFlag;
      EXPECT_EQ(argument.value.empty(), !is_valued_option) << PathText(path) << " " << argument.name;
    }
  });
}

TEST(HelpTest, FitsItsTextsIntoEightyCharacters) {
  const CommandTable program = Program();
  VisitCommands({&program}, [](const CommandPath& path) {
    std::istringstream help(HelpText(path, Plain));
    for (Text line; std::getline(help, line) && line != "Examples:";) {
      if (!line.starts_with("Usage:") && line != path.back()->what) {
        EXPECT_LE(CharacterCount(line), 80) << line;
      }
    }
  });
}

// A command with all that usage shows.
CommandTable Move(Text& text, bool& flag) {
  CommandTable command;
  command.name = "move";
  command.what = "Moves";
  AddBook(command, text);
  AddText(command, "FILE", text, "", "A file");
  AddText(command, "--from", text, "DATE", "The first").Required();
  AddFlag(command, "--all", flag, "All of them");
  AddText(command, "--one", text, "N", "One of them");
  NeedOneOf(command, {"--one", "--all"});
  AddFlag(command, "--loud", flag, "Tell all").Short("-l").Heading("Noise");
  Exclude(command, "--loud", "--all");
  return command;
}

TEST(HelpTest, ShowsWhatIsRequiredInTheUsage) {
  Text text;
  bool flag = false;
  CommandTable command = Move(text, flag);
  EXPECT_EQ(UsageText({&command}), "move BOOK [FILE] --from DATE (--one N | --all) [OPTIONS]");
  command.arguments.pop_back();
  AddHelpEverywhere(command);
  EXPECT_EQ(UsageText({&command}), "move BOOK [FILE] --from DATE (--one N | --all)") << "help alone is no option";
}

TEST(HelpTest, SaysAtBothWhatDoesNotGoTogether) {
  Text text;
  bool flag = false;
  const CommandTable command = Move(text, flag);
  EXPECT_EQ(AboutText(command, *OptionNamed(command, "--loud")), "Tell all; not with --all");
  EXPECT_EQ(AboutText(command, *OptionNamed(command, "--all")), "All of them; not with --loud");
}

TEST(HelpTest, PutsArgumentsUnderTheirHeadings) {
  Text text;
  bool flag = false;
  const CommandTable command = Move(text, flag);
  const Text help = HelpText({&command}, [](const Text& heading) { return "<" + heading + ">"; });
  EXPECT_THAT(help, HasSubstr("<Arguments:>\n  BOOK"));
  EXPECT_THAT(help, HasSubstr("<Options:>\n  --from DATE"));
  EXPECT_THAT(help, HasSubstr("<Noise:>\n  -l, --loud "));
}

TEST(HelpTest, LeavesOutHiddenCommands) {
  const CommandTable seen = MakeGroup("seen", "Is seen", {});
  CommandTable hidden = MakeGroup("hidden", "Is not", {});
  hidden.hidden = true;
  const CommandTable group = MakeGroup("group", "Both", {seen, hidden});
  EXPECT_THAT(HelpText({&group}, Plain), HasSubstr("  seen  Is seen\n"));
  EXPECT_THAT(HelpText({&group}, Plain), Not(HasSubstr("hidden")));
}

}  // namespace
}  // namespace tallybook::cli
