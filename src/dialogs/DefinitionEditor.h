// The editor of one exchange definition, the form "frmDataExc": title, exchange file, what becomes of that file after
// an import, and how accounts and datafields are matched. It is shown modally over the list of definitions. What it
// holds reaches the exchange object through SaveDefinitionFromForm, and the disk through Add or Update of that object.
//
//   General   the first page: file and its header, the three modes, the account that receives all
//   Accounts  the match grids (dialogs/MatchGrids.h)
//   Fields
//
// A failure in the answer to what the user does is told, and the editor stays with all it holds.
//
// One thread. What it is made with outlives it.
#pragma once

#include <array>

#include "base/Failure.h"
#include "base/Types.h"
#include "dialogs/MatchGrids.h"
#include "forms/CHookMouseWheel.h"
#include "forms/Form.h"
#include "forms/Grid.h"
#include "forms/HostControls.h"
#include "forms/ListControls.h"
#include "forms/PlainControls.h"
#include "forms/TextBox.h"

namespace tallybook {

class AccountRecord;
class CDataExchange;
class DefinitionRows;
class FieldRecord;
class HostFactory;
class Masterfile;

// What a conversation over the definitions works with.
struct DefinitionMeans {
  HostFactory& factory;
  Masterfile& masterfile;
  CDataExchange& exchange;  // with the definitions loaded
  AccountRecord& accounts;  // both cursors are the conversation's own
  FieldRecord& fields;
  DefinitionRows& rows;
  Long list_window = 0;  // the handle of the window that all its dialogs are shown over
};

class DefinitionEditor : public Form {
 public:
  explicit DefinitionEditor(const DefinitionMeans& means);

  // Fills the lists of accounts and datafields from the database, once, and moves its progress bar from 0 to 1.
  // Accounts whose numbers do not fit 16 bits are left out, with one line in the log.
  void FillLists();

  // Shows a definition, which becomes the selected one, with the header and the tables of its file. Leaves
  // EditCancelled true, and CancelEnabled true for a new one.
  //   gives  false where the header cannot be read: the controls are partly filled, and nothing on the pages of matches
  //          answers before the next load
  //   fails  failure 6 where the definition asks for an account whose number does not fit 16 bits; failure 9 for a
  //          match outside the tables
  [[nodiscard]] bool LoadDefinitionIntoForm(Integer record, bool is_new);
  // Writes all controls to the exchange object: settings to `record` and to the open definition, and of the matches
  // those that send something, in the file's order. Nothing is checked: meant, an empty title takes the definition off
  // the list. A mode that the stored definition does not know stays as it is. Failure 9 where a table has no room.
  void SaveDefinitionFromForm(Integer record);
  // Asks for an exchange file over the list window, beginning with the stored name of the selected definition, whatever
  // the box shows: meant. True with the name; false after a cancel.
  [[nodiscard]] bool BrowseForQdxFile(Text& name);
  // False, with a refusal, where another definition than `record` bears the title. Nothing calls it: meant, two
  // definitions can bear one title.
  [[nodiscard]] bool TitleIsUnique(Text title, Integer record) const;
  // Saves what is shown as a further definition and goes on with that one. It takes its title from the editor, not from
  // the question: meant. Where the copy cannot be shown, as its file is gone, that is told and the editor closes.
  void SaveAsNewDefinition();
  // Prints what is shown, saved or not, with a printer of its own.
  void PrintLayoutListing();

  // True until the editor is left by the Save button.
  [[nodiscard]] bool EditCancelled() const { return edit_cancelled_; }
  // Whether something differs from what was loaded.
  [[nodiscard]] bool CancelEnabled() const { return SaveButtons1.CancelEnabled(); }
  void SetCancelEnabled(bool enabled) { SaveButtons1.SetCancelEnabled(enabled); }
  // 0 General, 1 Accounts, 2 Fields.
  [[nodiscard]] Integer CurrentPage() const { return grids_.CurrentPage(); }
  [[nodiscard]] MatchGrids& Grids() { return grids_; }

  TextBox Text1{*this, "Text1"};
  TabStrip TabStrip1{*this, "TabStrip1"};
  Frame GeneralPage{*this, "Page", 0};
  TextBox Text2{*this, "Text2"};
  CommandButton Command2{*this, "Command2"};
  Grid QDXGrid{*this, "QDXGrid"};
  ComboBox Combo1{*this, "Combo1"};
  ComboBox Combo2{*this, "Combo2"};
  ComboBox Combo5{*this, "Combo5"};
  ComboBox Combo3{*this, "Combo3"};

 private:
  MatchGrids grids_;  // its controls stand here in the tab order

 public:
  CommandButton Command1{*this, "Command1"};
  SaveButtons SaveButtons1{*this, "SaveButtons1"};
  // The menu "File"; the indexes between are separators.
  static constexpr Integer kMenuSave = 0;
  static constexpr Integer kMenuSaveAsNew = 1;
  static constexpr Integer kMenuPrint = 4;
  static constexpr Integer kMenuClose = 10;
  std::array<MenuItem, 4> mnuFile{{{*this, "mnuFile", kMenuSave},
                                   {*this, "mnuFile", kMenuSaveAsNew},
                                   {*this, "mnuFile", kMenuPrint},
                                   {*this, "mnuFile", kMenuClose}}};

 private:
  void WriteCaptions();
  void FillModes();
  void Listen();
  template <typename Act>
  void Guarded(Act act);

  void FillAccountLists();
  void FillFieldList();
  void ShowSettings();
  void TakeStoredMatches();
  void SaveSettings(Integer record);
  void SaveAccountPairs();
  void SaveFieldPairs();

  void Changes();
  void EnableReceivingAccount();
  void ShowHeader(const Text& header);
  void Command2_Click();
  void mnuFile_Click(Integer index);
  void SaveChanges();
  void SaveButtons1_Click(Integer button);
  void Leave();

  DefinitionMeans means_;
  CHookMouseWheel wheel_;
  bool edit_cancelled_ = true;
};

}  // namespace tallybook
