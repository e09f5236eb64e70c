#include "tallybook/desktop/window/HelpWindow.h"

#include <QtCore/QFile>
#include <QtCore/QUrl>
#include <QtGui/QAbstractTextDocumentLayout>
#include <QtGui/QDesktopServices>
#include <QtGui/QImage>
#include <QtGui/QKeyEvent>
#include <QtGui/QShortcut>
#include <QtGui/QTextBlock>
#include <QtGui/QTextTable>
#include <QtGui/QWindow>
#include <QtWidgets/QApplication>
#include <QtWidgets/QHBoxLayout>
#include <QtWidgets/QPushButton>
#include <QtWidgets/QScrollBar>
#include <QtWidgets/QTextBrowser>
#include <QtWidgets/QVBoxLayout>
#include <array>
#include <utility>
#include <vector>

#include "forms/Form.h"
#include "tallybook/desktop/forms/Contrast.h"
#include "tallybook/desktop/forms/FormWindow.h"

namespace tallybook::desktop {

namespace {

constexpr const char* kRoot = "qrc:/docs/";
constexpr const char* kFirstPage = "guide/README.md";

// What is told of each window, by the name of its form or, of our own windows, by how its title begins.
using PlaceRow = std::pair<const char*, const char*>;
constexpr std::array kPlacesOfForms = {
    PlaceRow{"dlgRepPrint", "exporting.md"},
    PlaceRow{"dlgExport", "exporting.md#A table"},
    PlaceRow{"dlgQDXImp", "importing.md"},
    PlaceRow{"frmImport", "text-imports.md"},
    PlaceRow{"frmDelimited", "text-imports.md#A delimited file"},
    PlaceRow{"frmDataExc", "exchange-definitions.md#The editor"},
    PlaceRow{"dlgRepSaveAs", "exchange-definitions.md#The editor"},
};
constexpr std::array kPlacesOfWindows = {
    PlaceRow{"QDX Import Layouts", "exchange-definitions.md"},
    PlaceRow{"Journal", "guide/README.md#The journal"},
    PlaceRow{"Undo: Figures Changed Since", "guide/README.md#The journal"},
    PlaceRow{"Preview", "guide/exchange.md#Looked at first"},
    PlaceRow{"Check a File", "text-imports.md#Looked through first"},
    PlaceRow{"Tie-Out", "guide/exchange.md#Held against the book"},
    PlaceRow{"Where This Comes From", "guide/README.md#Where a figure comes from"},
    PlaceRow{"New Book", "guide/README.md#A book of your own"},
    PlaceRow{"Go to a Date", "guide/README.md#Figures"},
    PlaceRow{"Paste Figures", "guide/README.md#Spreadsheets"},
    PlaceRow{"Accounts, Fields, Years", "guide/growing.md#Accounts, fields and years"},
    PlaceRow{"Add Account", "guide/growing.md#Accounts, fields and years"},
    PlaceRow{"Edit Account", "guide/growing.md#Accounts, fields and years"},
    PlaceRow{"Add Field", "guide/growing.md#Accounts, fields and years"},
    PlaceRow{"Edit Field", "guide/growing.md#Accounts, fields and years"},
    PlaceRow{"Paste Accounts", "guide/growing.md#Many at once"},
    PlaceRow{"Paste Fields", "guide/growing.md#Many at once"},
    PlaceRow{"Change the Lists", "guide/growing.md#What is asked before it is done"},
    PlaceRow{"Back Up the Book", "guide/growing.md#Backups"},
    PlaceRow{"Restore a Book", "guide/growing.md#Backups"},
    PlaceRow{"Check of", "guide/growing.md#Checking"},
    PlaceRow{"Salvage", "guide/growing.md#Checking"},
    PlaceRow{"Undo a Change of Lists", "guide/growing.md#What is asked before it is done"},
    PlaceRow{"Settings", "guide/README.md#Settings"},
};

// Pictures are as wide as the text at most, and the links between the pages lead to the pages.
class Pages final : public QTextBrowser {
 public:
  Pages() { setVerticalScrollBarPolicy(Qt::ScrollBarAlwaysOn); }  // so that the pictures' room is known

 protected:
  QVariant loadResource(int type, const QUrl& name) override {
    QVariant resource = QTextBrowser::loadResource(type, name);
    if (type != QTextDocument::ImageResource) return resource;
    QImage picture = QImage::fromData(resource.toByteArray());
    const int widest = viewport()->width() - 2 * static_cast<int>(document()->documentMargin());
    if (picture.width() <= widest) return picture;
    const qreal ratio = devicePixelRatioF();
    picture = picture.scaledToWidth(static_cast<int>(widest * ratio), Qt::SmoothTransformation);
    picture.setDevicePixelRatio(ratio);
    return picture;
  }

  void doSetSource(const QUrl& page, QTextDocument::ResourceType type) override {
    if (page.scheme() != "qrc") return static_cast<void>(QDesktopServices::openUrl(page));
    if (!QFile::exists(":" + page.path())) return;
    if (page.path() != source().path()) {
      QTextBrowser::doSetSource(page.adjusted(QUrl::RemoveFragment), type);
      ShowLinks();
      SpaceTables();
    }
    GoToHeading(page.fragment(QUrl::FullyDecoded));
  }

  void changeEvent(QEvent* event) override {
    QTextBrowser::changeEvent(event);
    if (event->type() == QEvent::PaletteChange) ShowLinks();
  }

 private:
  // In a colour that can be read on this ground: that of the system's links may not be.
  void ShowLinks() {
    QTextCharFormat format;
    format.setForeground(Readable(palette().color(QPalette::Link), palette().color(QPalette::Base)));
    std::vector<std::pair<int, int>> links;
    for (QTextBlock block = document()->begin(); block.isValid(); block = block.next()) {
      for (auto part = block.begin(); !part.atEnd(); ++part) {
        if (part.fragment().charFormat().isAnchor())
          links.emplace_back(part.fragment().position(), part.fragment().position() + part.fragment().length());
      }
    }
    QTextCursor cursor(document());
    for (const auto& [first, last] : links) {
      cursor.setPosition(first);
      cursor.setPosition(last, QTextCursor::KeepAnchor);
      cursor.mergeCharFormat(format);
    }
  }

  void SpaceTables() {
    for (QTextFrame* const frame : document()->rootFrame()->childFrames()) {
      auto* const table = qobject_cast<QTextTable*>(frame);
      if (table == nullptr) continue;
      const double unit = fontMetrics().height() / 4.0;
      QTextTableFormat format = table->format();
      format.setCellPadding(unit);
      format.setCellSpacing(0);
      format.setBorderCollapse(true);
      format.setBorder(1);
      format.setBorderBrush(palette().brush(QPalette::Mid));
      format.setBottomMargin(2 * unit);
      table->setFormat(format);
    }
  }

  void GoToHeading(const QString& heading) {
    for (QTextBlock block = document()->begin(); !heading.isEmpty() && block.isValid(); block = block.next()) {
      if (block.blockFormat().headingLevel() == 0 || block.text() != heading) continue;
      setTextCursor(QTextCursor(block));
      verticalScrollBar()->setValue(static_cast<int>(document()->documentLayout()->blockBoundingRect(block).top()));
      return;
    }
  }
};

}  // namespace

HelpWindow::HelpWindow(QWidget* owner) : QWidget(owner, Qt::Window), browser_(new Pages) {
  setAttribute(Qt::WA_DeleteOnClose);
  setAttribute(Qt::WA_QuitOnClose, false);  // help alone is no program
  setWindowTitle("Help");
  browser_->setAccessibleName("Help");
  browser_->setOpenExternalLinks(false);
  auto* contents = new QPushButton("&Contents");
  auto* back = new QPushButton("&Back");
  auto* close_button = new QPushButton("Close");
  back->setEnabled(false);
  auto* buttons = new QHBoxLayout;
  for (QPushButton* button : {contents, back}) buttons->addWidget(button);
  buttons->addStretch(1);
  buttons->addWidget(close_button);
  auto* layout = new QVBoxLayout(this);
  layout->addWidget(browser_, 1);
  layout->addLayout(buttons);
  connect(contents, &QPushButton::clicked, this, [this] { Show(kFirstPage); });
  connect(back, &QPushButton::clicked, browser_, &QTextBrowser::backward);
  connect(browser_, &QTextBrowser::backwardAvailable, back, &QPushButton::setEnabled);
  connect(close_button, &QPushButton::clicked, this, &QWidget::close);
  for (const auto& keys : {QKeySequence(Qt::Key_Escape), QKeySequence(QKeySequence::Close)}) {
    connect(new QShortcut(keys, this), &QShortcut::activated, this, &QWidget::close);
  }
  const int unit = fontMetrics().height();
  resize(unit * 46, unit * 38);
}

void HelpWindow::Show(const QString& place) {
  QUrl page(kRoot + place.section('#', 0, 0));
  page.setFragment(place.section('#', 1));
  browser_->setSource(page, QTextDocument::MarkdownResource);
  browser_->setFocus();
}

QString HelpWindow::Place() const {
  return browser_->source().toString().remove(kRoot);
}

QString HelpPlaceOf(const QWidget* window) {
  if (const auto* form = dynamic_cast<const FormWindow*>(window)) {
    for (const auto& [name, place] : kPlacesOfForms) {
      if (form->Shown().Name() == name) return place;
    }
  }
  for (const auto& [title, place] : kPlacesOfWindows) {
    if (window != nullptr && window->windowTitle().startsWith(title)) return place;
  }
  return kFirstPage;
}

Help::Help() {
  qApp->installEventFilter(this);
}

Help::~Help() {
  qApp->removeEventFilter(this);
  delete window_.data();
}

void Help::ShowForWindowAtHand() {
  QWidget* const at_hand = QApplication::activeWindow();
  if (window_ == nullptr || at_hand != window_) Show(HelpPlaceOf(at_hand));
}

// A dialog that keeps other windows away lets in those that belong to it alone. Elsewhere it belongs to nobody: a
// dialog of the component keeps its owner away together with all that belongs to that.
void Help::Show(const QString& place) {
  QWidget* const modal = QApplication::activeModalWidget();
  const QPointer<QWidget> over = QApplication::activeWindow();
  if (window_ != nullptr && modal != nullptr && window_->parentWidget() != modal) delete window_.data();
  if (window_ == nullptr) window_ = new HelpWindow(modal);
  if (over != nullptr && over != window_) {
    window_->winId();
    window_->windowHandle()->setTransientParent(over->windowHandle());
  }
  window_->show();
  window_->Show(place);
  window_->raise();
  window_->activateWindow();
}

// A key comes to the window itself when nothing in it has taken it.
bool Help::eventFilter(QObject* watched, QEvent* event) {
  const auto* widget = qobject_cast<const QWidget*>(watched);
  if (event->type() != QEvent::KeyPress || widget == nullptr || !widget->isWindow()) return false;
  const auto* key = static_cast<QKeyEvent*>(event);
  if (key->key() != Qt::Key_F1 || key->modifiers() != Qt::NoModifier) return false;
  ShowForWindowAtHand();
  return true;
}

}  // namespace tallybook::desktop
