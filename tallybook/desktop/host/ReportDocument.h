// A report as a document of pages, to be printed and looked at before. Tables repeat their heads on each page; one of
// very many rows is set in lines of fixed pitch, because setting it as a table would take minutes.
#pragma once

#include <memory>

#include "tallybook/report/Report.h"

class QTextDocument;

namespace tallybook::desktop {

// Rows of tables from which on a report is set in lines.
inline constexpr std::size_t kMostTableRows = 3000;

// `head` stands below the title, once.
[[nodiscard]] std::unique_ptr<QTextDocument> NewReportDocument(const report::Report& report,
                                                               const report::Blocks& head);

// A report as text, and what of it a window shows below its own title: all but title, rule and moment.
[[nodiscard]] Text ReportBody(const report::Report& report, const report::Blocks& head, int width);

}  // namespace tallybook::desktop
