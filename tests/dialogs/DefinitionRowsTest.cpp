#include "dialogs/DefinitionRows.h"
#include "exchange/CDataExchange.h"
#include "tests/dialogs/DefinitionsFixture.h"

namespace tallybook::testing {
namespace {

using ::testing::ElementsAre;

class DefinitionRowsTest : public DefinitionsFixture {
 protected:
  DefinitionRowsTest() { EXPECT_TRUE(exchange.OpenDefinitions(book(), 1)); }

  CDataExchange exchange{host->factory};
  MemoryEdtForm window{host->record};
  DefinitionRows rows{window, exchange};
};

TEST_F(DefinitionRowsTest, TellsAFilesNameBehindTheLastSeparatorOfEitherKind) {
  const Integer record = exchange.FirstAvailRec();
  exchange.SetDesc(record, "South");
  for (const char* path : {"C:\\Books/Old\\TBQDX1.NORTH", "C:\\Books/TBQDX1.NORTH", "TBQDX1.NORTH"}) {
    exchange.SetFilename(record, path);
    rows.AddDefinitionRow(record);
    EXPECT_THAT(window->rows.back().cells, ElementsAre("South", "   1", "TBQDX1.NORTH", "", "False", "0")) << path;
  }
}

TEST_F(DefinitionRowsTest, ReplacesARowUnderTheKeyOfItsNumber) {
  const Integer record = exchange.FirstAvailRec();
  exchange.SetFileNum(record, 12'345);
  exchange.SetDesc(record, "South");
  rows.AddDefinitionRow(record);
  exchange.SetDesc(record, "Southern");
  rows.ReplaceDefinitionRow(record);
  ASSERT_EQ(window->rows.size(), 1U);
  EXPECT_EQ(window->rows[0].key, "K12345");
  EXPECT_THAT(window->rows[0].cells, ElementsAre("Southern", "2345", "TBQDX1.NORTH", "", "False", "0"));
}

}  // namespace
}  // namespace tallybook::testing
