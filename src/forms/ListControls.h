// Lists of entries, one of which may be selected: the list box, and the combo box that shows the selected one alone.
#pragma once

#include <cstddef>
#include <cstdint>
#include <unordered_map>
#include <vector>

#include "forms/Control.h"

namespace tallybook {

// No entry is selected.
inline constexpr Integer kNoEntry = -1;

// Indexes of entries count from 0. There are 32,767 at most; one more is failure 6.
//
// In a sorted list a search by text costs a few comparisons of keys that are made once, and in every list one by tag is
// looked up.
class ListControl : public Control {
 public:
  using Control::Control;

  struct Entry {
    tallybook::Text text;
    Long tag = 0;
  };

  // Entries are kept in the order of their texts, without regard to case; those of equal text in the order of their
  // coming. The first `leading` that come stay in front, whatever their texts. To be set before there are any.
  void SetSorted(bool sorted, Integer leading = 0);
  // Drawn as something that only shows.
  [[nodiscard]] bool Shaded() const { return shaded_; }
  void SetShaded(bool shaded) { Set(shaded_, shaded); }

  // Adds an entry and gives its index. The selected entry stays selected.
  Integer AddItem(const tallybook::Text& text, Long tag = 0);
  void RemoveItem(Integer index);
  // Leaves none, and nothing selected.
  void Clear();

  [[nodiscard]] Integer ListCount() const { return static_cast<Integer>(order_.size()); }
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

  // The first entry from the list's start that begins with a text, or equals it, both without regard to case, or that
  // has a tag; kNoEntry where there is none.
  [[nodiscard]] Integer FindPrefix(const tallybook::Text& text) const;
  [[nodiscard]] Integer FindExact(const tallybook::Text& text) const;
  [[nodiscard]] Integer FindTag(Long tag) const;

  // Whether the entries are dropped down below the selected one. A choice, Enter and Escape close the list.
  [[nodiscard]] bool DroppedDown() const { return dropped_down_; }
  void SetDroppedDown(bool dropped) { Set(dropped_down_, dropped, {Change::Kind::kDropDown}); }
  // How many entries a page key passes; the renderer's to set.
  [[nodiscard]] Integer PageLength() const { return page_length_; }
  void SetPageLength(Integer entries) { page_length_ = entries; }

  Event<> Click;  // an entry was chosen

  // The user chooses an entry, which may be the selected one. Up, Down, Page Up, Page Down, Home and End do so as well,
  // where nobody consumes them and no shift key is held; at the ends they stay. Alt with Up or Down drops the list down
  // and closes it.
  bool UserChoose(Integer index);
  // The user drops it down or closes it.
  bool UserDropDown(bool dropped);

 protected:
  void PressOwnKey(Integer key, Integer shift) override;

 private:
  struct Kept : Entry {
    tallybook::Text key;  // what is compared
  };
  // Entries are kept where they were put; what moves when one comes is its number in `order_`.
  using Number = std::uint16_t;

  [[nodiscard]] const Kept& At(Integer index) const;
  [[nodiscard]] const tallybook::Text& KeyAt(Number number) const { return kept_[number].key; }
  [[nodiscard]] Integer PlaceOf(const tallybook::Text& key);
  [[nodiscard]] Number Keep(Kept entry);
  template <typename Matches>
  [[nodiscard]] Integer FindFirst(const tallybook::Text& wanted, Matches matches) const;
  void Step(Long entries);

  std::vector<Kept> kept_;
  std::vector<Number> free_;  // numbers that have no entry now
  std::vector<Number> order_;
  mutable std::unordered_map<Long, Integer> first_of_tag_;  // made when it is asked for
  mutable bool tags_known_ = false;
  Integer selected_ = kNoEntry;
  Integer leading_ = 0;
  std::ptrdiff_t in_front_ = 0;  // of those, how many there are
  Integer to_come_ = 0;          // and are still to come
  Integer page_length_ = 8;
  bool sorted_ = false;
  bool shaded_ = false;
  bool dropped_down_ = false;
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
