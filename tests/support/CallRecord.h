// What the in-memory host was asked, in order, and the faults that a test arms beforehand. All objects of one in-memory
// host share one record. One thread. The record must outlive the host objects that it was given to.
//
// A call is written as the operation's name and its arguments with blanks between: "BeginProgress Writing Export File",
// "ReadRecord 101 2004-02-03". The operations of the database bear their own names; those of other objects have the
// object in front: "Printer.PrintLine", "Export.CreateTable", "EdtForm.AddRow", "Calendar.LevelDate", "Ini.WriteValue",
// "Log.LogError", "App.BeginImport", "AccountRecord.SetSelect", "FieldRecord.SetSelect", "PrintSequence.LoadSequences".
//
// Bulk operations (queries, record reading and writing, calendar, cells of exported tables) are recorded only where a
// test asks for it, so that long runs cost next to nothing. Faults reach every operation, bulk or not.
#pragma once

#include <initializer_list>
#include <map>
#include <optional>
#include <string_view>
#include <variant>
#include <vector>

#include "base/Failure.h"
#include "base/Types.h"

namespace tallybook::testing {

// The operation name that stands for each and every operation, for FailOn: arm it with 1, 2, 3 ... to fail every single
// call of a run in turn.
inline constexpr const char* kAnyOperation = "*";

// How an argument is written. A date needs saying, being a number like any other.
struct AsDate {
  Date date;
};
[[nodiscard]] Text ArgumentText(std::string_view text);
[[nodiscard]] Text ArgumentText(bool value);
[[nodiscard]] Text ArgumentText(Integer value);
[[nodiscard]] Text ArgumentText(Long value);
[[nodiscard]] Text ArgumentText(Single value);  // the shortest text that reads back to the same number
[[nodiscard]] Text ArgumentText(Double value);
[[nodiscard]] Text ArgumentText(AsDate value);  // 2004-02-03
// Any of these before it is written; a text must outlive the call.
using Argument = std::variant<std::string_view, bool, Integer, Long, Single, Double, AsDate>;

class CallRecord {
 public:
  CallRecord() = default;
  CallRecord(const CallRecord&) = delete;
  CallRecord& operator=(const CallRecord&) = delete;

  // The calls so far. A test may clear it.
  std::vector<Text> calls;

  // The recorded calls of one operation, in order, without its name: the arguments only.
  [[nodiscard]] std::vector<Text> ArgumentsOf(std::string_view operation) const;

  // Whether an operation is recorded, whatever its kind.
  void Record(const Text& operation, bool recorded);
  // False: nothing is recorded at all, for benchmarks.
  void SetRecording(bool recording) { recording_ = recording; }

  // The `nth` call of `operation` from now on (1 is the next) raises `failure` once, before it has any effect. The call
  // is recorded all the same.
  void FailOn(const Text& operation, long long nth, Failure failure);
  // The `nth` call of an operation that answers yes or no, from now on, answers no once and has no other effect.
  // An operation without such an answer ends the test with std::logic_error.
  void GiveFalseOn(const Text& operation, long long nth);
  // True when every armed fault has struck: a test that expects one asks, lest a misspelt operation pass unseen.
  [[nodiscard]] bool AllFaultsStruck() const { return faults_.empty(); }
  void DisarmFaults();

  // --- For the host objects: each operation begins with one of these, before it does anything ---

  // An operation without an answer that a fault could turn.
  template <typename... Arguments>
  void Tell(std::string_view operation, const Arguments&... arguments) {
    if (recording_ || bulk_watched_) EnterWithoutAnswer(operation, recording_, {Argument(arguments)...});
  }
  template <typename... Arguments>
  void TellBulk(std::string_view operation, const Arguments&... arguments) {
    if (bulk_watched_) EnterWithoutAnswer(operation, false, {Argument(arguments)...});
  }
  // An operation that answers yes or no; false: give "no" and do nothing.
  template <typename... Arguments>
  [[nodiscard]] bool Ask(std::string_view operation, const Arguments&... arguments) {
    return !(recording_ || bulk_watched_) || Enter(operation, recording_, {Argument(arguments)...});
  }
  template <typename... Arguments>
  [[nodiscard]] bool AskBulk(std::string_view operation, const Arguments&... arguments) {
    return !bulk_watched_ || Enter(operation, false, {Argument(arguments)...});
  }

 private:
  struct Fault {
    Text operation;
    long long calls_left;
    std::optional<Failure> failure;  // none: the call answers no
  };
  using ArgumentList = std::initializer_list<Argument>;

  bool Enter(std::string_view operation, bool recorded_unless_told, ArgumentList arguments);
  void EnterWithoutAnswer(std::string_view operation, bool recorded_unless_told, ArgumentList arguments);
  [[nodiscard]] bool IsRecorded(std::string_view operation, bool recorded_unless_told) const;
  // The fault that strikes this call, if any; it is disarmed by that.
  std::optional<Fault> TakeFault(std::string_view operation);
  void NoteWhatIsWatched();

  std::map<Text, bool, std::less<>> recorded_;
  std::vector<Fault> faults_;
  bool recording_ = true;
  bool bulk_watched_ = false;  // a fault is armed or some operation is recorded by wish
};

}  // namespace tallybook::testing
