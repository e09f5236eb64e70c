// The seam between the component and the machine: small abstract classes, one for each concern, gathered in one record
// that the embedding application installs once, before it uses anything else of the component. The record and what it
// points to belong to the application and must outlive the component's use. One thread.
#pragma once

#include <cstddef>
#include <memory>
#include <span>
#include <vector>

#include "support/TextEncoding.h"
#include "support/Types.h"

namespace tallybook {

class Clock {
 public:
  virtual ~Clock() = default;
  [[nodiscard]] virtual Date Now() = 0;  // local time
  // Universal time, which no change of the local clock sets back: what a file's time of modification is held against.
  [[nodiscard]] virtual Date UniversalNow() = 0;
  virtual void Sleep(Single seconds) = 0;              // gives the machine to others meanwhile
  [[nodiscard]] virtual Text LongDate(Date date) = 0;  // the user's long date format
};

// An open file. Closed by Close, or by its end without a word about what could not be written: call Close.
// Every operation fails with a Failure: 57 device error, 61 disk full, 70 permission denied.
class OpenFile {
 public:
  virtual ~OpenFile() = default;
  // Reads up to `into.size()` bytes from `offset` and gives how many there were; fewer only at the end of the file.
  // A read that fails has moved nothing.
  [[nodiscard]] virtual std::size_t ReadAt(long long offset, std::span<std::byte> into) = 0;
  // Writes all of `from` at `offset`. A write that fails may have written a part; repeating it mends that.
  virtual void WriteAt(long long offset, std::span<const std::byte> from) = 0;
  [[nodiscard]] virtual long long Size() = 0;
  // Hands everything to the operating system and closes; afterwards nothing else may be called.
  virtual void Close() = 0;
};

// How a file is opened. `Sharing` states what others may do while it is open.
enum class Access { kRead, kWrite, kReadWrite };
enum class Sharing { kShared, kLockWrite, kLockReadWrite };
enum class Creation { kMustExist, kCreateIfMissing, kReplace };

struct FileAttributes {
  bool found = false;
  bool directory = false;
  bool sharing_violation = false;  // the system would not say because another process holds the file
};

struct FoundFile {
  Text name;      // without its folder
  Date modified;  // universal time
};

// Files. `/` and `\` both separate the parts of a path on every platform.
class FileSystem {
 public:
  virtual ~FileSystem() = default;
  // Fails with 53 file not found, 70 in use or not permitted, 75 a directory or bad path, 76 folder not found, 61, 57.
  [[nodiscard]] virtual std::unique_ptr<OpenFile> Open(const Text& path, Access access, Sharing sharing,
                                                       Creation creation) = 0;
  [[nodiscard]] virtual FileAttributes Attributes(const Text& path) = 0;
  // Fail with 53, 70 (also while this component holds the file open, here or in another process), 75.
  virtual void Delete(const Text& path) = 0;
  // Replaces nothing: a file of the new name is a failure (58 is not used; 75).
  virtual void Rename(const Text& old_path, const Text& new_path) = 0;
  // Replaces a file of the new name.
  virtual void Copy(const Text& from_path, const Text& to_path) = 0;
  // The files (no directories) that match a path whose name part may hold `*` and `?`, without regard to case, in
  // case-insensitive order of their names. `*.*` matches every name; an empty pattern and a missing folder match
  // nothing.
  [[nodiscard]] virtual std::vector<FoundFile> Find(const Text& pattern) = 0;
  // What AddBackslash appends to a path that has no separator yet.
  [[nodiscard]] virtual char Separator() const = 0;
};

// Message boxes. `style` is a sum of the bits below; the button pressed is the result.
inline constexpr Long kOkOnly = 0x0;
inline constexpr Long kOkCancel = 0x1;
inline constexpr Long kYesNo = 0x4;
inline constexpr Long kRetryCancel = 0x5;
inline constexpr Long kButtonsMask = 0xF;
inline constexpr Long kStopIcon = 0x10;
inline constexpr Long kQuestionIcon = 0x20;
inline constexpr Long kExclamationIcon = 0x30;
inline constexpr Long kInformationIcon = 0x40;
inline constexpr Long kIconMask = 0xF0;
inline constexpr Long kSecondButtonDefault = 0x100;

inline constexpr Integer kOk = 1;
inline constexpr Integer kCancel = 2;
inline constexpr Integer kRetry = 4;
inline constexpr Integer kYes = 6;
inline constexpr Integer kNo = 7;

// The button that refuses what a box asks: Cancel, No, or OK where there is no other. The answer wherever nobody can be
// asked.
[[nodiscard]] Integer RefusingButton(Long style);

class MessageBoxes {
 public:
  virtual ~MessageBoxes() = default;
  [[nodiscard]] virtual Integer Show(const Text& text, Long style, const Text& caption) = 0;
  // Plays a system sound by its name, without waiting for its end.
  virtual void PlaySound(const Text& name) = 0;
};

// The user interface's queue of pending input.
class InputQueue {
 public:
  virtual ~InputQueue() = default;
  // True when work of the kinds in `mask` waits. The kinds that matter here are told at HandlePendingInput.
  [[nodiscard]] virtual bool HasPending(Long mask) = 0;
  // Lets the user interface run once.
  virtual void RunOnce() = 0;
};

enum class Pointer { kDefault, kBusy };

class Form;

// A place on the screen, in the screen's units.
struct Place {
  Long left = 0;
  Long top = 0;
  Long width = 0;
  Long height = 0;
  bool operator==(const Place&) const = default;
};

// The screen: the pointer's shape, and windows. A window is known by its handle, a number that is never 0. Handles may
// also be those of windows that the host has made; an operation on a handle that no window has does nothing and answers
// with nothing.
class Screen {
 public:
  virtual ~Screen() = default;
  virtual void SetPointer(Pointer pointer) = 0;

  // Makes a hidden window that shows `form`, and gives its handle. The form outlives the window.
  [[nodiscard]] virtual Long CreateWindow(Form& form) = 0;
  virtual void DestroyWindow(Long window) = 0;
  virtual void ShowWindow(Long window) = 0;
  virtual void HideWindow(Long window) = 0;
  // Whether the window itself is shown: not hidden by HideWindow or by its host. One whose owner is hidden is shown all
  // the same. False on a screen without windows.
  [[nodiscard]] virtual bool IsVisible(Long window) = 0;
  // While a window is frozen it looks as it did; what changed is drawn when it is thawed.
  virtual void FreezeWindow(Long window, bool frozen) = 0;
  virtual void EnableWindow(Long window, bool enabled) = 0;
  // The window that has the input; bring one to the front.
  [[nodiscard]] virtual Long ActiveWindow() = 0;
  virtual void ActivateWindow(Long window) = 0;
  // The kind of a window; that of the component's own windows holds "Thunder".
  [[nodiscard]] virtual Text ClassName(Long window) = 0;
  // Makes `owner` the window's parent and gives the parent before.
  virtual Long SetParent(Long window, Long owner) = 0;
  [[nodiscard]] virtual Place WindowPlace(Long window) = 0;
  virtual void SetWindowPlace(Long window, const Place& place) = 0;
  // 0 normal, 1 minimised, 2 maximised; both bits at once are 3.
  [[nodiscard]] virtual Integer WindowState(Long window) = 0;
  virtual void SetWindowState(Long window, Integer state) = 0;
  // The desktop without bars and docks.
  [[nodiscard]] virtual Place WorkArea() = 0;
  // The width of the system's vertical scroll bar.
  [[nodiscard]] virtual Long ScrollBarWidth() = 0;
};

// A screen that has no windows, for platforms without one: a form that is shown there stays unseen.
class ScreenWithoutWindows : public Screen {
 public:
  void SetPointer(Pointer pointer) override;
  [[nodiscard]] Long CreateWindow(Form& form) override;
  void DestroyWindow(Long window) override;
  void ShowWindow(Long window) override;
  void HideWindow(Long window) override;
  [[nodiscard]] bool IsVisible(Long window) override;
  void FreezeWindow(Long window, bool frozen) override;
  void EnableWindow(Long window, bool enabled) override;
  [[nodiscard]] Long ActiveWindow() override;
  void ActivateWindow(Long window) override;
  [[nodiscard]] Text ClassName(Long window) override;
  Long SetParent(Long window, Long owner) override;
  [[nodiscard]] Place WindowPlace(Long window) override;
  void SetWindowPlace(Long window, const Place& place) override;
  [[nodiscard]] Integer WindowState(Long window) override;
  void SetWindowState(Long window, Integer state) override;
  [[nodiscard]] Place WorkArea() override;
  [[nodiscard]] Long ScrollBarWidth() override;

 private:
  Long last_window_ = 0;
};

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

// No application is associated with a file's type: an answer of Shell::Open.
inline constexpr Long kNoAssociation = 31;

// The desktop's shell, and the process's folders.
class Shell {
 public:
  virtual ~Shell() = default;
  // Opens a file with its associated application, whose window is to come up in `state` (0 normal, 1 minimised,
  // 2 maximised); a shell that has no say in that leaves it to the application. Above 32 is success.
  [[nodiscard]] virtual Long Open(const Text& file_name, Integer state) = 0;
  // Starts a program in a folder.
  virtual void Run(const Text& program, const Text& arguments, const Text& folder) = 0;
  // Each ends in the separator; empty where it cannot be told.
  [[nodiscard]] virtual Text SystemFolder() = 0;
  [[nodiscard]] virtual Text WindowsFolder() = 0;
  [[nodiscard]] virtual Text CurrentFolder() = 0;
  virtual void SetCurrentFolder(const Text& path) = 0;
  // The platform id of the system's version information.
  [[nodiscard]] virtual Long PlatformId() = 0;
};

struct StopReason;

// Told of a record that cannot be read while figures are written or exported, right before the process ends
// (StopProgram). It may tell the user and write what he waits for, a report or a log; the database is not to be touched.
class StopWitness {
 public:
  virtual ~StopWitness() = default;
  virtual void ProgramStops(const StopReason& reason) = 0;
};

struct Platform {
  Clock* clock = nullptr;
  FileSystem* files = nullptr;
  MessageBoxes* message_boxes = nullptr;
  InputQueue* input = nullptr;
  Screen* screen = nullptr;
  FileDialogs* file_dialogs = nullptr;  // these two may be null on a platform without a screen
  Shell* shell = nullptr;
  Text application_title;                              // the caption of a message box that is given none
  TextEncoding text_encoding = TextEncoding::kDetect;  // of the text files that imports read
  StopWitness* stop_witness = nullptr;                 // may be null
};

// Installs the platform for the process. Failure 91 (object not set), with what was installed before left in place,
// when one of the pointers is not set. May be called again, as tests do.
void InstallPlatform(const Platform& platform);
// The installed platform. Failure 91 (object not set) before one is installed.
[[nodiscard]] Platform& ThePlatform();
[[nodiscard]] bool IsPlatformInstalled();
// Back to none, before the objects that it points to go. For tests.
void RemovePlatform();

}  // namespace tallybook
