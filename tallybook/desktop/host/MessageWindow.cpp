#include "tallybook/desktop/host/MessageWindow.h"

#include <QClipboard>
#include <QDialogButtonBox>
#include <QGridLayout>
#include <QGuiApplication>
#include <QKeyEvent>
#include <QLabel>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QScreen>
#include <QScrollArea>
#include <QScrollBar>
#include <QStyle>
#include <algorithm>
#include <vector>

#include "platform/MessageBoxes.h"
#include "tallybook/desktop/host/QtTexts.h"

namespace tallybook::desktop {

namespace {

// A line of text is read with ease up to so many letters.
constexpr int kLineLetters = 80;
constexpr int kDetailLines = 8;
constexpr double kHighestShareOfScreen = 0.6;

struct Choice {
  Integer number;
  QDialogButtonBox::StandardButton button;
};

// The buttons of a style, in the order in which styles count them.
std::vector<Choice> ChoicesOf(Long style) {
  switch (style & kButtonsMask) {
    case kOkCancel:
      return {{kOk, QDialogButtonBox::Ok}, {kCancel, QDialogButtonBox::Cancel}};
    case kYesNo:
      return {{kYes, QDialogButtonBox::Yes}, {kNo, QDialogButtonBox::No}};
    case kRetryCancel:
      return {{kRetry, QDialogButtonBox::Retry}, {kCancel, QDialogButtonBox::Cancel}};
    default:
      return {{kOk, QDialogButtonBox::Ok}};
  }
}

struct Icon {
  QStyle::StandardPixmap picture;
  const char* words;
};

// What a style's picture is, and says to who does not see it; null for a style without one.
const Icon* IconOf(Long style) {
  static constexpr Icon kStop{QStyle::SP_MessageBoxCritical, "Error"};
  static constexpr Icon kQuestion{QStyle::SP_MessageBoxQuestion, "Question"};
  static constexpr Icon kWarning{QStyle::SP_MessageBoxWarning, "Warning"};
  static constexpr Icon kInformation{QStyle::SP_MessageBoxInformation, "Information"};
  switch (style & kIconMask) {
    case kStopIcon:
      return &kStop;
    case kQuestionIcon:
      return &kQuestion;
    case kExclamationIcon:
      return &kWarning;
    case kInformationIcon:
      return &kInformation;
    default:
      return nullptr;
  }
}

bool IsMnemonic(const QAbstractButton& button, const QString& letter) {
  const QKeySequence mnemonic = QKeySequence::mnemonic(button.text());
  return !mnemonic.isEmpty() && mnemonic == QKeySequence("Alt+" + letter.toUpper());
}

// The text in a frame of its own that scrolls where the text is higher than the screen has room for.
class TextArea : public QScrollArea {
 public:
  TextArea(QLabel& text, QWidget* parent) : QScrollArea(parent) {
    setFrameShape(QFrame::NoFrame);
    setFocusPolicy(Qt::NoFocus);
    setWidgetResizable(true);
    setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    viewport()->setAutoFillBackground(false);
    text.setAutoFillBackground(false);
    setWidget(&text);
    Fit(text);
  }

 private:
  void Fit(const QLabel& text) {
    const QFontMetrics letters(text.font());
    const int widest = std::min(kLineLetters * letters.averageCharWidth(), screen()->availableSize().width() * 2 / 3);
    const int natural = letters.size(0, text.text()).width() + letters.averageCharWidth();
    const int width = std::clamp(natural, std::min(widest, 24 * letters.averageCharWidth()), widest);
    const int height = text.heightForWidth(width);
    const int highest = static_cast<int>(screen()->availableSize().height() * kHighestShareOfScreen);
    const bool scrolls = height > highest;
    setMinimumSize(width + (scrolls ? verticalScrollBar()->sizeHint().width() : 0), std::min(height, highest));
    if (!scrolls) setVerticalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
  }
};

}  // namespace

MessageWindow::MessageWindow(const Message& message, QWidget* owner) : QDialog(owner), message_(message) {
  setWindowTitle(ShownLine(message.title));
  setWindowFlag(Qt::WindowContextHelpButtonHint, false);
  auto* const layout = new QGridLayout(this);
  const int unit = fontMetrics().height() / 4;
  layout->setContentsMargins(4 * unit, 4 * unit, 4 * unit, 4 * unit);
  layout->setHorizontalSpacing(4 * unit);
  layout->setVerticalSpacing(4 * unit);
  AddText(*layout);
  AddDetails(*layout);
  AddButtons(*layout);
  layout->setRowStretch(0, 1);
  layout->setColumnStretch(1, 1);
  setAccessibleName(windowTitle());
  setAccessibleDescription(text_->text());
}

void MessageWindow::AddText(QGridLayout& layout) {
  if (const Icon* const icon = IconOf(message_.style)) {
    auto* const picture = new QLabel(this);
    const int size = style()->pixelMetric(QStyle::PM_MessageBoxIconSize, nullptr, this);
    picture->setPixmap(style()->standardIcon(icon->picture, nullptr, this).pixmap(size, size));
    picture->setAccessibleName(icon->words);
    layout.addWidget(picture, 0, 0, Qt::AlignTop);
  }
  text_ = new QLabel(ShownLines(message_.text));
  text_->setObjectName("text");
  text_->setTextFormat(Qt::PlainText);
  text_->setWordWrap(true);
  text_->setAlignment(Qt::AlignTop | Qt::AlignLeading);
  text_->setTextInteractionFlags(Qt::TextSelectableByMouse | Qt::TextSelectableByKeyboard);
  text_->setAccessibleName(text_->text());
  layout.addWidget(new TextArea(*text_, this), 0, 1);
}

void MessageWindow::AddDetails(QGridLayout& layout) {
  if (message_.details.empty()) return;
  auto* const details = new QPlainTextEdit(ShownLines(message_.details), this);
  details->setObjectName("details");
  details->setReadOnly(true);
  details->setTabChangesFocus(true);
  details->setAccessibleName(tr("Details"));
  details->setMinimumHeight(kDetailLines * fontMetrics().lineSpacing());
  details->hide();
  layout.addWidget(details, 2, 0, 1, 2);
  layout.setRowStretch(2, 1);
}

void MessageWindow::AddButtons(QGridLayout& layout) {
  buttons_ = new QDialogButtonBox(this);
  const std::vector<Choice> choices = ChoicesOf(message_.style);
  for (const Choice& choice : choices) {
    QPushButton* const button = buttons_->addButton(choice.button);
    connect(button, &QPushButton::clicked, this, [this, number = choice.number] { done(number); });
  }
  const std::size_t chosen = (message_.style & kSecondButtonDefault) != 0 && choices.size() > 1 ? 1 : 0;
  QPushButton* const first = buttons_->button(choices[chosen].button);
  first->setDefault(true);
  if (auto* const details = findChild<QPlainTextEdit*>("details")) {
    QPushButton* const fold = buttons_->addButton(tr("&Details"), QDialogButtonBox::HelpRole);
    fold->setCheckable(true);
    fold->setAutoDefault(false);
    connect(fold, &QPushButton::toggled, this, [this, details](bool open) {
      details->setVisible(open);
      if (!open)
        QMetaObject::invokeMethod(
            this, [this] { adjustSize(); }, Qt::QueuedConnection);
    });
  }
  layout.addWidget(buttons_, 1, 0, 1, 2);
  first->setFocus();
}

Integer MessageWindow::Ask() {
  return static_cast<Integer>(exec());
}

// Escape and the close box.
void MessageWindow::reject() {
  done(RefusingButton(message_.style));
}

void MessageWindow::keyPressEvent(QKeyEvent* event) {
  if (event->matches(QKeySequence::Copy)) return Copy();
  const bool bare = (event->modifiers() & ~Qt::ShiftModifier) == Qt::NoModifier;
  if (bare && event->text().size() == 1 && event->text().front().isLetter()) {
    for (QAbstractButton* const button : buttons_->buttons()) {
      if (IsMnemonic(*button, event->text())) return button->click();
    }
  }
  QDialog::keyPressEvent(event);
}

void MessageWindow::Copy() const {
  const QString all = windowTitle() + "\n\n" + text_->text() + "\n" +
                      (message_.details.empty() ? QString() : "\n" + ShownLines(message_.details) + "\n");
  QGuiApplication::clipboard()->setText(text_->hasSelectedText() ? text_->selectedText() : all);
}

}  // namespace tallybook::desktop
