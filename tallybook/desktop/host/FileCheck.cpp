#include "tallybook/desktop/host/FileCheck.h"

#include <algorithm>
#include <array>
#include <fmt/format.h>
#include <span>
#include <string_view>

#include "support/FileStream.h"
#include "tallybook/application/Counts.h"
#include "tallybook/application/FileKind.h"
#include "tallybook/application/OutputRules.h"
#include "tallybook/desktop/host/SaveWhole.h"
#include "tallybook/engine/Book.h"
#include "tallybook/inspect/CsvLook.h"
#include "tallybook/inspect/DateOrders.h"
#include "tallybook/inspect/DefinedLook.h"
#include "tallybook/inspect/DelimitedLook.h"
#include "tallybook/inspect/PieceSplitter.h"

namespace tallybook::desktop {

namespace {

constexpr std::size_t kRejectsBlock = std::size_t{1} << 16;

class KeepingListener final : public inspect::FindingListener {
 public:
  explicit KeepingListener(FileCheckResult& result)
      : result_(result), splitter_([this](std::string_view bytes) { Take(bytes); }, {}) {}

  void Found(const inspect::Finding& finding) override {
    ++result_.found;
    if (result_.findings.size() < FileCheckResult::kMostKept) result_.findings.push_back(finding);
  }
  void Passed(inspect::Piece piece, std::string_view bytes, bool has_findings) override {
    splitter_.Take(piece, bytes, has_findings);
  }

  void Flush() {
    if (waiting_.empty()) return;
    result_.rejects->WriteAt(result_.rejects->Size(), std::as_bytes(std::span(waiting_)));
    waiting_.clear();
  }

 private:
  void Take(std::string_view bytes) {
    waiting_ += bytes;
    if (waiting_.size() >= kRejectsBlock) Flush();
  }

  FileCheckResult& result_;
  std::string waiting_;
  inspect::PieceSplitter splitter_;
};

inspect::LookTally LookAtDelimitedFile(Masterfile& book, const FileCheckWish& wish,
                                       inspect::FindingListener& listener) {
  inspect::DelimitedLookRequest request{
      .file = wish.file,
      .math = static_cast<eMath>(wish.math),
      .date_order = wish.date_order,
      .system_fields = wish.system_fields,
      .form = {.date_in_one_field = !wish.date_parts, .any_line_end = wish.any_line_end, .encoding = wish.encoding}};
  if (request.date_order == 0) {
    const std::optional<Integer> order = inspect::FittingDateOrder(book, wish.file, request.form);
    if (!order) return {.cancelled = true};
    request.date_order = *order;
  }
  return inspect::LookAtDelimited(book, request, listener);
}

inspect::QdxLookTally LookAt(application::WholeFiles& files, engine::Book& book, const FileCheckWish& wish,
                             inspect::FindingListener& listener) {
  switch (wish.kind) {
    case ImportKind::kCommaSeparated:
      return {inspect::LookAtCsv(
          book, {.file = wish.file, .math = static_cast<eMath>(wish.math), .encoding = wish.encoding}, listener)};
    case ImportKind::kDelimited:
      return {LookAtDelimitedFile(book, wish, listener)};
    case ImportKind::kExchange:
      break;
  }
  return inspect::LookByDefinition(files, book, {.file = wish.file, .definition = wish.definition, .math = wish.math},
                                   listener);
}

}  // namespace

FileCheckResult CheckFile(application::WholeFiles& files, engine::Book& book, const FileCheckWish& wish) {
  application::OutputRules rules;
  rules.ProtectBook(book.Path());
  rules.CheckInput(wish.file);
  application::NeedRegularFile(wish.file);
  FileCheckResult result{.wish = wish, .tally = {}, .findings = {}, .rejects = nullptr};
  if (result.IsOfText()) result.rejects = std::make_unique<preview::TemporaryFile>();
  KeepingListener listener(result);
  result.tally = LookAt(files, book, wish, listener);
  listener.Flush();
  return result;
}

Text FileCheckWords(const FileCheckResult& result) {
  using application::Counted;
  const inspect::QdxLookTally& tally = result.tally;
  Text words =
      result.IsOfText()
          ? Counted(tally.records, "record") + ", " + inspect::FindingsText(tally, "the audit asks about")
          : fmt::format("{} with {} on {}, {} applied and {} not mapped; {}", Counted(tally.accounts, "account"),
                        Counted(tally.figures, "figure"), Counted(tally.records, "date"),
                        application::WithCommas(tally.applied), application::WithCommas(tally.not_mapped),
                        inspect::FindingsText(tally, "the import refuses or asks about"));
  const long long notes = tally.Of(inspect::Effect::kNote);
  if (notes > 0) words += "; besides " + Counted(notes, "note");
  words += ".";
  if (result.NotKept() > 0) {
    words += " The last " + application::WithCommas(result.NotKept()) + " of them are not listed.";
  }
  return words;
}

Text EffectWords(inspect::Effect effect) {
  constexpr std::array kWords = {"asks about it", "ends there", "takes it in silence", "does as it is told"};
  return kWords[static_cast<std::size_t>(effect)];
}

void SaveRejects(FileCheckResult& result, const Text& book, const Text& path) {
  application::OutputRules rules;
  rules.ProtectBook(book);
  rules.ProtectInput(result.wish.file);
  SaveWhole(path, rules, [&](FileStream& into) {
    std::vector<std::byte> block(kRejectsBlock);
    for (long long offset = 0; offset < result.rejects->Size();) {
      const auto left = std::min(static_cast<long long>(block.size()), result.rejects->Size() - offset);
      const auto bytes = std::span(block).first(static_cast<std::size_t>(left));
      result.rejects->ReadAt(offset, bytes);
      into.Write(bytes);
      offset += left;
    }
  });
}

}  // namespace tallybook::desktop
