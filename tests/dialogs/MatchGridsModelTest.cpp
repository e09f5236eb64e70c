// Random keys, clicks, choices, scrolls, turns of the wheel, page changes, saves and loads on the match pages, held
// against a small model that is written from the key tables and knows nothing of controls.
#include <algorithm>
#include <array>
#include <gtest/gtest.h>
#include <map>
#include <rapidcheck.h>
#include <rapidcheck/gtest.h>
#include <tuple>
#include <vector>

#include "base/Texts.h"
#include "forms/CHookMouseWheel.h"
#include "forms/WheelScroll.h"
#include "platform/Wheel.h"
#include "tests/dialogs/MatchEditor.h"
#include "tests/support/ScriptedPlatform.h"

namespace tallybook::testing {
namespace {

constexpr Integer kPickColumns[] = {2, 3};
constexpr Long kDelay = MatchEditor::kTypeAheadDelay;
constexpr Long kRow = MatchEditor::kRowHeight;
constexpr Long kHead = kRow * 5 / 4;
constexpr int kPages = 2;

struct Entry {
  Integer value;
  Text text;
};
struct FileRow {
  Text name;
  Text description;
  Long index;  // in the table of matches
};

struct ModelPage {
  std::vector<FileRow> rows;
  std::vector<Entry> entries;
  std::map<Integer, std::pair<Text, Text>> shown;  // by value: what ours shows
  std::map<Long, Integer> matches;
  std::vector<std::pair<Text, Text>> ours;  // as drawn, by row
  int selected = 0;
  Long row = 1;
  Long top = 1;
  bool entered = false;
  bool open = false;
  bool dropped = false;

  [[nodiscard]] Long Last() const { return static_cast<Long>(rows.size()); }
  [[nodiscard]] const FileRow& At(Long at) const { return rows[static_cast<std::size_t>(at - 1)]; }
  template <typename Is>
  [[nodiscard]] int First(Is is) const {
    const auto found = std::find_if(entries.begin(), entries.end(), is);
    return found == entries.end() ? -1 : static_cast<int>(found - entries.begin());
  }
};

bool Begins(const Text& text, const Text& start) {
  return UpperCase(text).starts_with(UpperCase(start));
}

class Model {
 public:
  std::array<ModelPage, kPages> pages;
  int shown = 0;  // 0 the first page, then those of `pages`
  bool cancel = false;
  Long height = 0;
  Long now = 0;

  [[nodiscard]] ModelPage* Current() { return shown == 0 ? nullptr : &pages.at(static_cast<std::size_t>(shown - 1)); }

  void Load(const std::array<std::map<Long, Integer>, kPages>& matches) {
    for (std::size_t i = 0; i < kPages; ++i) {
      ModelPage& page = pages.at(i);
      page.matches = matches.at(i);
      page.selected = 0;
      page.row = page.top = 1;
      page.entered = page.open = page.dropped = false;
      page.ours.assign(page.rows.size(), {});
      for (Long row = 1; row <= page.Last(); ++row) Draw(page, row);
    }
    shown = 0;
    cancel = false;
    text_.clear();
    typed_ = {};
  }

  void Go(int page) {
    if (page == shown) return;
    shown = page;
    if (Current() != nullptr && Current()->Last() > 0) Enter(*Current());
  }
  void Save() {
    for (ModelPage& page : pages) Leave(page);
  }
  void Click(Long row, Long column) {
    ModelPage& page = *Current();
    if (row > 0 && (row != page.row || column != kPickColumns[shown - 1])) {
      Leave(page);
      page.row = row;
      IntoSight(page);
    }
    Enter(page);
  }
  void Choose(int entry) {
    Current()->dropped = false;
    Current()->selected = entry;
    Chosen(*Current());
  }
  void Scroll(Long top) {
    ModelPage& page = *Current();
    if (top == page.top) return;
    page.top = top;
    const Long last = std::max(top + height / kRow - 1, top + 1);
    Long row = page.row;
    if (row < top) row = top;
    if (row >= last) row = std::min(last - 1, page.Last());
    if (row != page.row) Leave(page);
    page.row = row;
    Enter(page);
  }
  // By so many lines, or by pages.
  void Wheel(bool up, Long lines) {
    const ModelPage& page = *Current();
    if (lines == kScrollPage) {
      lines = height / kHead;
      if (lines > page.Last() + 1) return;
      while (lines > 0 && (page.top + lines > page.Last() || (lines + 1) * kRow > height - kHead)) --lines;
    }
    Scroll(up ? std::max<Long>(page.top - lines, 1) : std::min(page.top + lines, page.Last()));
  }

  void Character(int code) {
    ModelPage& page = *Current();
    if (now > key_time_ + kDelay) {
      text_.clear();
      typed_ = {};
    }
    key_time_ = now;
    const std::pair<int, Long> here{shown, page.row};
    const bool fields = shown == 2;
    if (code == '.') {
      text_.clear();
      Select(page, 0);
    } else if (code == '*') {
      text_ = fields ? page.At(page.row).description : page.At(page.row).name;
      const int found = page.First([&](const Entry& entry) { return UpperCase(entry.text) == UpperCase(text_); });
      typed_ = {};
      Select(page, std::max(found, 0));
      Down(page);
    } else if (code == '+' && fields) {
      typed_ = {};
      Select(page,
             page.First([&](const Entry& entry) { return std::to_string(entry.value) == page.At(page.row).name; }));
      Down(page);
    } else if (code == '0' && (text_.empty() || typed_ != here)) {
      typed_ = {};
      Select(page, 0);
      Down(page);
    } else if (code == '+') {
      typed_ = {};
      Search(page);
    } else if (code == 8 || code == ' ') {
      if (text_.empty()) return;
      if (code == 8)
        text_.pop_back();
      else
        text_ += ' ';
      typed_ = here;
      Search(page);
    } else if (code > ' ') {
      text_ += static_cast<char>(code);
      typed_ = here;
      Search(page);
    }
  }

  void Key(int key, int shift) {
    ModelPage& page = *Current();
    if (key == kDeleteKey) return Character('.');
    const bool moves = key == kHomeKey || key == kUpKey || key == kDownKey || key == kPageUpKey || key == kPageDownKey;
    if (moves) typed_ = {};
    if (key == kHomeKey) return Move(page, 1);
    const bool left_to_list = !moves || page.open || shift != 0;
    if (moves && shift == kAltState) page.open = true;
    if (left_to_list) return ListKey(page, key, shift);
    const Long fit = std::max<Long>(height / kRow - 2, 0);
    if (key == kDownKey) Down(page);
    if (key == kUpKey && page.row > 1) Move(page, page.row - 1);
    if (key == kPageDownKey) Move(page, std::min(page.row + fit, page.Last()));
    if (key == kPageUpKey) Move(page, std::max<Long>(page.row - fit, 1));
  }

 private:
  void Draw(ModelPage& page, Long row) {
    const Integer value = page.matches[page.At(row).index];
    const bool accounts = &page == pages.data();
    auto& cells = page.ours[static_cast<std::size_t>(row - 1)];
    if (value <= 0) {
      cells = {accounts ? "" : "0", "Not to be sent"};
    } else if (const auto known = page.shown.find(value); known != page.shown.end()) {
      cells = known->second;
    } else {
      cells = {accounts ? "" : std::to_string(value), ""};
    }
  }
  void Leave(ModelPage& page) {
    if (!page.entered || page.selected < 0) return;
    page.matches[page.At(page.row).index] = page.entries[static_cast<std::size_t>(page.selected)].value;
    Draw(page, page.row);
    cancel = true;
  }
  // Where the value is not in the list the selection stays.
  static void Enter(ModelPage& page) {
    page.entered = true;
    page.open = page.dropped = false;
    const Integer value = page.matches[page.At(page.row).index];
    const int found = page.First([&](const Entry& entry) { return entry.value == value; });
    if (found >= 0) page.selected = found;
  }
  void Chosen(ModelPage& page) {
    cancel = true;
    Leave(page);
  }
  void Select(ModelPage& page, int entry) {
    if (entry < 0 || entry == page.selected) return;
    page.selected = entry;
    Chosen(page);
  }
  void Search(ModelPage& page) {
    if (!text_.empty()) Select(page, page.First([&](const Entry& entry) { return Begins(entry.text, text_); }));
  }
  void IntoSight(ModelPage& page) const {
    const Long fit = std::max<Long>((height - kHead) / kRow, 1);
    page.top = std::clamp(page.top, page.row - fit + 1, page.row);
  }
  void Move(ModelPage& page, Long row) {
    if (row == page.row) return;
    Leave(page);
    page.row = row;
    IntoSight(page);
    Enter(page);
  }
  void Down(ModelPage& page) {
    if (!page.open) Move(page, page.row < page.Last() ? page.row + 1 : 1);
  }
  void ListKey(ModelPage& page, int key, int shift) {
    if (shift == kAltState && (key == kUpKey || key == kDownKey)) page.dropped = !page.dropped;
    if (shift != 0) return;
    if (key == kEnterKey) page.dropped = false;
    const std::map<int, int> steps{{kUpKey, -1}, {kDownKey, 1}, {kPageUpKey, -8}, {kPageDownKey, 8}, {kEndKey, 999}};
    if (const auto step = steps.find(key); step != steps.end()) {
      Select(page, std::clamp(page.selected + step->second, 0, static_cast<int>(page.entries.size()) - 1));
    }
  }

  Text text_;
  std::pair<int, Long> typed_;  // page and row; none: page 0
  Long key_time_ = 0;
};

// --- The same on both sides ------------------------------------------------------------------------------------------

// What is done, with two numbers whose meaning depends on it.
using Act = std::tuple<int, int, int>;

class Trial {
 public:
  Trial(const std::vector<int>& accounts, const std::vector<int>& fields, Long height) : host_(SmallBook()) {
    host_->book.AddAccount(300, "1000", "Annex");
    host_->book.AddAccount(301, "1 n", "North");
    host_->book.AddAccount(302, "Sa", "South");
    host_->book.AddAccount(303, "sA", "South again");
    host_->book.AddField(8, "sales 2");
    host_->book.AddField(9, "");
    editor_ = std::make_unique<MatchEditor>(host_->book);
    BuildEntries();
    BuildFile(accounts, fields);
    model_.height = height;
    for (const MatchPage page : kBoth) {
      Grid& grid = editor_->grids.GridOf(page);
      grid.SetPlace({0, 0, 700, height});
      grid.SetHwnd(platform_.screen.AddControlWindow(editor_->Hwnd(), {0, 0, 700, height}));
    }
    wheel_.SetHwnd(editor_->Hwnd());
    wheel_.MouseWheel.Connect([this](Long, Long delta, Long shift, Long, Long, Long, bool&) {
      WheelMove(editor_->grids.GridOf(Shown()).Hwnd(), delta, shift);
    });
    Load(0);
  }

  void Do(const Act& act) {
    const auto [kind, first, second] = act;
    ModelPage* const page = model_.Current();
    if (kind == 0) return Pass(first);
    if (kind == 1) return Go(first);
    if (kind == 2) return Save();
    if (kind == 3) return first < 3 ? Load(second) : SetMode(first, second);
    if (page == nullptr || page->Last() == 0) return;
    if (kind == 4) return Click(*page, first, second);
    if (kind == 5) return Choose(*page, first);
    if (kind == 6) return Scroll(*page, first);
    if (kind == 16) return Wheel(first, second);
    return kind < 9 ? Key(first, second) : Character(first);
  }

  void Compare() {
    RC_ASSERT(editor_->failures.empty());
    RC_ASSERT(editor_->grids.CurrentPage() == model_.shown);
    RC_ASSERT(editor_->TabStrip1.Selected() == model_.shown + 1);
    RC_ASSERT(editor_->SaveButtons1.CancelEnabled() == model_.cancel);
    for (const MatchPage which : kBoth) {
      const auto index = static_cast<std::size_t>(which) - 1;
      const ModelPage& page = model_.pages.at(index);
      const Grid& grid = editor_->grids.GridOf(which);
      const ComboBox& list = editor_->grids.ListOf(which);
      RC_ASSERT(list.ListIndex() == page.selected);
      RC_ASSERT(list.DroppedDown() == page.dropped);
      for (const auto& [at, value] : page.matches) RC_ASSERT(editor_->grids.Match(which, at) == value);
      if (page.Last() == 0) continue;
      RC_ASSERT(grid.Row() == page.row);
      RC_ASSERT(grid.TopRow() == page.top);
      RC_ASSERT((grid.Column() == kPickColumns[index]) == page.entered);
      if (page.entered) RC_ASSERT(list.Place().top == grid.CellPlace(page.row, grid.Column()).top);
      for (Long row = 1; row <= page.Last(); ++row) {
        RC_ASSERT(std::pair(grid.Cell(row, 2), grid.Cell(row, 3)) == page.ours[static_cast<std::size_t>(row - 1)]);
      }
    }
  }

 private:
  static constexpr MatchPage kBoth[] = {MatchPage::kAccounts, MatchPage::kFields};

  [[nodiscard]] MatchPage Shown() const { return static_cast<MatchPage>(model_.shown); }

  void BuildEntries() {
    MemoryMasterfile& book = host_->book;
    const auto account = book.NewAccountRecord();
    for (ModelPage& page : model_.pages) page.entries.push_back({0, " (not to be sent)"});
    for (Integer i = 1; i <= book.NumAccounts(); ++i) {
      account->SetSelect(book.AccountNumber(i));
      const auto number = static_cast<Integer>(book.AccountNumber(i));
      const Text code = TrimRight(account->Code());
      model_.pages[0].entries.push_back({number, code});
      model_.pages[0].shown[number] = {code, TrimRight(account->Description())};
    }
    for (Integer i = 1; i <= book.NumFields(); ++i) {
      const Integer number = book.FieldNumber(i);
      model_.pages[1].entries.push_back({number, book.FieldName(i)});
      model_.pages[1].shown[number] = {std::to_string(number), book.FieldName(i)};
    }
    for (ModelPage& page : model_.pages) {
      std::stable_sort(page.entries.begin() + 1, page.entries.end(),
                       [](const Entry& a, const Entry& b) { return UpperCase(a.text) < UpperCase(b.text); });
    }
  }
  void BuildFile(const std::vector<int>& accounts, const std::vector<int>& fields) {
    static const std::vector<Text> codes{"100", "200", "sa", "1", "1000", "x", "30"};
    static const std::vector<Text> descriptions{"sales", "Weather", "", "Sales 2", "Guests", "weather", "Customers"};
    for (const int which : accounts) {
      const Text& code = codes[static_cast<std::size_t>(which) % codes.size()];
      editor_->AddFileAccount(code, "of the file");
      model_.pages[0].rows.push_back({code, "of the file", static_cast<Long>(model_.pages[0].rows.size()) + 1});
    }
    Integer number = 0;
    for (const int which : fields) {
      const Text& description = descriptions[static_cast<std::size_t>(which) % descriptions.size()];
      editor_->AddFileField(++number, description);
      model_.pages[1].rows.push_back({std::to_string(number), description, number});
    }
    auto& rows = model_.pages[1].rows;
    std::stable_sort(rows.begin(), rows.end(), [](const FileRow& a, const FileRow& b) {
      return UpperCase(a.description) < UpperCase(b.description);
    });
  }

  // Matches of every kind: not sent, in the lists, and of numbers that they do not have.
  void Load(int seed) {
    static constexpr Integer kAccountNumbers[] = {0, 101, 0, 300, 999, 205};
    static constexpr Integer kFieldNumbers[] = {0, 1, 7, 0, 55, 8};
    std::array<std::map<Long, Integer>, kPages> matches;
    std::vector<MatchEditor::Stored> stored;
    for (const MatchPage which : kBoth) {
      const auto index = static_cast<std::size_t>(which) - 1;
      for (const FileRow& row : model_.pages.at(index).rows) {
        const auto drawn = static_cast<std::size_t>(seed == 0 ? 0 : row.index * seed % 6);
        const Integer number = index == 0 ? kAccountNumbers[drawn] : kFieldNumbers[drawn];
        matches.at(index)[row.index] = number;
        stored.push_back({which, row.index, number});
      }
    }
    editor_->LoadMatches(stored);
    model_.Load(matches);
  }
  void Pass(int steps) {
    const Long milliseconds = 400 * (steps % 4);
    platform_.clock.Advance(milliseconds / 1000.0);
    model_.now += milliseconds;
  }
  void SetMode(int which, int mode) {
    ListControl& modes = which % 2 == 0 ? editor_->Combo2 : editor_->Combo3;
    modes.SetListIndex(static_cast<Integer>(mode % 3 == 0 ? 1 : 0));
  }
  void Go(int where) {
    const int page = where % 3;
    editor_->TabStrip1.UserChoose(static_cast<Integer>(page + 1));
    platform_.input.RunOnce();
    const bool refused =
        (page == 1 && editor_->Combo2.ListIndex() != 0) || (page == 2 && editor_->Combo3.ListIndex() == 1);
    if (!refused) model_.Go(page);
  }
  void Save() {
    editor_->grids.CommitOpenCells();
    model_.Save();
  }
  void Click(const ModelPage& page, int where, int column) {
    const Long row = where % (page.Last() + 1);
    editor_->grids.GridOf(Shown()).UserClick(row, column % 4);
    model_.Click(row, column % 4);
  }
  void Choose(const ModelPage& page, int which) {
    const int entry = which % static_cast<int>(page.entries.size());
    editor_->grids.ListOf(Shown()).UserChoose(static_cast<Integer>(entry));
    model_.Choose(entry);
  }
  void Scroll(const ModelPage& page, int where) {
    const Long top = where % page.Last() + 1;
    editor_->grids.GridOf(Shown()).UserScroll(top);
    model_.Scroll(top);
  }
  void Wheel(int which, int lines) {
    static constexpr Long kLines[] = {1, 3, kScrollPage, 0};
    static constexpr Integer kTurns[] = {-120, 120, -360, 120, 0};
    const Integer turn = kTurns[which % 5];
    platform_.wheel.SetScrollLines(kLines[lines % 4]);
    platform_.wheel.Turn(editor_->Hwnd(), turn, 1, 1);
    model_.Wheel(turn > 0, kLines[lines % 4]);
  }
  void Key(int which, int shift) {
    static constexpr Integer kKeys[] = {kDownKey, kUpKey,     kPageDownKey, kPageUpKey, kHomeKey,
                                        kEndKey,  kDeleteKey, kEnterKey,    kDownKey};
    static constexpr Integer kShifts[] = {0, 0, 0, 0, kAltState, kShiftState};
    const Integer key = kKeys[which % 9];
    const Integer state = kShifts[shift % 6];
    editor_->grids.ListOf(Shown()).UserKeyDown(key, state);
    model_.Key(key, state);
  }
  void Character(int which) {
    static constexpr std::string_view kCharacters = "**++00. \b\r1s20wA";
    const char code = kCharacters[static_cast<std::size_t>(which) % kCharacters.size()];
    editor_->grids.ListOf(Shown()).UserKeyPress(code);
    model_.Character(code);
  }

  ScriptedPlatform platform_{FilesIn::kMemory};
  std::unique_ptr<MemoryHost> host_;
  std::unique_ptr<MatchEditor> editor_;
  CHookMouseWheel wheel_;
  Model model_;
};

RC_GTEST_PROP(MatchGridsModelTest, EveryActLeavesThePagesAsTheKeyTablesSay, ()) {
  const auto files = rc::gen::container<std::vector<int>>(rc::gen::inRange(0, 7));
  const auto accounts = *rc::gen::resize(25, files);
  const auto fields = *rc::gen::resize(12, files);
  const Long height = *rc::gen::inRange<Long>(0, MatchEditor::HeightOf(9));
  const auto number = rc::gen::inRange(0, 1000);
  const auto acts = *rc::gen::container<std::vector<Act>>(rc::gen::tuple(rc::gen::inRange(0, 17), number, number));
  RC_TAG(accounts.empty() || fields.empty() ? "with an empty page" : "with both pages");
  Trial trial(accounts, fields, height);
  trial.Do({1, 1, 0});
  trial.Compare();
  for (const Act& act : acts) {
    trial.Do(act);
    trial.Compare();
  }
}

}  // namespace
}  // namespace tallybook::testing
