// Who listens to the messages of a window by way of MHookXP.
#pragma once

#include "base/Types.h"

namespace tallybook {

class IHookXP {
 public:
  virtual ~IHookXP() = default;
  // A message with its two parameters; gives the answer to it. `reference` is 0. `handled` tells whether the listener
  // dealt with it by itself; one that did not has handed it on.
  virtual Long Message(Long window, Long message, Long w_param, Long l_param, Long reference, bool& handled) = 0;
};

}  // namespace tallybook
