#include "tallybook/cli/Reasons.h"

#include <fstream>
#include <nlohmann/json.hpp>
#include <utility>

#include "tallybook/application/FileLog.h"

namespace tallybook::cli {

namespace {

ReasonPlaces& Places() {
  static ReasonPlaces places;
  return places;
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
  if (!places.log_file.empty()) application::FileLog(places.log_file).StopEntry(reason);
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
