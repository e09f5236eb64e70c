// The application object of the desktop: the reference host's, with the system's fonts, help pages, and a log that
// tells what only it would get to know. One thread.
#pragma once

#include <functional>
#include <vector>

#include "host/HostLog.h"
#include "tallybook/application/ReferenceApp.h"

namespace tallybook::desktop {

// The log of the application, which also keeps the reasons that the component has logged and nobody has told yet: its
// questions have no room for them, and some operations say nothing at all.
class TellingLog : public HostLog {
 public:
  explicit TellingLog(HostLog& log) : log_(log) {}

  Integer LogError(const Text& message, Long line_number, Integer detail) override;
  Integer AuditEntry(const Text& who, const Text& what, const Text& subject, const std::vector<Text>& items) override {
    return log_.AuditEntry(who, what, subject, items);
  }

  // A failure that an operation of the component ended with. Empty reasons are none.
  struct Reason {
    Text words;  // of the failure
    Text place;  // where it was caught: source, operation, statement
  };
  // The reasons that wait to be told, oldest first; nothing waits afterwards.
  [[nodiscard]] std::vector<Reason> Take();
  // Done for each new reason; empty for nothing.
  void SetListener(std::function<void()> listener) { listener_ = std::move(listener); }
  // How many failures have been kept since the start.
  [[nodiscard]] long long Count() const { return count_; }

 private:
  HostLog& log_;
  std::vector<Reason> waiting_;
  std::function<void()> listener_;
  long long count_ = 0;
};

class DesktopApp : public application::ReferenceApp {
 public:
  // Takes name and size of the application's font.
  explicit DesktopApp(const application::ReferenceAppOptions& options = {});
  // The same again, when the application has another font.
  void FollowFont();

  TellingLog& Log() override { return log_; }

  // How much of a book is kept in memory, by the installation's settings (application/HostSettings.h).
  [[nodiscard]] std::size_t CacheBytes() const;

 private:
  TellingLog log_;
};

}  // namespace tallybook::desktop
