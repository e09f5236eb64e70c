// Imports that are looked at and not done: the options of --preview, the overlay that the engine runs on, and what of
// it is printed. What a preview is stands in tallybook/preview, its words in tallybook/application.
#pragma once

#include <memory>
#include <optional>
#include <sstream>

#include "tallybook/application/PreviewOutcome.h"
#include "tallybook/cli/Arguments.h"
#include "tallybook/cli/PrintForm.h"
#include "tallybook/cli/Session.h"
#include "tallybook/preview/ImportPreview.h"

namespace tallybook::cli {

struct PreviewOptions {
  bool on = false;
  std::optional<PrintForm> form;  // as the user gave it
};

// Adds --preview, --format and --json.
void AddPreview(CommandTable& command, PreviewOptions& options);
// WrongUse where a form was given and no preview.
void NeedPreviewForForm(const PreviewOptions& options);

// A preview in a session, from here to its end. Nothing is logged from then on, and the reports of the engine are kept
// here.
class SessionPreview {
 public:
  SessionPreview(Session& session, engine::Book& book);

  [[nodiscard]] preview::ImportPreview& Overlay() { return *overlay_; }

  // The engine has ended. `report` gets the lines of its report.
  void End(application::PreviewOutcome& outcome);

  // Prints the preview to standard output in the form that was asked for, and as a report to `report_path`, where there
  // is one. With a report alone nothing goes to standard output. False where the report could not be written, which has
  // been told: a preview is nothing but what it shows.
  [[nodiscard]] bool Print(const PreviewOptions& options, const Text& report_path,
                           const application::PreviewOutcome& outcome);

 private:
  Session& session_;
  engine::Book& book_;
  std::ostringstream own_report_;
  std::unique_ptr<preview::ImportPreview> overlay_;
};

}  // namespace tallybook::cli
