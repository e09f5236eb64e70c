// The main window: accounts, figures and chart of one book, and everything that is begun from its menus. With no book
// open it shows how to begin.
//
// One thread. The application object and the settings outlive it.
#pragma once

#include <QtWidgets/QMainWindow>
#include <memory>

#include "host/HostApp.h"
#include "tallybook/desktop/forms/LocaleStyle.h"
#include "tallybook/desktop/window/DesktopSettings.h"

namespace tallybook::desktop {

class AccountPane;
class ChartView;
struct ConversationMeans;
class FigurePane;

class MainWindow final : public QMainWindow {
 public:
  // What conversations need; with none of it the menu of data exchange is left out, and so is undo from the journal.
  // All of it outlives the window.
  MainWindow(HostApp& app, DesktopSettings& settings, const LocaleStyle& style,
             const ConversationMeans* means = nullptr);
  ~MainWindow() override;

  // Opens a book and shows it as it was looked at last. False where it cannot be opened, which is told; what was open
  // before stays then. A book in which something waits to be written is asked about first.
  bool OpenBook(const Text& path);
  // Back to the beginning. False where the user keeps what waits to be written.
  bool CloseBook();
  // The path of the open book; empty with none.
  [[nodiscard]] Text BookPath() const;
  // Makes the two books of the example in a folder of the user's, where they are not there yet, and opens the shop's.
  void OpenExample();
  // What was dropped on the window, or named when the program was started: a book is opened; an exchange file shows the
  // list of definitions, and a text file its prompt, over the open book, or else the one that was open last.
  void OpenFile(const Text& path);

  // Shows the page of the guide that tells of the window that is in front, whichever that is.
  void ShowHelp();

  // Tells what the user must know, in a window with a title.
  void Tell(const QString& words);

  [[nodiscard]] FigurePane& Figures();
  [[nodiscard]] AccountPane& Accounts();
  [[nodiscard]] ChartView& Chart();

 protected:
  void closeEvent(QCloseEvent* event) override;
  void dragEnterEvent(QDragEnterEvent* event) override;
  void dropEvent(QDropEvent* event) override;

 private:
  class Parts;
  std::unique_ptr<Parts> parts_;
};

}  // namespace tallybook::desktop
