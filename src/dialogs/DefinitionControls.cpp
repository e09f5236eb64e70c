#include "dialogs/DefinitionControls.h"

#include <algorithm>
#include <array>
#include <vector>

#include "base/ModParse.h"
#include "forms/Grid.h"
#include "forms/ListControls.h"

namespace tallybook {

namespace {

constexpr std::array kHeaderRows = {"Filename:",           "System Name in QDX File:", "Date/Time File Created:",
                                    "First Date in File:", "Last Date in File:",       "Data Level of Data:"};

}  // namespace

void FillDispositions(ListControl& list) {
  for (const char* entry : {"Deleted", "Renamed (*.XDQ)", "Kept"}) list.AddItem(entry);
}

void FillAccountModes(ListControl& list) {
  for (const char* entry : {"Manually", "One-for-One", "All-to-One"}) list.AddItem(entry);
}

void FillFieldModes(ListControl& list) {
  for (const char* entry : {"Manually", "One-for-One"}) list.AddItem(entry);
}

void SelectPosition(ListControl& list, int position) {
  const bool is_entry = position >= 0 && position < list.ListCount();
  list.SetListIndex(is_entry ? static_cast<Integer>(position) : kNoEntry);
}

void BuildHeaderGrid(Grid& grid) {
  grid.SetSize(static_cast<Long>(kHeaderRows.size()), 2);
  grid.SetFixedColumns(1);
  for (Long row = 0; row < grid.Rows(); ++row) {
    grid.SetCell(row, 0, kHeaderRows.at(static_cast<std::size_t>(row)));
    grid.SetCell(row, 1, "");
  }
}

void ShowHeaderLines(Grid& grid, const Text& text) {
  std::vector<Text> lines = SplitText(text, "\n");
  if (!lines.empty() && lines.back().empty()) lines.pop_back();
  const Long shown = std::min(static_cast<Long>(lines.size()), grid.Rows());
  for (Long row = 0; row < shown; ++row) grid.SetCell(row, 1, lines[static_cast<std::size_t>(row)]);
}

}  // namespace tallybook
