// Lists of entries, one of which may be selected: the list box, and the combo box that shows the selected one alone.
#pragma once

#include <vector>

#include "forms/Control.h"

namespace tallybook {

// No entry is selected.
inline constexpr Integer kNoEntry = -1;

// Indexes of entries count from 0.
class ListControl : public Control {
 public:
  using Control::Control;

  struct Entry {
    tallybook::Text text;
    Long tag = 0;
  };

  // Entries are kept in the order of their texts, without regard to case. To be set before there are any.
  void SetSorted(bool sorted) { sorted_ = sorted; }
  // Drawn as something that only shows.
  [[nodiscard]] bool Shaded() const { return shaded_; }
  void SetShaded(bool shaded) { Set(shaded_, shaded); }

  // Adds an entry and gives its index. The selected entry stays selected.
  Integer AddItem(const tallybook::Text& text, Long tag = 0);
  void RemoveItem(Integer index);
  // Leaves none, and nothing selected.
  void Clear();

  [[nodiscard]] Integer ListCount() const { return static_cast<Integer>(entries_.size()); }
  // Text and tag of an entry; failure 5 for an index that has none.
  [[nodiscard]] const tallybook::Text& List(Integer index) const { return At(index).text; }
  [[nodiscard]] Long ItemData(Integer index) const { return At(index).tag; }
  void SetItemData(Integer index, Long tag);

  // The index of the selected entry, kNoEntry for none. Setting it raises Click where it changes to an entry; failure 5
  // for an index that is neither an entry's nor kNoEntry.
  [[nodiscard]] Integer ListIndex() const { return selected_; }
  void SetListIndex(Integer index);
  // The text of the selected entry; empty for none.
  [[nodiscard]] tallybook::Text SelectedText() const;

  // The first entry from the list's start that begins with a text, or equals it, both without regard to case; kNoEntry
  // where there is none.
  [[nodiscard]] Integer FindPrefix(const tallybook::Text& text) const;
  [[nodiscard]] Integer FindExact(const tallybook::Text& text) const;

  Event<> Click;  // an entry was chosen

  // The user chooses an entry, which may be the selected one.
  bool UserChoose(Integer index);

 private:
  [[nodiscard]] const Entry& At(Integer index) const;

  std::vector<Entry> entries_;
  Integer selected_ = kNoEntry;
  bool sorted_ = false;
  bool shaded_ = false;
};

class ComboBox : public ListControl {
 public:
  using ListControl::ListControl;
};

class ListBox : public ListControl {
 public:
  using ListControl::ListControl;
  Event<> DoubleClick;
  bool UserDoubleClick(Integer index);
};

}  // namespace tallybook
