#include "tallybook/engine/FiguresBefore.h"

#include "tallybook/engine/Book.h"
#include "tallybook/engine/ChunkKey.h"
#include "tallybook/engine/FigureStore.h"

namespace tallybook::engine {

FiguresBefore::FiguresBefore(Book& book, const JournalEntry& entry)
    : book_(book),
      entry_(entry),
      images_(book.Store().Storage(), book.Stored(),
              [&store = book.Store(), id = entry.id](const ChunkShape& /*of that entry*/, std::int64_t key,
                                                     std::span<const std::byte> bytes,
                                                     ChunkRows& rows) { store.DecodeImage(id, key, bytes, rows); }),
      place_of_field_(book.place_of_field_),
      // The marks of the first format have no checksums.
      keeps_(entry.keeps_images && book.Store().Storage().Format() != 1),
      zeros_(images_.Shape().fields) {
  if (!book.ReadOnly()) book.Store().Commit();
}

std::optional<std::size_t> FiguresBefore::PlaceOf(Integer field_number) const {
  // A negative number wraps to one that no table reaches.
  const auto number = static_cast<std::uint16_t>(field_number);
  if (number >= place_of_field_.size() || place_of_field_[number] == 0) return std::nullopt;
  return place_of_field_[number] - std::size_t{1};
}

const Double* FiguresBefore::Select(Long account_number, Date date) {
  const std::int32_t record = book_.Store().RecordOf(date);
  if (!keeps_ || record < 0) return nullptr;
  const auto place = static_cast<std::size_t>(record);
  const std::size_t rows = images_.Shape().rows;
  const std::int64_t key = FirstKeyOf(account_number) + static_cast<std::int64_t>(place / rows);
  if (key != key_) {
    chunk_ = images_.Find(entry_, key);
    key_ = key;
  }
  if (!chunk_ || !HasBit(chunk_->rows, place % rows)) return nullptr;
  const Double* figures = chunk_->before.Find(place % rows, zeros_.size());
  return figures == nullptr ? zeros_.data() : figures;
}

}  // namespace tallybook::engine
