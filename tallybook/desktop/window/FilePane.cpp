#include "tallybook/desktop/window/FilePane.h"

#include <QtGui/QFontDatabase>
#include <QtGui/QTextBlock>
#include <algorithm>

#include "base/Failure.h"
#include "tallybook/application/Shown.h"
#include "tallybook/desktop/host/QtTexts.h"

namespace tallybook::desktop {

namespace {

constexpr int kLinesBefore = 50;
constexpr int kLinesShown = 101;
constexpr int kNumberWidth = 9;
constexpr const char* kHere = "\u25b6 ";  // before the number of the line that is looked at
constexpr const char* kElsewhere = "  ";

QString HeadOf(const inspect::FileLines::Line& line, bool is_it) {
  return QString(is_it ? kHere : kElsewhere) + QString::number(line.number).rightJustified(kNumberWidth) + "  ";
}

// Control characters as what they are; the text of a line holds no line end.
QString TextOf(const Text& text) {
  return ToQt(application::Shown(text));
}

}  // namespace

FilePane::FilePane(QWidget* parent) : QPlainTextEdit(parent) {
  setReadOnly(true);
  setTabChangesFocus(true);
  setLineWrapMode(QPlainTextEdit::NoWrap);
  setFont(QFontDatabase::systemFont(QFontDatabase::FixedFont));
  setTextInteractionFlags(Qt::TextSelectableByMouse | Qt::TextSelectableByKeyboard);
  setAccessibleName("The file around the finding");
}

FilePane::~FilePane() = default;

void FilePane::SetFile(const Text& path, TextEncoding encoding, const Text& separators) {
  path_ = path;
  encoding_ = encoding;
  separators_ = separators;
  lines_.reset();
  setExtraSelections({});
  clear();
}

void FilePane::ShowFinding(const inspect::Finding& finding) {
  setExtraSelections({});
  try {
    if (lines_ == nullptr) lines_ = std::make_unique<inspect::FileLines>(path_, encoding_);
    const auto lines = lines_->From(std::max(finding.line - kLinesBefore, 1LL), kLinesShown);
    QStringList shown;
    int block = -1;
    for (const inspect::FileLines::Line& line : lines) {
      const bool is_it = line.number == finding.line;
      if (is_it) block = static_cast<int>(shown.size());
      shown << HeadOf(line, is_it) + TextOf(line.text) + TextOf(line.end) + (line.is_cut ? "\u2026" : "");
    }
    setPlainText(shown.join('\n'));
    if (block >= 0) Mark(finding, block, lines[static_cast<std::size_t>(block)]);
  } catch (...) {
    lines_.reset();
    setPlainText(ShownLine(CurrentFailure().Description()));
  }
}

// By a ground and by an underline, so that not colour alone tells.
void FilePane::Mark(const inspect::Finding& finding, int block, const inspect::FileLines::Line& line) {
  const QTextBlock text = document()->findBlockByNumber(block);
  QTextEdit::ExtraSelection whole;
  whole.cursor = QTextCursor(text);
  whole.format.setBackground(palette().alternateBase());
  whole.format.setProperty(QTextFormat::FullWidthSelection, true);
  QList<QTextEdit::ExtraSelection> marks = {whole};
  setTextCursor(whole.cursor);
  if (const auto span = inspect::SpanOf(finding, line.text, separators_)) {
    const bool is_it = true;
    const auto begin = HeadOf(line, is_it).size() + TextOf(line.text.substr(0, span->begin)).size();
    const auto size = TextOf(line.text.substr(span->begin, span->size)).size();
    QTextEdit::ExtraSelection place;
    place.cursor = QTextCursor(text);
    place.cursor.setPosition(text.position() + static_cast<int>(begin));
    setTextCursor(place.cursor);
    place.cursor.setPosition(text.position() + static_cast<int>(begin + size), QTextCursor::KeepAnchor);
    place.format.setBackground(palette().highlight());
    place.format.setForeground(palette().highlightedText());
    place.format.setFontUnderline(true);
    marks << place;
  }
  setExtraSelections(marks);
  centerCursor();
}

}  // namespace tallybook::desktop
