// The conversations over the exchange object: the list of definitions, the import of a comma-separated file and the
// export. Each makes a fresh exchange object and asks through the dialogs of the process. The last two have no window
// of their own, and remember the user's choices in the database's settings file once they have succeeded; the form of
// that name, the editor of a definition (dialogs/DefinitionEditor.h), is made for the list alone.
//
// Settings, section "CSV", or "QDX" for the export of an exchange file:
//   "ImportFile"  CSV only: the last file imported; at first the default folder and "Import.CSV"
//   "ExportFile"  the last file written; at first the default folder, "Export." and the section
//   "Ext"         CSV only: the code of the last type of table; at first "CSV"
//   "Zeros"       CSV only: whether rows for zero values are written, "True" or "False"; at first true
//
// One thread. The factory outlives the object, and the database each call. A host failure leaves a member with nothing
// remembered, once the dialogs and the exchange object that it used are released.
#pragma once

#include <memory>

#include "base/Types.h"

namespace tallybook {

class CDataExchange;
class ExchangeReport;
class HostFactory;
class IniFile;
class Masterfile;

class frmDataExc {
 public:
  explicit frmDataExc(HostFactory& factory);
  ~frmDataExc();
  frmDataExc(const frmDataExc&) = delete;
  frmDataExc& operator=(const frmDataExc&) = delete;

  // Shows the exchange definitions until the user closes their window; see DefinitionBrowser.
  void ShowLayoutBrowser(Long hwnd_owner, Masterfile& masterfile, Integer data_type);

  // Asks for a file and imports it, with all questions and nothing cleared, again and again until an import has gone
  // through or the user cancels. Only the former is remembered.
  void ImportCSVFile(Long hwnd_owner, Masterfile& masterfile);

  // Asks for a range of dates with dlgRepPrint, then for a file (with `csv_style` in dlgExport, together with the type
  // of table), and writes it; asks for the file again until it stands or the user cancels. `current_date` is where the
  // dates start out, and takes what the user chose there, also where the file is cancelled afterwards. A table can be
  // opened at once with its application.
  void OutputQDXFile(Long hwnd_owner, Masterfile& masterfile, bool csv_style, Date& current_date);

 private:
  struct ExportChoice;
  class Conversation;

  // Makes the exchange object for a database and points the settings at a section.
  void Begin(Masterfile& masterfile, const Text& section);
  void End() noexcept;
  [[nodiscard]] ExportChoice RememberedChoice(const Text& section, bool csv_style) const;
  [[nodiscard]] bool ReadZeros() const;
  // Asks for the dates; false after a cancel.
  [[nodiscard]] bool AskForDates(Long hwnd_owner, ExportChoice& choice, Date& current_date);
  // Both ask for a file and write it, until it stands (true) or the user cancels (false).
  [[nodiscard]] bool WriteTable(Long hwnd_owner, ExportChoice& choice);
  [[nodiscard]] bool WriteExchangeFile(Long hwnd_owner, ExportChoice& choice);
  // Whether the file can be opened says nothing of the export: a failure is logged.
  void OfferToOpen(const Text& file);
  void RememberTable(const ExportChoice& choice);

  HostFactory& factory_;
  std::unique_ptr<IniFile> settings_;
  std::unique_ptr<CDataExchange> exchange_;  // while a conversation runs
  std::unique_ptr<ExchangeReport> report_;   // likewise, in the role of the print dialog's report
  Masterfile* masterfile_ = nullptr;         // likewise
};

}  // namespace tallybook
