// The PDF renderer stands in a module of its own: the libraries that set pages take longer to load than most commands
// take to run, so they are loaded when a report is to become a PDF, and stay until the program ends.
#pragma once

#include <memory>

#include "tallybook/report/Report.h"

namespace tallybook::report {

// The renderer (PdfRenderer.h). Failure 73 where the module, or a library that it needs, cannot be loaded.
[[nodiscard]] std::unique_ptr<Renderer> NewPdfRenderer();

// What the module exports, and under which name: it makes a renderer, which the caller owns.
using MakePdfRenderer = Renderer*();
inline constexpr const char* kMakePdfRenderer = "tallybook_make_pdf_renderer";

}  // namespace tallybook::report
