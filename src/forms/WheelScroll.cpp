#include "forms/WheelScroll.h"

#include <algorithm>

#include "base/Narrow.h"
#include "forms/CHookMouseWheel.h"
#include "forms/Control.h"
#include "forms/Form.h"
#include "forms/Grid.h"
#include "forms/PlainControls.h"
#include "forms/Quietly.h"
#include "platform/Wheel.h"

namespace tallybook {

namespace {

constexpr Long kShiftAlone = 1;

Long SignOf(Long value) {
  return static_cast<Long>(value > 0) - static_cast<Long>(value < 0);
}

// The value stays where the step would leave the bar's range: the bar itself would go to its end.
void Step(ScrollBar& bar, Long delta, Long shift) {
  const long long step = shift == kShiftAlone ? bar.LargeChange() : bar.SmallChange();
  const long long value = bar.Value() - SignOf(delta) * step;
  if (value >= std::min(bar.Min(), bar.Max()) && value <= std::max(bar.Min(), bar.Max())) bar.SetValue(ToLong(value));
}

bool IsVisible(const Grid& grid, Long row) {
  return row < grid.Rows() && grid.IsRowVisible(row);
}

// The lines of a page; below 0 where the grid has room for more rows than it has.
Long PageOf(const Grid& grid) {
  const Long head_height = grid.RowHeight(0);
  if (head_height <= 0) return -1;
  Long lines = grid.Place().height / head_height;
  if (lines > grid.Rows()) return -1;
  while (lines > 0 && !IsVisible(grid, grid.TopRow() + lines)) --lines;
  return lines;
}

}  // namespace

FoundByWindow ControlFromWindow(Long window) {
  if (window == 0) return {};
  for (Form* const form : OpenForms()) {
    if (form->Hwnd() == window) return {.form = form};
    for (Control* const control : form->Controls())
      if (control->Hwnd() == window) return {.control = control};
  }
  return {};
}

void WheelMove(Long window, Long delta, Long shift) {
  const FoundByWindow found = ControlFromWindow(window);
  Control* const control = found.form == nullptr ? found.control : found.form->ActiveControl();
  if (auto* const grid = dynamic_cast<Grid*>(control))
    GridWheelMove(*grid, delta, shift);
  else if (auto* const bar = dynamic_cast<ScrollBar*>(control))
    Quietly([&] { Step(*bar, delta, shift); });
}

void GridWheelMove(Grid& grid, Long delta, Long /*shift*/) {
  Quietly([&] {
    const Long set = CHookMouseWheel::ScrollLines();
    const Long lines = set == kScrollPage ? PageOf(grid) : set;
    if (lines < 0) return;
    const Long top = grid.TopRow();
    grid.SetTopRow(delta < 1 ? std::min(top + lines, grid.Rows() - 1) : std::max(top - lines, Long{1}));
  });
}

}  // namespace tallybook
