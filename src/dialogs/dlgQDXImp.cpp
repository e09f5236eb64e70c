#include "dialogs/dlgQDXImp.h"

#include <cstdlib>

#include "base/Narrow.h"
#include "dialogs/DefinitionControls.h"
#include "exchange/CDataExchange.h"
#include "forms/modAllUI.h"
#include "host/HostApp.h"
#include "host/Masterfile.h"
#include "support/HostMessages.h"

namespace tallybook {

namespace {

constexpr Integer kReplacing = 3;

}  // namespace

dlgQDXImp::dlgQDXImp() : Form("dlgQDXImp") {
  WriteCaptions();
  BuildHeaderGrid(QDXGrid);
  FillDispositions(Combo1);
  FillAccountModes(Combo2);
  FillFieldModes(Combo3);
  for (const char* entry : {"Added", "Subtracted", "Replacing", "Zeroing Out"}) Combo4.AddItem(entry);
  for (TextBox* box : {&Text1, &Text2}) {
    box->SetLocked(true);
    box->SetShaded(true);
  }
  for (ComboBox* list : {&Combo1, &Combo2, &Combo3}) {
    list->SetEnabled(false);
    list->SetShaded(true);
  }
  Listen();
}

void dlgQDXImp::WriteCaptions() {
  SetCaption("Import QDX File");
  Text1.SetCaption("Title:");
  Text2.SetCaption("QDX Filename: ");
  Combo1.SetCaption("When imported, the QDX file will be: ");
  Combo2.SetCaption("Match Accounts: ");
  Combo3.SetCaption("Match Datafields: ");
  Combo4.SetCaption("&Imported information will be: ");
  SaveButtons1.SetCaption("&Import");
}

void dlgQDXImp::Listen() {
  SaveButtons1.Click.Connect([this](Integer button) { SaveButtons1_Click(button); });
  OnCloseBox([this] { SaveButtons1_Click(SaveButtons::kCancelButton); });
  OnF1([this] { ShowHelp(); });
  Unloading.Connect([this] { exchange_ = nullptr; });
}

void dlgQDXImp::SetFields(CDataExchange& exchange) {
  exchange_ = &exchange;
  Text1.SetText(exchange.Desc());
  SelectPosition(Combo1, exchange.Disp() - 1);
  SelectPosition(Combo2, std::abs(exchange.AcctMatch()));
  SelectPosition(Combo3, -exchange.FldMatch());
  Text2.SetText(exchange.QdxFileName());
  BuildHeaderGrid(QDXGrid);  // nothing of a definition that was shown before stays
  ShowHeaderLines(QDXGrid, exchange.QDXHeaderText(exchange.QdxFileName()));
  SetMath(kReplacing);
  cancelled_ = true;
}

Integer dlgQDXImp::Math() const {
  return static_cast<Integer>(Combo4.ListIndex() + 1);
}

void dlgQDXImp::SetMath(Integer math) {
  Combo4.SetListIndex(ToInteger(math - 1));
}

void dlgQDXImp::SaveButtons1_Click(Integer button) {
  if (button == SaveButtons::kMainButton) cancelled_ = false;
  HideLikeModal(*this);
}

void dlgQDXImp::ShowHelp() const {
  if (exchange_ != nullptr && exchange_->Owner() != nullptr) ShowHelpTopic(exchange_->Owner()->App(), HelpContext());
}

}  // namespace tallybook
