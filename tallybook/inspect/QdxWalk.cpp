#include "tallybook/inspect/QdxWalk.h"

#include <bit>
#include <cmath>
#include <cstdint>
#include <fmt/format.h>
#include <limits>
#include <utility>
#include <variant>

#include "base/Dates.h"
#include "base/Failure.h"
#include "platform/FileSystem.h"
#include "platform/Platform.h"
#include "support/StreamItems.h"
#include "support/Utility.h"

namespace tallybook::inspect {

namespace {

std::unique_ptr<OpenFile> OpenToRead(const Text& path) {
  return ThePlatform().files->Open(path, Access::kRead, Sharing::kShared, Creation::kMustExist);
}

// Control characters show as \xNN, so that a file cannot play with the terminal.
Text Quoted(const Text& text) {
  Text quoted = "\"";
  for (const char character : text) {
    const auto byte = static_cast<unsigned char>(character);
    quoted += byte < 0x20 || byte == 0x7F ? fmt::format("\\x{:02X}", byte) : Text(1, character);
  }
  return quoted + '"';
}

// Reads one item of the header into its place and gives its text. Nothing was read where `whole` is false.
class ItemReader {
 public:
  ItemReader(FileStream& stream, HeaderRecord& record) : stream_(stream), record_(record) {}

  Text operator()(const FixedTextItem& item) {
    Text& value = record_.*item.place;
    whole = GetFixed(stream_, item.width, value);
    return Quoted(value);
  }
  Text operator()(const CountedTextItem& item) { return Counted(record_.*item.place); }
  Text operator()(const ShortItem& item) { return Number(record_.*item.place); }
  Text operator()(const SingleItem& item) {
    whole = Get(stream_, record_.*item.place);
    return fmt::format("{}", record_.*item.place);
  }
  // A table is read row by row.
  Text operator()(const TableItem& /*item*/) { return {}; }

  // The cells of a row, joined. Rows that the table has no room for are read and dropped.
  Text Row(const TableItem& item, Integer row) {
    Text cells;
    for (const TableCell& cell : item.cells) {
      const Text text = std::visit([&](const auto& kind) { return Cell(kind, row); }, cell);
      if (!whole) return cells;
      cells += (cells.empty() ? "" : ", ") + text;
    }
    return cells;
  }

  bool whole = true;
  bool ends_in_blank = false;

 private:
  Text Cell(const TextCell& cell, Integer row) {
    Text dropped;
    FixedTable<Text>& table = record_.*cell.place;
    return Counted(row <= table.Rows() ? table(row) : dropped);
  }
  Text Cell(const ShortCell& cell, Integer row) {
    Integer dropped = 0;
    FixedTable<Integer>& table = record_.*cell.place;
    return Number(row <= table.Rows() ? table(row) : dropped);
  }
  Text Counted(Text& value) {
    whole = GetCounted(stream_, value);
    if (whole && value.ends_with(' ')) ends_in_blank = true;
    return Quoted(value);
  }
  Text Number(Integer& value) {
    whole = Get(stream_, value);
    return std::to_string(value);
  }

  FileStream& stream_;
  HeaderRecord& record_;
};

// The rows that a reader has room for.
Long RoomOf(const TableItem& item, const HeaderRecord& record) {
  return std::visit([&](const auto& cell) { return (record.*cell.place).Rows(); }, item.cells.front());
}

}  // namespace

bool DateOf(Integer year, Integer month, Integer day, Date& date) {
  if (year < 1 || month < 1 || month > 12 || day < 1) return false;
  date = DateFromParts(year, month, day);
  return PartsOf(date) == DateParts{year, month, day};
}

Text DateItemText(const BodyDate& date) {
  return fmt::format("{:04}-{:02}-{:02}", date.year, date.month, date.day);
}

QdxWalk::QdxWalk(const Text& path, QdxListener& listener) : stream_(OpenToRead(path)), listener_(listener) {}

bool QdxWalk::CutShort(long long offset, const Text& what) {
  Irregular(offset, "the file is cut short: " + what + " is not whole");
  return false;
}

bool QdxWalk::Header() {
  try {
    if (!Items(SignatureItems())) return false;
    CheckSignature();
    if (!readable_ || !Items(HeadItems())) return false;
    CheckHead();
    return Items(TableItems());
  } catch (const Failure& failure) {
    // The one failure of reading that a file's bytes can cause is a text of negative length; what follows it is lost.
    Refused(stream_.Position(), failure.Description());
    return false;
  }
}

bool QdxWalk::Items(std::span<const HeaderItem> items) {
  ItemReader read(stream_, record_);
  for (const HeaderItem& item : items) {
    const auto* table = std::get_if<TableItem>(&item.what);
    const int rows = table == nullptr ? 1 : record_.*table->count;
    if (rows < 0) Irregular(stream_.Position(), fmt::format("{}: {} rows", item.name, rows));
    if (table != nullptr && rows > RoomOf(*table, record_)) {
      Refused(stream_.Position(),
              fmt::format("{}: {} rows, and a reader holds {}", item.name, rows, RoomOf(*table, record_)));
    }
    for (int i = 1; i <= rows; ++i) {
      const long long offset = stream_.Position();
      const auto row = static_cast<Integer>(table == nullptr ? 0 : i);
      const Text value = table == nullptr ? std::visit(read, item.what) : read.Row(*table, row);
      const Text name = Text(item.name) + (row > 0 ? " row " + std::to_string(row) : "");
      if (!read.whole) return CutShort(offset, name);
      if (table == nullptr) head_offsets_[item.name] = offset;
      listener_.Item(offset, item.name, row, value);
      if (std::exchange(read.ends_in_blank, false)) Irregular(offset, name + ": a text ends in a blank");
    }
  }
  return true;
}

void QdxWalk::CheckSignature() {
  readable_ = record_.Magic == kMagic;
  if (!readable_) {
    Refused(0, fmt::format("the file begins with {}; an exchange file begins with {}", Quoted(record_.Magic),
                           Quoted(Text(kMagic))));
    return;
  }
  // By bits, as a reader compares them.
  readable_ = std::bit_cast<std::uint32_t>(record_.Version) == std::bit_cast<std::uint32_t>(kReadableVersion);
  if (!readable_) {
    Refused(static_cast<long long>(kMagic.size()),
            fmt::format("the format's version is {}; {} can be read", record_.Version, kReadableVersion));
  }
}

void QdxWalk::CheckHead() {
  const auto is_date = [&](std::string_view first_item, Integer year, Integer month, Integer day) {
    Date date = kNoDate;
    if (DateOf(year, month, day, date)) return true;
    Irregular(head_offsets_[first_item], fmt::format("the header's date {} is in no calendar",
                                                     DateItemText({.month = month, .day = day, .year = year})));
    return false;
  };
  const bool start_known = is_date("start month", record_.StartYear, record_.StartMonth, record_.StartDay);
  const bool last_known = is_date("last month", record_.LastYear, record_.LastMonth, record_.LastDay);
  is_date("first date month", record_.FirstDateYear, record_.FirstDateMonth, record_.FirstDateDay);
  range_known_ = start_known && last_known;
  if (record_.DataLevel < kDayLevel || record_.DataLevel > kPeriodLevel) {
    Irregular(head_offsets_["data level"], fmt::format("the data level is {}; there are 1 to 3", record_.DataLevel));
  }
}

bool QdxWalk::Body() {
  bool at_end = false;
  for (int expected = 1; !at_end; ++expected) {
    if (!Account(static_cast<Integer>(std::min(expected, record_.NumAccounts + 1)), at_end)) return false;
  }
  const long long trailing = stream_.Size() - stream_.Position();
  if (trailing > 0) Irregular(stream_.Position(), fmt::format("{} bytes stand behind the end of the body", trailing));
  return true;
}

// One account's block, or the end mark.
bool QdxWalk::Account(Integer expected, bool& at_end) {
  const long long offset = stream_.Position();
  BodyAccount account;
  if (!GetItem(stream_, account)) {
    const Text where = expected > record_.NumAccounts
                           ? Text("behind the last account")
                           : fmt::format("before account {} of {}", expected, record_.NumAccounts);
    Irregular(offset, "the file ends without the end mark, " + where);
    return false;
  }
  if (account.account_index == 0) {
    at_end = true;
    BodyDate date;
    if (expected <= record_.NumAccounts) {
      Irregular(offset, fmt::format("the body ends before account {} of {}", expected, record_.NumAccounts));
    }
    if (!GetItem(stream_, date)) return CutShort(offset, "the end mark");
    if (date.month != 0 || date.day != 0 || date.year != 0) Irregular(offset, "the end mark is not four zeros");
    listener_.BodyEnd(offset);
    return true;
  }
  if (account.account_index < 1 || account.account_index > record_.NumAccounts) {
    Irregular(offset, fmt::format("account index {} is outside 1 to {}; a reader stops here", account.account_index,
                                  record_.NumAccounts));
    return false;
  }
  if (account.account_index != expected) {
    Irregular(offset, fmt::format("account index {} stands where {} is due", account.account_index, expected));
  }
  listener_.Account(offset, account.account_index);
  return DatesFromHere();
}

Single QdxWalk::Share() {
  return static_cast<Single>(static_cast<Double>(stream_.Position()) / static_cast<Double>(stream_.Size()));
}

bool QdxWalk::Dates(long long offset) {
  stream_.Seek(offset);
  return DatesFromHere();
}

bool QdxWalk::DatesFromHere() {
  Date previous = kNoDate;
  for (;;) {
    const long long offset = stream_.Position();
    BodyDate date;
    if (!GetItem(stream_, date)) return CutShort(offset, "a date");
    if (!SumIsReadable(offset, date)) return false;
    if (date.month + date.day + date.year <= 0) {
      if (date.month != 0 || date.day != 0 || date.year != 0) {
        Irregular(offset,
                  fmt::format("the date {} ends the account; the mark for it is three zeros", DateItemText(date)));
      }
      listener_.AccountEnd(offset);
      return true;
    }
    CheckDate(offset, date, previous);
    if (Date day = kNoDate; DateOf(date.year, date.month, date.day, day)) previous = day;
    BodyCount count;
    if (!GetItem(stream_, count)) return CutShort(offset, "the date " + DateItemText(date));
    if (count.values < 1) Irregular(offset, fmt::format("the date {} has {} values", DateItemText(date), count.values));
    listener_.DateStart(offset, date, count.values);
    if (!Values(count.values) || listener_.Cancelled()) return false;
  }
}

// A reader adds the parts as 16-bit numbers.
bool QdxWalk::SumIsReadable(long long offset, const BodyDate& date) {
  const int sum = date.month + date.day + date.year;
  using Limits = std::numeric_limits<Integer>;
  if (sum >= Limits::min() && sum <= Limits::max()) return true;
  EndsReading(offset,
              fmt::format("the parts of the date {} add up to {}, at which a reader fails", DateItemText(date), sum));
  return false;
}

bool QdxWalk::Values(Integer count) {
  Integer previous_index = 0;
  for (int i = 1; i <= count; ++i) {
    const long long offset = stream_.Position();
    BodyValue value;
    if (!GetItem(stream_, value)) return CutShort(offset, fmt::format("value {} of {}", i, count));
    CheckValue(offset, value, previous_index);
    previous_index = value.field_index;
    listener_.Value(offset, value);
  }
  return true;
}

void QdxWalk::CheckDate(long long offset, const BodyDate& date, Date previous) {
  Date day = kNoDate;
  if (!DateOf(date.year, date.month, date.day, day)) {
    Irregular(offset, fmt::format("the date {} is in no calendar", DateItemText(date)));
    return;
  }
  if (previous != kNoDate && day <= previous) {
    Irregular(offset, fmt::format("the date {} does not come behind {}", DateItemText(date), DateText(previous)));
  }
  if (range_known_ && (day < record_.StartDate() || day > record_.LastDate())) {
    Irregular(offset, fmt::format("the date {} is outside the header's {} to {}", DateItemText(date),
                                  DateText(record_.StartDate()), DateText(record_.LastDate())));
  }
}

void QdxWalk::CheckValue(long long offset, const BodyValue& value, Integer previous_index) {
  if (value.field_index < 1 || value.field_index > record_.NumFields) {
    Irregular(offset, fmt::format("field index {} is outside 1 to {}", value.field_index, record_.NumFields));
  } else if (value.field_index <= previous_index) {
    Irregular(offset, fmt::format("field index {} does not come behind {}", value.field_index, previous_index));
  }
  if (value.value == 0) Irregular(offset, fmt::format("the value of field index {} is zero", value.field_index));
  if (!std::isfinite(value.value)) {
    Irregular(offset, fmt::format("the value of field index {} is {}", value.field_index, value.value));
  }
}

}  // namespace tallybook::inspect
