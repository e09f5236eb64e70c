// Asks for a file name: of a file to be read, which must exist, or of one to be written. The caller gives the words and
// the extension. Options for skipping rows and fields and for clearing records stay disabled and hidden unless a caller
// asks for them.
//
// One thread. The form stays loaded between showings, with its last caption and name; the caller unloads it.
#pragma once

#include <array>

#include "base/Types.h"
#include "forms/Form.h"
#include "forms/HostControls.h"
#include "forms/PlainControls.h"
#include "forms/TextBox.h"

namespace tallybook {

class frmImport : public Form {
 public:
  frmImport();

  // Ask over the window `owner`, starting with `file_name`, until the user gives a name or cancels. An empty name is
  // refused and asked for again. A name whose last three characters differ from `extension` in any case gets "." and
  // the extension in upper case; only those three are looked at, meant: "reportCSV" stays, and an extension of four
  // letters is appended always. An empty extension changes no name.
  //   caption  of the window; its first word names the main button and the box
  //   gives    true with the name, without trailing blanks; false, with `file_name` untouched, after a cancel
  // ImportFileName tells of a name that does not exist, once the extension is on it, and asks again.
  [[nodiscard]] bool ImportFileName(Long owner, Text& file_name, const Text& prompt, const Text& caption,
                                    const Text& extension);
  [[nodiscard]] bool ExportFileName(Long owner, Text& file_name, const Text& prompt, const Text& caption,
                                    const Text& extension);

  // Whether the browse button offers the modern browser. True at the start.
  [[nodiscard]] bool FullBrowsing() const { return full_browsing_; }
  void SetFullBrowsing(bool full) { full_browsing_ = full; }

  // Enable the number boxes and chkClear; while both are off those controls are hidden.
  [[nodiscard]] bool PromptforSkips() const { return prompt_for_skips_; }
  void SetPromptforSkips(bool wanted);
  [[nodiscard]] bool PromptforOverwrite() const { return prompt_for_overwrite_; }
  void SetPromptforOverwrite(bool wanted);

  // What stands in those controls.
  [[nodiscard]] Integer RowstoSkip() const;
  void SetRowstoSkip(Integer rows) { NumberBox1[0].SetValue(rows); }
  [[nodiscard]] Integer FieldstoSkip() const;
  void SetFieldstoSkip(Integer fields) { NumberBox1[1].SetValue(fields); }
  [[nodiscard]] bool OverwriteFile() const { return chkClear.Checked(); }
  void SetOverwriteFile(bool overwrite) { chkClear.SetChecked(overwrite); }

  // What stands in the box, as it is given: without trailing blanks, and with the extension; empty for nothing.
  [[nodiscard]] Text NamedFile() const;
  [[nodiscard]] bool Cancelled() const { return cancelled_; }
  [[nodiscard]] bool CancelEnabled() const { return SaveButtons1.CancelEnabled(); }
  void SetCancelEnabled(bool enabled) { SaveButtons1.SetCancelEnabled(enabled); }

  // Label 0 is the caller's prompt, label 1 that of the name.
  std::array<Label, 2> Label1{{{*this, "Label1", 0}, {*this, "Label1", 1}}};
  TextBox Text1{*this, "Text1"};
  CommandButton Command1{*this, "Command1"};
  std::array<NumberBox, 2> NumberBox1{{{*this, "NumberBox1", 0}, {*this, "NumberBox1", 1}}};
  CheckBox chkClear{*this, "chkClear"};
  SaveButtons SaveButtons1{*this, "SaveButtons1"};

 private:
  enum class Mode { kImport = 1, kExport = 2 };

  void Listen();
  [[nodiscard]] bool AskFileName(Mode mode, Long owner, Text& file_name, const Text& prompt, const Text& caption,
                                 const Text& extension);
  void ShowOptions();
  void Command1_Click();
  void SaveButtons1_Click(Integer button);
  void FocusName();

  Mode mode_ = Mode::kImport;
  Text extension_;  // in upper case
  bool full_browsing_ = true;
  bool prompt_for_skips_ = false;
  bool prompt_for_overwrite_ = false;
  bool cancelled_ = true;
};

}  // namespace tallybook
