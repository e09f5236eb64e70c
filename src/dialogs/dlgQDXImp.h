// The confirmation before one definition's import: shows the definition and the header of its file; the one choice is
// how the imported figures act on those present.
//
//   dialog.SetFields(exchange);
//   ShowLikeModal(dialog, owner);
//   if (!dialog.Cancelled()) exchange.SetMath(dialog.Math());
//
// One thread. The exchange object belongs to the caller and must outlive the dialog's use; Unload lets go of it.
#pragma once

#include "base/Types.h"
#include "forms/Form.h"
#include "forms/Grid.h"
#include "forms/HostControls.h"
#include "forms/ListControls.h"
#include "forms/TextBox.h"

namespace tallybook {

class CDataExchange;

class dlgQDXImp : public Form {
 public:
  dlgQDXImp();

  // Shows the exchange object's open definition. The file's header is looked for under the stored name as it stands,
  // so a name with wildcards shows none: meant. Leaves Math 3 ("Replacing") and Cancelled true.
  void SetFields(CDataExchange& exchange);

  // 1 to 3 as eMath counts them, 4 zeroes only; 0 for nothing chosen. Setting any other value is failure 5.
  [[nodiscard]] Integer Math() const;
  void SetMath(Integer math);
  // True from SetFields until the main button is pressed.
  [[nodiscard]] bool Cancelled() const { return cancelled_; }

  TextBox Text1{*this, "Text1"};
  TextBox Text2{*this, "Text2"};
  Grid QDXGrid{*this, "QDXGrid"};
  ComboBox Combo1{*this, "Combo1"};
  ComboBox Combo2{*this, "Combo2"};
  ComboBox Combo3{*this, "Combo3"};
  ComboBox Combo4{*this, "Combo4"};
  SaveButtons SaveButtons1{*this, "SaveButtons1"};

 private:
  void WriteCaptions();
  void Listen();
  void SaveButtons1_Click(Integer button);
  void ShowHelp() const;

  CDataExchange* exchange_ = nullptr;
  bool cancelled_ = true;
};

}  // namespace tallybook
