// The rows of sums in a book's file (docs/book-file.md, "Sums"); AccountSums.h tells what they mean. One thread.
#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <span>

#include "tallybook/engine/Database.h"

namespace tallybook::engine {

class SumTable {
 public:
  // `database` must outlive it.
  explicit SumTable(Database& database) : database_(database) {}

  // Gives all rows in the order of their blocks.
  void Visit(const std::function<void(std::int64_t block, std::span<const std::byte> bytes)>& visit);
  // Writes a row, or takes it away where there are no bytes.
  void Put(std::int64_t block, std::span<const std::byte> bytes);

 private:
  Database& database_;
  std::optional<DbStatement> write_;  // made when it is needed: a file of the first format lacks the table
};

}  // namespace tallybook::engine
