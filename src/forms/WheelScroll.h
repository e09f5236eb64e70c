// What a turn of the wheel does to the control under the pointer. Nothing here fails: what cannot be moved stays.
#pragma once

#include "base/Types.h"

namespace tallybook {

class Control;
class Form;
class Grid;

// Moves the control whose window this is, or the one with the focus where it is a form's: a grid as GridWheelMove does,
// a scroll bar by its small change, with shift alone (1) by its large one, unless that would leave its range. `delta`
// above 0 turns away from the user, which is up. Other controls and other windows stay.
void WheelMove(Long window, Long delta, Long shift);

// Scrolls a grid by the lines that the user has set: up to the first row below the head, down to the last row. The grid
// tells its Scroll where that moves it. `shift` is of no effect.
//   pages  are as many lines as rows of the head's height go into the grid, but no more than are shown below the top
//          row; so a grid that shows its last row alone is not scrolled up by pages. A grid with room for more rows
//          than it has is not scrolled at all then
void GridWheelMove(Grid& grid, Long delta, Long shift);

// The loaded form or the control that has a window; neither where none has.
struct FoundByWindow {
  Form* form = nullptr;
  Control* control = nullptr;
};
[[nodiscard]] FoundByWindow ControlFromWindow(Long window);

}  // namespace tallybook
