// What the two text imports share: the audit's question, the tables of what the database knows, the words of `Math`,
// the box that ends a run, and the count of what a run touched.
#pragma once

#include <optional>
#include <set>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "import/QDXImport.h"
#include "support/Types.h"

namespace tallybook {

class AccountRecord;
class Failure;
class HostApp;
class Masterfile;

// How wide an account code stands in the database; codes of files are padded to it, and upper-cased, to be compared.
inline constexpr Long kCodeWidth = 10;

// What the audit's question ends in.
inline constexpr std::string_view kContinueAuditQuestion = "Ok to continue auditing file?";

// Shows the text and kContinueAuditQuestion with Yes and No, No being the default. True on Yes.
[[nodiscard]] bool AskContinueAudit(HostApp& app, const Text& text);

// "Add", "Subtract" or "Replace"; nothing for a value that is none of 1 to 3.
[[nodiscard]] std::optional<Text> WordOfMath(Integer math);

// A figure combined with the one that stands: added, subtracted, or for every other mode in its place.
[[nodiscard]] Double Combine(Integer math, Double stored, Double value);

// "Error:", the failure's number, ":", its statement, a line break, "Information not imported."
void TellNotImported(HostApp& app, Integer failure_code, Long statement);

// A code of a file as it is compared: trimmed, cut at or filled to 10 characters, in upper case.
[[nodiscard]] Text CutCode(const Text& code);
// The same for a code that must fit: one of more than 10 characters is failure 5.
[[nodiscard]] Text FittingCode(const Text& code);

// The accounts of a database by code. Codes stand as the database keeps them, padding and case included; the first of
// several equal ones wins, whatever their number.
class AccountCodeTable {
 public:
  // Adds the code of the next list position.
  void Add(const Text& code);
  // The list position of a code; 0 where no account has it. A look-up does not grow with the number of accounts.
  [[nodiscard]] Long PositionOf(const Text& code) const;

 private:
  std::unordered_map<Text, Long> positions_;
  Long count_ = 0;
};

// Which numbers from 1 to a highest one are marked.
class NumberTable {
 public:
  explicit NumberTable(Long highest = 0) : marked_(static_cast<std::size_t>(highest < 0 ? 0 : highest) + 1) {}
  [[nodiscard]] Long Highest() const { return static_cast<Long>(marked_.size() - 1); }
  // Failure 9 for a number outside the table.
  void Mark(Long number);
  // The marked numbers, in order.
  [[nodiscard]] std::set<Long> Marked() const;
  // False for a number outside the table too.
  [[nodiscard]] bool Holds(Long number) const {
    return number >= 1 && static_cast<std::size_t>(number) < marked_.size() &&
           marked_[static_cast<std::size_t>(number)];
  }

 private:
  std::vector<bool> marked_;
};

// What a run applied: for a closing summary.
struct TextImportTally {
  long long records = 0;
  std::set<Long> accounts;  // numbers
  std::set<Long> fields;    // numbers
  std::set<Date> dates;
};

}  // namespace tallybook
