// What dialogs lean on: modal showing made by hand, fonts and places of forms, helpers for lists and text boxes, window
// titles, and opening a file with its application. One thread.
#pragma once

#include "base/Types.h"
#include "forms/Form.h"
#include "forms/Grid.h"
#include "forms/ListControls.h"
#include "forms/PlainControls.h"
#include "forms/TextBox.h"

namespace tallybook {

class HostApp;
class Masterfile;

// --- Modal showing ---------------------------------------------------------------------------------------------------

// Shows `dialog` over the window `owner` and returns when it is hidden again. The component is a library inside a host
// with its own input loop, so the modal effect is made by hand: every other open form is disabled with its controls,
// save those tagged "1", and restored afterwards; the dialog follows its owner's window state and visibility. Events of
// the host and of other dialogs arrive meanwhile, and showing a dialog from within a dialog nests. A failure inside
// shows "Error in ShowLikeModal, " and the error text, hides the dialog, unwinds and returns.
//   owner   the active window, meant: a dialog shown from within a dialog is owned by that one, whatever is passed
//           here. `owner` counts where no window is active. A handle that no window has, and 0, mean no owner.
//   meant   on a screen without windows it returns at once, the dialog hidden: nobody could ever close it there.
void ShowLikeModal(Form& dialog, Long owner);

// How long each turn of its loop sleeps, in seconds.
inline constexpr Single kModalSleep = 0.001F;

// Hides a dialog that ShowLikeModal shows; dialogs that were shown over it are hidden first. One that is minimised
// becomes normal, so that it shows next time. Handles pending input at the end.
void HideLikeModal(Form& dialog);

// How many dialogs ShowLikeModal shows now, and the one on top; null for none. ResetModalStack forgets them, for tests.
[[nodiscard]] Integer ModalDepth();
[[nodiscard]] Form* TopModalDialog();
void ResetModalStack();

// --- Forms -----------------------------------------------------------------------------------------------------------

// Puts a form into the middle of the desktop's work area, unless it is minimised.
void CenterInWorkArea(Form& form);
// Puts the host's user-interface font onto a form and those of its controls that show the form's font; a control with a
// font of its own keeps it. An empty name or a size of 0 changes nothing.
void ApplyHostFont(Form& form, const Text& font_name, Single font_size);
// Unloads every open form but `closing` (null: every one). A failure is shown with its number, text, module and line.
void UnloadAllForms(Form* closing);
// 1 minimised, 2 maximised, 0 normal; both at once give 3.
[[nodiscard]] Integer WindowState(Long window);

// The window title: the text, " - ", the system's name, " Tallybook"; the text alone where the system has no name.
[[nodiscard]] Text TitleWithSystem(const Text& text, Masterfile& masterfile);

// --- Controls --------------------------------------------------------------------------------------------------------

// Selects the first entry of a tag, in a way that its choice is told even where it was selected before. Where no entry
// has the tag, the first entry is selected; an empty list stays as it is.
void SelectComboItem(ListControl& list, Long tag);
// The tag of the selected entry; 0 where there is none.
[[nodiscard]] Long ComboItemTag(const ListControl& list);
// The list's own searches from its start; -1 where nothing is found.
[[nodiscard]] Integer FindInList(const ListControl& list, const Text& text);
[[nodiscard]] Integer FindExactInList(const ListControl& list, const Text& text);
// Selects all of a box's text: from 0, the text's length plus 1; nothing where it has none.
void SelectAllText(TextBox& box);
// Gives the grid's last column the room that is left within `width`, the scroll bar's taken off; where none is left it
// stays as it is.
void FitGridColumns(Grid& grid, Long width);
// Puts an icon of the system's stock, by its number, into a picture.
void DrawStandardIcon(Picture& picture, Long icon);
// The key filter of a text box: what a key becomes. `allowed` is a list of pairs of characters, each a range; an empty
// one lets everything through. Key codes and ranges count in the code page of files. Control codes 1, 3, 8, 22 and 24
// pass, the Enter key (13) and all others are held to the ranges. What lies in no range gives 0 and a sound. A last
// character that has no partner is no range.
[[nodiscard]] Integer FilterKey(Integer key_code, const Text& allowed);

// --- The desktop -----------------------------------------------------------------------------------------------------
// All of these fail with Failure 73 on a platform without a desktop shell.

// Opens a file with its associated application, maximised; where there is none, tells so and offers the system's
// choice.
void OpenWithAssociated(HostApp& app, const Text& file_name);
// The system's folders, each ending in the separator; the second is "C:\" where it cannot be read.
[[nodiscard]] Text SystemFolder();
[[nodiscard]] Text WindowsFolder();
[[nodiscard]] Text CurrentFolder();
void SetCurrentFolder(const Text& path);
// Whether the system is of the line with platform id 2.
[[nodiscard]] bool IsWindowsNT();

}  // namespace tallybook
