// How a form is laid out, as data: what stands beside what, which label belongs to which control, what takes the room
// that is left. Every renderer of windows reads the same description and adds nothing of its own but the looks of its
// system: fonts, distances, the order of buttons.
//
// Controls are told by design name and index. What a control says or does, whether it is enabled or visible, is not
// told here: that is the form's. What is hidden takes no room.
#pragma once

#include <string>
#include <vector>

#include "base/Types.h"

namespace tallybook::views {

// A control by its design name and, where there are several of one name, its index. Without a name: none.
struct ControlName {
  std::string name;
  Integer index = -1;
  [[nodiscard]] bool IsNone() const { return name.empty(); }
  bool operator==(const ControlName&) const = default;
};

enum class Shape {
  kControl,  // one control
  kRows,     // the parts one below the other
  kColumns,  // the parts beside each other
  kFields,   // the parts one below the other, their labels in a column of their own
  kFrame,    // the frame `control` around its parts, which stand as in kRows
  kPages,    // the frames that the parts are, all in one place, of which one is shown; `control` is the strip of tabs
  kButtons,  // buttons in a row at the foot, all as wide as the widest, placed by their roles as the system has it
};

// What a button at the foot is for. Main is what Enter presses, cancel what Escape presses.
enum class Role { kNone, kMain, kCancel, kHelp, kBack };

struct Part {
  Shape shape = Shape::kControl;
  ControlName control;
  // The label that stands before the control and names it; without one the control's own caption, where its kind shows
  // none itself.
  ControlName label;
  std::vector<Part> parts;
  // What names the control aloud where neither a label nor a caption does.
  std::string spoken;
  // Of a grid: what a cell says where something is still missing. Such cells are drawn faint, and a line below the grid
  // counts their rows.
  std::string missing;
  int stretch = 0;     // its share of the room that is left, beside its neighbours'
  int characters = 0;  // how many usual characters are to be seen at least; 0: as the kind needs
  int rows = 0;        // of a grid or list: how many rows are to be seen at least
  bool whole = false;  // in kFields: from the labels' edge to the other
  Role role = Role::kNone;
  // Placed by the form itself, over the part behind it: the list over a cell of a grid.
  bool floats = false;
  // Seen only while nothing of the part before it is.
  bool behind = false;
  // Keeps the Enter key for itself, where it means something else than the main button.
  bool keeps_enter = false;
};

struct Menu {
  std::string caption;
  std::vector<ControlName> entries;  // none: a line between
};

struct FormView {
  std::string form;  // the form's name
  Part content;
  std::vector<Menu> menus = {};
  std::vector<ControlName> unseen = {};  // controls that only hold something, and are never shown
};

// --- To write descriptions with --------------------------------------------------------------------------------------

[[nodiscard]] Part Shown(ControlName control);
// A control with a label of its own; `control` names the label for it.
[[nodiscard]] Part Labelled(ControlName label, Part part);
[[nodiscard]] Part Rows(std::vector<Part> parts);
[[nodiscard]] Part Columns(std::vector<Part> parts);
[[nodiscard]] Part Fields(std::vector<Part> parts);
[[nodiscard]] Part Framed(ControlName frame, std::vector<Part> parts);
[[nodiscard]] Part Pages(ControlName tabs, std::vector<Part> frames);
[[nodiscard]] Part Buttons(std::vector<Part> parts);

[[nodiscard]] Part Stretched(Part part, int stretch = 1);
[[nodiscard]] Part AtLeast(Part part, int characters, int rows = 0);
[[nodiscard]] Part Whole(Part part);
[[nodiscard]] Part As(Role role, ControlName control);
[[nodiscard]] Part Floating(ControlName control);
[[nodiscard]] Part Behind(Part part);
[[nodiscard]] Part Spoken(std::string name, Part part);

// Calls `act` for the part and every part in it, outer ones first, in reading order.
template <typename Act>
void ForEachPart(const Part& part, const Act& act) {
  act(part);
  for (const Part& inner : part.parts) ForEachPart(inner, act);
}

}  // namespace tallybook::views
