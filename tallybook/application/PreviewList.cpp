#include "tallybook/application/PreviewList.h"

#include <algorithm>
#include <compare>
#include <functional>

#include "base/Texts.h"

namespace tallybook::application {

namespace {

std::partial_ordering CompareBy(PreviewList::Column column, const PreviewLine& one, const PreviewLine& other) {
  switch (column) {
    case PreviewList::Column::kAccount:
      return one.account_position <=> other.account_position;
    case PreviewList::Column::kDate:
      return one.date <=> other.date;
    case PreviewList::Column::kField:
      return one.field_position <=> other.field_position;
    case PreviewList::Column::kBefore:
      return one.before <=> other.before;
    case PreviewList::Column::kAfter:
      return one.after <=> other.after;
    case PreviewList::Column::kChange:
      return one.Change() <=> other.Change();
    case PreviewList::Column::kFile:
      return one.file <=> other.file;
  }
  return std::partial_ordering::equivalent;
}

}  // namespace

PreviewList::PreviewList(preview::ImportPreview& preview, const engine::BookDescription& book, std::size_t most)
    : book_(book) {
  preview.VisitChanges([&](std::size_t file, const preview::FigureChange& change) {
    ++figures_;
    if (lines_.size() >= most) return true;
    lines_.push_back({.file = static_cast<std::uint32_t>(file),
                      .account_position = change.account_position,
                      .field_position = change.field_position,
                      .date = change.date,
                      .before = change.before,
                      .after = change.after});
    return true;
  });
  Choose({});
}

std::vector<bool> PreviewList::AccountsWith(const Text& part) const {
  std::vector<bool> has(book_.accounts.size() + 1, part.empty());
  const Text wanted = UpperCase(part);
  for (std::size_t index = 0; index < book_.accounts.size(); ++index) {
    const engine::AccountDescription& account = book_.accounts[index];
    if (UpperCase(account.code + " " + account.description).find(wanted) != Text::npos) has[index + 1] = true;
  }
  return has;
}

void PreviewList::Choose(const Filter& filter) {
  const std::vector<bool> accounts = AccountsWith(filter.account);
  chosen_.clear();
  for (std::size_t index = 0; index < lines_.size(); ++index) {
    const PreviewLine& line = lines_[index];
    const bool is_chosen = accounts[static_cast<std::size_t>(line.account_position)] &&
                           (filter.field_position == 0 || filter.field_position == line.field_position) &&
                           (!filter.file || *filter.file == line.file);
    if (is_chosen) chosen_.push_back(static_cast<std::uint32_t>(index));
  }
  Order();
}

void PreviewList::Sort(Column column, bool descending) {
  column_ = column;
  descending_ = descending;
  Order();
}

void PreviewList::Order() {
  std::ranges::sort(chosen_);
  if (!column_) return;
  std::ranges::stable_sort(chosen_, [this](std::uint32_t one, std::uint32_t other) {
    const auto order = CompareBy(*column_, lines_[one], lines_[other]);
    return descending_ ? std::is_gt(order) : std::is_lt(order);
  });
}

Double PreviewList::NetChange() const {
  Double net = 0;
  for (const std::uint32_t index : chosen_) net += lines_[index].Change();
  return net;
}

}  // namespace tallybook::application
