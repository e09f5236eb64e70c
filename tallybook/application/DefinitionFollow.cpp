#include "tallybook/application/DefinitionFollow.h"

#include <algorithm>
#include <map>
#include <string>

#include "base/Failure.h"
#include "exchange/DefinitionFile.h"
#include "tallybook/application/DefinitionLook.h"

namespace tallybook::application {

namespace {

using engine::BookDifference;

// What becomes of accounts and fields, in words, by what a definition knows them by.
struct Fates {
  explicit Fates(const BookDifference& difference) {
    for (const auto& [row, position] : difference.accounts.removed) {
      by_account[row.number] = "account " + row.code + " is removed";
      by_code[row.code] =
          TakesCode(difference, row.code) ? "account " + row.code + " is another account now" : by_account[row.number];
    }
    for (const auto& [before, after] : difference.accounts.changed) {
      by_code[before.code] = by_account[after.number] = before.code == after.code
                                                            ? "account " + before.code + " has another description now"
                                                            : "account " + before.code + " is " + after.code + " now";
      if (before.code != after.code) new_codes[before.code] = after.code;
    }
    for (const auto& [row, position] : difference.fields.removed) {
      by_field[row.number] = "field " + std::to_string(row.number) + " is removed";
    }
    for (const auto& [before, after] : difference.fields.changed) {
      by_field[after.number] = "field " + std::to_string(after.number) + " is changed";
    }
  }

  // Whether another account has that code afterwards.
  static bool TakesCode(const BookDifference& difference, const Text& code) {
    return std::ranges::any_of(difference.accounts.added, [&](const auto& added) { return added.row.code == code; }) ||
           std::ranges::any_of(difference.accounts.changed,
                               [&](const auto& changed) { return changed.after.code == code; });
  }

  std::map<Text, Text> by_code;
  std::map<Long, Text> by_account;
  std::map<Integer, Text> by_field;
  std::map<Text, Text> new_codes;
};

// A definition file has no escape for a quote, so such a code would be split when it is read back.
void NeedKeptCode(const Text& code) {
  if (code.find_first_of("\"\r\n") == Text::npos) return;
  throw Failure(FailureNumber::kInvalidArgument,
                "the code '" + code + "' holds a quote or a line break, which an exchange definition cannot keep",
                "DefinitionFollow");
}

template <typename Key, typename Asked>
void AddFate(const std::map<Key, Text>& fates, const Asked& asked, DefinitionUse& use) {
  const auto found = fates.find(asked);
  if (found == fates.end() || std::ranges::find(use.names, found->second) != use.names.end()) return;
  use.names.push_back(found->second);
}

}  // namespace

std::vector<DefinitionUse> DefinitionsNaming(WholeFiles& files, const Text& folder, const Text& extension,
                                             const BookDifference& difference) {
  const std::vector<SeenDefinition> seen = LookAtDefinitions(files, folder, extension);
  NeedReadableDefinitions(seen);
  const Fates fates(difference);
  std::vector<DefinitionUse> uses;
  for (const SeenDefinition& definition : seen) {
    const DefinitionRecord record = ReadDefinitionAt(definition.path);
    DefinitionUse use = {definition.number, definition.title, definition.path, {}, false};
    for (int i = 1; i <= record.NumAccounts; ++i) {
      AddFate(fates.by_code, record.accounts(i).to_code, use);
      use.can_follow = use.can_follow || fates.new_codes.contains(record.accounts(i).to_code);
    }
    if (record.AcctMatch == kAllToOne) AddFate(fates.by_account, record.AcctAll, use);
    for (int i = 1; i <= record.NumFields; ++i) AddFate(fates.by_field, record.fields(i).FieldTo, use);
    if (!use.names.empty()) uses.push_back(use);
  }
  return uses;
}

FollowedDefinitions::FollowedDefinitions(WholeFiles& files, const std::vector<DefinitionUse>& uses,
                                         const BookDifference& difference) {
  const Fates fates(difference);
  for (const DefinitionUse& use : uses) {
    if (!use.can_follow) continue;
    DefinitionRecord record = ReadDefinitionAt(use.path);
    // The writer asks for the codes by what stands in the rows: here the rows' own numbers.
    const DefinitionRecord codes = record;
    for (int i = 1; i <= record.NumAccounts; ++i) {
      record.accounts(i).AccountFrom = record.accounts(i).AccountTo = static_cast<Integer>(i);
    }
    const auto to_code = [&](Integer row) {
      const Text& code = codes.accounts(row).to_code;
      const auto found = fates.new_codes.find(code);
      if (found == fates.new_codes.end()) return code;
      NeedKeptCode(found->second);
      return found->second;
    };
    auto output = std::make_unique<WholeOutput>(files, use.path);
    WriteDefinition(use.path, record, {[&](Integer row) { return codes.accounts(row).from_code; }, to_code});
    written_.push_back({use.number, use.path, std::move(output)});
  }
}

std::vector<FollowedDefinitions::NotKept> FollowedDefinitions::Keep() {
  std::vector<NotKept> not_kept;
  for (const Written& written : written_) {
    try {
      if (!written.output->Keep())
        not_kept.push_back({written.number, written.path + ": it could not be written whole"});
    } catch (const Failure& failure) {
      not_kept.push_back({written.number, failure.Description()});
    }
  }
  return not_kept;
}

}  // namespace tallybook::application
