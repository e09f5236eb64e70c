// Takes the figures of a damaged book into a new one: all that can be found, less what the sums show not to be what was
// written last. One thread.
#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <set>
#include <vector>

#include "base/Types.h"
#include "tallybook/engine/AccountSums.h"
#include "tallybook/engine/ChunkFinds.h"
#include "tallybook/engine/ChunkPlaces.h"
#include "tallybook/engine/DamagedBook.h"
#include "tallybook/engine/SalvageLosses.h"
#include "tallybook/engine/SalvagedChunks.h"

namespace tallybook::engine {

class FigureSalvage {
 public:
  // All must outlive this.
  FigureSalvage(DamagedBook& book, const ChunkPlaces& places, SalvageLosses& losses, SalvagedChunks& chunks)
      : book_(book), places_(places), losses_(losses), chunks_(chunks), finds_(book, places, chunks) {}

  // Fills the new book with chunks and their sums. What is missing then, or may be, is among the losses.
  void Run();

 private:
  void ReadSums();
  [[nodiscard]] std::optional<AccountSum> SumOf(Long account) const;
  [[nodiscard]] bool HasAnyOfBlock(std::int64_t block) const;

  void JudgeAccounts();
  void JudgeWithoutSum(Long account);
  void Judge(Long account, const AccountSum& sum);
  bool WithoutUnindexed(Long account, const AccountSum& sum);
  bool WithOther(Long account, const AccountSum& sum);
  bool WithLeaves(Long account, const AccountSum& sum);
  [[nodiscard]] std::vector<std::int64_t> MissingOf(Long account, const AccountSum& sum, const AccountSum& seen) const;

  void DropOthers(Long account);
  void LoseMissingOfIndex(Long account);

  DamagedBook& book_;
  const ChunkPlaces& places_;
  SalvageLosses& losses_;
  SalvagedChunks& chunks_;
  ChunkFinds finds_;
  std::set<std::int64_t> blocks_;  // of sums that are known
  std::map<Long, AccountSum> sums_;
  bool all_sums_read_ = false;
};

}  // namespace tallybook::engine
