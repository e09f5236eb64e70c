// Message boxes as text on the terminal, and how their questions are answered.
#pragma once

#include <deque>
#include <fstream>
#include <optional>
#include <vector>

#include "import/TextImport.h"
#include "platform/MessageBoxes.h"
#include "tallybook/cli/ConsoleProgress.h"

namespace tallybook::cli {

// How the questions of an operation are answered.
struct AskOptions {
  bool yes = false;            // OK and Yes wherever they are offered; never Retry
  std::vector<Text> answers;   // "ok", "cancel", "yes", "no", "retry", used in turn before anything else
  Text messages_file;          // each box is written here, one JSON object a line; empty: nowhere
  bool keep_auditing = false;  // whether to go on with an audit is not asked: Yes, and each error takes one line
};

// The words of AskOptions::answers.
[[nodiscard]] const std::vector<Text>& AnswerWords();

// Message boxes as text on standard error. A box with one button is only shown. Any other takes, in this order, the
// next of the answers; OK or Yes with `yes`; what the user types on a terminal; the button that refuses. With
// `keep_auditing` the question whether to go on with an audit is answered before all of these, and uses none up.
class ConsoleMessageBoxes : public MessageBoxes {
 public:
  // `progress` is taken off the screen before a box shows and must outlive the boxes. The messages file is not touched
  // before StartMessages.
  ConsoleMessageBoxes(const AskOptions& options, ConsoleProgress& progress);

  // Makes the messages file, or empties it, and writes what was shown before; for the command to call once it is
  // certain that nothing else lies there. Fails with Failure 75 and the path where it cannot be made.
  void StartMessages();

  [[nodiscard]] Integer Show(const Text& text, Long style, const Text& caption) override;
  // The same for a question that neither `answers` nor `yes` answers: the user does on a terminal, and it is refused
  // where nobody can be asked. Its refusal is not that of the operation.
  [[nodiscard]] Integer ShowToUser(const Text& text, Long style, const Text& caption);
  // The terminal has no sounds.
  void PlaySound(const Text& /*name*/) override {}

  // For a dialog that is no box but has the buttons of `style`: what --answer or --yes says, and the button that
  // refuses where nobody can be asked. Nothing where the user is to be asked.
  [[nodiscard]] std::optional<Integer> GivenAnswer(Long style);
  // Such a dialog has ended with OK or Cancel, and with a path or, where the name would not do, without. Kept in the
  // messages file. Cancel is a refusal; a path takes back refusals of other names within the dialog.
  void NoteDialog(const Text& title, Integer answer, const Text& path);

  // With `keep_auditing` an error that does not tell its record gets that of the tally, which a text import fills.
  // Null, or alive while boxes of an audit are shown.
  void FollowAudit(const TextImportTally* tally) { audit_ = tally; }

  // Keeps the reason of an operation's end in the messages file, as a box without an icon and buttons.
  void NoteReason(const Text& reason);
  // A box has told all of these.
  [[nodiscard]] bool HasTold(const std::vector<Text>& words) const;
  // The text of the last box; empty before the first.
  [[nodiscard]] Text LastText() const { return shown_.empty() ? Text() : shown_.back(); }

  // A question with OK and Cancel, or Yes and No, was answered by the button that refuses. No to going on with an audit
  // is no refusal: the file has an error, and nobody has cancelled.
  [[nodiscard]] bool WasRefused() const { return refused_; }
  // How many errors audits have asked about, and whether one was answered No.
  [[nodiscard]] long long AuditErrors() const { return audit_errors_; }
  [[nodiscard]] bool WasAuditStopped() const { return audit_stopped_; }
  // An answer was given that the box has no button for; it was taken as the refusing button.
  [[nodiscard]] bool WasMisanswered() const { return misanswered_; }

 private:
  [[nodiscard]] Integer Choose(Long style);
  [[nodiscard]] Integer AskOnTerminal(Long style);
  [[nodiscard]] Integer AnswerAudit(const Text& text, Long style, const Text& caption);
  // What an audit's error leaves out, to stand behind it.
  [[nodiscard]] Text MissingRecord(const Text& text) const;
  // Shows a box as it stands and lets a button be chosen.
  [[nodiscard]] Integer Ask(const Text& text, Long style, const Text& caption);
  void Record(const Text& text, Long style, Integer answer, const Text& path = "");
  void WriteMessage(const Text& line);

  bool yes_;
  bool keep_auditing_;
  std::deque<Text> answers_;
  Text messages_path_;
  std::ofstream messages_;
  Text waiting_messages_;  // until the file is made
  ConsoleProgress& progress_;
  std::deque<Text> shown_;  // the last boxes
  const TextImportTally* audit_ = nullptr;
  bool refused_ = false;
  bool misanswered_ = false;
  bool audit_stopped_ = false;
  long long audit_errors_ = 0;
};

}  // namespace tallybook::cli
