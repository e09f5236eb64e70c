#include "tallybook/cli/Reasons.h"

#include <fstream>
#include <nlohmann/json.hpp>
#include <optional>
#include <utility>

#include "platform/Platform.h"
#include "tallybook/application/FileLog.h"
#include "tallybook/cli/ConsolePlatform.h"

namespace tallybook::cli {

namespace {

ReasonPlaces& Places() {
  static ReasonPlaces places;
  return places;
}

void KeepInLog(const Text& log_file, const Text& reason) {
  // A session takes its platform with it, and an entry of the log needs the clock.
  std::optional<ConsolePlatform> platform;
  if (!IsPlatformInstalled()) platform.emplace(AskOptions{});
  application::FileLog(log_file).StopEntry(reason);
}

}  // namespace

ReasonPlaces ForgetReasonPlaces() {
  return std::exchange(Places(), {});
}

void SetReasonPlaces(const ReasonPlaces& places) {
  Places() = places;
}

void KeepReason(const Text& reason) {
  const ReasonPlaces& places = Places();
  if (!places.log_file.empty()) KeepInLog(places.log_file, reason);
  if (places.messages_file.empty()) return;
  std::ofstream messages(places.messages_file, std::ios::app);
  messages << ReasonMessage(reason) << '\n';
}

Text ReasonMessage(const Text& reason) {
  nlohmann::ordered_json message;
  message["text"] = reason;
  message["icon"] = "";
  message["buttons"] = nlohmann::json::array();
  message["answer"] = "";
  return message.dump(-1, ' ', false, nlohmann::json::error_handler_t::replace);
}

}  // namespace tallybook::cli
