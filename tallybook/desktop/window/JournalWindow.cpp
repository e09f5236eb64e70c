#include "tallybook/desktop/window/JournalWindow.h"

#include <QtWidgets/QDialogButtonBox>
#include <QtWidgets/QLabel>
#include <QtWidgets/QPushButton>
#include <QtWidgets/QSplitter>
#include <QtWidgets/QTextBrowser>
#include <QtWidgets/QVBoxLayout>
#include <algorithm>
#include <utility>

#include "base/Dates.h"
#include "base/Failure.h"
#include "tallybook/application/EntryDates.h"
#include "tallybook/application/EntryItems.h"
#include "tallybook/application/EntryWords.h"
#include "tallybook/application/Shown.h"
#include "tallybook/application/UndoWords.h"
#include "tallybook/desktop/host/QtTexts.h"
#include "tallybook/desktop/host/RowsView.h"

namespace tallybook::desktop {

namespace {

constexpr int kNumberColumn = 0;

QString DateIn(const engine::JournalEntry& entry, const Text& date, Date value, const LocaleStyle& style) {
  return date == "-" || entry.first == kNoDate ? QString() : ToQt(style.dates(value));
}

// The items under each other, names in a column of their own; they hold names from elsewhere, which are no markup.
QString PageOf(const engine::NotedEntry& noted) {
  QString page = "<h4>" + ShownLine(application::EntryHeading(noted)).toHtmlEscaped() + "</h4><table>";
  for (const auto& [name, value] : application::ItemsOf(noted)) {
    page += QString("<tr><td>%1&nbsp;&nbsp;</td><td>%2</td></tr>")
                .arg(ShownLine(name).toHtmlEscaped(), ShownLine(value).toHtmlEscaped());
  }
  return page + "</table>";
}

}  // namespace

JournalWindow::JournalWindow(QWidget* parent, BookReader& reader, const LocaleStyle& style, Undo undo)
    : QDialog(parent),
      reader_(reader),
      style_(style),
      undo_(std::move(undo)),
      list_(new RowsView("Entries of the journal, newest first", this)),
      details_(new QTextBrowser),
      hint_(new QLabel) {
  setWindowTitle("Journal");
  LayOut();
  Read();
  Fill();
  list_->OnRow([this] { Follow(); });
  list_->GoTo(0);
  list_->setFocus();
  Follow();
}

void JournalWindow::LayOut() {
  hint_->setObjectName("hint");
  hint_->setWordWrap(true);
  hint_->setTextFormat(Qt::PlainText);
  details_->setObjectName("details");
  details_->setAccessibleName("All that is kept of the entry");
  details_->setOpenLinks(false);
  details_->setTabChangesFocus(true);
  auto* const parts = new QSplitter(Qt::Vertical);
  parts->setChildrenCollapsible(false);
  parts->addWidget(list_);
  parts->addWidget(details_);
  parts->setStretchFactor(0, 3);
  parts->setStretchFactor(1, 2);
  auto* const buttons = new QDialogButtonBox(QDialogButtonBox::Close);
  if (undo_) {
    undo_button_ = buttons->addButton("&Undo This Entry\u2026", QDialogButtonBox::ActionRole);
    undo_button_->setObjectName("undo");
    undo_button_->setAutoDefault(false);
    connect(undo_button_, &QPushButton::clicked, this, [this] { TakeBack(); });
  }
  connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
  auto* const layout = new QVBoxLayout(this);
  layout->addWidget(parts, 1);
  layout->addWidget(hint_);
  layout->addWidget(buttons);
  buttons->button(QDialogButtonBox::Close)->setDefault(true);
  resize(fontMetrics().height() * 56, fontMetrics().height() * 36);
}

void JournalWindow::Read() {
  entries_.clear();
  plain_.clear();
  try {
    reader_.Refresh();
    entries_ = engine::JournalNotes(reader_.Read()).Entries();
  } catch (const Failure& failure) {
    hint_->setText(ToQt(application::Shown(failure.Description())));
  }
  for (const engine::NotedEntry& noted : entries_) plain_.push_back(noted.entry);
  std::ranges::reverse(entries_);
}

void JournalWindow::Fill() {
  list_->SetColumns({"No.", "When", "Who", "What ran", "From", "To", "State"}, {kNumberColumn});
  for (const engine::NotedEntry& noted : entries_) {
    const engine::JournalEntry& entry = noted.entry;
    const application::EntryDates dates = application::EntryDatesOf(entry);
    const Date last = entry.last == kNoDate ? entry.first : entry.last;
    list_->AddRow({QString::number(entry.id), ToQt(DateTimeText(entry.time)), ShownLine(noted.who),
                   ShownLine(application::WhatRan(entry)), DateIn(entry, dates.first, entry.first, style_),
                   DateIn(entry, dates.last, last, style_), ToQt(application::StateText(entry))});
  }
  list_->FitColumns();
}

const engine::NotedEntry* JournalWindow::Current() const {
  const int row = list_->CurrentRow();
  return row >= 0 && row < static_cast<int>(entries_.size()) ? &entries_[static_cast<std::size_t>(row)] : nullptr;
}

QString JournalWindow::WhyNot(const engine::NotedEntry& noted) const {
  return ToQt(application::WhyNotUndone(plain_, noted.entry));
}

void JournalWindow::Follow() {
  const engine::NotedEntry* const noted = Current();
  if (entries_.empty() && hint_->text().isEmpty()) {
    hint_->setText("Nothing has changed figures yet. Imports and typed figures are listed here.");
  }
  if (noted != nullptr) {
    const bool open = noted->entry.state == engine::JournalState::kOpen;
    const QString not_finished = "This entry was not finished. What it wrote by then stands, and can be undone.";
    const QString why_not = WhyNot(*noted);
    hint_->setText(why_not.isEmpty() && open ? not_finished : why_not);
  }
  details_->setHtml(noted == nullptr ? QString() : PageOf(*noted));
  if (undo_button_ != nullptr) undo_button_->setEnabled(noted != nullptr && WhyNot(*noted).isEmpty());
}

void JournalWindow::ShowEntry(Long id) {
  const auto found =
      std::ranges::find_if(entries_, [id](const engine::NotedEntry& noted) { return noted.entry.id == id; });
  if (found != entries_.end()) list_->GoTo(static_cast<int>(found - entries_.begin()));
}

// The entry stays the one that is looked at; its undo stands above it.
void JournalWindow::TakeBack() {
  const engine::NotedEntry* const noted = Current();
  if (noted == nullptr) return;
  const engine::JournalEntry entry = noted->entry;
  if (!undo_(entry)) return;
  Read();
  Fill();
  ShowEntry(entry.id);
  Follow();
}

}  // namespace tallybook::desktop
