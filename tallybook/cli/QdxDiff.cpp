#include "tallybook/cli/QdxDiff.h"

#include <algorithm>
#include <fmt/format.h>
#include <map>
#include <ostream>
#include <tuple>
#include <vector>

#include "base/Dates.h"
#include "base/Failure.h"
#include "tallybook/cli/FigurePrinter.h"
#include "tallybook/inspect/QdxWalk.h"

namespace tallybook::cli {

namespace {

using inspect::QdxListener;
using inspect::QdxWalk;

struct DatedFigure {
  Date date = kNoDate;
  Integer field = 0;  // its number
  Double value = 0;
  [[nodiscard]] auto Key() const { return std::tuple(date, field); }
};
using Figures = std::vector<DatedFigure>;

// A file with the places of its accounts' figures, which are read when they are asked for.
class IndexedFile : private QdxListener {
 public:
  explicit IndexedFile(const Text& path) : path_(path), walk_(path, *this) {
    if (!walk_.Header() || !walk_.Body()) {
      throw Failure(FailureNumber::kDeviceError, fmt::format("{}: byte {}: {}", path_, reason_offset_, reason_));
    }
    indexing_ = false;
  }

  [[nodiscard]] const HeaderRecord& Record() const { return walk_.Record(); }
  // Header items that are no table, but for when the file was made.
  [[nodiscard]] const std::map<Text, Text, std::less<>>& HeadItems() const { return head_items_; }

  // The figures of the account at a place of the file's table, by date and field number.
  [[nodiscard]] const Figures& FiguresOf(Integer account_index) {
    figures_.clear();
    const auto found = dates_of_.find(account_index);
    if (found != dates_of_.end()) walk_.Dates(found->second);
    std::sort(figures_.begin(), figures_.end(), [](const auto& a, const auto& b) { return a.Key() < b.Key(); });
    return figures_;
  }

 private:
  void Item(long long /*offset*/, std::string_view name, Integer row, const Text& value) override {
    if (row == 0 && !name.starts_with("creation")) head_items_.emplace(name, value);
  }
  void Account(long long offset, Integer index) override {
    dates_of_.emplace(index, offset + static_cast<long long>(BytesOf<BodyAccount>()));
  }
  void DateStart(long long /*offset*/, const BodyDate& date, Integer /*values*/) override {
    date_ = DateFromParts(date.year, date.month, date.day);
  }
  void Value(long long /*offset*/, const BodyValue& value) override {
    if (indexing_ || value.field_index < 1 || value.field_index > walk_.Record().NumFields) return;
    figures_.push_back({date_, walk_.Record().FieldNumbers(value.field_index), value.value});
  }
  void Irregular(long long offset, inspect::Effect /*effect*/, const Text& what) override {
    reason_offset_ = offset;
    reason_ = what;
  }

  Text path_;
  std::map<Text, Text, std::less<>> head_items_;
  std::map<Integer, long long> dates_of_;
  Figures figures_;
  Date date_ = kNoDate;
  bool indexing_ = true;
  long long reason_offset_ = 0;
  Text reason_;
  QdxWalk walk_;
};

class Diff {
 public:
  Diff(const Text& first_path, const Text& second_path, const std::function<void(const Text& line)>& tell)
      : first_path_(first_path), second_path_(second_path), first_(first_path), second_(second_path), tell_(tell) {}

  long long Run() {
    CompareHeads();
    CompareTable(first_.Record().NumPeriods, second_.Record().NumPeriods, "period", [](const HeaderRecord& r, int i) {
      return fmt::format("{}, {} days", r.PeriodNames(i), r.PeriodLengths(i));
    });
    CompareTable(first_.Record().NumYears, second_.Record().NumYears, "year",
                 [](const HeaderRecord& r, int i) { return std::to_string(r.YearCodes(i)); });
    CompareFields();
    CompareAccounts();
    return differences_;
  }

 private:
  void Tell(const Text& line) {
    tell_(line);
    ++differences_;
  }
  void TellPair(const Text& what, const Text& first, const Text& second) {
    Tell(fmt::format("{}: {} | {}", what, first, second));
  }

  void CompareHeads() {
    for (const auto& [name, value] : first_.HeadItems()) {
      const auto other = second_.HeadItems().find(name);
      if (other != second_.HeadItems().end() && other->second != value) TellPair(name, value, other->second);
    }
  }

  // Rows of equal place; a count that differs has been told with the head.
  template <typename RowText>
  void CompareTable(Integer first_rows, Integer second_rows, const Text& what, RowText row_text) {
    for (int i = 1; i <= std::min(first_rows, second_rows); ++i) {
      const Text first = row_text(first_.Record(), i);
      const Text second = row_text(second_.Record(), i);
      if (first != second) TellPair(what + " " + std::to_string(i), first, second);
    }
  }

  void TellOnlyIn(const Text& what, const Text& path) { Tell(fmt::format("{}: only in {}", what, path)); }

  static std::map<Integer, Text> FieldsOf(const HeaderRecord& record) {
    std::map<Integer, Text> fields;
    for (int i = 1; i <= record.NumFields; ++i) fields.emplace(record.FieldNumbers(i), record.FieldDescs(i));
    return fields;
  }

  void CompareFields() {
    const auto first = FieldsOf(first_.Record());
    const auto second = FieldsOf(second_.Record());
    for (const auto& [number, name] : first) {
      const Text what = "field " + std::to_string(number);
      const auto other = second.find(number);
      if (other == second.end()) {
        TellOnlyIn(what, first_path_);
      } else if (other->second != name) {
        TellPair(what, name, other->second);
      }
    }
    for (const auto& [number, name] : second) {
      if (!first.contains(number)) TellOnlyIn("field " + std::to_string(number), second_path_);
    }
  }

  // The places of a file's accounts by code; of equal codes the first.
  static std::map<Text, Integer> AccountsOf(const HeaderRecord& record) {
    std::map<Text, Integer> accounts;
    for (int i = 1; i <= record.NumAccounts; ++i) accounts.emplace(record.AccountCodes(i), static_cast<Integer>(i));
    return accounts;
  }

  void CompareAccounts() {
    const auto second = AccountsOf(second_.Record());
    const auto first = AccountsOf(first_.Record());
    for (int i = 1; i <= first_.Record().NumAccounts; ++i) {
      const Text& code = first_.Record().AccountCodes(i);
      const auto index = static_cast<Integer>(i);
      const auto other = second.find(code);
      if (other == second.end()) {
        TellOnlyIn("account " + code, first_path_);
      } else {
        CompareAccount(code, index, other->second);
      }
    }
    for (int i = 1; i <= second_.Record().NumAccounts; ++i) {
      const Text& code = second_.Record().AccountCodes(i);
      if (!first.contains(code)) TellOnlyIn("account " + code, second_path_);
    }
  }

  void CompareAccount(const Text& code, Integer first_index, Integer second_index) {
    const Text& first_name = first_.Record().AccountDescs(first_index);
    const Text& second_name = second_.Record().AccountDescs(second_index);
    if (first_name != second_name) TellPair("account " + code, first_name, second_name);
    CompareFigures(code, first_.FiguresOf(first_index), second_.FiguresOf(second_index));
  }

  void CompareFigures(const Text& code, const Figures& first, const Figures& second) {
    const auto tell = [&](const DatedFigure& figure, const Text& a, const Text& b) {
      TellPair(fmt::format("{} {} field {}", code, DateText(figure.date), figure.field), a, b);
    };
    auto a = first.begin();
    auto b = second.begin();
    while (a != first.end() || b != second.end()) {
      if (b == second.end() || (a != first.end() && a->Key() < b->Key())) {
        tell(*a, ShortestText(a->value), "none");
        ++a;
      } else if (a == first.end() || b->Key() < a->Key()) {
        tell(*b, "none", ShortestText(b->value));
        ++b;
      } else {
        if (a->value != b->value) tell(*a, ShortestText(a->value), ShortestText(b->value));
        ++a;
        ++b;
      }
    }
  }

  Text first_path_;
  Text second_path_;
  IndexedFile first_;
  IndexedFile second_;
  const std::function<void(const Text& line)>& tell_;
  long long differences_ = 0;
};

}  // namespace

long long DiffQdxFiles(const Text& first_path, const Text& second_path,
                       const std::function<void(const Text& line)>& tell) {
  return Diff(first_path, second_path, tell).Run();
}

}  // namespace tallybook::cli
