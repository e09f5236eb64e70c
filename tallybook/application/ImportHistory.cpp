#include "tallybook/application/ImportHistory.h"

#include <algorithm>
#include <cstdint>
#include <fmt/format.h>
#include <fstream>
#include <utility>

#include "base/Dates.h"
#include "tallybook/application/FileFingerprint.h"
#include "tallybook/application/Shown.h"
#include "tallybook/engine/Book.h"

namespace tallybook::application {

namespace {

bool IsOfImport(const engine::NotedEntry& noted) {
  return noted.entry.kind == engine::JournalKind::kImport && noted.entry.state != engine::JournalState::kUndone &&
         !noted.notes.files.empty();
}

// Empty for what cannot be read.
Text HeadOf(const Text& place) {
  constexpr std::streamsize kHead = 4096;
  Text head(kHead, '\0');
  std::ifstream file(place, std::ios::binary);
  file.read(head.data(), kHead);
  head.resize(static_cast<std::size_t>(std::max<std::streamsize>(file.gcount(), 0)));
  return head;
}

}  // namespace

ImportHistory::ImportHistory(engine::Book& book) {
  for (engine::NotedEntry& noted : engine::JournalNotes(book).Entries()) {
    if (!IsOfImport(noted)) continue;
    EntryFacts facts = FactsOf(noted.notes.facts);
    imports_.push_back({std::move(noted), std::move(facts)});
  }
}

std::optional<EarlierImport> ImportHistory::Find(const Text& path, const Text& place, const EntryFacts& way) const {
  if (auto expected = FindExpected(place, way)) return expected;
  std::optional<std::int64_t> size;
  std::optional<std::vector<std::byte>> xxh3;
  for (auto known = imports_.rbegin(); known != imports_.rend(); ++known) {
    if (!IsSameImport(known->facts, way)) continue;
    if (!size) size = SizeOfFile(place);
    if (!size) return std::nullopt;
    for (const engine::EntryFile& file : known->noted.notes.files) {
      if (file.size != size) continue;
      EarlierImport earlier = {known->noted.entry, known->noted.who, file.path, file.xxh3.empty(), known->facts.math};
      if (earlier.likely && file.path == path) return earlier;
      if (earlier.likely) continue;
      if (!xxh3) xxh3 = Xxh3Of(place);
      if (xxh3 && *xxh3 == file.xxh3) return earlier;
    }
  }
  return std::nullopt;
}

void ImportHistory::Expect(const Text& path, const Text& place, const EntryFacts& way) {
  if (const auto size = SizeOfFile(place)) expected_.push_back({path, place, way, *size, HeadOf(place)});
}

std::optional<EarlierImport> ImportHistory::FindExpected(const Text& place, const EntryFacts& way) const {
  if (expected_.empty()) return std::nullopt;
  const auto size = SizeOfFile(place);
  if (!size) return std::nullopt;
  const Text head = HeadOf(place);
  for (const Expected& other : expected_) {
    if (other.size != *size || other.head != head || !IsSameImport(other.way, way)) continue;
    const auto xxh3 = Xxh3Of(place);
    if (xxh3 && xxh3 == Xxh3Of(other.place)) return EarlierImport{.entry = {}, .who = {}, .file = other.path};
  }
  return std::nullopt;
}

Text EarlierImportText(const Text& path, const EarlierImport& earlier) {
  return OnOneLine(path) + ": " + EarlierImportReason(path, earlier);
}

Text EarlierImportReason(const Text& path, const EarlierImport& earlier) {
  if (earlier.entry.id == 0) {
    return fmt::format("it has the same bytes as {}, which is imported as well", OnOneLine(earlier.file));
  }
  const Text by = earlier.who.empty() ? Text() : " by " + earlier.who;
  const Text as = earlier.file == path ? Text() : " as " + OnOneLine(earlier.file);
  const bool open = earlier.entry.state == engine::JournalState::kOpen;
  const Text what = open ? "the import of it was begun and not finished" : "it was imported";
  const Text likely = earlier.likely ? "a file of this name and size: " : "";
  return fmt::format("{}{} on {}{}{} (journal entry {}), and that has not been taken back", likely, what,
                     DateTimeText(earlier.entry.time), by, as, earlier.entry.id);
}

}  // namespace tallybook::application
