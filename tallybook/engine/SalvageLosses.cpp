#include "tallybook/engine/SalvageLosses.h"

#include "tallybook/engine/ChunkKey.h"

namespace tallybook::engine {

void SalvageLosses::Add(FindingKind kind, Text what) {
  for (const Text& beginning : {path_ + ": ", Text("the book is damaged: ")}) {
    if (what.starts_with(beginning)) what.erase(0, beginning.size());
  }
  BookFinding& lost = lost_.emplace_back();
  lost.kind = kind;
  lost.what = std::move(what);
}

void SalvageLosses::AddOfAccount(FindingKind kind, Long account, const Text& what) {
  Add(kind, what);
  BookFinding& lost = lost_.back();
  lost.account = account;
  lost.code = places_.CodeOf(account);
  lost.first = places_.FirstDate();
  lost.last = places_.LastDate();
}

void SalvageLosses::AddChunk(std::int64_t key, const Text& what) {
  AddOfAccount(FindingKind::kChunk, AccountOf(key), what);
  lost_.back().first = places_.FirstDateOf(key);
  lost_.back().last = places_.LastDateOf(key);
}

void SalvageLosses::AddEntry(Long entry, const Text& what) {
  Add(FindingKind::kJournal, what);
  lost_.back().entry = entry;
}

}  // namespace tallybook::engine
