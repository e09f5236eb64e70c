#include "tests/support/CallRecord.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <stdexcept>
#include <utility>

#include "base/Dates.h"

namespace tallybook::testing {

namespace {

template <typename Number>
Text ShortestText(Number value) {
  std::array<char, 64> digits{};
  const auto end = std::to_chars(digits.data(), digits.data() + digits.size(), value).ptr;
  return Text(digits.data(), end);
}

// Each argument with a blank before it.
Text Joined(std::initializer_list<Argument> arguments) {
  Text joined;
  for (const Argument& argument : arguments) {
    joined += ' ' + std::visit([](const auto& value) { return ArgumentText(value); }, argument);
  }
  return joined;
}

}  // namespace

Text ArgumentText(std::string_view text) {
  return Text(text);
}
Text ArgumentText(bool value) {
  return value ? "true" : "false";
}
Text ArgumentText(Integer value) {
  return ShortestText(value);
}
Text ArgumentText(Long value) {
  return ShortestText(value);
}
Text ArgumentText(Single value) {
  return ShortestText(value);
}
Text ArgumentText(Double value) {
  return ShortestText(value);
}
Text ArgumentText(AsDate value) {
  return DateText(value.date);
}

std::vector<Text> CallRecord::ArgumentsOf(std::string_view operation) const {
  std::vector<Text> found;
  for (const Text& call : calls) {
    if (!call.starts_with(operation)) continue;
    if (call.size() == operation.size())
      found.emplace_back();
    else if (call[operation.size()] == ' ')
      found.push_back(call.substr(operation.size() + 1));
  }
  return found;
}

void CallRecord::Record(const Text& operation, bool recorded) {
  recorded_[operation] = recorded;
  NoteWhatIsWatched();
}

void CallRecord::FailOn(const Text& operation, long long nth, Failure failure) {
  if (nth < 1) throw std::logic_error("FailOn " + operation + ": calls count from 1");
  faults_.push_back({operation, nth, std::move(failure)});
  NoteWhatIsWatched();
}

void CallRecord::GiveFalseOn(const Text& operation, long long nth) {
  if (nth < 1) throw std::logic_error("GiveFalseOn " + operation + ": calls count from 1");
  faults_.push_back({operation, nth, std::nullopt});
  NoteWhatIsWatched();
}

void CallRecord::DisarmFaults() {
  faults_.clear();
  NoteWhatIsWatched();
}

bool CallRecord::Enter(std::string_view operation, bool recorded_unless_told, ArgumentList arguments) {
  if (IsRecorded(operation, recorded_unless_told)) calls.push_back(Text(operation) + Joined(arguments));
  const std::optional<Fault> fault = TakeFault(operation);
  if (!fault) return true;
  if (fault->failure) throw Failure(*fault->failure);
  return false;
}

void CallRecord::EnterWithoutAnswer(std::string_view operation, bool recorded_unless_told, ArgumentList arguments) {
  if (!Enter(operation, recorded_unless_told, arguments))
    throw std::logic_error(Text(operation) + " was to answer no, but it has no such answer");
}

bool CallRecord::IsRecorded(std::string_view operation, bool recorded_unless_told) const {
  if (!recording_) return false;
  const auto told = recorded_.find(operation);
  return told == recorded_.end() ? recorded_unless_told : told->second;
}

std::optional<CallRecord::Fault> CallRecord::TakeFault(std::string_view operation) {
  std::optional<Fault> striking;
  for (Fault& fault : faults_) {
    if (fault.operation != operation && fault.operation != kAnyOperation) continue;
    --fault.calls_left;
    if (fault.calls_left == 0 && !striking) striking = fault;
  }
  if (!striking) return striking;
  std::erase_if(faults_, [](const Fault& fault) { return fault.calls_left <= 0; });
  NoteWhatIsWatched();
  return striking;
}

void CallRecord::NoteWhatIsWatched() {
  bulk_watched_ = !faults_.empty() ||
                  std::any_of(recorded_.begin(), recorded_.end(), [](const auto& entry) { return entry.second; });
}

}  // namespace tallybook::testing
