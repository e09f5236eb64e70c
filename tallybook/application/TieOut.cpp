#include "tallybook/application/TieOut.h"

#include <algorithm>
#include <iterator>
#include <span>
#include <string>

#include "qdx/HeaderReader.h"
#include "support/Utility.h"
#include "tallybook/application/Counts.h"
#include "tallybook/application/ImportHistory.h"
#include "tallybook/application/ImportRecorder.h"
#include "tallybook/application/PreviewReport.h"
#include "tallybook/application/Shown.h"
#include "tallybook/engine/FiguresBefore.h"

namespace tallybook::application {

namespace {

constexpr long long kRecordsBetweenLooks = 256;

constexpr auto kTieOutAdds = static_cast<Integer>(eMath::mAdd);
constexpr auto kTieOutSubtracts = static_cast<Integer>(eMath::mSubtract);
constexpr auto kTieOutReplaces = static_cast<Integer>(eMath::mReplace);

Integer MathOf(const Text& word) {
  if (word == MathWord(kTieOutAdds)) return kTieOutAdds;
  return word == MathWord(kTieOutSubtracts) ? kTieOutSubtracts : kTieOutReplaces;
}

// That has no figures yet.
TieOutTotal TotalOf(const preview::ExpectedRecord& record, std::size_t place) {
  TieOutTotal total;
  total.account_position = record.account_position;
  total.account_number = record.account_number;
  total.field_position = record.fields[place].position;
  total.field_number = record.fields[place].number;
  return total;
}

void AddTo(TieOutTotal& total, const TieOutTotal& of_account) {
  total.figures += of_account.figures;
  total.differ += of_account.differ;
  total.untold += of_account.untold;
  total.expected += of_account.expected;
  total.stands += of_account.stands;
}

TieOutTotal& TotalAt(std::vector<TieOutTotal>& totals, Integer field_position, Integer field_number) {
  const auto position = static_cast<std::size_t>(field_position);
  if (position >= totals.size()) totals.resize(position + 1);
  totals[position].field_position = field_position;
  totals[position].field_number = field_number;
  return totals[position];
}

// The import's report, begun and ended.
class OpenReport {
 public:
  explicit OpenReport(Printer& report) : report_(report) {
    const Long no_window = 0;
    begun_ = report.BeginReport(no_window, "Tie-Out");
  }
  ~OpenReport() {
    try {
      report_.EndReport();
    } catch (...) {
      // Meant: what it tells is told by the record, too.
    }
  }
  OpenReport(const OpenReport&) = delete;
  OpenReport& operator=(const OpenReport&) = delete;
  [[nodiscard]] bool Begun() const { return begun_; }

 private:
  Printer& report_;
  bool begun_ = false;
};

}  // namespace

class TieOut::JournalBaseline : public preview::FigureBaseline {
 public:
  JournalBaseline(engine::Book& book, const engine::JournalEntry& entry) : before_(book, entry) {}
  [[nodiscard]] std::optional<std::size_t> PlaceOf(Integer field_number) const override {
    return before_.PlaceOf(field_number);
  }
  [[nodiscard]] const Double* Select(Long account_number, Date date) override {
    return before_.Select(account_number, date);
  }

 private:
  engine::FiguresBefore before_;
};

TieOut::TieOut(const Means& means)
    : means_(means),
      expected_(means.book, means.factory, means.app, means.cache_bytes),
      header_(std::make_unique<HeaderRecord>()) {}

TieOut::~TieOut() = default;

bool TieOut::Hold(const Request& request) {
  const SeenDefinition& definition = request.definition;
  const Text& pattern = request.pattern.empty() ? definition.exchange_files : request.pattern;
  record_.definitions.push_back({.title = definition.title, .pattern = pattern});
  definition_ = ReadDefinitionAt(definition.path);
  history_ = std::make_unique<ImportHistory>(means_.book);
  std::vector<Text> files;
  (void)MatchFiles(pattern, files);
  if (files.empty() || !Run(files, request)) return false;
  return Compare();
}

bool TieOut::Run(const std::vector<Text>& files, const Request& request) {
  const OpenReport report(means_.report);
  return report.Begun() && std::ranges::all_of(files, [&](const Text& file) { return HoldFile(file, request); });
}

bool TieOut::HoldFile(const Text& file, const Request& request) {
  EntryFacts way;
  way.kind = "qdx";
  way.definition = request.definition.number;
  const auto earlier = history_->Find(file, means_.place_of ? means_.place_of(file) : file, way);
  TieOutFile& held = files_.emplace_back(TieOutFile{.file = file, .math = request.unknown_math});
  std::unique_ptr<JournalBaseline> before;
  if (earlier) {
    held.entry = earlier->entry.id;
    held.math = MathOf(earlier->math);
    before = std::make_unique<JournalBaseline>(means_.book, earlier->entry);
  }
  const bool needs_before = held.math != kTieOutReplaces;
  expected_.BeginFile(needs_before ? before.get() : nullptr);
  held.held = Import(file, held.math);
  if (!record_.definitions.front().files.empty()) {
    held.applied = record_.definitions.front().files.back().applied;
    held.not_mapped = record_.definitions.front().files.back().not_mapped;
  }
  return held.held;
}

// Alone, so that each file goes by its own math. What its import tells of it comes into the record.
bool TieOut::Import(const Text& file, Integer math) {
  DefinitionRecord definition = definition_;
  definition.QdxFileName = file;
  definition.Disp = kDispKeep;
  Integer file_number = 0;
  std::vector<Text> file_list;
  QDXDefinitionImport alone;
  QDXImportMeans means{.masterfile = expected_,
                       .definition = definition,
                       .header = *header_,
                       .file_number = file_number,
                       .file_list = file_list,
                       .math = math,
                       .write_rollback = false,
                       .read_header =
                           [&](const Text& name, StopReason& why) {
                             const bool header_only = false;
                             return MyReadQDXHeader(expected_, name, file_number, header_only, *header_, &why);
                           },
                       // That its tables differ from those of the last file is no news here.
                       .archive_name = [] { return Text(); }};
  const bool done = ImportQDX(means, means_.report, alone);
  if (file_number != 0) CloseFileEx(file_number);
  QDXDefinitionImport& told = record_.definitions.front();
  for (QDXFileImport& import : alone.files) told.files.push_back(std::move(import));
  told.stop = alone.stop;
  return done && !alone.files.empty();
}

// --- Against the book ------------------------------------------------------------------------------------------------

bool TieOut::Compare() {
  long long looked_at = 0;
  bool cancelled = false;
  expected_.Visit([&](const preview::ExpectedRecord& record) {
    if (++looked_at % kRecordsBetweenLooks == 0 && means_.cancelled) cancelled = means_.cancelled();
    TakeRecord(record);
    return !cancelled;
  });
  EndAccount();
  if (cancelled) record_.definitions.front().stop = StopReason{.words = "cancelled"};
  return !cancelled;
}

void TieOut::TakeRecord(const preview::ExpectedRecord& record) {
  if (record.account_position != account_position_) EndAccount();
  account_position_ = record.account_position;
  if (of_account_.empty()) of_account_.resize(record.fields.size());
  for (std::size_t place = 0; place < record.fields.size(); ++place) {
    const Double expected = record.expected[place];
    if (preview::IsUnwritten(expected)) continue;
    const Double stands = record.stands[place];
    TieOutTotal& total = of_account_[place];
    if (total.figures == 0) total = TotalOf(record, place);
    ++total.figures;
    if (expected == preview::kUntold) {
      ++total.untold;
      kept_.Add(record.Figure(place));
      continue;
    }
    total.expected += expected;
    total.stands += stands;
    if (!Differ(expected, stands)) continue;
    ++total.differ;
    kept_.Add(record.Figure(place));
  }
}

// Its totals go into those of all accounts.
void TieOut::EndAccount() {
  for (TieOutTotal& total : of_account_) {
    if (total.figures == 0) continue;
    AddTo(figures_, total);
    AddTo(TotalAt(field_totals_, total.field_position, total.field_number), total);
    if (total.differ != 0 || total.untold != 0) account_totals_.push_back(total);
    total = {};
  }
}

void TieOut::VisitDifferences(const FigureVisitor& visit) const {
  static_cast<void>(kept_.VisitEach(visit));
}

std::vector<TieOutTotal> TieOut::FieldTotals() const {
  std::vector<TieOutTotal> totals;
  std::ranges::copy_if(field_totals_, std::back_inserter(totals),
                       [](const TieOutTotal& total) { return total.figures != 0; });
  return totals;
}

// --- Words -----------------------------------------------------------------------------------------------------------

bool DifferInText(Double one, Double other) {
  return FigureText(one) != FigureText(other);
}

Text TieOutWords(const TieOut& tie_out) {
  const TieOutTotal& figures = tie_out.Figures();
  Text words = Counted(figures.figures, "figure") + " of " +
               Counted(static_cast<long long>(tie_out.Files().size()), "file") + " held against the book: " +
               (figures.differ == 0 ? "none differs"
                                    : WithCommas(figures.differ) + (figures.differ == 1 ? " differs" : " differ"));
  if (figures.untold != 0) words += ", " + WithCommas(figures.untold) + " cannot be told";
  return words + ".";
}

Text HeldWords(const TieOutFile& file) {
  const Text entry = "journal entry " + std::to_string(file.entry);
  Text words = OnOneLine(file.file) + ": held as ";
  if (file.math == kTieOutReplaces) {
    words += "a replacement";
    return words + (file.entry == 0 ? "; the journal knows no import of it that stands" : ", as " + entry + " tells");
  }
  words += file.math == kTieOutAdds ? "an addition to " : "a subtraction from ";
  return words +
         (file.entry == 0 ? "zeros; the journal knows no import of it that stands" : "what stood before " + entry);
}

}  // namespace tallybook::application
