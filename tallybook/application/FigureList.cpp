#include "tallybook/application/FigureList.h"

#include <algorithm>
#include <cmath>
#include <compare>
#include <limits>

#include "base/Texts.h"
#include "tallybook/application/TieOut.h"

namespace tallybook::application {

namespace {

std::weak_ordering CompareBy(FigureList::Column column, const FigureLine& one, const FigureLine& other) {
  switch (column) {
    case FigureList::Column::kAccount:
      return one.account_position <=> other.account_position;
    case FigureList::Column::kDate:
      return std::weak_order(one.date, other.date);
    case FigureList::Column::kField:
      return one.field_position <=> other.field_position;
    case FigureList::Column::kFirst:
      return std::weak_order(one.first, other.first);
    case FigureList::Column::kSecond:
      return std::weak_order(one.second, other.second);
    case FigureList::Column::kDifference:
      return std::weak_order(one.Difference(), other.Difference());
    case FigureList::Column::kFile:
      return one.file <=> other.file;
  }
  return std::weak_ordering::equivalent;
}

}  // namespace

void FigureList::Add(const FigureLine& line) {
  ++figures_;
  if (lines_.size() < most_) lines_.push_back(line);
}

std::vector<bool> FigureList::AccountsWith(const Text& part) const {
  std::vector<bool> has(book_->accounts.size() + 1, part.empty());
  const Text wanted = UpperCase(part);
  for (std::size_t index = 0; index < book_->accounts.size(); ++index) {
    const engine::AccountDescription& account = book_->accounts[index];
    if (UpperCase(account.code + " " + account.description).find(wanted) != Text::npos) has[index + 1] = true;
  }
  return has;
}

void FigureList::Choose(const Filter& filter) {
  const std::vector<bool> accounts = AccountsWith(filter.account);
  chosen_.clear();
  for (std::size_t index = 0; index < lines_.size(); ++index) {
    const FigureLine& line = lines_[index];
    const bool is_chosen = accounts[static_cast<std::size_t>(line.account_position)] &&
                           (filter.field_position == 0 || filter.field_position == line.field_position) &&
                           (!filter.file || *filter.file == line.file);
    if (is_chosen) chosen_.push_back(static_cast<std::uint32_t>(index));
  }
  Order();
}

void FigureList::Sort(Column column, bool descending) {
  column_ = column;
  descending_ = descending;
  Order();
}

void FigureList::Order() {
  std::ranges::sort(chosen_);
  if (!column_) return;
  std::ranges::stable_sort(chosen_, [this](std::uint32_t one, std::uint32_t other) {
    const auto order = CompareBy(*column_, lines_[one], lines_[other]);
    return descending_ ? std::is_gt(order) : std::is_lt(order);
  });
}

Double FigureList::NetDifference() const {
  Double net = 0;
  for (const std::uint32_t index : chosen_) {
    const Double difference = lines_[index].Difference();
    if (!std::isnan(difference)) net += difference;
  }
  return net;
}

FigureList ListOf(preview::ImportPreview& preview, const engine::BookDescription& book, std::size_t most) {
  FigureList list(book, most);
  preview.VisitChanges([&](std::size_t file, const preview::FigureChange& change) {
    list.Add({.file = static_cast<std::uint32_t>(file),
              .account_position = change.account_position,
              .field_position = change.field_position,
              .date = change.date,
              .first = change.before,
              .second = change.after});
    return true;
  });
  list.Choose({});
  return list;
}

FigureList ListOf(TieOut& tie_out, const engine::BookDescription& book, std::size_t most) {
  FigureList list(book, most);
  tie_out.VisitDifferences([&](const TieOutFigure& figure) {
    list.Add({.file = static_cast<std::uint32_t>(figure.file),
              .account_position = figure.account_position,
              .field_position = figure.field_position,
              .date = figure.date,
              .first = figure.expected.value_or(std::numeric_limits<Double>::quiet_NaN()),
              .second = figure.stands});
    return true;
  });
  list.Choose({});
  return list;
}

}  // namespace tallybook::application
