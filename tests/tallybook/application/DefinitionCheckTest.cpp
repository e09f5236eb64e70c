// Definitions held against the book and the exchange files, row by row.
#include <filesystem>
#include <gmock/gmock.h>

#include "qdx/HeaderItems.h"
#include "support/FileStream.h"
#include "tallybook/application/DefinitionCheck.h"
#include "tests/tallybook/engine/BookFixture.h"

namespace tallybook::application {
namespace {

using ::testing::ElementsAre;
using testing::FailsWith;
using ::testing::IsEmpty;
using testing::ShopDescription;

class DefinitionCheckTest : public testing::BookFixture {
 protected:
  DefinitionCheckTest() {
    ThePlatform().files = &files_;
    book_ = CreateAndOpen();
  }

  // An exchange file as a book with these accounts and fields would send it, without figures.
  void Send(const Text& name, const std::vector<Text>& codes, const std::vector<Integer>& fields) {
    engine::BookDescription sender = ShopDescription();
    sender.accounts.clear();
    for (const Text& code : codes) sender.accounts.push_back({static_cast<Long>(sender.accounts.size() + 1), code, ""});
    sender.fields.clear();
    for (const Integer field : fields) sender.fields.push_back({field, "", false});
    const Text path = folder.Path("sender.tbk");
    engine::Book::Create(path, sender);
    const auto book = engine::Book::Open(path, app, {});
    const auto account = book->NewAccountRecord();
    const Date date = testing::Day(2003, 1, 1);
    HeaderSender source{*book, *account, kReadableVersion, 0, date, date, date, {}};
    FileStream stream(files_.Open(folder.Path(name), Access::kWrite, Sharing::kShared, Creation::kReplace));
    for (const auto items : {SignatureItems(), HeadItems(), TableItems()}) {
      WriteHeaderItems(stream, items, source, [](HeaderTable, Integer) {});
    }
    stream.Close();
    book->Close();
    std::filesystem::remove(path);
  }

  // `modes` are those of fields and accounts.
  void Define(const Text& pattern, const Text& modes, const Text& rows) {
    folder.Write("TBQDX1.North", "\"Shop\",\"" + folder.Path(pattern) + "\",3," + modes + "\r\n" + rows);
    files_.Show(folder.Path("TBQDX1.North"), folder.Read("TBQDX1.North"));
  }
  CheckedDefinition Checked() { return CheckDefinitions(files_, *book_, Integer{1}).front(); }

  WholeFiles files_{platform.files};
  std::unique_ptr<engine::Book> book_;
};

TEST_F(DefinitionCheckTest, RowsMadeByHandTellWhetherBookAndFileHaveThem) {
  Send("shop.QDX", {"10", "20"}, {1, 2});
  Define("shop.QDX", "0,0",
         "3,4\r\n1,1\r\n7,4\r\n2,99\r\n\"10\",\"100\"\r\n\"30\",\"200\"\r\n\"20\",\"x\"\r\n\"\",\"\"\r\n0\r\n");
  const CheckedDefinition checked = Checked();
  const std::vector<Text> file = {folder.Path("shop.QDX")};
  EXPECT_EQ(checked.files, file);
  EXPECT_THAT(checked.accounts, ElementsAre(CheckedRow{"10", "100", true, {}}, CheckedRow{"30", "200", true, file},
                                            CheckedRow{"20", "x", false, {}}, CheckedRow{"", "", false, file}));
  EXPECT_THAT(checked.fields, ElementsAre(CheckedRow{"1", "1", true, {}}, CheckedRow{"7", "4", true, file},
                                          CheckedRow{"2", "99", false, {}}));
  EXPECT_FALSE(checked.Holds());
}

TEST_F(DefinitionCheckTest, OneForOneHasARowForWhateverTheFilesHave) {
  Send("a.QDX", {"100", "A"}, {1});
  Send("b.QDX", {"A", "300"}, {1, 9});
  Define("*.QDX", "-1,-1", "0,0\r\n0\r\n");
  const CheckedDefinition checked = Checked();
  EXPECT_THAT(checked.accounts, ElementsAre(CheckedRow{"100", "100", true, {}}, CheckedRow{"A", "A", true, {}},
                                            CheckedRow{"300", "300", false, {}}));
  EXPECT_THAT(checked.fields, ElementsAre(CheckedRow{"1", "1", true, {}}, CheckedRow{"9", "9", true, {}}));
}

TEST_F(DefinitionCheckTest, AllToOneHoldsForAsLongAsTheOneIsThere) {
  Send("shop.QDX", {"10", "20"}, {1});
  Define("shop.QDX", "-1,-2", "0,0\r\n205\r\n");
  EXPECT_THAT(Checked().accounts, ElementsAre(CheckedRow{"10", "200", true, {}}, CheckedRow{"20", "200", true, {}}));
  EXPECT_TRUE(Checked().Holds());
  Define("shop.QDX", "-1,-2", "0,0\r\n206\r\n");
  EXPECT_THAT(Checked().accounts,
              ElementsAre(CheckedRow{"10", "number 206", false, {}}, CheckedRow{"20", "number 206", false, {}}));
}

TEST_F(DefinitionCheckTest, EveryFileThatMatchesIsLookedAt) {
  Send("a.QDX", {"10"}, {1});
  Send("b.QDX", {"20"}, {2});
  Define("*.QDX", "0,0", "1,1\r\n1,1\r\n\"10\",\"100\"\r\n0\r\n");
  EXPECT_THAT(Checked().accounts, ElementsAre(CheckedRow{"10", "100", true, {folder.Path("b.QDX")}}));
  EXPECT_THAT(Checked().fields, ElementsAre(CheckedRow{"1", "1", true, {folder.Path("b.QDX")}}));
}

TEST_F(DefinitionCheckTest, TheArchiveCopyStandsInWhereNoFileMatches) {
  Send("TBQDBU1.North", {"10"}, {1});
  Define("shop.QDX", "-1,0", "0,1\r\n\"10\",\"100\"\r\n0\r\n");
  EXPECT_TRUE(Checked().is_archive_copy);
  EXPECT_TRUE(Checked().Holds());
}

TEST_F(DefinitionCheckTest, WithoutAFileTheBooksSideAloneIsKnown) {
  Define("shop.QDX", "-1,0", "0,2\r\n\"10\",\"100\"\r\n\"20\",\"x\"\r\n0\r\n");
  const CheckedDefinition checked = Checked();
  EXPECT_FALSE(checked.HasFile());
  EXPECT_THAT(checked.accounts, ElementsAre(CheckedRow{"10", "100", true, {}}, CheckedRow{"20", "x", false, {}}));
  EXPECT_THAT(checked.fields, IsEmpty());
}

TEST_F(DefinitionCheckTest, AFileThatCannotBeReadIsToldAndDoesNotHold) {
  folder.Write("shop.QDX", "no exchange file");
  Define("shop.QDX", "-1,0", "0,1\r\n\"10\",\"100\"\r\n0\r\n");
  const CheckedDefinition checked = Checked();
  ASSERT_EQ(checked.unreadable.size(), 1U);
  EXPECT_EQ(checked.unreadable.front().reason, "it is no exchange file");
  EXPECT_FALSE(checked.HasFile());
  EXPECT_FALSE(checked.Holds());
}

TEST_F(DefinitionCheckTest, ADefinitionThatIsNotThereIsRefusedWithThoseThatAre) {
  EXPECT_THAT([&] { (void)CheckDefinitions(files_, *book_, Integer{1}); },
              FailsWith(FailureNumber::kInvalidArgument, "there is no exchange definition 1; there are none"));
  Define("shop.QDX", "-1,-1", "0,0\r\n0\r\n");
  EXPECT_THAT([&] { (void)CheckDefinitions(files_, *book_, Integer{0}); },
              FailsWith(FailureNumber::kInvalidArgument, "definition 0; the numbers in use are 1"));
}

}  // namespace
}  // namespace tallybook::application
