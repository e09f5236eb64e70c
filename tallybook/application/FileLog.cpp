#include "tallybook/application/FileLog.h"

#include <filesystem>
#include <fstream>

#include "base/Dates.h"
#include "base/Failure.h"
#include "platform/Clock.h"
#include "tallybook/application/Shown.h"

namespace tallybook::application {

Integer FileLog::LogError(const Text& message, Long line_number, Integer /*detail*/) {
  return Append("error " + message + " (statement " + std::to_string(line_number) + ")");
}

Integer FileLog::AuditEntry(const Text& who, const Text& what, const Text& subject, const std::vector<Text>& items) {
  Text entry = "audit " + who + ": " + what + ": " + subject;
  for (std::size_t i = 0; i < items.size(); ++i) entry += (i == 0 ? ": " : "; ") + items[i];
  return Append(entry);
}

Integer FileLog::Append(const Text& entry) noexcept {
  if (keeps_nothing_) return 1;
  try {
    const std::filesystem::path path(path_);
    if (path.has_parent_path()) std::filesystem::create_directories(path.parent_path());
    // Whoever opened a pipe would wait for its reader. A device takes an entry, or refuses it.
    if (std::filesystem::is_fifo(path)) throw Failure(FailureNumber::kPathOrAccess, path_ + " is a pipe", "FileLog");
    const Text line = DateTimeText(Now()) + " " + OnOneLine(entry) + '\n';
    std::ofstream file(path, std::ios::app | std::ios::binary);
    // In one piece, so that the entries of two processes do not run into each other.
    file.write(line.data(), static_cast<std::streamsize>(line.size()));
    file.close();
    if (file) return 1;
  } catch (...) {
    // Meant: a log that cannot be written must not end what it was to tell of. The entry counts as lost below.
  }
  ++lost_entries_;
  return 0;
}

}  // namespace tallybook::application
