// A report as plain text in UTF-8, lines ended by "\n", for a terminal or a printer of fixed pitch.
//
//   title, a rule under it, the moment of printing; the page head; an empty line; the lines and tables in their order
//
// The columns of a table share the width by their report units, with two blanks between them; each has room for one
// character at least. A text that is too long goes on in further lines of its cell, broken at blanks where it has any.
// Two blanks are the usual room; a spacing of n leaves n + 1. Rows stand close together in every style. A new page is a
// form feed, the page head and an empty line; without one, text has no pages.
// Free lines are left whole: they hold file names. Wide characters (East Asian) count as two columns, combining ones as
// none.
#pragma once

#include <string_view>

#include "tallybook/report/Report.h"

namespace tallybook::report {

class TextRenderer : public Renderer {
 public:
  explicit TextRenderer(int width = 80) : width_(width) {}
  [[nodiscard]] std::string Render(const Report& report, const PageHeads& page_heads) const override;

 private:
  int width_;  // in characters
};

// How many columns of a terminal a text takes.
[[nodiscard]] int DisplayWidth(std::string_view text);
// The lines into which a text breaks so that none is wider than `width` (at least 1, and never less than one
// character); an empty text gives one empty line. Blanks at a break are dropped.
[[nodiscard]] std::vector<Text> Wrapped(const Text& text, int width);

}  // namespace tallybook::report
