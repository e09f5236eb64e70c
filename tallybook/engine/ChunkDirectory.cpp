#include "tallybook/engine/ChunkDirectory.h"

#include <algorithm>
#include <string>

#include "base/Failure.h"
#include "tallybook/engine/ChunkKey.h"

namespace tallybook::engine {

bool ChunkDirectory::Has(std::int64_t key, const AccountSum& sum) {
  if (sum.chunks == 0) return false;
  const Numbers& numbers = NumbersOf(AccountOf(key), sum);
  return std::binary_search(numbers.begin(), numbers.end(), ChunkNumberOf(key));
}

std::uint32_t ChunkDirectory::CountBetween(std::int64_t first_key, std::int64_t last_key, const AccountSum& sum) {
  if (sum.chunks == 0) return 0;
  const Numbers& numbers = NumbersOf(AccountOf(first_key), sum);
  const auto first = std::lower_bound(numbers.begin(), numbers.end(), ChunkNumberOf(first_key));
  return static_cast<std::uint32_t>(std::upper_bound(first, numbers.end(), ChunkNumberOf(last_key)) - first);
}

const ChunkDirectory::Numbers& ChunkDirectory::NumbersOf(Long account, const AccountSum& sum) {
  const auto known = numbers_of_account_.find(account);
  return known != numbers_of_account_.end() ? known->second
                                            : numbers_of_account_.emplace(account, Read(account, sum)).first->second;
}

ChunkDirectory::Numbers ChunkDirectory::Read(Long account, const AccountSum& sum) {
  Numbers numbers;
  AccountSum seen;
  storage_.VisitKeys(FirstKeyOf(account), FirstKeyOf(account) + kChunkNumberMask, [&](std::int64_t key) {
    numbers.push_back(ChunkNumberOf(key));
    seen.Add(key, 0);
  });
  if (seen.chunks != sum.chunks || seen.numbers != sum.numbers || !std::is_sorted(numbers.begin(), numbers.end())) {
    throw Failure(FailureNumber::kDeviceError,
                  storage_.Path() + ": the book is damaged: its index shows " + std::to_string(seen.chunks) +
                      " chunks of account number " + std::to_string(account) + ", not the " +
                      std::to_string(sum.chunks) + " that were written",
                  "Tallybook.Book");
  }
  return numbers;
}

void ChunkDirectory::Note(std::int64_t key, bool is_there) {
  const auto known = numbers_of_account_.find(AccountOf(key));
  if (known == numbers_of_account_.end()) return;
  Numbers& numbers = known->second;
  const std::uint32_t number = ChunkNumberOf(key);
  const auto place = std::lower_bound(numbers.begin(), numbers.end(), number);
  const bool listed = place != numbers.end() && *place == number;
  if (is_there && !listed) numbers.insert(place, number);
  if (!is_there && listed) numbers.erase(place);
}

}  // namespace tallybook::engine
