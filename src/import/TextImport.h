// What the two text imports share: the audit's question, the tables of what the database knows, the words of `Math`,
// the box that ends a run, and the count of what a run touched.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "base/Failure.h"
#include "base/FixedTable.h"
#include "base/Types.h"
#include "import/FieldTally.h"
#include "import/QDXImport.h"
#include "support/EncodedText.h"

namespace tallybook {

class AccountRecord;
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

// "Error:", the failure's number, ":", its statement, a line break, "Information not imported."
void TellNotImported(HostApp& app, Integer failure_code, Long statement);

// Gives what the whole of an import gives; false where the database cannot even give its application, which is told by
// the same box under the platform's title.
[[nodiscard]] bool RunOrTell(const std::function<bool()>& import);

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

// The accounts that the codes of a file stand for. A code is looked up once and remembered by its bytes; and since
// files tell of their accounts in the same order date after date, the one that came behind the last is tried first.
class AccountFinder {
 public:
  struct Account {
    Text code;           // as it is compared
    Long position = 0;   // in the list; 0 where no account has the code
    bool blank = false;  // no code at all
  };

  // `form` makes a code as it is compared: CutCode or FittingCode. The other two must outlive the object.
  AccountFinder(const AccountCodeTable& codes, EncodedText& encoding, Text (*form)(const Text& code))
      : codes_(codes), encoding_(encoding), form_(form) {}

  // The account of a code's bytes, valid until the next call. Fails as the form does.
  const Account& Find(std::string_view bytes);

 private:
  struct Remembered {
    std::string bytes;
    Account account;
  };
  struct HashOfBytes {
    using is_transparent = void;
    std::size_t operator()(std::string_view bytes) const { return std::hash<std::string_view>()(bytes); }
  };

  [[nodiscard]] Account LookUp(std::string_view bytes) const;

  const AccountCodeTable& codes_;
  EncodedText& encoding_;
  Text (*form_)(const Text& code);
  std::vector<Remembered> remembered_;  // in the order in which they came
  std::unordered_map<std::string, std::size_t, HashOfBytes, std::equal_to<>> place_of_bytes_;
  std::size_t last_ = 0;
  Account too_long_to_remember_;
};

// Which numbers from 1 to a highest one are marked.
class NumberTable {
 public:
  explicit NumberTable(Long highest = 0) : marked_(static_cast<std::size_t>(highest < 0 ? 0 : highest) + 1) {}
  [[nodiscard]] Long Highest() const { return static_cast<Long>(marked_.size() - 1); }
  // Failure 9 for a number outside the table.
  void Mark(Long number);
  // Marks a number from 0 on; a table that is too small for it grows.
  void Touch(Long number);
  // The marked numbers from 1 on, in order.
  [[nodiscard]] std::vector<Long> Marked() const;
  // False for a number outside the table too.
  [[nodiscard]] bool Holds(Long number) const {
    return number >= 1 && static_cast<std::size_t>(number) < marked_.size() &&
           marked_[static_cast<std::size_t>(number)];
  }

 private:
  std::vector<bool> marked_;
};

// What a run applied, for a closing summary; and what stopped one that gave false. Filled while it runs, so that
// whoever shows the audit's questions can look up what their words leave out.
struct TextImportTally {
  Integer math = 0;  // as the run was told, or the file's header where it takes that; 0 until it is known
  long long records = 0;
  // Figures: as the audit counts them, and as the second pass applies them. What it did not is refused: all of a file
  // with errors, or pairs behind an empty one, which it passes over.
  long long read = 0;
  long long applied = 0;
  FieldTallies
      field_tallies;  // of fields that figures were applied to, by number, which is the same in file and database
  std::vector<Long> accounts;  // numbers, each once, rising
  std::vector<Long> fields;    // likewise
  std::set<Date> dates;
  std::optional<StopReason> stop;
  bool stored =
      false;  // all figures are with the database, and its journal entry is closed: what fails then is no loss
  std::optional<StopReason> stays;  // why the file has not got its new name, where the import gives it one
  Long asked_record = 0;  // the record of the audit's last question, as "In record number" counts; 0 before the first
};

// What was applied to each field, by its number.
class AppliedByField {
 public:
  explicit AppliedByField(Long highest = 0) : sums_(static_cast<std::size_t>(highest < 0 ? 0 : highest) + 1) {}
  // Failure 9 for a number outside the table.
  void Add(Long number, Double value) {
    // A negative number wraps to one that no table reaches.
    const std::size_t place = static_cast<std::uint32_t>(number);
    if (place == 0 || place >= sums_.size()) FailOutsideTable(number, static_cast<Long>(sums_.size() - 1));
    Sum& sum = sums_[place];
    ++sum.figures;
    sum.total += value;
  }
  [[nodiscard]] FieldTallies Tallies() const;
  // The fields' numbers, in order.
  [[nodiscard]] std::vector<Long> Numbers() const;

 private:
  struct Sum {
    long long figures = 0;
    Double total = 0;
  };
  std::vector<Sum> sums_;
};

// The reason of an audit's end that has found errors, and that of one which the user stopped at an error: the first
// line of its question.
[[nodiscard]] StopReason AuditFoundErrors();
[[nodiscard]] StopReason AuditStoppedAt(const Text& question);

}  // namespace tallybook
