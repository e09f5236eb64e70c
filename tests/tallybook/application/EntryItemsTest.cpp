#include <gmock/gmock.h>

#include "tallybook/application/EntryFacts.h"
#include "tallybook/application/EntryItems.h"
#include "tallybook/application/FileDisposals.h"
#include "tests/tallybook/engine/BookFixture.h"

namespace tallybook::application {
namespace {

using testing::Day;
using ::testing::ElementsAre;

TEST(EntryItems, LeaveOutWhatAnEntryHasNoValueFor) {
  engine::NotedEntry noted;
  noted.entry.id = 3;
  noted.entry.command = 2;
  noted.entry.kind = engine::JournalKind::kSet;
  noted.entry.time = Day(2004, 2, 3) + 0.5;
  noted.entry.state = engine::JournalState::kClosed;
  EXPECT_EQ(EntryHeading(noted), "Journal entry 3");
  EXPECT_THAT(ItemsOf(noted), ElementsAre(EntryItem{"Kind", "set"}, EntryItem{"Command", "2"},
                                          EntryItem{"Time", "2004-02-03 12:00:00"}, EntryItem{"State", "done"}));
}

TEST(EntryItems, TellTheFilesTheCountsAndWhatCameOfIt) {
  EntryFacts facts;
  facts.kind = "qdx";
  facts.definition = 2;
  facts.title = "South";
  facts.math = "add";
  facts.counts.read = 1200;
  facts.counts.applied = 1198;
  facts.counts.not_mapped = 2;
  facts.counts.accounts = 1;
  facts.counts.fields = 2;
  facts.counts.dates = 3;
  facts.result = "imported";
  facts.warnings = {"one", "two"};
  engine::NotedEntry noted;
  noted.entry.id = 1;
  noted.entry.command = 1;
  noted.entry.what_ran = "import qdx #2";
  noted.entry.time = Day(2004, 2, 3);
  noted.who = "anna";
  noted.notes.facts = TextOfFacts(facts);
  noted.notes.files = {{.path = "south.QDX", .size = 5, .xxh3 = {std::byte{0xAB}}, .sha256 = {}}};
  EXPECT_EQ(EntryHeading(noted), "Journal entry 1: import qdx #2");
  EXPECT_THAT(ItemsOf(noted),
              ElementsAre(EntryItem{"Kind", "import"}, EntryItem{"Command", "1"},
                          EntryItem{"Time", "2004-02-03 00:00:00"}, EntryItem{"Who", "anna"},
                          EntryItem{"State", "not finished: it failed or was cut off, and what it wrote stands"},
                          EntryItem{"Definition", "2: South"}, EntryItem{"Math", "add"},
                          EntryItem{"File", "south.QDX, 5 bytes"}, EntryItem{"  XXH3", "ab"},
                          EntryItem{"Figures", "1,200 read: 1,198 applied, 2 not mapped"},
                          EntryItem{"Reached", "1 account, 2 fields, 3 dates"}, EntryItem{"Result", "imported"},
                          EntryItem{"Warning", "one"}, EntryItem{"Warning", "two"}));
}

TEST(EntryItems, TellTheMathThatTheFileToldAndWhatIsStillDueWithIt) {
  EntryFacts facts;
  facts.math = "as told";
  facts.told_math = "subtract";
  engine::NotedEntry noted;
  noted.notes.facts = TextOfFacts(facts);
  noted.due = TextOfDisposals({{.path = "/in/a.QDX", .new_path = {}, .stamp = {}},
                               {.path = "/in/b.QDX", .new_path = "/in/b.XDQ", .stamp = {}}});
  EXPECT_THAT(ItemsOf(noted),
              ::testing::IsSupersetOf({EntryItem{"Math", "as told: subtract"},
                                       EntryItem{"Still due", "/in/a.QDX is to be deleted"},
                                       EntryItem{"Still due", "/in/b.QDX is to be renamed to /in/b.XDQ"}}));
}

}  // namespace
}  // namespace tallybook::application
