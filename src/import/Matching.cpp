#include "import/Matching.h"

#include <memory>
#include <optional>
#include <string>
#include <unordered_map>

#include "base/Narrow.h"
#include "base/Texts.h"
#include "host/AccountRecord.h"
#include "host/Masterfile.h"
#include "host/Printer.h"
#include "qdx/HeaderReader.h"
#include "support/FileNumber.h"
#include "support/HostMessages.h"
#include "support/StreamItems.h"

namespace tallybook {

namespace {

// An index from codes to what stands at their first place in a list. It reads the list once and no further than it was
// asked for, so that a look-up reads what a search from the list's start would not have read before.
template <typename Value, typename ReadNext>
class FirstMatchIndex {
 public:
  // `read_next` reads the entry at a position from 1 and gives its code and value.
  FirstMatchIndex(Long rows, ReadNext read_next) : rows_(rows), read_next_(std::move(read_next)) {}

  std::optional<Value> Find(const Text& code) {
    if (const auto known = known_.find(code); known != known_.end()) return known->second;
    while (read_ < rows_) {
      auto [read_code, value] = read_next_(read_ + 1);
      ++read_;
      const bool found = read_code == code;
      known_.try_emplace(std::move(read_code), value);
      if (found) return value;
    }
    return std::nullopt;
  }

 private:
  Long rows_;
  Long read_ = 0;
  ReadNext read_next_;
  std::unordered_map<Text, Value> known_;
};

template <typename Value, typename ReadNext>
FirstMatchIndex<Value, ReadNext> IndexOf(Long rows, ReadNext read_next) {
  return FirstMatchIndex<Value, ReadNext>(rows, std::move(read_next));
}

Text TargetCode(const DefinitionRecord& definition, Masterfile& masterfile) {
  const auto account = masterfile.NewAccountRecord();
  account->SetSelect(definition.AcctAll);
  return TrimRight(account->Code());
}

// Four cells of a report row, from the first.
void SetCells(Printer& report, const Text& first, const Text& second, const Text& third, const Text& fourth) {
  Integer position = 0;
  for (const Text& text : {first, second, third, fourth}) report.Columns().Item(++position).SetText(text);
}

// The rows of one kind that differ; the first brings its head.
class DifferenceTable {
 public:
  DifferenceTable(Printer& report, Text key_title, Text description_title)
      : report_(report), key_title_(std::move(key_title)), description_title_(std::move(description_title)) {}

  void Compare(const Text& last_key, const Text& last_description, const Text& this_key, const Text& this_description) {
    if (last_key == this_key && last_description == this_description) return;
    if (!any_) PrintHead();
    any_ = true;
    SetCells(report_, last_key, last_description, this_key, this_description);
    report_.PrintRow();
  }

  [[nodiscard]] bool HasAny() const { return any_; }

 private:
  void PrintHead() {
    report_.PrintLine("");
    report_.Columns().ClearText();
    report_.Columns().Item(2).SetText("Last Import");
    report_.Columns().Item(4).SetText("This Import");
    report_.PrintRow();
    SetCells(report_, key_title_, description_title_, key_title_, description_title_);
    report_.PrintHeadingRow();
  }

  Printer& report_;
  Text key_title_;
  Text description_title_;
  bool any_ = false;
};

// Compares the account table that `source` stands at. True where a row differs.
bool CompareAccounts(FileStream& source, Integer rows, const HeaderRecord& header, Printer& report) {
  DifferenceTable table(report, "Code", "Account Description");
  Text code;
  Text description;
  for (int i = 1; i <= rows; ++i) {
    report.SetProgressFraction(static_cast<Single>(static_cast<Double>(i) / rows / 2));
    GetCounted(source, code);
    GetCounted(source, description);
    table.Compare(code, description, header.AccountCodes(i), header.AccountDescs(i));
  }
  return table.HasAny();
}

// The same for the field table behind it.
bool CompareFields(FileStream& source, Integer rows, const HeaderRecord& header, Printer& report) {
  DifferenceTable table(report, "#", "Field Description");
  Integer number = 0;
  Text description;
  for (int i = 1; i <= rows; ++i) {
    report.SetProgressFraction(static_cast<Single>(static_cast<Double>(i) / rows / 2 + 0.5));
    Get(source, number);
    GetCounted(source, description);
    table.Compare(std::to_string(number), description, std::to_string(header.FieldNumbers(i)), header.FieldDescs(i));
  }
  return table.HasAny();
}

// What has changed, in the words of the question; empty where nothing has. Two words run together where both counts
// differ: meant, users know the line by it.
Text ListOfChanges(bool account_count, bool field_count, bool account_rows, bool field_rows) {
  Text list;
  if (account_count) list = "Accounts";
  if (field_count) list += list.empty() ? "Datafields" : "and Datafields";
  if (!list.empty()) list = "The number of " + list;
  if (account_rows) list += "\r\nAccount Codes or Descriptions";
  if (field_rows) list += "\r\nField Descriptions";
  return list;
}

}  // namespace

void FillTables(DefinitionRecord& definition, const HeaderRecord& header, Masterfile& masterfile) {
  if (definition.AcctMatch == kOneForOne || definition.AcctMatch == kAllToOne) {
    const bool all_to_one = definition.AcctMatch == kAllToOne;
    const Text target = all_to_one ? TargetCode(definition, masterfile) : Text();
    definition.NumAccounts = header.NumAccounts;
    for (int i = 1; i <= header.NumAccounts; ++i) {
      AccountRow& row = definition.accounts(i);
      row.from_code = header.AccountCodes(i);
      row.to_code = all_to_one ? target : row.from_code;
    }
  }
  if (definition.FldMatch == kManually) return;
  definition.NumFields = header.NumFields;
  for (int i = 1; i <= header.NumFields; ++i) {
    FieldRow& row = definition.fields(i);
    row.FieldFrom = header.FieldNumbers(i);
    row.FieldTo = row.FieldFrom;
  }
}

void MatchAccountCodes(DefinitionRecord& definition, const HeaderRecord& header, Masterfile& masterfile) {
  const auto account = masterfile.NewAccountRecord();
  auto file_codes = IndexOf<Integer>(header.NumAccounts, [&](Long position) {
    return std::pair(header.AccountCodes(position), static_cast<Integer>(position));
  });
  auto database_codes = IndexOf<Long>(masterfile.NumAccounts(), [&](Long position) {
    account->SetSelect(masterfile.AccountNumber(ToInteger(position)));
    return std::pair(TrimRight(account->Code()), account->Number());
  });
  masterfile.SetProgressFraction(0);
  const int rows = definition.NumAccounts;
  for (int i = 1; i <= rows; ++i) {
    HandlePendingInput();
    masterfile.SetProgressFraction(static_cast<Single>(static_cast<Double>(i) / rows / 2));
    AccountRow& row = definition.accounts(i);
    row.AccountFrom = file_codes.Find(row.from_code).value_or(0);
    if (const auto number = database_codes.Find(row.to_code)) row.AccountTo = ToInteger(*number);
  }
}

bool CompareWithLastImport(const DefinitionRecord& definition, const HeaderRecord& header, const Text& archive_name,
                           Masterfile& masterfile, Printer& report) {
  if (definition.FldMatch == kOneForOne && definition.AcctMatch == kAllToOne) return true;
  if (!FileExists(archive_name)) return true;
  FileNumber file;
  const auto last = std::make_unique<HeaderRecord>();
  const bool header_only = true;
  if (!MyReadQDXHeader(masterfile, archive_name, file.Value(), header_only, *last)) return true;

  const bool account_rows = CompareAccounts(file.Stream(), last->NumAccounts, header, report);
  const bool field_rows =
      definition.FldMatch == kManually && CompareFields(file.Stream(), last->NumFields, header, report);
  file.Close();
  const Text changes = ListOfChanges(last->NumAccounts != header.NumAccounts, last->NumFields != header.NumFields,
                                     account_rows, field_rows);
  if (changes.empty()) return true;
  return Confirm(masterfile.App(), "The following items have changed since the last import: \r\n\r\n" + changes);
}

}  // namespace tallybook
