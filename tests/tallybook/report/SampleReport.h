// A small report with everything in it that a report can have, and a page head.
#pragma once

#include "tallybook/report/Report.h"

namespace tallybook::report {

inline Report SampleReport() {
  Table table{
      .widths = {1, 3, 1, 3},
      .head = {{"", "Last Import", "", "This Import"}, {"Code", "Account Description", "Code", "Account Description"}},
      .body = {{"007", "Front of shop", "007", "Front of shop, with a text that goes on and on"}}};
  return {.title = "QDX Import Report",
          .created = "2004-02-03 14:05:09",
          .blocks = {Line{"Importing QDX file: /in/SHOP<1>.QDX"}, Line{""}, std::move(table), Line{"Completed"}}};
}

inline PageHeads SampleHead() {
  return [](int) -> const Blocks& {
    static const Blocks head = {Line{"North Shop - QDX Import"}};
    return head;
  };
}

}  // namespace tallybook::report
