// A report as one HTML page that needs no other file: style sheet within, no script. It follows the reader's light or
// dark setting, and prints in black on white with table heads repeated on every page.
#pragma once

#include "tallybook/report/Report.h"

namespace tallybook::report {

class HtmlRenderer : public Renderer {
 public:
  [[nodiscard]] std::string Render(const Report& report, const PageHeads& page_heads) const override;
};

// A text as it may stand in an element or a quoted attribute. Control characters that HTML does not allow, and bytes
// that are no UTF-8, become U+FFFD.
[[nodiscard]] std::string HtmlEscaped(const Text& text);

}  // namespace tallybook::report
