#include "views/View.h"

#include <utility>

namespace tallybook::views {

namespace {

Part Made(Shape shape, ControlName control, std::vector<Part> parts) {
  Part part;
  part.shape = shape;
  part.control = std::move(control);
  part.parts = std::move(parts);
  return part;
}

}  // namespace

Part Shown(ControlName control) {
  return Made(Shape::kControl, std::move(control), {});
}

Part Labelled(ControlName label, Part part) {
  part.label = std::move(label);
  return part;
}

Part Rows(std::vector<Part> parts) {
  return Made(Shape::kRows, {}, std::move(parts));
}

Part Columns(std::vector<Part> parts) {
  return Made(Shape::kColumns, {}, std::move(parts));
}

Part Fields(std::vector<Part> parts) {
  return Made(Shape::kFields, {}, std::move(parts));
}

Part Framed(ControlName frame, std::vector<Part> parts) {
  return Made(Shape::kFrame, std::move(frame), std::move(parts));
}

Part Pages(ControlName tabs, std::vector<Part> frames) {
  return Made(Shape::kPages, std::move(tabs), std::move(frames));
}

Part Buttons(std::vector<Part> parts) {
  return Made(Shape::kButtons, {}, std::move(parts));
}

Part Stretched(Part part, int stretch) {
  part.stretch = stretch;
  return part;
}

Part AtLeast(Part part, int characters, int rows) {
  part.characters = characters;
  part.rows = rows;
  return part;
}

Part Whole(Part part) {
  part.whole = true;
  return part;
}

Part As(Role role, ControlName control) {
  Part part = Shown(std::move(control));
  part.role = role;
  return part;
}

Part Floating(ControlName control) {
  Part part = Shown(std::move(control));
  part.floats = true;
  return part;
}

Part Behind(Part part) {
  part.behind = true;
  return part;
}

Part Spoken(std::string name, Part part) {
  part.spoken = std::move(name);
  return part;
}

}  // namespace tallybook::views
