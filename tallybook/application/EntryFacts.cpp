#include "tallybook/application/EntryFacts.h"

#include <nlohmann/json.hpp>

namespace tallybook::application {

namespace {

using Json = nlohmann::ordered_json;

constexpr const char* kZeroOnlyWord = "zero";

void Put(Json& json, const char* name, const Text& value) {
  if (!value.empty()) json[name] = value;
}

void Take(const Json& json, const char* name, Text& value) {
  if (const auto found = json.find(name); found != json.end() && found->is_string()) value = found->get<Text>();
}

Json JsonOf(const EntryFacts::Counts& counts) {
  Json json = Json::object();
  for (const auto& [name, member] : NamedCounts()) {
    if (counts.*member) json[name] = *(counts.*member);
  }
  return json;
}

EntryFacts::Counts CountsOf(const Json& json) {
  EntryFacts::Counts counts;
  for (const auto& [name, member] : NamedCounts()) {
    if (const auto found = json.find(name); found != json.end() && found->is_number_integer()) {
      counts.*member = found->get<long long>();
    }
  }
  return counts;
}

}  // namespace

const std::vector<NamedCount>& NamedCounts() {
  using Counts = EntryFacts::Counts;
  static const std::vector<NamedCount> counts = {{"read", &Counts::read},
                                                 {"applied", &Counts::applied},
                                                 {"not_mapped", &Counts::not_mapped},
                                                 {"refused", &Counts::refused},
                                                 {"zeroed", &Counts::zeroed},
                                                 {"record_count", &Counts::records},
                                                 {"account_count", &Counts::accounts},
                                                 {"field_count", &Counts::fields},
                                                 {"date_count", &Counts::dates}};
  return counts;
}

Text TextOfFacts(const EntryFacts& facts) {
  Json json = Json::object();
  Put(json, "kind", facts.kind);
  if (facts.definition != 0) json["definition"] = facts.definition;
  Put(json, "title", facts.title);
  Put(json, "math", facts.math);
  Put(json, "told_math", facts.told_math);
  Put(json, "options", facts.options);
  if (Json counts = JsonOf(facts.counts); !counts.empty()) json["counts"] = std::move(counts);
  Put(json, "result", facts.result);
  if (!facts.warnings.empty()) json["warnings"] = facts.warnings;
  // Names of files may be no UTF-8; the book keeps what can be shown of them.
  return json.empty() ? Text() : json.dump(-1, ' ', false, Json::error_handler_t::replace);
}

EntryFacts FactsOf(const Text& text) {
  EntryFacts facts;
  const bool no_exceptions = false;
  const Json json = Json::parse(text, nullptr, no_exceptions);
  if (!json.is_object()) return facts;
  Take(json, "kind", facts.kind);
  if (const auto found = json.find("definition"); found != json.end() && found->is_number_integer()) {
    facts.definition = found->get<Integer>();
  }
  Take(json, "title", facts.title);
  Take(json, "math", facts.math);
  Take(json, "told_math", facts.told_math);
  Take(json, "options", facts.options);
  if (const auto found = json.find("counts"); found != json.end() && found->is_object())
    facts.counts = CountsOf(*found);
  Take(json, "result", facts.result);
  if (const auto found = json.find("warnings"); found != json.end() && found->is_array()) {
    for (const Json& warning : *found) {
      if (warning.is_string()) facts.warnings.push_back(warning.get<Text>());
    }
  }
  return facts;
}

// A definition stays the same whatever it is to do with the figures that stand; a text import's way of adding is one of
// its options.
bool IsSameImport(const EntryFacts& one, const EntryFacts& other) {
  if (one.kind.empty() || one.kind != other.kind || one.definition != other.definition) return false;
  if (one.math == kZeroOnlyWord || other.math == kZeroOnlyWord) return false;
  return one.definition != 0 || (one.math == other.math && one.options == other.options);
}

}  // namespace tallybook::application
