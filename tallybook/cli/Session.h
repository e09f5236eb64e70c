// What every command works with: the platform with its questions and its progress line, the application object, the
// factory, and the books that the command opens. One session lives from a command's start to its end.
#pragma once

#include <functional>
#include <memory>
#include <utility>

#include "host/HostLog.h"
#include "platform/StopProgram.h"
#include "tallybook/application/OutputRules.h"
#include "tallybook/application/ReferenceApp.h"
#include "tallybook/application/ReferenceFactory.h"
#include "tallybook/application/ReportHeads.h"
#include "tallybook/cli/ConsolePlatform.h"
#include "tallybook/cli/ExitStatus.h"
#include "tallybook/engine/Book.h"

namespace tallybook::cli {

// The log of the application, and on standard error the reason of each failure that the component catches and logs: the
// log's own entry has only the place.
class ConsoleLog : public HostLog {
 public:
  ConsoleLog(HostLog& log, ConsoleProgress& progress) : log_(log), progress_(progress) {}
  Integer LogError(const Text& message, Long line_number, Integer detail) override;
  Integer AuditEntry(const Text& who, const Text& what, const Text& subject, const std::vector<Text>& items) override {
    return log_.AuditEntry(who, what, subject, items);
  }

  // The last failure that was logged; empty before the first.
  [[nodiscard]] const Text& LastFailure() const { return last_failure_; }

 private:
  HostLog& log_;
  ConsoleProgress& progress_;
  Text last_failure_;
};

class ConsoleApp : public application::ReferenceApp {
 public:
  explicit ConsoleApp(ConsoleProgress& progress) : console_log_(ReferenceApp::Log(), progress) {}
  ConsoleLog& Log() override { return console_log_; }

 private:
  ConsoleLog console_log_;
};

// The files that a command names; empty where it names none. "-" stands for standard input or output.
struct NamedFiles {
  Text book = {};
  Text input = {};
  Text output = {};  // replaced when the new one is whole
  Text report = {};
  bool more_inputs = false;  // others are found on the way: the messages file waits for AllInputsKnown
};

// While it lives it is also told of a record that stops the process, and writes what the user waits for.
class Session : private StopWitness {
 public:
  // Looks at the command's files before anything is opened. Fails with Failure 75 where the input is no regular file,
  // or an output, the messages file among them, must not go where it is to go (OutputRules); and where the messages
  // file cannot be made.
  explicit Session(const AskOptions& asking = {}, const NamedFiles& files = {});
  ~Session() override;
  Session(const Session&) = delete;
  Session& operator=(const Session&) = delete;

  // For a file that becomes known on the way, before it is opened: the same looks.
  void AddInput(const Text& path);
  void AddOutput(const Text& path);
  // For a file that the operation deletes or replaces on the way: Failure 75 where it is no regular file, or a book.
  void NeedReplaceable(const Text& path) const;
  // For one that it deletes or renames later on: what would be refused then is refused now, as far as it can be told.
  void NeedRemovable(const Text& path);
  // Makes the messages file of a session with more inputs.
  void AllInputsKnown();

  // The files as the component sees them.
  [[nodiscard]] application::WholeFiles& Files() { return platform_.Files(); }

  // Opens a book to read, or to change it. `path` may leave out ".tbk". A book to be changed that is open for writing
  // elsewhere is waited for so many seconds at most; what is due with files of its imports is done and told. Fails as
  // Book::Open does.
  [[nodiscard]] std::unique_ptr<engine::Book> OpenToRead(const Text& path);
  [[nodiscard]] std::unique_ptr<engine::Book> OpenToChange(const Text& path, Long wait_seconds = 0);

  // Opens a book to read for a preview: with less in memory, since a preview holds figures of its own.
  [[nodiscard]] std::unique_ptr<engine::Book> OpenToPreview(const Text& path);

  // The line that shows how far long work is.
  [[nodiscard]] ConsoleProgress& Progress() { return platform_.Progress(); }

  // Nothing goes into the log from here on.
  void KeepNoLog() { app_.OwnLog().KeepNothing(); }
  // Who is told when an import comes to a file; empty for nobody.
  void FollowImports(std::function<void()> listener) { app_.SetImportListener(std::move(listener)); }

  [[nodiscard]] application::ReferenceFactory& Factory() { return factory_; }

  // The boxes shown so far.
  [[nodiscard]] const ConsoleMessageBoxes& Boxes() { return platform_.Boxes(); }

  // A question that is the user's alone: ConsoleMessageBoxes::ShowToUser.
  [[nodiscard]] Integer AskUser(const Text& text, Long style) {
    return platform_.Boxes().ShowToUser(text, style, app_.Title());
  }

  // Of an audit that lists its errors: ConsoleMessageBoxes::FollowAudit.
  void FollowAudit(const TextImportTally* tally) { platform_.Boxes().FollowAudit(tally); }

  // Tells why an operation ended before its end: on standard error, where no box has told all of it, in the messages
  // file and in the log.
  void TellStop(const StopReason& reason);
  // A line of the application's own on standard error, "tallybook: ..." for a warning.
  void Note(const Text& line, bool warning);

  // The status of an operation that gave `done`, to be asked once, at its end: where it is another than 0 and nobody
  // has told why, the last box or failure is what the log keeps. Cancelled where the user stopped it or refused its
  // question, wrong use where an answer of --answer had no button.
  [[nodiscard]] ExitStatus StatusOf(bool done);

 private:
  void ProgramStops(const StopReason& reason) override;
  [[nodiscard]] ExitStatus StatusFor(bool done);
  void KeepLastTold(ExitStatus status);
  [[nodiscard]] engine::BookOptions Options();
  [[nodiscard]] engine::BookOptions OptionsToRead();
  [[nodiscard]] std::unique_ptr<engine::Book> Open(const Text& path, const engine::BookOptions& options);

  void CheckInPlace(const Text& path, const Text& what);

  Text messages_file_;
  Text report_file_;
  ConsolePlatform platform_;
  application::OutputRules rules_;
  ConsoleApp app_;
  application::ReferenceFactory factory_;
  application::ReportHeads report_heads_;
  bool stop_told_ = false;
};

// The path of a book as the user named it: the file of exactly that name where there is one, else with ".tbk" where
// there is that, else ".tbk" is added to a name that holds no point.
[[nodiscard]] Text BookPath(const Text& named);

}  // namespace tallybook::cli
