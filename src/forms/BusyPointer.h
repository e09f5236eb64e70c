// The busy pointer for as long as it lives, and the normal one afterwards, on every way out. One thread.
#pragma once

#include "platform/Platform.h"
#include "platform/Screen.h"

namespace tallybook {

class BusyPointer {
 public:
  BusyPointer() { ThePlatform().screen->SetPointer(Pointer::kBusy); }
  ~BusyPointer() { ThePlatform().screen->SetPointer(Pointer::kDefault); }
  BusyPointer(const BusyPointer&) = delete;
  BusyPointer& operator=(const BusyPointer&) = delete;
};

}  // namespace tallybook
