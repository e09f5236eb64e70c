#include "tallybook/desktop/forms/QtWheel.h"

#include <QApplication>
#include <QPointer>
#include <QWheelEvent>
#include <QWidget>
#include <algorithm>
#include <cstdint>
#include <set>
#include <utility>
#include <vector>

#include "tallybook/desktop/forms/QtScreen.h"
#include "tallybook/desktop/forms/UserActs.h"

namespace tallybook::desktop {

namespace {

Long Packed(int upper, int lower) {
  const auto high = static_cast<std::uint32_t>(static_cast<std::uint16_t>(upper)) << 16U;
  return static_cast<Long>(high | static_cast<std::uint16_t>(lower));
}

}  // namespace

// Hears what every widget gets, and hands on what belongs to a window with hooks.
class QtWheel::Filter : public QObject {
 public:
  struct Hook {
    Long window = 0;
    const void* owner = nullptr;
    WindowHook call;
  };

  explicit Filter(QtScreen& screen) : screen_(screen) { qApp->installEventFilter(this); }

  void Add(Long window, const void* owner, WindowHook hook) {
    hooks_.push_back({window, owner, std::move(hook)});
    if (!watched_.insert(window).second) return;
    // Its end is told while it can still be told of.
    QObject::connect(screen_.WidgetOf(window), &QObject::destroyed, this, [this, window] {
      watched_.erase(window);
      Send(window, kWindowDestroyed, 0, 0);
    });
  }
  [[nodiscard]] bool HasNo(Long window) const { return screen_.WidgetOf(window) == nullptr; }
  bool Remove(Long window, const void* owner) {
    return std::erase_if(hooks_, [&](const Hook& hook) { return hook.window == window && hook.owner == owner; }) > 0;
  }
  // Through the window's hooks, the newest first. What the window would do by itself is Qt's, which goes on with the
  // event unless a hook keeps it.
  Long Send(Long window, Long message, Long first, Long second) {
    std::vector<WindowHook> calls;
    for (const Hook& hook : hooks_)
      if (hook.window == window) calls.push_back(hook.call);
    const std::vector<WindowHook> outer = std::exchange(to_call_, std::move(calls));
    reached_ = false;
    const Long answer = Next(window, message, first, second);
    to_call_ = outer;
    return answer;
  }
  Long Next(Long window, Long message, Long first, Long second) {
    if (to_call_.empty()) {
      reached_ = true;
      return 0;
    }
    const WindowHook hook = std::move(to_call_.back());
    to_call_.pop_back();
    Long answer = 0;
    CarryOut([&] { answer = hook(window, message, first, second); });
    return answer;
  }

 protected:
  bool eventFilter(QObject* object, QEvent* event) override {
    if (event->type() != QEvent::Wheel || hooks_.empty() || !object->isWidgetType()) return false;
    const auto& widget = static_cast<const QWidget&>(*object);
    const Long window = WindowOf(widget);
    if (window == 0) return false;
    // An event that a widget passes on comes again from what is around it.
    const auto& wheel = static_cast<const QWheelEvent&>(*event);
    if (wheel.angleDelta().isNull()) return false;  // a touch that begins or ends
    if (std::exchange(last_time_, wheel.timestamp()) == wheel.timestamp() && wheel.timestamp() != 0 &&
        last_widget_ != &widget && last_widget_ != nullptr && widget.isAncestorOf(last_widget_))
      return false;
    last_widget_ = &widget;
    const QPoint place = wheel.globalPosition().toPoint();
    const bool is_tilt = wheel.angleDelta().y() == 0;
    const int amount = is_tilt ? wheel.angleDelta().x() : wheel.angleDelta().y();
    Send(window, is_tilt ? kWheelTilted : kWheelTurned, Packed(amount, 0), Packed(place.y(), place.x()));
    return !reached_;
  }

 private:
  [[nodiscard]] Long WindowOf(const QWidget& widget) const {
    for (const Hook& hook : hooks_)
      if (screen_.WidgetOf(hook.window) == widget.window()) return hook.window;
    return 0;
  }

  QtScreen& screen_;
  std::vector<Hook> hooks_;
  std::set<Long> watched_;           // the windows whose end is heard of
  std::vector<WindowHook> to_call_;  // of the message under way, the next one last
  bool reached_ = false;             // the window itself
  quint64 last_time_ = 0;
  QPointer<const QWidget> last_widget_;
};

QtWheel::QtWheel(QtScreen& screen) : filter_(std::make_unique<Filter>(screen)) {}

QtWheel::~QtWheel() = default;

Long QtWheel::ScrollLines() {
  return QApplication::wheelScrollLines();
}

std::optional<Long> QtWheel::ScrollCharacters() {
  return std::nullopt;  // Qt does not know
}

bool QtWheel::AddHook(Long window, const void* owner, WindowHook hook) {
  if (filter_->HasNo(window)) return false;
  filter_->Add(window, owner, std::move(hook));
  return true;
}

bool QtWheel::RemoveHook(Long window, const void* owner) {
  return filter_->Remove(window, owner);
}

Long QtWheel::CallNextHook(Long window, Long message, Long first, Long second) {
  return filter_->Next(window, message, first, second);
}

}  // namespace tallybook::desktop
