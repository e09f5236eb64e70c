#include "import/TextImport.h"

#include "host/HostApp.h"
#include "support/CodePage.h"
#include "support/Failure.h"
#include "support/FixedTable.h"
#include "support/Utility.h"
#include "support/WinAPI.h"

namespace tallybook {

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

Double Combine(Integer math, Double stored, Double value) {
  if (math == static_cast<Integer>(eMath::mAdd)) return stored + value;
  if (math == static_cast<Integer>(eMath::mSubtract)) return stored - value;
  return value;
}

void TellNotImported(HostApp& app, Integer failure_code, Long statement) {
  ShowMessage(
      "Error:" + std::to_string(failure_code) + ":" + std::to_string(statement) + "\r\nInformation not imported.",
      kExclamationIcon | kOkOnly, app.Title());
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

void NumberTable::Mark(Long number) {
  if (number < 1 || number > Highest()) FailOutsideTable(number, Highest());
  marked_[static_cast<std::size_t>(number)] = true;
}

std::set<Long> NumberTable::Marked() const {
  std::set<Long> numbers;
  for (Long number = 1; number <= Highest(); ++number) {
    if (Holds(number)) numbers.insert(number);
  }
  return numbers;
}

}  // namespace tallybook
