// A failure: the one exception type of the component. Host errors arrive as Failure too.
// Numbers are stable and are shown to users and written to logs; never renumber them.
#pragma once

#include <exception>

#include "base/Types.h"

namespace tallybook {

enum class FailureNumber : Integer {
  kInvalidArgument = 5,
  kOverflow = 6,
  kOutOfMemory = 7,
  kRange = 9,  // a position outside its table
  kDivisionByZero = 11,
  kTypeMismatch = 13,
  kInternal = 51,
  kBadFileNumber = 52,
  kFileNotFound = 53,
  kDeviceError = 57,
  kDiskFull = 61,
  kReadPastEnd = 62,
  kPermissionDenied = 70,
  kFeatureUnavailable = 73,
  kPathOrAccess = 75,
  kPathNotFound = 76,
  kObjectNotSet = 91,
  kDialogCancelled = 894,  // the low half of CCommonDialog's 0x8004037E: the user left a common dialog
};

class Failure : public std::exception {
 public:
  // `description` says what went wrong and with what value; `source` names what raised it and is what handlers log.
  Failure(FailureNumber number, Text description, Text source = "Tallybook");

  [[nodiscard]] FailureNumber Number() const { return number_; }
  [[nodiscard]] Integer Code() const { return static_cast<Integer>(number_); }
  [[nodiscard]] const Text& Description() const { return description_; }
  [[nodiscard]] const Text& Source() const { return source_; }
  // The position of the statement that failed in the routine that handles the failure; 0 where it is unknown.
  [[nodiscard]] Long Statement() const { return statement_; }
  void SetStatement(Long statement) { statement_ = statement; }

  [[nodiscard]] const char* what() const noexcept override { return description_.c_str(); }

 private:
  FailureNumber number_;
  Text description_;
  Text source_;
  Long statement_ = 0;
};

// The failure that is being handled, whatever was thrown: to be called inside a catch block. Exceptions of the standard
// library become the failure that fits them (a missing file 53, memory 7, anything else 51 with its own words).
[[nodiscard]] Failure CurrentFailure();

// Why an operation ended before its end, for the application that has to tell it in full: the boxes and reports of the
// component have few words, and some ways out have none. `file` is the file under way, `place` how far in it the
// operation was ("record 3", "byte 1204"), `words` what is wrong, with the value found. `number` and `statement` are
// those of the failure that ended it; 0 where none did. Each may be empty.
struct StopReason {
  Text file = {};
  Text place = {};
  Text words = {};
  Integer number = 0;
  Long statement = 0;
};

// The reason that a failure gives; file and place are the operation's to add.
[[nodiscard]] StopReason ReasonOf(const Failure& failure);

}  // namespace tallybook
