// Lays the controls of a form out from its view: makes their widgets and binders and puts them into Qt's layouts. The
// distances are the system's font's (Fonts.h); the order of the buttons at the foot is the system's. One thread.
#pragma once

#include <memory>
#include <set>
#include <vector>

#include "tallybook/desktop/forms/ControlBinder.h"
#include "views/View.h"

class QBoxLayout;
class QGridLayout;
class QMenuBar;
class QStackedWidget;

namespace tallybook {
class Form;
}

namespace tallybook::desktop {

class MenuItemBinder;
class TabStripBinder;

// What a window is made of once it is laid out. The widgets belong to the window.
struct LaidOut {
  std::vector<std::unique_ptr<ControlBinder>> binders;
  std::vector<std::unique_ptr<MenuItemBinder>> menu_items;
  std::vector<std::vector<QPushButton*>> feet;  // the buttons of one foot, which are equally wide
  std::vector<QStackedWidget*> pages;
  QMenuBar* menu_bar = nullptr;
  TabStripBinder* tabs = nullptr;
  ControlBinder* main = nullptr;    // what Enter presses
  ControlBinder* cancel = nullptr;  // what Escape presses
  std::set<const ControlBinder*> keep_enter;
};

class ViewLayout {
 public:
  ViewLayout(Form& form, QWidget& window) : form_(form), window_(window) {}

  // Fails with 5 where the view names a control that the form has not, or has a second time.
  [[nodiscard]] LaidOut Build(const views::FormView& view);

 private:
  [[nodiscard]] Control& Named(const views::ControlName& name) const;
  ControlBinder& Bind(const views::ControlName& name, const views::Part& part, QWidget& parent);
  void Note(const views::Part& part, ControlBinder& binder);

  // Each adds a part to what stands around it.
  void Add(const views::Part& part, QBoxLayout& around, QWidget& parent);
  void AddControl(const views::Part& part, QBoxLayout& around, QWidget& parent);
  void AddFields(const views::Part& part, QBoxLayout& around, QWidget& parent);
  void AddField(const views::Part& part, QGridLayout& grid, int row, QWidget& parent);
  void AddFrame(const views::Part& part, QBoxLayout& around, QWidget& parent);
  void AddPages(const views::Part& part, QBoxLayout& around, QWidget& parent);
  void AddButtons(const views::Part& part, QBoxLayout& around, QWidget& parent);
  void AddParts(const views::Part& part, QBoxLayout& around, QWidget& parent);
  // The label of a control: one of the form's, or one for its own caption; null where it needs none.
  QLabel* LabelOf(const views::Part& part, ControlBinder& binder, QWidget& parent);
  void PutFloatsOver(const views::Part& part);
  void PutBehind(const views::Part& part);
  [[nodiscard]] ControlBinder* BinderOf(const views::ControlName& name) const;
  void AddMenus(const std::vector<views::Menu>& menus);

  Form& form_;
  QWidget& window_;
  LaidOut made_;
};

}  // namespace tallybook::desktop
