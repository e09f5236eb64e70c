#include "tallybook/desktop/host/PreviewWindow.h"

#include <QDialogButtonBox>
#include <QFontDatabase>
#include <QLabel>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QTabWidget>
#include <QVBoxLayout>
#include <utility>

#include "tallybook/application/Counts.h"
#include "tallybook/application/PreviewReport.h"
#include "tallybook/desktop/host/FigureListPane.h"
#include "tallybook/desktop/host/FigureNames.h"
#include "tallybook/desktop/host/QtTexts.h"
#include "tallybook/desktop/host/RowsView.h"

namespace tallybook::desktop {

namespace {

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

PreviewWindow::PreviewWindow(PreviewRun& run, const engine::Book& book, QWidget* owner) : QDialog(owner), book_(book) {
  setWindowTitle("Preview");
  const bool is_done = run.Outcome().done;
  is_dropped_ = !is_done && run.IsWhole();
  QString said = is_done ? "Nothing has been changed. "
                 : is_dropped_
                     ? "Nothing has been changed, and the import would not be done: nothing of it would stay, and no "
                       "file would be deleted or renamed. Until then it would have come to this: "
                     : "Nothing has been changed, and the import would not be done. ";
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
  changes_->setFocus();
}

QWidget* PreviewWindow::NewChanges(PreviewRun& run) {
  FigureListPane::Shown shown{.book = book_.Description(),
                              .list = application::ListOf(run.Seen(), book_.Description()),
                              .fields = {},
                              .files = {},
                              .heads = {"Before", "After", "Change"},
                              .name = "Figures that would change"};
  for (const preview::ChangeTotal& total : run.Seen().FieldTotals()) shown.fields.push_back(total.field_position);
  for (const preview::PreviewedFile& file : run.Seen().Files()) shown.files.push_back(ShownLine(file.name));
  changes_ = new FigureListPane(std::move(shown), nullptr);
  return changes_;
}

QWidget* PreviewWindow::NewTotals(PreviewRun& run) {
  enum Column : int { kAccount, kField, kFigures, kBefore, kAfter, kChange };
  auto* const totals = new RowsView("Totals of fields and accounts, before and after", nullptr);
  totals->setObjectName("totals");
  totals->SetColumns({"Account", "Field", "Figures", "Before", "After", "Change"},
                     {kFigures, kBefore, kAfter, kChange});
  const engine::BookDescription& lists = book_.Description();
  const auto add = [&](const preview::ChangeTotal& total) {
    const bool is_of_all = total.account_position == 0;
    totals->AddRow({is_of_all ? "All accounts" : AccountName(lists, total.account_position),
                    FieldName(lists, total.field_position), CountOf(total.figures), FigureIn(total.before),
                    FigureIn(total.after), FigureIn(total.after - total.before)});
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
    days->AddRow({DateIn(one.record), DateIn(one.first), DateIn(one.last), CountOf(one.days)});
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
    const bool is_imported = import.imported && !is_dropped_;
    const Text fate = is_imported ? application::FateText(import.fate) : "not imported";
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
