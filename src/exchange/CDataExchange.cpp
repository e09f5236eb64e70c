#include "exchange/CDataExchange.h"

#include <utility>

#include "base/Narrow.h"
#include "base/Statements.h"
#include "base/Texts.h"
#include "host/HostApp.h"
#include "host/HostFactory.h"
#include "host/IniFile.h"
#include "host/Masterfile.h"
#include "import/BatchImport.h"
#include "import/CSVImport.h"
#include "import/DelimitedImport.h"
#include "import/Matching.h"
#include "qdx/Exporter.h"
#include "qdx/HeaderReader.h"
#include "support/HostMessages.h"
#include "support/Utility.h"

namespace tallybook {

namespace {

// The type of definitions that a batch loads.
constexpr Integer kBatchDataType = 1;

bool WriteRollbackSetting(HostFactory& factory, HostApp& app) {
  const auto settings = factory.NewIniFile();
  settings->SetFileName(app.SettingsFileName());
  settings->SetSection("Files");
  return ToBoolean(settings->ReadValue("WriteRollback", "-1"));
}

}  // namespace

// What a batch asks of its exchange object.
class CDataExchange::Batch : public BatchDefinitions {
 public:
  explicit Batch(CDataExchange& exchange) : exchange_(exchange) {}

  [[nodiscard]] bool IsLoaded() const override { return exchange_.store_.IsLoaded(); }
  [[nodiscard]] bool Load(Masterfile& masterfile) override {
    return exchange_.OpenDefinitions(masterfile, kBatchDataType);
  }
  void Discard() override { exchange_.CloseDefinitions(); }
  [[nodiscard]] Integer Count() const override { return exchange_.NumRecs(); }
  void Select(Integer definition) override { exchange_.SetFile(definition); }
  [[nodiscard]] Text Description(Integer definition) const override { return exchange_.Desc(definition); }
  // A definition without files is not imported, so the record gets its entry here.
  [[nodiscard]] Integer CountFiles() override {
    const Integer count = MatchFiles(exchange_.QdxFileName(), exchange_.file_list_);
    if (count < 1) exchange_.qdx_import_.definitions.push_back(exchange_.NewRecord());
    return count;
  }
  void SetMath(Integer math) override { exchange_.SetMath(math); }
  [[nodiscard]] bool Import(Printer& report) override { return exchange_.ImportSelected(report); }

 private:
  CDataExchange& exchange_;
};

CDataExchange::CDataExchange(HostFactory& factory) : factory_(factory) {
  factory_.ExchangeBegins(*this);
}

CDataExchange::~CDataExchange() {
  factory_.ExchangeEnds(*this);
  library_.reset();
  masterfile_ = nullptr;
  account_lookup_.reset();
}

Masterfile& CDataExchange::Database() const {
  if (masterfile_ != nullptr) return *masterfile_;
  throw Failure(FailureNumber::kObjectNotSet, "No database is bound: set Owner first");
}

void CDataExchange::SetOwner(Masterfile* masterfile) {
  masterfile_ = masterfile;
  if (masterfile_ == nullptr) return;
  write_rollback_ = WriteRollbackSetting(factory_, masterfile_->App());
}

std::shared_ptr<tallybook::DataExportObject> CDataExchange::DataExportObject() const {
  throw Failure(FailureNumber::kObjectNotSet, "The export library is not given out");
}

bool CDataExchange::OpenDefinitions(Masterfile& masterfile, Integer data_type) {
  SetOwner(&masterfile);
  report_type_ = data_type;
  account_lookup_ = masterfile.NewAccountRecord();
  store_.Load(masterfile);
  return true;
}

Integer CDataExchange::CloseDefinitions() {
  store_.Discard();
  return 0;
}

void CDataExchange::SetFile(Integer position) {
  store_.Select(position, Database());
}

void CDataExchange::InitFile() {
  store_.Clear(Database());
}

Integer CDataExchange::Add(Integer position) {
  return store_.Add(position, Database(), SharedHeader()) ? Integer{-1} : Integer{0};
}

bool CDataExchange::Update(Integer position) {
  return store_.Update(position, Database(), SharedHeader());
}

Integer CDataExchange::FirstAvailRec() {
  return store_.FirstAvailRec(Database());
}

bool CDataExchange::ReadQDXHeader(const Text& filename, Integer& file_number, bool backup_ok, bool header_only) {
  StopReason unasked;
  return ReadHeader(filename, file_number, backup_ok, header_only, unasked);
}

bool CDataExchange::ReadHeader(const Text& filename, Integer& file_number, bool backup_ok, bool header_only,
                               StopReason& why) {
  bool read = false;
  Statements at(Policy::kLeave, [&](const Failure& failure) {
    why = ReasonOf(failure);
    LogExchangeFailure(Database(), failure, "ReadQDXHeader");
    return false;
  });
  const bool ran = at.Run([&] {
    const auto backup_name = [&] { return backup_ok ? QDXBackupName() : Text(); };
    const Text found = at(10, [&] { return FindQDXFile(filename, backup_name); });
    if (found.empty()) {
      why = {.words = "there is no such file"};
      return;
    }
    true_filename_ = found;
    read = at(50, [&] { return MyReadQDXHeader(Database(), found, file_number, header_only, SharedHeader(), &why); });
  });
  return ran && read;
}

Text CDataExchange::QDXHeaderText(const Text& filename) {
  const bool backup_ok = true;
  if (!ReadQDXHeader(filename, file_number_, backup_ok)) return {};
  CloseFileEx(file_number_);
  const bool archive = UpperCase(true_filename_) == UpperCase(QDXBackupName());
  return DescribeHeader(SharedHeader(), archive ? "Archive Copy" : true_filename_);
}

bool CDataExchange::QDXFileExists(Integer position, bool /*backup_ok*/) const {
  return FileExists(QdxFileName(position)) || FileExists(QDXBackupName(position));
}

Text CDataExchange::QDXBackupName(Integer position) const {
  const Masterfile& masterfile = Database();
  return masterfile.DataPath() + "TBQDBU" + std::to_string(FileNum(position)) + "." + masterfile.FileExtension();
}

bool CDataExchange::WriteQDXFile(const Text& export_file_name, Date start_date, Date last_date, bool csv_style,
                                 Single version, const Text& trans_ext) {
  return Export({.masterfile = Database(), .factory = factory_, .library = library_},
                {.file_name = export_file_name,
                 .start_date = start_date,
                 .last_date = last_date,
                 .as_table = csv_style,
                 .version = version,
                 .format_code = trans_ext,
                 .report_length = report_length_,
                 .with_zeros = trans_zeros_,
                 .may_ask = !CommandLinePrinting()});
}

bool CDataExchange::WriteQDXFileEx(const Text& export_file_name, Date start_date, Date last_date, bool csv_style,
                                   Single version, const Text& trans_ext, Integer /*account_number*/) {
  return WriteQDXFile(export_file_name, start_date, last_date, csv_style, version, trans_ext);
}

void CDataExchange::MatchAccountCodes() {
  tallybook::MatchAccountCodes(store_.Current(), SharedHeader(), Database());
}

bool CDataExchange::ImportQDXFile(Printer& report) {
  qdx_import_ = {};
  return ImportSelected(report);
}

QDXDefinitionImport CDataExchange::NewRecord() const {
  return {.title = Desc(), .pattern = QdxFileName()};
}

bool CDataExchange::ImportSelected(Printer& report) {
  QDXDefinitionImport record = NewRecord();
  const bool backup_ok = true;
  const bool header_only = false;
  QDXImportMeans means{
      .masterfile = Database(),
      .definition = store_.Current(),
      .header = SharedHeader(),
      .file_number = file_number_,
      .file_list = file_list_,
      .math = math_,
      .write_rollback = write_rollback_,
      .read_header = [&](const Text& file,
                         StopReason& why) { return ReadHeader(file, file_number_, backup_ok, header_only, why); },
      .archive_name = [&] { return QDXBackupName(); }};
  const bool done = ImportQDX(means, report, record);
  qdx_import_.definitions.push_back(std::move(record));
  return done;
}

bool CDataExchange::ImportQDXFileEX(Long owner_window, Masterfile& masterfile, const Text& import_type) {
  qdx_import_ = {};
  Batch batch(*this);
  return ImportBatch({.owner_window = owner_window, .masterfile = masterfile, .import_type = import_type}, batch,
                     factory_, printer_, qdx_import_.stop);
}

bool CDataExchange::ImportCSVFile(const Text& file_name, bool no_prompts, const std::vector<Integer>& clear_fields,
                                  eMath math) {
  text_import_tally_ = {};
  return ImportCSV(Database(),
                   {.file_name = file_name,
                    .no_prompts = no_prompts,
                    .clear_fields = clear_fields,
                    .math = math,
                    .write_rollback = write_rollback_},
                   text_import_tally_);
}

bool CDataExchange::ImportDelimitedFile(const Text& file_name, eMath math, Integer date_order, Integer date_fields,
                                        bool can_import_system_fields) {
  text_import_tally_ = {};
  return ImportDelimited(Database(),
                         {.file_name = file_name,
                          .math = math,
                          .date_order = date_order,
                          .date_fields = date_fields,
                          .can_import_system_fields = can_import_system_fields,
                          .write_rollback = write_rollback_},
                         text_import_tally_);
}

Integer CDataExchange::LineStyle() const {
  return Database().DataLevel();
}

}  // namespace tallybook
