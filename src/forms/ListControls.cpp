#include "forms/ListControls.h"

#include <algorithm>
#include <utility>

#include "base/Failure.h"
#include "base/Narrow.h"
#include "base/Texts.h"

namespace tallybook {

void ListControl::SetSorted(bool sorted, Integer leading) {
  sorted_ = sorted;
  leading_ = leading;
  to_come_ = leading;
}

// --- Entries ---------------------------------------------------------------------------------------------------------

Integer ListControl::PlaceOf(const tallybook::Text& key) {
  if (!sorted_) return ListCount();
  if (to_come_ > 0) {
    --to_come_;
    return static_cast<Integer>(in_front_++);
  }
  const auto place =
      std::upper_bound(order_.begin() + in_front_, order_.end(), key,
                       [this](const tallybook::Text& added, Number number) { return added < KeyAt(number); });
  return static_cast<Integer>(place - order_.begin());
}

ListControl::Number ListControl::Keep(Kept entry) {
  if (free_.empty()) {
    kept_.push_back(std::move(entry));
    return static_cast<Number>(kept_.size() - 1);
  }
  const Number number = free_.back();
  free_.pop_back();
  kept_[number] = std::move(entry);
  return number;
}

Integer ListControl::AddItem(const tallybook::Text& text, Long tag) {
  (void)ToInteger(static_cast<long long>(order_.size()) + 1);
  Kept entry{{text, tag}, UpperCase(text)};
  const Integer index = PlaceOf(entry.key);
  order_.insert(order_.begin() + index, Keep(std::move(entry)));
  tags_known_ = false;
  if (selected_ >= index) ++selected_;
  Changed.Raise({Change::Kind::kAdded, index, index});
  return index;
}

void ListControl::RemoveItem(Integer index) {
  (void)At(index);
  free_.push_back(order_[static_cast<std::size_t>(index)]);
  order_.erase(order_.begin() + index);
  tags_known_ = false;
  if (index < in_front_) --in_front_;
  if (selected_ == index) selected_ = kNoEntry;
  if (selected_ > index) --selected_;
  Changed.Raise({Change::Kind::kRemoved, index, index});
}

void ListControl::Clear() {
  kept_.clear();
  free_.clear();
  order_.clear();
  tags_known_ = false;
  in_front_ = 0;
  to_come_ = leading_;
  selected_ = kNoEntry;
  Changed.Raise({});
}

const ListControl::Kept& ListControl::At(Integer index) const {
  if (index >= 0 && index < ListCount()) return kept_[order_[static_cast<std::size_t>(index)]];
  throw Failure(FailureNumber::kInvalidArgument,
                Name() + " has no entry " + std::to_string(index) + " of " + std::to_string(ListCount()));
}

void ListControl::SetItemData(Integer index, Long tag) {
  (void)At(index);
  kept_[order_[static_cast<std::size_t>(index)]].tag = tag;
  tags_known_ = false;
}

// --- Selection -------------------------------------------------------------------------------------------------------

void ListControl::SetListIndex(Integer index) {
  if (index != kNoEntry) (void)At(index);
  if (Set(selected_, index, {Change::Kind::kSelection, selected_, index}) && index != kNoEntry) Click.Raise();
}

tallybook::Text ListControl::SelectedText() const {
  return selected_ == kNoEntry ? tallybook::Text() : At(selected_).text;
}

// --- Searches --------------------------------------------------------------------------------------------------------

template <typename Matches>
Integer ListControl::FindFirst(const tallybook::Text& wanted, Matches matches) const {
  const auto key_matches = [&](Number number) { return matches(KeyAt(number)); };
  const auto index_of = [this](auto place) { return static_cast<Integer>(place - order_.begin()); };
  const auto sorted_part = sorted_ ? order_.begin() + in_front_ : order_.end();
  const auto found = std::find_if(order_.begin(), sorted_part, key_matches);
  if (found != sorted_part) return index_of(found);
  // What begins with a text or equals it stands together, from the first that is not less.
  const auto first =
      std::lower_bound(sorted_part, order_.end(), wanted,
                       [this](Number number, const tallybook::Text& text) { return KeyAt(number) < text; });
  return first != order_.end() && key_matches(*first) ? index_of(first) : kNoEntry;
}

Integer ListControl::FindPrefix(const tallybook::Text& text) const {
  const tallybook::Text wanted = UpperCase(text);
  return FindFirst(wanted, [&](const tallybook::Text& key) { return key.starts_with(wanted); });
}

Integer ListControl::FindExact(const tallybook::Text& text) const {
  const tallybook::Text wanted = UpperCase(text);
  return FindFirst(wanted, [&](const tallybook::Text& key) { return key == wanted; });
}

Integer ListControl::FindTag(Long tag) const {
  if (!tags_known_) {
    first_of_tag_.clear();
    for (Integer index = 0; index < ListCount(); ++index) first_of_tag_.try_emplace(At(index).tag, index);
    tags_known_ = true;
  }
  const auto found = first_of_tag_.find(tag);
  return found == first_of_tag_.end() ? kNoEntry : found->second;
}

// --- The user --------------------------------------------------------------------------------------------------------

bool ListControl::UserChoose(Integer index) {
  (void)At(index);
  if (!UserFocus()) return false;
  SetDroppedDown(false);
  Set(selected_, index, {Change::Kind::kSelection, selected_, index});
  Click.Raise();
  return true;
}

bool ListControl::UserDropDown(bool dropped) {
  if (!UserFocus()) return false;
  SetDroppedDown(dropped);
  return true;
}

void ListControl::Step(Long entries) {
  if (ListCount() == 0) return;
  const Long last = ListCount() - 1;
  SetListIndex(static_cast<Integer>(std::clamp(selected_ + entries, Long{0}, last)));
}

void ListControl::PressOwnKey(Integer key, Integer shift) {
  if (shift == kAltState && (key == kUpKey || key == kDownKey)) return SetDroppedDown(!dropped_down_);
  if (shift != 0) return;
  switch (key) {
    case kDownKey:
      return Step(1);
    case kUpKey:
      return Step(-1);
    case kPageDownKey:
      return Step(page_length_);
    case kPageUpKey:
      return Step(-page_length_);
    case kHomeKey:
      return Step(-ListCount());
    case kEndKey:
      return Step(ListCount());
    case kEnterKey:
    case kEscapeKey:
      return SetDroppedDown(false);
    default:
      return;
  }
}

bool ListBox::UserDoubleClick(Integer index) {
  if (!UserChoose(index)) return false;
  DoubleClick.Raise();
  return true;
}

}  // namespace tallybook
