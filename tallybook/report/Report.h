// A report as it was printed, before it has a form: a title and a sequence of free lines and tables. ReportPrinter
// fills it, a renderer (TextRenderer, HtmlRenderer, PdfRenderer) makes text, HTML or PDF of it. Plain data, one thread.
#pragma once

#include <functional>
#include <variant>
#include <vector>

#include "base/Types.h"

namespace tallybook::report {

// One line of free text. It may be empty.
struct Line {
  Text text;
  bool keeps_with_next = false;  // on one page with the line, or the head and first row of the table, that follows
};

using Cells = std::vector<Text>;  // one text for each column

// How a table looks.
struct TableLook {
  Single spacing = 1;       // the room between columns, as a multiple of the form's own
  bool close_rows = false;  // little room between the rows, and nothing drawn there
  bool ruled_head = false;  // a rule above the head too
};

// A table. The head is the heading row and the rows printed before it; it is repeated on every page that the table
// reaches.
struct Table {
  std::vector<Single> widths;  // of the columns, in report units; only their proportions count
  std::vector<Cells> head;     // may be empty: a table without a heading row
  std::vector<Cells> body;
  TableLook look = {};
};

// What follows stands on a new page.
struct PageBreak {};

using Block = std::variant<Line, Table, PageBreak>;
using Blocks = std::vector<Block>;

struct Report {
  Text title;
  Text created;  // date and time at which the report began, as text
  Blocks blocks;
};

// Gives the head of a page, counted from 1: what the report's listener prints when the head is due. Forms without pages
// ask for page 1 alone.
using PageHeads = std::function<const Blocks&(int page)>;

// Makes a document of one form.
class Renderer {
 public:
  virtual ~Renderer() = default;
  // The whole document as the bytes of a file. Fails with Failure 51 where the form cannot be made.
  [[nodiscard]] virtual std::string Render(const Report& report, const PageHeads& page_heads) const = 0;
};

}  // namespace tallybook::report
