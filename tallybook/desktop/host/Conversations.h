// The conversations of the component as the main window runs them over one book: each opens the book, runs, and closes
// it again, and says what came of it. The rules of the reference host hold through all of them: what is no sound
// definition is refused before anything is loaded, outputs are written whole and never onto a book, a book that is in
// use is waited for, and what fails is told.
//
//   Conversations conversations({.platform = platform, .app = app, .factory = factory}, book_path, main_window);
//   const ConversationResult result = conversations.Definitions();
//   if (result.ChangedFigures()) Refresh();
//
// One at a time: while one runs the others do nothing. It runs within the call, which lets events in; the owner stays
// usable, may be minimised and may ask the conversation to end. Nobody else writes to the book meanwhile.
//
// One thread. All means, and the owner, outlive the object.
#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <vector>

#include "base/Types.h"
#include "tallybook/desktop/host/FileCheck.h"
#include "tallybook/engine/Journal.h"
#include "tallybook/engine/UndoRequest.h"
#include "tallybook/engine/WorkWatch.h"

class QWidget;

namespace tallybook::engine {
class Book;
}

namespace tallybook::desktop {

class DesktopApp;
class DesktopFactory;
class QtPlatform;

struct ConversationMeans {
  QtPlatform& platform;
  DesktopApp& app;
  DesktopFactory& factory;
};

struct ConversationResult {
  // Whether it ran: false where the book could not be had, or another conversation runs. The user has been told.
  bool ran = false;
  // What it left in the journal, oldest first.
  std::vector<engine::JournalEntry> entries;
  // The last file that it wrote; empty for none.
  Text output;
  // The user has left an import's prompt to have its file looked at first, as the prompt stood.
  std::optional<FileCheckWish> check;
  [[nodiscard]] bool ChangedFigures() const { return !entries.empty(); }
};

class Conversations {
 public:
  Conversations(const ConversationMeans& means, const Text& book, QWidget& owner);
  ~Conversations();
  Conversations(const Conversations&) = delete;
  Conversations& operator=(const Conversations&) = delete;

  // Ask for a range of dates and a file, and export. `current_date` is where the range starts out, and becomes where
  // the user left it. The book is opened to look.
  ConversationResult ExportTable(Date& current_date);
  ConversationResult ExportQdx(Date& current_date);
  // Shows the list of exchange definitions. With a file, those whose pattern matches it are selected; where none does,
  // a new one is begun with that name.
  ConversationResult Definitions(const Text& file = "");
  // The same with one definition selected, and where its pattern finds the file, its import begun.
  ConversationResult ImportByDefinition(Integer number, const Text& file);
  // Ask for a text file and import it; `file` stands in the prompt where one is given.
  ConversationResult ImportCsv(const Text& file = "");
  ConversationResult ImportDelimited(const Text& file = "", bool allow_system_fields = false);
  // Take back one entry of the journal, or all that is left of a command. What that would do is found out first and
  // asked: where figures have been changed since, with what is to become of them (UndoDialog.h). Within a conversation
  // the book that it works on is used, as long as nothing is being answered there; otherwise the user is told why not.
  ConversationResult Undo(Long id);
  ConversationResult UndoCommand(Long command);

  // What the application itself does with the book, as a conversation: opens it to look, or to change it, hands it
  // over, and closes it. What fails is told. `ran` is what the act gave; to refuse it tells why itself and gives false.
  using Act = std::function<bool(engine::Book& book)>;
  ConversationResult Look(const Act& act);
  ConversationResult Change(const Act& act);
  // Runs `work`, which opens the book itself, on a thread of its own, while the windows live; `title` is what the
  // progress shows, with Cancel where the work asks its watch. Nothing but files may be reached from there. False where
  // it failed, which is told, where the user cancelled it, or where something runs.
  using Work = std::function<void(engine::WorkWatch& watch)>;
  bool Beside(const Text& title, const Work& work);
  // The same within an act of Look or Change, with the book that it was handed over; nobody else reaches that
  // meanwhile. Fails as the work does, which ends the act: a cancel is not told.
  void WithinBeside(const Text& title, const Work& work);

  [[nodiscard]] bool IsRunning() const;
  // The application wants to close, which HostApp::Finished says from here on: dialogs that are open end as their close
  // boxes do, the list closes, work that can be cancelled is, and questions wait for the user. Where he stays in a
  // dialog the application does not want to close any more.
  void AskToEnd();

  // Told whenever figures were changed, also while a conversation goes on; and when one begins and ends.
  void SetChangeListener(std::function<void()> listener);
  void SetRunningListener(std::function<void(bool running)> listener);

 private:
  class Run;
  struct State;

  template <typename Converse>
  ConversationResult Start(bool imports, Converse converse);
  template <typename Shown>
  ConversationResult ShowDefinitions(const Text& file, Shown on_shown);
  template <typename Converse>
  ConversationResult StartPlain(bool imports, Converse converse);
  static ConversationResult TakeBack(const std::shared_ptr<State>& state, engine::UndoRequest request);
  static bool AskAndTakeBack(const State& state, engine::Book& book, engine::UndoRequest request);

  std::shared_ptr<State> state_;
};

}  // namespace tallybook::desktop
