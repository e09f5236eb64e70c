// The system's standard dialogs on Qt: files to open and to save, colours, fonts, printers, folders, help. The
// desktop's own dialogs where it has them, Qt's elsewhere. One thread; each is modal over its owner and lets events in.
#pragma once

#include <functional>
#include <utility>

#include "platform/FileDialogs.h"
#include "tallybook/desktop/host/WindowHandles.h"

class QWidget;

namespace tallybook::desktop {

class QtFileDialogs : public FileDialogs {
 public:
  // `handles` must outlive this.
  explicit QtFileDialogs(WindowHandles& handles) : handles_(handles) {}

  // Filters match without regard to case, as files are found everywhere in this system. A name that the dialog may not
  // give (a folder that is not there, a file that must be and is not, one that is too long) is told over the dialog,
  // which stays; only a name longer than its buffer ends it, with the extended error that says so.
  [[nodiscard]] Long ShowFile(FileDialogRequest& request) override;
  // Colours are 0x00BBGGRR.
  [[nodiscard]] Long ShowColor(ColorDialogRequest& request) override;
  // Names, sizes and styles; the colour of a font is not asked for and stays.
  [[nodiscard]] Long ShowFont(FontDialogRequest& request) override;
  // Paper sizes are the system's numbers (9: A4), orientation 1 is portrait and 2 landscape; the bin stays.
  [[nodiscard]] Long ShowPrinter(PrinterDialogRequest& request) override;
  [[nodiscard]] Text ShowFolder(FolderDialogRequest& request) override;
  void ShowHelp(Long window, const Text& help_file, Long command, Long topic) override;

  // Who shows help; empty: the desktop opens the help file.
  using HelpDisplay = std::function<void(const Text& help_file, Long topic)>;
  void SetHelpDisplay(HelpDisplay display) { help_ = std::move(display); }

 private:
  [[nodiscard]] QWidget* OwnerOf(Long handle) const;

  WindowHandles& handles_;
  HelpDisplay help_;
};

// The name filters that a dialog offers for a request's pairs of text and pattern: "CSV Files (*.csv)".
[[nodiscard]] std::vector<Text> NameFilters(const Text& pairs);

}  // namespace tallybook::desktop
