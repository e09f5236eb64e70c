// Where the reason of a status other than 0 is kept besides standard error: in the messages file and in the log of the
// command under way. A command that ends by a failure has left its session by the time that the reason is known, so the
// places are kept here, one set for the process.
#pragma once

#include "base/Types.h"

namespace tallybook::cli {

struct ReasonPlaces {
  Text messages_file = {};  // empty: none
  Text log_file = {};       // empty: none, no session has begun
};

// A command begins, and knows of no place yet; gives the places before, for a command that runs another.
ReasonPlaces ForgetReasonPlaces();
void SetReasonPlaces(const ReasonPlaces& places);

// Appends a reason to both. What cannot be written is passed over: standard error has told it.
void KeepReason(const Text& reason);

// A reason as the messages file has it, a JSON object on one line.
[[nodiscard]] Text ReasonMessage(const Text& reason);

}  // namespace tallybook::cli
