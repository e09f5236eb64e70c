// The forms in which commands print what they found: a table for people, CSV and JSON for programs.
//
// In JSON the same thing has the same name in every command (docs/command-line.md, "Results for programs").
#pragma once

#include <nlohmann/json_fwd.hpp>

#include "base/Types.h"
#include "tallybook/cli/Arguments.h"

namespace tallybook::cli {

enum class PrintForm { kTable, kCsv, kJson };

// Adds --format, and --json as its short form. A command that has no rows of one kind leaves CSV out.
void AddForm(CommandTable& command, PrintForm& form);
void AddFormWithoutCsv(CommandTable& command, PrintForm& form);

// A field of a CSV file (RFC 4180, section 2).
[[nodiscard]] Text CsvField(const Text& text);

// JSON as lines for standard output. A byte that is no UTF-8 becomes U+FFFD.
[[nodiscard]] Text JsonText(const nlohmann::ordered_json& value);
// The same on one line.
[[nodiscard]] Text JsonLine(const nlohmann::ordered_json& value);

}  // namespace tallybook::cli
