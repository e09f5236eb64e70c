#include "tallybook/cli/Preview.h"

#include <iostream>

#include "tallybook/application/PreviewReport.h"
#include "tallybook/cli/ExitStatus.h"
#include "tallybook/cli/PreviewPrinter.h"
#include "tallybook/cli/ReportFile.h"
#include "tallybook/report/ReportPrinter.h"

namespace tallybook::cli {

void AddPreview(CommandTable& command, PreviewOptions& options) {
  AddFlag(command, "--preview", options.on, "Show what the import would change, and change nothing");
  AddChoice(command, "--format", options.form,
            Choices<PrintForm>{{"table", PrintForm::kTable}, {"csv", PrintForm::kCsv}, {"json", PrintForm::kJson}},
            "Of a preview: table (the default), csv or json");
  AddFlag(
      command, "--json", [&options] { options.form = PrintForm::kJson; }, "The same as --format json");
  Exclude(command, "--format", "--json");
}

void NeedPreviewForForm(const PreviewOptions& options) {
  if (options.form && !options.on) throw WrongUse("--format is the form of a preview: --preview is missing");
}

SessionPreview::SessionPreview(Session& session, engine::Book& book) : session_(session), book_(book) {
  session.KeepNoLog();
  report::Destination destination;
  destination.stream = &own_report_;
  session.Factory().SetReportDestination(destination);
  const auto need_removable = [&session](const Text& path) { session.NeedRemovable(path); };
  overlay_ = std::make_unique<preview::ImportPreview>(preview::ImportPreview::Means{
      .book = book, .factory = session.Factory(), .app = book.App(), .need_removable = need_removable});
}

void SessionPreview::End(application::PreviewOutcome& outcome) {
  overlay_->End();
  outcome.report = application::LinesOf(own_report_.str());
}

bool SessionPreview::Print(const PreviewOptions& options, const Text& report_path,
                           const application::PreviewOutcome& outcome) {
  if (options.form || report_path.empty()) {
    PreviewPrinter(book_, *overlay_, outcome, std::cout).Print(options.form.value_or(PrintForm::kTable));
  }
  if (report_path.empty()) return true;
  ReportFile file(session_.Files(), report_path);
  SendReportTo(session_, report_path);
  application::PrintPreviewReport(*session_.Factory().NewPrinter(), book_, *overlay_, outcome);
  return file.Finish(outcome.done);
}

}  // namespace tallybook::cli
