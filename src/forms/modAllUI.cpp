#include "forms/modAllUI.h"

#include <algorithm>
#include <cstddef>
#include <memory>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "base/CodePage.h"
#include "base/Failure.h"
#include "base/Texts.h"
#include "forms/BusyPointer.h"
#include "host/HostApp.h"
#include "host/Masterfile.h"
#include "platform/Clock.h"
#include "platform/InputQueue.h"
#include "platform/MessageBoxes.h"
#include "platform/Platform.h"
#include "platform/Screen.h"
#include "platform/Shell.h"
#include "support/HostMessages.h"
#include "support/Utility.h"
#include "support/WinAPI.h"

namespace tallybook {

namespace {

// What the class names of the component's own windows hold.
constexpr std::string_view kOwnClass = "Thunder";
constexpr std::size_t kLongestClassName = 255;
// Farther out than any screen reaches.
constexpr Long kOffScreen = -32'000;
constexpr const char* kNewLine = "\r\n";

Screen& TheScreen() {
  return *ThePlatform().screen;
}

// --- The modal stack -------------------------------------------------------------------------------------------------

// A form that was disabled, as it was before. It may be unloaded, or gone with controls of it, before it is restored.
struct DisabledForm {
  Form* form = nullptr;
  std::weak_ptr<const void> life;
  bool enabled = false;
  std::vector<std::pair<Control*, bool>> controls;
};

// One dialog that ShowLikeModal shows.
struct ModalRow {
  Form* dialog = nullptr;
  Long owner = 0;            // the window that was active; 0 for none
  Long previous_parent = 0;  // of the dialog's window
  bool hidden = false;       // by HideLikeModal
  bool moved_off = false;    // the owner is hidden; `place` is where the dialog stood
  Place place;
  std::vector<DisabledForm> disabled;
};

// For walks during which the list itself may change.
template <typename Item>
std::vector<Item> CopyOf(const std::vector<Item>& list) {
  return list;
}

// The dialogs shown now, the lowest first. Each row lives in the ShowLikeModal that shows it.
std::vector<ModalRow*>& ModalStack() {
  static std::vector<ModalRow*> stack;
  return stack;
}

bool IsOpen(const Form* form) {
  const auto& forms = OpenForms();
  return std::find(forms.begin(), forms.end(), form) != forms.end();
}

// The open form of a window, where that is one of the component's own; null otherwise.
Form* OwnFormOf(Long window) {
  if (window == 0) return nullptr;
  if (TheScreen().ClassName(window).substr(0, kLongestClassName).find(kOwnClass) == Text::npos) return nullptr;
  const auto& forms = OpenForms();
  const auto found = std::find_if(forms.begin(), forms.end(), [&](const Form* form) { return form->Hwnd() == window; });
  return found == forms.end() ? nullptr : *found;
}

// The active window owns the dialog; where there is none (another program's is active), the one that the caller names.
// A window that the screen does not know can be followed by nothing and owns nothing.
Long OwnerOf(const Form& dialog, Long named) {
  Long owner = TheScreen().ActiveWindow();
  if (owner == 0 || owner == dialog.Hwnd()) owner = named;
  return owner == dialog.Hwnd() || TheScreen().ClassName(owner).empty() ? 0 : owner;
}

// --- Showing ---------------------------------------------------------------------------------------------------------

void DisableOthers(ModalRow& row) {
  for (Form* const form : CopyOf(OpenForms())) {
    if (form == row.dialog || form->Tag() == kStaysEnabledTag) continue;
    row.disabled.push_back({form, form->Life(), form->Enabled(), {}});
    for (Control* const control : form->Controls()) {
      row.disabled.back().controls.emplace_back(control, control->Enabled());
      control->SetEnabled(false);
    }
    form->SetEnabled(false);
  }
}

void RestoreOthers(const ModalRow& row) {
  for (const DisabledForm& disabled : row.disabled) {
    if (disabled.life.expired()) continue;
    disabled.form->SetEnabled(disabled.enabled);
    const std::vector<Control*> still_there = disabled.form->Controls();
    for (const auto& [control, enabled] : disabled.controls) {
      if (std::find(still_there.begin(), still_there.end(), control) != still_there.end()) control->SetEnabled(enabled);
    }
  }
}

// Into the middle of the owner, held to the work area so that no edge is lost.
void PlaceOver(Form& dialog, Long owner) {
  Screen& screen = TheScreen();
  const Place below = screen.WindowPlace(owner);
  if (below.width <= 0 || below.height <= 0 || screen.WindowState(owner) == kMinimisedWindow) return;
  const Place area = screen.WorkArea();
  Place place = screen.WindowPlace(dialog.Hwnd());
  const auto middle = [](Long start, Long outer, Long inner, Long first, Long room) {
    return std::max(first, std::min(start + (outer - inner) / 2, first + room - inner));
  };
  place.left = middle(below.left, below.width, place.width, area.left, area.width);
  place.top = middle(below.top, below.height, place.height, area.top, area.height);
  screen.SetWindowPlace(dialog.Hwnd(), place);
}

void ShowOver(ModalRow& row) {
  Screen& screen = TheScreen();
  row.previous_parent = screen.SetParent(row.dialog->Hwnd(), row.owner);
  if (row.owner != 0 && screen.IsVisible(row.owner)) PlaceOver(*row.dialog, row.owner);
  row.dialog->Show();
}

// --- The loop --------------------------------------------------------------------------------------------------------

void MoveBack(ModalRow& row) {
  if (std::exchange(row.moved_off, false)) TheScreen().SetWindowPlace(row.dialog->Hwnd(), row.place);
}

void FollowVisibility(ModalRow& row) {
  Screen& screen = TheScreen();
  if (screen.IsVisible(row.owner)) {
    MoveBack(row);
  } else if (!row.moved_off) {
    row.moved_off = true;
    row.place = screen.WindowPlace(row.dialog->Hwnd());
    Place away = row.place;
    away.left = kOffScreen;
    away.top = kOffScreen;
    screen.SetWindowPlace(row.dialog->Hwnd(), away);
  }
}

// `front` is the window in front. It goes on from row to row: a dialog that is disabled by the one over it cannot be
// activated, and yet brings that one to the front.
void FollowOwner(ModalRow& row, Long& front) {
  if (row.owner == 0 || !IsOpen(row.dialog) || !row.dialog->Visible()) return;
  Screen& screen = TheScreen();
  if (front == row.owner) {
    front = row.dialog->Hwnd();
    screen.ActivateWindow(front);
  }
  if (const Form* const owner_form = OwnFormOf(row.owner)) {
    const Integer state = owner_form->WindowState();
    if (row.dialog->WindowState() != state) row.dialog->SetWindowState(state);
  }
  // An owner whose window was taken away is no hidden one: the dialog comes back and stays where it can be seen.
  if (screen.ClassName(row.owner).empty())
    MoveBack(row);
  else
    FollowVisibility(row);
}

// On a screen without windows nothing is ever seen, and the loop ends at once: nobody could end it otherwise.
bool IsShown(const Form& dialog) {
  return dialog.IsLoaded() && dialog.Visible() && TheScreen().IsVisible(dialog.Hwnd());
}

void RunWhileShown(const Form& dialog) {
  while (IsShown(dialog)) {
    // Whatever waits: timers tick while nobody presses a key.
    ThePlatform().input->RunOnce();
    ThePlatform().clock->Sleep(kModalSleep);
    // A copy: a window that is activated may set off a dialog of its own. Rows above this one's are gone by then.
    const std::vector<ModalRow*> rows = CopyOf(ModalStack());
    Long front = TheScreen().ActiveWindow();
    for (ModalRow* const row : rows) FollowOwner(*row, front);
  }
}

// Takes back what ShowLikeModal did, whether the dialog was hidden or something failed.
void Unwind(ModalRow& row) {
  Form& dialog = *row.dialog;
  std::erase(ModalStack(), &row);
  if (dialog.IsLoaded()) {
    MoveBack(row);
    dialog.Hide();
    TheScreen().SetParent(dialog.Hwnd(), row.previous_parent);
  }
  RestoreOthers(row);
  if (row.owner != 0) TheScreen().ActivateWindow(row.owner);
}

}  // namespace

void ShowLikeModal(Form& dialog, Long owner) {
  ModalRow row;
  row.dialog = &dialog;
  ModalStack().push_back(&row);
  try {
    row.owner = OwnerOf(dialog, owner);
    TheScreen().SetPointer(Pointer::kDefault);
    dialog.Load();
    DisableOthers(row);
    ShowOver(row);
    RunWhileShown(dialog);
  } catch (...) {
    ShowMessage("Error in ShowLikeModal, " + CurrentFailure().Description(), kExclamationIcon, "");
  }
  Unwind(row);
}

void HideLikeModal(Form& dialog) {
  const std::vector<ModalRow*> stack = CopyOf(ModalStack());
  for (ModalRow* const row : stack) {
    if (row->hidden || row->dialog == &dialog || !dialog.IsLoaded() || row->owner != dialog.Hwnd()) continue;
    row->hidden = true;
    HideLikeModal(*row->dialog);
  }
  if (dialog.WindowState() == kMinimisedWindow) dialog.SetWindowState(kNormalWindow);
  dialog.Hide();
  HandlePendingInput();
}

Integer ModalDepth() {
  return static_cast<Integer>(ModalStack().size());
}

Form* TopModalDialog() {
  return ModalStack().empty() ? nullptr : ModalStack().back()->dialog;
}

void ResetModalStack() {
  ModalStack().clear();
}

// --- Forms -----------------------------------------------------------------------------------------------------------

void CenterInWorkArea(Form& form) {
  if (!form.IsLoaded() || form.WindowState() == kMinimisedWindow) return;
  Screen& screen = TheScreen();
  const Place area = screen.WorkArea();
  Place place = screen.WindowPlace(form.Hwnd());
  place.left = area.left + (area.width - place.width) / 2;
  place.top = area.top + (area.height - place.height) / 2;
  screen.SetWindowPlace(form.Hwnd(), place);
}

void ApplyHostFont(Form& form, const Text& font_name, Single font_size) {
  if (font_name.empty() || font_size == 0) return;
  for (Control* const control : form.Controls()) {
    const bool shows_forms_font = control->FontName().empty() || control->FontName() == form.FontName();
    if (shows_forms_font) control->SetFont(font_name, font_size);
  }
  form.SetFont(font_name, font_size);
}

void UnloadAllForms(Form* closing) {
  constexpr Long kUnloadStatement = 10;
  for (Form* const form : CopyOf(OpenForms())) {
    // One form's unloading may unload others, or end them.
    if (form == closing || !IsOpen(form)) continue;
    try {
      form->Unload();
    } catch (...) {
      const Failure failure = CurrentFailure();
      const Text place = "in module: " + failure.Source() + " - UnloadAllForms" + kNewLine +
                         "in line: " + std::to_string(kUnloadStatement);
      ShowMessage("Error: " + std::to_string(failure.Code()) + " - " + failure.Description() + kNewLine + place,
                  kExclamationIcon, "");
    }
  }
}

Integer WindowState(Long window) {
  return TheScreen().WindowState(window);
}

Text TitleWithSystem(const Text& text, Masterfile& masterfile) {
  const Text name = TrimRight(masterfile.TitleSource().TitleFor(masterfile.TitleContext()));
  return name.empty() ? text : text + " - " + name + " Tallybook";
}

// --- Controls --------------------------------------------------------------------------------------------------------

void SelectComboItem(ListControl& list, Long tag) {
  for (Integer index = 0; index < list.ListCount(); ++index) {
    if (list.ItemData(index) != tag) continue;
    if (list.ListIndex() == index) list.SetListIndex(kNoEntry);
    list.SetListIndex(index);
    return;
  }
  if (list.ListCount() > 0) list.SetListIndex(0);
}

Long ComboItemTag(const ListControl& list) {
  return list.ListIndex() == kNoEntry ? 0 : list.ItemData(list.ListIndex());
}

Integer FindInList(const ListControl& list, const Text& text) {
  return list.FindPrefix(text);
}

Integer FindExactInList(const ListControl& list, const Text& text) {
  return list.FindExact(text);
}

void SelectAllText(TextBox& box) {
  if (!box.Text().empty()) box.SetSelection(0, CharacterCount(box.Text()) + 1);
}

void FitGridColumns(Grid& grid, Long width) {
  if (grid.Columns() == 0) return;
  const Long last = grid.Columns() - 1;
  Long room = width - TheScreen().ScrollBarWidth();
  for (Long column = 0; column < last; ++column) room -= grid.ColumnWidth(column);
  if (room > 0) grid.SetColumnWidth(last, room);
}

void DrawStandardIcon(Picture& picture, Long icon) {
  picture.SetStandardIcon(icon);
}

Integer FilterKey(Integer key_code, const Text& allowed) {
  constexpr Integer kPassingCodes[] = {1, 3, 8, 22, 24};
  if (allowed.empty() || std::ranges::find(kPassingCodes, key_code) != std::end(kPassingCodes)) return key_code;
  const std::string ranges = ToCodePage(allowed);
  const auto code_at = [&](std::size_t offset) { return static_cast<unsigned char>(ranges[offset]); };
  for (std::size_t pair = 0; pair + 1 < ranges.size(); pair += 2) {
    if (key_code >= code_at(pair) && key_code <= code_at(pair + 1)) return key_code;
  }
  PlayStyleSound(0);
  return 0;
}

// --- The desktop -----------------------------------------------------------------------------------------------------

namespace {

Shell& TheShell() {
  if (Shell* const shell = ThePlatform().shell) return *shell;
  throw Failure(FailureNumber::kFeatureUnavailable, "This platform has no desktop shell");
}

}  // namespace

void OpenWithAssociated(HostApp& app, const Text& file_name) {
  const BusyPointer busy;
  HandlePendingInput();
  if (TheShell().Open(file_name, kMaximisedWindow) != kNoAssociation) return;
  Refuse(app,
         "No application has been associated with this output file type.  "
         "Choose an application from the next dialog.");
  TheShell().Run(SystemFolder() + "RUNDLL32.EXE", "shell32.dll,OpenAs_RunDLL " + file_name, WindowsFolder());
}

Text SystemFolder() {
  return AddBackslash(TheShell().SystemFolder());
}

Text WindowsFolder() {
  const Text folder = TheShell().WindowsFolder();
  return folder.empty() ? "C:\\" : AddBackslash(folder);
}

Text CurrentFolder() {
  return TheShell().CurrentFolder();
}

void SetCurrentFolder(const Text& path) {
  TheShell().SetCurrentFolder(path);
}

bool IsWindowsNT() {
  constexpr Long kNTLine = 2;
  return TheShell().PlatformId() == kNTLine;
}

}  // namespace tallybook
