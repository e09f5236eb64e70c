// What the host's rules add to a look at an exchange file, on a book and files of the machine.
#include <gmock/gmock.h>
#include <sys/stat.h>

#include "tallybook/inspect/DefinedLook.h"
#include "tests/support/InChild.h"
#include "tests/tallybook/application/Office.h"
#include "tests/tallybook/inspect/Findings.h"

namespace tallybook::inspect {
namespace {

using testing::Day;
using ::testing::ElementsAre;
using ::testing::HasSubstr;

class DefinedLookTest : public ::testing::Test {
 protected:
  DefinedLookTest() { office_.Write("shop.QDX", {{101, Day(2003, 1, 5), 1, 2.5}}, Day(2003, 1, 1), Day(2003, 12, 31)); }

  void Dispose(Integer how) {
    CDataExchange exchange(office_.factory);
    exchange.OpenDefinitions(*office_.book, 1);
    exchange.SetFile(1);
    exchange.SetDisp(how);
    ASSERT_TRUE(exchange.Update(1));
  }
  QdxLookTally Look(const Text& name = "shop.QDX") {
    list_.findings.clear();
    const DefinedLookRequest request{.file = office_.folder.Path(name), .definition = 1};
    return LookByDefinition(files_, *office_.book, request, list_);
  }
  // What is found that has nothing to do with figures.
  [[nodiscard]] std::vector<Text> OfTheFile() const {
    std::vector<Text> words;
    for (const Finding& finding : list_.findings) {
      if (!finding.account && !finding.date && !finding.field)
        words.push_back(WordOf(finding.effect) + (": " + finding.reason));
    }
    return words;
  }
  // The same, by a user whom permissions bind.
  [[nodiscard]] Text OfTheFileForNobody() {
    return testing::InChild([&] {
      testing::BecomeNobody();
      Look();
      Text all;
      for (const Text& words : OfTheFile()) all += words + "\n";
      throw Failure(FailureNumber::kInternal, all);
    });
  }

  testing::Office office_{kDayLevel};
  application::WholeFiles files_{office_.platform.files};
  testing::FindingList list_;
};

TEST_F(DefinedLookTest, AFileThatCanGoHasItsFateTold) {
  Dispose(kDispDelete);
  EXPECT_EQ(Look().All(), 0);
  EXPECT_THAT(OfTheFile(), ElementsAre("note: the file is deleted after the import"));
}

// The folder is another user's, who lets it be read alone.
TEST_F(DefinedLookTest, AFileThatCannotBeDeletedOrRenamedIsToldBeforeTheImport) {
  NEEDS_ROOT();
  ASSERT_EQ(::chmod(office_.folder.Path().c_str(), 0755), 0);
  Dispose(kDispDelete);
  EXPECT_THAT(OfTheFileForNobody(), HasSubstr("silent: it cannot be deleted after the import, and the next run imports "
                                              "it again: " +
                                              office_.folder.Path("shop.QDX") + ": its folder does not let it go\n"));
  Dispose(kDispRename);
  EXPECT_THAT(OfTheFileForNobody(), HasSubstr("silent: it cannot be renamed after the import, and the next run imports "
                                              "it again: "));
  Dispose(kDispKeep);
  EXPECT_THAT(OfTheFileForNobody(), Not(HasSubstr("cannot be")));
}

TEST_F(DefinedLookTest, AFileOfTheBooksHistoryIsTold) {
  office_.Import("shop.QDX", testing::kAdded);
  EXPECT_EQ(Look().Of(Effect::kAudit), 1);
  EXPECT_THAT(OfTheFile(), Contains(HasSubstr("and that has not been taken back")));
}

TEST_F(DefinedLookTest, AFileThatTheDefinitionDoesNotFindIsTold) {
  office_.Write("day.other", {}, Day(2003, 1, 1), Day(2003, 12, 31));
  Look("day.other");
  EXPECT_THAT(OfTheFile(), Contains(HasSubstr("note: the definition does not find the file: it imports ")));
}

}  // namespace
}  // namespace tallybook::inspect
