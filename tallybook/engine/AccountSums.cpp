#include "tallybook/engine/AccountSums.h"

#include <algorithm>
#include <cstring>
#include <string>

#include "base/Failure.h"
#include "base/Narrow.h"
#include "tallybook/engine/ChunkKey.h"

namespace tallybook::engine {

namespace {

constexpr int kBlockBits = 8;  // accounts whose numbers agree above these share a row
constexpr std::size_t kEntrySize = 24;

struct Entry {
  std::uint32_t account;
  std::uint32_t chunks;
  std::uint64_t numbers;
  std::uint64_t checksums;
};
static_assert(sizeof(Entry) == kEntrySize);

Long BlockOf(Long account) {
  return account >> kBlockBits;
}

}  // namespace

void AccountSum::Add(std::int64_t key, Checksum checksum) {
  ++chunks;
  numbers += ChunkNumberOf(key);
  checksums += checksum;
}

void AccountSum::Remove(std::int64_t key, Checksum checksum) {
  --chunks;
  numbers -= ChunkNumberOf(key);
  checksums -= checksum;
}

AccountSums::AccountSums(const std::vector<Long>& accounts) : accounts_(accounts) {
  std::sort(accounts_.begin(), accounts_.end());
  sums_.resize(accounts_.size());
}

void AccountSums::Take(std::int64_t block, std::span<const std::byte> bytes, const Text& path) {
  const auto checked = TakeChecked(bytes, block);
  if (!checked || checked->bytes.size() % kEntrySize != 0) {
    throw Failure(FailureNumber::kDeviceError,
                  path + ": the book is damaged: the sums of the accounts from number " +
                      std::to_string(block << kBlockBits) + " on do not agree with their checksum",
                  "Tallybook.Book");
  }
  for (std::size_t at = 0; at < checked->bytes.size(); at += kEntrySize) {
    Entry entry{};
    std::memcpy(&entry, checked->bytes.data() + at, kEntrySize);
    sums_[MakePlace(ToLong(std::int64_t{entry.account}))] = {entry.chunks, entry.numbers, entry.checksums};
  }
}

std::size_t AccountSums::PlaceOf(Long account) const {
  const auto stands_at = [&](std::size_t place) { return place < accounts_.size() && accounts_[place] == account; };
  if (stands_at(last_place_)) return last_place_;
  if (stands_at(last_place_ + 1)) return ++last_place_;
  const auto found = std::lower_bound(accounts_.begin(), accounts_.end(), account);
  last_place_ = static_cast<std::size_t>(found - accounts_.begin());
  return last_place_;
}

std::size_t AccountSums::MakePlace(Long account) {
  const std::size_t place = PlaceOf(account);
  if (place < accounts_.size() && accounts_[place] == account) return place;
  accounts_.insert(accounts_.begin() + static_cast<std::ptrdiff_t>(place), account);
  sums_.insert(sums_.begin() + static_cast<std::ptrdiff_t>(place), AccountSum());
  return place;
}

AccountSum AccountSums::Of(Long account) const {
  const std::size_t place = PlaceOf(account);
  return place < accounts_.size() && accounts_[place] == account ? sums_[place] : AccountSum();
}

bool AccountSums::Empty() const {
  return std::all_of(sums_.begin(), sums_.end(), [](const AccountSum& sum) { return sum.chunks == 0; });
}

AccountSum& AccountSums::Changing(std::int64_t key) {
  const Long account = AccountOf(key);
  if (changed_blocks_.empty() || changed_blocks_.back() != BlockOf(account)) {
    changed_blocks_.push_back(BlockOf(account));
  }
  return sums_[MakePlace(account)];
}

void AccountSums::GiveChanged(const RowTaker& take) {
  std::sort(changed_blocks_.begin(), changed_blocks_.end());
  changed_blocks_.erase(std::unique(changed_blocks_.begin(), changed_blocks_.end()), changed_blocks_.end());
  std::vector<std::byte> bytes;
  for (const Long block : changed_blocks_) {
    bytes.clear();
    for (std::size_t place = PlaceOf(block << kBlockBits);
         place < accounts_.size() && BlockOf(accounts_[place]) == block; ++place) {
      const AccountSum& sum = sums_[place];
      if (sum.chunks == 0) continue;
      const Entry entry = {static_cast<std::uint32_t>(accounts_[place]), sum.chunks, sum.numbers, sum.checksums};
      bytes.resize(bytes.size() + kEntrySize);
      std::memcpy(bytes.data() + bytes.size() - kEntrySize, &entry, kEntrySize);
    }
    if (!bytes.empty()) AppendChecksum(bytes, block);
    take(block, bytes);
  }
  changed_blocks_.clear();
}

}  // namespace tallybook::engine
