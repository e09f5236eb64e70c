// The system's standard dialogs (file open and save, colour, font, printer, help) as a bag of properties with Show
// operations, which a library can create without a form. The dialogs themselves are the platform's
// (platform/FileDialogs.h, FileDialogs); what is kept here whatever the platform: the conversion of filters, the length
// of the file name buffers, and that a dialog does not move the folder in force.
//
// A property X reads as X(), letter by letter as the system names it, and writes as SetX(value).
// One thread. Each Show is modal: it returns when the dialog is gone.
#pragma once

#include <any>
#include <utility>

#include "base/Failure.h"
#include "base/Types.h"
#include "platform/FileDialogs.h"

namespace tallybook {

// The error that a cancelled dialog raises. Failure numbers have 16 bits, so it is raised as the number of its low
// half: FailureNumber::kDialogCancelled.
inline constexpr Long kDialogCancelledError = static_cast<Long>(0x8004037E);
static_assert((kDialogCancelledError & 0xFFFF) == static_cast<Long>(FailureNumber::kDialogCancelled));

// What Action says: the dialog last shown.
inline constexpr Integer kOpenAction = 1;
inline constexpr Integer kSaveAction = 2;
inline constexpr Integer kColorAction = 3;
inline constexpr Integer kFontAction = 4;
inline constexpr Integer kPrinterAction = 5;
inline constexpr Integer kHelpAction = 6;

// The length of the file name buffers, in characters, where MaxFileSize says none.
inline constexpr Long kDefaultFileSize = 255;
// Flags of the file dialog, as the system publishes them: ask before an old file is replaced; no read-only box; let
// several names be chosen; the folder, or the file, must be there; ask before a new file is made; long names.
inline constexpr Long kPromptToOverwrite = 0x2;
inline constexpr Long kHideReadOnly = 0x4;
inline constexpr Long kSeveralFiles = 0x200;
inline constexpr Long kPathMustExist = 0x800;
inline constexpr Long kFileMustExist = 0x1000;
inline constexpr Long kPromptToCreate = 0x2000;
inline constexpr Long kLongNames = 0x200000;
// The file dialog of the explorer's style, and the bits that are set for the system without it.
inline constexpr Long kExplorerStyle = 0x80000;
inline constexpr Long kWithHook = 0x20;
inline constexpr Long kWithoutNetwork = 0x20000;
// The extended error of a file name that is longer than its buffer.
inline constexpr Long kBufferTooSmall = 0x3003;

// A filter as the system takes it: every ":" and every "|" becomes a zero character, and two more end the text. Meant:
// a filter whose text or pattern holds a colon is split there too.
[[nodiscard]] Text ConvertFilter(const Text& filter);

class CCommonDialog {
 public:
  // Ask for a file to open, or to save into. The user's choice goes into Filename, FileTitle and FilterIndex, with the
  // bits that the system changed in flags; where the chosen name is empty it takes FileTitle. APIReturn is 0 where the
  // user cancelled, and all of these are as they were. The folder in force before is in force again afterwards, on
  // every way out.
  //   fails   FailureNumber::kDialogCancelled, with no text, where the user cancelled and CancelError is true. Nothing
  //           else is raised: any other failure is told in a message box, statement by statement, and counts as a
  //           cancel where it kept the dialog from its answer.
  void ShowOpen() { ShowFileDialog(kOpenAction); }
  void ShowSave() { ShowFileDialog(kSaveAction); }

  // Ask for a colour, a font and a printer, in and out of the properties named for them. A cancel leaves them as they
  // were.
  //   fail    FailureNumber::kDialogCancelled where the user cancelled and CancelError is true, with the text "Cancel
  //           Pressed" in the colour dialog and none in the others; 73 on a platform without these dialogs
  void ShowColor();
  void ShowFont();
  void ShowPrinter();
  // Shows HelpFile at the topic HelpContext, for the window hdc. Fails with 73 likewise, and with 13 for a topic that
  // is no number; an empty one is 0.
  void ShowHelp();

  // In: the proposed name. Out: the chosen path.
  [[nodiscard]] const Text& Filename() const { return filename_; }
  void SetFilename(const Text& name) { filename_ = name; }
  // Pairs of text and pattern, separated by "|".
  [[nodiscard]] const Text& filter() const { return filter_; }
  void SetFilter(const Text& filter) { filter_ = filter; }
  [[nodiscard]] Integer Action() const { return action_; }
  // From 1, in and out.
  [[nodiscard]] Integer FilterIndex() const { return filter_index_; }
  void SetFilterIndex(Integer index) { filter_index_ = index; }
  [[nodiscard]] bool CancelError() const { return cancel_error_; }
  void SetCancelError(bool raises) { cancel_error_ = raises; }
  [[nodiscard]] Long Color() const { return color_; }
  void SetColor(Long color) { color_ = color; }
  [[nodiscard]] Long Copies() const { return copies_; }
  void SetCopies(Long copies) { copies_ = copies; }
  // Added by the system where the user gives none.
  [[nodiscard]] const Text& DefaultExt() const { return default_ext_; }
  void SetDefaultExt(const Text& extension) { default_ext_ = extension; }
  [[nodiscard]] const Text& DialogTitle() const { return dialog_title_; }
  void SetDialogTitle(const Text& title) { dialog_title_ = title; }
  // The system's flags of the dialog, in and out.
  [[nodiscard]] Long flags() const { return flags_; }
  void SetFlags(Long flags) { flags_ = flags; }
  [[nodiscard]] bool FontBold() const { return font_bold_; }
  void SetFontBold(bool bold) { font_bold_ = bold; }
  [[nodiscard]] bool FontItalic() const { return font_italic_; }
  void SetFontItalic(bool italic) { font_italic_ = italic; }
  [[nodiscard]] const Text& FontName() const { return font_name_; }
  void SetFontName(const Text& name) { font_name_ = name; }
  // In points.
  [[nodiscard]] Single FontSize() const { return font_size_; }
  void SetFontSize(Single points) { font_size_ = points; }
  [[nodiscard]] bool FontStrikethru() const { return font_strikethru_; }
  void SetFontStrikethru(bool strikethru) { font_strikethru_ = strikethru; }
  [[nodiscard]] bool FontUnderline() const { return font_underline_; }
  void SetFontUnderline(bool underline) { font_underline_ = underline; }
  [[nodiscard]] Long FromPage() const { return from_page_; }
  void SetFromPage(Long page) { from_page_ = page; }
  [[nodiscard]] Long ToPage() const { return to_page_; }
  void SetToPage(Long page) { to_page_ = page; }
  [[nodiscard]] Long Min() const { return min_; }
  void SetMin(Long page) { min_ = page; }
  [[nodiscard]] Long Max() const { return max_; }
  void SetMax(Long page) { max_ = page; }
  // The owner window.
  [[nodiscard]] Long hWnd() const { return hwnd_; }
  void SetHWnd(Long window) { hwnd_ = window; }
  // The device context; -1 in the font dialog means that of the application's printer.
  [[nodiscard]] Long hdc() const { return hdc_; }
  void SetHdc(Long device_context) { hdc_ = device_context; }
  [[nodiscard]] Long HelpCommand() const { return help_command_; }
  void SetHelpCommand(Long command) { help_command_ = command; }
  [[nodiscard]] const Text& HelpContext() const { return help_context_; }
  void SetHelpContext(const Text& topic) { help_context_ = topic; }
  [[nodiscard]] const Text& HelpFile() const { return help_file_; }
  void SetHelpFile(const Text& path) { help_file_ = path; }
  [[nodiscard]] const Text& HelpKey() const { return help_key_; }
  void SetHelpKey(const Text& key) { help_key_ = key; }
  // The starting folder.
  [[nodiscard]] const Text& InitDir() const { return init_dir_; }
  void SetInitDir(const Text& folder) { init_dir_ = folder; }
  // The length of the file name buffers, in characters; 0 means 255.
  [[nodiscard]] Long MaxFileSize() const { return max_file_size_; }
  void SetMaxFileSize(Long characters) { max_file_size_ = characters; }
  // A slot for whatever the caller wants to keep with the dialog.
  [[nodiscard]] const std::any& Object() const { return object_; }
  void SetObject(std::any object) { object_ = std::move(object); }
  [[nodiscard]] bool PrinterDefault() const { return printer_default_; }
  void SetPrinterDefault(bool is_default) { printer_default_ = is_default; }
  // In and out: the name without its path.
  [[nodiscard]] const Text& FileTitle() const { return file_title_; }
  void SetFileTitle(const Text& title) { file_title_ = title; }
  // The last system call's return value, and the last extended error.
  [[nodiscard]] Long APIReturn() const { return api_return_; }
  [[nodiscard]] Long ExtendedError() const { return extended_error_; }
  [[nodiscard]] const Text& DeviceName() const { return device_name_; }
  void SetDeviceName(const Text& name) { device_name_ = name; }
  [[nodiscard]] Integer Orientation() const { return orientation_; }
  void SetOrientation(Integer orientation) { orientation_ = orientation; }
  [[nodiscard]] Integer PaperSize() const { return paper_size_; }
  void SetPaperSize(Integer size) { paper_size_ = size; }
  [[nodiscard]] Integer BinNum() const { return bin_num_; }
  void SetBinNum(Integer bin) { bin_num_ = bin; }

 private:
  void ShowFileDialog(Integer action);
  [[nodiscard]] FileDialogRequest FileRequest() const;
  void RefuseLongName(const FileDialogRequest& request);
  void TakeChoice(FileDialogRequest& request);
  void RaiseOnCancel(const Text& description) const;

  Text filename_;
  Text filter_;
  Integer action_ = 0;
  Integer filter_index_ = 0;
  bool cancel_error_ = false;
  Long color_ = 0;
  Long copies_ = 0;
  Text default_ext_;
  Text dialog_title_;
  Long flags_ = 0;
  bool font_bold_ = false;
  bool font_italic_ = false;
  bool font_strikethru_ = false;
  bool font_underline_ = false;
  Text font_name_;
  Single font_size_ = 0;
  Long from_page_ = 0;
  Long to_page_ = 0;
  Long min_ = 0;
  Long max_ = 0;
  Long hwnd_ = 0;
  Long hdc_ = 0;
  Long help_command_ = 0;
  Text help_context_;
  Text help_file_;
  Text help_key_;
  Text init_dir_;
  Long max_file_size_ = 0;
  std::any object_;
  bool printer_default_ = false;
  Text file_title_;
  Long api_return_ = 0;
  Long extended_error_ = 0;
  Text device_name_;
  Integer orientation_ = 0;
  Integer paper_size_ = 0;
  Integer bin_num_ = 0;
};

}  // namespace tallybook
