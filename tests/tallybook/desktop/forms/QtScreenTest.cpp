#include <QLabel>
#include <QTimer>
#include <QWindow>
#include <cstdlib>
#include <memory>

#include "base/Failure.h"
#include "forms/PlainControls.h"
#include "forms/TextBox.h"
#include "forms/modAllUI.h"
#include "tallybook/desktop/forms/QtScreen.h"
#include "tests/support/FailsWith.h"
#include "tests/tallybook/desktop/forms/FormsFixture.h"

namespace tallybook::desktop::testing {
namespace {

using tallybook::testing::FailsWith;

class QtScreenTest : public FormsFixture {
 protected:
  QtScreenTest() { Describe(views::Rows({views::Shown({"Text1"}), views::Shown({"Command1"})})); }
  // A window of the host, shown and active.
  Long ShowHost() {
    constexpr QRect kPlace(300, 150, 600, 400);
    host_.setGeometry(kPlace);
    host_.show();
    EXPECT_TRUE(BringToFront(host_) && RunUntil([&] { return host_.geometry() == kPlace; }));
    return screen.HandleOf(host_);
  }
  [[nodiscard]] QPoint MiddleOf(Long window) {
    const Place place = screen.WindowPlace(window);
    return QRect(place.left, place.top, place.width, place.height).center();
  }

  QWidget host_;
  Form form_{"frmTest"};
  TextBox text_{form_, "Text1"};
  CommandButton button_{form_, "Command1"};
};

TEST_F(QtScreenTest, AFormWithoutAViewHasNoWindow) {
  Form form("frmUnknown");
  EXPECT_THAT([&] { form.Load(); }, FailsWith(FailureNumber::kInvalidArgument));
  EXPECT_FALSE(form.IsLoaded());
}

TEST_F(QtScreenTest, TheWindowOfAFormIsOneOfTheComponents) {
  form_.Load();
  EXPECT_NE(screen.ClassName(form_.Hwnd()).find("Thunder"), Text::npos);
  EXPECT_TRUE(screen.IsWindow(form_.Hwnd()));
  EXPECT_FALSE(screen.IsVisible(form_.Hwnd()));
  EXPECT_EQ(screen.WidgetOf(form_.Hwnd()), &WindowOf(form_));
}

TEST_F(QtScreenTest, AWindowOfTheHostKeepsItsHandle) {
  const Long handle = screen.HandleOf(host_);
  EXPECT_NE(handle, 0);
  EXPECT_EQ(screen.HandleOf(host_), handle);
  EXPECT_EQ(screen.WidgetOf(handle), &host_);
  EXPECT_EQ(screen.ClassName(handle).find("Thunder"), Text::npos);
  EXPECT_FALSE(screen.ClassName(handle).empty());
}

TEST_F(QtScreenTest, AHandleOfAWindowThatIsGoneStandsForNothing) {
  auto window = std::make_unique<QWidget>();
  const Long handle = screen.HandleOf(*window);
  window.reset();
  EXPECT_FALSE(screen.IsWindow(handle));
  EXPECT_EQ(screen.ClassName(handle), "");
  EXPECT_FALSE(screen.IsVisible(handle));
  EXPECT_EQ(screen.WindowPlace(handle), Place());
  screen.ShowWindow(handle);
  screen.EnableWindow(handle, false);
}

TEST_F(QtScreenTest, UnloadingTakesTheWindowAway) {
  Show(form_);
  const Long handle = form_.Hwnd();
  form_.Unload();
  EXPECT_FALSE(screen.IsWindow(handle) && screen.IsVisible(handle));
  EXPECT_EQ(screen.WindowOf(form_), nullptr);
  EXPECT_EQ(text_.Hwnd(), 0);
}

TEST_F(QtScreenTest, TheActiveWindowIsToldByItsHandle) {
  const Long host = ShowHost();
  EXPECT_EQ(screen.ActiveWindow(), host);
  Show(form_);
  EXPECT_EQ(screen.ActiveWindow(), form_.Hwnd());
  form_.Hide();
  EXPECT_TRUE(BringToFront(host_));
  EXPECT_EQ(screen.ActiveWindow(), host);
}

TEST_F(QtScreenTest, ADialogStandsInTheMiddleOfItsOwner) {
  const Long host = ShowHost();
  bool looked = false;
  platform.user.On("frmTest", [](Form& form) { HideLikeModal(form); });
  // The window manager places the dialog at its leisure.
  QTimer look;
  int turns_left = 250;
  look.callOnTimeout([&] {
    const QPoint apart = MiddleOf(host) - MiddleOf(form_.Hwnd());
    const bool in_the_middle = std::abs(apart.x()) <= 4 && std::abs(apart.y()) <= 30;
    if (!in_the_middle && --turns_left > 0) return;
    looked = true;
    look.stop();
    EXPECT_TRUE(in_the_middle) << apart.x() << ", " << apart.y();
    EXPECT_EQ(WindowOf(form_).windowHandle()->transientParent(), host_.windowHandle());
    HideLikeModal(form_);
  });
  look.start(20);
  platform.user.Forget();
  platform.clock.SetUser(nullptr);
  ShowLikeModal(form_, host);
  EXPECT_TRUE(looked);
}

TEST_F(QtScreenTest, TheCloseBoxIsTheForms) {
  FormWindow& window = Show(form_);
  bool asked = false;
  form_.QueryClose.Connect([&](bool& refused) { asked = refused = true; });
  window.close();
  EXPECT_TRUE(asked);
  EXPECT_TRUE(window.isVisible());
}

TEST_F(QtScreenTest, ADisabledWindowDoesNotClose) {
  FormWindow& window = Show(form_);
  form_.SetEnabled(false);
  window.close();
  EXPECT_TRUE(form_.IsLoaded());
}

TEST_F(QtScreenTest, AFailureInTheAnswerToAnActComesOutOfTheInput) {
  Show(form_);
  button_.Click.Connect([] { throw Failure(FailureNumber::kDeviceError, "no paper"); });
  QTest::mouseClick(&WidgetOf(button_), Qt::LeftButton);
  EXPECT_THAT([] { Run(); }, FailsWith(FailureNumber::kDeviceError));
  Run();
}

TEST_F(QtScreenTest, AFrozenWindowIsNotDrawn) {
  form_.Load();
  screen.FreezeWindow(form_.Hwnd(), true);
  EXPECT_FALSE(WindowOf(form_).updatesEnabled());
  screen.FreezeWindow(form_.Hwnd(), false);
  EXPECT_TRUE(WindowOf(form_).updatesEnabled());
}

TEST_F(QtScreenTest, ThePointerIsBusyUntilItIsNot) {
  screen.SetPointer(Pointer::kBusy);
  screen.SetPointer(Pointer::kBusy);
  ASSERT_NE(QApplication::overrideCursor(), nullptr);
  EXPECT_EQ(QApplication::overrideCursor()->shape(), Qt::WaitCursor);
  screen.SetPointer(Pointer::kDefault);
  EXPECT_EQ(QApplication::overrideCursor(), nullptr);
}

TEST_F(QtScreenTest, TheInnermostWindowAtAPointIsThatOfAControl) {
  FormWindow& window = Show(form_);
  const QPoint middle = WidgetOf(button_).mapToGlobal(WidgetOf(button_).rect().center());
  EXPECT_TRUE(RunUntil([&] { return screen.WindowAt(middle.x(), middle.y()) == button_.Hwnd(); }));
  EXPECT_EQ(screen.WindowAt(window.mapToGlobal(QPoint(1, 1)).x(), window.mapToGlobal(QPoint(1, 1)).y()), form_.Hwnd());
}

TEST_F(QtScreenTest, AWindowIsMinimisedAndComesBack) {
  Show(form_);
  form_.SetWindowState(kMinimisedWindow);
  EXPECT_TRUE(RunUntil([&] { return form_.WindowState() == kMinimisedWindow; }));
  form_.SetWindowState(kNormalWindow);
  EXPECT_TRUE(RunUntil([&] { return form_.WindowState() == kNormalWindow; }));
}

}  // namespace
}  // namespace tallybook::desktop::testing
