#include "platform/MessageBoxes.h"

namespace tallybook {

Integer RefusingButton(Long style) {
  switch (style & kButtonsMask) {
    case kOkOnly:
      return kOk;
    case kYesNo:
      return kNo;
    default:
      return kCancel;
  }
}

}  // namespace tallybook
