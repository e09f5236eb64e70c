#include <fmt/format.h>
#include <iostream>

#include "exchange/CDataExchange.h"
#include "support/Failure.h"
#include "tallybook/cli/Commands.h"
#include "tallybook/cli/DefinitionList.h"
#include "tallybook/cli/Session.h"
#include "tallybook/cli/Terminal.h"
#include "tallybook/report/ReportPrinter.h"

namespace tallybook::cli {

namespace {

struct ImportQdxOptions {
  Text book;
  Integer definition = 0;
  bool all = false;
  Integer math = static_cast<Integer>(eMath::mAdd);
  Text report;
  AskOptions asking;
};

void SendReportTo(Session& session, const Text& path) {
  if (path.empty()) return;
  report::Destination destination;
  destination.path = path;
  try {
    session.Factory().SetReportDestination(destination);
  } catch (const Failure& failure) {
    if (failure.Number() != FailureNumber::kInvalidArgument) throw;
    throw WrongUse("--report: " + failure.Description());
  }
}

// What the batch takes: "ALL", or the definition's place in the list.
Text ImportType(CDataExchange& exchange, engine::Book& book, const ImportQdxOptions& options) {
  if (options.all) return "ALL";
  return std::to_string(PositionOfDefinition(exchange, book, options.definition));
}

ExitStatus RunImportQdx(const ImportQdxOptions& options) {
  Session session(options.asking);
  SendReportTo(session, options.report);
  const auto book = session.OpenToChange(options.book);
  const CancelKey key;
  CDataExchange exchange(session.Factory());
  exchange.OpenDefinitions(*book, kDefinitionDataType);
  const Text type = ImportType(exchange, *book, options);
  book->SetOperationName(options.all ? "import qdx all" : fmt::format("import qdx #{}", options.definition));
  exchange.SetMath(options.math);
  const Long no_window = 0;
  const bool done = exchange.ImportQDXFileEX(no_window, *book, type);
  book->Close();
  return session.StatusOf(done);
}

CommandTable ImportQdxCommand() {
  static const Choices<Integer> modes = {{"add", static_cast<Integer>(eMath::mAdd)},
                                         {"subtract", static_cast<Integer>(eMath::mSubtract)},
                                         {"replace", static_cast<Integer>(eMath::mReplace)},
                                         {"zero", kZeroOnly}};
  const auto options = std::make_shared<ImportQdxOptions>();
  CommandTable command = MakeCommand("qdx", "Import exchange files by a definition, or by all of them",
                                     {"tallybook import qdx office --definition 1 --math replace --report import.html",
                                      "tallybook import qdx office --all"},
                                     options, RunImportQdx);
  AddBook(command, options->book);
  AddNumber(command, "--definition", options->definition, "N", "The definition of this number")
      .As(ArgumentKind::kDefinition);
  AddFlag(command, "--all", options->all, "Every definition, in the order of their titles; each replaces");
  NeedOneOf(command, {"--definition", "--all"});
  AddChoice(command, "--math", options->math, modes,
            "add (the default), subtract, replace (zero the range first), zero (zero it and read nothing)");
  Exclude(command, "--math", "--all");
  AddText(command, "--report", options->report, "FILE", "Write the report to FILE: .txt, .html or .pdf")
      .As(ArgumentKind::kFile);
  AddAsking(command, options->asking);
  return command;
}

}  // namespace

CommandTable ImportCommand() {
  return MakeGroup("import", "Bring figures into a book",
                   {ImportQdxCommand(), ImportCsvCommand(), ImportDelimitedCommand()});
}

}  // namespace tallybook::cli
