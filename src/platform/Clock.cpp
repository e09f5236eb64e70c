#include "platform/Clock.h"

#include "platform/Platform.h"

namespace tallybook {

Date Now() {
  return ThePlatform().clock->Now();
}

}  // namespace tallybook
