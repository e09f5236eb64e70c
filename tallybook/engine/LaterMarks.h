// Which entries of the journal wrote records again that an entry wrote. One thread.
#pragma once

#include <cstdint>
#include <span>
#include <unordered_map>
#include <vector>

#include "base/Types.h"
#include "tallybook/engine/EntryImages.h"
#include "tallybook/engine/JournalRow.h"

namespace tallybook::engine {

class LaterMarks {
 public:
  // `later` are the entries behind that one, oldest first. What is kept in memory goes by the chunks of the entry; what
  // is read, by its chunks or by those of the later entries, whichever are less.
  LaterMarks(EntryImages& images, const JournalRow& entry, std::span<const JournalRow> later);

  // The places in `later` of those that wrote records of the chunk again, oldest first, up to where each of the records
  // has one. Empty where there is none.
  [[nodiscard]] std::span<const std::size_t> Of(std::int64_t key) const;

 private:
  struct Written {
    RowBits alone;  // rows that no later entry wrote so far
    std::vector<std::size_t> later;
  };

  void Note(const EntryRows& rows, std::size_t place);

  std::unordered_map<std::int64_t, Written> written_;
};

}  // namespace tallybook::engine
