#include "tallybook/desktop/window/JournalWindow.h"

#include <QtGui/QStandardItemModel>
#include <QtWidgets/QDialogButtonBox>
#include <QtWidgets/QHeaderView>
#include <QtWidgets/QLabel>
#include <QtWidgets/QPushButton>
#include <QtWidgets/QStyledItemDelegate>
#include <QtWidgets/QTreeView>
#include <QtWidgets/QVBoxLayout>
#include <algorithm>
#include <utility>

#include "base/Dates.h"
#include "base/Failure.h"
#include "tallybook/application/EntryDates.h"
#include "tallybook/application/EntryWords.h"
#include "tallybook/application/Shown.h"

namespace tallybook::desktop {

namespace {

constexpr int kLeastTarget = 24;

// Rows that a pointer hits easily.
class TallRows final : public QStyledItemDelegate {
 public:
  using QStyledItemDelegate::QStyledItemDelegate;
  [[nodiscard]] QSize sizeHint(const QStyleOptionViewItem& option, const QModelIndex& index) const override {
    const QSize usual = QStyledItemDelegate::sizeHint(option, index);
    return {usual.width(), std::max(kLeastTarget, option.fontMetrics.height() * 3 / 2)};
  }
};

QString DateIn(const engine::JournalEntry& entry, const Text& date, Date value, const LocaleStyle& style) {
  return date == "-" || entry.first == kNoDate ? QString() : ToQt(style.dates(value));
}

// Why an entry cannot be taken back, as far as its row tells; empty where it may be.
QString WhyNot(const engine::JournalEntry& entry) {
  if (entry.state == engine::JournalState::kUndone) return "This entry has been undone already.";
  if (entry.kind == engine::JournalKind::kUndo) return "This entry took another one back; it cannot be undone itself.";
  if (!entry.keeps_images) return "This entry kept no figures from before, so it cannot be undone.";
  return {};
}

}  // namespace

JournalWindow::JournalWindow(QWidget* parent, BookReader& reader, const LocaleStyle& style, Undo undo)
    : QDialog(parent),
      reader_(reader),
      style_(style),
      undo_(std::move(undo)),
      list_(new QTreeView),
      rows_(new QStandardItemModel(this)),
      hint_(new QLabel) {
  setWindowTitle("Journal");
  hint_->setWordWrap(true);
  list_->setModel(rows_);
  list_->setItemDelegate(new TallRows(list_));
  list_->setAccessibleName("Entries of the journal, newest first");
  list_->setRootIsDecorated(false);
  list_->setAlternatingRowColors(true);
  list_->setUniformRowHeights(true);
  list_->setEditTriggers(QAbstractItemView::NoEditTriggers);
  auto* buttons = new QDialogButtonBox(QDialogButtonBox::Close);
  if (undo_) {
    undo_button_ = buttons->addButton("&Undo This Entry", QDialogButtonBox::ActionRole);
    undo_button_->setAutoDefault(false);
    connect(undo_button_, &QPushButton::clicked, this, [this] { TakeBack(); });
  }
  connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
  auto* layout = new QVBoxLayout(this);
  layout->addWidget(list_, 1);
  layout->addWidget(hint_);
  layout->addWidget(buttons);
  buttons->button(QDialogButtonBox::Close)->setDefault(true);
  resize(fontMetrics().height() * 52, fontMetrics().height() * 28);
  Fill();
  connect(list_->selectionModel(), &QItemSelectionModel::currentChanged, this, [this] { Follow(); });
  list_->setCurrentIndex(rows_->index(0, 0));
  list_->setFocus();
  Follow();
}

void JournalWindow::Fill() {
  rows_->clear();
  rows_->setHorizontalHeaderLabels({"When", "What ran", "From", "To", "State"});
  try {
    reader_.Refresh();
    entries_ = engine::Journal(reader_.Read()).Entries();
  } catch (const Failure& failure) {
    entries_.clear();
    hint_->setText(ToQt(application::Shown(failure.Description())));
  }
  std::ranges::reverse(entries_);
  for (const engine::JournalEntry& entry : entries_) {
    const application::EntryDates dates = application::EntryDatesOf(entry);
    const Date last = entry.last == kNoDate ? entry.first : entry.last;
    QList<QStandardItem*> row;
    for (const QString& text : {ToQt(DateTimeText(entry.time)), ToQt(application::Shown(application::WhatRan(entry))),
                                DateIn(entry, dates.first, entry.first, style_),
                                DateIn(entry, dates.last, last, style_), ToQt(application::StateText(entry))}) {
      row << new QStandardItem(AsWritten(text));
    }
    rows_->appendRow(row);
  }
  for (int column = 0; column < rows_->columnCount(); ++column) list_->resizeColumnToContents(column);
}

const engine::JournalEntry* JournalWindow::Current() const {
  const auto row = static_cast<std::size_t>(list_->currentIndex().row());
  return list_->currentIndex().isValid() && row < entries_.size() ? &entries_[row] : nullptr;
}

void JournalWindow::Follow() {
  const engine::JournalEntry* entry = Current();
  if (entries_.empty()) hint_->setText("Nothing has changed figures yet. Imports and typed figures are listed here.");
  if (entry != nullptr) hint_->setText(WhyNot(*entry));
  if (undo_button_ != nullptr) undo_button_->setEnabled(entry != nullptr && WhyNot(*entry).isEmpty());
}

void JournalWindow::TakeBack() {
  const engine::JournalEntry* entry = Current();
  if (entry == nullptr) return;
  if (!undo_(*entry)) return;
  const int row = list_->currentIndex().row();
  Fill();
  list_->setCurrentIndex(
      rows_->index(std::min(row + 1, rows_->rowCount() - 1), 0));  // behind the entry that the undo left
  Follow();
}

}  // namespace tallybook::desktop
