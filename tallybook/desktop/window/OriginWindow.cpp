#include "tallybook/desktop/window/OriginWindow.h"

#include <QtWidgets/QDialogButtonBox>
#include <QtWidgets/QLabel>
#include <QtWidgets/QPushButton>
#include <QtWidgets/QVBoxLayout>
#include <algorithm>
#include <utility>

#include "base/Dates.h"
#include "tallybook/application/EntryItems.h"
#include "tallybook/application/EntryWords.h"
#include "tallybook/desktop/host/QtTexts.h"
#include "tallybook/desktop/host/RowsView.h"

namespace tallybook::desktop {

namespace {

enum Column : int { kNumber, kWhen, kWho, kWhat, kFile, kBefore, kAfter, kState };

int DecimalsOf(const engine::FigureHistory& history) {
  int decimals = DecimalsNeeded(history.value);
  for (const engine::FigureChange& change : history.changes) {
    decimals = std::max({decimals, DecimalsNeeded(change.before.value_or(0)), DecimalsNeeded(change.after)});
  }
  return decimals;
}

QLabel* NewLine(const QString& words) {
  auto* const label = new QLabel(words);
  label->setTextFormat(Qt::PlainText);
  label->setWordWrap(true);
  return label;
}

// What the list does not tell.
QString HintOf(const engine::FigureHistory& history) {
  if (history.unknown_before != 0) return ToQt(application::UnknownBeforeWords(history));
  if (!history.changes.empty()) return {};
  return "No entry of the journal has changed this figure: it has stood so since the book was made.";
}

}  // namespace

OriginWindow::OriginWindow(QWidget* parent, const LocaleStyle& style, const QString& figure,
                           const application::FigureOrigin& origin, ShowEntry show_entry)
    : QDialog(parent),
      show_entry_(std::move(show_entry)),
      list_(new RowsView("Entries that changed the figure, oldest first", this)),
      journal_(new QPushButton("Show in the &Journal\u2026")) {
  setWindowTitle("Where This Comes From");
  const int decimals = DecimalsNeeded(origin.history.value);
  const QString value = Upright(ToQt(NumberText(origin.history.value, decimals, style.numbers)));
  QLabel* const head = NewLine(figure + ": " + value);
  head->setObjectName("figure");
  QFont bold = font();
  bold.setBold(true);
  head->setFont(bold);
  list_->setObjectName("entries");
  QLabel* const hint = NewLine(HintOf(origin.history));
  hint->setObjectName("hint");
  hint->setVisible(!hint->text().isEmpty());
  auto* const buttons = new QDialogButtonBox(QDialogButtonBox::Close);
  journal_->setObjectName("journal");
  journal_->setAutoDefault(false);
  buttons->addButton(journal_, QDialogButtonBox::ActionRole);
  buttons->button(QDialogButtonBox::Close)->setDefault(true);
  auto* const layout = new QVBoxLayout(this);
  layout->addWidget(head);
  layout->addWidget(list_, 1);
  layout->addWidget(hint);
  layout->addWidget(buttons);
  connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
  connect(journal_, &QPushButton::clicked, this, [this] { GoToEntry(); });
  list_->OnChosen([this] { GoToEntry(); });
  resize(fontMetrics().height() * 56, fontMetrics().height() * 22);
  Fill(style, origin);
}

void OriginWindow::Fill(const LocaleStyle& style, const application::FigureOrigin& origin) {
  list_->SetColumns({"No.", "When", "Who", "What ran", "File", "Before", "After", "State"}, {kNumber, kBefore, kAfter});
  const int decimals = DecimalsOf(origin.history);
  const auto number = [&](Double value) { return Upright(ToQt(NumberText(value, decimals, style.numbers))); };
  for (std::size_t index = 0; index < origin.history.changes.size(); ++index) {
    const engine::FigureChange& change = origin.history.changes[index];
    list_->AddRow({QString::number(change.entry.id), ToQt(DateTimeText(change.entry.time)),
                   ShownLine(origin.WhoRan(change)), ShownLine(application::WhatRan(change.entry)),
                   ShownLine(application::PathsOf(origin.files[index])),
                   change.before ? number(*change.before) : QString("not known"), number(change.after),
                   ToQt(application::StateText(change.entry))});
    entries_.push_back(change.entry.id);
  }
  list_->FitColumns();
  list_->GoTo(list_->RowCount() - 1);
  list_->setFocus();
  journal_->setEnabled(!entries_.empty());
}

void OriginWindow::GoToEntry() {
  const int row = list_->CurrentRow();
  if (row >= 0) show_entry_(entries_[static_cast<std::size_t>(row)], *this);
}

}  // namespace tallybook::desktop
