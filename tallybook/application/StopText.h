// The reasons of operations that stopped, in full words: file, place, what is wrong with the value found, and the words
// of the failure's number, which the component's boxes tell alone ("Error:13:107").
#pragma once

#include "base/Failure.h"
#include "base/Types.h"

namespace tallybook::application {

// What a failure's number stands for, "type mismatch"; empty for a number that is none.
[[nodiscard]] Text WordsOfNumber(Integer number);

// "january.txt: record 3: "x" is not a number (error 13: type mismatch, statement 107)", on one line. What the reason
// does not tell is left out. Control characters are shown (Shown.h); words without end are cut.
[[nodiscard]] Text StopText(const StopReason& reason);

}  // namespace tallybook::application
