#include "tallybook/inspect/QdxLook.h"

#include <algorithm>
#include <cmath>
#include <fmt/format.h>
#include <map>
#include <memory>
#include <optional>
#include <set>
#include <vector>

#include "base/Dates.h"
#include "base/Failure.h"
#include "host/Masterfile.h"
#include "import/XDQName.h"
#include "support/Utility.h"
#include "tallybook/application/Counts.h"
#include "tallybook/application/Shown.h"
#include "tallybook/inspect/QdxDates.h"
#include "tallybook/inspect/QdxMatch.h"
#include "tallybook/inspect/QdxTables.h"
#include "tallybook/inspect/QdxWalk.h"
#include "tallybook/inspect/Troubles.h"

namespace tallybook::inspect {

namespace {

// How many figures of each place of a table are left out.
using LeftOut = std::map<Integer, long long>;

class QdxLookRun : private QdxListener {
 public:
  QdxLookRun(Masterfile& masterfile, const QdxLookRequest& request, FindingListener& listener)
      : masterfile_(masterfile),
        request_(request),
        listener_(listener),
        dates_(masterfile),
        walk_(request.file, *this) {}

  QdxLookTally Run() {
    masterfile_.BeginProgress("Looking at the Import File");
    masterfile_.SetProgressCancelEnabled(true);
    const bool is_whole = walk_.Header();
    tally_.begins_as_one = walk_.Record().Magic == kMagic;
    TellWaiting({});
    if (ReadHeader()) LookInside(is_whole);
    masterfile_.EndProgress();
    return tally_;
  }

 private:
  // --- Findings ------------------------------------------------------------------------------------------------------

  void Tell(const Finding& finding) {
    ++tally_.findings[static_cast<std::size_t>(finding.effect)];
    listener_.Found(finding);
  }
  void TellWhole(Effect effect, const Text& reason, const Text& help) {
    Finding finding;
    finding.effect = effect;
    finding.reason = reason;
    finding.help = help;
    Tell(finding);
  }
  [[nodiscard]] TellFinding Teller() {
    return [this](const Finding& finding) { Tell(finding); };
  }

  // What the walk has told of an item waits for the item.
  void Irregular(long long offset, Effect effect, const Text& what) override {
    Finding& finding = waiting_.emplace_back();
    finding.offset = offset;
    finding.effect = effect;
    finding.reason = what;
  }
  // `where` is what they are about.
  void TellWaiting(const Finding& where) {
    for (Finding& finding : waiting_) {
      finding.record = where.record;
      finding.account = where.account;
      finding.date = where.date;
      finding.field = where.field;
      finding.text = where.text;
      Tell(finding);
    }
    waiting_.clear();
  }

  // --- The tables ----------------------------------------------------------------------------------------------------

  void Item(long long offset, std::string_view name, Integer row, const Text& /*value*/) override {
    TellWaiting({});
    if (name == "start month") range_offset_ = offset;
    if (name == "account table") account_offsets_[row] = offset;
    if (name == "field table") field_offsets_[row] = offset;
  }

  bool ReadHeader() {
    try {
      header_ = ReadTablesOf(request_.file);
      return true;
    } catch (const Failure& failure) {
      if (tally_.Of(Effect::kAudit) == 0) TellWhole(Effect::kAudit, failure.Description(), "");
      return false;
    }
  }

  void LookInside(bool is_whole) {
    match_.emplace(masterfile_, request_.definition, *header_);
    TellChangedTables(request_.definition, request_.archive_copy, *header_, Teller());
    const char* joined = request_.math == static_cast<Integer>(eMath::mSubtract) ? "both subtracted" : "added up";
    match_->Match(joined, Teller());
    LookAtRange();
    if (is_whole) walk_.Body();
    TellWaiting(Where());
    if (tally_.cancelled) return;
    if (ReadsFigures()) {
      LookAtLeftOut();
      dates_.Tell(*header_, Replaces(), Teller());
    } else {
      TellWhole(Effect::kNote, "no figure of the file is read; its range is set to 0", "");
    }
    LookAtFate();
  }

  [[nodiscard]] bool Replaces() const { return request_.math >= static_cast<Integer>(eMath::mReplace); }
  [[nodiscard]] bool ReadsFigures() const { return request_.math != kZeroOnly; }

  // A file must lie wholly inside the book's range.
  void LookAtRange() {
    if (dates_.HoldsRange(*header_)) return;
    const BodyDate first{.month = header_->StartMonth, .day = header_->StartDay, .year = header_->StartYear};
    const BodyDate last{.month = header_->LastMonth, .day = header_->LastDay, .year = header_->LastYear};
    Finding finding;
    finding.offset = range_offset_;
    finding.effect = Effect::kAudit;
    finding.reason =
        fmt::format("the file's dates are {} to {}, and the book has {} to {}", DateItemText(first), DateItemText(last),
                    DateText(masterfile_.FirstDate()), DateText(masterfile_.LastDate()));
    finding.help = "have the file made for dates of the book";
    Tell(finding);
  }

  // --- Figures -------------------------------------------------------------------------------------------------------

  [[nodiscard]] bool Cancelled() override {
    masterfile_.SetProgressFraction(walk_.Share());
    tally_.cancelled = masterfile_.ProgressCancelled();
    return tally_.cancelled;
  }

  // What stands under way, for a finding: made only where there is one.
  [[nodiscard]] Finding Where() const {
    Finding where;
    where.record = tally_.records;
    if (account_ > 0) where.account = header_->AccountCodes(account_);
    if (place_ != nullptr && place_->can_be_written) where.date = place_->date;
    return where;
  }
  [[nodiscard]] Finding WhereOf(const BodyValue& value) const {
    Finding where = Where();
    where.text = fmt::format("{}", value.value);
    if (IsInTable(value)) where.field = header_->FieldNumbers(value.field_index);
    return where;
  }
  void TellAt(long long offset, Finding where, Effect effect, const Text& reason, const Text& help) {
    where.offset = offset;
    where.effect = effect;
    where.reason = reason;
    where.help = help;
    Tell(where);
  }

  void Account(long long offset, Integer index) override {
    account_ = index;
    place_ = nullptr;
    ++tally_.accounts;
    named_.clear();
    TellWaiting(Where());
    if (!has_block_.insert(index).second && Target() > 0 && ReadsFigures()) {
      TellAt(offset, Where(), Effect::kSilent,
             "has a block of figures before: those of a date that both have are added up",
             "take one of them out, unless both are meant");
    }
  }

  void DateStart(long long offset, const BodyDate& date, Integer /*values*/) override {
    ++tally_.records;
    place_ = &dates_.Of(date);
    named_fields_ = nullptr;
    if (!waiting_.empty()) TellWaiting(Where());
    if (!ReadsFigures()) return;
    if (!place_->level) {
      TellAt(offset, Where(), Effect::kStop, place_->failure, "");
    } else if (Target() > 0 && !dates_.IsInBook(*place_, Target())) {
      TellAt(offset, Where(), Effect::kStop, "is no date that the book has a record of, at which the program stops",
             "have the file made for dates of the book");
    }
  }

  void Value(long long offset, const BodyValue& value) override {
    ++tally_.figures;
    const bool applies = ReadsFigures() && Target() > 0 && match_->Fields().At(value.field_index) > 0;
    if (!waiting_.empty()) {
      MakeStops(value, applies);
      TellWaiting(WhereOf(value));
    }
    if (applies) {
      Apply(offset, value);
    } else if (ReadsFigures()) {
      LeaveOut(value);
    }
  }

  // What is irregular in a figure, and is more than that where the figure is applied.
  void MakeStops(const BodyValue& value, bool applies) {
    const bool no_place = value.field_index < 0 || value.field_index > kMaxHeaderFields;
    const bool no_figure = applies && !std::isfinite(value.value);
    if (!ReadsFigures() || (!no_place && !no_figure)) return;
    for (Finding& finding : waiting_) finding.effect = Effect::kStop;
  }

  void Apply(long long offset, const BodyValue& value) {
    ++tally_.applied;
    if (named_fields_ == nullptr) {
      named_fields_ = &named_[place_->date];
      dates_.Take(*place_);
    }
    if (const auto trouble = SumTrouble(value.value))
      TellAt(offset, WhereOf(value), trouble->effect, trouble->reason, trouble->help);
    if (!Name(value.field_index)) {
      TellAt(offset, WhereOf(value), Effect::kSilent, "the file names this figure before: both count",
             "take one of them out, unless both are meant");
    }
  }

  // False where the date's field was named before. Fields rise in a sound file.
  bool Name(Integer field) {
    std::vector<Integer>& named = *named_fields_;
    if (named.empty() || field > named.back()) {
      named.push_back(field);
      return true;
    }
    const auto place = std::ranges::lower_bound(named, field);
    if (*place == field) return false;
    named.insert(place, field);
    return true;
  }

  [[nodiscard]] bool IsInTable(const BodyValue& value) const {
    return value.field_index >= 1 && value.field_index <= header_->NumFields;
  }
  void LeaveOut(const BodyValue& value) {
    ++tally_.not_mapped;
    if (Target() == 0) {
      ++accounts_left_out_[account_];
    } else if (IsInTable(value)) {
      ++fields_left_out_[value.field_index];
    }
  }

  [[nodiscard]] Integer Target() const { return match_->Accounts().At(account_); }

  void AccountEnd(long long /*offset*/) override {
    TellWaiting(Where());
    account_ = 0;
    place_ = nullptr;
  }
  void BodyEnd(long long /*offset*/) override { TellWaiting({}); }

  // --- The whole -----------------------------------------------------------------------------------------------------

  void LookAtLeftOut() {
    for (int i = 1; i <= header_->NumAccounts; ++i) {
      const auto position = static_cast<Integer>(i);
      Finding finding;
      finding.account = header_->AccountCodes(position);
      finding.offset = account_offsets_[position];
      TellLeftOut(finding, match_->WhyAccountIsLeftOut(position), accounts_left_out_[position]);
    }
    for (int i = 1; i <= header_->NumFields; ++i) {
      const auto position = static_cast<Integer>(i);
      Finding finding;
      finding.field = header_->FieldNumbers(position);
      finding.offset = field_offsets_[position];
      TellLeftOut(finding, match_->WhyFieldIsLeftOut(position), fields_left_out_[position]);
    }
  }
  // One without figures loses nothing.
  void TellLeftOut(Finding finding, const Text& why, long long figures) {
    if (why.empty()) return;
    finding.effect = figures > 0 ? Effect::kSilent : Effect::kNote;
    finding.reason = figures > 0
                         ? fmt::format("{}: {} left out", why,
                                       application::Counted(figures, "figure") + (figures == 1 ? " is" : " are"))
                         : fmt::format("{}; it has no figures", why);
    finding.help = figures > 0 ? "give it a row in the definition, unless this is meant" : "";
    Tell(finding);
  }

  // What becomes of the file.
  void LookAtFate() {
    if (request_.definition.Disp == kDispDelete) TellWhole(Effect::kNote, "the file is deleted after the import", "");
    if (request_.definition.Disp != kDispRename) return;
    const Text name = XDQName(request_.file);
    TellWhole(Effect::kNote, fmt::format("the file is renamed to {} after the import", application::OnOneLine(name)),
              "");
    if (name == request_.file || !FileExists(name)) return;
    TellWhole(Effect::kSilent, fmt::format("{} is there already, and is deleted for it", application::OnOneLine(name)),
              "move it elsewhere, unless it is not wanted");
  }

  Masterfile& masterfile_;
  const QdxLookRequest& request_;
  FindingListener& listener_;
  QdxLookTally tally_;
  std::vector<Finding> waiting_;
  std::unique_ptr<HeaderRecord> header_;
  std::optional<QdxMatch> match_;
  QdxDates dates_;

  std::optional<long long> range_offset_;
  std::map<Integer, std::optional<long long>> account_offsets_;  // of the tables' rows
  std::map<Integer, std::optional<long long>> field_offsets_;

  Integer account_ = 0;               // under way: its position; 0 for none
  QdxDates::Place* place_ = nullptr;  // of the date under way
  std::set<Integer> has_block_;
  // Of the account's block: the positions of fields with a figure that is applied, by date, rising.
  std::map<Date, std::vector<Integer>> named_;
  std::vector<Integer>* named_fields_ = nullptr;  // of the date under way; null before its first such figure
  LeftOut accounts_left_out_;
  LeftOut fields_left_out_;

  QdxWalk walk_;
};

}  // namespace

QdxLookTally LookAtQdx(Masterfile& masterfile, const QdxLookRequest& request, FindingListener& listener) {
  return QdxLookRun(masterfile, request, listener).Run();
}

}  // namespace tallybook::inspect
