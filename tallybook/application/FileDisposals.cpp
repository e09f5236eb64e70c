#include "tallybook/application/FileDisposals.h"

#include <algorithm>
#include <fmt/format.h>
#include <map>
#include <nlohmann/json.hpp>
#include <set>
#include <sys/stat.h>
#include <type_traits>

#include "base/Failure.h"
#include "tallybook/engine/Journal.h"
#include "tallybook/engine/JournalNotes.h"

namespace tallybook::application {

namespace {

using Json = nlohmann::ordered_json;
using Result = DisposalOutcome::Result;

// A path may be no UTF-8. Each byte is taken for the character of its number, and back.
Text AsCharacters(const Text& bytes) {
  constexpr unsigned char kLastOfOneUnit = 0x7F;
  Text text;
  for (const char byte : bytes) {
    const auto number = static_cast<unsigned char>(byte);
    if (number <= kLastOfOneUnit) {
      text += byte;
    } else {
      text += static_cast<char>(0xC0U | (number >> 6U));
      text += static_cast<char>(0x80U | (number & 0x3FU));
    }
  }
  return text;
}

Text AsBytes(const Text& text) {
  Text bytes;
  for (std::size_t at = 0; at < text.size(); ++at) {
    const auto unit = static_cast<unsigned char>(text[at]);
    const bool is_lead = (unit & 0xC0U) == 0xC0U && at + 1 < text.size();
    if (!is_lead) {
      bytes += text[at];
    } else {
      bytes += static_cast<char>(((unit & 0x03U) << 6U) | (static_cast<unsigned char>(text[++at]) & 0x3FU));
    }
  }
  return bytes;
}

template <typename Value>
Value Item(const Json& json, const char* name) {
  const auto found = json.find(name);
  if (found == json.end()) return {};
  if constexpr (std::is_same_v<Value, Text>) {
    return found->is_string() ? AsBytes(found->get<Text>()) : Text();
  } else {
    return found->is_number_integer() ? found->get<Value>() : Value{};
  }
}

FileDisposal DisposalOf(const Json& json) {
  return {.path = Item<Text>(json, "path"),
          .new_path = Item<Text>(json, "new_path"),
          .stamp = {.inode = Item<std::uint64_t>(json, "inode"),
                    .size = Item<std::int64_t>(json, "size"),
                    .modified = Item<std::int64_t>(json, "modified")}};
}

Text Native(Text path) {
  std::ranges::replace(path, '\\', '/');
  return path;
}

// Whether a process that ended in the midst has done it already.
bool WasRenamed(const FileDisposal& disposal) {
  return !disposal.new_path.empty() && StampOf(disposal.new_path) == disposal.stamp;
}

void Do(const FileDisposal& disposal, FileSystem& files) {
  disposal.new_path.empty() ? files.Delete(disposal.path) : files.Rename(disposal.path, disposal.new_path);
}

void TellBook(engine::Book& book, DisposalOutcome& outcome, const std::vector<FileDisposal>& left) {
  try {
    engine::JournalNotes(book).SaveDue(outcome.entry, TextOfDisposals(left));
  } catch (...) {
    outcome.why = CurrentFailure().Description();
  }
}

// Of the entries whose import stands no more.
std::set<Long> EntriesTakenBack(engine::Book& book) {
  std::set<Long> taken_back;
  for (const engine::JournalEntry& entry : engine::Journal(book).Entries()) {
    if (entry.state == engine::JournalState::kUndone) taken_back.insert(entry.id);
  }
  return taken_back;
}

Text Deed(const FileDisposal& disposal) {
  return disposal.new_path.empty() ? "deleted" : "renamed to " + disposal.new_path;
}

Text DeedText(const DisposalOutcome& outcome) {
  const FileDisposal& disposal = outcome.disposal;
  const Text deed = Deed(disposal);
  const Text since = outcome.entry == 0 ? "" : fmt::format(" since its import (journal entry {})", outcome.entry);
  switch (outcome.result) {
    case Result::kDone:
      return fmt::format("{} is {} now, as was due{}", disposal.path, deed, since);
    case Result::kGone:
      return fmt::format("{} was to be {}{}, and is gone", disposal.path, deed, since);
    case Result::kChanged:
      return fmt::format("{} was to be {}{}; it has changed, so it is left alone", disposal.path, deed, since);
    case Result::kTakenBack:
      return fmt::format("{} was to be {}{}; that has been taken back, so it is left alone", disposal.path, deed,
                         since);
    case Result::kStays:
      return fmt::format("{} is still to be {}{}: {}", disposal.path, deed, since, outcome.why);
  }
  return "";
}

}  // namespace

std::optional<FileStamp> StampOf(const Text& path) {
  struct stat status {};
  if (::lstat(Native(path).c_str(), &status) != 0) return std::nullopt;
  if (!S_ISREG(status.st_mode) && !S_ISLNK(status.st_mode)) return std::nullopt;
  constexpr std::int64_t kNanoseconds = 1'000'000'000;
  return FileStamp{.inode = status.st_ino,
                   .size = status.st_size,
                   .modified = status.st_mtim.tv_sec * kNanoseconds + status.st_mtim.tv_nsec};
}

Text TextOfDisposals(const std::vector<FileDisposal>& disposals) {
  Json json = Json::array();
  for (const FileDisposal& disposal : disposals) {
    Json& item = json.emplace_back(Json::object());
    item["path"] = AsCharacters(disposal.path);
    if (!disposal.new_path.empty()) item["new_path"] = AsCharacters(disposal.new_path);
    item["inode"] = disposal.stamp.inode;
    item["size"] = disposal.stamp.size;
    item["modified"] = disposal.stamp.modified;
  }
  return json.empty() ? Text() : json.dump();
}

std::vector<FileDisposal> DisposalsOf(const Text& text) {
  const bool no_exceptions = false;
  const Json json = Json::parse(text, nullptr, no_exceptions);
  std::vector<FileDisposal> disposals;
  if (!json.is_array()) return disposals;
  for (const Json& item : json) disposals.push_back(DisposalOf(item));
  std::erase_if(disposals, [](const FileDisposal& disposal) { return disposal.path.empty(); });
  return disposals;
}

DisposalOutcome CarryOut(const FileDisposal& disposal, FileSystem& files) {
  DisposalOutcome outcome{.disposal = disposal};
  try {
    const auto stamp = StampOf(disposal.path);
    if (stamp == disposal.stamp) {
      Do(disposal, files);
    } else if (!WasRenamed(disposal)) {
      outcome.result = stamp || files.Attributes(disposal.path).found ? Result::kChanged : Result::kGone;
    }
  } catch (...) {
    outcome.result = Result::kStays;
    outcome.why = CurrentFailure().Description();
  }
  return outcome;
}

std::vector<DisposalOutcome> CarryOutDue(engine::Book& book, FileSystem& files) {
  std::vector<DisposalOutcome> outcomes;
  const std::map<Long, Text> due = engine::JournalNotes(book).Due();
  if (due.empty()) return outcomes;
  book.Settle();
  const std::set<Long> taken_back = EntriesTakenBack(book);
  for (const auto& [entry, text] : due) {
    std::vector<FileDisposal> left = DisposalsOf(text);
    for (const FileDisposal& disposal : DisposalsOf(text)) {
      DisposalOutcome outcome = taken_back.contains(entry)
                                    ? DisposalOutcome{.disposal = disposal, .result = Result::kTakenBack}
                                    : CarryOut(disposal, files);
      outcome.entry = entry;
      if (outcome.result != Result::kStays) {
        left.erase(std::ranges::find(left, disposal));
        TellBook(book, outcome, left);
      }
      outcomes.push_back(outcome);
    }
  }
  return outcomes;
}

Text DueText(const FileDisposal& disposal) {
  return fmt::format("{} is to be {}", disposal.path, Deed(disposal));
}

Text DisposalText(const DisposalOutcome& outcome) {
  const Text untold = outcome.result == Result::kStays || outcome.why.empty()
                          ? ""
                          : ", which the book could not be told: " + outcome.why;
  return DeedText(outcome) + untold;
}

}  // namespace tallybook::application
