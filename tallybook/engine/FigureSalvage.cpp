#include "tallybook/engine/FigureSalvage.h"

#include <span>
#include <string>

#include "tallybook/engine/ChunkKey.h"
#include "tallybook/engine/SumTable.h"

namespace tallybook::engine {

namespace {

constexpr int kBlockBits = 8;

// Finds chunks, one of a key, with which `seen` becomes `sum`.
class Choice {
 public:
  // `candidates` are in the order of their keys, and must outlive this.
  Choice(std::vector<const FoundChunk*> candidates, const AccountSum& sum)
      : candidates_(std::move(candidates)), sum_(sum) {}

  // False where there are none, or they are not found within many steps.
  [[nodiscard]] bool Find(const AccountSum& seen) { return FindFrom(0, seen); }
  [[nodiscard]] const std::vector<const FoundChunk*>& Chosen() const { return chosen_; }

 private:
  bool FindFrom(std::size_t at, const AccountSum& seen) {
    constexpr long kMostSteps = 1'000'000;
    if (seen == sum_) return true;
    if (seen.chunks >= sum_.chunks || ++steps_ > kMostSteps) return false;
    for (; at < candidates_.size() && candidates_.size() - at >= sum_.chunks - seen.chunks; ++at) {
      const FoundChunk& candidate = *candidates_[at];
      if (!chosen_.empty() && chosen_.back()->key == candidate.key) continue;
      AccountSum with = seen;
      with.Add(candidate.key, candidate.checksum);
      chosen_.push_back(&candidate);
      if (FindFrom(at + 1, with)) return true;
      chosen_.pop_back();
    }
    return false;
  }

  std::vector<const FoundChunk*> candidates_;
  AccountSum sum_;
  std::vector<const FoundChunk*> chosen_;
  long steps_ = 0;
};

}  // namespace

void FigureSalvage::Run() {
  ReadSums();
  finds_.CopyAll();
  JudgeAccounts();
  chunks_.SaveSums();
}

// Rows of sums agree with their checksums or are not known.
void FigureSalvage::ReadSums() {
  if (!book_.HasChecksums()) return;
  all_sums_read_ = Tries([&] {
    SumTable(book_.Db()).Visit([&](std::int64_t block, std::span<const std::byte> bytes) {
      AccountSums sums;
      if (!Tries([&] { sums.Take(block, bytes, book_.Path()); })) return;
      blocks_.insert(block);
      for (const Long account : sums.Accounts()) sums_[account] = sums.Of(account);
    });
  });
}

// What an account must have; nothing where that is not known. A block of which there is no row has no chunks, or has
// lost its row: the latter where chunks of it are found.
std::optional<AccountSum> FigureSalvage::SumOf(Long account) const {
  const std::int64_t block = account >> kBlockBits;
  if (blocks_.contains(block)) {
    const auto found = sums_.find(account);
    return found == sums_.end() ? AccountSum() : found->second;
  }
  if (all_sums_read_ && !HasAnyOfBlock(block)) return AccountSum();
  return std::nullopt;
}

bool FigureSalvage::HasAnyOfBlock(std::int64_t block) const {
  const std::int64_t first = FirstKeyOf(static_cast<Long>(block << kBlockBits));
  const auto is_of_block = [&](std::int64_t key) { return AccountOf(key) >> kBlockBits == block; };
  const auto chunk = chunks_.All().lower_bound(first);
  const auto key = finds_.Index().lower_bound(first);
  return (chunk != chunks_.All().end() && is_of_block(chunk->first)) ||
         (key != finds_.Index().end() && is_of_block(*key));
}

// What is the last that was written?
void FigureSalvage::JudgeAccounts() {
  std::set<Long> accounts = places_.Accounts();
  for (const auto& [account, sum] : sums_) accounts.insert(account);
  for (const Long account : accounts) {
    if (!book_.HasChecksums()) {
      LoseMissingOfIndex(account);
    } else if (const auto sum = SumOf(account)) {
      Judge(account, *sum);
    } else {
      JudgeWithoutSum(account);
    }
  }
}

void FigureSalvage::JudgeWithoutSum(Long account) {
  DropOthers(account);
  LoseMissingOfIndex(account);
  losses_.AddOfAccount(FindingKind::kSums, account, "whether these are all figures that were written cannot be told");
}

// Of two chunks in one place neither counts where nothing tells which it is.
void FigureSalvage::DropOthers(Long account) {
  for (const FoundChunk& other : finds_.Others()) {
    if (AccountOf(other.key) != account || !chunks_.Has(other.key)) continue;
    chunks_.Remove(other.key);
    if (!finds_.Index().contains(other.key)) {
      losses_.AddChunk(other.key, "these figures are there twice, and differ");
    }
  }
}

void FigureSalvage::LoseMissingOfIndex(Long account) {
  for (const std::int64_t key : finds_.MissingOfIndex(account)) {
    losses_.AddChunk(key, "these figures cannot be read");
  }
}

void FigureSalvage::Judge(Long account, const AccountSum& sum) {
  if (chunks_.SumOf(account) == sum) return;
  if (WithoutUnindexed(account, sum) || WithOther(account, sum) || WithLeaves(account, sum)) return;
  DropOthers(account);
  const AccountSum seen = chunks_.SumOf(account);
  const std::vector<std::int64_t> missing = MissingOf(account, sum, seen);
  if (seen.chunks < sum.chunks && !missing.empty()) {
    for (const std::int64_t key : missing) losses_.AddChunk(key, "these figures cannot be read");
  } else if (seen.chunks < sum.chunks && sum.chunks - seen.chunks > 1) {
    losses_.AddOfAccount(FindingKind::kChunk, account,
                         "of " + std::to_string(sum.chunks) + " chunks of figures " + std::to_string(seen.chunks) +
                             " can be read; where the others belong cannot be told");
  } else {
    for (const std::int64_t key : chunks_.KeysOf(account)) chunks_.Remove(key);
    losses_.AddOfAccount(FindingKind::kChunk, account,
                         "what can be read of these figures is not what was written last");
  }
}

// Figures that were taken away can be found still where the table is damaged; the index does not have them.
bool FigureSalvage::WithoutUnindexed(Long account, const AccountSum& sum) {
  if (!finds_.IndexIsWhole()) return false;
  AccountSum indexed = chunks_.SumOf(account);
  std::vector<std::int64_t> extra;
  for (const std::int64_t key : chunks_.KeysOf(account)) {
    if (finds_.Index().contains(key)) continue;
    indexed.Remove(key, chunks_.All().at(key));
    extra.push_back(key);
  }
  if (indexed != sum) return false;
  for (const std::int64_t key : extra) chunks_.Remove(key);
  return true;
}

bool FigureSalvage::WithOther(Long account, const AccountSum& sum) {
  for (const FoundChunk& other : finds_.Others()) {
    if (AccountOf(other.key) != account || !chunks_.Has(other.key)) continue;
    AccountSum with = chunks_.SumOf(account);
    with.Remove(other.key, chunks_.All().at(other.key));
    with.Add(other.key, other.checksum);
    if (with != sum) continue;
    chunks_.Remove(other.key);
    chunks_.Put(other);
    return true;
  }
  return false;
}

// What no tree leads to any more: taken only where the account's sums are met with it, for it can be of any age.
bool FigureSalvage::WithLeaves(Long account, const AccountSum& sum) {
  const AccountSum seen = chunks_.SumOf(account);
  if (seen.chunks >= sum.chunks) return false;
  std::vector<const FoundChunk*> candidates;
  for (const FoundChunk& chunk : finds_.OfLeaves(account)) {
    if (!chunks_.Has(chunk.key)) candidates.push_back(&chunk);
  }
  Choice choice(std::move(candidates), sum);
  if (!choice.Find(seen)) return false;
  for (const FoundChunk* chunk : choice.Chosen()) chunks_.Put(*chunk);
  return true;
}

// The keys of the chunks that are missing, where they can be told: empty where not.
std::vector<std::int64_t> FigureSalvage::MissingOf(Long account, const AccountSum& sum, const AccountSum& seen) const {
  const std::uint64_t numbers = sum.numbers - seen.numbers;
  if (sum.chunks == seen.chunks + 1) {
    if (numbers >= places_.ChunksOfAccount()) return {};
    const std::int64_t key = FirstKeyOf(account) + static_cast<std::int64_t>(numbers);
    return chunks_.Has(key) ? std::vector<std::int64_t>() : std::vector<std::int64_t>{key};
  }
  std::vector<std::int64_t> missing = finds_.MissingOfIndex(account);
  std::uint64_t of_index = 0;
  for (const std::int64_t key : missing) of_index += ChunkNumberOf(key);
  if (missing.size() + seen.chunks != sum.chunks || of_index != numbers) missing.clear();
  return missing;
}

}  // namespace tallybook::engine
