#include "tallybook/files/Modules.h"

#include <dlfcn.h>

#include "base/Failure.h"

namespace tallybook::files {

void* FunctionOfModule(const char* module, const char* function, const Text& trouble, const char* source) {
  void* const loaded = dlopen(module, RTLD_NOW);
  if (void* const found = loaded != nullptr ? dlsym(loaded, function) : nullptr) return found;
  const char* const reason = dlerror();
  throw Failure(FailureNumber::kFeatureUnavailable,
                trouble + ": " + (reason != nullptr ? reason : "the module is unusable"), source);
}

}  // namespace tallybook::files
