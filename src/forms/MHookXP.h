// Hooks on windows, over the platform's wheel. Nothing here fails: without a wheel, or where the system refuses, the
// answer is false or 0.
#pragma once

#include "base/Types.h"

namespace tallybook {

class IHookXP;

// Lets `listener` hear the messages of a window, once for each listener. The hook removes itself when the window goes;
// the listener must be there until then or until RemoveHook.
[[nodiscard]] bool AddHook(Long window, IHookXP& listener);
bool RemoveHook(Long window, const IHookXP& listener);
// What the window does with a message by itself.
Long CallNextHook(Long window, Long message, Long w_param, Long l_param);

}  // namespace tallybook
