#include <array>
#include <utility>

#include "base/Dates.h"
#include "base/Failure.h"
#include "base/Narrow.h"
#include "base/Texts.h"
#include "host/AccountRecord.h"
#include "host/DataExportObject.h"
#include "host/Masterfile.h"
#include "qdx/ExportTarget.h"
#include "qdx/Exporter.h"

namespace tallybook {

namespace {

struct TableColumn {
  const char* name;
  ColumnType type;
  Integer width;
  Integer decimals;
};

constexpr Integer kValueDecimals = 3;
constexpr std::array kPartsOfDate = {TableColumn{"Month", ColumnType::kSmallNumber, 2, 0},
                                     TableColumn{"Day", ColumnType::kSmallNumber, 2, 0},
                                     TableColumn{"Year", ColumnType::kSmallNumber, 4, 0}};
constexpr std::array kWholeDate = {TableColumn{"Date", ColumnType::kDate, 8, 0}};
constexpr std::array kFigure = {TableColumn{"Account", ColumnType::kText, 10, 0},
                                TableColumn{"Field", ColumnType::kInteger, 5, 0},
                                TableColumn{"Value", ColumnType::kDouble, 15, kValueDecimals}};

class TableTarget : public ExportTarget {
 public:
  TableTarget(const ExportMeans& means, const ExportRequest& request)
      : masterfile_(means.masterfile), library_(*means.library), request_(request) {}
  ~TableTarget() override { Abandon(); }

  [[nodiscard]] bool Create() override {
    const Long capability = library_.FormatFlags(request_.format_code);
    whole_date_ = capability != 0;
    date_columns_ = whole_date_ ? Integer{kWholeDate.size()} : Integer{kPartsOfDate.size()};
    const auto columns = static_cast<Integer>(date_columns_ + static_cast<Integer>(kFigure.size()));
    if (!library_.CreateTable(request_.file_name, request_.format_code, "Table1", columns, handle_)) return false;
    open_ = true;
    try {
      if (AddColumns() && ((capability & kWantsTitleRow) != kWantsTitleRow || WriteTitleRow())) return true;
    } catch (...) {
      Abandon();
      throw;
    }
    Abandon();
    return false;
  }

  void WriteHead(AccountRecord& /*account*/) override {}

  void BeginAccount(Integer position, AccountRecord& account) override {
    account.SetSelect(masterfile_.AccountNumber(position));
    account_code_ = TrimRight(account.Code());
  }

  // Date and account are set once: a row's cells stay from row to row.
  void WriteDate(Date date) override {
    SetDateCells(date);
    Check(library_.SetText(handle_, AccountColumn(), account_code_), "the account code " + account_code_);
    const int fields = ToInteger(masterfile_.NumFields());
    for (int i = 1; i <= fields; ++i) {
      const Integer number = masterfile_.FieldNumber(static_cast<Integer>(i));
      const Double value = masterfile_.FieldValue(number);
      if (request_.with_zeros || value != 0) WriteRow(number, value);
    }
  }

  void EndAccount() override {}
  void WriteEnd() override {}

  void Close() override {
    open_ = false;
    library_.CloseTable(handle_);
  }

 private:
  [[nodiscard]] Integer AccountColumn() const { return static_cast<Integer>(date_columns_ + 1); }
  [[nodiscard]] Integer FieldColumn() const { return static_cast<Integer>(date_columns_ + 2); }
  [[nodiscard]] Integer ValueColumn() const { return static_cast<Integer>(date_columns_ + 3); }

  bool AddColumns() {
    Integer position = 0;
    const auto add = [&](const TableColumn& column) {
      ++position;
      return library_.AddColumn(handle_, position, column.type, column.width, column.decimals, column.name);
    };
    const auto add_all = [&](const auto& columns) {
      for (const TableColumn& column : columns) {
        if (!add(column)) return false;
      }
      return true;
    };
    return (whole_date_ ? add_all(kWholeDate) : add_all(kPartsOfDate)) && add_all(kFigure);
  }

  // Only formats with one date column ask for titles.
  bool WriteTitleRow() {
    Integer position = 0;
    for (const char* title : {"Date", "Account", "Field", "Value"}) {
      ++position;
      if (!library_.SetText(handle_, position, title)) return false;
    }
    return library_.CommitRow(handle_) == kRowCommitted;
  }

  void SetDateCells(Date date) {
    if (whole_date_) {
      Check(library_.SetDate(handle_, 1, date), "the date " + DateText(date));
      return;
    }
    const DateParts parts = PartsOf(date);
    const bool stored = library_.SetByte(handle_, 1, parts.month) && library_.SetByte(handle_, 2, parts.day) &&
                        library_.SetByte(handle_, 3, parts.year);
    Check(stored, "the date " + DateText(date));
  }

  void WriteRow(Integer field_number, Double value) {
    const bool stored = library_.SetInteger(handle_, FieldColumn(), field_number) &&
                        library_.SetDouble(handle_, ValueColumn(), value, kValueDecimals) &&
                        library_.CommitRow(handle_) == kRowCommitted;
    if (!stored) Check(false, "a row of account " + account_code_ + ", field " + std::to_string(field_number));
  }

  void Check(bool stored, const Text& what) const {
    if (stored) return;
    throw Failure(FailureNumber::kDeviceError, "The table " + request_.file_name + " did not take " + what);
  }

  void Abandon() noexcept {
    if (!open_) return;
    open_ = false;
    try {
      library_.CloseTable(handle_);
    } catch (...) {
      return;  // meant: the failure that led here has been told, and the table was given up
    }
  }

  Masterfile& masterfile_;
  DataExportObject& library_;
  const ExportRequest& request_;
  Long handle_ = 0;
  bool open_ = false;
  bool whole_date_ = false;
  Integer date_columns_ = 0;
  Text account_code_;
};

}  // namespace

std::unique_ptr<ExportTarget> NewTableTarget(const ExportMeans& means, const ExportRequest& request) {
  return std::make_unique<TableTarget>(means, request);
}

}  // namespace tallybook
