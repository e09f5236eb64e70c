#include "tallybook/desktop/host/ProgressWindow.h"

#include <QApplication>
#include <QCloseEvent>
#include <QDeadlineTimer>
#include <QHBoxLayout>
#include <QKeyEvent>
#include <QLabel>
#include <QPointer>
#include <QProgressBar>
#include <QPushButton>
#include <QVBoxLayout>
#include <QWindow>
#include <algorithm>
#include <cmath>

#include "tallybook/desktop/host/QtTexts.h"

namespace tallybook::desktop {

namespace {

constexpr int kSteps = 1000;  // of the bar
constexpr int kLetters = 52;

long long Now() {
  return QDeadlineTimer::current().deadline();
}

}  // namespace

class ProgressWindow::Frame : public QWidget {
 public:
  explicit Frame(std::function<void()> cancel) : cancel_(std::move(cancel)) {
    setWindowFlags(Qt::Dialog | Qt::WindowTitleHint | Qt::CustomizeWindowHint);
    const int unit = fontMetrics().height() / 4;
    auto* const layout = new QVBoxLayout(this);
    layout->setContentsMargins(4 * unit, 4 * unit, 4 * unit, 4 * unit);
    layout->setSpacing(3 * unit);
    text_ = NewLabel("text");
    bar_ = new QProgressBar(this);
    bar_->setRange(0, kSteps);
    left_ = NewLabel("left");
    words_ = NewLabel("words");
    button_ = new QPushButton(tr("&Cancel"), this);
    button_->setObjectName("cancel");
    connect(button_, &QPushButton::clicked, this, [this] { cancel_(); });
    auto* const foot = new QHBoxLayout;
    foot->addWidget(words_, 1);
    foot->addWidget(button_, 0, Qt::AlignBottom);
    for (QWidget* const part : std::initializer_list<QWidget*>{text_, bar_, left_}) layout->addWidget(part);
    layout->addLayout(foot);
    setMinimumWidth(kLetters * fontMetrics().averageCharWidth());
  }

  QLabel* text_ = nullptr;
  QProgressBar* bar_ = nullptr;
  QLabel* left_ = nullptr;
  QLabel* words_ = nullptr;
  QPushButton* button_ = nullptr;
  QPointer<QWidget> active_before_;

 protected:
  void closeEvent(QCloseEvent* event) override {
    event->ignore();
    if (button_->isEnabled()) cancel_();
  }

  void keyPressEvent(QKeyEvent* event) override {
    if (event->key() == Qt::Key_Escape && button_->isEnabled()) return cancel_();
    QWidget::keyPressEvent(event);
  }

 private:
  QLabel* NewLabel(const char* name) {
    auto* const label = new QLabel(this);
    label->setObjectName(name);
    label->setTextFormat(Qt::PlainText);
    label->setWordWrap(true);
    return label;
  }

  std::function<void()> cancel_;
};

ProgressWindow::ProgressWindow(Owner owner, Teller teller) : owner_(std::move(owner)), teller_(std::move(teller)) {}

ProgressWindow::~ProgressWindow() = default;

void ProgressWindow::Begin(const tallybook::Text& title) {
  if (!open_) {
    began_ = events_let_in_ = Now();
    cancelled_ = false;
    can_cancel_ = false;
  }
  open_ = true;
  title_ = title;
  text_ = title;
  fraction_ = 0;
  is_busy_ = false;
  LetEventsIn();
}

void ProgressWindow::Move(Single fraction) {
  fraction_ = std::clamp(fraction, 0.0F, 1.0F);
  LetEventsIn();
}

void ProgressWindow::Text(const tallybook::Text& text) {
  text_ = text;
  LetEventsIn();
}

void ProgressWindow::CancelEnabled(bool enabled) {
  can_cancel_ = enabled;
}

void ProgressWindow::SetCancelWords(const tallybook::Text& words) {
  cancel_words_ = words;
}

long long ProgressWindow::Elapsed() const {
  return Now() - began_;
}

// A call from within an event of its own has nothing to let in.
void ProgressWindow::LetEventsIn() {
  if (!open_ || in_events_) return;
  if (on_turn_) on_turn_();
  const long long now = Now();
  if (now - events_let_in_ < kEventsEvery) return;
  if (now - began_ >= kShownAfter) ShowState();
  in_events_ = true;
  QCoreApplication::processEvents();
  in_events_ = false;
  events_let_in_ = Now();
}

void ProgressWindow::ShowState() {
  if (!frame_) frame_ = std::make_unique<Frame>([this] { Cancel(); });
  Frame& frame = *frame_;
  frame.setWindowTitle(ShownLine(title_));
  frame.text_->setText(ShownLines(text_));
  frame.bar_->setRange(0, is_busy_ ? 0 : kSteps);
  frame.bar_->setValue(static_cast<int>(fraction_ * kSteps));
  frame.bar_->setAccessibleName(ShownLine(title_));
  frame.left_->setText(ToQt(TimeLeft(Elapsed(), fraction_)));
  frame.words_->setText(cancelled_ ? Frame::tr("Stopping...") : can_cancel_ ? ShownLine(cancel_words_) : QString());
  frame.button_->setEnabled(can_cancel_ && !cancelled_);
  frame.button_->setVisible(can_cancel_);
  if (frame.isVisible()) return;
  frame.active_before_ = QApplication::activeWindow();
  QWidget* const owner = frame.active_before_ != nullptr ? frame.active_before_.data() : owner_ ? owner_() : nullptr;
  frame.winId();
  frame.windowHandle()->setTransientParent(owner == nullptr ? nullptr : owner->window()->windowHandle());
  frame.show();
  frame.button_->setFocus();
}

void ProgressWindow::Cancel() {
  cancelled_ = true;
  was_cancelled_ = true;
  if (frame_) frame_->button_->setEnabled(false);
}

// The window that was in front before is so again.
void ProgressWindow::Hide() {
  if (!frame_ || !frame_->isVisible()) return;
  const bool was_active = frame_->isActiveWindow();
  frame_->hide();
  if (was_active && frame_->active_before_ != nullptr) frame_->active_before_->activateWindow();
}

void ProgressWindow::End() {
  if (!open_) return;
  open_ = false;
  const bool looked_at = QApplication::applicationState() == Qt::ApplicationActive;
  const bool told = Elapsed() >= kToldAfter && !looked_at && teller_;
  Hide();
  if (told) teller_(title_, cancelled_ ? "Cancelled." : "Done.");
  cancelled_ = false;
  can_cancel_ = false;
}

Text TimeLeft(long long elapsed, Single fraction) {
  constexpr Single kToldFrom = 0.02F;
  constexpr double kSecond = 1000;
  constexpr double kMinute = 60;
  if (fraction < kToldFrom || fraction >= 1) return "";
  const auto done = static_cast<double>(fraction);
  const double seconds = static_cast<double>(elapsed) / done * (1 - done) / kSecond;
  if (seconds < 2) return "a moment left";
  const auto counted = [](double count, const char* unit) {
    return "about " + std::to_string(std::llround(count)) + " " + unit + " left";
  };
  return seconds < 1.5 * kMinute ? counted(seconds, "seconds") : counted(seconds / kMinute, "minutes");
}

}  // namespace tallybook::desktop
