#include "tallybook/inspect/QdxLines.h"

#include <algorithm>
#include <fmt/format.h>
#include <iterator>
#include <utility>

#include "tallybook/application/Counts.h"

namespace tallybook::inspect {

namespace {

constexpr long long kLongestItem = 10;  // of the body, in bytes

// A count may be more than the table has room for.
Text NameOf(const FixedTable<Text>& codes, const FixedTable<Text>& names, Integer index) {
  return index <= codes.Rows() ? codes(index) + "  " + names(index) : std::to_string(index) + " of the table";
}

}  // namespace

// The walk through the body goes as far as the first place that can be walked on from.
QdxLines::QdxLines(const Text& path) : walk_(path, *this) {
  is_header_whole_ = walk_.Header();
  if (is_header_whole_) walk_.Body();
  lines_.clear();
}

QdxLines::Place QdxLines::About(long long offset, int before, int behind) {
  wanted_ = offset;
  before_ = static_cast<std::size_t>(std::max(before, 0));
  behind_left_ = behind + 1;  // with the one that is asked for
  lines_.clear();
  at_ = 0;
  const auto near = std::ranges::upper_bound(begins_, offset - kLongestItem * before, {}, &DatePlace::offset);
  if (near == begins_.begin()) {
    for (const Line& line : header_) Take(line.offset, line.text);
    if (!begins_.empty()) WalkBodyFrom(begins_.front());
  } else {
    WalkBodyFrom(*std::prev(near));
  }
  return {.lines = {lines_.begin(), lines_.end()}, .at = at_};
}

// Its account stands in front of it, wherever that begins.
void QdxLines::WalkBodyFrom(const DatePlace& place) {
  if (behind_left_ == 0) return;
  account_ = place.account;
  Take(account_.offset, account_.text);
  if (walk_.Dates(place.offset) && behind_left_ > 0) walk_.Body();
}

void QdxLines::Take(long long offset, Text text) {
  if (behind_left_ == 0) return;
  if (offset > wanted_ && !lines_.empty()) --behind_left_;
  if (behind_left_ == 0) return;
  lines_.push_back({offset, std::move(text)});
  if (offset > wanted_) return;
  if (lines_.size() > before_ + 1) lines_.pop_front();
  at_ = lines_.size() - 1;
}

void QdxLines::Remember(long long offset) {
  if (begins_.empty() || offset >= begins_.back().offset + kRememberEvery) begins_.push_back({offset, account_});
}

void QdxLines::Item(long long offset, std::string_view name, Integer row, const Text& value) {
  header_.push_back(
      {offset, row > 0 ? fmt::format("{} {}: {}", name, row, value) : fmt::format("{}: {}", name, value)});
}

void QdxLines::Account(long long offset, Integer index) {
  const HeaderRecord& record = walk_.Record();
  account_ = {offset, "account " + NameOf(record.AccountCodes, record.AccountDescs, index)};
  Take(account_.offset, account_.text);
}

void QdxLines::DateStart(long long offset, const BodyDate& date, Integer values) {
  Remember(offset);
  Take(offset, fmt::format("  {}, {}", DateItemText(date), application::Counted(values, "figure")));
}

void QdxLines::Value(long long offset, const BodyValue& value) {
  const HeaderRecord& record = walk_.Record();
  const bool is_in_table = value.field_index >= 1 && value.field_index <= record.NumFields &&
                           value.field_index <= record.FieldNumbers.Rows();
  Take(offset, is_in_table ? fmt::format("    {}  {}: {}", record.FieldNumbers(value.field_index),
                                         record.FieldDescs(value.field_index), value.value)
                           : fmt::format("    no field of the table, {}: {}", value.field_index, value.value));
}

void QdxLines::AccountEnd(long long offset) {
  Remember(offset);
  Take(offset, "  end of the account");
}

void QdxLines::BodyEnd(long long offset) {
  Take(offset, "end of the figures");
}

}  // namespace tallybook::inspect
