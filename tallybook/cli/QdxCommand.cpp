#include <fmt/format.h>
#include <iostream>

#include "qdx/HeaderReader.h"
#include "support/Dates.h"
#include "support/Failure.h"
#include "tallybook/cli/Commands.h"
#include "tallybook/cli/FigurePrinter.h"
#include "tallybook/cli/QdxDiff.h"
#include "tallybook/cli/QdxWalk.h"
#include "tallybook/cli/Session.h"
#include "tallybook/cli/TextTable.h"

namespace tallybook::cli {

namespace {

struct QdxOptions {
  Text file;
  Text other;
};

// Tells what is irregular on standard error, with file and byte, as a reader of a dump needs it.
class TellingListener : public QdxListener {
 public:
  explicit TellingListener(Text path) : path_(std::move(path)) {}
  void Irregular(long long offset, const Text& what) override {
    std::cout << std::flush;
    std::cerr << fmt::format("tallybook: {}: byte {}: {}\n", path_, offset, what);
    sound_ = false;
  }
  [[nodiscard]] ExitStatus Status() const { return sound_ ? ExitStatus::kDone : ExitStatus::kFailed; }

 private:
  Text path_;
  bool sound_ = true;
};

class InfoListener : public TellingListener {
 public:
  using TellingListener::TellingListener;
  void Item(long long /*offset*/, std::string_view name, Integer row, const Text& value) override {
    items_.AddRow({Text(name) + (row > 0 ? " " + std::to_string(row) : ""), value});
  }
  void Print() const { items_.Print(std::cout); }

 private:
  TextTable items_{{{"Item"}, {"Value"}}};
};

ExitStatus RunInfo(const QdxOptions& options) {
  const Session session;
  InfoListener listener(options.file);
  QdxWalk walk(options.file, listener);
  if (walk.Header()) {
    std::cout << DescribeHeader(walk.Record(), options.file) << "\n\n";
    listener.Print();
  }
  return listener.Status();
}

class DumpListener : public TellingListener {
 public:
  using TellingListener::TellingListener;
  void Item(long long offset, std::string_view name, Integer row, const Text& value) override {
    Line(offset, fmt::format("{}{}: {}", name, row > 0 ? " " + std::to_string(row) : "", value));
  }
  void Account(long long offset, Integer index) override { Line(offset, fmt::format("account {}", index)); }
  void DateStart(long long offset, const BodyDate& date, Integer values) override {
    Line(offset, fmt::format("  {}, {}", DateItemText(date), Counted(values, "value")));
  }
  void Value(long long offset, const BodyValue& value) override {
    Line(offset, fmt::format("    field {}: {}", value.field_index, ShortestText(value.value)));
  }
  void AccountEnd(long long offset) override { Line(offset, "  end of the account"); }
  void BodyEnd(long long offset) override { Line(offset, "end of the body"); }

 private:
  static void Line(long long offset, const Text& text) { std::cout << fmt::format("{:>10}  {}\n", offset, text); }
};

ExitStatus RunDump(const QdxOptions& options) {
  const Session session;
  DumpListener listener(options.file);
  QdxWalk walk(options.file, listener);
  if (walk.Header()) walk.Body();
  return listener.Status();
}

class CheckListener : public QdxListener {
 public:
  explicit CheckListener(Text path) : path_(std::move(path)) {}
  void Account(long long /*offset*/, Integer /*index*/) override { ++accounts_; }
  void DateStart(long long /*offset*/, const BodyDate& /*date*/, Integer /*values*/) override { ++dates_; }
  void Value(long long /*offset*/, const BodyValue& /*value*/) override { ++values_; }
  void Irregular(long long offset, const Text& what) override {
    std::cout << fmt::format("{}: byte {}: {}\n", path_, offset, what);
    ++irregularities_;
  }
  [[nodiscard]] ExitStatus Finish() const {
    std::cout << fmt::format("{}: {} with {} on {}; {}\n", path_, Counted(accounts_, "account"),
                             Counted(values_, "value"), Counted(dates_, "date"),
                             irregularities_ == 0 ? "nothing irregular" : WithCommas(irregularities_) + " irregular");
    return irregularities_ == 0 ? ExitStatus::kDone : ExitStatus::kFailed;
  }

 private:
  Text path_;
  long long accounts_ = 0;
  long long dates_ = 0;
  long long values_ = 0;
  long long irregularities_ = 0;
};

ExitStatus RunCheck(const QdxOptions& options) {
  const Session session;
  CheckListener listener(options.file);
  QdxWalk walk(options.file, listener);
  if (walk.Header()) walk.Body();
  return listener.Finish();
}

ExitStatus RunDiff(const QdxOptions& options) {
  const Session session;
  const long long differences = DiffQdxFiles(options.file, options.other, std::cout);
  std::cout << (differences == 0 ? Text("No differences.") : Counted(differences, "difference") + ".") << '\n';
  return differences == 0 ? ExitStatus::kDone : ExitStatus::kFailed;
}

CommandTable ReaderCommand(const Text& name, const Text& what, ExitStatus (*run)(const QdxOptions&)) {
  const auto options = std::make_shared<QdxOptions>();
  CommandTable command = MakeCommand(name, what, {"tallybook qdx " + name + " year.QDX"}, options, run);
  AddText(command, "FILE", options->file, "", "The exchange file").Required().As(ArgumentKind::kExchangeFile);
  return command;
}

CommandTable DiffCommand() {
  const auto options = std::make_shared<QdxOptions>();
  CommandTable command =
      MakeCommand("diff", "Compare two files by account code, date and field number; status 1 where they differ",
                  {"tallybook qdx diff before.QDX after.QDX"}, options, RunDiff);
  AddText(command, "FILE", options->file, "", "An exchange file").Required().As(ArgumentKind::kExchangeFile);
  AddText(command, "OTHER", options->other, "", "The one to compare with").Required().As(ArgumentKind::kExchangeFile);
  return command;
}

}  // namespace

CommandTable QdxCommand() {
  return MakeGroup(
      "qdx", "Look into exchange files; no book is needed",
      {ReaderCommand("info", "Tell what a file says of itself", RunInfo),
       ReaderCommand("dump", "Print all of a file, item by item, each with its byte offset", RunDump),
       ReaderCommand("check", "Hold a file to the rules of the format; status 1 where it breaks one", RunCheck),
       DiffCommand()});
}

}  // namespace tallybook::cli
