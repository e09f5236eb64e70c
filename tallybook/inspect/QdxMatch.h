// An exchange definition held against the tables of a file and of a book, as the import holds it: which account and
// field of the file goes where, what the import would refuse the file for, and what it joins or passes over in silence.
#pragma once

#include <functional>
#include <vector>

#include "base/Types.h"
#include "import/DefinitionRecord.h"
#include "qdx/HeaderRecord.h"
#include "tallybook/inspect/Finding.h"

namespace tallybook {
class Masterfile;
}

namespace tallybook::inspect {

using TellFinding = std::function<void(const Finding& finding)>;

// Where the places of one of a file's tables go, by position from 1.
class QdxTargets {
 public:
  // The number in the book; 0 where the place goes nowhere. No table has a place beyond 9,999.
  [[nodiscard]] Integer At(Integer position) const;
  // Whether a row of the definition names the place, be it that it can go where the row says or not.
  [[nodiscard]] bool IsNamed(Integer position) const { return IsIn(position) && named_[Index(position)]; }

  void Name(Integer position) { named_[Index(position)] = true; }
  void Set(Integer position, Integer number) { numbers_[Index(position)] = number; }

 private:
  static bool IsIn(Integer position) { return position >= 1 && position <= kMaxHeaderAccounts; }
  static std::size_t Index(Integer position) { return static_cast<std::size_t>(position - 1); }

  std::vector<Integer> numbers_ = std::vector<Integer>(kMaxHeaderAccounts);
  std::vector<bool> named_ = std::vector<bool>(kMaxHeaderAccounts);
};

class QdxMatch {
 public:
  // `definition` is as it stands on the disk. The other two outlive this.
  QdxMatch(Masterfile& masterfile, DefinitionRecord definition, const HeaderRecord& header);

  // Tells of each row that cannot be matched, and of rows that meet. Once; what stands below is known from then on.
  //   joined  what becomes of figures that meet: "added up"
  void Match(const Text& joined, const TellFinding& tell);

  [[nodiscard]] const QdxTargets& Accounts() const { return accounts_; }
  [[nodiscard]] const QdxTargets& Fields() const { return fields_; }

  // Why the figures of a place in the file's tables are left out though the file is imported; empty where they are not.
  [[nodiscard]] Text WhyAccountIsLeftOut(Integer position) const;
  [[nodiscard]] Text WhyFieldIsLeftOut(Integer position) const;

 private:
  // A row of one of the definition's tables.
  struct Row {
    Finding from;          // what a finding about it names
    Integer position = 0;  // in the file's table; 0 where that has none
    Text to;
    Text kind;
    Text key;
    Integer number = 0;  // in the book; 0 where that has none
  };
  // A place of the file that goes where an earlier one does.
  struct Place {
    Integer position = 0;
    Integer first = 0;
  };

  void MatchAccounts(const Text& joined, const TellFinding& tell);
  void MatchFields(const Text& joined, const TellFinding& tell);
  static void TakeRow(const Row& row, QdxTargets& targets, const TellFinding& tell);
  static void TellJoined(const QdxTargets& targets, Integer places, const TellFinding& tell,
                         const std::function<Finding(const Place& place)>& finding_of);
  [[nodiscard]] Integer FieldPosition(Integer number) const;
  [[nodiscard]] bool IsInBook(Integer field_number) const;

  Masterfile& masterfile_;
  DefinitionRecord definition_;
  const HeaderRecord& header_;
  std::vector<bool> repeats_account_;  // by position less 1: whether its code stands in the table before
  QdxTargets accounts_;
  QdxTargets fields_;
};

}  // namespace tallybook::inspect
