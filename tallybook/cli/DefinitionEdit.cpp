#include "tallybook/cli/DefinitionEdit.h"

#include <charconv>
#include <fmt/format.h>
#include <string_view>

#include "base/CodePage.h"
#include "base/Failure.h"
#include "base/Narrow.h"
#include "base/Texts.h"
#include "import/QDXImport.h"
#include "platform/FileSystem.h"
#include "platform/Platform.h"
#include "qdx/HeaderRecord.h"
#include "support/Utility.h"
#include "tallybook/application/DefinitionLook.h"
#include "tallybook/cli/BookLookUp.h"
#include "tallybook/cli/DefinitionList.h"
#include "tallybook/cli/ExitStatus.h"
#include "tallybook/cli/Lines.h"

namespace tallybook::cli {

namespace {

[[noreturn]] void Fail(const Text& what) {
  throw Failure(FailureNumber::kInvalidArgument, what);
}

struct Pair {
  Text from;
  Text to;
};

Pair SplitPair(const Text& option, const Text& text) {
  const std::size_t middle = text.find('=');
  if (middle == Text::npos || middle == 0 || middle + 1 == text.size()) {
    throw WrongUse(fmt::format("{}: '{}' is no pair like FROM=TO", option, text));
  }
  return {TrimRight(text.substr(0, middle)), TrimRight(text.substr(middle + 1))};
}

Integer FieldNumberIn(const Text& pair, const Text& text) {
  Integer number = 0;
  const char* end = text.data() + text.size();
  const auto [stop, error] = std::from_chars(text.data(), end, number);
  if (error == std::errc() && stop == end && number > 0) return number;
  throw WrongUse(fmt::format("--map-field: '{}' in '{}' is no field number", text, pair));
}

// A definition file has no escape for a quote, so such a text would be split when it is read back. A character that the
// file's code page lacks is found here, before anything is written.
void CheckFileText(const Text& option, const std::optional<Text>& text) {
  if (!text) return;
  if (text->empty()) throw WrongUse(option + ": a text is wanted");
  if (text->find_first_of("\"\r\n") != Text::npos) {
    throw WrongUse(
        fmt::format("{}: '{}' holds a quote or a line break, which a definition cannot keep", option, *text));
  }
  (void)ToCodePage(*text);
}

// Reads the definition's exchange file into the shared header: the file of exactly that name, the oldest that matches
// it, or the archive copy. False where there is none that can be read.
bool ReadHeader(CDataExchange& exchange) {
  const Text pattern = exchange.QdxFileName();
  Text name = pattern;
  std::vector<Text> matches;
  if (!FileExists(pattern) && MatchFiles(pattern, matches) > 0) name = matches.front();
  Integer file_number = 0;
  const bool backup_ok = true;
  const bool read = exchange.ReadQDXHeader(name, file_number, backup_ok);
  CloseFileEx(file_number);
  return read;
}

void NeedHeader(CDataExchange& exchange) {
  if (ReadHeader(exchange)) return;
  Fail(
      fmt::format("'{}' cannot be read, nor is there an archive copy: account rows are kept by the accounts of an "
                  "exchange file, so one is needed",
                  exchange.QdxFileName()));
}

Integer PositionInHeader(const Text& code, const Text& file) {
  const HeaderRecord& header = SharedHeader();
  for (int i = 1; i <= header.NumAccounts; ++i) {
    if (header.AccountCodes(i) == code) return static_cast<Integer>(i);
  }
  Fail(fmt::format("--map-account: '{}' is no account code of {}", code, file));
}

// Field rows are kept by number, so a definition can be made before its file is there; that is said, since nothing is
// looked at then.
void CheckFieldsFrom(const std::vector<Integer>& numbers, CDataExchange& exchange) {
  if (!ReadHeader(exchange)) {
    Warn(
        fmt::format("'{}' cannot be read, nor is there an archive copy: whether it has the fields of --map-field was "
                    "not looked at",
                    exchange.QdxFileName()));
    return;
  }
  const HeaderRecord& header = SharedHeader();
  for (const Integer number : numbers) {
    int i = 1;
    while (i <= header.NumFields && header.FieldNumbers(i) != number) ++i;
    if (i > header.NumFields)
      Fail(fmt::format("--map-field: {} is no field number of {}", number, exchange.TrueFilename()));
  }
}

void NeedRoom(const Text& option, std::size_t rows, Long room) {
  if (rows > static_cast<std::size_t>(room)) {
    Fail(fmt::format("{}: {} rows were given; a definition of this book holds {}", option, rows, room));
  }
}

void SetAccountRows(const std::vector<Text>& pairs, CDataExchange& exchange, const engine::Book& book) {
  NeedRoom("--map-account", pairs.size(), exchange.CurrentDefinition().accounts.Rows());
  for (std::size_t i = 0; i < pairs.size(); ++i) {
    const Pair pair = SplitPair("--map-account", pairs[i]);
    const auto row = static_cast<Integer>(i + 1);
    exchange.SetAccountFrom(row, PositionInHeader(pair.from, exchange.TrueFilename()));
    exchange.SetAccountTo(row, ToInteger(AccountNumberOf(book, pair.to)));
  }
  exchange.SetNumAccounts(static_cast<Integer>(pairs.size()));
}

// The rows that the definition has: their codes stand in its file, and the positions are worked out anew.
void ResolveAccountRows(CDataExchange& exchange, const engine::Book& book) {
  exchange.MatchAccountCodes();
  const DefinitionRecord& definition = exchange.CurrentDefinition();
  for (int i = 1; i <= definition.NumAccounts; ++i) {
    const AccountRow& row = definition.accounts(i);
    if (row.AccountFrom == 0) {
      Fail(
          fmt::format("the account row {}={} cannot be kept: {} has no account of that code; give the rows anew with "
                      "--map-account",
                      row.from_code, row.to_code, exchange.TrueFilename()));
    }
    if (row.AccountTo == 0) {
      Fail(
          fmt::format("the account row {}={} cannot be kept: {} has no account '{}'; give the rows anew with "
                      "--map-account",
                      row.from_code, row.to_code, book.Path(), row.to_code));
    }
  }
}

void ApplyAccounts(const DefinitionChanges& changes, CDataExchange& exchange, engine::Book& book) {
  const Text word = changes.accounts.value_or("");
  if (word == kOneForOneWord || word.starts_with(kAllToOnePrefix)) {
    const bool all_to_one = word != kOneForOneWord;
    exchange.SetAcctAll(all_to_one
                            ? ToInteger(AccountNumberOf(book, TrimRight(word.substr(Text(kAllToOnePrefix).size()))))
                            : Integer{0});
    exchange.SetAcctMatch(all_to_one ? kAllToOne : kOneForOne);
    exchange.SetNumAccounts(0);
    return;
  }
  if (word == kManualWord || !changes.map_account.empty()) {
    exchange.SetAcctMatch(kManually);
    exchange.SetAcctAll(0);
  }
  const bool keeps_rows = changes.map_account.empty() && exchange.NumAccounts() > 0;
  if (changes.map_account.empty() && !keeps_rows) return;
  NeedHeader(exchange);
  if (keeps_rows) {
    ResolveAccountRows(exchange, book);
  } else {
    SetAccountRows(changes.map_account, exchange, book);
  }
}

void ApplyFields(const DefinitionChanges& changes, CDataExchange& exchange, const engine::Book& book) {
  if (changes.fields) exchange.SetFldMatch(*changes.fields);
  if (changes.fields && *changes.fields == kOneForOne) exchange.SetNumFields(0);
  if (changes.map_field.empty()) return;
  NeedRoom("--map-field", changes.map_field.size(), exchange.CurrentDefinition().fields.Rows());
  exchange.SetFldMatch(kManually);
  std::vector<Integer> numbers_from;
  for (std::size_t i = 0; i < changes.map_field.size(); ++i) {
    const Pair pair = SplitPair("--map-field", changes.map_field[i]);
    const Integer to = FieldNumberIn(changes.map_field[i], pair.to);
    NeedField(book, to);
    numbers_from.push_back(FieldNumberIn(changes.map_field[i], pair.from));
    exchange.SetFieldFrom(static_cast<Integer>(i + 1), numbers_from.back());
    exchange.SetFieldTo(static_cast<Integer>(i + 1), to);
  }
  CheckFieldsFrom(numbers_from, exchange);
  exchange.SetNumFields(static_cast<Integer>(changes.map_field.size()));
}

}  // namespace

void CheckChanges(const DefinitionChanges& changes) {
  CheckFileText("--title", changes.title);
  CheckFileText("--file", changes.file);
  if (changes.accounts) {
    const Text& word = *changes.accounts;
    const bool all_to_one = word.starts_with(kAllToOnePrefix) && word.size() > Text(kAllToOnePrefix).size();
    if (word != kOneForOneWord && word != kManualWord && !all_to_one) {
      throw WrongUse(fmt::format("--accounts: '{}' is none of one-for-one, all-to-one:CODE, manual", word));
    }
    if (word != kManualWord && !changes.map_account.empty()) {
      throw WrongUse("--map-account needs accounts that are matched manually, not --accounts " + word);
    }
  }
  if (changes.fields && *changes.fields != kManually && !changes.map_field.empty()) {
    throw WrongUse("--map-field needs fields that are matched manually, not --fields one-for-one");
  }
  for (const Text& pair : changes.map_account) (void)SplitPair("--map-account", pair);
  for (const Text& pair : changes.map_field) {
    const Pair numbers = SplitPair("--map-field", pair);
    (void)FieldNumberIn(pair, numbers.from);
    (void)FieldNumberIn(pair, numbers.to);
  }
}

void ApplyChanges(const DefinitionChanges& changes, CDataExchange& exchange, engine::Book& book) {
  if (changes.title) exchange.SetDesc(kSelected, *changes.title);
  if (changes.file) exchange.SetQdxFileName(kSelected, *changes.file);
  if (changes.after) exchange.SetDisp(*changes.after);
  application::NeedRegularExchangeFiles(exchange.QdxFileName());
  ApplyAccounts(changes, exchange, book);
  ApplyFields(changes, exchange, book);
}

void BackupQdxFile(const CDataExchange& exchange) {
  const Text file = exchange.QdxFileName();
  if (!FileExists(file)) return;
  const Text copy = exchange.QDXBackupName();
  if (!KillFile(copy)) Fail(copy + ": the old archive copy cannot be deleted");
  ThePlatform().files->Copy(file, copy);
}

}  // namespace tallybook::cli
