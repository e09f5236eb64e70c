// Random books and files, imported and worked out on a plain map.
#include <algorithm>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <map>
#include <rapidcheck.h>
#include <rapidcheck/gtest.h>
#include <set>
#include <utility>

#include "import/QDXImport.h"
#include "tests/import/ImportSetup.h"

namespace tallybook::testing {
namespace {

// What an import is told, drawn at random.
struct Trial {
  Integer level = kDayLevel;
  Integer math = 0;
  Integer account_mode = kManually;
  Integer field_mode = kManually;
  std::vector<std::pair<Text, Text>> account_rows;
  std::vector<std::pair<Integer, Integer>> field_rows;
  Figures present;  // by any date
  ExchangeFile file;
};

// Up to `most` values, each drawn from the whole of its range: a trial stays small, whatever size is asked for.
template <typename Value>
rc::Gen<std::vector<Value>> UpTo(int most, rc::Gen<Value> value) {
  return rc::gen::resize(most,
                         rc::gen::container<std::vector<Value>>(rc::gen::resize(rc::kNominalSize, std::move(value))));
}
template <typename Value>
std::vector<Value> Some(int most, rc::Gen<Value> value) {
  return *UpTo(most, std::move(value));
}

// Figures are eighths, so that sums are exact in any order.
constexpr Double kEighth = 0.125;

rc::Gen<int> Eighths() {
  return rc::gen::inRange(-4000, 4000);
}

ExchangeFile SomeFile(Integer account_mode, Integer field_mode) {
  ExchangeFile file;
  file.first = February(*rc::gen::inRange(1, 20));
  file.last = file.first + *rc::gen::inRange(0, 20);
  // Modes that match by themselves need codes and numbers of the book; the others take any, repeated ones too.
  const auto codes = Some(5, account_mode == kOneForOne ? rc::gen::element<Text>("100", "200", "300")
                                                        : rc::gen::element<Text>("a", "b", "c"));
  for (const Text& code : codes) file.accounts.push_back({code, "of the file"});
  const auto numbers =
      Some(5, field_mode == kOneForOne ? rc::gen::elementOf(kBookFields) : rc::gen::element<Integer>(4, 5, 6));
  if (!codes.empty()) {
    for (const Integer number : numbers) file.fields.push_back({number, "of the file"});
  }
  for (std::size_t i = 0; i < codes.size(); ++i) {
    file.blocks.push_back({static_cast<Integer>(i + 1), {}});
    const auto values = UpTo(4, rc::gen::pair(rc::gen::inRange<Integer>(1, 6), Eighths()));
    for (const auto& [day, figures] : Some(6, rc::gen::pair(rc::gen::inRange(1, 41), values))) {
      ExchangeFile::Day made{February(day), {}};
      for (const auto& [field, eighths] : figures) made.values.push_back({field, eighths * kEighth});
      file.blocks.back().days.push_back(made);
    }
  }
  return file;
}

Trial SomeTrial() {
  Trial trial;
  trial.level = *rc::gen::element(kDayLevel, kWeekLevel, kPeriodLevel);
  trial.math = *rc::gen::element<Integer>(0, 1, 2, 3, 4, 5, 6, -1);
  trial.account_mode = *rc::gen::element(kManually, kOneForOne, kAllToOne);
  trial.field_mode = *rc::gen::element(kManually, kOneForOne);
  trial.file = SomeFile(trial.account_mode, trial.field_mode);
  const auto& accounts = trial.file.accounts;
  const auto& fields = trial.file.fields;
  if (!accounts.empty()) {
    for (const int row : Some(4, rc::gen::inRange(0, static_cast<int>(accounts.size())))) {
      trial.account_rows.emplace_back(accounts[static_cast<std::size_t>(row)].code,
                                      (*rc::gen::elementOf(kBookAccounts)).second);
    }
  }
  if (!fields.empty()) {
    for (const int row : Some(4, rc::gen::inRange(0, static_cast<int>(fields.size())))) {
      trial.field_rows.emplace_back(fields[static_cast<std::size_t>(row)].number, *rc::gen::elementOf(kBookFields));
    }
  }
  const auto place = rc::gen::tuple(rc::gen::elementOf(kBookAccounts), rc::gen::inRange(1, 41),
                                    rc::gen::elementOf(kBookFields), Eighths());
  for (const auto& [account, day, field, eighths] : Some(20, place)) {
    trial.present[{account.first, February(day), field}] = eighths * kEighth;
  }
  return trial;
}

// The rules once more, on a map: no records, no files, no order of reading and writing.
class Model {
 public:
  Model(const Trial& trial, MemoryMasterfile& book) : trial_(trial), book_(book), figures_(book.Figures()) {}

  Figures AfterImport() {
    MapAccounts();
    MapFields();
    if (trial_.math >= 3) Zero();
    if (trial_.math != 4) Apply();
    std::erase_if(figures_, [](const auto& figure) { return figure.second == 0; });
    return figures_;
  }

 private:
  Date Level(Date date) { return book_.FiscalCalendar().LevelDate(date, trial_.level); }

  static Long NumberOf(const Text& code) {
    return std::find_if(kBookAccounts.begin(), kBookAccounts.end(), [&](const auto& a) { return a.second == code; })
        ->first;
  }
  // The first position, from 1, of what `is_it` tells.
  template <typename List, typename Is>
  static int FirstOf(const List& list, Is is_it) {
    return static_cast<int>(std::find_if(list.begin(), list.end(), is_it) - list.begin()) + 1;
  }

  void MapAccounts() {
    std::vector<std::pair<Text, Text>> rows = trial_.account_rows;
    if (trial_.account_mode != kManually) {
      rows.clear();
      for (const auto& account : trial_.file.accounts) {
        rows.emplace_back(account.code, trial_.account_mode == kAllToOne ? "200" : account.code);
      }
    }
    for (const auto& [from, to] : rows) {
      accounts_[FirstOf(trial_.file.accounts, [code = from](const auto& a) { return a.code == code; })] = NumberOf(to);
      zeroed_accounts_.insert(NumberOf(to));
    }
  }
  void MapFields() {
    std::vector<std::pair<Integer, Integer>> rows = trial_.field_rows;
    if (trial_.field_mode != kManually) {
      rows.clear();
      for (const auto& field : trial_.file.fields) rows.emplace_back(field.number, field.number);
    }
    for (const auto& [from, to] : rows) {
      fields_[FirstOf(trial_.file.fields, [number = from](const auto& f) { return f.number == number; })] = to;
      zeroed_fields_.insert(to);
    }
  }
  void Zero() {
    for (Date date = Level(trial_.file.first); date <= trial_.file.last; date = Level(date + 1)) {
      for (const Long account : zeroed_accounts_) {
        for (const Integer field : zeroed_fields_) figures_.erase({account, date, field});
      }
    }
  }
  void Apply() {
    for (const auto& block : trial_.file.blocks) {
      for (const auto& day : block.days) {
        for (const auto& value : day.values) {
          const auto account = accounts_.find(block.account_position);
          const auto field = fields_.find(value.field_position);
          if (account == accounts_.end() || field == fields_.end()) continue;
          figures_[{account->second, Level(day.date), field->second}] += trial_.math == 2 ? -value.value : value.value;
        }
      }
    }
  }

  const Trial& trial_;
  MemoryMasterfile& book_;
  Figures figures_;
  std::map<int, Long> accounts_;
  std::map<int, Integer> fields_;
  std::set<Long> zeroed_accounts_;
  std::set<Integer> zeroed_fields_;
};

RC_GTEST_PROP(QDXImportProperty, AgreesWithTheRulesOnAPlainMap, ()) {
  const Trial trial = SomeTrial();
  BookShape shape;
  shape.data_level = trial.level;
  ImportSetup setup(shape);
  MemoryMasterfile& book = setup.host->book;
  for (const auto& [key, value] : trial.present) book.Set(std::get<0>(key), std::get<1>(key), std::get<2>(key), value);
  setup.math = trial.math;
  setup.MatchAccounts(trial.account_rows);
  setup.MatchFields(trial.field_rows);
  setup.definition.AcctMatch = trial.account_mode;
  setup.definition.FldMatch = trial.field_mode;
  setup.definition.AcctAll = 102;
  setup.Put("DAY.QDX", trial.file);
  const Figures before = book.Figures();
  const Figures expected = Model(trial, book).AfterImport();

  RC_ASSERT(setup.Import());

  RC_ASSERT(setup.platform.boxes.Texts().empty());
  RC_ASSERT(book.Figures() == expected);
  RC_ASSERT(setup.platform.memory.OpenHandles() == 0);
  RC_ASSERT(book.UndoLastRollback());
  RC_ASSERT(book.Figures() == before);
}

}  // namespace
}  // namespace tallybook::testing
