#include "tallybook/inspect/QdxTables.h"

#include <bit>
#include <cstdint>
#include <fmt/format.h>
#include <string>

#include "base/Failure.h"
#include "platform/FileSystem.h"
#include "platform/Platform.h"
#include "qdx/HeaderItems.h"
#include "support/FileStream.h"
#include "support/Utility.h"

namespace tallybook::inspect {

namespace {

void TellChangeOf(const Text& reason, const TellFinding& tell) {
  Finding finding;
  finding.effect = Effect::kAudit;
  finding.reason = reason;
  finding.help = "look whether the definition still holds";
  tell(finding);
}

void CompareCounts(const char* of, Integer before, Integer now, const TellFinding& tell) {
  if (before == now) return;
  TellChangeOf(fmt::format("the file has {} {}, and the one that was imported last had {}", now, of, before), tell);
}

struct TableRow {
  Text key;
  Text description;
  bool operator==(const TableRow&) const = default;
};

void CompareRows(const char* of, int row, const TableRow& before, const TableRow& now, const TellFinding& tell) {
  if (before == now) return;
  TellChangeOf(fmt::format("{} {} of the file is \"{}\" ({}), and in the one that was imported last it was \"{}\" ({})",
                           of, row, now.key, now.description, before.key, before.description),
               tell);
}

// None where it cannot be read: the import compares nothing then.
std::unique_ptr<HeaderRecord> ReadCopy(const Text& path) {
  if (!FileExists(path)) return nullptr;
  try {
    return ReadTablesOf(path);
  } catch (const Failure&) {
    return nullptr;
  }
}

}  // namespace

std::unique_ptr<HeaderRecord> ReadTablesOf(const Text& path) {
  auto header = std::make_unique<HeaderRecord>();
  FileStream stream(ThePlatform().files->Open(path, Access::kRead, Sharing::kShared, Creation::kMustExist));
  const RowProgress progress = [&](HeaderTable table, Integer /*row*/) {
    if (table == HeaderTable::kFields && header->NumAccounts == 0) {
      throw Failure(FailureNumber::kDivisionByZero, "the file has fields and no accounts");
    }
  };
  ReadHeaderItems(stream, SignatureItems(), *header, progress);
  if (header->Magic != kMagic) throw Failure(FailureNumber::kInvalidArgument, "the file is no exchange file");
  if (std::bit_cast<std::uint32_t>(header->Version) != std::bit_cast<std::uint32_t>(kReadableVersion)) {
    throw Failure(FailureNumber::kInvalidArgument, "the file is of another version");
  }
  ReadHeaderItems(stream, HeadItems(), *header, progress);
  ReadHeaderItems(stream, TableItems(), *header, progress);
  return header;
}

void TellChangedTables(const DefinitionRecord& definition, const Text& archive_copy, const HeaderRecord& header,
                       const TellFinding& tell) {
  if (definition.FldMatch == kOneForOne && definition.AcctMatch == kAllToOne) return;
  const auto last = ReadCopy(archive_copy);
  if (!last) return;
  CompareCounts("accounts", last->NumAccounts, header.NumAccounts, tell);
  CompareCounts("fields", last->NumFields, header.NumFields, tell);
  for (int i = 1; i <= last->NumAccounts; ++i) {
    CompareRows("account", i, {last->AccountCodes(i), last->AccountDescs(i)},
                {header.AccountCodes(i), header.AccountDescs(i)}, tell);
  }
  if (definition.FldMatch != kManually) return;
  for (int i = 1; i <= last->NumFields; ++i) {
    CompareRows("field", i, {std::to_string(last->FieldNumbers(i)), last->FieldDescs(i)},
                {std::to_string(header.FieldNumbers(i)), header.FieldDescs(i)}, tell);
  }
}

}  // namespace tallybook::inspect
