#include "tallybook/desktop/host/FilesLeftOpen.h"

#include "support/Utility.h"

namespace tallybook::desktop {

namespace {

std::set<Integer> OpenNumbers() {
  std::set<Integer> numbers;
  for (Integer number = 1; number <= OpenFilesTop(); ++number) {
    if (!OpenFileName(number).empty()) numbers.insert(number);
  }
  return numbers;
}

}  // namespace

FilesLeftOpen::FilesLeftOpen() : open_before_(OpenNumbers()) {}

FilesLeftOpen::~FilesLeftOpen() {
  for (Integer number : OpenNumbers()) {
    if (!open_before_.contains(number)) CloseFileEx(number);
  }
}

}  // namespace tallybook::desktop
