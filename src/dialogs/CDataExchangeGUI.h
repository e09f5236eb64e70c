// The dialogs' public face: whole conversations with the user, each from one call. A call takes the window that is to
// own the dialogs and the open database, makes an exchange object of its own, and leaves nothing behind but the files,
// the figures and the settings that it wrote.
//
//   CDataExchangeGUI gui(factory);
//   if (!gui.ExportQDX(window, masterfile, csv_style, current_date)) ... an unexpected failure, which is in the log ...
//
// All of them give true in every case that ends without an unexpected failure, so also after a cancel: the result does
// not say whether the user went through with it. What fails on the way is told by the part that fails; an unexpected
// failure is logged with " - CDataExchangeGUI:" and the member's name, and no box tells of it.
//
// Boxes that are given no caption take the application's title, HostApp::Title, for as long as a conversation lasts.
//
// One thread, the user interface's. The host's own events arrive while a dialog is shown; no second conversation may
// begin meanwhile. The factory, the platform and the database belong to the application and outlive the call.
#pragma once

#include "base/Types.h"

namespace tallybook {

class HostFactory;
class Masterfile;

class CDataExchangeGUI {
 public:
  explicit CDataExchangeGUI(HostFactory& factory) : factory_(factory) {}

  // Shows the list of exchange definitions, to be edited and imported; see DefinitionBrowser. `data_type` goes to
  // CDataExchange::OpenDefinitions; `index` is not looked at: meant.
  [[nodiscard]] bool ImportQDX(Long hwnd_owner, Masterfile& masterfile, Integer data_type, Integer index);
  // Asks for a range of dates, a file and, with `csv_style`, a type of table, and exports. `current_date` is where the
  // range starts out and where the user left it; see frmDataExc::OutputQDXFile.
  [[nodiscard]] bool ExportQDX(Long hwnd_owner, Masterfile& masterfile, bool csv_style, Date& current_date);
  // Asks for a comma-separated file and imports it; see frmDataExc::ImportCSVFile. `csv_style` is not looked at: meant.
  [[nodiscard]] bool ImportCSV(Long hwnd_owner, Masterfile& masterfile, bool csv_style);
  // Asks for a delimited file and how to read it, and imports it; see frmDelimited.
  [[nodiscard]] bool ImportDelimited(Long hwnd_owner, Masterfile& masterfile, bool allow_system_fields);

 private:
  // The frame around every conversation.
  template <typename Conversation>
  bool Converse(Masterfile& masterfile, const char* member, Conversation&& conversation);

  HostFactory& factory_;
};

}  // namespace tallybook
