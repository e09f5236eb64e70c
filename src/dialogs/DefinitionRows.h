// The rows of the list window, one for each definition. A row's key is "K" and the definition's own number, never its
// position: positions change, and a row is found by its key.
//
// One thread. The window and the exchange object outlive the rows.
#pragma once

#include "base/Types.h"

namespace tallybook {

class CDataExchange;
class EdtForm;

class DefinitionRows {
 public:
  DefinitionRows(EdtForm& window, const CDataExchange& exchange) : window_(window), exchange_(exchange) {}

  // The six columns of the window.
  void AddColumns();
  // All of them anew: a row for each definition whose title holds anything but blanks and NULs.
  void FillDefinitionList();
  // Title, number (right-aligned in four characters; of a longer one the last four), the definition's file without its
  // folder, the exchange file, whether that exists, and how many match its name.
  void AddDefinitionRow(Integer record);
  // Both by the key of the record as it stands: the first row that has it.
  void ReplaceDefinitionRow(Integer record);
  void RemoveDefinitionRow(Integer record);

  // The key of a definition's number.
  [[nodiscard]] static Text KeyOf(Integer file_number);

 private:
  EdtForm& window_;
  const CDataExchange& exchange_;
};

}  // namespace tallybook
