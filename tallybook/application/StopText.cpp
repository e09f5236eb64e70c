#include "tallybook/application/StopText.h"

#include <algorithm>
#include <array>
#include <string>
#include <string_view>
#include <utility>

#include "tallybook/application/Shown.h"

namespace tallybook::application {

namespace {

constexpr std::array<std::pair<FailureNumber, std::string_view>, 18> kWords = {{
    {FailureNumber::kInvalidArgument, "invalid argument"},
    {FailureNumber::kOverflow, "number too large"},
    {FailureNumber::kOutOfMemory, "out of memory"},
    {FailureNumber::kRange, "outside the table"},
    {FailureNumber::kDivisionByZero, "division by zero"},
    {FailureNumber::kTypeMismatch, "type mismatch"},
    {FailureNumber::kInternal, "internal error"},
    {FailureNumber::kBadFileNumber, "bad file number"},
    {FailureNumber::kFileNotFound, "file not found"},
    {FailureNumber::kDeviceError, "device error"},
    {FailureNumber::kDiskFull, "disk full"},
    {FailureNumber::kReadPastEnd, "read past the end of the file"},
    {FailureNumber::kPermissionDenied, "permission denied"},
    {FailureNumber::kFeatureUnavailable, "feature unavailable"},
    {FailureNumber::kPathOrAccess, "path or access error"},
    {FailureNumber::kPathNotFound, "path not found"},
    {FailureNumber::kObjectNotSet, "object not set"},
    {FailureNumber::kDialogCancelled, "dialog cancelled"},
}};

// Values may be whole files; what is cut ends before a character, not within one.
Text Shortened(Text text) {
  constexpr std::size_t kMost = 400;
  if (text.size() <= kMost) return text;
  std::size_t end = kMost;
  while (end > 0 && (static_cast<unsigned char>(text[end]) & 0xC0U) == 0x80U) --end;
  return text.substr(0, end) + "...";
}

// "(error 13: type mismatch, statement 107)" with a blank before; empty where there is neither.
Text NumbersOf(const StopReason& reason) {
  Text numbers;
  if (reason.number != 0) {
    numbers = "error " + std::to_string(reason.number);
    if (const Text words = WordsOfNumber(reason.number); !words.empty()) numbers += ": " + words;
  }
  if (reason.statement != 0) {
    numbers += (numbers.empty() ? "" : ", ") + Text("statement ") + std::to_string(reason.statement);
  }
  return numbers.empty() ? numbers : " (" + numbers + ")";
}

}  // namespace

Text WordsOfNumber(Integer number) {
  const auto* const found =
      std::ranges::find_if(kWords, [&](const auto& entry) { return static_cast<Integer>(entry.first) == number; });
  return found == kWords.end() ? Text() : Text(found->second);
}

Text StopText(const StopReason& reason) {
  Text text;
  for (const Text& part : {reason.file, reason.place}) {
    if (!part.empty()) text += OnOneLine(part) + ": ";
  }
  const Text words = reason.words.empty() ? "stopped without a reason" : reason.words;
  return text + Shortened(OnOneLine(words)) + NumbersOf(reason);
}

}  // namespace tallybook::application
