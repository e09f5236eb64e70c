#include "tallybook/inspect/QdxMatch.h"

#include <fmt/format.h>
#include <unordered_map>
#include <unordered_set>
#include <utility>

#include "base/Failure.h"
#include "base/Narrow.h"
#include "host/Masterfile.h"
#include "import/Matching.h"

namespace tallybook::inspect {

namespace {

constexpr const char* kNowhere = "is sent nowhere by the definition";
constexpr const char* kSendElsewhere = "send one of them elsewhere, unless this is meant";
constexpr const char* kRepeated = "stands in the file's table before, and only the first place is looked for";

// What a finding is about.
Finding AccountOf(const Text& code) {
  Finding finding;
  finding.account = code;
  return finding;
}
Finding FieldOf(Integer number) {
  Finding finding;
  finding.field = number;
  return finding;
}

Finding With(Finding finding, Effect effect, const Text& reason, const Text& help) {
  finding.effect = effect;
  finding.reason = reason;
  finding.help = help;
  return finding;
}

// By position less 1: whether the account's code stands in the table before.
std::vector<bool> RepeatedAccounts(const HeaderRecord& header) {
  std::unordered_set<Text> codes;
  std::vector<bool> repeated;
  for (int i = 1; i <= header.NumAccounts; ++i) repeated.push_back(!codes.insert(header.AccountCodes(i)).second);
  return repeated;
}

}  // namespace

Integer QdxTargets::At(Integer position) const {
  return IsIn(position) ? numbers_[Index(position)] : Integer{0};
}

QdxMatch::QdxMatch(Masterfile& masterfile, DefinitionRecord definition, const HeaderRecord& header)
    : masterfile_(masterfile),
      definition_(std::move(definition)),
      header_(header),
      repeats_account_(RepeatedAccounts(header)) {}

void QdxMatch::Match(const Text& joined, const TellFinding& tell) {
  try {
    tallybook::FillTables(definition_, header_, masterfile_);
    MatchAccountCodes(definition_, header_, masterfile_);
  } catch (const Failure& failure) {
    Finding finding;
    finding.effect = Effect::kAudit;
    finding.reason = "the definition cannot be matched: " + failure.Description();
    tell(finding);
    return;
  }
  MatchAccounts(joined, tell);
  MatchFields(joined, tell);
}

void QdxMatch::MatchAccounts(const Text& joined, const TellFinding& tell) {
  for (int i = 1; i <= definition_.NumAccounts; ++i) {
    const AccountRow& row = definition_.accounts(i);
    TakeRow({.from = AccountOf(row.from_code),
             .position = row.AccountFrom,
             .to = "\"" + row.to_code + "\"",
             .kind = "account",
             .key = "account code",
             .number = row.AccountTo},
            accounts_, tell);
  }
  if (definition_.AcctMatch == kAllToOne) return;  // that they meet is what was asked for
  TellJoined(accounts_, header_.NumAccounts, tell, [&](const Place& place) {
    return With(AccountOf(header_.AccountCodes(place.position)), Effect::kSilent,
                fmt::format("goes to the same account as \"{}\": their figures are {}",
                            header_.AccountCodes(place.first), joined),
                kSendElsewhere);
  });
}

void QdxMatch::MatchFields(const Text& joined, const TellFinding& tell) {
  for (int i = 1; i <= definition_.NumFields; ++i) {
    const FieldRow& row = definition_.fields(i);
    TakeRow({.from = FieldOf(row.FieldFrom),
             .position = FieldPosition(row.FieldFrom),
             .to = fmt::format("field {}", row.FieldTo),
             .kind = "field",
             .key = "field number",
             .number = IsInBook(row.FieldTo) ? row.FieldTo : Integer{0}},
            fields_, tell);
  }
  TellJoined(fields_, header_.NumFields, tell, [&](const Place& place) {
    return With(FieldOf(header_.FieldNumbers(place.position)), Effect::kSilent,
                fmt::format("goes to the same field as field {}: their figures are {}",
                            header_.FieldNumbers(place.first), joined),
                kSendElsewhere);
  });
}

// Of several rows of one place the last counts.
void QdxMatch::TakeRow(const Row& row, QdxTargets& targets, const TellFinding& tell) {
  if (row.position == 0) {
    tell(With(row.from, Effect::kAudit, "is in the definition and not in the file",
              "take its row out of the definition, or have the file made with it"));
    return;
  }
  targets.Name(row.position);
  if (row.number == 0) {
    tell(With(row.from, Effect::kAudit, fmt::format("goes to {}, which is no {} of the book", row.to, row.key),
              fmt::format("add the {} to the book, or send it elsewhere", row.kind)));
    return;
  }
  const Integer before = targets.At(row.position);
  if (before != 0 && before != row.number) {
    tell(With(row.from, Effect::kSilent,
              fmt::format("has two rows in the definition: only the one to {} counts", row.to),
              "take one of them out"));
  }
  targets.Set(row.position, row.number);
}

void QdxMatch::TellJoined(const QdxTargets& targets, Integer places, const TellFinding& tell,
                          const std::function<Finding(const Place& place)>& finding_of) {
  std::unordered_map<Integer, Integer> first_places;  // by number
  for (int i = 1; i <= places; ++i) {
    const auto position = static_cast<Integer>(i);
    const Integer number = targets.At(position);
    if (number == 0) continue;
    const auto [first, is_new] = first_places.try_emplace(number, position);
    if (!is_new) tell(finding_of({.position = position, .first = first->second}));
  }
}

Integer QdxMatch::FieldPosition(Integer number) const {
  for (int i = 1; i <= header_.NumFields; ++i) {
    if (header_.FieldNumbers(i) == number) return static_cast<Integer>(i);
  }
  return 0;
}

bool QdxMatch::IsInBook(Integer field_number) const {
  const Long fields = masterfile_.NumFields();
  for (Long i = 1; i <= fields; ++i) {
    if (masterfile_.FieldNumber(ToInteger(i)) == field_number) return true;
  }
  return false;
}

Text QdxMatch::WhyAccountIsLeftOut(Integer position) const {
  if (accounts_.IsNamed(position)) return {};
  return repeats_account_[static_cast<std::size_t>(position - 1)] ? kRepeated : kNowhere;
}

Text QdxMatch::WhyFieldIsLeftOut(Integer position) const {
  if (fields_.IsNamed(position)) return {};
  return FieldPosition(header_.FieldNumbers(position)) < position ? kRepeated : kNowhere;
}

}  // namespace tallybook::inspect
