#include "tallybook/application/DefinitionCheck.h"

#include <algorithm>
#include <bit>
#include <cstdint>
#include <map>
#include <memory>
#include <set>
#include <string>
#include <utility>

#include "base/Failure.h"
#include "import/DefinitionRecord.h"
#include "platform/FileSystem.h"
#include "platform/Platform.h"
#include "qdx/HeaderItems.h"
#include "support/FileStream.h"
#include "support/Utility.h"
#include "tallybook/application/DefinitionLook.h"

namespace tallybook::application {

namespace {

constexpr const char* kSource = "DefinitionCheck";

// The accounts and fields of a file, in its order, each once.
struct FileTables {
  Text path;
  std::vector<Text> codes;
  std::vector<Integer> fields;
  std::set<Text> code_set;
  std::set<Integer> field_set;
};

[[noreturn]] void RefuseFile(const Text& reason) {
  throw Failure(FailureNumber::kInvalidArgument, reason, kSource);
}

void ReadTables(const Text& path, HeaderRecord& header) {
  FileStream stream(ThePlatform().files->Open(path, Access::kRead, Sharing::kShared, Creation::kMustExist));
  const RowProgress quiet = [](HeaderTable /*table*/, Integer /*row*/) {};
  ReadHeaderItems(stream, SignatureItems(), header, quiet);
  if (header.Magic != kMagic) RefuseFile("it is no exchange file");
  if (std::bit_cast<std::uint32_t>(header.Version) != std::bit_cast<std::uint32_t>(kReadableVersion)) {
    RefuseFile("it is of another version");
  }
  ReadHeaderItems(stream, HeadItems(), header, quiet);
  ReadHeaderItems(stream, TableItems(), header, quiet);
}

FileTables TablesOf(const Text& path) {
  const auto header = std::make_unique<HeaderRecord>();
  ReadTables(path, *header);
  FileTables tables;
  tables.path = path;
  for (int i = 1; i <= header->NumAccounts; ++i) {
    if (tables.code_set.insert(header->AccountCodes(i)).second) tables.codes.push_back(header->AccountCodes(i));
  }
  for (int i = 1; i <= header->NumFields; ++i) {
    if (tables.field_set.insert(header->FieldNumbers(i)).second) tables.fields.push_back(header->FieldNumbers(i));
  }
  return tables;
}

// What the book has, as an import looks for it.
class BookSide {
 public:
  explicit BookSide(const engine::Book& book) : book_(book) {
    for (const auto& account : book.Description().accounts) codes_.insert(account.code);
  }
  [[nodiscard]] bool HasCode(const Text& code) const { return codes_.contains(code); }
  [[nodiscard]] bool HasField(Integer number) const { return book_.FieldPosition(number) != 0; }
  // Empty where there is no such account.
  [[nodiscard]] Text CodeOf(Long account) const {
    const Integer position = book_.AccountPosition(account);
    return position == 0 ? Text() : book_.Description().accounts[static_cast<std::size_t>(position - 1)].code;
  }

 private:
  const engine::Book& book_;
  std::set<Text> codes_;
};

class Check {
 public:
  Check(const engine::Book& book, const BookSide& side, const SeenDefinition& seen) : book_(book), side_(side) {
    checked_.number = seen.number;
    checked_.title = seen.title;
    checked_.pattern = seen.exchange_files;
    record_ = ReadDefinitionAt(seen.path);
  }

  CheckedDefinition Run() && {
    LookAtFiles();
    CheckAccounts();
    CheckFields();
    return std::move(checked_);
  }

 private:
  void LookAtFiles() {
    NeedRegularExchangeFiles(checked_.pattern);
    checked_.files = ExchangeFilesOf(checked_.pattern);
    const Text copy = ArchiveCopyName(book_.DataPath(), book_.FileExtension(), checked_.number);
    if (checked_.files.empty() && FileExists(copy)) {
      checked_.is_archive_copy = true;
      checked_.files = {copy};
    }
    for (const Text& file : checked_.files) {
      try {
        tables_.push_back(TablesOf(file));
      } catch (const Failure& failure) {
        checked_.unreadable.push_back({file, failure.Description()});
      }
    }
  }

  void AddAccount(const Text& from, const Text& to, bool in_book) {
    CheckedRow& row = checked_.accounts.emplace_back();
    row = {from, to, in_book, {}};
    for (const FileTables& file : tables_) {
      if (!file.code_set.contains(from)) row.missing_in.push_back(file.path);
    }
  }

  // What the files have, each once: nothing of it is missing anywhere.
  template <typename Value, typename Add>
  void ForEachOfFiles(std::vector<Value> FileTables::*list, Add add) const {
    std::set<Value> seen;
    for (const FileTables& file : tables_) {
      for (const Value& value : file.*list) {
        if (seen.insert(value).second) add(value);
      }
    }
  }

  void CheckAccounts() {
    if (record_.AcctMatch == kAllToOne) {
      const Text to = side_.CodeOf(record_.AcctAll);
      const Text shown = to.empty() ? "number " + std::to_string(record_.AcctAll) : to;
      ForEachOfFiles(&FileTables::codes, [&](const Text& code) {
        checked_.accounts.push_back({code, shown, !to.empty(), {}});
      });
      if (tables_.empty()) checked_.accounts.push_back({"", shown, !to.empty(), {}});
    } else if (record_.AcctMatch == kOneForOne) {
      ForEachOfFiles(&FileTables::codes, [&](const Text& code) {
        checked_.accounts.push_back({code, code, side_.HasCode(code), {}});
      });
    } else {
      for (int i = 1; i <= record_.NumAccounts; ++i) {
        const AccountRow& row = record_.accounts(i);
        AddAccount(row.from_code, row.to_code, side_.HasCode(row.to_code));
      }
    }
  }

  void CheckFields() {
    if (record_.FldMatch != kManually) {
      ForEachOfFiles(&FileTables::fields, [&](Integer number) {
        checked_.fields.push_back({std::to_string(number), std::to_string(number), side_.HasField(number), {}});
      });
      return;
    }
    for (int i = 1; i <= record_.NumFields; ++i) {
      const FieldRow& row = record_.fields(i);
      CheckedRow& checked = checked_.fields.emplace_back();
      checked = {std::to_string(row.FieldFrom), std::to_string(row.FieldTo), side_.HasField(row.FieldTo), {}};
      for (const FileTables& file : tables_) {
        if (!file.field_set.contains(row.FieldFrom)) checked.missing_in.push_back(file.path);
      }
    }
  }

  const engine::Book& book_;
  const BookSide& side_;
  DefinitionRecord record_;
  std::vector<FileTables> tables_;
  CheckedDefinition checked_;
};

std::vector<Integer> NumbersOf(const std::vector<SeenDefinition>& definitions) {
  std::vector<Integer> numbers;
  numbers.reserve(definitions.size());
  for (const SeenDefinition& seen : definitions) numbers.push_back(seen.number);
  return numbers;
}

}  // namespace

bool CheckedDefinition::Holds() const {
  const auto holds = [](const CheckedRow& row) { return row.Holds(); };
  return unreadable.empty() && std::ranges::all_of(accounts, holds) && std::ranges::all_of(fields, holds);
}

std::vector<CheckedDefinition> CheckDefinitions(WholeFiles& files, const engine::Book& book,
                                                std::optional<Integer> number) {
  const auto definitions = LookAtDefinitions(files, book.DataPath(), book.FileExtension());
  NeedReadableDefinitions(definitions);
  const BookSide side(book);
  std::vector<CheckedDefinition> checked;
  for (const SeenDefinition& seen : definitions) {
    if (!number || seen.number == *number) checked.push_back(Check(book, side, seen).Run());
  }
  if (number && checked.empty()) FailNoDefinition(book.Path(), *number, NumbersOf(definitions));
  return checked;
}

}  // namespace tallybook::application
