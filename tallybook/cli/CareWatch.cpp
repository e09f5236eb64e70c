#include "tallybook/cli/CareWatch.h"

namespace tallybook::cli {

CareWatch::CareWatch(ConsoleProgress& progress, const Text& title) : progress_(progress) {
  progress_.Begin(title);
}

CareWatch::~CareWatch() {
  progress_.End();
}

}  // namespace tallybook::cli
