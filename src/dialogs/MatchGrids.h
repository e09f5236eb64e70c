// The pages "&Accounts" and "&Fields" of the definition editor: which account or datafield here receives each one of
// the file. Each page is a grid with a list laid over its current cell, so that a long file is matched from the
// keyboard; the keys are told in dialogs/MatchLogic.h. The editor owns the form, its tabs, its first page and its two
// lists of modes; everything on the two pages is made here, with indexes 1 (accounts) and 2 (datafields):
//   "Page"         what a page stands in
//   "cboGridList"  the list of what can receive something
//   "Grid"         row 0 the heads; columns 0 and 1 the file's side, 2 and 3 ours
//   "lblNote"      the keys
// and, unseen, "lstFields", the datafields of the file in the order of their descriptions.
//
// A load by the editor:
//
//   grids.BeginLoad();
//   grids.SetMatch(MatchPage::kAccounts, position, number);   // for each stored pair
//   grids.Fill(SharedHeader());
//   grids.ShowFirstPage();
//   grids.SelectFirstEntries();
//   grids.EndLoad();
//
// One that fails is left as it is: nothing on the pages answers until the next one ends.
//
// One thread. What the editor hands in outlives the object, and the records each load and all that the user does.
#pragma once

#include <array>
#include <functional>

#include "base/Failure.h"
#include "base/Types.h"
#include "dialogs/MatchLogic.h"
#include "forms/Form.h"
#include "forms/Grid.h"
#include "forms/HostControls.h"
#include "forms/ListControls.h"
#include "forms/PlainControls.h"

namespace tallybook {

class AccountRecord;
class FieldRecord;
struct HeaderRecord;

// What the grids need of the editor.
struct MatchGridsParts {
  Form& form;
  TabStrip& tabs;             // "&General", "&Accounts", "&Fields"
  Control& general_page;      // what the first page stands in
  ListControl& account_mode;  // "Manually" at 0
  ListControl& field_mode;    // "Manually" at 0, "One-for-One" at 1
  SaveButtons& buttons;       // hold CancelEnabled: whether something differs from what was loaded
  // Told what fails in the answer to a user's act; where it is empty, the failure goes to whoever handed the act in.
  std::function<void(const Failure& failure)> tell;
};

class MatchGrids {
 public:
  explicit MatchGrids(MatchGridsParts parts);
  MatchGrids(const MatchGrids&) = delete;
  MatchGrids& operator=(const MatchGrids&) = delete;

  // --- What the editor prepares ---

  // The cursors that tell code and description of what receives a row.
  void SetRecords(AccountRecord& accounts, FieldRecord& fields);
  // Milliseconds within which typing goes on with the same search.
  void SetTypeAheadDelay(Long milliseconds) { type_ahead_.SetDelay(milliseconds); }
  // Both lists with their first entry alone, " (not to be sent)", which stays first; then one for each account or
  // datafield, its trailing blanks taken off.
  void ClearEntries();
  void AddAccountEntry(const Text& code, Integer number);
  void AddFieldEntry(const Text& description, Integer number);

  // --- A load ---

  // From here on nothing on the pages answers. No row is sent, both grids are empty, and no cell is open.
  void BeginLoad();
  void EndLoad() { loading_ = false; }
  [[nodiscard]] bool Loading() const { return loading_; }
  // Fills both grids, and the list of the file's datafields, from the tables of the file's header and the matches.
  // Failure 9 for a datafield number outside 0 to 9999.
  void Fill(const HeaderRecord& header);
  // Puts both lists on their first entries.
  void SelectFirstEntries();
  void ShowFirstPage() { SelectPage(0); }

  // --- Matches ---

  // The number here that receives an account of the file, by its position from 1, or a datafield of the file, by its
  // number there; 0 for none. Failure 9 for an index outside 0 to 9999.
  [[nodiscard]] Integer Match(MatchPage page, Long index) const { return matches_(page, index); }
  void SetMatch(MatchPage page, Long index, Integer number) { matches_(page, index) = number; }
  // Leaves the open cell of both grids, as before a save: what its list shows counts. A page that was not entered since
  // the load has none.
  void CommitOpenCells();
  // The datafields of the file in the order of their descriptions, their numbers as tags.
  [[nodiscard]] const ListControl& FileFields() const { return file_fields_; }

  // --- Pages ---

  // 0 the editor's own, 1 accounts, 2 datafields.
  [[nodiscard]] Integer CurrentPage() const { return current_page_; }
  // What the tabs do, which follow where they stand elsewhere: hides the page and shows another, with its cell entered
  // and a Tab on its way to the list. The accounts are refused with a sound where they are not matched manually, the
  // datafields where they go one for one. CancelEnabled stays as it is, although entering a page may leave a cell.
  void SelectPage(Integer page);

  // --- Controls ---

  [[nodiscard]] Grid& GridOf(MatchPage page) { return At(page).grid; }
  [[nodiscard]] ComboBox& ListOf(MatchPage page) { return At(page).list; }
  [[nodiscard]] Frame& FrameOf(MatchPage page) { return At(page).frame; }
  [[nodiscard]] Label& NoteOf(MatchPage page) { return At(page).note; }

 private:
  // One page. Within it the tab order is list, then grid, which is no stop.
  struct Page {
    Page(Form& form, MatchPage which);
    MatchPage which;
    Frame frame;
    ComboBox list;
    Grid grid;
    Label note;
    bool open = false;  // the list's open mark: arrows move in it
  };

  [[nodiscard]] Page& At(MatchPage page) { return page == MatchPage::kAccounts ? accounts_ : fields_; }
  void Build(Page& page, const char* columns);
  void Listen(Page& page);
  template <typename Act>
  void Guarded(Act act);

  // The place of a row in the table of matches.
  [[nodiscard]] static Long IndexOf(const Page& page, Long row);
  void ShowMatchRow(Page& page, Long row);
  void FillAccounts(const HeaderRecord& header);
  void FillFields(const HeaderRecord& header);

  void EnterCell(Page& page);
  void LeaveCell(Page& page);
  void PlaceList(Page& page);
  void SetColumnWidths(Page& page);
  void Chosen(Page& page);
  void KeyDown(Page& page, Integer& key, Integer shift);
  void KeyPress(Page& page, Integer code);
  void SelectAndStep(Page& page, const KeyOutcome& outcome);
  [[nodiscard]] MoveOutcome MoveOn(Page& page, Integer key, Integer shift);
  void Scrolled(Page& page);
  void Resized(Page& page);
  [[nodiscard]] bool IsRefused(Integer page) const;
  void ChangePage(Integer page);
  [[nodiscard]] Control& FrameOfPage(Integer page);

  // Flags that are up for the length of a handler, so that what it sets off does not run it again.
  struct Sync {
    bool entering = false;
    bool leaving = false;
    bool stepping = false;
    bool changing_page = false;
  };

  MatchGridsParts parts_;
  Page accounts_;
  Page fields_;
  ListBox file_fields_;
  AccountRecord* account_record_ = nullptr;
  FieldRecord* field_record_ = nullptr;
  MatchTable matches_;
  TypeAhead type_ahead_;
  Sync sync_;
  bool loading_ = false;
  Integer current_page_ = 0;
};

}  // namespace tallybook
