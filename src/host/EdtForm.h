// The list window in which the exchange definitions are shown: rows with cells, three action buttons, a totals line.
// Whoever asked the factory for one owns it.
//
// A window asks for its totals when it is shown, and after each event that has changed its rows. It hands its events
// through GuardedEdtFormEvents (support/GuardedEdtFormEvents.h): what a listener throws is told, and the window stays
// open.
#pragma once

#include "base/Types.h"

namespace tallybook {

// Who answers a list window's events; they arrive while EdtForm::Show runs. A `record` is the number that AddRow gave
// to a row, 0 or less where no row is selected.
class EdtFormEvents {
 public:
  virtual ~EdtFormEvents() = default;
  // The totals line is asked for; `text` is taken as it stands afterwards.
  virtual void ShowTotals(Text& text) = 0;
  // Action button 1 to 3 was pressed.
  virtual void ActionButton(Integer button, Integer record) = 0;
  // A row is to be added; `record` becomes the number of the new one.
  virtual void AddRec(Integer& record) = 0;
  virtual void EditRec(Integer record) = 0;
  virtual void DeleteRec(Integer record) = 0;
  // The window wants what was changed to be saved; `result` tells whether that worked.
  virtual void EditSave(bool& result) = 0;
  virtual void ShowHelp(Long topic) = 0;
  // The window asks whether it is to close because the application does.
  virtual void NeedtoShutdown(bool& flag) = 0;
};

class EdtForm {
 public:
  virtual ~EdtForm() = default;

  // Who is told of the events; null for nobody. The listener must outlive Show.
  virtual void SetEvents(EdtFormEvents* listener) = 0;

  virtual void SetTitle(const Text& title) = 0;
  // `numeric` columns are sorted and aligned as numbers.
  virtual void AddColumn(const Text& caption, bool numeric) = 0;
  // Caption of action button 1 to 3.
  virtual void SetActionButton(Integer button, const Text& caption) = 0;
  // Offers add, edit and delete.
  virtual void SetAllowChanges(bool allowed) = 0;
  virtual void SetTypeAheadDelay(Long milliseconds) = 0;
  virtual void SetHelpFile(const Text& path) = 0;
  virtual void SetHelpContext(Long topic) = 0;
  virtual void SetFontName(const Text& name) = 0;
  virtual void SetFontSize(Single points) = 0;

  virtual void ClearList() = 0;
  // Adds a row: `key` names it for RemoveRow, `record` is what events hand back, `title` its first column.
  virtual void AddRow(const Text& key, Integer record, const Text& title) = 0;
  // The next column of the row just added.
  virtual void AddCell(const Text& text) = 0;
  // Of several rows of one key the first goes. A key that no row has does nothing.
  virtual void RemoveRow(const Text& key) = 0;
  // Draws the totals line again; asks for nothing.
  virtual void RefreshTotals() = 0;

  [[nodiscard]] virtual Long Hwnd() const = 0;

  // Shows the window over the window `owner` until the user closes it. Events arrive during the call.
  virtual void Show(Long owner) = 0;
};

}  // namespace tallybook
