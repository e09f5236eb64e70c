// An exchange file put together byte by byte, as docs/exchange-file.md tells them, with nothing of the writer under
// src/: what the imports' tests read is not what the same system's export happens to write.
#pragma once

#include <bit>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "base/Dates.h"
#include "base/Types.h"

namespace tallybook::testing {

// The bytes of a file as they are appended. Texts are ASCII.
class FileBytes {
 public:
  FileBytes& I2(int value) { return Raw(static_cast<std::uint64_t>(value), 2); }
  FileBytes& R4(Single value) { return Raw(std::bit_cast<std::uint32_t>(value), 4); }
  FileBytes& R8(Double value) { return Raw(std::bit_cast<std::uint64_t>(value), 8); }
  FileBytes& Fixed(const Text& text) {
    bytes_ += text;
    return *this;
  }
  FileBytes& Counted(const Text& text) { return I2(static_cast<int>(text.size())).Fixed(text); }
  FileBytes& MonthDayYear(Date date) {
    const DateParts parts = PartsOf(date);
    return I2(parts.month).I2(parts.day).I2(parts.year);
  }
  [[nodiscard]] const std::string& Bytes() const { return bytes_; }

 private:
  FileBytes& Raw(std::uint64_t bits, int width) {
    for (int i = 0; i < width; ++i) bytes_ += static_cast<char>((bits >> (8 * i)) & 0xFFU);
    return *this;
  }

  std::string bytes_;
};

struct ExchangeFile {
  struct Account {
    Text code;
    Text description;
  };
  struct Field {
    Integer number = 0;
    Text description;
  };
  struct Value {
    Integer field_position = 0;
    Double value = 0;
  };
  struct Day {
    Date date = 0;
    std::vector<Value> values;
  };
  struct Block {
    Integer account_position = 0;
    std::vector<Day> days;
  };

  Date first = 0;
  Date last = 0;
  std::vector<Account> accounts;
  std::vector<Field> fields;
  std::vector<Block> blocks;
  std::string behind_blocks;             // bytes between the last block and the end mark
  std::optional<Integer> account_count;  // in the header, where it lies about the table
  Text magic = "Kelvo QDX";

  // Up to and including the year table; then the two tables; then the figures.
  [[nodiscard]] std::string Head() const {
    FileBytes file;
    file.Fixed(magic).R4(1.0F).Fixed("02-03-2004").Fixed("14:05:09").I2(7).MonthDayYear(first).MonthDayYear(last);
    file.Counted("South Shop").R4(1.0F).I2(kDayLevel).I2(0).I2(0).I2(0).I2(1);
    file.I2(1).Counted("January").I2(31);
    file.I2(static_cast<int>(fields.size())).I2(1);
    file.I2(account_count.value_or(static_cast<Integer>(accounts.size())));
    file.I2(2003).MonthDayYear(DateFromParts(2003, 1, 1)).I2(2003);
    return file.Bytes();
  }
  [[nodiscard]] std::string Tables() const {
    FileBytes file;
    for (const Account& account : accounts) file.Counted(account.code).Counted(account.description);
    for (const Field& field : fields) file.I2(field.number).Counted(field.description);
    return file.Bytes();
  }
  [[nodiscard]] std::string Body() const {
    FileBytes file;
    for (const Block& block : blocks) {
      file.I2(block.account_position);
      for (const Day& day : block.days) {
        file.MonthDayYear(day.date).I2(static_cast<int>(day.values.size()));
        for (const Value& value : day.values) file.I2(value.field_position).R8(value.value);
      }
      file.I2(0).I2(0).I2(0);
    }
    return file.Fixed(behind_blocks).I2(0).I2(0).I2(0).I2(0).Bytes();
  }
  [[nodiscard]] std::string Bytes() const { return Head() + Tables() + Body(); }
};

}  // namespace tallybook::testing
