// What a command still does when its work is done and committed: telling it, closing the file. It has been done whatever
// happens to these, so that what fails here is a warning on standard error and no reason for another status.
#pragma once

#include <functional>

namespace tallybook::cli {

void DoAfterCommit(const std::function<void()>& act);

}  // namespace tallybook::cli
