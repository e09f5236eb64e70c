#include "tallybook/desktop/forms/ViewLayout.h"

#include <QGridLayout>
#include <QLabel>
#include <QMenuBar>
#include <QPushButton>
#include <QStackedWidget>
#include <QStyle>
#include <algorithm>
#include <utility>

#include "base/Failure.h"
#include "forms/Control.h"
#include "forms/Form.h"
#include "forms/PlainControls.h"
#include "tallybook/desktop/forms/Binders.h"
#include "tallybook/desktop/forms/Fonts.h"
#include "tallybook/desktop/forms/GridBinder.h"
#include "tallybook/desktop/forms/PlainBinders.h"
#include "tallybook/desktop/forms/TabStripBinder.h"
#include "tallybook/desktop/forms/Words.h"

namespace tallybook::desktop {

namespace {

using views::Part;
using views::Role;
using views::Shape;

// Distances, in units: between rows, between what stands beside each other, between groups, and around all.
constexpr int kRowGap = 2;
constexpr int kColumnGap = 3;
constexpr int kGroupGap = 4;
constexpr int kMargin = 4;

// The first control within a part, which is the one that a label in front of the part is for.
const Part& FirstControl(const Part& part) {
  return part.shape == Shape::kControl || part.parts.empty() ? part : FirstControl(part.parts.front());
}

// Single controls stand closer together than groups of them.
int GapOf(const Part& rows) {
  const bool are_single = std::ranges::all_of(rows.parts, [](const Part& one) { return one.shape == Shape::kControl; });
  return are_single ? kRowGap : kGroupGap;
}

// Where the buttons of a foot stand, from left to right; what has no role stands at the left beside Help.
int PlaceOf(Role role, bool cancel_first) {
  switch (role) {
    case Role::kHelp:
      return 0;
    case Role::kNone:
      return 1;
    case Role::kBack:
      return 3;
    case Role::kMain:
      return 4;
    case Role::kCancel:
      return cancel_first ? 2 : 5;
  }
  return 1;
}

bool CancelComesFirst(const QWidget& window) {
  const int system = window.style()->styleHint(QStyle::SH_DialogButtonLayout, nullptr, &window);
  constexpr int kMacLayout = 1;
  constexpr int kGnomeLayout = 3;
  return system == kMacLayout || system == kGnomeLayout;
}

}  // namespace

LaidOut ViewLayout::Build(const views::FormView& view) {
  const int unit = Unit(window_);
  auto* const rows = new QVBoxLayout(&window_);
  rows->setContentsMargins(kMargin * unit, kMargin * unit, kMargin * unit, kMargin * unit);
  rows->setSpacing(kGroupGap * unit);
  Add(view.content, *rows, window_);
  AddMenus(view.menus);
  if (made_.menu_bar != nullptr) rows->setMenuBar(made_.menu_bar);
  for (const auto& binder : made_.binders) binder->Start();
  return std::move(made_);
}

// --- Controls --------------------------------------------------------------------------------------------------------

Control& ViewLayout::Named(const views::ControlName& name) const {
  Control* const control = form_.Find(name.name, name.index);
  if (control == nullptr) {
    throw Failure(FailureNumber::kInvalidArgument, "The view of " + form_.Name() +
                                                       " names a control that it has not: " + name.name + " " +
                                                       std::to_string(name.index));
  }
  const bool is_there =
      std::ranges::any_of(made_.binders, [&](const auto& binder) { return &binder->Bound() == control; });
  if (!is_there) return *control;
  throw Failure(FailureNumber::kInvalidArgument, "The view of " + form_.Name() + " shows a control twice: " +
                                                     name.name + " " + std::to_string(name.index));
}

ControlBinder& ViewLayout::Bind(const views::ControlName& name, const Part& part, QWidget& parent) {
  made_.binders.push_back(MakeBinder(Named(name), parent));
  ControlBinder& binder = *made_.binders.back();
  if (auto* const tabs = dynamic_cast<TabStripBinder*>(&binder)) made_.tabs = tabs;
  Note(part, binder);
  return binder;
}

void ViewLayout::Note(const Part& part, ControlBinder& binder) {
  if (part.control.name != binder.Bound().Name()) return;  // the label of the part
  binder.SetSpoken(part.spoken);
  if (part.keeps_enter) made_.keep_enter.insert(&binder);
  if (part.role == Role::kMain) made_.main = &binder;
  // The buttons of the host's kind are main and cancel in one.
  if (part.role == Role::kCancel || (part.role == Role::kMain && binder.FootButtons().size() > 1))
    made_.cancel = &binder;
}

QLabel* ViewLayout::LabelOf(const Part& part, ControlBinder& binder, QWidget& parent) {
  if (!part.label.IsNone()) {
    auto& label = dynamic_cast<LabelBinder&>(Bind(part.label, part, parent));
    label.SetBuddy(binder.FocusWidget());
    binder.SetNamedBy(label.Bound());
    return &dynamic_cast<QLabel&>(label.Widget());
  }
  return binder.DrawsCaption() ? nullptr : &binder.MakeCaptionLabel(parent);
}

void ViewLayout::AddControl(const Part& part, QBoxLayout& around, QWidget& parent) {
  ControlBinder& binder = Bind(part.control, part, parent);
  if (part.floats) {
    binder.SetFloating();
    return;
  }
  binder.SetLeastSize(part);
  auto* const label = dynamic_cast<LabelBinder*>(&binder);
  if (label != nullptr && around.direction() == QBoxLayout::TopToBottom) label->SetWrapping();
  around.addWidget(&binder.Widget(), part.stretch);
  auto* const grid = dynamic_cast<GridBinder*>(&binder);
  if (grid != nullptr && !part.missing.empty()) around.addWidget(&grid->CountMissing(part.missing, parent));
}

// --- Rows, columns, fields -------------------------------------------------------------------------------------------

void ViewLayout::Add(const Part& part, QBoxLayout& around, QWidget& parent) {
  switch (part.shape) {
    case Shape::kControl:
      return AddControl(part, around, parent);
    case Shape::kRows:
    case Shape::kColumns:
      return AddParts(part, around, parent);
    case Shape::kFields:
      return AddFields(part, around, parent);
    case Shape::kFrame:
      return AddFrame(part, around, parent);
    case Shape::kPages:
      return AddPages(part, around, parent);
    case Shape::kButtons:
      return AddButtons(part, around, parent);
  }
}

void ViewLayout::AddParts(const Part& part, QBoxLayout& around, QWidget& parent) {
  const bool is_rows = part.shape == Shape::kRows;
  auto* const box = new QBoxLayout(is_rows ? QBoxLayout::TopToBottom : QBoxLayout::LeftToRight);
  box->setSpacing((is_rows ? GapOf(part) : kColumnGap) * Unit(window_));
  around.addLayout(box, part.stretch);
  for (const Part& inner : part.parts) Add(inner, *box, parent);
  const bool any_stretches = std::ranges::any_of(part.parts, [](const Part& inner) { return inner.stretch > 0; });
  if (is_rows && !any_stretches) box->addStretch();
  PutFloatsOver(part);
  PutBehind(part);
}

void ViewLayout::AddFields(const Part& part, QBoxLayout& around, QWidget& parent) {
  auto* const grid = new QGridLayout;
  grid->setVerticalSpacing(kRowGap * Unit(window_));
  grid->setHorizontalSpacing(kColumnGap * Unit(window_));
  grid->setColumnStretch(1, 1);
  around.addLayout(grid, part.stretch);
  for (int row = 0; row < static_cast<int>(part.parts.size()); ++row) {
    const Part& field = part.parts[static_cast<std::size_t>(row)];
    AddField(field, *grid, row, parent);
    grid->setRowStretch(row, field.stretch);
  }
}

void ViewLayout::AddField(const Part& part, QGridLayout& grid, int row, QWidget& parent) {
  auto* const cell = new QHBoxLayout;
  cell->setSpacing(kRowGap * Unit(window_));
  if (part.whole) {
    grid.addLayout(cell, row, 0, 1, 2);
    Add(part, *cell, parent);
    return;
  }
  grid.addLayout(cell, row, 1);
  // The control comes first, as the label needs to know it; what stands before what is the layout's.
  const std::size_t first = made_.binders.size();
  if (part.shape == Shape::kColumns)
    for (const Part& inner : part.parts) Add(inner, *cell, parent);
  else
    Add(part, *cell, parent);
  const Part& named = part.label.IsNone() ? FirstControl(part) : part;
  if (QLabel* const label = LabelOf(named, *made_.binders.at(first), parent))
    grid.addWidget(label, row, 0, Qt::AlignLeft | Qt::AlignVCenter);
}

// --- Frames, pages, buttons ------------------------------------------------------------------------------------------

void ViewLayout::AddFrame(const Part& part, QBoxLayout& around, QWidget& parent) {
  auto& frame = dynamic_cast<FrameBinder&>(Bind(part.control, part, parent));
  around.addWidget(&frame.Widget(), part.stretch);
  const std::size_t first = made_.binders.size();
  for (const Part& inner : part.parts) Add(inner, frame.Contents(), frame.Widget());
  const bool any_stretches = std::ranges::any_of(part.parts, [](const Part& inner) { return inner.stretch > 0; });
  if (!any_stretches) frame.Contents().addStretch();
  // The mnemonic of its caption leads to the first control in it.
  for (std::size_t i = first; i < made_.binders.size(); ++i) {
    if (!made_.binders[i]->Bound().TakesFocus()) continue;
    frame.Heading().setBuddy(&made_.binders[i]->FocusWidget());
    break;
  }
  PutFloatsOver(part);
}

void ViewLayout::AddPages(const Part& part, QBoxLayout& around, QWidget& parent) {
  auto* const rows = new QVBoxLayout;
  rows->setSpacing(kRowGap * Unit(window_));
  around.addLayout(rows, part.stretch);
  if (!part.control.IsNone()) {
    ControlBinder& strip = Bind(part.control, part, parent);
    rows->addWidget(&strip.Widget());
  }
  auto* const pages = new QStackedWidget(&parent);
  rows->addWidget(pages, 1);
  made_.pages.push_back(pages);
  for (const Part& page : part.parts) {
    const std::size_t own = made_.binders.size();
    auto* const holder = new QVBoxLayout;
    Add(page, *holder, *pages);
    auto& frame = dynamic_cast<FrameBinder&>(*made_.binders.at(own));
    delete holder;
    pages->addWidget(&frame.Widget());
    frame.SetPages(*pages);
  }
}

void ViewLayout::AddButtons(const Part& part, QBoxLayout& around, QWidget& parent) {
  std::vector<std::pair<int, ControlBinder*>> placed;
  std::vector<QPushButton*> foot;
  const bool cancel_first = CancelComesFirst(window_);
  for (const Part& button : part.parts) {
    ControlBinder& binder = Bind(button.control, button, parent);
    placed.emplace_back(PlaceOf(button.role, cancel_first), &binder);
    const std::vector<QPushButton*> own = binder.FootButtons();
    foot.insert(foot.end(), own.begin(), own.end());
    if (button.role == Role::kMain && !own.empty()) own.front()->setDefault(true);
  }
  made_.feet.push_back(foot);
  std::ranges::stable_sort(placed, {}, &std::pair<int, ControlBinder*>::first);
  auto* const row = new QHBoxLayout;
  row->setSpacing(kRowGap * Unit(window_));
  around.addLayout(row, part.stretch);
  constexpr int kLastAtLeft = 1;
  bool parted = false;
  for (const auto& [place, binder] : placed) {
    if (place > kLastAtLeft && !std::exchange(parted, true)) row->addStretch(1);
    row->addWidget(&binder->Widget());
  }
}

// A list that is laid over a cell of the grid behind it needs rows as high as itself.
void ViewLayout::PutFloatsOver(const Part& part) {
  for (std::size_t i = 0; i + 1 < part.parts.size(); ++i) {
    if (!part.parts[i].floats) continue;
    const ControlBinder* const over = BinderOf(part.parts[i].control);
    auto* const grid = dynamic_cast<GridBinder*>(BinderOf(part.parts[i + 1].control));
    if (over != nullptr && grid != nullptr) grid->SetRoomForList(over->Widget().sizeHint().height());
  }
}

void ViewLayout::PutBehind(const Part& part) {
  for (std::size_t i = 1; i < part.parts.size(); ++i) {
    ControlBinder* const behind = part.parts[i].behind ? BinderOf(part.parts[i].control) : nullptr;
    if (behind == nullptr) continue;
    std::vector<Control*> before;
    ForEachPart(part.parts[i - 1], [&](const Part& one) {
      const bool is_outer = one.shape == Shape::kFrame || one.shape == Shape::kControl;
      Control* const control = is_outer ? form_.Find(one.control.name, one.control.index) : nullptr;
      if (control != nullptr && control->Container() == behind->Bound().Container()) before.push_back(control);
    });
    behind->SetBehind(before);
  }
}

ControlBinder* ViewLayout::BinderOf(const views::ControlName& name) const {
  const Control* const control = form_.Find(name.name, name.index);
  const auto found =
      std::ranges::find_if(made_.binders, [&](const auto& binder) { return &binder->Bound() == control; });
  return found == made_.binders.end() ? nullptr : found->get();
}

void ViewLayout::AddMenus(const std::vector<views::Menu>& menus) {
  if (menus.empty()) return;
  made_.menu_bar = new QMenuBar(&window_);
  for (const views::Menu& menu : menus) {
    QMenu* const list = made_.menu_bar->addMenu(ToQt(menu.caption));
    for (const views::ControlName& entry : menu.entries) {
      if (entry.IsNone()) {
        list->addSeparator();
        continue;
      }
      auto& item = dynamic_cast<MenuItem&>(Named(entry));
      made_.menu_items.push_back(std::make_unique<MenuItemBinder>(item, *list->addAction(QString())));
    }
  }
}

}  // namespace tallybook::desktop
