// The report printer of the desktop: what is printed is shown in a window (ReportWindow.h) when the report ends.
#pragma once

#include <functional>

#include "tallybook/report/ReportPrinter.h"

namespace tallybook::desktop {

class WindowPrinter : public report::ReportPrinter {
 public:
  // Takes a finished report, with the head of its first page, and shows it.
  using Display = std::function<void(report::Report report, report::Blocks head)>;

  // `progress` may be null, and outlives the printer; so does what `display` holds.
  WindowPrinter(Display display, engine::ProgressDisplay* progress)
      : ReportPrinter(report::Destination{}, progress), display_(std::move(display)) {}

 protected:
  void Finish(report::Report& report, const report::PageHeads& page_heads) override {
    const int first_page = 1;
    report::Blocks head = page_heads(first_page);
    display_(std::move(report), std::move(head));
  }

 private:
  Display display_;
};

}  // namespace tallybook::desktop
