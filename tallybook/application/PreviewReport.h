// A preview as a report, for whoever prints or keeps it: the figures that would change, their totals, the days that go
// into one record, and what would become of the files.
#pragma once

#include <cstddef>

#include "host/Masterfile.h"
#include "host/Printer.h"
#include "tallybook/application/PreviewOutcome.h"

namespace tallybook::application {

// A report is made in memory, so it lists so many figures at most, says how many there are besides, and has the totals
// of all.
inline constexpr std::size_t kMostFiguresOfAReport = 10'000;

// Prints it whole, from BeginReport to EndReport. Fails as the printer does.
void PrintPreviewReport(Printer& printer, Masterfile& book, preview::ImportPreview& preview,
                        const PreviewOutcome& outcome);

// "12 figures in 3 records would change; 1 record would end as it is."
[[nodiscard]] Text PreviewSummary(const preview::ImportPreview& preview);

// A figure or a sum for people: 15 digits, so that an amount shows as it was entered; "too large" for a sum that no
// number holds.
[[nodiscard]] Text FigureText(Double figure);

}  // namespace tallybook::application
