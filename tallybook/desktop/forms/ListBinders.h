// Binders of the lists of entries: the combo box, which drops its entries down, and the list box. Every key is the
// control's; what it leaves of a character searches the entries. What a list draws follows the entries once the input
// runs, or earlier where it is needed, not entry by entry.
#pragma once

#include <QElapsedTimer>
#include <QString>

#include "tallybook/desktop/forms/ControlBinder.h"

class QComboBox;
class QListView;

namespace tallybook {
class ComboBox;
class ListBox;
class ListControl;
}  // namespace tallybook

namespace tallybook::desktop {

class DroppingBox;
class ListModel;

// Searches the entries of a list as one types.
class EntrySearch {
 public:
  // Goes on with the text that was typed last, or begins anew where that is too long ago, and chooses what is found.
  void Type(ListControl& list, Integer character);

 private:
  Text text_;
  QElapsedTimer since_;
};

// What both have in common.
class ListBinder : public ControlBinder {
 public:
  ListBinder(ListControl& list, QWidget& widget);
  ~ListBinder() override;
  bool TakeKey(const KeyPress& press) override;
  void BringUpToDate() override { Freshen(); }

 protected:
  void Follow(const Change& change) override;
  virtual void FollowSelection() = 0;
  virtual void FollowDropDown() {}
  // The entries have changed as a whole.
  virtual void EntriesCame() {}
  void Freshen();
  [[nodiscard]] ListModel& Model() const { return model_; }
  [[nodiscard]] ListControl& List() const { return list_; }

 private:
  void Spoil();

  ListControl& list_;
  ListModel& model_;
  EntrySearch search_;
  bool stale_ = false;
};

class ComboBoxBinder : public ListBinder {
 public:
  ComboBoxBinder(ComboBox& list, QWidget& parent);
  ~ComboBoxBinder() override;
  [[nodiscard]] std::vector<QWidget*> InputWidgets() const override;
  void SetLeastSize(const views::Part& part) override;

 protected:
  void Follow(const Change& change) override;
  void FollowSelection() override;
  void FollowDropDown() override;
  void EntriesCame() override;

 private:
  DroppingBox& box_;
};

class ListBoxBinder : public ListBinder {
 public:
  ListBoxBinder(ListBox& list, QWidget& parent);
  void SetLeastSize(const views::Part& part) override;

 protected:
  void FollowSelection() override;

 private:
  ListBox& box_;
  QListView& view_;
};

}  // namespace tallybook::desktop
