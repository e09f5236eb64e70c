// What tests of whole roads share: a shop that writes exchange files, and an office that takes them in.
#pragma once

#include <gtest/gtest.h>
#include <sstream>

#include "exchange/CDataExchange.h"
#include "qdx/HeaderItems.h"
#include "support/Utility.h"
#include "tallybook/application/DefinitionLook.h"
#include "tallybook/application/ImportRecorder.h"
#include "tallybook/application/ReferenceFactory.h"
#include "tests/tallybook/engine/BookFixture.h"

namespace tallybook::testing {

inline constexpr auto kAdded = static_cast<Integer>(eMath::mAdd);
inline constexpr auto kSubtracted = static_cast<Integer>(eMath::mSubtract);
inline constexpr auto kReplaced = static_cast<Integer>(eMath::mReplace);

using Values = std::vector<engine::ValueDescription>;

// A shop that writes exchange files and an office that takes them in, by an exchange definition that matches one for
// one.
class Office {
 public:
  explicit Office(Integer data_level = kPeriodLevel) {
    auto description = ShopDescription();
    description.data_level = data_level;
    engine::Book::Create(folder.Path("Office.tbk"), description);
    book = engine::Book::Open(folder.Path("Office.tbk"), app);
    destination_.stream = &report_;
    factory.SetReportDestination(destination_);
    CDataExchange exchange(factory);
    exchange.OpenDefinitions(*book, 1);
    exchange.InitFile();
    const Integer position = exchange.FirstAvailRec();
    exchange.SetFile(position);
    exchange.SetDesc(position, "Shops");
    exchange.SetQdxFileName(position, folder.Path("*.QDX"));
    exchange.SetDisp(kDispKeep);
    exchange.SetAcctMatch(kOneForOne);
    exchange.SetFldMatch(kOneForOne);
    EXPECT_EQ(exchange.Add(position), -1);
    definition = {.number = exchange.FileNum(position),
                  .path = exchange.Filename(position),
                  .title = "Shops",
                  .exchange_files = folder.Path("*.QDX"),
                  .trouble = {}};
  }

  // A file of a shop's figures. With `more` the shop has an account and a field that the office has not: 900 and 12.
  void Write(const Text& name, const Values& values, Date first, Date last, bool more = false) {
    auto description = ShopDescription();
    if (more) {
      maps_by_hand_ = true;
      description.accounts.push_back({900, "900", "Kiosk"});
      description.fields.push_back({12, "Weather", false});
    }
    description.values = values;
    const Text path = folder.Path("Shop" + std::to_string(++shops_) + ".tbk");
    engine::Book::Create(path, description);
    const auto shop = engine::Book::Open(path, app);
    CDataExchange exchange(factory);
    exchange.SetOwner(shop.get());
    const bool as_table = false;
    ASSERT_TRUE(exchange.WriteQDXFile(folder.Path(name), first, last, as_table, kReadableVersion));
  }

  // Gives what the import told of it.
  QDXImportRecord Import(const Text& name, Integer math) {
    CDataExchange exchange(factory);
    exchange.OpenDefinitions(*book, 1);
    exchange.SetFile(1);
    exchange.SetQdxFileName(1, folder.Path(name));
    if (maps_by_hand_) MapByHand(exchange, folder.Path(name));
    EXPECT_TRUE(exchange.Update(1));
    exchange.SetFile(1);
    exchange.SetMath(math);
    application::EntryFacts way;
    way.kind = "qdx";
    way.definition = definition.number;
    way.math = application::MathWord(math);
    book->SetOperationName("import qdx");
    application::ImportRecorder recorder(*book);
    recorder.BeginFile(folder.Path(name), folder.Path(name), way);
    const auto report = factory.NewPrinter();
    const Long no_window = 0;
    EXPECT_TRUE(report->BeginReport(no_window, "Import"));
    EXPECT_TRUE(exchange.ImportQDXFile(*report));
    report->EndReport();
    book->Commit();
    recorder.Save();
    return exchange.LastQDXImport();
  }
  // By a user.
  void Set(Long account, Date date, Integer field, Double value) {
    book->SetOperation(engine::JournalKind::kSet, "set");
    testing::Put(*book, account, date, field, value);
  }
  [[nodiscard]] Double Get(Long account, Date date, Integer field) { return testing::Get(*book, account, date, field); }

  ScriptedPlatform platform;
  TempFolder folder;
  CallRecord record;
  MemoryApp app{record};
  application::ReferenceFactory factory;
  std::unique_ptr<engine::Book> book;
  application::SeenDefinition definition;

 private:
  // What a one-for-one match would refuse the file for is sent nowhere.
  static void MapByHand(CDataExchange& exchange, const Text& file) {
    Integer file_number = 0;
    const bool backup_ok = false;
    ASSERT_TRUE(exchange.ReadQDXHeader(file, file_number, backup_ok));
    CloseFileEx(file_number);
    exchange.SetAcctMatch(kManually);
    exchange.SetFldMatch(kManually);
    const auto description = ShopDescription();
    exchange.SetNumAccounts(static_cast<Integer>(description.accounts.size()));
    exchange.SetNumFields(static_cast<Integer>(description.fields.size()));
    Integer row = 0;
    for (const auto& account : description.accounts) {
      ++row;
      exchange.SetAccountFrom(row, row);
      exchange.SetAccountTo(row, static_cast<Integer>(account.number));
    }
    row = 0;
    for (const auto& field : description.fields) {
      ++row;
      exchange.SetFieldFrom(row, field.number);
      exchange.SetFieldTo(row, field.number);
    }
  }

  std::ostringstream report_;
  report::Destination destination_;
  int shops_ = 0;
  bool maps_by_hand_ = false;
};

}  // namespace tallybook::testing
