#include "tallybook/desktop/host/QtFileDialogs.h"

#include <QApplication>
#include <QColorDialog>
#include <QDesktopServices>
#include <QDir>
#include <QFileDialog>
#include <QFileInfo>
#include <QFontDialog>
#include <QPageLayout>
#include <QPointer>
#include <QPrintDialog>
#include <QPrinter>
#include <QPrinterInfo>
#include <QUrl>
#include <algorithm>

#include "base/CodePage.h"
#include "base/ModParse.h"
#include "forms/CCommonDialog.h"
#include "platform/MessageBoxes.h"
#include "tallybook/desktop/host/MessageWindow.h"
#include "tallybook/desktop/host/QtTexts.h"

namespace tallybook::desktop {

namespace {

constexpr Long kChosen = 1;
constexpr Long kCancelled = 0;

// "Text (*.txt)" says its pattern already; the dialog shows the one in force.
Text WithoutPattern(const Text& words) {
  const std::size_t open = words.rfind('(');
  const bool at_end = open != Text::npos && words.find(')', open) == words.size() - 1;
  const Text before = at_end ? words.substr(0, open) : words;
  const std::size_t last = before.find_last_not_of(' ');
  return last == Text::npos ? words : before.substr(0, last + 1);
}

// Patterns of one filter, separated by blanks. "*.*" is every file, also one without a point.
Text PatternsOf(const Text& patterns) {
  Text all;
  for (const Text& pattern : SplitText(patterns, ";")) {
    if (pattern.empty()) continue;
    all += (all.empty() ? "" : " ") + (pattern == "*.*" ? Text("*") : pattern);
  }
  return all;
}

bool Tells(QWidget* over, const QString& title, const QString& text, Long style) {
  MessageWindow window({.text = FromQt(text), .style = style, .title = FromQt(title)}, over);
  return window.Ask() == kYes;
}

// A file dialog that looks at the name before it ends, as the request's flags ask.
class AskingFileDialog : public QFileDialog {
 public:
  AskingFileDialog(const FileDialogRequest& request, QWidget* owner) : QFileDialog(owner), request_(request) {
    setAcceptMode(request.save ? AcceptSave : AcceptOpen);
    setFileMode((request.flags & kSeveralFiles) != 0 ? ExistingFiles : AnyFile);
    setOption(DontConfirmOverwrite, (request.flags & kPromptToOverwrite) == 0);
    if (!request.title.empty()) setWindowTitle(ShownLine(request.title));
    SetFilters();
    QString extension = ToQt(request.default_extension);
    if (extension.startsWith('.')) extension.remove(0, 1);
    if (!extension.contains('*')) setDefaultSuffix(extension);
    SetPlace();
  }

  [[nodiscard]] QString Chosen() const {
    const QStringList files = selectedFiles();
    return files.isEmpty() ? QString() : QDir::toNativeSeparators(files.join(' '));
  }

 protected:
  void accept() override {
    if (MayEnd()) QFileDialog::accept();
  }

 private:
  void SetFilters() {
    QStringList filters;
    for (const Text& filter : NameFilters(request_.filter)) filters.append(ToQt(filter));
    if (filters.isEmpty()) return;
    setNameFilters(filters);
    const auto last = static_cast<Long>(filters.size());
    selectNameFilter(filters[std::clamp<Long>(request_.filter_index, 1, last) - 1]);
  }

  // A proposed name that brings its folder opens there.
  void SetPlace() {
    const QFileInfo proposed(ToQt(request_.file_name));
    const bool brings_folder = proposed.isAbsolute() && proposed.dir().exists();
    if (brings_folder) {
      setDirectory(proposed.dir());
    } else if (!request_.initial_folder.empty()) {
      setDirectory(ToQt(request_.initial_folder));
    }
    const QString name = proposed.fileName();
    if (!name.isEmpty()) selectFile(name);
  }

  bool MayEnd() {
    const QString name = Chosen();
    const QFileInfo file(name);
    if (name.isEmpty() || file.isDir()) return true;  // the dialog goes there
    if ((request_.flags & (kPathMustExist | kFileMustExist)) != 0 && !file.dir().exists())
      return Refuse(tr("%1\nThe folder of this file is not there.").arg(name));
    if (!request_.save && (request_.flags & kFileMustExist) != 0 && !file.exists())
      return Refuse(tr("%1\nThis file is not there.").arg(name));
    if ((request_.flags & kPromptToCreate) != 0 && !request_.save && !file.exists())
      return Tells(this, windowTitle(), tr("%1\nThis file is not there. Is it to be made?").arg(name),
                   kYesNo | kQuestionIcon);
    return true;
  }

  bool Refuse(const QString& why) {
    Tells(this, windowTitle(), why, kOkOnly | kExclamationIcon);
    return false;
  }

  const FileDialogRequest& request_;
};

Long ColorNumber(const QColor& color) {
  return color.red() | color.green() << 8 | color.blue() << 16;
}

QColor ColorOf(Long number) {
  return QColor(number & 0xFF, number >> 8 & 0xFF, number >> 16 & 0xFF);
}

// Lets a dialog of Qt's run over its owner, which may go meanwhile.
template <typename Dialog>
bool RunDialog(const QPointer<Dialog>& dialog) {
  const int result = dialog->exec();
  return !dialog.isNull() && result == QDialog::Accepted;
}

}  // namespace

std::vector<Text> NameFilters(const Text& pairs) {
  std::vector<Text> filters;
  std::vector<Text> parts;
  for (std::size_t at = 0; at < pairs.size();) {
    const std::size_t end = std::min(pairs.find('\0', at), pairs.size());
    if (end == at) break;
    parts.push_back(pairs.substr(at, end - at));
    at = end + 1;
  }
  for (std::size_t i = 0; i + 1 < parts.size(); i += 2)
    filters.push_back(WithoutPattern(parts[i]) + " (" + PatternsOf(parts[i + 1]) + ")");
  return filters;
}

// Over the window that is asked for, or the one in front.
QWidget* QtFileDialogs::OwnerOf(Long handle) const {
  if (QWidget* const modal = QApplication::activeModalWidget()) return modal;
  QWidget* const owner = handle == 0 ? nullptr : handles_.WidgetOf(handle);
  return owner != nullptr ? owner : QApplication::activeWindow();
}

Long QtFileDialogs::ShowFile(FileDialogRequest& request) {
  request.extended_error = 0;
  const QPointer<AskingFileDialog> dialog(new AskingFileDialog(request, OwnerOf(request.owner)));
  Long result = kCancelled;
  if (RunDialog(dialog)) {
    const Text chosen = FromQt(dialog->Chosen());
    if (CharacterCount(chosen) > request.max_file_size) {
      request.extended_error = kBufferTooSmall;
    } else {
      request.file_name = chosen;
      request.file_title = FromQt(QFileInfo(dialog->Chosen()).fileName());
      const qsizetype index = dialog->nameFilters().indexOf(dialog->selectedNameFilter());
      if (index >= 0) request.filter_index = static_cast<Long>(index + 1);
      result = kChosen;
    }
  }
  delete dialog.data();
  return result;
}

Long QtFileDialogs::ShowColor(ColorDialogRequest& request) {
  const int places = std::min(QColorDialog::customCount(), static_cast<int>(request.custom_colors.size()));
  for (int i = 0; i < places; ++i)
    QColorDialog::setCustomColor(i, ColorOf(request.custom_colors[static_cast<std::size_t>(i)]));
  const QPointer<QColorDialog> dialog(new QColorDialog(ColorOf(request.color), OwnerOf(request.owner)));
  const bool chosen = RunDialog(dialog);
  if (chosen) request.color = ColorNumber(dialog->selectedColor());
  for (int i = 0; i < places; ++i)
    request.custom_colors[static_cast<std::size_t>(i)] = ColorNumber(QColorDialog::customColor(i));
  delete dialog.data();
  return chosen ? kChosen : kCancelled;
}

Long QtFileDialogs::ShowFont(FontDialogRequest& request) {
  QFont font(ToQt(request.name));
  if (request.size > 0) font.setPointSizeF(static_cast<double>(request.size));
  font.setBold(request.bold);
  font.setItalic(request.italic);
  font.setUnderline(request.underline);
  font.setStrikeOut(request.strikethrough);
  const QPointer<QFontDialog> dialog(new QFontDialog(font, OwnerOf(request.owner)));
  const bool chosen = RunDialog(dialog);
  if (chosen) {
    const QFont answer = dialog->selectedFont();
    request.name = FromQt(answer.family());
    request.size = static_cast<Single>(answer.pointSizeF());
    request.bold = answer.bold();
    request.italic = answer.italic();
    request.underline = answer.underline();
    request.strikethrough = answer.strikeOut();
  }
  delete dialog.data();
  return chosen ? kChosen : kCancelled;
}

namespace {

constexpr Integer kPortrait = 1;
constexpr Integer kLandscape = 2;

void SetUpPrinter(QPrinter& printer, const PrinterDialogRequest& request) {
  if (const QPrinterInfo named = QPrinterInfo::printerInfo(ToQt(request.device_name)); !named.isNull())
    printer.setPrinterName(named.printerName());
  if (request.copies > 0) printer.setCopyCount(request.copies);
  if (request.orientation == kLandscape) printer.setPageOrientation(QPageLayout::Landscape);
  if (request.paper_size > 0) printer.setPageSize(QPageSize(QPageSize::id(request.paper_size)));
}

void TakePrinter(const QPrinter& printer, const QPrintDialog& dialog, PrinterDialogRequest& request) {
  request.device_name = FromQt(printer.printerName());
  request.copies = printer.copyCount();
  const QPageLayout layout = printer.pageLayout();
  request.orientation = layout.orientation() == QPageLayout::Landscape ? kLandscape : kPortrait;
  const int paper = layout.pageSize().windowsId();
  if (paper > 0) request.paper_size = static_cast<Integer>(paper);
  if (dialog.printRange() == QAbstractPrintDialog::PageRange) {
    request.from_page = dialog.fromPage();
    request.to_page = dialog.toPage();
  }
}

}  // namespace

Long QtFileDialogs::ShowPrinter(PrinterDialogRequest& request) {
  QPrinter printer(QPrinter::HighResolution);
  SetUpPrinter(printer, request);
  const QPointer<QPrintDialog> dialog(new QPrintDialog(&printer, OwnerOf(request.owner)));
  if (request.max_page > 0) {
    dialog->setMinMax(request.min_page, request.max_page);
    dialog->setFromTo(std::max(request.from_page, request.min_page), std::min(request.to_page, request.max_page));
  }
  const bool chosen = RunDialog(dialog);
  if (chosen) TakePrinter(printer, *dialog, request);
  delete dialog.data();
  return chosen ? kChosen : kCancelled;
}

Text QtFileDialogs::ShowFolder(FolderDialogRequest& request) {
  const QPointer<QFileDialog> dialog(new QFileDialog(OwnerOf(request.owner), ShownLine(request.title)));
  dialog->setFileMode(QFileDialog::Directory);
  dialog->setOption(QFileDialog::ShowDirsOnly);
  if (!request.initial_folder.empty()) {
    const QDir initial(ToQt(request.initial_folder));
    dialog->setDirectory(initial);
  }
  Text folder;
  if (RunDialog(dialog)) folder = FromQt(QDir::toNativeSeparators(dialog->selectedFiles().value(0)));
  delete dialog.data();
  return folder;
}

void QtFileDialogs::ShowHelp(Long /*window*/, const Text& help_file, Long /*command*/, Long topic) {
  if (help_) return help_(help_file, topic);
  if (!help_file.empty()) QDesktopServices::openUrl(QUrl::fromLocalFile(ToQt(help_file)));
}

}  // namespace tallybook::desktop
