#include <QElapsedTimer>
#include <QLabel>
#include <QProgressBar>
#include <QPushButton>
#include <gmock/gmock.h>

#include "tallybook/desktop/host/ProgressWindow.h"
#include "tests/tallybook/desktop/Waiting.h"

namespace tallybook::desktop {
namespace {

using testing::Part;

// The window of a progress, where one is shown.
QWidget* Shown(const QString& title) {
  for (QWidget* const window : QApplication::topLevelWidgets()) {
    if (window->isVisible() && window->windowTitle() == title) return window;
  }
  return nullptr;
}

// Works on with small steps until it holds.
void WorkUntil(ProgressWindow& progress, const std::function<bool()>& holds, const char* what) {
  QElapsedTimer time;
  time.start();
  Single fraction = 0.25F;
  while (!holds() && time.elapsed() < testing::kLimit) {
    fraction = fraction > 0.75F ? 0.25F : fraction + 0.01F;
    progress.Fraction(fraction);
    (void)progress.Cancelled();
    QTest::qSleep(1);
  }
  EXPECT_TRUE(holds()) << "it never happened: " << what;
}

TEST(ProgressWindowTest, ShowsItselfOnlyAfterHalfASecondOfWork) {
  ProgressWindow progress;
  progress.Begin("Importing QDX File");
  QElapsedTimer time;
  time.start();
  WorkUntil(
      progress, [] { return Shown("Importing QDX File") != nullptr; }, "the window shows itself");
  EXPECT_GE(time.elapsed(), ProgressWindow::kShownAfter - ProgressWindow::kEventsEvery);
  progress.End();
  EXPECT_EQ(Shown("Importing QDX File"), nullptr);
}

TEST(ProgressWindowTest, SaysWhatIsDoneOfWhatAndLetsEventsIn) {
  ProgressWindow progress;
  bool came_in = false;
  QTimer::singleShot(100, [&] { came_in = true; });
  progress.Begin("Writing Export File");
  progress.Text("Writing Export File\r\nAccount: Bakery");
  WorkUntil(
      progress, [] { return Shown("Writing Export File") != nullptr; }, "the window shows itself");
  EXPECT_TRUE(came_in);
  const QWidget& window = *Shown("Writing Export File");
  EXPECT_EQ(Part<QLabel>(window, "text").text(), "Writing Export File\nAccount: Bakery");
  EXPECT_GT(window.findChild<QProgressBar*>()->value(), 0);
  progress.End();
}

TEST(ProgressWindowTest, CancelIsThereWhereTheWorkOffersItAndSaysWhatItLeaves) {
  ProgressWindow progress;
  progress.SetCancelWords("What was imported by then stays.");
  progress.Begin("Importing");
  WorkUntil(
      progress, [] { return Shown("Importing") != nullptr; }, "the window shows itself");
  QWidget& window = *Shown("Importing");
  auto& cancel = Part<QPushButton>(window, "cancel");
  EXPECT_FALSE(cancel.isVisible());
  QTest::keyClick(&window, Qt::Key_Escape);
  EXPECT_FALSE(progress.Cancelled());
  progress.CancelEnabled(true);
  WorkUntil(
      progress, [&] { return cancel.isVisible(); }, "cancel is offered");
  EXPECT_EQ(Part<QLabel>(window, "words").text(), "What was imported by then stays.");
  QTest::mouseClick(&cancel, Qt::LeftButton);
  EXPECT_TRUE(progress.Cancelled());
  EXPECT_TRUE(progress.WasCancelled());
  progress.End();
  EXPECT_FALSE(progress.Cancelled());
  progress.Begin("Again");
  EXPECT_FALSE(progress.Cancelled());
  progress.End();
}

TEST(ProgressWindowTest, EscapeAndTheCloseBoxCancel) {
  for (const bool by_key : {true, false}) {
    ProgressWindow progress;
    progress.Begin("Importing");
    progress.CancelEnabled(true);
    WorkUntil(
        progress, [] { return Shown("Importing") != nullptr; }, "the window shows itself");
    if (by_key) {
      QTest::keyClick(Shown("Importing"), Qt::Key_Escape);
    } else {
      Shown("Importing")->close();
    }
    EXPECT_TRUE(progress.Cancelled());
    EXPECT_NE(Shown("Importing"), nullptr) << "it stays until the work has ended";
    progress.End();
  }
}

TEST(ProgressWindowTest, GivesTheInputBackToTheWindowThatHadIt) {
  QWidget before;
  before.setWindowTitle("Before");
  before.show();
  ASSERT_TRUE(QTest::qWaitForWindowActive(&before));
  ProgressWindow progress;
  progress.Begin("Importing");
  WorkUntil(
      progress, [] { return Shown("Importing") != nullptr && Shown("Importing")->isActiveWindow(); },
      "the window is in front");
  progress.End();
  testing::WaitUntil([&] { return before.isActiveWindow(); }, "the window before is in front again");
}

TEST(ProgressWindowTest, AnEndWithoutABeginningIsHarmless) {
  ProgressWindow progress;
  progress.End();
  progress.Fraction(2.0F);
  EXPECT_FALSE(progress.Cancelled());
}

// Counts what is drawn while it lives.
class PaintCounter : public QObject {
 public:
  PaintCounter() { qApp->installEventFilter(this); }
  bool eventFilter(QObject* object, QEvent* event) override {
    if (event->type() == QEvent::Paint) ++paints_;
    return QObject::eventFilter(object, event);
  }
  [[nodiscard]] int Paints() const { return paints_; }

 private:
  int paints_ = 0;
};

TEST(ProgressWindowTest, DrawsSeldomHoweverOftenItIsTold) {
  ProgressWindow progress;
  progress.Begin("Importing");
  const PaintCounter counter;
  constexpr int kSteps = 1'000'000;
  for (int i = 0; i < kSteps; ++i) {
    progress.Fraction(static_cast<Single>(i) / kSteps);
    if (progress.Cancelled()) break;
  }
  EXPECT_LT(counter.Paints(), kSteps / 100);
  progress.End();
}

TEST(ProgressWindowTest, TellsHowLongItMayTake) {
  EXPECT_EQ(TimeLeft(1000, 0.01F), "") << "too early to tell";
  EXPECT_EQ(TimeLeft(10'000, 0.5F), "about 10 seconds left");
  EXPECT_EQ(TimeLeft(100'000, 0.25F), "about 5 minutes left");
  EXPECT_EQ(TimeLeft(10'000, 0.99F), "a moment left");
  EXPECT_EQ(TimeLeft(10'000, 1.0F), "");
}

}  // namespace
}  // namespace tallybook::desktop
