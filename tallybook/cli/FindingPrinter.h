// Prints what a look at a file finds, for people or as JSON (docs/command-line.md, "Results for programs"), as it
// comes, so that a file of any size passes through.
#pragma once

#include <nlohmann/json_fwd.hpp>

#include "base/Types.h"
#include "tallybook/cli/PrintForm.h"
#include "tallybook/inspect/Finding.h"

namespace tallybook::cli {

class FindingPrinter {
 public:
  FindingPrinter(Text file, PrintForm form) : file_(std::move(file)), form_(form) {}

  void Print(const inspect::Finding& finding);
  // The end of it: a line for people, or members of the JSON object behind the findings, in their order.
  //   line  without the file's name: "3 records, 1 finding"
  void Finish(const Text& line, const nlohmann::ordered_json& members);

 private:
  [[nodiscard]] Text JsonHead() const;

  Text file_;
  PrintForm form_;
  bool any_ = false;
};

}  // namespace tallybook::cli
