// The application as its program puts it together, over a folder of its own, with the main window on the screen.
#pragma once

#include <QtGui/QAction>
#include <QtWidgets/QApplication>
#include <cstdlib>
#include <gtest/gtest.h>

#include "tallybook/desktop/host/Conversations.h"
#include "tallybook/desktop/host/DesktopApp.h"
#include "tallybook/desktop/host/DesktopFactory.h"
#include "tallybook/desktop/host/QtPlatform.h"
#include "tallybook/desktop/window/MainWindow.h"
#include "tests/support/TempFolder.h"

namespace tallybook::desktop::testing {

class DeskStage {
 public:
  DeskStage(const DeskStage&) = delete;
  DeskStage& operator=(const DeskStage&) = delete;

 protected:
  explicit DeskStage(const Text& title)
      : app_({.title = title,
              .settings_file = folder_.Path("tallybook.ini"),
              .log_file = folder_.Path("tallybook.log"),
              .import_folder = folder_.Path(),
              .data_folder = folder_.Path()}) {
    platform_.SetApp(&app_);
    platform_.SetMainWindow(&window_);
    window_.show();
  }
  ~DeskStage() { platform_.SetMainWindow(nullptr); }

  // Of the main window's menus, by the beginning of its words.
  QAction& Action(const QString& words) {
    for (auto* action : window_.findChildren<QAction*>()) {
      if (action->text().remove('&').startsWith(words)) return *action;
    }
    ADD_FAILURE() << "no menu has " << words.toStdString();
    std::abort();
  }

  // One that stands beside the main window; null where none does.
  QWidget* OtherWindow() {
    for (QWidget* window : QApplication::topLevelWidgets()) {
      const bool is_other = window != &window_ && window->isVisible() && window->windowType() != Qt::ToolTip &&
                            window->windowType() != Qt::Popup && !window->windowTitle().isEmpty();
      if (is_other) return window;
    }
    return nullptr;
  }

  tallybook::testing::TempFolder folder_;
  QtPlatform platform_;
  DesktopApp app_;
  DesktopFactory factory_{platform_.Handles(), platform_.Progress()};
  ConversationMeans means_{.platform = platform_, .app = app_, .factory = factory_};
  DesktopSettings settings_{folder_.Path("books.ini")};
  MainWindow window_{app_, settings_, StyleOf(QLocale::c()), &means_};
};

}  // namespace tallybook::desktop::testing
