#include "tallybook/engine/Lineage.h"

#include <algorithm>
#include <string>

#include "base/Dates.h"
#include "base/Failure.h"
#include "tallybook/engine/Book.h"
#include "tallybook/engine/ChunkCodec.h"
#include "tallybook/engine/ChunkKey.h"
#include "tallybook/engine/FigureStore.h"
#include "tallybook/engine/RowBits.h"

namespace tallybook::engine {

namespace {

constexpr const char* kSource = "Tallybook.Journal";

}  // namespace

// The figure's place, in whatever chunks the rows of its time are.
struct Lineage::Place {
  Long account = 0;
  std::size_t record = 0;
  std::size_t slot = 0;
};

bool Lineage::Take(const JournalRow& row, const Place& place, FigureHistory& history, Double& value) {
  const JournalEntry& entry = row.entry;
  // Of an entry that was lost nothing tells which records it wrote.
  if (!entry.keeps_images && row.marks == 0 && entry.kind != JournalKind::kLists) {
    history.unknown_before = entry.id;
    return false;
  }
  const ChunkShape shape = ShapeOf(book_.Stored(), entry.id);
  const std::int64_t key = FirstKeyOf(place.account) + static_cast<std::int64_t>(place.record / shape.rows);
  std::optional<Double> before;
  bool wrote = false;
  book_.Store().Storage().VisitMark(entry.id, key,
                                    [&](std::int64_t, const ChunkMark& mark, std::span<const std::byte> image) {
                                      wrote = HasBit(mark.rows, place.record % shape.rows);
                                      if (!wrote || !entry.keeps_images) return;
                                      ChunkRows rows;
                                      if (mark.image != 0) book_.Store().DecodeImage(entry.id, key, image, rows);
                                      const Double* figures = rows.Find(place.record % shape.rows, shape.fields);
                                      before = figures == nullptr ? 0 : figures[place.slot];
                                    });
  if (!wrote) return true;
  if (!before) history.unknown_before = entry.id;
  if (before != value) history.changes.push_back({entry, before, value});
  value = before.value_or(0);
  return before.has_value();
}

FigureHistory Lineage::Of(Long account_number, Date date, Integer field_number) {
  FigureStore& store = book_.Store();
  const std::int32_t record = store.RecordOf(date);
  const Integer field = book_.FieldPosition(field_number);
  if (record < 0 || field == 0 || !book_.ReadRecord(account_number, date)) {
    throw Failure(FailureNumber::kInvalidArgument,
                  book_.Path() + ": the book has no field " + std::to_string(field_number) + " of account number " +
                      std::to_string(account_number) + " at " + DateText(date),
                  kSource);
  }
  FigureHistory history;
  history.value = book_.FieldValue(field_number);
  if (!book_.ReadOnly()) store.Commit();
  Place place;
  place.account = account_number;
  place.record = static_cast<std::size_t>(record);
  place.slot = book_.Stored().slot_of_field[static_cast<std::size_t>(field - 1)];
  BookStorage& storage = store.Storage();
  const std::vector<JournalRow> rows = storage.Entries();
  // The marks of the first format have no checksums, and some of its entries took theirs away.
  if (storage.Format() == 1) {
    if (!rows.empty()) history.unknown_before = rows.back().entry.id;
    history.of_first_format = true;
    return history;
  }
  Double value = history.value;
  for (auto row = rows.rbegin(); row != rows.rend(); ++row) {
    if (!Take(*row, place, history, value)) break;
  }
  std::ranges::reverse(history.changes);
  return history;
}

}  // namespace tallybook::engine
