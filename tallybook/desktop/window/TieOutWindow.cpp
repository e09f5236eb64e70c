#include "tallybook/desktop/window/TieOutWindow.h"

#include <QtWidgets/QComboBox>
#include <QtWidgets/QDialogButtonBox>
#include <QtWidgets/QFileDialog>
#include <QtWidgets/QGridLayout>
#include <QtWidgets/QLabel>
#include <QtWidgets/QLineEdit>
#include <QtWidgets/QPushButton>
#include <QtWidgets/QTabWidget>
#include <QtWidgets/QVBoxLayout>
#include <algorithm>
#include <utility>

#include "base/Failure.h"
#include "tallybook/application/Counts.h"
#include "tallybook/application/ImportRecorder.h"
#include "tallybook/desktop/forms/ElidedBox.h"
#include "tallybook/desktop/host/FigureListPane.h"
#include "tallybook/desktop/host/FigureNames.h"
#include "tallybook/desktop/host/QtTexts.h"
#include "tallybook/desktop/host/RowsView.h"

namespace tallybook::desktop {

namespace {

using application::SeenDefinition;
using application::TieOutTotal;

constexpr int kLettersOfChoice = 24;

QString CountedHere(long long count) {
  return QString::fromStdString(application::WithCommas(count));
}

QComboBox* NewBox(const char* name) {
  auto* const box = new ElidedBox;
  box->setObjectName(name);
  box->setSizeAdjustPolicy(QComboBox::AdjustToMinimumContentsLengthWithIcon);
  box->setMinimumContentsLength(kLettersOfChoice);
  return box;
}

QComboBox* NewMathBox() {
  QComboBox* const box = NewBox("math");
  box->addItem("Replaced what stood", static_cast<int>(eMath::mReplace));
  box->addItem("Added to zeros", static_cast<int>(eMath::mAdd));
  box->addItem("Subtracted from zeros", static_cast<int>(eMath::mSubtract));
  return box;
}

QWidget* AsPage(QWidget* part) {
  auto* const page = new QWidget;
  auto* const layout = new QVBoxLayout(page);
  layout->addWidget(part);
  return page;
}

}  // namespace

TieOutWindow::TieOutWindow(Means means)
    : QDialog(nullptr, Qt::Window),
      means_(std::move(means)),
      work_(means_.ask_to_end),
      definition_(NewBox("definition")),
      file_(new QLineEdit),
      math_(NewMathBox()),
      summary_(new QLabel),
      pages_(new QTabWidget) {
  setWindowTitle("Tie-Out");
  summary_->setObjectName("summary");
  summary_->setTextFormat(Qt::PlainText);
  summary_->setWordWrap(true);
  summary_->setTextInteractionFlags(Qt::TextSelectableByMouse);
  pages_->setObjectName("pages");
  pages_->setAccessibleName("What differs");
  auto* const layout = new QVBoxLayout(this);
  layout->addWidget(NewChoices());
  layout->addWidget(summary_);
  layout->addWidget(pages_, 1);
  layout->addStretch();  // where there are no pages
  layout->addWidget(NewButtons());
  resize(fontMetrics().height() * 60, fontMetrics().height() * 36);
  FillDefinitions();
}

// The pages show what stands in the result.
TieOutWindow::~TieOutWindow() {
  delete pages_;
}

QWidget* TieOutWindow::NewChoices() {
  auto* const choices = new QWidget;
  auto* const rows = new QGridLayout(choices);
  rows->setContentsMargins(0, 0, 0, 0);
  const auto add = [rows](const QString& words, QWidget* part) {
    auto* const label = new QLabel(words);
    label->setBuddy(part);
    part->setAccessibleName(QString(words).remove('&'));
    const int row = rows->rowCount();
    rows->addWidget(label, row, 0);
    rows->addWidget(part, row, 1);
  };
  file_->setObjectName("file_name");
  auto* const browse = new QPushButton("&Browse\u2026");
  browse->setObjectName("browse");
  browse->setAutoDefault(false);
  add("Def&inition", definition_);
  add("E&xchange file", file_);
  rows->addWidget(browse, rows->rowCount() - 1, 2);
  add("Files that the journal does not &know", math_);
  rows->setColumnStretch(1, 1);
  connect(browse, &QPushButton::clicked, this, [this] { Browse(); });
  connect(definition_, &QComboBox::currentIndexChanged, this, [this] { Follow(); });
  return choices;
}

QWidget* TieOutWindow::NewButtons() {
  auto* const buttons = new QDialogButtonBox(QDialogButtonBox::Close);
  hold_ = buttons->addButton("&Hold Against the Book", QDialogButtonBox::ActionRole);
  hold_->setObjectName("hold");
  go_ = buttons->addButton("&Go to the Figure", QDialogButtonBox::ActionRole);
  go_->setObjectName("go");
  go_->setAutoDefault(false);
  connect(hold_, &QPushButton::clicked, this, [this] { Hold(); });
  connect(go_, &QPushButton::clicked, this, [this] { GoToFigure(); });
  connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
  return buttons;
}

void TieOutWindow::FillDefinitions() {
  const int chosen = definition_->currentData().toInt();
  QString trouble;
  try {
    definitions_ = means_.definitions();
  } catch (...) {
    definitions_.clear();
    trouble = ShownLine(CurrentFailure().Description());
  }
  definition_->clear();
  for (const SeenDefinition& each : definitions_)
    definition_->addItem(ShownLine(std::to_string(each.number) + "  " + each.title), static_cast<int>(each.number));
  definition_->setCurrentIndex(std::max(definition_->findData(chosen), 0));
  Follow();
  if (result_.held) return;
  if (!trouble.isEmpty()) return ShowNothing(trouble);
  ShowNothing(definitions_.empty()
                  ? "This book has no exchange definition yet: Data Exchange, Definitions makes one. What a file must "
                    "have left in the book is held against what stands there by the definition that imported it."
                  : "What the files of a definition must have left in the book is held against what stands there. "
                    "Nothing is changed.");
  definition_->setFocus();
}

const SeenDefinition* TieOutWindow::Chosen() const {
  const int index = definition_->currentIndex();
  return index >= 0 && index < static_cast<int>(definitions_.size()) ? &definitions_[static_cast<std::size_t>(index)]
                                                                     : nullptr;
}

void TieOutWindow::Follow() {
  const SeenDefinition* const chosen = Chosen();
  file_->setPlaceholderText(chosen == nullptr ? QString() : ShownLine(chosen->exchange_files));
  hold_->setEnabled(chosen != nullptr && !work_.IsRunning());
  hold_->setDefault(true);
  go_->setEnabled(figures_ != nullptr);
}

void TieOutWindow::Browse() {
  const QString chosen = QFileDialog::getOpenFileName(this, "The Exchange File", ToQt(means_.folder),
                                                      "Exchange files (*.QDX *.qdx);;All files (*)");
  if (!chosen.isEmpty()) file_->setText(chosen);
}

void TieOutWindow::Hold() {
  const SeenDefinition* const chosen = Chosen();
  if (chosen == nullptr || work_.IsRunning()) return;
  const TieOutWish wish{.definition = *chosen,
                        .file = FromQt(file_->text()),
                        .unknown_math = static_cast<Integer>(math_->currentData().toInt())};
  std::optional<TieOutResult> result;
  const bool closes = work_.Run([&] {
    Follow();
    result = means_.hold(wish);
  });
  if (closes) return done(Rejected);
  result ? Show(std::move(*result)) : ShowNothing("Nothing has been held against the book.");
}

void TieOutWindow::ShowNothing(const QString& words) {
  figures_ = nullptr;
  while (pages_->count() > 0) delete pages_->widget(0);
  result_ = {};
  pages_->hide();
  summary_->setText(words);
  Follow();
}

void TieOutWindow::Show(TieOutResult result) {
  QStringList why_not;
  for (const Text& why : result.why_not) why_not << ShownLine(why);
  ShowNothing(result.held ? ShownLine(result.words) : "Nothing has been held against the book.\n" + why_not.join('\n'));
  if (!result.held) return;
  result_ = std::move(result);
  FigureListPane::Shown shown{.book = *result_.lists,
                              .list = std::move(*result_.figures),
                              .fields = {},
                              .files = {},
                              .heads = {"Expected", "Stands", "Difference"},
                              .name = "Figures that differ"};
  for (const TieOutTotal& total : result_.field_totals) shown.fields.push_back(total.field_position);
  for (const application::TieOutFile& file : result_.files) shown.files.push_back(ShownLine(file.file));
  figures_ = new FigureListPane(std::move(shown), nullptr);
  figures_->OnChosen([this] { GoToFigure(); });
  pages_->addTab(figures_, "&Differences");
  pages_->addTab(NewTotals(), "&Totals");
  pages_->addTab(NewFiles(), "Fi&les");
  pages_->show();
  Follow();
  figures_->setFocus();
}

QWidget* TieOutWindow::NewTotals() const {
  auto* const totals = new RowsView("Totals of fields, and of accounts in which something differs", nullptr);
  totals->setObjectName("totals");
  enum Column : int { kAccount, kField, kFigures, kDiffer, kUntold, kExpected, kStands, kDifference };
  totals->SetColumns({"Account", "Field", "Figures", "Differ", "Cannot be told", "Expected", "Stands", "Difference"},
                     {kFigures, kDiffer, kUntold, kExpected, kStands, kDifference});
  const engine::BookDescription& lists = *result_.lists;
  const auto add = [&](const TieOutTotal& total) {
    const bool is_of_all = total.account_position == 0;
    totals->AddRow({is_of_all ? QString("All accounts") : AccountName(lists, total.account_position),
                    FieldName(lists, total.field_position), CountedHere(total.figures), CountedHere(total.differ),
                    CountedHere(total.untold), FigureIn(total.expected), FigureIn(total.stands),
                    FigureIn(total.stands - total.expected)});
  };
  for (const TieOutTotal& total : result_.field_totals) add(total);
  for (const TieOutTotal& total : result_.account_totals) add(total);
  totals->FitColumns();
  totals->GoTo(0);
  return AsPage(totals);
}

QWidget* TieOutWindow::NewFiles() const {
  enum Column : int { kApplied, kNotMapped, kHow };
  auto* const files = new RowsView("Files, and how they were held", nullptr);
  files->setObjectName("files");
  files->SetColumns({"Figures", "Not mapped", "How it was held"}, {kApplied, kNotMapped});
  for (const application::TieOutFile& file : result_.files)
    files->AddRow({CountedHere(file.applied), CountedHere(file.not_mapped), ShownLine(application::HeldWords(file))});
  files->FitColumns();
  files->GoTo(0);
  return AsPage(files);
}

void TieOutWindow::GoToFigure() {
  const application::FigureLine* const line = figures_ == nullptr ? nullptr : figures_->Current();
  if (line == nullptr) return;
  const engine::BookDescription& lists = *result_.lists;
  means_.go_to({.account_number = lists.accounts[static_cast<std::size_t>(line->account_position - 1)].number,
                .date = line->date,
                .field_number = lists.fields[static_cast<std::size_t>(line->field_position - 1)].number});
}

void TieOutWindow::done(int result) {
  if (work_.HoldsWindow()) return;
  QDialog::done(result);
}

}  // namespace tallybook::desktop
