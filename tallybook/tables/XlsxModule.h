// The writer of workbooks stands in a module of its own (files/Modules.h): its library needs others that take a fifth
// of a short command's time to load.
#pragma once

#include "tallybook/tables/TableWriter.h"

namespace tallybook::tables {

// What the module exports, and under which name: it makes a writer, which the caller owns, for an empty file that is
// there. `created` is the moment that the workbook tells.
using MakeXlsxWriter = TableWriter*(const Text& path, const Text& table_name, Date created);
inline constexpr const char* kMakeXlsxWriter = "tallybook_make_xlsx_writer";

}  // namespace tallybook::tables
