#include "dialogs/MatchGrids.h"

#include <algorithm>
#include <cstdint>
#include <utility>

#include "base/Narrow.h"
#include "base/Raised.h"
#include "base/Texts.h"
#include "forms/KeyStrings.h"
#include "host/AccountRecord.h"
#include "host/FieldRecord.h"
#include "platform/Clock.h"
#include "platform/Platform.h"
#include "platform/Screen.h"
#include "qdx/HeaderRecord.h"
#include "support/WinAPI.h"

namespace tallybook {

namespace {

constexpr const char* kNotToBeSent = " (not to be sent)";
constexpr const char* kAccountColumns =
    "<Account Code   |<QDX Account Description             |<Account Code          |<Account Description in this "
    "System";
constexpr const char* kFieldColumns =
    ">#        |<QDX DataField Description                        |>#         |<DataField Description in this System";
constexpr Double kHeadFactor = 1.25;

// Columns: the file's side, then ours.
constexpr Long kFileName = 0;
constexpr Long kFileDescription = 1;
constexpr Long kOurName = 2;
constexpr Long kOurDescription = 3;
constexpr Long kColumns = 4;

// Where no cell is open: the list stands over a column of our side.
constexpr Long kNoCellOpen = kFileName;

// Positions of the modes in their lists.
constexpr Integer kManuallyPosition = 0;
constexpr Integer kOneForOnePosition = 1;

Long PickColumn(MatchPage page) {
  return page == MatchPage::kAccounts ? kOurName : kOurDescription;
}

// A grid that tells of its changes at the end.
class Redrawn {
 public:
  explicit Redrawn(Grid& grid) : grid_(grid) { grid_.SetRedraw(false); }
  ~Redrawn() { grid_.SetRedraw(true); }
  Redrawn(const Redrawn&) = delete;
  Redrawn& operator=(const Redrawn&) = delete;

 private:
  Grid& grid_;
};

class ListEntries : public MatchEntries {
 public:
  explicit ListEntries(const ListControl& list) : list_(list) {}
  [[nodiscard]] std::optional<Integer> WithPrefix(const Text& text) const override {
    return Found(list_.FindPrefix(text));
  }
  [[nodiscard]] std::optional<Integer> WithText(const Text& text) const override {
    return Found(list_.FindExact(text));
  }
  [[nodiscard]] std::optional<Integer> WithValue(Long value) const override { return Found(list_.FindTag(value)); }

 private:
  static std::optional<Integer> Found(Integer index) { return index == kNoEntry ? std::nullopt : std::optional(index); }
  const ListControl& list_;
};

// Milliseconds in 32 bits, for differences alone.
Long Tick() {
  return static_cast<Long>(static_cast<std::uint32_t>(ThePlatform().clock->Ticks()));
}

MatchView ViewOf(const Grid& grid) {
  return {.row = grid.Row(), .rows = grid.Rows(), .fixed_rows = grid.FixedRows(), .whole_rows = grid.WholeRows()};
}

}  // namespace

// --- Building --------------------------------------------------------------------------------------------------------

MatchGrids::Page::Page(Form& form, MatchPage page)
    : which(page),
      frame(form, "Page", static_cast<Integer>(page)),
      list(form, "cboGridList", static_cast<Integer>(page)),
      grid(form, "Grid", static_cast<Integer>(page)),
      note(form, "lblNote", static_cast<Integer>(page)) {}

MatchGrids::MatchGrids(MatchGridsParts parts)
    : parts_(std::move(parts)),
      accounts_(parts_.form, MatchPage::kAccounts),
      fields_(parts_.form, MatchPage::kFields),
      file_fields_(parts_.form, "lstFields") {
  Build(accounts_, kAccountColumns);
  Build(fields_, kFieldColumns);
  accounts_.list.SetHint("Use * to match by Code");
  accounts_.note.SetCaption("Note: Press \"*\" to match Description.  Press \"0\" to not send.");
  // That the hint names the two keys the other way round is meant: it stands so.
  fields_.list.SetHint("Use * to match by number.  Use + to match by Description");
  fields_.note.SetCaption(
      "Note: Press \"*\" to match Description.  Press  \"+\" to match Number.  Press \"0\" to not send.");
  file_fields_.SetVisible(false);
  file_fields_.SetSorted(true);
  ClearEntries();
  parts_.tabs.Click.Connect(
      [this] { Guarded([this] { SelectPage(static_cast<Integer>(parts_.tabs.Selected() - 1)); }); });
}

void MatchGrids::Build(Page& page, const char* columns) {
  page.frame.SetVisible(false);
  for (Control* const control : std::initializer_list<Control*>{&page.list, &page.grid, &page.note}) {
    control->SetContainer(&page.frame);
  }
  page.grid.SetSize(1, kColumns);
  page.grid.SetFormat(columns);
  page.grid.SetFixedRows(1);
  page.grid.SetRowFactor(0, kHeadFactor);
  page.grid.SetColumnShaded(kFileName, true);
  page.grid.SetColumnShaded(kFileDescription, true);
  page.grid.SetTabStop(false);
  page.list.SetSorted(true, 1);
  Listen(page);
}

void MatchGrids::Listen(Page& page) {
  page.grid.EnterCell.Connect([&] { Guarded([&] { EnterCell(page); }); });
  page.grid.LeaveCell.Connect([&] { Guarded([&] { LeaveCell(page); }); });
  page.grid.Scroll.Connect([&] { Guarded([&] { Scrolled(page); }); });
  page.grid.Moved.Connect([&] { Guarded([&] { Resized(page); }); });
  page.list.Click.Connect([&] { Guarded([&] { Chosen(page); }); });
  page.list.KeyDown.Connect([&](Integer& key, Integer shift) { Guarded([&] { KeyDown(page, key, shift); }); });
  page.list.KeyPress.Connect([&](Integer& code) {
    const Integer pressed = std::exchange(code, Integer{0});
    Guarded([&] { KeyPress(page, pressed); });
  });
}

template <typename Act>
void MatchGrids::Guarded(Act act) {
  if (!parts_.tell) return act();
  try {
    act();
  } catch (...) {
    parts_.tell(CurrentFailure());
  }
}

// --- Preparing -------------------------------------------------------------------------------------------------------

void MatchGrids::SetRecords(AccountRecord& accounts, FieldRecord& fields) {
  account_record_ = &accounts;
  field_record_ = &fields;
}

void MatchGrids::ClearEntries() {
  for (Page* const page : {&accounts_, &fields_}) {
    page->list.Clear();
    page->list.AddItem(kNotToBeSent, 0);
  }
}

void MatchGrids::AddAccountEntry(const Text& code, Integer number) {
  accounts_.list.AddItem(TrimRight(code), number);
}

void MatchGrids::AddFieldEntry(const Text& description, Integer number) {
  fields_.list.AddItem(TrimRight(description), number);
}

// --- Loading ---------------------------------------------------------------------------------------------------------

void MatchGrids::BeginLoad() {
  loading_ = true;
  matches_.Reset();
  type_ahead_.Reset();
  file_fields_.Clear();
  for (Page* const page : {&accounts_, &fields_}) {
    page->open = false;
    page->list.SetDroppedDown(false);
    page->grid.SetSize(1, kColumns);
  }
}

void MatchGrids::Fill(const HeaderRecord& header) {
  FillAccounts(header);
  FillFields(header);
  for (Page* const page : {&accounts_, &fields_}) {
    if (!page->grid.HasCurrentCell()) continue;
    page->grid.SetTopRow(1);
    page->grid.SetCurrent(1, kNoCellOpen);
  }
}

void MatchGrids::FillAccounts(const HeaderRecord& header) {
  Grid& grid = accounts_.grid;
  const Redrawn redrawn(grid);
  const Long count = std::max<Long>(header.NumAccounts, 0);
  grid.SetSize(count + 1, kColumns);
  for (Long position = 1; position <= count; ++position) {
    grid.SetCell(position, kFileName, header.AccountCodes(position));
    grid.SetCell(position, kFileDescription, header.AccountDescs(position));
    ShowMatchRow(accounts_, position);
  }
}

void MatchGrids::FillFields(const HeaderRecord& header) {
  file_fields_.Clear();
  for (Long i = 1; i <= header.NumFields; ++i) file_fields_.AddItem(header.FieldDescs(i), header.FieldNumbers(i));
  Grid& grid = fields_.grid;
  const Redrawn redrawn(grid);
  grid.SetSize(file_fields_.ListCount() + 1, kColumns);
  for (Integer entry = 0; entry < file_fields_.ListCount(); ++entry) {
    const Long row = entry + 1;
    grid.SetCell(row, kFileName, std::to_string(file_fields_.ItemData(entry)));
    grid.SetCell(row, kFileDescription, file_fields_.List(entry));
    ShowMatchRow(fields_, row);
  }
}

void MatchGrids::SelectFirstEntries() {
  for (Page* const page : {&accounts_, &fields_}) page->list.SetListIndex(0);
}

Long MatchGrids::IndexOf(const Page& page, Long row) {
  return page.which == MatchPage::kAccounts ? row : LeadingLong(page.grid.Cell(row, kFileName));
}

void MatchGrids::ShowMatchRow(Page& page, Long row) {
  const bool accounts = page.which == MatchPage::kAccounts;
  const Integer number = matches_(page.which, IndexOf(page, row));
  Text name = accounts ? "" : "0";
  Text description = "Not to be sent";
  if (number > 0 && accounts) {
    account_record_->SetSelect(number);
    name = TrimRight(account_record_->Code());
    description = TrimRight(account_record_->Description());
  } else if (number > 0) {
    field_record_->SetSelect(number);
    name = std::to_string(number);
    description = TrimRight(field_record_->Description());
  }
  page.grid.SetCell(row, kOurName, name);
  page.grid.SetCell(row, kOurDescription, description);
}

// --- Cells -----------------------------------------------------------------------------------------------------------

void MatchGrids::EnterCell(Page& page) {
  if (loading_ || sync_.entering || !page.grid.HasCurrentCell()) return;
  if (page.grid.Column() != PickColumn(page.which)) {
    page.grid.SetCurrent(page.grid.Row(), PickColumn(page.which));  // which enters the cell anew
    return;
  }
  const Raised entering(sync_.entering);
  PlaceList(page);
  Integer& match = matches_(page.which, IndexOf(page, page.grid.Row()));
  const EntryOutcome outcome = EnterRow(match, page.list.ListIndex() != kNoEntry, ListEntries(page.list));
  if (outcome.select) page.list.SetListIndex(*outcome.select);
  if (outcome.clears_match) match = 0;
  page.open = false;
  page.list.SetDroppedDown(false);
  page.list.BringToFront();
  // A page that is not shown yet cannot have the focus.
  if (page.list.IsReachable()) page.list.SetFocus();
}

void MatchGrids::LeaveCell(Page& page) {
  if (loading_ || sync_.leaving || !page.grid.HasCurrentCell()) return;
  if (page.grid.Column() != PickColumn(page.which)) return;
  if (page.list.ListIndex() != kNoEntry) {
    const Long row = page.grid.Row();
    matches_(page.which, IndexOf(page, row)) = ToInteger(page.list.ItemData(page.list.ListIndex()));
    parts_.buttons.SetCancelEnabled(true);
    ShowMatchRow(page, row);
  }
  const Raised leaving(sync_.leaving);
  SetColumnWidths(page);
}

void MatchGrids::CommitOpenCells() {
  for (Page* const page : {&accounts_, &fields_}) LeaveCell(*page);
}

void MatchGrids::PlaceList(Page& page) {
  Place place = page.grid.CellPlace(page.grid.Row(), page.grid.Column());
  // A list keeps the height that its entries need.
  if (page.list.Place().height > 0) place.height = page.list.Place().height;
  page.list.SetPlace(place);
}

void MatchGrids::SetColumnWidths(Page& page) {
  Grid& grid = page.grid;
  const Long room = grid.Place().width - 2 * Grid::kBorder - ThePlatform().screen->ScrollBarWidth();
  const auto width = DescriptionWidth(room, grid.ColumnWidth(kFileName), grid.ColumnWidth(kOurName));
  if (!width) return;
  grid.SetColumnWidth(kFileDescription, *width);
  grid.SetColumnWidth(kOurDescription, *width);
}

void MatchGrids::Resized(Page& page) {
  SetColumnWidths(page);
  if (page.grid.HasCurrentCell() && page.grid.Column() == PickColumn(page.which)) PlaceList(page);
}

void MatchGrids::Scrolled(Page& page) {
  if (loading_ || !page.grid.HasCurrentCell()) return;
  if (const auto row = RowAfterScroll(ViewOf(page.grid), page.grid.TopRow())) {
    page.grid.SetCurrent(*row, page.grid.Column());
  } else {
    EnterCell(page);
  }
}

// --- The list --------------------------------------------------------------------------------------------------------

// What a program selects is told as a choice as well. It is none where a cell is entered, nor where a step follows that
// leaves the row and so stores what is selected.
void MatchGrids::Chosen(Page& page) {
  if (loading_ || sync_.entering || sync_.stepping || !page.grid.HasCurrentCell()) return;
  parts_.buttons.SetCancelEnabled(true);
  LeaveCell(page);
}

void MatchGrids::KeyDown(Page& page, Integer& key, Integer shift) {
  if (key == kDeleteKey) {
    key = 0;
    KeyPress(page, kDeleteKey);
    return;
  }
  if (IsMovingKey(key)) type_ahead_.EndTyping();
  const MoveOutcome outcome = MoveOn(page, key, shift);
  if (outcome.opens) page.open = true;
  if (outcome.row) key = 0;
}

MoveOutcome MatchGrids::MoveOn(Page& page, Integer key, Integer shift) {
  Grid& grid = page.grid;
  const MoveOutcome outcome = MoveByKey(key, shift, page.open, ViewOf(grid));
  if (outcome.row) grid.MoveCurrent(*outcome.row, outcome.to_pick_column ? PickColumn(page.which) : grid.Column());
  return outcome;
}

void MatchGrids::KeyPress(Page& page, Integer code) {
  if (loading_ || !page.grid.HasCurrentCell()) return;
  const Long row = page.grid.Row();
  const MatchRow current{page.which, row, page.grid.Cell(row, kFileName), page.grid.Cell(row, kFileDescription)};
  const KeyOutcome outcome = type_ahead_.Press(code, Tick(), current, ListEntries(page.list));
  if (outcome.steps) {
    SelectAndStep(page, outcome);
  } else if (outcome.select) {
    page.list.SetListIndex(*outcome.select);
  }
}

void MatchGrids::SelectAndStep(Page& page, const KeyOutcome& outcome) {
  const Integer before = page.list.ListIndex();
  const Long row = page.grid.Row();
  {
    const Raised stepping(sync_.stepping);
    if (outcome.select) page.list.SetListIndex(*outcome.select);
  }
  [[maybe_unused]] const MoveOutcome moved = MoveOn(page, kDownKey, 0);
  if (page.grid.Row() == row && page.list.ListIndex() != before) Chosen(page);
}

// --- Pages -----------------------------------------------------------------------------------------------------------

bool MatchGrids::IsRefused(Integer page) const {
  if (page == static_cast<Integer>(MatchPage::kAccounts)) return parts_.account_mode.ListIndex() != kManuallyPosition;
  return page == static_cast<Integer>(MatchPage::kFields) && parts_.field_mode.ListIndex() == kOneForOnePosition;
}

Control& MatchGrids::FrameOfPage(Integer page) {
  return page == 0 ? parts_.general_page : At(static_cast<MatchPage>(page)).frame;
}

void MatchGrids::SelectPage(Integer page) {
  if (parts_.tabs.Selected() != page + 1) return parts_.tabs.SetSelected(static_cast<Integer>(page + 1));
  // Input that is handled within a change of pages may bring another one: the tabs keep it, and it comes afterwards.
  if (sync_.changing_page) return;
  if (IsRefused(page)) {
    PlayStyleSound(0);
    parts_.tabs.SetSelected(static_cast<Integer>(current_page_ + 1));
    return;
  }
  if (page == current_page_) return;
  {
    const Raised changing(sync_.changing_page);
    const bool cancel_enabled = parts_.buttons.CancelEnabled();
    ChangePage(page);
    parts_.buttons.SetCancelEnabled(cancel_enabled);
  }
  if (parts_.tabs.Selected() != page + 1) SelectPage(static_cast<Integer>(parts_.tabs.Selected() - 1));
}

void MatchGrids::ChangePage(Integer page) {
  FrameOfPage(current_page_).SetVisible(false);
  if (page != 0) {
    Page& entered = At(static_cast<MatchPage>(page));
    SetColumnWidths(entered);
    EnterCell(entered);
    // It arrives once the page is shown, and moves the focus from the tabs onto the list.
    SendKeyString("{tab}");
  }
  FrameOfPage(page).SetVisible(true);
  FrameOfPage(page).BringToFront();
  current_page_ = page;
}

}  // namespace tallybook
