// Binders of the plain controls: label, frame, picture, button, check box, scroll bar, menu entry.
#pragma once

#include <QObject>
#include <memory>

#include "tallybook/desktop/forms/ControlBinder.h"

class QAction;
class QCheckBox;
class QScrollBar;
class QStackedWidget;
class QVBoxLayout;

namespace tallybook {
class CheckBox;
class CommandButton;
class Frame;
class Label;
class MenuItem;
class Picture;
class ScrollBar;
}  // namespace tallybook

namespace tallybook::desktop {

class LabelBinder : public ControlBinder {
 public:
  LabelBinder(Label& label, QWidget& parent);
  [[nodiscard]] bool DrawsCaption() const override { return true; }
  // What it stands before; its mnemonic leads there.
  void SetBuddy(QWidget& buddy);
  // It stands alone and may be long: wraps.
  void SetWrapping();

 protected:
  void Follow(const Change& /*change*/) override {}
  void DrawCaption(const QString& caption) override;

 private:
  QLabel& label_;
};

// A box around other controls. Its caption stands above them.
class FrameBinder : public ControlBinder {
 public:
  FrameBinder(Frame& frame, QWidget& parent);
  [[nodiscard]] bool DrawsCaption() const override { return true; }
  // What stands in it goes here.
  [[nodiscard]] QVBoxLayout& Contents() const { return contents_; }
  [[nodiscard]] QLabel& Heading() const { return heading_; }
  // It is one of these pages, which show it alone.
  void SetPages(QStackedWidget& pages) { pages_ = &pages; }

 protected:
  void Follow(const Change& change) override;
  [[nodiscard]] bool ShowsItself() const override { return pages_ == nullptr; }
  void DrawCaption(const QString& caption) override;

 private:
  QLabel& heading_;
  QVBoxLayout& contents_;
  QStackedWidget* pages_ = nullptr;
};

class PictureBinder : public ControlBinder {
 public:
  PictureBinder(Picture& picture, QWidget& parent);

 protected:
  void Follow(const Change& change) override;
  [[nodiscard]] QString AccessibleName() const override;

 private:
  Picture& picture_;
  QLabel& label_;
};

class ButtonBinder : public ControlBinder {
 public:
  ButtonBinder(CommandButton& button, QWidget& parent);
  [[nodiscard]] bool DrawsCaption() const override { return true; }
  [[nodiscard]] std::vector<QPushButton*> FootButtons() const override { return {&push_}; }
  bool TakeKey(const KeyPress& press) override;
  bool TakeEnter() override;
  void Press(bool cancel) override;

 protected:
  void Follow(const Change& /*change*/) override {}
  void DrawCaption(const QString& caption) override;

 private:
  CommandButton& button_;
  QPushButton& push_;
};

class CheckBoxBinder : public ControlBinder {
 public:
  CheckBoxBinder(CheckBox& box, QWidget& parent);
  [[nodiscard]] bool DrawsCaption() const override { return true; }

 protected:
  void Follow(const Change& change) override;
  void DrawCaption(const QString& caption) override;

 private:
  CheckBox& box_;
  QCheckBox& check_;
};

class ScrollBarBinder : public ControlBinder {
 public:
  ScrollBarBinder(ScrollBar& bar, QWidget& parent);

 protected:
  void Follow(const Change& change) override;

 private:
  ScrollBar& bar_;
  QScrollBar& scroll_;
};

// An entry of a menu, which is no widget but an action. Both the control and the action outlive it.
class MenuItemBinder {
 public:
  MenuItemBinder(MenuItem& item, QAction& action);
  MenuItemBinder(const MenuItemBinder&) = delete;
  MenuItemBinder& operator=(const MenuItemBinder&) = delete;
  [[nodiscard]] const MenuItem& Bound() const { return item_; }
  [[nodiscard]] QAction& Action() const { return action_; }

 private:
  void Follow();

  MenuItem& item_;
  QAction& action_;
  QObject receiver_;  // of the action's signals, for as long as this lives
  std::shared_ptr<const void> life_ = std::make_shared<char>();
};

}  // namespace tallybook::desktop
