#include "tallybook/engine/EntryImages.h"

#include <algorithm>
#include <utility>
#include <vector>

#include "tallybook/engine/ChunkKey.h"

namespace tallybook::engine {

EntryImages::EntryImages(BookStorage& storage, const StoredDescription& description, Decoder decode)
    : storage_(storage), description_(description), shape_(ShapeOf(description)), decode_(std::move(decode)) {}

void EntryImages::Visit(const JournalRow& entry, const Visitor& visit) {
  const bool with_images = true;
  VisitMarks(entry, with_images, visit);
}

void EntryImages::VisitBits(const JournalRow& entry, const Visitor& visit) {
  const bool with_images = false;
  VisitMarks(entry, with_images, visit);
}

// Marks come in the order of their keys, so that the rows of a chunk come one behind another.
void EntryImages::VisitMarks(const JournalRow& entry, bool with_images, const Visitor& visit) {
  const ChunkShape made = ShapeOf(description_, entry.entry.id);
  EntryRows gathered;
  const auto take = [&](std::int64_t key, const ChunkMark& mark, std::span<const std::byte> image) {
    EntryRows former{.key = key, .rows = mark.rows, .before = {}};
    // No image says that there was no chunk: zeros.
    if (!image.empty()) decode_(made, key, image, former.before);
    if (made.rows == shape_.rows) return visit(former);
    const std::size_t first_record = std::size_t{ChunkNumberOf(key)} * made.rows;
    for (std::size_t row = 0; row < made.rows; ++row) {
      if (!HasBit(former.rows, row)) continue;
      const std::int64_t new_key =
          FirstKeyOf(AccountOf(key)) + static_cast<std::int64_t>((first_record + row) / shape_.rows);
      if (new_key != gathered.key) {
        if (gathered.key >= 0) visit(gathered);
        gathered = {.key = new_key, .rows = NoRowBits(shape_.rows), .before = {}};
      }
      Move(made, former, row, gathered);
    }
  };
  if (with_images) {
    storage_.VisitMarks(entry, take);
  } else {
    storage_.VisitMarkBits(entry, [&](std::int64_t key, const ChunkMark& mark) { take(key, mark, {}); });
  }
  if (gathered.key >= 0) visit(gathered);
}

std::optional<EntryRows> EntryImages::Find(const JournalEntry& entry, std::int64_t key) {
  return FindRows(entry, key, entry.keeps_images);
}

std::optional<EntryRows> EntryImages::FindBits(const JournalEntry& entry, std::int64_t key) {
  const bool with_images = false;
  return FindRows(entry, key, with_images);
}

std::optional<EntryRows> EntryImages::FindRows(const JournalEntry& entry, std::int64_t key, bool with_images) {
  const ChunkShape made = ShapeOf(description_, entry.id);
  const std::size_t first_record = std::size_t{ChunkNumberOf(key)} * shape_.rows;
  const std::size_t last_record = first_record + shape_.rows - 1;
  EntryRows found{.key = key, .rows = NoRowBits(shape_.rows), .before = {}};
  for (std::size_t number = first_record / made.rows; number <= last_record / made.rows; ++number) {
    EntryRows former;
    former.key = FirstKeyOf(AccountOf(key)) + static_cast<std::int64_t>(number);
    std::optional<ChunkMark> mark = storage_.FindMark(entry.id, former.key);
    if (!mark) continue;
    former.rows = std::move(mark->rows);
    if (with_images && mark->image != 0) decode_(made, former.key, storage_.ReadImage(mark->image), former.before);
    if (made.rows == shape_.rows) return former;
    for (std::size_t row = 0; row < made.rows; ++row) {
      const std::size_t record = number * made.rows + row;
      if (record >= first_record && record <= last_record && HasBit(former.rows, row)) Move(made, former, row, found);
    }
  }
  if (!HasAnyBit(found.rows)) return std::nullopt;
  return found;
}

void EntryImages::Move(const ChunkShape& made, const EntryRows& former, std::size_t row, EntryRows& rows) const {
  const std::size_t place = (std::size_t{ChunkNumberOf(former.key)} * made.rows + row) % shape_.rows;
  SetBit(rows.rows, place);
  const Double* figures = former.before.Find(row, shape_.fields);
  if (figures != nullptr) std::copy_n(figures, shape_.fields, rows.before.Hold(place, shape_));
}

}  // namespace tallybook::engine
