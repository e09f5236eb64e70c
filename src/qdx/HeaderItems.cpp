#include "qdx/HeaderItems.h"

#include <type_traits>

#include "base/Dates.h"
#include "base/Narrow.h"
#include "base/Texts.h"
#include "host/AccountRecord.h"
#include "host/Masterfile.h"
#include "support/StreamItems.h"
#include "support/Utility.h"

namespace tallybook {

namespace {

using Record = HeaderRecord;
using Sender = HeaderSender;

constexpr Integer kCreateDateWidth = 10;
constexpr Integer kCreateTimeWidth = 8;

Text Digits(Integer number, Long width) {
  return PadLeft(std::to_string(number), '0', width);
}

Text CreationDate(Sender& sender) {
  const DateParts parts = PartsOf(sender.created);
  return Digits(parts.month, 2) + "-" + Digits(parts.day, 2) + "-" + Digits(parts.year, 4);
}

Text CreationTime(Sender& sender) {
  const TimeParts parts = TimeOf(sender.created);
  return Digits(parts.hour, 2) + ":" + Digits(parts.minute, 2) + ":" + Digits(parts.second, 2);
}

// The first item of the last date is also where the number of accounts is taken: a count that does not fit ends the
// file there.
long long LastMonth(Sender& sender) {
  sender.account_count = ToInteger(sender.masterfile.NumAccounts());
  return PartsOf(sender.last_date).month;
}

Text AccountCode(Sender& sender, Integer row) {
  sender.account.SetSelect(sender.masterfile.AccountNumber(row));
  return sender.account.Code();
}

const std::vector<HeaderItem>& Signature() {
  static const std::vector<HeaderItem> items = {
      {"magic",
       FixedTextItem{static_cast<Integer>(kMagic.size()), &Record::Magic, [](Sender&) { return Text(kMagic); }}},
      {"version", SingleItem{&Record::Version, [](Sender& s) { return s.version; }}},
  };
  return items;
}

const std::vector<HeaderItem>& Head() {
  static const std::vector<HeaderItem> items = {
      {"creation date", FixedTextItem{kCreateDateWidth, &Record::CreateDate, CreationDate}},
      {"creation time", FixedTextItem{kCreateTimeWidth, &Record::CreateTime, CreationTime}},
      {"report length", ShortItem{&Record::ReportLength, [](Sender& s) -> long long { return s.report_length; }}},
      {"start month",
       ShortItem{&Record::StartMonth, [](Sender& s) -> long long { return PartsOf(s.start_date).month; }}},
      {"start day", ShortItem{&Record::StartDay, [](Sender& s) -> long long { return PartsOf(s.start_date).day; }}},
      {"start year", ShortItem{&Record::StartYear, [](Sender& s) -> long long { return PartsOf(s.start_date).year; }}},
      {"last month", ShortItem{&Record::LastMonth, LastMonth}},
      {"last day", ShortItem{&Record::LastDay, [](Sender& s) -> long long { return PartsOf(s.last_date).day; }}},
      {"last year", ShortItem{&Record::LastYear, [](Sender& s) -> long long { return PartsOf(s.last_date).year; }}},
      {"system name", CountedTextItem{&Record::SystemName, [](Sender& s) { return s.masterfile.SystemName(); }}},
      {"database version",
       SingleItem{&Record::DatabaseVersion, [](Sender& s) { return static_cast<Single>(s.masterfile.FileVersion()); }}},
      {"data level", ShortItem{&Record::DataLevel, [](Sender& s) -> long long { return s.masterfile.DataLevel(); }}},
      {"calendar type",
       ShortItem{&Record::CalendarType, [](Sender& s) -> long long { return s.masterfile.CalendarType(); }}},
      {"year field", ShortItem{&Record::YearField, [](Sender& s) -> long long { return s.masterfile.YearField(); }}},
      {"field slots", ShortItem{&Record::FieldSlots, [](Sender& s) -> long long { return s.masterfile.FieldSlots(); }}},
      {"account slots",
       ShortItem{&Record::AccountSlots,
                 [](Sender& s) -> long long { return static_cast<long long>(s.masterfile.AccountSlots()) + 1; }}},
      {"period count",
       ShortItem{&Record::NumPeriods, [](Sender& s) -> long long { return s.masterfile.NumPeriods(); }}},
      {"period table",
       TableItem{HeaderTable::kPeriods,
                 &Record::NumPeriods,
                 [](Sender& s) { return s.masterfile.NumPeriods(); },
                 {TextCell{&Record::PeriodNames, [](Sender& s, Integer row) { return s.masterfile.PeriodName(row); }},
                  ShortCell{&Record::PeriodLengths,
                            [](Sender& s, Integer row) -> long long { return s.masterfile.PeriodLength(row); }}}}},
      {"field count", ShortItem{&Record::NumFields, [](Sender& s) -> long long { return s.masterfile.NumFields(); }}},
      {"year count", ShortItem{&Record::NumYears, [](Sender& s) -> long long { return s.masterfile.NumYears(); }}},
      {"account count", ShortItem{&Record::NumAccounts, [](Sender& s) -> long long { return *s.account_count; }}},
      {"first year", ShortItem{&Record::FirstYear, [](Sender& s) -> long long { return s.masterfile.FirstYear(); }}},
      {"first date month", ShortItem{&Record::FirstDateMonth,
                                     [](Sender& s) -> long long { return PartsOf(s.masterfile.FirstDate()).month; }}},
      {"first date day",
       ShortItem{&Record::FirstDateDay, [](Sender& s) -> long long { return PartsOf(s.masterfile.FirstDate()).day; }}},
      {"first date year", ShortItem{&Record::FirstDateYear,
                                    [](Sender& s) -> long long { return PartsOf(s.masterfile.FirstDate()).year; }}},
      {"year table",
       TableItem{HeaderTable::kYears,
                 &Record::NumYears,
                 [](Sender& s) { return ToInteger(s.masterfile.NumYears()); },
                 {ShortCell{&Record::YearCodes,
                            [](Sender& s, Integer row) -> long long { return s.masterfile.YearCode(row); }}}}},
  };
  return items;
}

const std::vector<HeaderItem>& Tables() {
  static const std::vector<HeaderItem> items = {
      {"account table",
       TableItem{HeaderTable::kAccounts,
                 &Record::NumAccounts,
                 [](Sender& s) { return *s.account_count; },
                 {TextCell{&Record::AccountCodes, AccountCode},
                  TextCell{&Record::AccountDescs, [](Sender& s, Integer) { return s.account.Description(); }}}}},
      {"field table",
       TableItem{HeaderTable::kFields,
                 &Record::NumFields,
                 [](Sender& s) { return ToInteger(s.masterfile.NumFields()); },
                 {ShortCell{&Record::FieldNumbers,
                            [](Sender& s, Integer row) -> long long { return s.masterfile.FieldNumber(row); }},
                  TextCell{&Record::FieldDescs, [](Sender& s, Integer row) { return s.masterfile.FieldName(row); }}}}},
  };
  return items;
}

class ItemReader {
 public:
  ItemReader(FileStream& source, HeaderRecord& record, const RowProgress& progress)
      : source_(source), record_(record), progress_(progress) {}

  void operator()(const FixedTextItem& item) { GetFixed(source_, item.width, record_.*item.place); }
  void operator()(const CountedTextItem& item) { GetCounted(source_, record_.*item.place); }
  void operator()(const ShortItem& item) { Get(source_, record_.*item.place); }
  void operator()(const SingleItem& item) { Get(source_, record_.*item.place); }

  void operator()(const TableItem& item) {
    const int rows = record_.*item.count;
    for (int i = 1; i <= rows; ++i) {
      const auto row = static_cast<Integer>(i);
      for (const TableCell& cell : item.cells) std::visit([&](const auto& kind) { ReadCell(kind, row); }, cell);
      progress_(item.table, row);
    }
  }

 private:
  void ReadCell(const TextCell& cell, Integer row) { GetCounted(source_, (record_.*cell.place)(row)); }
  void ReadCell(const ShortCell& cell, Integer row) { Get(source_, (record_.*cell.place)(row)); }

  FileStream& source_;
  HeaderRecord& record_;
  const RowProgress& progress_;
};

class ItemWriter {
 public:
  ItemWriter(FileStream& target, HeaderSender& sender, const RowProgress& progress)
      : target_(target), sender_(sender), progress_(progress) {}

  void operator()(const FixedTextItem& item) { PutFixed(target_, item.width, item.source(sender_)); }
  void operator()(const CountedTextItem& item) { PutCounted(target_, item.source(sender_)); }
  void operator()(const ShortItem& item) { Put(target_, ToInteger(item.source(sender_))); }
  void operator()(const SingleItem& item) { Put(target_, item.source(sender_)); }

  void operator()(const TableItem& item) {
    const int rows = item.rows(sender_);
    for (int i = 1; i <= rows; ++i) {
      const auto row = static_cast<Integer>(i);
      progress_(item.table, row);
      for (const TableCell& cell : item.cells) std::visit([&](const auto& kind) { WriteCell(kind, row); }, cell);
    }
  }

 private:
  void WriteCell(const TextCell& cell, Integer row) { PutCounted(target_, cell.source(sender_, row)); }
  void WriteCell(const ShortCell& cell, Integer row) { Put(target_, ToInteger(cell.source(sender_, row))); }

  FileStream& target_;
  HeaderSender& sender_;
  const RowProgress& progress_;
};

}  // namespace

std::span<const HeaderItem> SignatureItems() {
  return Signature();
}

std::span<const HeaderItem> HeadItems() {
  return Head();
}

std::span<const HeaderItem> TableItems() {
  return Tables();
}

void ReadHeaderItems(FileStream& source, std::span<const HeaderItem> items, HeaderRecord& record,
                     const RowProgress& progress) {
  ItemReader read(source, record, progress);
  for (const HeaderItem& item : items) std::visit(read, item.what);
}

void WriteHeaderItems(FileStream& target, std::span<const HeaderItem> items, HeaderSender& sender,
                      const RowProgress& progress) {
  ItemWriter write(target, sender, progress);
  for (const HeaderItem& item : items) std::visit(write, item.what);
}

}  // namespace tallybook
