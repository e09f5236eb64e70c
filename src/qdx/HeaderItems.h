// The items of an exchange file's header, in file order. Reader and writer both walk this one list: each item knows its
// place in the header record, where the reader puts it, and its source in the sending database, where the writer gets
// it. The bytes are told in docs/exchange-file.md ("Header"); no offset and no width is written anywhere else.
//
// The writer enforces none of the reader's table limits and checks no version: meant, see "Where reader and writer
// differ" there. One thread. Owns no file: the caller opens, passes and closes.
#pragma once

#include <functional>
#include <optional>
#include <span>
#include <string_view>
#include <variant>
#include <vector>

#include "base/Types.h"
#include "qdx/HeaderRecord.h"
#include "support/FileStream.h"

namespace tallybook {

class AccountRecord;
class Masterfile;

// What a file must begin with to be read.
inline constexpr std::string_view kMagic = "Kelvo QDX";
inline constexpr Single kReadableVersion = 1.0F;

// What the items of a header are written from. `created` stands in the file as date and time.
struct HeaderSender {
  Masterfile& masterfile;
  AccountRecord& account;  // left on the last account of the table
  Single version = kReadableVersion;
  Integer report_length = 0;
  Date created = kNoDate;
  Date start_date = kNoDate;
  Date last_date = kNoDate;
  // The number of accounts, read and narrowed once when the items reach the last date; that one value is written.
  std::optional<Integer> account_count;
};

// An item of one value. `place` is its member of the header record, `source` its value at writing.
struct FixedTextItem {
  Integer width;
  Text HeaderRecord::*place;
  Text (*source)(HeaderSender&);
};
struct CountedTextItem {
  Text HeaderRecord::*place;
  Text (*source)(HeaderSender&);
};
struct ShortItem {
  Integer HeaderRecord::*place;
  long long (*source)(HeaderSender&);  // a value that does not fit 16 bits is failure 6 at writing
};
struct SingleItem {
  Single HeaderRecord::*place;
  Single (*source)(HeaderSender&);
};

// The cells of a table's row, in file order. `row` counts from 1.
struct TextCell {
  FixedTable<Text> HeaderRecord::*place;
  Text (*source)(HeaderSender&, Integer row);
};
struct ShortCell {
  FixedTable<Integer> HeaderRecord::*place;
  long long (*source)(HeaderSender&, Integer row);
};
using TableCell = std::variant<TextCell, ShortCell>;

enum class HeaderTable { kPeriods, kYears, kAccounts, kFields };

// A table: as many rows as the count that an earlier item holds.
struct TableItem {
  HeaderTable table;
  Integer HeaderRecord::*count;
  Integer (*rows)(HeaderSender&);
  std::vector<TableCell> cells;
};

struct HeaderItem {
  std::string_view name;  // as docs/exchange-file.md calls it
  std::variant<FixedTextItem, CountedTextItem, ShortItem, SingleItem, TableItem> what;
};

// The parts of the list: the signature (magic and version) by which a file is judged; the head, all that a reader takes
// that is asked for the header alone; the account and the field table.
[[nodiscard]] std::span<const HeaderItem> SignatureItems();
[[nodiscard]] std::span<const HeaderItem> HeadItems();
[[nodiscard]] std::span<const HeaderItem> TableItems();

// Called for each row of a table: by the reader behind the row, by the writer before it.
using RowProgress = std::function<void(HeaderTable table, Integer row)>;

// Reads items from `source`'s position into `record`.
//   fails   failure 9 on the first row beyond a table; rows read before it stay. Failure 5 for a negative text length.
//   meant   a source that ends early is no failure: what it does not hold stays as it was
void ReadHeaderItems(FileStream& source, std::span<const HeaderItem> items, HeaderRecord& record,
                     const RowProgress& progress);

// Writes items to `target`'s position.
//   fails   failure 6 for a number that does not fit its item, failure 5 for a text that the code page lacks
void WriteHeaderItems(FileStream& target, std::span<const HeaderItem> items, HeaderSender& sender,
                      const RowProgress& progress);

}  // namespace tallybook
