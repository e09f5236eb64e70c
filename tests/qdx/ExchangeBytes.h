// Exchange files made and taken apart by hand, from the bytes that docs/exchange-file.md tells. Nothing here uses the
// code under test, not even its byte order, so that both can be held against each other.
#pragma once

#include <array>
#include <bit>
#include <cstdint>
#include <initializer_list>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace tallybook::testing {

// --- Making ----------------------------------------------------------------------------------------------------------

// Bytes in file order.
class Bytes {
 public:
  Bytes& Chars(std::string_view chars) {
    bytes_ += chars;
    return *this;
  }
  Bytes& I2(int number) { return Little(static_cast<std::uint16_t>(number), 2); }
  Bytes& I2s(std::initializer_list<int> numbers) {
    for (const int number : numbers) I2(number);
    return *this;
  }
  Bytes& R4(float number) { return Little(std::bit_cast<std::uint32_t>(number), 4); }
  Bytes& R8(double number) { return Little(std::bit_cast<std::uint64_t>(number), 8); }
  Bytes& Counted(std::string_view chars) { return I2(static_cast<int>(chars.size())).Chars(chars); }

  [[nodiscard]] const std::string& All() const { return bytes_; }

 private:
  Bytes& Little(std::uint64_t bits, int width) {
    for (int i = 0; i < width; ++i) bytes_ += static_cast<char>(bits >> (8 * i) & 0xFF);
    return *this;
  }

  std::string bytes_;
};

// What a header says; each member an item, or a table with its count. A count is that of the rows, unless it is told.
struct FileHeader {
  std::string magic = "Kelvo QDX";
  std::string version = std::string("\x00\x00\x80\x3F", 4);
  std::string create_date = "02-03-2004";
  std::string create_time = "14:05:09";
  int report_length = 7;
  std::array<int, 3> start = {2, 1, 2004};  // month, day, year
  std::array<int, 3> last = {2, 20, 2004};
  std::string system_name = "North Shop";
  float database_version = 12;
  int data_level = 1;
  int calendar_type = 4;
  int year_field = 3;
  int field_slots = 40;
  int account_slots = 100;
  std::vector<std::pair<std::string, int>> periods = {{"Alpha", 10}, {"Beta", 10}};
  int first_year = 2004;
  std::array<int, 3> first_date = {2, 1, 2004};
  std::vector<int> years = {2004};
  std::vector<std::pair<std::string, std::string>> accounts = {{"100", "Front of shop"}, {"200", "Yard"}};
  std::vector<std::pair<int, std::string>> fields = {{1, "Sales"}, {7, "Weather"}};

  std::optional<int> period_count;
  std::optional<int> year_count;
  std::optional<int> account_count;
  std::optional<int> field_count;

  // Up to and including the year table.
  [[nodiscard]] std::string Head() const {
    Bytes bytes;
    bytes.Chars(magic).Chars(version).Chars(create_date).Chars(create_time).I2(report_length);
    for (const int part : start) bytes.I2(part);
    for (const int part : last) bytes.I2(part);
    bytes.Counted(system_name).R4(database_version).I2(data_level).I2(calendar_type).I2(year_field);
    bytes.I2(field_slots).I2(account_slots).I2(period_count.value_or(CountOf(periods)));
    for (const auto& [name, length] : periods) bytes.Counted(name).I2(length);
    bytes.I2(field_count.value_or(CountOf(fields))).I2(year_count.value_or(CountOf(years)));
    bytes.I2(account_count.value_or(CountOf(accounts))).I2(first_year);
    for (const int part : first_date) bytes.I2(part);
    for (const int year : years) bytes.I2(year);
    return bytes.All();
  }
  [[nodiscard]] std::string Tables() const {
    Bytes bytes;
    for (const auto& [code, description] : accounts) bytes.Counted(code).Counted(description);
    for (const auto& [number, description] : fields) bytes.I2(number).Counted(description);
    return bytes.All();
  }
  [[nodiscard]] std::string All() const { return Head() + Tables(); }

 private:
  template <typename Rows>
  static int CountOf(const Rows& rows) {
    return static_cast<int>(rows.size());
  }
};

// --- Taking apart ----------------------------------------------------------------------------------------------------

// One value of a body, by its account's and its field's position.
struct BodyFigure {
  int account = 0;
  std::array<int, 3> date = {};  // month, day, year
  int field = 0;
  double value = 0;
  bool operator==(const BodyFigure&) const = default;
};

// A file by the rules of a reader, for files that are well-formed; std::runtime_error where one ends within its header
// or within a date record.
class FileDecoder {
 public:
  explicit FileDecoder(std::string bytes) : bytes_(std::move(bytes)) { DecodeHeader(); }

  std::vector<std::pair<std::string, std::string>> accounts;
  std::vector<std::pair<int, std::string>> fields;
  std::vector<int> blocks;  // the account of each block
  std::vector<BodyFigure> figures;
  std::size_t body_at = 0;  // offset of the body

 private:
  std::string Chars(std::size_t count) {
    if (bytes_.size() - at_ < count) throw std::runtime_error("The file ends at byte " + std::to_string(bytes_.size()));
    at_ += count;
    return bytes_.substr(at_ - count, count);
  }
  std::uint64_t Little(std::size_t width) {
    const std::string part = Chars(width);
    std::uint64_t bits = 0;
    for (std::size_t i = 0; i < width; ++i) bits |= std::uint64_t{static_cast<unsigned char>(part[i])} << (8 * i);
    return bits;
  }
  int I2() { return static_cast<std::int16_t>(Little(2)); }
  std::string Counted() { return Chars(static_cast<std::size_t>(I2())); }

  void DecodeHeader() {
    Chars(9 + 4 + 10 + 8 + 2 + 6 + 6);
    Counted();
    Chars(4 + 5 * 2);
    for (int left = I2(); left > 0; --left) {
      Counted();
      I2();
    }
    const int field_count = I2();
    const int year_count = I2();
    const int account_count = I2();
    Chars(4 * 2 + static_cast<std::size_t>(year_count) * 2);
    for (int i = 0; i < account_count; ++i) {
      const std::string code = Counted();
      accounts.emplace_back(code, Counted());
    }
    for (int i = 0; i < field_count; ++i) {
      const int number = I2();
      fields.emplace_back(number, Counted());
    }
    body_at = at_;
    DecodeBody(account_count);
  }

  void DecodeBody(int account_count) {
    const std::size_t block_start_size = 8;
    while (bytes_.size() - at_ > block_start_size) {
      const int account = I2();
      std::array<int, 3> date = {I2(), I2(), I2()};
      if (account < 1 || account > account_count) return;
      blocks.push_back(account);
      while (date[0] + date[1] + date[2] > 0) {
        for (int left = I2(); left > 0; --left) {
          const int field = I2();
          figures.push_back({account, date, field, std::bit_cast<double>(Little(8))});
        }
        date = {I2(), I2(), I2()};
      }
    }
  }

  std::string bytes_;
  std::size_t at_ = 0;
};

}  // namespace tallybook::testing
