#include "tallybook/desktop/window/FilePane.h"

#include <QtGui/QFontDatabase>
#include <QtGui/QTextBlock>
#include <algorithm>
#include <utility>

#include "base/Failure.h"
#include "tallybook/application/Shown.h"
#include "tallybook/desktop/host/QtTexts.h"
#include "tallybook/inspect/QdxLines.h"

namespace tallybook::desktop {

namespace {

constexpr int kRowsBefore = 50;
constexpr int kRowsBehind = 50;
constexpr int kNumberWidth = 9;
constexpr const char* kHere = "\u25b6 ";  // before the number of the row that is looked at
constexpr const char* kElsewhere = "  ";

QString HeadOf(long long number, bool is_it) {
  return QString(is_it ? kHere : kElsewhere) + QString::number(number).rightJustified(kNumberWidth) + "  ";
}

// Control characters as what they are; the text of a line holds no line end.
QString TextOf(const Text& text) {
  return ToQt(application::Shown(text));
}

}  // namespace

// The lines of a text file, with the field or the text that the finding names.
class FilePane::TextSource {
 public:
  TextSource(const Text& path, TextEncoding encoding, Text separators)
      : lines_(std::make_shared<inspect::FileLines>(path, encoding)), separators_(std::move(separators)) {}

  Rows operator()(const inspect::Finding& finding) const {
    Rows rows;
    const long long first = std::max(finding.line - kRowsBefore, 1LL);
    for (const inspect::FileLines::Line& line : lines_->From(first, kRowsBefore + 1 + kRowsBehind)) {
      if (line.number == finding.line) {
        rows.at = rows.rows.size();
        rows.span = inspect::SpanOf(finding, line.text, separators_);
      }
      rows.rows.push_back({line.number, line.text, TextOf(line.end) + (line.is_cut ? "\u2026" : "")});
    }
    return rows;
  }

 private:
  std::shared_ptr<inspect::FileLines> lines_;
  Text separators_;
};

// The items of an exchange file. Of what is about the whole of it the beginning is shown.
class FilePane::ExchangeSource {
 public:
  explicit ExchangeSource(const Text& path) : lines_(std::make_shared<inspect::QdxLines>(path)) {}

  Rows operator()(const inspect::Finding& finding) const {
    const auto place = lines_->About(finding.offset.value_or(0), kRowsBefore, kRowsBehind);
    Rows rows;
    for (const inspect::QdxLines::Line& line : place.lines) rows.rows.push_back({line.offset, line.text, {}});
    if (!finding.offset || rows.rows.empty()) return rows;
    rows.at = place.at;
    const Text& text = rows.rows[place.at].text;
    const std::size_t begin = std::min(text.find_first_not_of(' '), text.size());
    rows.span = {.begin = begin, .size = text.size() - begin};
    return rows;
  }

 private:
  std::shared_ptr<inspect::QdxLines> lines_;
};

FilePane::FilePane(QWidget* parent) : QPlainTextEdit(parent) {
  setReadOnly(true);
  setTabChangesFocus(true);
  setLineWrapMode(QPlainTextEdit::NoWrap);
  setFont(QFontDatabase::systemFont(QFontDatabase::FixedFont));
  setTextInteractionFlags(Qt::TextSelectableByMouse | Qt::TextSelectableByKeyboard);
  setAccessibleName("The file around the finding");
}

FilePane::~FilePane() = default;

void FilePane::SetTextFile(const Text& path, TextEncoding encoding, const Text& separators) {
  SetSource([=] { return TextSource(path, encoding, separators); });
}

void FilePane::SetExchangeFile(const Text& path) {
  SetSource([=] { return ExchangeSource(path); });
}

void FilePane::SetSource(std::function<Source()> open) {
  open_ = std::move(open);
  source_ = {};
  setExtraSelections({});
  clear();
}

void FilePane::ShowFinding(const inspect::Finding& finding) {
  setExtraSelections({});
  try {
    if (!source_) source_ = open_();
    const Rows rows = source_(finding);
    QStringList shown;
    for (const Row& row : rows.rows) {
      const bool is_it = rows.at == static_cast<std::size_t>(shown.size());
      shown << HeadOf(row.number, is_it) + TextOf(row.text) + row.behind;
    }
    setPlainText(shown.join('\n'));
    if (rows.at) Mark(rows);
  } catch (...) {
    source_ = {};
    setPlainText(ShownLine(CurrentFailure().Description()));
  }
}

// By a ground and by an underline, so that not colour alone tells.
void FilePane::Mark(const Rows& rows) {
  const QTextBlock text = document()->findBlockByNumber(static_cast<int>(*rows.at));
  const Row& row = rows.rows[*rows.at];
  QTextEdit::ExtraSelection whole;
  whole.cursor = QTextCursor(text);
  whole.format.setBackground(palette().alternateBase());
  whole.format.setProperty(QTextFormat::FullWidthSelection, true);
  QList<QTextEdit::ExtraSelection> marks = {whole};
  setTextCursor(whole.cursor);
  if (rows.span) {
    const bool is_it = true;
    const auto begin = HeadOf(row.number, is_it).size() + TextOf(row.text.substr(0, rows.span->begin)).size();
    const auto size = TextOf(row.text.substr(rows.span->begin, rows.span->size)).size();
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
