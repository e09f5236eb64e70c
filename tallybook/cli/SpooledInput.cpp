#include "tallybook/cli/SpooledInput.h"

namespace tallybook::cli {

SpooledInput::SpooledInput(application::WholeFiles& files, const Text& name) {
  if (name != application::kStandardStream) return;
  const Text place = folder_.emplace().Path("input");
  application::SpoolStandardInput(place);
  files.StandFor(name, place);
}

}  // namespace tallybook::cli
