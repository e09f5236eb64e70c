#include "tallybook/desktop/window/MainMenus.h"

#include <QtGui/QActionGroup>
#include <QtWidgets/QMainWindow>
#include <QtWidgets/QMenu>
#include <QtWidgets/QMenuBar>
#include <array>
#include <utility>

namespace tallybook::desktop {

namespace {

using Act = std::function<void()>;

QAction* Add(QMenu& menu, const QString& words, const QKeySequence& keys, Act act) {
  QAction* action = menu.addAction(words);
  action->setShortcut(keys);
  QObject::connect(action, &QAction::triggered, &menu, std::move(act));
  return action;
}

QAction* AddSwitch(QMenu& menu, const QString& words, const QKeySequence& keys, const std::function<void(bool)>& act) {
  QAction* action = menu.addAction(words);
  action->setShortcut(keys);
  action->setCheckable(true);
  QObject::connect(action, &QAction::triggered, &menu, act);
  return action;
}

void AddWorkOnBook(QMenu& menu, const MenuActs& acts, MainMenus& menus) {
  if (!acts.lists) return;
  menus.work_on_book << Add(menu, "&Accounts, Fields, Years\u2026", QKeySequence("Ctrl+L"), acts.lists);
  menu.addSeparator();
  menus.work_on_book << Add(menu, "&Back Up\u2026", QKeySequence("Ctrl+B"), acts.back_up);
  menus.leave_book << Add(menu, "Res&tore\u2026", {}, acts.restore);
  menus.work_on_book << Add(menu, "Chec&k", {}, acts.check);
  menus.work_on_book << Add(menu, "Co&mpact", {}, acts.compact);
  menus.leave_book << Add(menu, "Sal&vage\u2026", {}, acts.salvage);
}

void BuildBookMenu(QMenuBar& bar, const MenuActs& acts, MainMenus& menus) {
  QMenu& menu = *bar.addMenu("&Book");
  QAction* make = Add(menu, "&New\u2026", QKeySequence::New, acts.new_book);
  QAction* open = Add(menu, "&Open\u2026", QKeySequence::Open, acts.open_book);
  menus.recent = menu.addMenu("Open &Recent");
  QAction* example = Add(menu, "&Example", {}, acts.example);
  menus.leave_book = {make, open, menus.recent->menuAction(), example};
  menu.addSeparator();
  menus.journal = Add(menu, "&Journal\u2026", QKeySequence("Ctrl+J"), acts.journal);
  AddWorkOnBook(menu, acts, menus);
  menu.addSeparator();
  Add(menu, "&Settings\u2026", QKeySequence("Ctrl+,"), acts.settings);
  menu.addSeparator();
  menus.close_book = Add(menu, "&Close", QKeySequence("Ctrl+W"), acts.close_book);
  Add(menu, "&Quit", QKeySequence("Ctrl+Q"), acts.quit);
}

void BuildEditMenu(QMenuBar& bar, const MenuActs& acts, MainMenus& menus) {
  QMenu& menu = *bar.addMenu("&Edit");
  menus.edit = &menu;
  menus.undo = Add(menu, "&Undo", QKeySequence::Undo, acts.undo);
  menu.addSeparator();
  // The table takes these keys itself where it has the focus; a text that is typed takes them for its own words.
  const auto add_for_table = [&](const QString& words, const QKeySequence& keys, const Act& act) {
    QAction* action = Add(menu, words, keys, act);
    action->setShortcutContext(Qt::WidgetShortcut);
    return action;
  };
  menus.copy = add_for_table("&Copy", QKeySequence::Copy, acts.copy);
  Add(menu, "Copy with &Heads", QKeySequence("Ctrl+Shift+C"), acts.copy_with_heads);
  menus.paste = add_for_table("&Paste", QKeySequence::Paste, acts.paste);
  menus.clear = add_for_table("C&lear", QKeySequence::Delete, acts.clear);
  menu.addSeparator();
  Add(menu, "&Find Account", QKeySequence::Find, acts.find_account);
}

void BuildViewMenu(QMenuBar& bar, const MenuActs& acts, MainMenus& menus) {
  QMenu& menu = *bar.addMenu("&View");
  menus.view = &menu;
  static constexpr std::array kViews = {"One &Account", "One &Date", "One &Field"};
  auto* group = new QActionGroup(&menu);
  for (int view = 0; view < static_cast<int>(kViews.size()); ++view) {
    const auto index = static_cast<std::size_t>(view);
    menus.views[index] = AddSwitch(menu, kViews[index], QKeySequence(QString("Ctrl+%1").arg(view + 1)),
                                   [act = acts.view, view](bool /*checked*/) { act(view); });
    group->addAction(menus.views[index]);
  }
  menu.addSeparator();
  menus.chart = AddSwitch(menu, "&Chart", QKeySequence("Ctrl+K"), acts.chart);
  menus.fields_of_chart = menu.addMenu("Fields of the C&hart");
  menus.year_before = AddSwitch(menu, "Against the &Year Before", {}, acts.year_before);
  Add(menu, "Co&py the Chart", {}, acts.copy_chart);
  Add(menu, "&Save the Chart\u2026", {}, acts.save_chart);
  menu.addSeparator();
  Add(menu, "&Refresh", QKeySequence("F5"), acts.refresh);
  Add(menu, "&Next Pane", QKeySequence("F6"), acts.next_pane);
  Add(menu, "Pre&vious Pane", QKeySequence("Shift+F6"), acts.last_pane);
}

void BuildFiguresMenu(QMenuBar& bar, const MenuActs& acts, MainMenus& menus) {
  QMenu& menu = *bar.addMenu("Fi&gures");
  menus.figures = &menu;
  Add(menu, "&Earlier", QKeySequence("Ctrl+Left"), [act = acts.go] { act(-1); });
  Add(menu, "&Later", QKeySequence("Ctrl+Right"), [act = acts.go] { act(1); });
  Add(menu, "&Today", QKeySequence("Ctrl+T"), acts.today);
  Add(menu, "&Go to a Date\u2026", QKeySequence("Ctrl+G"), acts.go_to_date);
  menu.addSeparator();
  Add(menu, "&Previous Account", QKeySequence("Ctrl+PgUp"), [act = acts.move_account] { act(-1); });
  Add(menu, "&Next Account", QKeySequence("Ctrl+PgDown"), [act = acts.move_account] { act(1); });
  menu.addSeparator();
  menus.origin = Add(menu, "&Where Does This Come From?", QKeySequence("Ctrl+H"), acts.origin);
}

void BuildExchangeMenu(QMenuBar& bar, const MenuActs& acts, MainMenus& menus) {
  if (!acts.definitions) return;
  QMenu& menu = *bar.addMenu("Data E&xchange");
  menus.exchange = &menu;
  Add(menu, "&Definitions\u2026", QKeySequence("Ctrl+D"), acts.definitions);
  menu.addSeparator();
  Add(menu, "Import a &CSV File\u2026", {}, acts.import_csv);
  Add(menu, "Import a De&limited File\u2026", {}, acts.import_delimited);
  Add(menu, "Check a &File\u2026", {}, acts.check_file);
  menu.addSeparator();
  Add(menu, "Tie &Out\u2026", QKeySequence("Ctrl+Shift+T"), acts.tie_out);
  menu.addSeparator();
  Add(menu, "Export an &Exchange File\u2026", QKeySequence("Ctrl+E"), acts.export_file);
  Add(menu, "Export a &Table\u2026", QKeySequence("Ctrl+Shift+E"), acts.export_table);
}

void BuildHelpMenu(QMenuBar& bar, const MenuActs& acts) {
  QMenu& menu = *bar.addMenu("&Help");
  // F1 is answered in every window (Help), and shown here.
  QAction* help = Add(menu, "&Help for This Window", QKeySequence("F1"), acts.help);
  help->setShortcutContext(Qt::WidgetShortcut);
  Add(menu, "&Guide", {}, acts.guide);
  Add(menu, "&Keys", QKeySequence("Shift+F1"), acts.keys);
  Add(menu, "&About Tallybook", {}, acts.about);
}

}  // namespace

MainMenus BuildMenus(QMainWindow& window, const MenuActs& acts) {
  MainMenus menus;
  QMenuBar& bar = *window.menuBar();
  BuildBookMenu(bar, acts, menus);
  BuildEditMenu(bar, acts, menus);
  BuildViewMenu(bar, acts, menus);
  BuildFiguresMenu(bar, acts, menus);
  BuildExchangeMenu(bar, acts, menus);
  BuildHelpMenu(bar, acts);
  return menus;
}

}  // namespace tallybook::desktop
