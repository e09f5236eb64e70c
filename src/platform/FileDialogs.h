// The dialogs of the system: files, colours, fonts, printers, folders, help. One thread.
#pragma once

#include <vector>

#include "base/Types.h"

namespace tallybook {

// What a file dialog is asked, and what it answers in place. The file name and title are the buffers' texts.
struct FileDialogRequest {
  bool save = false;  // otherwise open
  Long owner = 0;
  Text title;
  Text filter;  // pairs of text and pattern, each ended by a zero character
  Long filter_index = 0;
  Text file_name;            // in: proposed; out: chosen path
  Text file_title;           // in and out: its name without the folder
  Long max_file_size = 255;  // characters; a longer choice is refused with extended error 0x3003
  Text initial_folder;
  Text default_extension;
  Long flags = 0;
  Long extended_error = 0;  // out
};

struct ColorDialogRequest {
  Long owner = 0;
  Long color = 0;                   // in and out
  std::vector<Long> custom_colors;  // offered beside the stock's; out: as the user left them
  Long flags = 0;
  Long extended_error = 0;
};

struct FontDialogRequest {
  Long owner = 0;
  Long device_context = 0;  // -1: that of the application's printer
  Text name;
  Single size = 0;  // points
  bool bold = false;
  bool italic = false;
  bool underline = false;
  bool strikethrough = false;
  Long color = 0;
  Long flags = 0;
  Long extended_error = 0;
};

struct PrinterDialogRequest {
  Long owner = 0;
  Text device_name;
  Long from_page = 0;
  Long to_page = 0;
  Long min_page = 0;
  Long max_page = 0;
  Long copies = 1;
  Integer orientation = 0;
  Integer paper_size = 0;
  Integer bin = 0;
  Long flags = 0;
  Long extended_error = 0;
};

struct FolderDialogRequest {
  Long owner = 0;
  Text title;
  Text initial_folder;
  Long flags = 0;
};

// The system's own dialogs. Each is modal and gives 0 where the user cancelled or the dialog failed.
class FileDialogs {
 public:
  virtual ~FileDialogs() = default;
  [[nodiscard]] virtual Long ShowFile(FileDialogRequest& request) = 0;
  [[nodiscard]] virtual Long ShowColor(ColorDialogRequest& request) = 0;
  [[nodiscard]] virtual Long ShowFont(FontDialogRequest& request) = 0;
  [[nodiscard]] virtual Long ShowPrinter(PrinterDialogRequest& request) = 0;
  // The folder chosen; empty where the user cancelled.
  [[nodiscard]] virtual Text ShowFolder(FolderDialogRequest& request) = 0;
  virtual void ShowHelp(Long window, const Text& help_file, Long command, Long topic) = 0;
};

}  // namespace tallybook
