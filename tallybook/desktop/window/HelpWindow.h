// The guide in a window: the documents for whoever works in windows, which are built into the program. F1 shows the
// page of the window at hand, over that window, so that both can be used side by side.
//
// One thread.
#pragma once

#include <QtCore/QObject>
#include <QtCore/QPointer>
#include <QtWidgets/QWidget>

class QTextBrowser;

namespace tallybook::desktop {

class HelpWindow final : public QWidget {
 public:
  // Belongs to `owner`, which may be null, and deletes itself when it is closed.
  explicit HelpWindow(QWidget* owner);

  // `place` is a page below docs/, where it has a part of that heading at that part: "guide/README.md#The journal". A
  // page that is not there leaves what is shown.
  void Show(const QString& place);
  [[nodiscard]] QString Place() const;
  [[nodiscard]] QTextBrowser& Browser() const { return *browser_; }

 private:
  QTextBrowser* browser_;
};

// The place in the guide that tells of a window, by what it is; the guide's first page for one that has none of its
// own.
[[nodiscard]] QString HelpPlaceOf(const QWidget* window);

// Answers F1 in every window of the program, while it lives, where nothing in the window has taken the key: the dialogs
// of the component that have it ask their application for help, which leads to ShowForWindowAtHand as well.
class Help final : public QObject {
 public:
  Help();
  ~Help() override;

  // Shows the one help window over the window that is in front; where that is the help itself it stays as it is.
  void ShowForWindowAtHand();
  void Show(const QString& place);

 protected:
  bool eventFilter(QObject* watched, QEvent* event) override;

 private:
  QPointer<HelpWindow> window_;
};

}  // namespace tallybook::desktop
