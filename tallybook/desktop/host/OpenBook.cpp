#include "tallybook/desktop/host/OpenBook.h"

#include <QApplication>
#include <QDialog>
#include <QDialogButtonBox>
#include <QLabel>
#include <QPointer>
#include <QProgressBar>
#include <QTimer>
#include <QVBoxLayout>
#include <exception>
#include <functional>
#include <optional>

#include "base/Failure.h"
#include "platform/Platform.h"
#include "support/Utility.h"
#include "tallybook/application/HostSettings.h"
#include "tallybook/application/OpenToChange.h"
#include "tallybook/desktop/host/QtTexts.h"
#include "tallybook/engine/BookHold.h"

namespace tallybook::desktop {

namespace {

// Says what is waited for, tries every now and then, and ends with the try that succeeds or fails for another reason.
class WaitDialog : public QDialog {
 public:
  // Gives nothing where the wait is over, and else why it goes on. May throw, which ends the wait.
  using Try = std::function<std::optional<Text>()>;

  WaitDialog(const Text& book, const Text& words, Try attempt, QWidget* owner)
      : QDialog(owner), attempt_(std::move(attempt)) {
    setWindowTitle(tr("Waiting for %1").arg(ShownLine(FileBaseName(book))));
    auto* const layout = new QVBoxLayout(this);
    const int unit = fontMetrics().height() / 4;
    layout->setContentsMargins(4 * unit, 4 * unit, 4 * unit, 4 * unit);
    layout->setSpacing(3 * unit);
    words_ = new QLabel(this);
    words_->setObjectName("words");
    words_->setTextFormat(Qt::PlainText);
    words_->setWordWrap(true);
    words_->setMinimumWidth(48 * fontMetrics().averageCharWidth());
    auto* const bar = new QProgressBar(this);
    bar->setRange(0, 0);
    bar->setTextVisible(false);
    bar->setAccessibleName(tr("Waiting"));
    auto* const buttons = new QDialogButtonBox(QDialogButtonBox::Cancel, this);
    for (QWidget* const part : std::initializer_list<QWidget*>{words_, bar, buttons}) layout->addWidget(part);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
    connect(&timer_, &QTimer::timeout, this, [this] { TryAgain(); });
    Say(words);
    timer_.start(BookOpener::kTryEvery);
  }

  // What ended the wait, where it was not the user.
  [[nodiscard]] std::exception_ptr Trouble() const { return trouble_; }

 private:
  void Say(const Text& words) {
    words_->setText(ShownLines(words) + "\n\n" + tr("It goes on as soon as the book is free. Cancel changes nothing."));
  }

  void TryAgain() {
    try {
      if (const auto words = attempt_()) return Say(*words);
      accept();
    } catch (...) {
      trouble_ = std::current_exception();
      reject();
    }
  }

  Try attempt_;
  QLabel* words_ = nullptr;
  QTimer timer_;
  std::exception_ptr trouble_;
};

}  // namespace

OpenedBook BookOpener::Open(const Text& path, bool read_only) {
  OpenedBook opened;
  engine::BookOptions options;
  options.read_only = read_only;
  application::NeedSoundRollbackSetting(app_.SettingsFileName());
  options.cache_bytes = app_.CacheBytes();
  options.progress = &progress_;
  options.reports = &report_heads_;
  // What it has to say later, while it is open, finds the list gone; the log keeps that.
  const auto notices = std::make_shared<std::vector<Text>>();
  options.notice = [notices, this](const Text& line) {
    notices->push_back(line);
    app_.OwnLog().AuditEntry("Tallybook", "Notice", line, {});
  };
  opened.book = read_only ? engine::Book::Open(path, app_, options)
                          : application::OpenToChange(path, app_, options, *ThePlatform().files);
  opened.notices = *notices;
  return opened;
}

OpenedBook BookOpener::OpenToRead(const Text& path) {
  const bool read_only = true;
  return Open(path, read_only);
}

OpenedBook BookOpener::OpenToChange(const Text& path, QWidget* owner) {
  OpenedBook opened;
  const auto attempt = [&]() -> std::optional<Text> {
    const bool read_only = true;
    try {
      opened = Open(path, !read_only);
      return std::nullopt;
    } catch (const Failure& failure) {
      if (!engine::IsInUse(failure)) throw;
      return failure.Description();
    }
  };
  const std::optional<Text> words = attempt();
  if (!words) return opened;
  // A dialog that keeps its owner away would keep one away that stands beside it.
  QWidget* const modal = QApplication::activeModalWidget();
  const QPointer<WaitDialog> dialog(new WaitDialog(path, *words, attempt, modal == nullptr ? owner : modal));
  dialog->exec();
  const std::exception_ptr trouble = dialog.isNull() ? nullptr : dialog->Trouble();
  delete dialog.data();
  if (trouble) std::rethrow_exception(trouble);
  return opened;
}

}  // namespace tallybook::desktop
