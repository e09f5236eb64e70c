#include <fmt/format.h>
#include <nlohmann/json.hpp>

#include "base/Dates.h"
#include "base/Failure.h"
#include "base/ModParse.h"
#include "qdx/HeaderReader.h"
#include "tallybook/application/Shown.h"
#include "tallybook/cli/Commands.h"
#include "tallybook/cli/FigurePrinter.h"
#include "tallybook/cli/Findings.h"
#include "tallybook/cli/Lines.h"
#include "tallybook/cli/PrintForm.h"
#include "tallybook/cli/QdxDiff.h"
#include "tallybook/cli/Session.h"
#include "tallybook/cli/TextTable.h"
#include "tallybook/inspect/QdxWalk.h"

namespace tallybook::cli {

namespace {

using inspect::DateItemText;
using inspect::QdxListener;
using inspect::QdxWalk;

struct QdxOptions {
  Text file;
  Text other;
  PrintForm form = PrintForm::kTable;
};

// Tells what is irregular on standard error, with file and byte, as a reader of a dump needs it.
class TellingListener : public QdxListener {
 public:
  explicit TellingListener(Text path) : path_(std::move(path)) {}
  void Irregular(long long offset, inspect::Effect /*effect*/, const Text& what) override {
    Warn(fmt::format("{}: byte {}: {}", path_, offset, what));
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
  void Print() const { items_.Print(); }

 private:
  TextTable items_{{{"Item"}, {"Value"}}};
};

// The header's items as members of one JSON object.
class JsonInfoListener : public TellingListener {
 public:
  using TellingListener::TellingListener;
  void Item(long long /*offset*/, std::string_view name, Integer row, const Text& value) override {
    nlohmann::ordered_json item = {{"item", name}};
    if (row > 0) item["row"] = row;
    item["value"] = value;
    items_.push_back(std::move(item));
  }
  [[nodiscard]] const nlohmann::ordered_json& Items() const { return items_; }

 private:
  nlohmann::ordered_json items_ = nlohmann::ordered_json::array();
};

ExitStatus RunInfoAsJson(const QdxOptions& options) {
  JsonInfoListener listener(options.file);
  QdxWalk walk(options.file, listener);
  if (walk.Header()) PrintAsItStands(JsonText({{"file", options.file}, {"items", listener.Items()}}));
  return listener.Status();
}

// Names with line breaks make no lines of their own.
void PrintDescription(HeaderRecord record, const Text& file) {
  record.SystemName = application::Shown(record.SystemName);
  record.CreateTime = application::Shown(record.CreateTime);
  for (const Text& line : SplitText(DescribeHeader(record, application::Shown(file)), "\n")) PrintLine(line);
  PrintLine("");
}

ExitStatus RunInfo(const QdxOptions& options) {
  const Session session;
  if (options.form == PrintForm::kJson) return RunInfoAsJson(options);
  InfoListener listener(options.file);
  QdxWalk walk(options.file, listener);
  if (walk.Header()) {
    PrintDescription(walk.Record(), options.file);
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
  static void Line(long long offset, const Text& text) { PrintLine(fmt::format("{:>10}  {}", offset, text)); }
};

// An array with one object a line, so that a file of any size passes through.
class JsonDumpListener : public TellingListener {
 public:
  using TellingListener::TellingListener;
  void Item(long long offset, std::string_view name, Integer row, const Text& value) override {
    nlohmann::ordered_json item = {{"offset", offset}, {"item", name}};
    if (row > 0) item["row"] = row;
    item["value"] = value;
    Print(item);
  }
  void Account(long long offset, Integer index) override { Print({{"offset", offset}, {"account_row", index}}); }
  void DateStart(long long offset, const BodyDate& date, Integer values) override {
    Print({{"offset", offset}, {"date", DateItemText(date)}, {"value_count", values}});
  }
  void Value(long long offset, const BodyValue& value) override {
    Print({{"offset", offset}, {"field_row", value.field_index}, {"value", value.value}});
  }
  void AccountEnd(long long offset) override { Print({{"offset", offset}, {"end", "account"}}); }
  void BodyEnd(long long offset) override { Print({{"offset", offset}, {"end", "body"}}); }
  void Finish() const { PrintAsItStands(any_ ? "\n]\n" : "[]\n"); }

 private:
  void Print(const nlohmann::ordered_json& object) {
    PrintAsItStands((any_ ? ",\n  " : "[\n  ") + JsonLine(object));
    any_ = true;
  }

  bool any_ = false;
};

ExitStatus RunDumpAsJson(const QdxOptions& options) {
  JsonDumpListener listener(options.file);
  QdxWalk walk(options.file, listener);
  if (walk.Header()) walk.Body();
  listener.Finish();
  return listener.Status();
}

ExitStatus RunDump(const QdxOptions& options) {
  const Session session;
  if (options.form == PrintForm::kJson) return RunDumpAsJson(options);
  DumpListener listener(options.file);
  QdxWalk walk(options.file, listener);
  if (walk.Header()) walk.Body();
  return listener.Status();
}

ExitStatus RunDiffAsJson(const QdxOptions& options) {
  nlohmann::ordered_json list = nlohmann::ordered_json::array();
  const long long differences = DiffQdxFiles(options.file, options.other, [&](const Text& line) {
    list.push_back({{"what", line}});
  });
  PrintAsItStands(JsonText({{"file", options.file}, {"other", options.other}, {"differences", list}}));
  return StatusOfFindings(options.file, differences, "difference");
}

ExitStatus RunDiff(const QdxOptions& options) {
  const Session session;
  if (options.form == PrintForm::kJson) return RunDiffAsJson(options);
  const long long differences = DiffQdxFiles(options.file, options.other, PrintLine);
  PrintLine(differences == 0 ? "No differences." : Counted(differences, "difference") + ".");
  return StatusOfFindings(options.file, differences, "difference");
}

CommandTable ReaderCommand(const Text& name, const Text& what, ExitStatus (*run)(const QdxOptions&)) {
  const auto options = std::make_shared<QdxOptions>();
  CommandTable command = MakeCommand(name, what, {"tallybook qdx " + name + " year.QDX"}, options, run);
  AddText(command, "FILE", options->file, "", "The exchange file").Required().As(ArgumentKind::kExchangeFile);
  AddFormWithoutCsv(command, options->form);
  return command;
}

CommandTable DiffCommand() {
  const auto options = std::make_shared<QdxOptions>();
  CommandTable command =
      MakeCommand("diff", "Compare two files by account code, date and field number; status 1 where they differ",
                  {"tallybook qdx diff before.QDX after.QDX"}, options, RunDiff);
  AddText(command, "FILE", options->file, "", "An exchange file").Required().As(ArgumentKind::kExchangeFile);
  AddText(command, "OTHER", options->other, "", "The one to compare with").Required().As(ArgumentKind::kExchangeFile);
  AddFormWithoutCsv(command, options->form);
  return command;
}

}  // namespace

CommandTable QdxCommand() {
  return MakeGroup("qdx", "Look into exchange files",
                   {ReaderCommand("info", "Tell what a file says of itself", RunInfo),
                    ReaderCommand("dump", "Print all of a file, item by item, each with its byte offset", RunDump),
                    QdxCheckCommand(), DiffCommand()});
}

}  // namespace tallybook::cli
