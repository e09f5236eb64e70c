#include "dialogs/DefinitionRows.h"

#include <string>
#include <string_view>

#include "base/Texts.h"
#include "dialogs/QdxFiles.h"
#include "exchange/CDataExchange.h"
#include "host/EdtForm.h"
#include "support/Utility.h"

namespace tallybook {

namespace {

constexpr Long kNumberWidth = 4;

bool IsListed(const Text& title) {
  constexpr std::string_view kNothing(" \0", 2);
  return title.find_first_not_of(kNothing) != Text::npos;
}

}  // namespace

Text DefinitionRows::KeyOf(Integer file_number) {
  return "K" + std::to_string(file_number);
}

void DefinitionRows::AddColumns() {
  constexpr bool kNumeric = true;
  window_.AddColumn("Title", !kNumeric);
  window_.AddColumn("Number", kNumeric);
  for (const char* caption : {"File Name", "QDX File Name", "QDX Exists", "Number Matches"})
    window_.AddColumn(caption, !kNumeric);
}

void DefinitionRows::FillDefinitionList() {
  window_.ClearList();
  for (Integer record = 1; record <= exchange_.NumRecs(); ++record) {
    if (IsListed(exchange_.Desc(record))) AddDefinitionRow(record);
  }
}

void DefinitionRows::AddDefinitionRow(Integer record) {
  const Text qdx_file = exchange_.QdxFileName(record);
  const Long matches = CountMatchingFiles(qdx_file);
  window_.AddRow(KeyOf(exchange_.FileNum(record)), record, exchange_.Desc(record));
  window_.AddCell(PadLeft(std::to_string(exchange_.FileNum(record)), ' ', kNumberWidth));
  window_.AddCell(FileBaseName(exchange_.Filename(record)));
  window_.AddCell(qdx_file);
  window_.AddCell(matches > 0 ? "True" : "False");
  window_.AddCell(std::to_string(matches));
}

void DefinitionRows::ReplaceDefinitionRow(Integer record) {
  RemoveDefinitionRow(record);
  AddDefinitionRow(record);
}

void DefinitionRows::RemoveDefinitionRow(Integer record) {
  window_.RemoveRow(KeyOf(exchange_.FileNum(record)));
}

}  // namespace tallybook
