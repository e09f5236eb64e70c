#include "tallybook/application/ImportWays.h"

#include <fmt/format.h>

#include "import/DelimitedImport.h"
#include "tallybook/application/ImportRecorder.h"

namespace tallybook::application {

namespace {

constexpr const char* kAsTold = "as told";
constexpr const char* kClear = "clear ";

const char* WordOfOrder(Integer order) {
  if (order == kMonthDayYear) return "MDY";
  return order == kDayMonthYear ? "DMY" : "YMD";
}

}  // namespace

EntryFacts WayOfDefinition(Integer number, const Text& title, Integer math) {
  EntryFacts way;
  way.kind = "qdx";
  way.definition = number;
  way.title = title;
  way.math = MathWord(math == static_cast<Integer>(eMath::mDefault) ? static_cast<Integer>(eMath::mAdd) : math);
  return way;
}

EntryFacts WayOfCsv(eMath math, const std::vector<Long>& cleared) {
  EntryFacts way;
  way.kind = "csv";
  way.math = math == eMath::mDefault ? kAsTold : MathWord(static_cast<Integer>(math));
  for (const Long field : cleared) way.options += (way.options.empty() ? kClear : ", ") + std::to_string(field);
  return way;
}

EntryFacts WayOfDelimited(const DelimitedWay& chosen) {
  EntryFacts way;
  way.kind = "delimited";
  way.math = chosen.math == eMath::mDefault ? kAsTold : MathWord(static_cast<Integer>(chosen.math));
  way.options = fmt::format("dates {}{}{}{}", WordOfOrder(chosen.date_order), chosen.date_parts ? " in parts" : "",
                            chosen.system_fields ? ", system fields" : "", chosen.any_line_end ? ", any line end" : "");
  return way;
}

const Text& MathThatRan(const EntryFacts& facts) {
  return facts.math == kAsTold ? facts.told_math : facts.math;
}

bool ClearsFields(const EntryFacts& facts) {
  return facts.kind == "csv" && facts.options.starts_with(kClear);
}

}  // namespace tallybook::application
