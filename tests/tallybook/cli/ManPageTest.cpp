#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tallybook/cli/ManPage.h"

namespace tallybook::cli {
namespace {

using ::testing::HasSubstr;
using ::testing::Not;
using ::testing::StartsWith;

const ManEdition kEdition = {.version = "1.2.3", .date = "2004-02-03"};

class ManPageTest : public ::testing::Test {
 protected:
  ManPageTest() {
    program_.name = "try";
    program_.what = "Tries it";
    CommandTable look = MakeGroup("look", "Look at `a\\b`", {});
    look.examples = {"try look 'it'"};
    AddText(look, "--at", text_, "PLACE", ".place to look at").Short("-a");
    CommandTable hidden = MakeGroup("hidden", "Is not shown", {});
    hidden.hidden = true;
    program_.commands = {look, hidden};
  }

  Text Page() { return ManPage({&program_}, kEdition); }
  Text LookPage() { return ManPage({&program_, program_.commands.data()}, kEdition); }

 private:
  CommandTable program_;
  Text text_;
};

TEST_F(ManPageTest, BearsItsNameEditionAndManual) {
  EXPECT_THAT(LookPage(), StartsWith(".TH TRY\\-LOOK 1 2004-02-03 \"tallybook 1.2.3\" \"Tallybook Data Exchange\"\n"
                                     ".SH NAME\ntry\\-look \\- look at "));
}

TEST_F(ManPageTest, ShowsCharactersAsTheyAreTyped) {
  EXPECT_THAT(LookPage(), HasSubstr("look at \\(gaa\\eb\\(ga\n"));
  EXPECT_THAT(LookPage(), HasSubstr("\ntry look \\(aqit\\(aq\n"));
  EXPECT_THAT(LookPage(), HasSubstr(".TP\n.B \\-a, \\-\\-at PLACE\n\\&.place to look at.\n")) << "no request";
}

TEST_F(ManPageTest, LeadsToThePagesBelowAndAbove) {
  EXPECT_THAT(Page(), HasSubstr(".SH COMMANDS\n.TP\n.BR try\\-look (1)\n"));
  EXPECT_THAT(Page(), Not(HasSubstr("hidden")));
  EXPECT_THAT(LookPage(), HasSubstr(".SH SEE ALSO\n.BR try (1)\n"));
}

}  // namespace
}  // namespace tallybook::cli
