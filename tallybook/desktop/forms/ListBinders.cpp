#include "tallybook/desktop/forms/ListBinders.h"

#include <QApplication>
#include <QListView>
#include <QProxyStyle>
#include <QWheelEvent>
#include <algorithm>

#include "base/CodePage.h"
#include "forms/ListControls.h"
#include "tallybook/desktop/forms/ElidedBox.h"
#include "tallybook/desktop/forms/Fonts.h"
#include "tallybook/desktop/forms/ListModel.h"
#include "tallybook/desktop/forms/Shading.h"
#include "tallybook/desktop/forms/Words.h"
#include "views/View.h"

namespace tallybook::desktop {

// A combo box whose list is dropped down below it, never over it, and only where the control says so.
class DroppingBox : public ElidedBox {
 public:
  DroppingBox(ListControl& list, QWidget* parent) : ElidedBox(parent), list_(&list) {
    setStyle(&below_);
    setMaxVisibleItems(kVisibleEntries);
  }
  ~DroppingBox() override { setStyle(nullptr); }

  void Drop(bool dropped) {
    if (dropped == is_dropped_) return;
    is_dropped_ = dropped;
    dropped ? QComboBox::showPopup() : QComboBox::hidePopup();
  }
  void LetGo() { list_ = nullptr; }
  void showPopup() override {
    CarryOut([this] {
      if (list_ != nullptr) list_->UserDropDown(true);
    });
  }
  // Qt calls it for whatever closes the list.
  void hidePopup() override {
    is_dropped_ = false;
    QComboBox::hidePopup();
    CarryOut([this] {
      if (list_ != nullptr) list_->SetDroppedDown(false);
    });
  }

 protected:
  // A turn of the wheel over a form that is being read must not change what stands in it.
  void wheelEvent(QWheelEvent* event) override { event->ignore(); }

 private:
  static constexpr int kVisibleEntries = 60;

  class Below : public QProxyStyle {
   public:
    int styleHint(StyleHint hint, const QStyleOption* option, const QWidget* widget,
                  QStyleHintReturn* data) const override {
      return hint == SH_ComboBox_Popup ? 0 : QProxyStyle::styleHint(hint, option, widget, data);
    }
  };

  ListControl* list_;
  Below below_;
  bool is_dropped_ = false;
};

// --- The search ------------------------------------------------------------------------------------------------------

void EntrySearch::Type(ListControl& list, Integer character) {
  constexpr Integer kSpace = 32;
  if (!since_.isValid() || since_.elapsed() > QApplication::keyboardInputInterval()) text_.clear();
  since_.start();
  if (text_.empty() && character == kSpace) return;
  text_ += FromCodePage(std::string(1, static_cast<char>(character)));
  if (const Integer found = list.FindPrefix(text_); found != kNoEntry && found != list.ListIndex())
    list.UserChoose(found);
}

// --- Both ------------------------------------------------------------------------------------------------------------

ListBinder::ListBinder(ListControl& list, QWidget& widget)
    : ControlBinder(list, widget), list_(list), model_(*new ListModel(list, &widget)) {}

ListBinder::~ListBinder() {
  model_.LetGo();
}

bool ListBinder::TakeKey(const KeyPress& press) {
  constexpr Integer kFirstPrintable = 32;
  if (press.character >= kFirstPrintable && CharacterLeft() != 0)
    CarryOut([&] { search_.Type(list_, CharacterLeft()); });
  return true;
}

void ListBinder::Follow(const Change& change) {
  const Following following(*this);
  switch (change.kind) {
    case Change::Kind::kAdded:
    case Change::Kind::kRemoved:
      return Spoil();
    case Change::Kind::kSelection:
      return FollowSelection();
    case Change::Kind::kDropDown:
      return FollowDropDown();
    default:
      if (model_.rowCount({}) != list_.ListCount()) Spoil();
      if (!stale_) FollowSelection();
  }
}

void ListBinder::Spoil() {
  if (std::exchange(stale_, true)) return;
  QMetaObject::invokeMethod(
      &model_,
      [this, alive = std::weak_ptr<const void>(Life())] {
        if (!alive.expired()) Freshen();
      },
      Qt::QueuedConnection);
}

void ListBinder::Freshen() {
  if (!std::exchange(stale_, false)) return;
  const Following following(*this);
  model_.Freshen();
  EntriesCame();
  FollowSelection();
}

// --- Combo box -------------------------------------------------------------------------------------------------------

ComboBoxBinder::ComboBoxBinder(ComboBox& list, QWidget& parent)
    : ListBinder(list, *new DroppingBox(list, &parent)), box_(static_cast<DroppingBox&>(Widget())) {
  box_.setModel(&Model());
  box_.setSizePolicy(QSizePolicy::MinimumExpanding, QSizePolicy::Fixed);
  auto& view = *qobject_cast<QListView*>(box_.view());
  view.setUniformItemSizes(true);
  QObject::connect(&box_, &QComboBox::activated, &Receiver(), [this](int index) {
    User([&] { List().UserChoose(static_cast<Integer>(index)); });
    const Following following(*this);
    FollowSelection();
  });
}

ComboBoxBinder::~ComboBoxBinder() {
  box_.LetGo();
}

std::vector<QWidget*> ComboBoxBinder::InputWidgets() const {
  return {&box_, box_.view()};
}

void ComboBoxBinder::SetLeastSize(const views::Part& part) {
  if (part.characters > 0) box_.setMinimumContentsLength(part.characters);
}

void ComboBoxBinder::Follow(const Change& change) {
  if (change.kind == Change::Kind::kAll) ShowShaded(box_, List().Shaded());
  ListBinder::Follow(change);
}

void ComboBoxBinder::FollowSelection() {
  Freshen();
  box_.setCurrentIndex(List().ListIndex());
  if (List().DroppedDown()) box_.view()->setCurrentIndex(Model().index(List().ListIndex(), 0));
}

void ComboBoxBinder::FollowDropDown() {
  Freshen();
  box_.Drop(List().DroppedDown());
}

void ComboBoxBinder::EntriesCame() {
  // To measure each entry of a long list would take longer than to show it.
  constexpr Integer kMeasured = 100;
  // A box that adjusts itself whenever entries come takes its new size by itself, a moment later: outside of a layout
  // it would lose the one that the form has given it.
  const auto measured = IsFloating() ? QComboBox::AdjustToContentsOnFirstShow : QComboBox::AdjustToContents;
  const bool is_long = List().ListCount() > kMeasured;
  box_.setSizeAdjustPolicy(is_long ? QComboBox::AdjustToMinimumContentsLengthWithIcon : measured);
}

// --- List box --------------------------------------------------------------------------------------------------------

ListBoxBinder::ListBoxBinder(ListBox& list, QWidget& parent)
    : ListBinder(list, *new QListView(&parent)), box_(list), view_(static_cast<QListView&>(Widget())) {
  view_.setModel(&Model());
  view_.setUniformItemSizes(true);
  view_.setEditTriggers(QAbstractItemView::NoEditTriggers);
  QObject::connect(&view_, &QListView::pressed, &Receiver(), [this](const QModelIndex& index) {
    User([&] { box_.UserChoose(static_cast<Integer>(index.row())); });
    const Following following(*this);
    FollowSelection();
  });
  QObject::connect(&view_, &QListView::doubleClicked, &Receiver(), [this](const QModelIndex& index) {
    User([&] { box_.UserDoubleClick(static_cast<Integer>(index.row())); });
  });
}

void ListBoxBinder::SetLeastSize(const views::Part& part) {
  ControlBinder::SetLeastSize(part);
  if (part.rows > 0) view_.setMinimumHeight(part.rows * view_.fontMetrics().height() + 2 * view_.frameWidth());
}

void ListBoxBinder::FollowSelection() {
  Freshen();
  view_.setCurrentIndex(Model().index(box_.ListIndex(), 0));
}

}  // namespace tallybook::desktop
