#include "forms/CCommonDialog.h"

#include <algorithm>
#include <string>
#include <utility>

#include "base/CodePage.h"
#include "base/Narrow.h"
#include "base/Statements.h"
#include "base/Texts.h"
#include "forms/modAllUI.h"
#include "platform/MessageBoxes.h"
#include "platform/Platform.h"
#include "support/WinAPI.h"

namespace tallybook {

namespace {

constexpr std::size_t kCustomColorCount = 16;
constexpr Long kWhite = 0xFFFFFF;
// Characters of a font's face name; one more ends it in the system's record.
constexpr Long kLongestFaceName = 31;

FileDialogs& TheDialogs() {
  if (FileDialogs* const dialogs = ThePlatform().file_dialogs) return *dialogs;
  throw Failure(FailureNumber::kFeatureUnavailable, "This platform has no standard dialogs");
}

// The text cut to `length` characters.
Text CutTo(const Text& text, Long length) {
  return CharacterCount(text) > length ? PadRight(text, ' ', length) : text;
}

// Platforms without a shell have no folder in force to keep.
Text FolderInForce() {
  return ThePlatform().shell == nullptr ? Text() : CurrentFolder();
}

}  // namespace

Text ConvertFilter(const Text& filter) {
  Text converted = filter;
  for (char& character : converted) {
    if (character == ':' || character == '|') character = '\0';
  }
  return converted + Text(2, '\0');
}

FileDialogRequest CCommonDialog::FileRequest() const {
  FileDialogRequest request;
  request.save = action_ == kSaveAction;
  request.owner = hwnd_;
  request.filter = ConvertFilter(filter_);
  request.filter_index = filter_index_;
  request.max_file_size = max_file_size_ > 0 ? max_file_size_ : kDefaultFileSize;
  request.file_name = CutTo(filename_, request.max_file_size);
  request.file_title = CutTo(file_title_, request.max_file_size);
  request.initial_folder = init_dir_;
  request.title = dialog_title_;
  request.flags = flags_;
  request.default_extension = default_ext_;
  if ((flags_ & kExplorerStyle) == 0) request.flags |= kWithHook | kWithoutNetwork;
  return request;
}

// Takes over what the user chose; `request` is the one that the dialog has answered.
void CCommonDialog::TakeChoice(FileDialogRequest& request) {
  filename_ = CutAtNull(request.file_name);
  file_title_ = CutAtNull(request.file_title);
  filter_index_ = ToInteger(request.filter_index);
  const Long added = (flags_ & kExplorerStyle) == 0 ? (kWithHook | kWithoutNetwork) & ~flags_ : 0;
  flags_ = request.flags & ~added;
  if (filename_.empty()) filename_ = file_title_;
  if (!filename_.empty()) return;
  extended_error_ = request.extended_error;
  ShowMessage("Error retrieving filename from OpenFileName structure.  The Extended return code is: " +
                  std::to_string(extended_error_),
              kExclamationIcon, "");
}

void CCommonDialog::ShowFileDialog(Integer action) {
  Text folder;
  FileDialogRequest request;
  api_return_ = 0;
  extended_error_ = 0;
  action_ = action;
  Statements at(Policy::kGoOn, [this](const Failure& failure) {
    ShowMessage("Error Getting name of file in ShowFileDialog - Err = " + std::to_string(failure.Code()) +
                    " in line: " + std::to_string(failure.Statement()) + " - " + failure.Description() +
                    " - extended error:" + std::to_string(extended_error_),
                kExclamationIcon, "");
    return false;
  });
  [[maybe_unused]] const bool ran = at.Run([&] {
    folder = at(10, FolderInForce);
    at(20, [&] { request = FileRequest(); });
    at(80, [&] { api_return_ = TheDialogs().ShowFile(request); });
    at(90, [&] { RefuseLongName(request); });
    if (api_return_ != 0) at(110, [&] { TakeChoice(request); });
    if (!folder.empty()) at(120, [&] { SetCurrentFolder(folder); });
  });
  // After the folder is back, meant: a cancel does not move it either.
  if (api_return_ == 0) RaiseOnCancel("");
}

// A dialog that does not hold to the buffer's length itself is held to it here: a path that is cut names another file.
void CCommonDialog::RefuseLongName(const FileDialogRequest& request) {
  const Text chosen = CutAtNull(request.file_name);
  if (api_return_ == 0 || CharacterCount(chosen) <= request.max_file_size) return;
  api_return_ = 0;
  extended_error_ = kBufferTooSmall;
  throw Failure(FailureNumber::kPathOrAccess, "The chosen name has " + std::to_string(CharacterCount(chosen)) +
                                                  " characters, " + std::to_string(request.max_file_size) +
                                                  " at most can be taken: " + chosen);
}

void CCommonDialog::RaiseOnCancel(const Text& description) const {
  if (cancel_error_) throw Failure(FailureNumber::kDialogCancelled, description);
}

void CCommonDialog::ShowColor() {
  action_ = kColorAction;
  ColorDialogRequest request;
  request.owner = hwnd_;
  request.color = color_;
  request.custom_colors.assign(kCustomColorCount, kWhite);
  request.flags = flags_;
  api_return_ = TheDialogs().ShowColor(request);
  if (api_return_ == 1) color_ = request.color;
  if (api_return_ != 0) return;
  extended_error_ = request.extended_error;
  RaiseOnCancel("Cancel Pressed");
}

void CCommonDialog::ShowFont() {
  action_ = kFontAction;
  FontDialogRequest request;
  request.owner = hwnd_;
  request.device_context = hdc_;
  request.name = CutTo(font_name_, kLongestFaceName);
  request.size = font_size_;
  request.bold = font_bold_;
  request.italic = font_italic_;
  request.underline = font_underline_;
  request.strikethrough = font_strikethru_;
  request.color = color_;
  request.flags = flags_;
  api_return_ = TheDialogs().ShowFont(request);
  if (api_return_ == 0) {
    extended_error_ = request.extended_error;
    RaiseOnCancel("");
    return;
  }
  font_name_ = request.name;
  font_size_ = request.size;
  font_bold_ = request.bold;
  font_italic_ = request.italic;
  font_underline_ = request.underline;
  font_strikethru_ = request.strikethrough;
  color_ = request.color;
}

void CCommonDialog::ShowPrinter() {
  action_ = kPrinterAction;
  PrinterDialogRequest request;
  request.owner = hwnd_;
  request.flags = flags_;
  request.from_page = from_page_;
  request.to_page = to_page_;
  request.min_page = min_;
  request.max_page = max_;
  request.copies = copies_;
  // Only a printer that is named has settings to begin with.
  if (!device_name_.empty()) {
    request.device_name = device_name_;
    request.orientation = orientation_;
    request.paper_size = paper_size_;
    request.bin = bin_num_;
  }
  api_return_ = TheDialogs().ShowPrinter(request);
  if (api_return_ == 0) {
    extended_error_ = request.extended_error;
    RaiseOnCancel("");
    return;
  }
  flags_ = request.flags;
  from_page_ = request.from_page;
  to_page_ = request.to_page;
  min_ = request.min_page;
  max_ = request.max_page;
  copies_ = request.copies;
  device_name_ = request.device_name;
  orientation_ = request.orientation;
  paper_size_ = request.paper_size;
  bin_num_ = request.bin;
}

void CCommonDialog::ShowHelp() {
  action_ = kHelpAction;
  const Long topic = TrimBoth(help_context_).empty() ? 0 : WholeLongText(help_context_);
  TheDialogs().ShowHelp(hdc_, help_file_, help_command_, topic);
}

}  // namespace tallybook
