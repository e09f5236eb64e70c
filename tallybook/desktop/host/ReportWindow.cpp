#include "tallybook/desktop/host/ReportWindow.h"

#include <QAction>
#include <QBuffer>
#include <QCloseEvent>
#include <QCoreApplication>
#include <QFontDatabase>
#include <QHBoxLayout>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QPdfWriter>
#include <QPlainTextEdit>
#include <QPointer>
#include <QPrintDialog>
#include <QPrintPreviewDialog>
#include <QPrinter>
#include <QPushButton>
#include <QTextDocument>
#include <QVBoxLayout>
#include <algorithm>
#include <span>

#include "base/Failure.h"
#include "forms/CCommonDialog.h"
#include "platform/FileSystem.h"
#include "platform/MessageBoxes.h"
#include "platform/Platform.h"
#include "support/FileStream.h"
#include "support/WinAPI.h"
#include "tallybook/desktop/host/QtTexts.h"
#include "tallybook/desktop/host/ReportDocument.h"
#include "tallybook/desktop/host/SaveWhole.h"
#include "tallybook/report/ReportPrinter.h"

namespace tallybook::desktop {

namespace {

constexpr const char* kMemory = "report";
constexpr int kWidth = 136;  // in letters and lines
constexpr int kHeight = 34;
constexpr int kLineLetters = 100;
constexpr int kMostCounted = 9999;

QLabel* NewLabel(const QString& text, const char* name, QWidget* parent) {
  auto* const label = new QLabel(text, parent);
  label->setObjectName(name);
  label->setTextFormat(Qt::PlainText);
  label->setWordWrap(true);
  label->setTextInteractionFlags(Qt::TextSelectableByMouse);
  return label;
}

}  // namespace

ReportWindow::ReportWindow(report::Report report, report::Blocks head, ReportSetting setting, QWidget* owner,
                           WindowMemory memory)
    : QWidget(owner, Qt::Window),
      report_(std::move(report)),
      head_(std::move(head)),
      setting_(std::move(setting)),
      memory_(std::move(memory)) {
  setAttribute(Qt::WA_DeleteOnClose);
  setWindowTitle(ShownLine(report_.title));
  MakeHead();
  MakeText();
  MakeButtons();
  LayOut();
  memory_.RestoreSize(*this, kMemory, kWidth, kHeight);
  text_->setFocus();
}

ReportWindow::~ReportWindow() = default;

void ReportWindow::MakeHead() {
  title_ = NewLabel(ShownLine(report_.title), "title", this);
  QFont large = font();
  large.setPointSizeF(large.pointSizeF() * 1.4);
  large.setBold(true);
  title_->setFont(large);
  created_ = NewLabel(ShownLine(report_.created), "created", this);
  QString lines;
  for (const Text& line : setting_.changes) lines += (lines.isEmpty() ? "" : "\n") + ShownLine(line);
  changes_ = NewLabel(lines, "changes", this);
  QFont bold = font();
  bold.setBold(true);
  changes_->setFont(bold);
  changes_->setVisible(!lines.isEmpty());
}

void ReportWindow::MakeText() {
  text_ = new QPlainTextEdit(this);
  text_->setObjectName("text");
  text_->setReadOnly(true);
  text_->setLineWrapMode(QPlainTextEdit::NoWrap);
  text_->setTextInteractionFlags(Qt::TextSelectableByMouse | Qt::TextSelectableByKeyboard);
  text_->setTabChangesFocus(true);
  text_->setAccessibleName(windowTitle());
  QFont pitch = QFontDatabase::systemFont(QFontDatabase::FixedFont);
  pitch.setPointSizeF(font().pointSizeF());
  text_->setFont(pitch);
  text_->setPlainText(ToQt(ReportBody(report_, head_, kLineLetters)));
}

QPushButton* ReportWindow::MakeButton(const QString& caption, const char* name, void (ReportWindow::*act)()) {
  auto* const button = new QPushButton(caption, this);
  button->setObjectName(name);
  button->setAutoDefault(true);  // Enter presses the one with the focus
  connect(button, &QPushButton::clicked, this, [this, act] { (this->*act)(); });
  return button;
}

void ReportWindow::MakeButtons() {
  search_ = new QLineEdit(this);
  search_->setObjectName("search");
  search_->setClearButtonEnabled(true);
  search_->setPlaceholderText(tr("Search (Ctrl+F)"));
  search_->setAccessibleName(tr("Search"));
  search_->installEventFilter(this);
  found_ = NewLabel("", "found", this);
  found_->setWordWrap(false);
  found_->setAccessibleName(tr("Found"));
  next_ = new QPushButton(tr("&Next"), this);
  previous_ = new QPushButton(tr("Pre&vious"), this);
  next_->setObjectName("next");
  previous_->setObjectName("previous");
  for (QPushButton* const button : {next_, previous_}) {
    button->setAutoDefault(true);
    button->setEnabled(false);
    connect(button, &QPushButton::clicked, this, [this, button] { Search(button == previous_); });
  }
  connect(search_, &QLineEdit::textChanged, this, [this] { CountFound(); });
  save_ = MakeButton(tr("&Save As..."), "save", &ReportWindow::AskSave);
  print_ = MakeButton(tr("&Print..."), "print", &ReportWindow::AskPrint);
  preview_ = MakeButton(tr("Pa&ges..."), "preview", &ReportWindow::Preview);
  undo_ = MakeButton(tr("&Undo this import"), "undo", &ReportWindow::Undo);
  undo_->setVisible(static_cast<bool>(setting_.undo));
  close_ = new QPushButton(tr("&Close"), this);
  close_->setObjectName("close");
  close_->setAutoDefault(true);
  connect(close_, &QPushButton::clicked, this, [this] { close(); });
}

void ReportWindow::LayOut() {
  const int unit = fontMetrics().height() / 4;
  auto* const search = new QHBoxLayout;
  search->setSpacing(2 * unit);
  search->addWidget(search_, 1);
  for (QWidget* const part : std::initializer_list<QWidget*>{found_, previous_, next_}) search->addWidget(part);
  auto* const buttons = new QHBoxLayout;
  buttons->setSpacing(2 * unit);
  for (QPushButton* const button : {save_, preview_, print_}) buttons->addWidget(button);
  buttons->addStretch(1);
  for (QPushButton* const button : {undo_, close_}) buttons->addWidget(button);
  auto* const all = new QVBoxLayout(this);
  all->setContentsMargins(3 * unit, 3 * unit, 3 * unit, 3 * unit);
  all->setSpacing(2 * unit);
  for (QLabel* const label : {title_, created_, changes_}) all->addWidget(label);
  all->addLayout(search);
  all->addWidget(text_, 1);
  all->addLayout(buttons);
}

// --- Search ----------------------------------------------------------------------------------------------------------

void ReportWindow::CountFound() {
  const QString wanted = search_->text();
  int count = 0;
  if (!wanted.isEmpty()) {
    const QString all = text_->toPlainText();
    for (qsizetype at = 0; count <= kMostCounted; ++count, at += wanted.size()) {
      at = all.indexOf(wanted, at, Qt::CaseInsensitive);
      if (at < 0) break;
    }
  }
  for (QPushButton* const button : {next_, previous_}) button->setEnabled(count > 0);
  const QString number =
      count > kMostCounted ? tr("more than %L1").arg(kMostCounted) : QStringLiteral("%L1").arg(count);
  found_->setText(wanted.isEmpty() ? QString() : count == 0 ? tr("not found") : tr("%1 found").arg(number));
  if (count == 0) return;
  // The first from where the reader is.
  QTextCursor here = text_->textCursor();
  here.setPosition(here.selectionStart());
  text_->setTextCursor(here);
  const bool backwards = false;
  Search(backwards);
}

// Goes on at the other end.
void ReportWindow::Search(bool backwards) {
  const QTextDocument::FindFlags flags = backwards ? QTextDocument::FindBackward : QTextDocument::FindFlags();
  if (search_->text().isEmpty() || text_->find(search_->text(), flags)) return;
  const QTextCursor before = text_->textCursor();
  text_->moveCursor(backwards ? QTextCursor::End : QTextCursor::Start);
  if (!text_->find(search_->text(), flags)) text_->setTextCursor(before);
}

// --- What can be done with it ----------------------------------------------------------------------------------------

void ReportWindow::AskSave() {
  const Text title = report_.title.substr(0, report_.title.find_first_of("/\\:"));
  FileDialogRequest request;
  request.save = true;
  request.title = "Save Report";
  request.filter = ConvertFilter("PDF document|*.pdf|Web page|*.html|Text|*.txt");
  request.file_name = title + ".pdf";
  request.default_extension = "pdf";
  request.max_file_size = 4096;
  request.flags = kPromptToOverwrite | kPathMustExist;
  FileDialogs* const dialogs = ThePlatform().file_dialogs;
  if (dialogs == nullptr || dialogs->ShowFile(request) == 0) return;
  SaveAs(request.file_name);
}

// What fails is told over the window.
bool ReportWindow::Guarded(const std::function<void()>& act) const {
  try {
    act();
    return true;
  } catch (...) {
    ShowMessage(CurrentFailure().Description(), kExclamationIcon, report_.title);
    return false;
  }
}

bool ReportWindow::SaveAs(const Text& path) {
  return Guarded([&] {
    const auto heads = [this](int) -> const report::Blocks& { return head_; };
    SaveWhole(path, report::RendererFor(path)->Render(report_, heads));
  });
}

void ReportWindow::PrintOn(QPagedPaintDevice& pages) const {
  NewReportDocument(report_, head_)->print(&pages);
}

bool ReportWindow::Print(QPrinter& printer) {
  return Guarded([&] {
    if (!printer.outputFileName().isEmpty()) return SaveWhole(FromQt(printer.outputFileName()), PdfLike(printer));
    PrintOn(printer);
    if (printer.printerState() != QPrinter::Error && printer.printerState() != QPrinter::Aborted) return;
    throw Failure(FailureNumber::kDeviceError, "The printer did not take it: " + FromQt(printer.printerName()));
  });
}

// A printer's own file would be written as it goes, and nothing would be said of one that cannot be.
std::string ReportWindow::PdfLike(const QPrinter& printer) const {
  QByteArray bytes;
  QBuffer buffer(&bytes);
  buffer.open(QIODevice::WriteOnly);
  {
    QPdfWriter pages(&buffer);
    pages.setTitle(windowTitle());
    pages.setResolution(printer.resolution());
    pages.setPageLayout(printer.pageLayout());
    pages.setPageRanges(printer.pageRanges());
    PrintOn(pages);
  }
  return bytes.toStdString();
}

void ReportWindow::AskPrint() {
  QPrinter printer(QPrinter::HighResolution);
  printer.setDocName(windowTitle());
  AskPrintOn(printer, *this);
}

void ReportWindow::AskPrintOn(QPrinter& printer, QWidget& over) {
  const QPointer<QPrintDialog> dialog(new QPrintDialog(&printer, &over));
  const bool chosen = dialog->exec() == QDialog::Accepted && !dialog.isNull();
  delete dialog.data();
  if (chosen) Print(printer);
}

void ReportWindow::Preview() {
  QPrinter printer(QPrinter::HighResolution);
  printer.setDocName(windowTitle());
  const QPointer<QPrintPreviewDialog> dialog(new QPrintPreviewDialog(&printer, this));
  dialog->setWindowTitle(tr("Pages of %1").arg(windowTitle()));
  connect(dialog, &QPrintPreviewDialog::paintRequested, this, [this](QPrinter* pages) { PrintOn(*pages); });
  // Its own printing writes a file as it goes, and says nothing of one that cannot be written.
  const QString print = QCoreApplication::translate("QPrintPreviewDialog", "Print");
  for (QAction* const action : dialog->findChildren<QAction*>()) {
    if (action->text() != print) continue;
    action->disconnect(dialog);
    connect(action, &QAction::triggered, dialog, [this, &printer, dialog] { AskPrintOn(printer, *dialog); });
  }
  dialog->exec();
  delete dialog.data();
}

void ReportWindow::Undo() {
  // The window may be closed while the question stands.
  const QPointer<ReportWindow> self(this);
  if (!setting_.undo || !setting_.undo() || self.isNull()) return;
  undo_->setEnabled(false);
  changes_->setText(changes_->text() + "\n" + tr("Undone: the figures are what they were before."));
  changes_->show();
}

// --- Keys ------------------------------------------------------------------------------------------------------------

void ReportWindow::keyPressEvent(QKeyEvent* event) {
  const bool backwards = (event->modifiers() & Qt::ShiftModifier) != 0;
  if (event->matches(QKeySequence::Find)) {
    search_->setFocus();
    search_->selectAll();
  } else if (event->key() == Qt::Key_F3) {
    Search(backwards);
  } else if (event->matches(QKeySequence::Save)) {
    AskSave();
  } else if (event->matches(QKeySequence::Print)) {
    AskPrint();
  } else if (event->key() == Qt::Key_Escape || event->matches(QKeySequence::Close)) {
    close();
  } else {
    QWidget::keyPressEvent(event);
  }
}

bool ReportWindow::eventFilter(QObject* object, QEvent* event) {
  if (object != search_ || event->type() != QEvent::KeyPress) return QWidget::eventFilter(object, event);
  const auto& key = static_cast<const QKeyEvent&>(*event);
  if (key.key() == Qt::Key_Return || key.key() == Qt::Key_Enter) {
    Search((key.modifiers() & Qt::ShiftModifier) != 0);
    return true;
  }
  if (key.key() == Qt::Key_Escape) {
    text_->setFocus();
    return true;
  }
  return false;
}

void ReportWindow::closeEvent(QCloseEvent* event) {
  memory_.KeepSize(*this, kMemory);
  event->accept();
}

}  // namespace tallybook::desktop
