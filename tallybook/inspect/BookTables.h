// What a book knows of the accounts and fields that a text file names, read once: the same tables that the imports make
// of it.
#pragma once

#include <unordered_map>

#include "base/Types.h"
#include "import/TextImport.h"

namespace tallybook {
class Masterfile;
}

namespace tallybook::inspect {

class BookTables {
 public:
  // `masterfile` is read here and not kept.
  explicit BookTables(Masterfile& masterfile);

  // The number of the account of a code as it is compared (CutCode); 0 where no account has it.
  [[nodiscard]] Long AccountOfCode(const Text& code) const;
  // The list position of an account's number; 0 where it is none of the book.
  [[nodiscard]] Long AccountPosition(Long number) const;
  // The same for a field.
  [[nodiscard]] Long FieldPosition(Long number) const;
  [[nodiscard]] bool IsSystemField(Long number) const { return system_fields_.Holds(number); }

  [[nodiscard]] Long Accounts() const { return static_cast<Long>(numbers_.size()); }
  [[nodiscard]] Long Fields() const { return static_cast<Long>(fields_.size()); }
  // The highest number that a field may have.
  [[nodiscard]] Long MaxFields() const { return system_fields_.Highest(); }

 private:
  AccountCodeTable codes_;
  std::vector<Long> numbers_;  // by list position, the first at 0
  std::unordered_map<Long, Long> accounts_;
  std::unordered_map<Long, Long> fields_;
  NumberTable system_fields_;
};

}  // namespace tallybook::inspect
