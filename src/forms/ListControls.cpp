#include "forms/ListControls.h"

#include <algorithm>

#include "base/Failure.h"
#include "base/Texts.h"

namespace tallybook {

namespace {

template <typename Matches>
Integer FindFirst(const std::vector<ListControl::Entry>& entries, Matches matches) {
  const auto found = std::find_if(entries.begin(), entries.end(),
                                  [&](const ListControl::Entry& entry) { return matches(UpperCase(entry.text)); });
  return found == entries.end() ? kNoEntry : static_cast<Integer>(found - entries.begin());
}

}  // namespace

Integer ListControl::AddItem(const tallybook::Text& text, Long tag) {
  auto place = entries_.end();
  if (sorted_) {
    place = std::upper_bound(
        entries_.begin(), entries_.end(), text,
        [](const tallybook::Text& added, const Entry& entry) { return UpperCase(added) < UpperCase(entry.text); });
  }
  const auto index = static_cast<Integer>(place - entries_.begin());
  entries_.insert(place, {text, tag});
  if (selected_ >= index) ++selected_;
  Changed.Raise();
  return index;
}

void ListControl::RemoveItem(Integer index) {
  (void)At(index);
  entries_.erase(entries_.begin() + index);
  if (selected_ == index) selected_ = kNoEntry;
  if (selected_ > index) --selected_;
  Changed.Raise();
}

void ListControl::Clear() {
  entries_.clear();
  selected_ = kNoEntry;
  Changed.Raise();
}

const ListControl::Entry& ListControl::At(Integer index) const {
  if (index >= 0 && index < ListCount()) return entries_[static_cast<std::size_t>(index)];
  throw Failure(FailureNumber::kInvalidArgument,
                Name() + " has no entry " + std::to_string(index) + " of " + std::to_string(ListCount()));
}

void ListControl::SetItemData(Integer index, Long tag) {
  (void)At(index);
  entries_[static_cast<std::size_t>(index)].tag = tag;
}

void ListControl::SetListIndex(Integer index) {
  if (index != kNoEntry) (void)At(index);
  if (Set(selected_, index) && index != kNoEntry) Click.Raise();
}

tallybook::Text ListControl::SelectedText() const {
  return selected_ == kNoEntry ? tallybook::Text() : At(selected_).text;
}

Integer ListControl::FindPrefix(const tallybook::Text& text) const {
  const tallybook::Text wanted = UpperCase(text);
  return FindFirst(entries_, [&](const tallybook::Text& entry) { return entry.starts_with(wanted); });
}

Integer ListControl::FindExact(const tallybook::Text& text) const {
  const tallybook::Text wanted = UpperCase(text);
  return FindFirst(entries_, [&](const tallybook::Text& entry) { return entry == wanted; });
}

bool ListControl::UserChoose(Integer index) {
  (void)At(index);
  if (!UserFocus()) return false;
  Set(selected_, index);
  Click.Raise();
  return true;
}

bool ListBox::UserDoubleClick(Integer index) {
  if (!UserChoose(index)) return false;
  DoubleClick.Raise();
  return true;
}

}  // namespace tallybook
