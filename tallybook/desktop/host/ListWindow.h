// The list window of the component (host/EdtForm.h) on Qt: a table, its buttons beside it, a totals line.
//
//   Insert, Enter or F2, Delete   add, edit and delete, where changes are allowed; so does a double click
//   letters                       select the next row that begins so, in the column that the rows are sorted by
//   Ctrl+1 to Ctrl+9              sort by a column, once more the other way round; so does a click on its head
//   Ctrl+S                        asks for what was changed to be saved
//   F1                            help; Escape or Ctrl+W closes
//
// While an event is being answered the window takes no acts and does not close: a dialog stands over it, or an import
// runs. When it closes it has what was changed saved; where that fails, or changes nothing, it asks.
//
// One thread. Events arrive within Show, which runs a loop of its own; the window that owns it stays usable.
#pragma once

#include <QString>
#include <functional>
#include <memory>
#include <vector>

#include "host/EdtForm.h"
#include "tallybook/desktop/host/WindowHandles.h"
#include "tallybook/desktop/host/WindowMemory.h"

class QWidget;

namespace tallybook::desktop {

class ListWindow : public EdtForm {
 public:
  // How often the window asks whether the application wants to close, in milliseconds.
  static constexpr int kShutdownPoll = 250;

  // `handles` must outlive the window.
  explicit ListWindow(WindowHandles& handles, WindowMemory memory = WindowMemory());
  ~ListWindow() override;
  ListWindow(const ListWindow&) = delete;
  ListWindow& operator=(const ListWindow&) = delete;

  void SetEvents(EdtFormEvents* listener) override;
  void SetTitle(const Text& title) override;
  void AddColumn(const Text& caption, bool numeric) override;
  void SetActionButton(Integer button, const Text& caption) override;
  void SetAllowChanges(bool allowed) override;
  void SetTypeAheadDelay(Long milliseconds) override;
  void SetHelpFile(const Text& path) override;
  void SetHelpContext(Long topic) override;
  void SetFontName(const Text& name) override;
  void SetFontSize(Single points) override;
  void ClearList() override;
  void AddRow(const Text& key, Integer record, const Text& title) override;
  void AddCell(const Text& text) override;
  void RemoveRow(const Text& key) override;
  void RefreshTotals() override;
  [[nodiscard]] Long Hwnd() const override;
  // Returns at once where it is shown already.
  void Show(Long owner) override;

  // The window itself.
  [[nodiscard]] QWidget& Window() const;
  // An event is being answered; which action button's, 0 for none.
  [[nodiscard]] bool IsBusy() const;
  [[nodiscard]] Integer ActionUnderWay() const;
  // The key of the selected row; empty where there is none.
  [[nodiscard]] Text SelectedKey() const;

  // Adds a button of the application's own below those of the component, and below those added before. While `act` is
  // done the window is busy; where it gives true the component's action button of this number is pressed behind it.
  void SetAddition(const Text& caption, std::function<bool()> act, Integer action);

  // A switch of the application's own below them.
  struct Switch {
    QString caption;  // without a mnemonic
    QString help;     // a sentence
    // Asked whenever the window has been answered: it may be turned elsewhere, too.
    std::function<bool()> is_on;
    std::function<void(bool on)> turned;
  };
  void SetSwitch(Switch its);

  // What happens as soon as the window stands there: an act as of the user. Set before Show; empty for none.
  void SetOnShown(std::function<void(ListWindow&)> act);
  // Selects the first row of these keys, shows all of them in bold and says `note` below the table.
  void Point(const std::vector<Text>& keys, const Text& note);
  // As the user does it; nothing happens while an event is being answered.
  void UserAdd();
  void UserAct(Integer action);  // the button of that number
  void UserClose();

 private:
  class Frame;
  std::unique_ptr<Frame> frame_;
};

}  // namespace tallybook::desktop
