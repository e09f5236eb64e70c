#include "tallybook/application/CareWords.h"

#include <fmt/format.h>

#include "base/Dates.h"
#include "tallybook/application/Counts.h"

namespace tallybook::application {

namespace {

Text DateOrNothing(Date date) {
  return date == kNoDate ? Text() : DateText(date);
}

Text NumberOrNothing(Long number) {
  return number == 0 ? Text() : std::to_string(number);
}

Text Bytes(std::int64_t count) {
  return Counted(count, "byte");
}

Text Companions(const engine::BackupContents& contents) {
  return Counted(static_cast<long long>(contents.companions), "companion file");
}

}  // namespace

std::vector<Text> CellsOf(const engine::BookFinding& finding) {
  return {engine::FindingKindName(finding.kind), finding.code.empty() ? NumberOrNothing(finding.account) : finding.code,
          DateOrNothing(finding.first),          DateOrNothing(finding.last),
          NumberOrNothing(finding.entry),        finding.what};
}

Text CountedEntries(long long count) {
  return count == 1 ? "1 journal entry" : WithCommas(count) + " journal entries";
}

Text CheckWords(const Text& path, const engine::BookCheckResult& result) {
  const auto found = static_cast<long long>(result.findings.size());
  return fmt::format("{}: format {}{}, {}, {} with {}; {}", path, result.format,
                     result.format == 1 ? " (without checksums)" : "", Counted(result.chunks, "chunk"),
                     CountedEntries(result.entries), Counted(result.images, "image"),
                     found == 0 ? "nothing is damaged" : Counted(found, "finding"));
}

Text BackupWords(const Text& book, const Text& file, const BackupDone& done) {
  return fmt::format("Wrote {}: {} with {}, {}.", file, book, Companions(done.contents), Bytes(done.size));
}

Text RestoreWords(const RestoreDone& done) {
  return fmt::format("Made {} as {} was on {}, with {}.", done.book, done.contents.book_name,
                     DateTimeText(done.contents.time), Companions(done.contents));
}

Text KeptWords(const RestoreDone& done) {
  return done.kept_as.empty() ? Text() : fmt::format("The book that was there is kept as {}.", done.kept_as);
}

Text WaitingWords(const RestoreDone& done) {
  return done.companions_wait.empty()
             ? Text()
             : "the companion files are put in place by the next command that opens the book: " + done.companions_wait;
}

Text SalvageWords(const Text& path, const engine::SalvageResult& result) {
  const auto lost = static_cast<long long>(result.lost.size());
  return fmt::format("Made {} with {}, {} and {}; {}.", path, Counted(result.chunks, "chunk"),
                     CountedEntries(result.entries), Counted(result.companions, "companion file"),
                     lost == 0 ? "nothing is lost" : Counted(lost, "finding"));
}

Text CompactWords(const Text& path, const engine::CompactResult& result) {
  return fmt::format("{}: {} before, {} after.", path, Bytes(result.before), Bytes(result.after));
}

}  // namespace tallybook::application
