// Asks for everything that the import of a delimited file needs, remembers the answers, and runs the import: a whole
// conversation in one member.
//
// Settings, section "Delimited" of the database's settings file; written before the import runs, so that the answers
// survive one that fails, and not written after a cancel:
//   "FileName"    at first the default folder and "Import.csv"
//   "DateOrder"   1 month, day, year; 2 day, month, year; 3 year, month, day; at first 1
//   "DateFields"  whether the date is one field, "True" or "False", or a number; at first true
//   "Math"        an eMath value; at first 3, which replaces
//
// One thread. The factory outlives the object, and the database each call.
#pragma once

#include <memory>

#include "base/Statements.h"
#include "base/Types.h"
#include "forms/Form.h"
#include "forms/HostControls.h"
#include "forms/ListControls.h"
#include "forms/PlainControls.h"
#include "forms/TextBox.h"

namespace tallybook {

class CDataExchange;
class HostFactory;
class IniFile;
class Masterfile;

class frmDelimited : public Form {
 public:
  explicit frmDelimited(HostFactory& factory);
  ~frmDelimited() override;

  // Runs the conversation over the window `hwnd_owner` and unloads the form. The file name is not looked at here: the
  // import tells of one that is empty or wrong. With `allow_system_fields` an audit entry is written, whatever the
  // import answered: meant.
  //   fails  never: a failure is logged with " - ImportDelimited" and the next step runs. A setting that cannot be read
  //          or converted leaves 0, which selects a list's first entry
  void ImportDelimited(Long hwnd_owner, Masterfile& masterfile, bool allow_system_fields);

  // Whether the browse button offers the modern browser. True at the start.
  [[nodiscard]] bool FullBrowsing() const { return full_browsing_; }
  void SetFullBrowsing(bool full) { full_browsing_ = full; }
  [[nodiscard]] bool Cancelled() const { return cancelled_; }
  // As on the buttons; set each time the dialog is opened.
  [[nodiscard]] bool CancelEnabled() const { return SaveButtons1.CancelEnabled(); }
  void SetCancelEnabled(bool enabled) { SaveButtons1.SetCancelEnabled(enabled); }

  TextBox Text1{*this, "Text1"};
  CommandButton Command1{*this, "Command1"};
  ComboBox cmbMath{*this, "cmbMath"};
  CheckBox chkDate{*this, "chkDate"};
  ComboBox cmbDate{*this, "cmbDate"};
  SaveButtons SaveButtons1{*this, "SaveButtons1"};

 private:
  void Listen();
  void ReadSettings(Statements& at);
  void LoadControls();
  void ReadControls();
  void WriteSettings(Statements& at);
  void RunImport(Statements& at, bool allow_system_fields);
  void Command1_Click();
  void SaveButtons1_Click(Integer button);
  void ShowHelp() const;

  // Failure 91 where they could not be made.
  [[nodiscard]] IniFile& Settings() const;
  [[nodiscard]] CDataExchange& Exchange() const;

  HostFactory& factory_;
  Masterfile* masterfile_ = nullptr;  // these three while the conversation runs
  std::unique_ptr<IniFile> settings_;
  std::unique_ptr<CDataExchange> exchange_;
  Text file_name_;
  Integer date_order_ = 0;
  Integer date_fields_ = 0;  // -1 where the date is one field
  Integer math_ = 0;
  bool full_browsing_ = true;
  bool cancelled_ = true;
};

}  // namespace tallybook
