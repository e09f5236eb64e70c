// The file of --report, and where reports go.
#pragma once

#include <optional>

#include "tallybook/application/WholeFiles.h"
#include "tallybook/cli/Session.h"

namespace tallybook::cli {

// Reports go to `path` from now on, where one is given. WrongUse where its extension names no form of report.
void SendReportTo(Session& session, const Text& path);

// The file of --report: whole when the report has ended, however the import did.
class ReportFile {
 public:
  ReportFile(application::WholeFiles& files, const Text& path);
  ~ReportFile();
  ReportFile(const ReportFile&) = delete;
  ReportFile& operator=(const ReportFile&) = delete;

  // Once the import is over. A report that cannot be written takes back no figure. One that a failed import has not
  // begun is no news. False where a report is not there that was asked for; that has been told.
  bool Finish(bool done);

 private:
  void TellUnwritten(const Text& why) const;

  Text path_;
  std::optional<application::WholeOutput> output_;
};

}  // namespace tallybook::cli
