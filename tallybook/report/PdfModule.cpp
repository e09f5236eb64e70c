#include "tallybook/report/PdfModule.h"

#include "tallybook/files/Modules.h"

namespace tallybook::report {

std::unique_ptr<Renderer> NewPdfRenderer() {
  static auto* const make = reinterpret_cast<MakePdfRenderer*>(
      files::FunctionOfModule("tallybook_pdf.so", kMakePdfRenderer, "Reports cannot be made as PDF", "PdfRenderer"));
  return std::unique_ptr<Renderer>(make());
}

}  // namespace tallybook::report
