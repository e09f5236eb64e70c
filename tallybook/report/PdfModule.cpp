#include "tallybook/report/PdfModule.h"

#include <dlfcn.h>

#include "base/Failure.h"

namespace tallybook::report {

namespace {

// Looked for where the program's run path points to.
constexpr const char* kModule = "tallybook_pdf.so";

[[noreturn]] void FailToLoad() {
  const char* const reason = dlerror();
  throw Failure(FailureNumber::kFeatureUnavailable,
                Text("Reports cannot be made as PDF: ") + (reason != nullptr ? reason : "the module is unusable"),
                "PdfRenderer");
}

MakePdfRenderer* LoadMaker() {
  void* const module = dlopen(kModule, RTLD_NOW);
  if (module == nullptr) FailToLoad();
  void* const maker = dlsym(module, kMakePdfRenderer);
  if (maker == nullptr) FailToLoad();
  return reinterpret_cast<MakePdfRenderer*>(maker);
}

}  // namespace

std::unique_ptr<Renderer> NewPdfRenderer() {
  static MakePdfRenderer* const make = LoadMaker();
  return std::unique_ptr<Renderer>(make());
}

}  // namespace tallybook::report
