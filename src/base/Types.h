// The number and text types that the component's operations are stated in.
// Every other header of the component may include this one; it includes nothing of ours.
#pragma once

#include <cstdint>
#include <string>

namespace tallybook {

using Integer = std::int16_t;  // a 16-bit signed number: positions, levels, codes of a choice
using Long = std::int32_t;     // a 32-bit signed number: account numbers, counts
using Single = float;          // IEEE 754 binary32: fractions of a progress bar, seconds, widths
using Double = double;         // IEEE 754 binary64: the figures themselves
using Date = double;           // days since 1899-12-30 00:00; the fraction is the time of day
using Text = std::string;      // UTF-8; widths and positions of text count characters, not bytes

// A date of 0 stands for "none" wherever an operation says that a date may be missing.
inline constexpr Date kNoDate = 0.0;

// The grain at which a database keeps its records. The numbers stand in exchange files.
inline constexpr Integer kDayLevel = 1;
inline constexpr Integer kWeekLevel = 2;
inline constexpr Integer kPeriodLevel = 3;

}  // namespace tallybook
