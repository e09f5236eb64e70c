#include <map>

#include "dialogs/DefinitionReports.h"
#include "dialogs/LayoutListing.h"
#include "forms/ListControls.h"
#include "host/AccountRecord.h"
#include "host/FieldRecord.h"
#include "qdx/HeaderRecord.h"
#include "tests/dialogs/DialogsFixture.h"

namespace tallybook::testing {
namespace {

using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::ElementsAreArray;
using ::testing::Not;

// The small book here: accounts 101 "100", 102 "200" and 205 "300"; fields 1 Sales, 2 Customers and 7 Weather. The
// file: accounts "A", "B" and "C"; fields 8 Tips, 1 Takings and 2 Guests.
class LayoutListingTest : public DialogsFixture {
 protected:
  LayoutListingTest() {
    header.NumAccounts = 3;
    for (Integer i = 1; i <= 3; ++i) {
      header.AccountCodes(i) = Text(1, static_cast<char>('A' + i - 1));
      header.AccountDescs(i) = "Account " + std::to_string(i);
    }
    file_fields.SetSorted(true);
    file_fields.AddItem("Tips", 8);
    file_fields.AddItem("Takings", 1);
    file_fields.AddItem("Guests", 2);
  }

  // Prints the listing and gives all of it behind the settings and their empty line.
  std::vector<Text> Print(bool accounts, bool fields, Integer account_count = 3) {
    MemoryPrinter printer(host->record);
    EXPECT_TRUE(printer.BeginReport(0, "Listing"));
    const LayoutListing listing{.settings = {{"QDX Filename: ", "a.QDX"}, {"Match Accounts: ", "Manually"}},
                                .lists_accounts = accounts,
                                .lists_fields = fields,
                                .account_count = account_count,
                                .header = header,
                                .file_fields = file_fields,
                                .match =
                                    [this](MatchPage page, Long index) {
                                      return page == MatchPage::kAccounts ? account_matches[index]
                                                                          : field_matches[index];
                                    },
                                .accounts = *account_record,
                                .fields = *field_record};
    PrintListing(printer, listing);
    layouts = printer->layouts;
    std::vector<Text> printed = printer->Everything();
    EXPECT_EQ(printed.at(0), "QDX Filename:  | a.QDX");
    EXPECT_EQ(printed.at(1), "Match Accounts:  | Manually");
    EXPECT_EQ(printed.at(2), "");
    EXPECT_EQ(printed.back(), "");
    return {printed.begin() + 3, printed.end() - 1};
  }

  Form form{"holder"};
  ListBox file_fields{form, "lstFields"};
  HeaderRecord header;
  std::map<Long, Integer> account_matches;
  std::map<Long, Integer> field_matches;
  std::vector<std::vector<Single>> layouts;
  std::unique_ptr<AccountRecord> account_record = book().NewAccountRecord();
  std::unique_ptr<FieldRecord> field_record = book().NewFieldRecord();
};

TEST_F(LayoutListingTest, ListsNothingButTheSettingsWhereNothingIsMatchedByHand) {
  EXPECT_THAT(Print(false, false), ElementsAre());
  EXPECT_THAT(layouts, ElementsAre(ElementsAre(60, 60)));
}

TEST_F(LayoutListingTest, ListsAccountsFromBothSides) {
  account_matches = {{1, 102}, {3, 102}};
  EXPECT_THAT(
      Print(true, false),
      ElementsAreArray(
          {"", "List of Account Matchups (sorted by From):", "",
           "# From Code | Description in QDX File | To Code | Description in this Tallybook", "<page check>",
           "A | Account 1 | 200 | Back of shop", "B | Account 2 |  | Not to be sent",
           "C | Account 3 | 200 | Back of shop", "<new page>", "", "List of Account Matchups (sorted by To):", "",
           "# To Code | Description in this Tallybook | From Code | Description in QDX File", "<page check>",
           "100 | Front of shop |  | Nothing is to be sent", "200 | Back of shop | A | Account 1",
           "200 | Back of shop | C | Account 3", "300 | Yard |  | Nothing is to be sent"}));
  EXPECT_THAT(layouts, ElementsAre(ElementsAre(60, 60), ElementsAre(10, 30, 10, 30), ElementsAre(10, 30, 10, 30)));
}

TEST_F(LayoutListingTest, ListsFieldsFromBothSidesInTheirOrders) {
  field_matches = {{1, 1}, {8, 1}};
  EXPECT_THAT(Print(false, true),
              ElementsAreArray({"<new page>", "", "List of Field Matchups (sorted by From):", "",
                                "# From Field | Description in QDX File | To Field | Description in this Tallybook",
                                "<page check>", "2 | Guests |  | Not to be sent", "1 | Takings | 1 | Sales",
                                "8 | Tips | 1 | Sales", "<new page>", "", "List of Field Matchups (sorted by To):", "",
                                "# To Field | Description in this Tallybook | From Field | Description in QDX File",
                                "<page check>", "1 | Sales | 1 | Takings", "1 | Sales | 8 | Tips",
                                "2 | Customers |  | Nothing is to be sent", "7 | Weather |  | Nothing is to be sent"}));
}

TEST_F(LayoutListingTest, ListsAsManyAccountsAsTheStoredDefinitionMatches) {
  account_matches = {{1, 101}, {2, 102}};
  const std::vector<Text> printed = Print(true, false, 1);
  EXPECT_THAT(printed, Contains("A | Account 1 | 100 | Front of shop"));
  EXPECT_THAT(printed, Not(Contains("B | Account 2 | 200 | Back of shop")));
  EXPECT_THAT(printed, Contains("200 | Back of shop |  | Nothing is to be sent"));
}

TEST_F(LayoutListingTest, PassesOverOurAccountsWithoutACode) {
  host->book.AddAccount(103, "   ", "Without a code");
  for (const Text& line : Print(true, false)) EXPECT_THAT(line, Not(::testing::HasSubstr("Without a code")));
}

TEST_F(LayoutListingTest, SetsThePrinterForCloseRowsAndColumnsFarApart) {
  MemoryPrinter printer(host->record);
  printer.Columns().Add(1);
  PrepareForListing(printer);
  EXPECT_TRUE(printer.BeginReport(0, "Listing"));
  EXPECT_EQ(printer->spacing, 4);
  EXPECT_EQ(printer->row_style, 4);
  EXPECT_EQ(printer->head_style, 1);
  EXPECT_THAT([&] { printer.Columns().Item(1); }, ::testing::Throws<Failure>()) << "without the columns it had";
}

}  // namespace
}  // namespace tallybook::testing
