#include "import/TextImport.h"

#include <utility>

#include "base/CodePage.h"
#include "base/Failure.h"
#include "base/FixedTable.h"
#include "base/Statements.h"
#include "base/Texts.h"
#include "host/HostApp.h"
#include "platform/MessageBoxes.h"
#include "support/WinAPI.h"

namespace tallybook {

namespace {

void TellNotImportedUnder(const Text& title, Integer failure_code, Long statement) {
  ShowMessage(
      "Error:" + std::to_string(failure_code) + ":" + std::to_string(statement) + "\r\nInformation not imported.",
      kExclamationIcon | kOkOnly, title);
}

}  // namespace

bool AskContinueAudit(HostApp& app, const Text& text) {
  const Long style = kQuestionIcon | kYesNo | kSecondButtonDefault;
  return AskMessage(text + "\r\n\r\n" + Text(kContinueAuditQuestion), style, app.Title()) == kYes;
}

std::optional<Text> WordOfMath(Integer math) {
  if (math == static_cast<Integer>(eMath::mAdd)) return "Add";
  if (math == static_cast<Integer>(eMath::mSubtract)) return "Subtract";
  if (math == static_cast<Integer>(eMath::mReplace)) return "Replace";
  return std::nullopt;
}

void TellNotImported(HostApp& app, Integer failure_code, Long statement) {
  TellNotImportedUnder(app.Title(), failure_code, statement);
}

bool RunOrTell(const std::function<bool()>& import) {
  Statements at(Policy::kLeave, [](const Failure& failure) {
    TellNotImportedUnder("", failure.Code(), failure.Statement());
    return false;
  });
  bool done = false;
  return at.Run([&] { done = import(); }) && done;
}

StopReason AuditFoundErrors() {
  return {.words = "the audit found errors; nothing was imported"};
}

StopReason AuditStoppedAt(const Text& question) {
  return {.words = TrimBoth(question.substr(0, question.find("\r\n")))};
}

Text CutCode(const Text& code) {
  return UpperCase(PadRight(TrimBoth(code), ' ', kCodeWidth));
}

Text FittingCode(const Text& code) {
  const Text trimmed = TrimBoth(code);
  if (CharacterCount(trimmed) <= kCodeWidth) return CutCode(trimmed);
  throw Failure(FailureNumber::kInvalidArgument,
                "The account code \"" + trimmed + "\" has more than " + std::to_string(kCodeWidth) + " characters");
}

void AccountCodeTable::Add(const Text& code) {
  positions_.try_emplace(code, ++count_);
}

Long AccountCodeTable::PositionOf(const Text& code) const {
  const auto found = positions_.find(code);
  return found == positions_.end() ? 0 : found->second;
}

AccountFinder::Account AccountFinder::LookUp(std::string_view bytes) const {
  Account account;
  account.code = form_(encoding_.Decode(bytes));
  account.position = codes_.PositionOf(account.code);
  account.blank = TrimRight(account.code).empty();
  return account;
}

const AccountFinder::Account& AccountFinder::Find(std::string_view bytes) {
  // Bounds for files that make up codes without end.
  constexpr std::size_t kLongest = 64;
  constexpr std::size_t kMost = 65'536;
  if (bytes.size() > kLongest) return too_long_to_remember_ = LookUp(bytes);
  for (const std::size_t place : {last_, last_ + 1, std::size_t{0}}) {
    if (place < remembered_.size() && remembered_[place].bytes == bytes) {
      last_ = place;
      return remembered_[place].account;
    }
  }
  if (const auto found = place_of_bytes_.find(bytes); found != place_of_bytes_.end()) {
    last_ = found->second;
    return remembered_[last_].account;
  }
  Account account = LookUp(bytes);
  if (remembered_.size() == kMost) {
    remembered_.clear();
    place_of_bytes_.clear();
  }
  last_ = remembered_.size();
  place_of_bytes_.emplace(bytes, last_);
  return remembered_.emplace_back(Remembered{std::string(bytes), std::move(account)}).account;
}

void NumberTable::Touch(Long number) {
  const auto place = static_cast<std::size_t>(number);
  if (place >= marked_.size()) marked_.resize(place + 1);
  marked_[place] = true;
}

void NumberTable::Mark(Long number) {
  if (number < 1 || number > Highest()) FailOutsideTable(number, Highest());
  marked_[static_cast<std::size_t>(number)] = true;
}

std::vector<Long> NumberTable::Marked() const {
  std::vector<Long> numbers;
  for (Long number = 1; number <= Highest(); ++number) {
    if (Holds(number)) numbers.push_back(number);
  }
  return numbers;
}

FieldTallies AppliedByField::Tallies() const {
  FieldTallies tallies;
  for (std::size_t number = 1; number < sums_.size(); ++number) {
    const Sum& sum = sums_[number];
    if (sum.figures == 0) continue;
    const auto field = static_cast<Long>(number);
    tallies.push_back({.in_file = field, .in_database = field, .applied = sum.figures, .applied_total = sum.total});
  }
  return tallies;
}

std::vector<Long> AppliedByField::Numbers() const {
  std::vector<Long> numbers;
  for (const FieldTally& tally : Tallies()) numbers.push_back(tally.in_database);
  return numbers;
}

}  // namespace tallybook
