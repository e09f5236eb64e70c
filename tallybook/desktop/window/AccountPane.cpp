#include "tallybook/desktop/window/AccountPane.h"

#include <QtCore/QEvent>
#include <QtCore/QSize>
#include <QtCore/QSortFilterProxyModel>
#include <QtCore/QStringListModel>
#include <QtWidgets/QLabel>
#include <QtWidgets/QListView>
#include <QtWidgets/QVBoxLayout>
#include <algorithm>

#include "tallybook/application/Shown.h"
#include "tallybook/desktop/forms/LocaleStyle.h"
#include "tallybook/desktop/window/SearchLine.h"

namespace tallybook::desktop {

namespace {

constexpr int kLeastTarget = 24;  // what a pointer hits easily

}  // namespace

class AccountPane::Filter final : public QSortFilterProxyModel {
 public:
  using QSortFilterProxyModel::QSortFilterProxyModel;

  void SetRowHeight(int height) { height_ = height; }
  [[nodiscard]] QVariant data(const QModelIndex& index, int role) const override {
    return role == Qt::SizeHintRole ? QVariant(QSize(0, height_)) : QSortFilterProxyModel::data(index, role);
  }

  void SetWords(const QString& search) {
    words_ = SearchWords(search);
    invalidateFilter();
  }

 protected:
  [[nodiscard]] bool filterAcceptsRow(int row, const QModelIndex& parent) const override {
    return words_.StandIn(sourceModel()->index(row, 0, parent).data().toString());
  }

 private:
  SearchWords words_;
  int height_ = 0;
};

AccountPane::AccountPane(QWidget* parent)
    : QWidget(parent),
      list_(new QListView),
      search_(new SearchLine("account", *list_)),
      nothing_(new QLabel),
      names_(new QStringListModel(this)),
      filter_(new Filter(this)) {
  filter_->setSourceModel(names_);
  filter_->SetRowHeight(std::max(fontMetrics().height() * 3 / 2, kLeastTarget));
  list_->setModel(filter_);
  list_->setAccessibleName("Accounts");
  list_->setUniformItemSizes(true);
  list_->setEditTriggers(QAbstractItemView::NoEditTriggers);
  nothing_->setWordWrap(true);
  nothing_->setMargin(fontMetrics().height() / 2);
  nothing_->hide();
  auto* layout = new QVBoxLayout(this);
  LeaveMargin();
  layout->addWidget(search_);
  layout->addWidget(nothing_);
  layout->addWidget(list_, 1);
  connect(search_, &QLineEdit::textChanged, this, [this](const QString& text) {
    const Integer before = Current();
    filter_->SetWords(text);
    TellFilter();
    SetCurrent(before);
    if (Current() == 0) Move(0);
  });
  connect(list_->selectionModel(), &QItemSelectionModel::currentChanged, this, [this] {
    if (telling_ && chosen_ && Current() > 0) chosen_(Current());
  });
}

AccountPane::~AccountPane() = default;

// At the window's edge; the other side touches the table. A layout does not turn its margins with the words.
void AccountPane::LeaveMargin() {
  const int margin = 2 * (fontMetrics().height() / 4);
  const bool mirrored = isRightToLeft();
  layout()->setContentsMargins(mirrored ? 0 : margin, margin, mirrored ? margin : 0, 0);
}

void AccountPane::changeEvent(QEvent* event) {
  if (event->type() == QEvent::LayoutDirectionChange) LeaveMargin();
  QWidget::changeEvent(event);
}

void AccountPane::Show(const std::vector<engine::AccountDescription>& accounts) {
  QStringList lines;
  for (const auto& account : accounts) lines << ToQt(application::Shown(account.code + "  " + account.description));
  telling_ = false;
  names_->setStringList(lines);
  telling_ = true;
  TellFilter();
}

// An empty list says what would fill it.
void AccountPane::TellFilter() {
  const bool no_accounts = names_->rowCount() == 0;
  nothing_->setVisible(filter_->rowCount() == 0);
  nothing_->setText(no_accounts ? "This book has no accounts. Book, Accounts, Fields, Years adds them."
                                : "No account has all of these words in its code or description.");
}

void AccountPane::SetCurrent(Integer position) {
  const QModelIndex index = filter_->mapFromSource(names_->index(position - 1, 0));
  telling_ = false;
  if (index.isValid()) {
    list_->setCurrentIndex(index);
  } else {
    list_->setCurrentIndex({});
  }
  telling_ = true;
}

Integer AccountPane::Current() const {
  const QModelIndex index = list_->currentIndex();
  return index.isValid() ? static_cast<Integer>(filter_->mapToSource(index).row() + 1) : Integer{0};
}

void AccountPane::Move(int rows) {
  if (filter_->rowCount() == 0) return;
  const int row = std::clamp(list_->currentIndex().row() + rows, 0, filter_->rowCount() - 1);
  list_->setCurrentIndex(filter_->index(row, 0));
}

void AccountPane::BeginSearch() {
  search_->Begin();
}

void AccountPane::OnDone(std::function<void()> listener) {
  search_->OnDone(std::move(listener));
}

}  // namespace tallybook::desktop
