// The component's main public class: one object without a window that carries all exchange work of one database.
//
//   1. Create it with the application's factory. Nothing else works before Owner is set: members that use the database
//      fail with failure 91 (object not set).
//   2. SetOwner, or let OpenDefinitions or ImportQDXFileEX do it.
//   3. SetDataExportObject where a table export is wanted and the caller has one; SetTransZeros where wanted.
//   4. Definitions: OpenDefinitions, select with SetFile, change fields, Update or Add.
//   5. Import: SetFile, then ImportQDXFile, which reads the file's header by itself. ImportQDXFileEX needs no
//   preparation.
//
// Operations that can fail in a way a caller should act on give a Boolean and have shown or logged the reason. Beyond
// that only host failures leave the members that have no handler, and failure 9 for a position outside a list or table.
// Log entries end in " - CDataExchange:" and the operation. One thread; the object is not shared and not re-entrant.
//
// The embedding application owns the factory, the platform and the database; they outlive the object. The object holds
// plain references to them, and drops them at its end.
#pragma once

#include <memory>
#include <vector>

#include "base/Types.h"
#include "exchange/DefinitionStore.h"
#include "host/AccountRecord.h"
#include "host/DataExportObject.h"
#include "host/Printer.h"
#include "import/QDXImport.h"
#include "import/TextImport.h"

namespace tallybook {

class HostFactory;
class Masterfile;

class CDataExchange {
 public:
  explicit CDataExchange(HostFactory& factory);
  ~CDataExchange();
  CDataExchange(const CDataExchange&) = delete;
  CDataExchange& operator=(const CDataExchange&) = delete;

  // --- The database and the settings ---------------------------------------------------------------------------------

  // Binds a database, and reads from the installation's settings whether imports keep a rollback journal: section
  // "Files", key "WriteRollback", on unless it says otherwise; read at each set and never in between. Null unbinds and
  // reads nothing. Raises failure 13 where the setting is no truth value; the database is bound then.
  void SetOwner(Masterfile* masterfile);
  [[nodiscard]] Masterfile* Owner() const { return masterfile_; }

  // In a table export, rows for zero values too. True from the start.
  [[nodiscard]] bool TransZeros() const { return trans_zeros_; }
  void SetTransZeros(bool with_zeros) { trans_zeros_ = with_zeros; }

  // Goes into exchange files. 0 at the start.
  [[nodiscard]] Integer ReportLength() const { return report_length_; }
  void SetReportLength(Integer length) { report_length_ = length; }

  // How imported values combine with those present: an eMath value, or 4, which zeroes only.
  [[nodiscard]] Integer Math() const { return math_; }
  void SetMath(Integer math) { math_ = math; }

  // The export library. The getter fails every time with failure 91: meant, callers keep their own reference.
  [[noreturn]] std::shared_ptr<tallybook::DataExportObject> DataExportObject() const;
  void SetDataExportObject(std::shared_ptr<tallybook::DataExportObject> library) { library_ = std::move(library); }

  // The file that the last ReadQDXHeader really opened, or tried to.
  [[nodiscard]] const Text& TrueFilename() const { return true_filename_; }

  // --- Exchange definitions
  // ------------------------------------------------------------------------------------------- A position of kSelected
  // (-1) means the definition selected by SetFile. See DefinitionStore for what each one does.

  // Loads the list for `masterfile`, which becomes the owner; always true. `data_type` is kept and read by nobody.
  bool OpenDefinitions(Masterfile& masterfile, Integer data_type);
  // Discards the list; gives 0.
  Integer CloseDefinitions();

  [[nodiscard]] Integer File() const { return store_.Selected(); }
  void SetFile(Integer position);
  void InitFile();

  [[nodiscard]] Text Desc(Integer position = kSelected) const { return store_.At(position).Desc; }
  void SetDesc(Integer position, const Text& title) { store_.SetDesc(position, title); }
  [[nodiscard]] Text Filename(Integer position = kSelected) const { return store_.At(position).Filename; }
  void SetFilename(Integer position, const Text& path) { store_.At(position).Filename = path; }
  [[nodiscard]] Text QdxFileName(Integer position = kSelected) const { return store_.At(position).QdxFileName; }
  void SetQdxFileName(Integer position, const Text& path) { store_.At(position).QdxFileName = path; }
  [[nodiscard]] Integer FileNum(Integer position = kSelected) const { return store_.At(position).FileNum; }
  void SetFileNum(Integer position, Integer number) { store_.At(position).FileNum = number; }

  [[nodiscard]] bool Delete(Integer position) { return store_.Delete(position); }
  // -1 on success, 0 on failure.
  [[nodiscard]] Integer Add(Integer position);
  [[nodiscard]] bool Update(Integer position);
  [[nodiscard]] Integer FirstAvailRec();
  [[nodiscard]] Integer Find(Text& title) const { return store_.Find(title); }
  // Both give the store's one counter.
  [[nodiscard]] Integer NumActive() const { return store_.Count(); }
  [[nodiscard]] Integer NumRecs() const { return store_.Count(); }
  [[nodiscard]] Integer MaxRecords() const { return kMaxDefinitions; }
  // Always true, and writes nothing: Add and Update have written already. Meant.
  bool Save() { return true; }

  // Fields of the open definition, with the codes of import/DefinitionRecord.h.
  [[nodiscard]] Integer Disp() const { return store_.Current().Disp; }
  void SetDisp(Integer code) { store_.Current().Disp = code; }
  [[nodiscard]] Integer AcctMatch() const { return store_.Current().AcctMatch; }
  void SetAcctMatch(Integer code) { store_.Current().AcctMatch = code; }
  [[nodiscard]] Integer AcctAll() const { return store_.Current().AcctAll; }
  void SetAcctAll(Integer account_number) { store_.Current().AcctAll = account_number; }
  [[nodiscard]] Integer FldMatch() const { return store_.Current().FldMatch; }
  void SetFldMatch(Integer code) { store_.Current().FldMatch = code; }
  [[nodiscard]] Integer NumAccounts() const { return store_.Current().NumAccounts; }
  void SetNumAccounts(Integer rows) { store_.Current().NumAccounts = rows; }
  [[nodiscard]] Integer NumFields() const { return store_.Current().NumFields; }
  void SetNumFields(Integer rows) { store_.Current().NumFields = rows; }

  // Cells of its tables; rows count from 1.
  [[nodiscard]] Integer AccountFrom(Integer row) const { return store_.Current().accounts(row).AccountFrom; }
  void SetAccountFrom(Integer row, Integer position) { store_.Current().accounts(row).AccountFrom = position; }
  [[nodiscard]] Integer AccountTo(Integer row) const { return store_.Current().accounts(row).AccountTo; }
  void SetAccountTo(Integer row, Integer number) { store_.Current().accounts(row).AccountTo = number; }
  [[nodiscard]] Integer FieldFrom(Integer row) const { return store_.Current().fields(row).FieldFrom; }
  void SetFieldFrom(Integer row, Integer number) { store_.Current().fields(row).FieldFrom = number; }
  [[nodiscard]] Integer FieldTo(Integer row) const { return store_.Current().fields(row).FieldTo; }
  void SetFieldTo(Integer row, Integer number) { store_.Current().fields(row).FieldTo = number; }

  // The open definition as the engines see it.
  [[nodiscard]] const DefinitionRecord& CurrentDefinition() const { return store_.Current(); }

  // --- Exchange files ------------------------------------------------------------------------------------------------

  // Finds the file (see FindQDXFile; `backup_ok` admits the archive copy) and reads its header into the shared record.
  // True: the file stands open under `file_number` at the end of what was read, and the caller closes it. False: there
  // is none, which is not told, or it was refused, see MyReadQDXHeader. A failure is logged with " -
  // CDataExchange:ReadQDXHeader". An import reads on from where the tables end, so it needs `header_only` false.
  [[nodiscard]] bool ReadQDXHeader(const Text& filename, Integer& file_number, bool backup_ok,
                                   bool header_only = false);
  // Five or six lines that describe a file for the user; empty where it cannot be read. The header stays in memory.
  [[nodiscard]] Text QDXHeaderText(const Text& filename);
  // Whether a definition's file exists by exact name, or its archive copy. `backup_ok` has no effect: meant.
  [[nodiscard]] bool QDXFileExists(Integer position, bool backup_ok) const;
  // The name of a definition's archive copy: data path, "TBQDBU", file number, ".", extension.
  [[nodiscard]] Text QDXBackupName(Integer position = kSelected) const;

  // Writes the figures of a date range to a file: an exchange file, or with `csv_style` a table in the export library's
  // format of code `trans_ext`. True when the file stands, also after the user's cancel. See Export.
  [[nodiscard]] bool WriteQDXFile(const Text& export_file_name, Date start_date, Date last_date, bool csv_style,
                                  Single version, const Text& trans_ext = {});
  // The same. `account_number` is not looked at: all accounts are exported. Meant.
  [[nodiscard]] bool WriteQDXFileEx(const Text& export_file_name, Date start_date, Date last_date, bool csv_style,
                                    Single version, const Text& trans_ext = {}, Integer account_number = 0);

  // Resolves the open definition's codes against the header in memory and the database. See import/Matching.h.
  void MatchAccountCodes();
  // Imports the files of the open definition; `report` receives the narration. See ImportQDX.
  [[nodiscard]] bool ImportQDXFile(Printer& report);
  // Imports one definition, or with "ALL" every one, with a report and no dialog. See ImportBatch.
  [[nodiscard]] bool ImportQDXFileEX(Long owner_window, Masterfile& masterfile, const Text& import_type);

  // What the last ImportQDXFile or ImportQDXFileEX came to, file by file.
  [[nodiscard]] const QDXImportRecord& LastQDXImport() const { return qdx_import_; }

  // --- Text files ----------------------------------------------------------------------------------------------------

  // Imports a comma-separated file, audited whole before one figure changes. True only after all of it has been
  // applied. Position j from 1 of `clear_fields` is a flag for datafield number j: not 0 clears it at each date of the
  // file. A math of mDefault takes the file's own. See ImportCSV.
  [[nodiscard]] bool ImportCSVFile(const Text& file_name, bool no_prompts, const std::vector<Integer>& clear_fields,
                                   eMath math = eMath::mDefault);
  // Imports a delimited file, audited likewise. `date_order` is 1 month, day, year; 2 day, month, year; any other year,
  // month, day. `date_fields` is 0 where the date stands in three fields. See ImportDelimited.
  [[nodiscard]] bool ImportDelimitedFile(const Text& file_name, eMath math, Integer date_order, Integer date_fields,
                                         bool can_import_system_fields);
  // What the last import of a text file applied, and what stopped it.
  [[nodiscard]] const TextImportTally& LastTextImport() const { return text_import_tally_; }

  // --- The host's report interface
  // ------------------------------------------------------------------------------------ These answer a report dialog.
  // The constants, and the pairs that do not match, are meant that way.

  [[nodiscard]] Text ReportClass() const { return {}; }
  [[nodiscard]] bool UsesLastYear() const { return false; }
  [[nodiscard]] Integer LineStyle() const;  // the database's data level
  void SetLineStyle(Integer /*style*/) {}
  [[nodiscard]] Integer NumSequences() const { return 0; }
  void RestoreOrigSequence() {}
  [[nodiscard]] bool inPrintJob() const { return false; }
  [[nodiscard]] Integer ReportType() const { return kThisReport; }
  void SetReportType(Integer type) { report_type_ = type; }
  [[nodiscard]] Integer SubColumnType() const { return 0; }
  [[nodiscard]] Integer SortColumn() const { return 0; }
  void SetSortColumn(Integer /*column*/) {}
  [[nodiscard]] bool Transpose() const { return false; }
  void SetTranspose(bool /*transpose*/) {}
  [[nodiscard]] Integer TransOrientation() const { return 0; }
  void SetOrientation(Integer /*orientation*/) {}
  [[nodiscard]] Integer PrintMode() const { return kThisReport; }
  void SetPrintMode(Integer /*mode*/) {}
  [[nodiscard]] bool CommandLinePrinting() const { return command_line_printing_; }
  [[nodiscard]] Integer ReportPrinted() const { return 0; }

 protected:
  // The report switch that CommandLinePrinting answers: an export then passes over an old file that it cannot delete,
  // without a question.
  void SetCommandLinePrinting(bool on) { command_line_printing_ = on; }

 private:
  class Batch;

  static constexpr Integer kThisReport = 9;

  [[nodiscard]] bool ReadHeader(const Text& filename, Integer& file_number, bool backup_ok, bool header_only,
                                StopReason& why);
  // Imports the selected definition's files; the record gets an entry for it.
  [[nodiscard]] bool ImportSelected(Printer& report);
  [[nodiscard]] QDXDefinitionImport NewRecord() const;

  // The bound database; failure 91 where there is none.
  [[nodiscard]] Masterfile& Database() const;

  HostFactory& factory_;
  Masterfile* masterfile_ = nullptr;
  std::unique_ptr<AccountRecord> account_lookup_;  // from the last OpenDefinitions
  std::shared_ptr<tallybook::DataExportObject> library_;
  DefinitionStore store_;
  std::unique_ptr<Printer> printer_;  // while a batch runs
  std::vector<Text> file_list_;       // the files of one pattern
  Text true_filename_;
  TextImportTally text_import_tally_;
  QDXImportRecord qdx_import_;
  Integer file_number_ = 0;  // the open exchange file; 0 when none
  Integer math_ = 0;
  Integer report_length_ = 0;
  Integer report_type_ = 0;
  bool trans_zeros_ = true;
  bool write_rollback_ = false;
  bool command_line_printing_ = false;
};

}  // namespace tallybook
