// The fields of a comma-separated file, as tests compare what looks make of one.
#pragma once

#include <string>
#include <vector>

#include "tallybook/inspect/CsvFile.h"
#include "tests/import/TextImportSetup.h"

namespace tallybook::testing {

// Without empty ones at the end.
inline std::vector<std::string> FieldsIn(TextImportSetup& setup, const std::string& bytes) {
  const Text path = "/in/fields.csv";
  setup.platform.memory.Put(path, bytes);
  inspect::CsvFile file(path, TextEncoding::kDetect);
  std::vector<std::string> fields;
  while (!file.AtEnd()) fields.push_back(file.Take().bytes);
  while (!fields.empty() && fields.back().empty()) fields.pop_back();
  return fields;
}

}  // namespace tallybook::testing
