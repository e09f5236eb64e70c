// Asks how a table is to be exported: the type, from the formats of the application's export library, and a file name
// or a folder.
//
// One thread. The export library is held while a call runs. The form stays loaded between showings; the caller unloads
// it.
#pragma once

#include <memory>
#include <vector>

#include "base/Types.h"
#include "forms/Form.h"
#include "forms/HostControls.h"
#include "forms/ListControls.h"
#include "forms/PlainControls.h"
#include "forms/TextBox.h"
#include "host/DataExportObject.h"

namespace tallybook {

class dlgExport : public Form {
 public:
  dlgExport();

  // Asks for a type and a file name over the window `owner`.
  //   export_type  the code to select, "XLSX" where it is empty. Where no type that is offered has it, the first one is
  //                selected; where an earlier entry begins with the same words, that one: meant
  //   file_name    shown with the selected type's extension in place of its own. A name without a point gets the
  //                extension without a point, meant: "report" becomes "reportcsv"
  //   kind         the selected type's kind
  //   gives        true with all three as the user left them; false, with `file_name` and `kind` untouched, after a
  //                cancel. `export_type` is "XLSX" then where it was empty. Without any type the name alone is given.
  [[nodiscard]] bool GetFileName(Long owner, std::shared_ptr<DataExportObject> library, Text& export_type,
                                 Text& file_name, Long& kind);
  // Asks for a type and a folder, in the same way. `label_text` is an extra line; `extension` and `flag` are those of
  // the selected type, the flag being true for one with any capability.
  [[nodiscard]] bool GetFolder(Long owner, std::shared_ptr<DataExportObject> library, Text& export_type,
                               Text& extension, Text& folder, const Text& label_text, const Text& caption, bool& flag);

  // Whether the browse button offers the modern browser. True at the start.
  [[nodiscard]] bool FullBrowsing() const { return full_browsing_; }
  void SetFullBrowsing(bool full) { full_browsing_ = full; }
  [[nodiscard]] const std::shared_ptr<DataExportObject>& Export() const { return library_; }
  void SetExport(std::shared_ptr<DataExportObject> library) { library_ = std::move(library); }
  [[nodiscard]] bool Cancelled() const { return cancelled_; }

  ComboBox Combo1{*this, "Combo1"};
  TextBox Text1{*this, "Text1"};
  CommandButton Command2{*this, "Command2"};
  Label Label2{*this, "Label2"};
  CheckBox chkNonZero{*this, "chkNonZero"};
  SaveButtons SaveButtons1{*this, "SaveButtons1"};

 private:
  enum class Mode { kFile = 1, kFolder = 2 };

  struct Type {
    Text description;
    Text extension;
    Text code;
    Long kind = 0;
    bool flag = false;
  };

  void Listen();
  void Open(Mode mode, Long owner, std::shared_ptr<DataExportObject> library, Text& export_type);
  void ReadTypes();
  void LoadExportTypes(Text& export_type);
  void SelectType(const Text& code);
  // Shows the dialog; true where the user did not cancel. Lets go of the library.
  bool Show();
  // The type that is selected; an empty one where none is.
  [[nodiscard]] const Type& SelectedType() const;
  [[nodiscard]] Text SelectedExtension() const;
  void Combo1_Click();
  void BrowseForFile();
  void BrowseForFolder();
  void SaveButtons1_Click(Integer button);

  Mode mode_ = Mode::kFile;
  Long owner_ = 0;
  std::shared_ptr<DataExportObject> library_;
  std::vector<Type> types_;  // those accepted; an entry's tag is its place here, from 1
  bool full_browsing_ = true;
  bool cancelled_ = true;
};

}  // namespace tallybook
