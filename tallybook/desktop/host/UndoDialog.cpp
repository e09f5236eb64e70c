#include "tallybook/desktop/host/UndoDialog.h"

#include <QDialogButtonBox>
#include <QGridLayout>
#include <QLabel>
#include <QPushButton>
#include <QVBoxLayout>

#include "tallybook/application/Counts.h"
#include "tallybook/application/Reversal.h"
#include "tallybook/application/UndoWords.h"
#include "tallybook/desktop/host/FigureNames.h"
#include "tallybook/desktop/host/QtTexts.h"
#include "tallybook/desktop/host/RowsView.h"

namespace tallybook::desktop {

namespace {

constexpr int kFirstNumber = 3;  // of the columns of figures
constexpr int kLastNumber = 5;

// By their numbers where the lists have them no more.
QString AccountOf(const engine::Book& book, Long number) {
  const Integer position = book.AccountPosition(number);
  return position == 0 ? QString::number(number) : AccountName(book.Description(), position);
}

QString FieldOf(const engine::Book& book, Integer number) {
  const Integer position = book.FieldPosition(number);
  return position == 0 ? QString::number(number) : FieldName(book.Description(), position);
}

QStringList CellsOf(const engine::Book& book, const std::vector<engine::JournalEntry>& entries,
                    const engine::ChangedSince& figure) {
  return {AccountOf(book, figure.account_number),
          DateIn(figure.date),
          FieldOf(book, figure.field_number),
          FigureIn(figure.before),
          figure.left ? FigureIn(*figure.left) : QString(),
          FigureIn(figure.now),
          ShownLine(application::LaterEntryOf(entries, figure))};
}

QLabel* NewWords(const QString& words, QWidget* parent) {
  auto* const label = new QLabel(words, parent);
  label->setTextFormat(Qt::PlainText);
  label->setWordWrap(true);
  return label;
}

}  // namespace

UndoDialog::UndoDialog(engine::Book& book, const std::vector<engine::JournalEntry>& entries,
                       const engine::UndoOutcome& outcome, QWidget* owner)
    : QDialog(owner) {
  setWindowTitle("Undo: Figures Changed Since");
  const int unit = fontMetrics().height() / 4;
  auto* const layout = new QVBoxLayout(this);
  layout->setContentsMargins(4 * unit, 4 * unit, 4 * unit, 4 * unit);
  layout->setSpacing(3 * unit);
  QString said = ShownLines(application::ChangedSinceWords(outcome, engine::UndoWay::kExact));
  said[0] = said[0].toUpper();
  said += outcome.changed_since == 1 ? ". What is to become of it?" : ". What is to become of them?";
  auto* const words = NewWords(said, this);
  words->setObjectName("words");
  layout->addWidget(words);
  auto* const figures = new RowsView("Figures that have been changed since", this);
  figures->setObjectName("figures");
  std::set<int> numbers;
  for (int column = kFirstNumber; column <= kLastNumber; ++column) numbers.insert(column);
  figures->SetColumns({"Account", "Date", "Field", "Before", "Left", "Now", "Changed by"}, numbers);
  for (const engine::ChangedSince& figure : outcome.listed) {
    figures->AddRow(CellsOf(book, entries, figure));
  }
  figures->FitColumns();
  figures->GoTo(0);
  layout->addWidget(figures, 1);
  const long long more = outcome.changed_since - static_cast<long long>(outcome.listed.size());
  if (more > 0) layout->addWidget(NewWords(ShownLine("and " + application::WithCommas(more) + " more"), this));
  auto* const choices = new QGridLayout;
  choices->setHorizontalSpacing(fontMetrics().height());
  choices->setColumnStretch(1, 1);
  layout->addLayout(choices);
  AddChoice(*choices, engine::UndoWay::kSkip, "skip", "&Leave These",
            "They stay as they are; everything else goes back.");
  AddChoice(*choices, engine::UndoWay::kForce, "force", "&Put Back as Well",
            "They too become what they were before; what was done to them since is lost.");
  if (application::MayBeReversed(book, outcome.undone)) {
    AddChoice(*choices, engine::UndoWay::kReverse, "reverse", "Take &Amounts Out",
              "What the import added is taken out of every figure, whatever it is now.");
  }
  auto* const buttons = new QDialogButtonBox(QDialogButtonBox::Cancel, this);
  auto* const cancel = buttons->button(QDialogButtonBox::Cancel);
  cancel->setDefault(true);
  cancel->setFocus();
  connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
  layout->addWidget(buttons);
  constexpr int kWidth = 112;  // in letters
  constexpr int kHeight = 26;
  resize(kWidth * fontMetrics().averageCharWidth(), kHeight * fontMetrics().height());
}

// A row of its own: what it is called, and what it does.
void UndoDialog::AddChoice(QGridLayout& rows, engine::UndoWay way, const char* name, const QString& caption,
                           const QString& words) {
  const int row = rows.rowCount();
  auto* const button = new QPushButton(caption, this);
  button->setObjectName(name);
  button->setAutoDefault(false);
  connect(button, &QPushButton::clicked, this, [this, way] {
    chosen_ = way;
    accept();
  });
  rows.addWidget(button, row, 0);
  QLabel* const what = NewWords(words, this);
  button->setAccessibleDescription(words);
  rows.addWidget(what, row, 1);
}

std::optional<engine::UndoWay> UndoDialog::Ask() {
  return exec() == QDialog::Accepted ? chosen_ : std::nullopt;
}

}  // namespace tallybook::desktop
