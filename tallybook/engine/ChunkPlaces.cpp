#include "tallybook/engine/ChunkPlaces.h"

#include <algorithm>

#include "tallybook/engine/Calendar.h"
#include "tallybook/engine/ChunkKey.h"

namespace tallybook::engine {

ChunkPlaces::ChunkPlaces(const StoredDescription& stored)
    : shape_(ShapeOf(stored)), accounts_(stored.retired_accounts.begin(), stored.retired_accounts.end()) {
  for (const AccountDescription& account : stored.description.accounts) {
    accounts_.insert(account.number);
    codes_[account.number] = account.code;
  }
  const Calendar calendar(stored.description.calendar, stored.description.data_level);
  for (Date day = calendar.FirstDate(); day <= calendar.LastDate(); day = dates_.back() + 1) {
    dates_.push_back(calendar.UnitOf(day, kOwnLevel).last);
  }
  chunks_of_account_ = (dates_.size() + shape_.rows - 1) / shape_.rows;
}

Text ChunkPlaces::CodeOf(Long account) const {
  const auto code = codes_.find(account);
  return code == codes_.end() ? Text() : code->second;
}

bool ChunkPlaces::Has(std::int64_t key) const {
  return key >> kChunkNumberBits == AccountOf(key) && accounts_.contains(AccountOf(key)) &&
         ChunkNumberOf(key) < chunks_of_account_;
}

std::size_t ChunkPlaces::FirstRowOf(std::int64_t key) const {
  return std::size_t{ChunkNumberOf(key)} * shape_.rows;
}

Date ChunkPlaces::LastDateOf(std::int64_t key) const {
  return dates_[std::min(FirstRowOf(key) + shape_.rows, dates_.size()) - 1];
}

}  // namespace tallybook::engine
