#include <fmt/format.h>
#include <memory>
#include <nlohmann/json.hpp>

#include "import/QDXImport.h"
#include "tallybook/cli/Commands.h"
#include "tallybook/cli/FindingPrinter.h"
#include "tallybook/cli/Findings.h"
#include "tallybook/cli/Lines.h"
#include "tallybook/cli/PrintForm.h"
#include "tallybook/cli/Session.h"
#include "tallybook/cli/Terminal.h"
#include "tallybook/cli/TextTable.h"
#include "tallybook/inspect/DefinedLook.h"
#include "tallybook/inspect/QdxWalk.h"

namespace tallybook::cli {

namespace {

struct QdxCheckOptions {
  Text file;
  Text book;
  std::optional<Long> definition;
  std::optional<Integer> math;
  PrintForm form = PrintForm::kTable;
};

// Of the rules of the format alone.
class FormatListener : public inspect::QdxListener {
 public:
  FormatListener(Text path, PrintForm form) : path_(std::move(path)), form_(form) {}
  void Account(long long /*offset*/, Integer /*index*/) override { ++accounts_; }
  void DateStart(long long /*offset*/, const BodyDate& /*date*/, Integer /*values*/) override { ++dates_; }
  void Value(long long /*offset*/, const BodyValue& /*value*/) override { ++values_; }
  void Irregular(long long offset, inspect::Effect /*effect*/, const Text& what) override {
    ++irregularities_;
    if (form_ == PrintForm::kJson) {
      irregular_.push_back({{"offset", offset}, {"what", what}});
    } else {
      PrintLine(fmt::format("{}: byte {}: {}", path_, offset, what));
    }
  }
  [[nodiscard]] ExitStatus Finish() const {
    form_ == PrintForm::kJson ? PrintJson() : PrintSummary();
    return StatusOfFindings(path_, irregularities_, "finding");
  }

 private:
  void PrintJson() const {
    PrintAsItStands(JsonText({{"file", path_},
                              {"account_count", accounts_},
                              {"value_count", values_},
                              {"date_count", dates_},
                              {"irregular", irregular_}}));
  }
  void PrintSummary() const {
    PrintLine(fmt::format("{}: {} with {} on {}; {}", path_, Counted(accounts_, "account"), Counted(values_, "value"),
                          Counted(dates_, "date"),
                          irregularities_ == 0 ? "nothing irregular" : WithCommas(irregularities_) + " irregular"));
  }

  Text path_;
  PrintForm form_;
  nlohmann::ordered_json irregular_ = nlohmann::ordered_json::array();
  long long accounts_ = 0;
  long long dates_ = 0;
  long long values_ = 0;
  long long irregularities_ = 0;
};

ExitStatus CheckFormat(const QdxCheckOptions& options) {
  const Session session;
  FormatListener listener(options.file, options.form);
  inspect::QdxWalk walk(options.file, listener);
  if (walk.Header()) walk.Body();
  return listener.Finish();
}

// Of a book and a definition besides.
class DefinedListener : public inspect::FindingListener {
 public:
  explicit DefinedListener(const QdxCheckOptions& options) : printer_(options.file, options.form) {}
  void Found(const inspect::Finding& finding) override { printer_.Print(finding); }
  void Finish(const inspect::QdxLookTally& tally) {
    const Text counts =
        fmt::format("{} with {} on {}, {} applied and {} not mapped; ", Counted(tally.accounts, "account"),
                    Counted(tally.figures, "value"), Counted(tally.records, "date"), WithCommas(tally.applied),
                    WithCommas(tally.not_mapped));
    printer_.Finish(counts + inspect::FindingsText(tally, "the import refuses or asks about"),
                    {{"account_count", tally.accounts},
                     {"value_count", tally.figures},
                     {"date_count", tally.records},
                     {"applied", tally.applied},
                     {"not_mapped", tally.not_mapped}});
  }

 private:
  FindingPrinter printer_;
};

ExitStatus CheckByDefinition(const QdxCheckOptions& options) {
  Session session({}, {.book = options.book, .input = options.file});
  const auto book = session.OpenToRead(options.book);
  session.KeepNoLog();
  const CancelKey key;
  DefinedListener listener(options);
  const inspect::QdxLookTally tally =
      inspect::LookByDefinition(session.Files(), *book,
                                {.file = options.file,
                                 .definition = ToInteger(*options.definition),
                                 .math = options.math.value_or(static_cast<Integer>(eMath::mAdd))},
                                listener);
  if (tally.cancelled) return session.StatusOf(false);
  listener.Finish(tally);
  return StatusOfFindings(options.file, tally.All(), "finding");
}

ExitStatus RunCheck(const QdxCheckOptions& options) {
  const bool has_book = !options.book.empty();
  if (has_book != options.definition.has_value()) {
    throw WrongUse(has_book ? "--book needs --definition: it says what goes where"
                            : "--definition needs --book: it is a definition of that");
  }
  if (options.math && !has_book)
    throw WrongUse("--math says how a book is changed: --book and --definition are missing");
  return has_book ? CheckByDefinition(options) : CheckFormat(options);
}

}  // namespace

CommandTable QdxCheckCommand() {
  static const Choices<Integer> modes = {{"add", static_cast<Integer>(eMath::mAdd)},
                                         {"subtract", static_cast<Integer>(eMath::mSubtract)},
                                         {"replace", static_cast<Integer>(eMath::mReplace)},
                                         {"zero", kZeroOnly}};
  const auto options = std::make_shared<QdxCheckOptions>();
  CommandTable command = MakeCommand(
      "check",
      "Hold a file to the rules of the format, and to a definition of a book; status 1 where anything is found",
      {"tallybook qdx check year.QDX", "tallybook qdx check year.QDX --book office --definition 1 --math replace"},
      options, RunCheck);
  AddText(command, "FILE", options->file, "", "The exchange file").Required().As(ArgumentKind::kExchangeFile);
  AddText(command, "--book", options->book, "BOOK", "Look what the import into this book would do with the file")
      .As(ArgumentKind::kBook);
  AddNumber(command, "--definition", options->definition, "N",
            "The definition of this number, which says what goes where")
      .As(ArgumentKind::kDefinition);
  AddChoice(command, "--math", options->math, modes,
            "How it will be imported: add (the default), subtract, replace or zero");
  AddFormWithoutCsv(command, options->form);
  return command;
}

}  // namespace tallybook::cli
