// The menus of the main window: each act with its words, its shortcut and what it does. Shortcuts are shown beside the
// words; no two acts of a menu share a mnemonic.
#pragma once

#include <QtCore/QList>
#include <functional>

class QAction;
class QMainWindow;
class QMenu;

namespace tallybook::desktop {

struct MenuActs {
  std::function<void()> new_book, open_book, example, journal, settings, close_book, quit;
  std::function<void()> undo, copy, copy_with_heads, paste, clear, find_account;
  std::function<void(int view)> view;
  std::function<void(bool shown)> chart;
  std::function<void(bool against)> year_before;
  std::function<void()> copy_chart, save_chart, refresh, next_pane, last_pane;
  std::function<void(int steps)> go;
  std::function<void(int rows)> move_account;
  std::function<void()> today, go_to_date, origin;
  // What needs conversations; left out of the menus where there are none.
  std::function<void()> export_file, export_table, definitions, import_csv, import_delimited, check_file, tie_out;
  std::function<void()> lists, back_up, check, restore, compact, salvage;
  std::function<void()> help, guide, keys, about;
};

// The acts whose state follows the window's.
struct MainMenus {
  QMenu* recent = nullptr;
  QMenu* fields_of_chart = nullptr;
  QAction* journal = nullptr;
  QList<QAction*> work_on_book;  // lists and care; empty where there are no conversations
  QAction* close_book = nullptr;
  QAction* undo = nullptr;
  QAction* copy = nullptr;
  QAction* paste = nullptr;
  QAction* clear = nullptr;
  QAction* views[3] = {};
  QAction* origin = nullptr;  // of the current figure
  QAction* chart = nullptr;
  QAction* year_before = nullptr;
  // All that wants an open book.
  QMenu* edit = nullptr;
  QMenu* view = nullptr;
  QMenu* figures = nullptr;
  QMenu* exchange = nullptr;   // null where there are no conversations
  QList<QAction*> leave_book;  // what would take the book from under a conversation
};

[[nodiscard]] MainMenus BuildMenus(QMainWindow& window, const MenuActs& acts);

}  // namespace tallybook::desktop
