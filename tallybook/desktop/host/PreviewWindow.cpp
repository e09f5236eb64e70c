#include "tallybook/desktop/host/PreviewWindow.h"

#include <QAbstractTableModel>
#include <QComboBox>
#include <QDialogButtonBox>
#include <QFontDatabase>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QLabel>
#include <QLineEdit>
#include <QLocale>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QTabWidget>
#include <QTableView>
#include <QVBoxLayout>
#include <algorithm>

#include "base/Dates.h"
#include "tallybook/application/Counts.h"
#include "tallybook/application/PreviewList.h"
#include "tallybook/application/PreviewReport.h"
#include "tallybook/desktop/host/QtTexts.h"
#include "tallybook/desktop/host/RowsView.h"

namespace tallybook::desktop {

namespace {

using application::FigureText;
using application::PreviewLine;
using application::PreviewList;

constexpr int kAll = -1;  // of a choice of fields or files
constexpr int kLeastLine = 24;
constexpr int kFieldLetters = 24;

// With the decimals that it needs, and two where it needs any, as people write amounts here.
QString Number(Double value) {
  QString plain = QString::fromStdString(FigureText(value));
  if (plain.contains('e')) return plain;
  const auto point = plain.indexOf('.');
  const int decimals = point < 0 ? 0 : std::max(static_cast<int>(plain.size() - point) - 1, 2);
  return QLocale().toString(value, 'f', decimals);
}

QString CountOf(long long count) {
  return QString::fromStdString(application::WithCommas(count));
}

QLabel* NewPlain(const QString& words) {
  auto* const label = new QLabel(words);
  label->setTextFormat(Qt::PlainText);
  label->setWordWrap(true);
  return label;
}

QWidget* Page(std::initializer_list<QWidget*> parts) {
  auto* const page = new QWidget;
  auto* const layout = new QVBoxLayout(page);
  for (QWidget* const part : parts) layout->addWidget(part);
  return page;
}

}  // namespace

// The columns are those of PreviewList::Column.
class PreviewWindow::ChangesModel final : public QAbstractTableModel {
 public:
  ChangesModel(const engine::Book& book, const PreviewList& list, std::vector<QString> files, QObject* parent)
      : QAbstractTableModel(parent), book_(book), list_(list), files_(std::move(files)) {}

  // The list has others, or has them in another order.
  void Reset() {
    beginResetModel();
    endResetModel();
  }

  [[nodiscard]] int rowCount(const QModelIndex& parent = {}) const override {
    return parent.isValid() ? 0 : static_cast<int>(list_.Size());
  }
  [[nodiscard]] int columnCount(const QModelIndex& parent = {}) const override {
    return parent.isValid() ? 0 : kColumns;
  }
  [[nodiscard]] QVariant data(const QModelIndex& index, int role) const override {
    const auto column = static_cast<PreviewList::Column>(index.column());
    if (role == Qt::TextAlignmentRole) return static_cast<int>(AlignmentOf(column));
    if (role != Qt::DisplayRole && role != Qt::ToolTipRole) return {};
    return TextOf(list_.At(static_cast<std::size_t>(index.row())), column);
  }
  [[nodiscard]] QVariant headerData(int section, Qt::Orientation orientation, int role) const override {
    if (orientation != Qt::Horizontal) return {};
    if (role == Qt::TextAlignmentRole) return static_cast<int>(AlignmentOf(static_cast<PreviewList::Column>(section)));
    if (role != Qt::DisplayRole) return {};
    static const QStringList heads = {"Account", "Date", "Field", "Before", "After", "Change", "File"};
    return heads.at(section);
  }

 private:
  static constexpr int kColumns = 7;

  static Qt::Alignment AlignmentOf(PreviewList::Column column) {
    const bool is_number = column == PreviewList::Column::kBefore || column == PreviewList::Column::kAfter ||
                           column == PreviewList::Column::kChange;
    return (is_number ? Qt::AlignRight : Qt::AlignLeading) | Qt::AlignVCenter;
  }
  [[nodiscard]] QString TextOf(const PreviewLine& line, PreviewList::Column column) const {
    const engine::BookDescription& lists = book_.Description();
    switch (column) {
      case PreviewList::Column::kAccount: {
        const auto& account = lists.accounts[static_cast<std::size_t>(line.account_position - 1)];
        return ShownLine(account.code + "  " + account.description);
      }
      case PreviewList::Column::kDate:
        return QString::fromStdString(DateText(line.date));
      case PreviewList::Column::kField:
        return ShownLine(lists.fields[static_cast<std::size_t>(line.field_position - 1)].description);
      case PreviewList::Column::kBefore:
        return Number(line.before);
      case PreviewList::Column::kAfter:
        return Number(line.after);
      case PreviewList::Column::kChange:
        return Number(line.Change());
      case PreviewList::Column::kFile:
        return files_[line.file];
    }
    return {};
  }

  const engine::Book& book_;
  const PreviewList& list_;
  std::vector<QString> files_;
};

PreviewWindow::PreviewWindow(PreviewRun& run, const engine::Book& book, QWidget* owner)
    : QDialog(owner), book_(book), list_(std::make_unique<PreviewList>(run.Seen(), book.Description())) {
  setWindowTitle("Preview");
  const bool is_done = run.Outcome().done;
  QString said =
      is_done ? "Nothing has been changed. " : "Nothing has been changed, and the import would not be done. ";
  said += ShownLine(application::PreviewSummary(run.Seen()));
  for (const Text& note : run.Notes()) said += "\n" + ShownLine(note);
  QLabel* const summary = NewPlain(said);
  summary->setObjectName("summary");
  auto* const pages = new QTabWidget;
  pages->setObjectName("pages");
  pages->setAccessibleName("What the import would do");
  pages->addTab(NewChanges(run), "C&hanges");
  pages->addTab(NewTotals(run), "&Totals");
  AddDays(run, *pages);
  pages->addTab(NewFiles(run), "Fi&les");
  pages->addTab(NewReport(run), "&Report");
  auto* const buttons = new QDialogButtonBox(QDialogButtonBox::Close);
  auto* const import = buttons->addButton("&Import", QDialogButtonBox::AcceptRole);
  import->setObjectName("import");
  import->setEnabled(is_done);
  import->setAutoDefault(false);
  buttons->button(QDialogButtonBox::Close)->setDefault(true);
  connect(buttons, &QDialogButtonBox::accepted, this, &QDialog::accept);
  connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
  auto* const layout = new QVBoxLayout(this);
  layout->addWidget(summary);
  layout->addWidget(pages, 1);
  layout->addWidget(buttons);
  resize(fontMetrics().height() * 60, fontMetrics().height() * 36);
  Choose();
  table_->setFocus();
}

PreviewWindow::~PreviewWindow() = default;

QWidget* PreviewWindow::NewChanges(PreviewRun& run) {
  std::vector<QString> files;
  for (const preview::PreviewedFile& file : run.Seen().Files()) files.push_back(ShownLine(file.name));
  account_ = new QLineEdit;
  account_->setObjectName("account");
  account_->setClearButtonEnabled(true);
  field_ = new QComboBox;
  field_->setObjectName("field");
  field_->setSizeAdjustPolicy(QComboBox::AdjustToMinimumContentsLengthWithIcon);
  field_->setMinimumContentsLength(kFieldLetters);
  field_->addItem("All fields", kAll);
  for (const preview::ChangeTotal& total : run.Seen().FieldTotals()) {
    const auto position = static_cast<std::size_t>(total.field_position - 1);
    field_->addItem(ShownLine(book_.Description().fields[position].description),
                    static_cast<int>(total.field_position));
  }
  file_ = new QComboBox;
  file_->setObjectName("file");
  file_->setSizeAdjustPolicy(QComboBox::AdjustToMinimumContentsLengthWithIcon);
  file_->setMinimumContentsLength(kFieldLetters);
  file_->addItem("All files", kAll);
  for (std::size_t file = 0; file < files.size(); ++file) file_->addItem(files[file], static_cast<int>(file));
  auto* const filters = new QWidget;
  auto* const row = new QHBoxLayout(filters);
  row->setContentsMargins(0, 0, 0, 0);
  const auto add = [row](const QString& words, QWidget* part, int stretch) {
    auto* const label = new QLabel(words);
    label->setBuddy(part);
    part->setAccessibleName(QString(words).remove('&'));
    row->addWidget(label);
    row->addWidget(part, stretch);
  };
  add("&Account", account_, 2);
  add("&Field", field_, 1);
  add("Fil&e", file_, 1);
  changes_ = new ChangesModel(book_, *list_, std::move(files), this);
  table_ = new QTableView;
  table_->setObjectName("changes");
  table_->setAccessibleName("Figures that would change");
  table_->setModel(changes_);
  table_->setSelectionBehavior(QAbstractItemView::SelectRows);
  table_->setEditTriggers(QAbstractItemView::NoEditTriggers);
  table_->setTabKeyNavigation(false);
  table_->setShowGrid(false);
  table_->setAlternatingRowColors(true);
  table_->setWordWrap(false);
  table_->setTextElideMode(Qt::ElideMiddle);
  table_->verticalHeader()->hide();
  table_->verticalHeader()->setDefaultSectionSize(std::max(kLeastLine, fontMetrics().height() * 3 / 2));
  QHeaderView* const heads = table_->horizontalHeader();
  heads->setSectionsClickable(true);
  heads->setHighlightSections(false);
  heads->setStretchLastSection(true);
  const int letter = fontMetrics().averageCharWidth();
  const std::vector<int> widths = {28, 14, 22, 14, 14, 14};  // in letters
  for (std::size_t column = 0; column < widths.size(); ++column)
    table_->setColumnWidth(static_cast<int>(column), widths[column] * letter);
  connect(heads, &QHeaderView::sectionClicked, this, [this](int column) { SortBy(column); });
  connect(account_, &QLineEdit::textChanged, this, [this] { Choose(); });
  for (QComboBox* const box : {field_, file_}) connect(box, &QComboBox::activated, this, [this] { Choose(); });
  count_ = NewPlain("");
  count_->setObjectName("count");
  return Page({filters, table_, count_});
}

void PreviewWindow::Choose() {
  PreviewList::Filter filter;
  filter.account = FromQt(account_->text());
  const int field = field_->currentData().toInt();
  if (field != kAll) filter.field_position = static_cast<Integer>(field);
  const int file = file_->currentData().toInt();
  if (file != kAll) filter.file = static_cast<std::uint32_t>(file);
  list_->Choose(filter);
  changes_->Reset();
  Count();
}

// A click on the head that sorts turns the order round.
void PreviewWindow::SortBy(int column) {
  descending_ = column == sorted_by_ && !descending_;
  sorted_by_ = column;
  list_->Sort(static_cast<PreviewList::Column>(column), descending_);
  table_->horizontalHeader()->setSortIndicatorShown(true);
  table_->horizontalHeader()->setSortIndicator(column, descending_ ? Qt::DescendingOrder : Qt::AscendingOrder);
  changes_->Reset();
}

void PreviewWindow::Count() {
  QString said =
      QString("%1 of %2 figures, together %3")
          .arg(CountOf(static_cast<long long>(list_->Size())), CountOf(list_->Figures()), Number(list_->NetChange()));
  if (list_->NotKept() > 0) said += QString("; the last %1 are not listed").arg(CountOf(list_->NotKept()));
  count_->setText(said);
}

QWidget* PreviewWindow::NewTotals(PreviewRun& run) {
  enum Column : int { kAccount, kField, kFigures, kBefore, kAfter, kChange };
  auto* const totals = new RowsView("Totals of fields and accounts, before and after", nullptr);
  totals->setObjectName("totals");
  totals->SetColumns({"Account", "Field", "Figures", "Before", "After", "Change"},
                     {kFigures, kBefore, kAfter, kChange});
  const engine::BookDescription& lists = book_.Description();
  const auto add = [&](const preview::ChangeTotal& total) {
    QString account = "All accounts";
    if (total.account_position != 0) {
      const auto& one = lists.accounts[static_cast<std::size_t>(total.account_position - 1)];
      account = ShownLine(one.code + "  " + one.description);
    }
    const auto& field = lists.fields[static_cast<std::size_t>(total.field_position - 1)];
    totals->AddRow({account, ShownLine(field.description), CountOf(total.figures), Number(total.before),
                    Number(total.after), Number(total.after - total.before)});
    return true;
  };
  for (const preview::ChangeTotal& total : run.Seen().FieldTotals()) add(total);
  run.Seen().VisitAccountTotals(add);
  totals->FitColumns();
  totals->GoTo(0);
  return Page({totals});
}

// Days of the file that go into one record, where the book's records are longer than that.
void PreviewWindow::AddDays(PreviewRun& run, QTabWidget& pages) {
  const std::vector<preview::RegroupedDays> regrouped = run.Seen().Regrouped();
  if (regrouped.empty()) return;
  constexpr int kDays = 3;
  auto* const days = new RowsView("Records, and the days that go into them", nullptr);
  days->setObjectName("days");
  days->SetColumns({"Record", "First day", "Last day", "Days"}, {kDays});
  for (const preview::RegroupedDays& one : regrouped) {
    days->AddRow({ShownLine(DateText(one.record)), ShownLine(DateText(one.first)), ShownLine(DateText(one.last)),
                  CountOf(one.days)});
  }
  days->FitColumns();
  days->GoTo(0);
  pages.addTab(Page({days}), "&Days");
}

QWidget* PreviewWindow::NewFiles(PreviewRun& run) {
  enum Column : int { kFile, kBecomes, kFigures, kChanged, kSame, kReason };
  auto* const files = new RowsView("Files, and what becomes of them", nullptr);
  files->setObjectName("files");
  files->SetColumns({"File", "Becomes", "Figures", "Records", "Unchanged", "Reason"}, {kFigures, kChanged, kSame});
  for (const application::PreviewedImport& import : run.Outcome().imports) {
    const Text fate = import.imported ? application::FateText(import.fate) : "not imported";
    files->AddRow({ShownLine(import.file), ShownLine(fate), CountOf(import.figures), CountOf(import.records.changed),
                   CountOf(import.records.same), ShownLine(import.reason)});
  }
  files->FitColumns();
  files->GoTo(0);
  return Page({files});
}

QWidget* PreviewWindow::NewReport(const PreviewRun& run) {
  QStringList lines;
  for (const Text& line : run.Outcome().report) lines << ShownLine(line);
  auto* const text = new QPlainTextEdit(lines.join('\n'));
  text->setObjectName("report");
  text->setAccessibleName("The report that the import would make");
  text->setReadOnly(true);
  text->setTabChangesFocus(true);
  text->setLineWrapMode(QPlainTextEdit::NoWrap);
  text->setFont(QFontDatabase::systemFont(QFontDatabase::FixedFont));
  return Page({text});
}

}  // namespace tallybook::desktop
