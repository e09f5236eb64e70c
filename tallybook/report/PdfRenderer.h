// A report as a PDF document of A4 pages, made by Pango and Cairo; it needs no screen. Texts stay text: they can be
// searched and copied. Programs get it by PdfModule.h.
//
//   first page      title, moment of printing
//   every page      the page head, a rule; at the foot the title and "Page 2 of 7"
//   tables          columns by their report units, the head repeated on each page that the table reaches; a text that
//                   is too long goes on in further lines of its cell, and is cut with an ellipsis only where one cell
//                   fills a page
#pragma once

#include "tallybook/report/Report.h"

namespace tallybook::report {

class PdfRenderer : public Renderer {
 public:
  // Asks for the head of each page in their order, once each.
  [[nodiscard]] std::string Render(const Report& report, const PageHeads& page_heads) const override;
};

}  // namespace tallybook::report
