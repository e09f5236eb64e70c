// The formats that the export library offers, in their order. This is the one list; codes are never renumbered or
// renamed, for settings keep them.
#pragma once

#include <span>

#include "tallybook/tables/TableWriter.h"

namespace tallybook::tables {

struct Format {
  FormatDescription description;
  bool holds_every_decimal = false;  // its columns take figures of kEveryDecimal
  int widest_figure = 0;             // how far a column can grow for the decimals of a style
  std::unique_ptr<TableWriter> (*new_writer)(const Text& path, const Text& table_name) = nullptr;
};

[[nodiscard]] std::span<const Format> Formats();
// The format of a code, case included; null for a code that none has.
[[nodiscard]] const Format* FormatOf(const Text& code);

}  // namespace tallybook::tables
