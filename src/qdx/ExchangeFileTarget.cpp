#include <span>
#include <vector>

#include "base/Dates.h"
#include "base/Narrow.h"
#include "host/AccountRecord.h"
#include "host/Masterfile.h"
#include "platform/Clock.h"
#include "qdx/Body.h"
#include "qdx/ExportTarget.h"
#include "qdx/Exporter.h"
#include "qdx/HeaderItems.h"
#include "support/FileNumber.h"

namespace tallybook {

namespace {

BodyDate BodyDateOf(Date date) {
  const DateParts parts = PartsOf(date);
  return {parts.month, parts.day, parts.year};
}

class ExchangeFileTarget : public ExportTarget {
 public:
  ExchangeFileTarget(const ExportMeans& means, const ExportRequest& request)
      : masterfile_(means.masterfile), request_(request) {}

  [[nodiscard]] bool Create() override {
    Text name = request_.file_name;
    return OpenFileEx("BL", file_.Value(), name);
  }

  void WriteHead(AccountRecord& account) override {
    HeaderSender sender{.masterfile = masterfile_,
                        .account = account,
                        .version = request_.version,
                        .report_length = request_.report_length,
                        .created = Now(),
                        .start_date = request_.start_date,
                        .last_date = request_.last_date,
                        .account_count = std::nullopt};
    FileStream& stream = file_.Stream();
    const auto progress = [&](HeaderTable table, Integer row) { ShowTableProgress(table, row); };
    WriteHeaderItems(stream, SignatureItems(), sender, progress);
    WriteHeaderItems(stream, HeadItems(), sender, progress);
    WriteHeaderItems(stream, TableItems(), sender, progress);
    ReadFieldNumbers();
    stream_ = &stream;
  }

  // No account is selected: meant, the progress text keeps the last account of the table for the whole body.
  void BeginAccount(Integer position, AccountRecord& /*account*/) override { PutItem(*stream_, BodyAccount{position}); }

  // The count stands before the values, so they are gathered first; a date without any has no record.
  void WriteDate(Date date) override {
    const std::span<const BodyValue> values = GatherValues();
    if (values.empty()) return;
    PutItem(*stream_, BodyDateOf(date));
    PutItem(*stream_, BodyCount{static_cast<Integer>(values.size())});
    PutItems(*stream_, values);
  }

  void EndAccount() override { PutBlockEnd(*stream_); }
  void WriteEnd() override { PutBodyEnd(*stream_); }

  // The stream first: it tells what neither the last write nor the close could do, the number does not.
  void Close() override {
    file_.Stream().Close();
    file_.Close();
  }

 private:
  // Each value is put where the next one that counts goes, so that nothing depends on which do.
  std::span<const BodyValue> GatherValues() {
    BodyValue* next = values_.data();
    for (Integer position = 1; const Integer number : field_numbers_) {
      *next = {position, masterfile_.FieldValue(number)};
      if (next->value != 0) ++next;
      ++position;
    }
    return {values_.data(), next};
  }

  // Once, for they are asked for at every date of every account.
  void ReadFieldNumbers() {
    const Integer fields = ToInteger(masterfile_.NumFields());
    for (int position = 1; position <= fields; ++position) {
      field_numbers_.push_back(masterfile_.FieldNumber(static_cast<Integer>(position)));
    }
    values_.resize(field_numbers_.size());
  }

  void ShowTableProgress(HeaderTable table, Integer row) {
    if (table == HeaderTable::kAccounts) {
      masterfile_.SetProgressFraction(static_cast<Single>(static_cast<Double>(row) / masterfile_.NumAccounts() / 3));
    } else if (table == HeaderTable::kFields) {
      masterfile_.SetProgressFraction(
          static_cast<Single>(static_cast<Double>(row) / masterfile_.NumFields() / 3 + 0.33));
    }
  }

  Masterfile& masterfile_;
  const ExportRequest& request_;
  FileNumber file_;
  FileStream* stream_ = nullptr;        // of file_, from WriteHead on
  std::vector<Integer> field_numbers_;  // by position, from WriteHead on
  std::vector<BodyValue> values_;       // room for those of a date
};

}  // namespace

std::unique_ptr<ExportTarget> NewExchangeFileTarget(const ExportMeans& means, const ExportRequest& request) {
  return std::make_unique<ExchangeFileTarget>(means, request);
}

}  // namespace tallybook
