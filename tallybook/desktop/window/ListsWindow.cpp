#include "tallybook/desktop/window/ListsWindow.h"

#include <QtGui/QShortcut>
#include <QtWidgets/QApplication>
#include <QtWidgets/QDialogButtonBox>
#include <QtWidgets/QLabel>
#include <QtWidgets/QMessageBox>
#include <QtWidgets/QPushButton>
#include <QtWidgets/QTabWidget>
#include <QtWidgets/QVBoxLayout>
#include <filesystem>

#include "base/Failure.h"
#include "tallybook/application/Shown.h"
#include "tallybook/desktop/window/ListPage.h"
#include "tallybook/desktop/window/YearsPage.h"

namespace tallybook::desktop {

namespace {

using application::Shown;

engine::StoredDescription StoredIn(BookReader& reader) {
  engine::StoredDescription stored = reader.Read().Stored();
  reader.Rest();
  return stored;
}

}  // namespace

ListsWindow::ListsWindow(QWidget* parent, Conversations& conversations, application::WholeFiles& files,
                         const Text& book, HostApp& app, const LocaleStyle& style)
    : QDialog(parent),
      conversations_(conversations),
      files_(files),
      reader_(book, app),
      draft_(StoredIn(reader_), std::filesystem::path(reader_.Path()).filename().string()) {
  setWindowTitle("Accounts, Fields, Years");
  Build(style);
  connect(&watch_, &QTimer::timeout, this, [this] { Watch(); });
  watch_.start(kWatch);
  Follow();
  accounts_->setFocus();
}

void ListsWindow::Build(const LocaleStyle& style) {
  accounts_ = new ListPage(nullptr, draft_, ListPage::Kind::kAccounts);
  fields_ = new ListPage(nullptr, draft_, ListPage::Kind::kFields);
  years_ = new YearsPage(nullptr, draft_, style);
  pages_ = new QTabWidget;
  pages_->setAccessibleName("What the book is made of");
  pages_->addTab(accounts_, "A&ccounts");
  pages_->addTab(fields_, "&Fields");
  pages_->addTab(years_, "&Years");
  state_ = new QLabel;
  state_->setObjectName("state");
  state_->setTextFormat(Qt::PlainText);
  state_->setWordWrap(true);
  state_->setMinimumHeight(fontMetrics().height() * 2);
  state_->setAlignment(Qt::AlignTop | Qt::AlignLeading);
  auto* buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel);
  undo_ = buttons->addButton("U&ndo", QDialogButtonBox::ActionRole);
  undo_->setObjectName("undo");
  undo_->setAutoDefault(false);
  auto* layout = new QVBoxLayout(this);
  layout->addWidget(pages_, 1);
  layout->addWidget(state_);
  layout->addWidget(buttons);
  const auto follow = [this] { Follow(); };
  const auto refuse = [this](const Text& words) { Refuse(words); };
  for (ListPage* page : {accounts_, fields_}) {
    page->OnChanged(follow);
    page->OnRefused(refuse);
  }
  years_->OnChanged(follow);
  years_->OnRefused(refuse);
  connect(undo_, &QPushButton::clicked, this, [this] { Undo(); });
  connect(buttons, &QDialogButtonBox::accepted, this, &ListsWindow::accept);
  connect(buttons, &QDialogButtonBox::rejected, this, &ListsWindow::reject);
  connect(new QShortcut(QKeySequence::Undo, this), &QShortcut::activated, this, [this] { Undo(); });
  connect(new QShortcut(QKeySequence::Find, this), &QShortcut::activated, this, [this] { Find(); });
  resize(fontMetrics().height() * 52, fontMetrics().height() * 32);
}

void ListsWindow::Follow() {
  undo_->setEnabled(draft_.CanUndo());
  undo_->setToolTip(draft_.CanUndo() ? ToQt(Shown("Undo " + draft_.NextUndo())) : QString());
  state_->setText(draft_.IsChanged()
                      ? ToQt(Shown("Not in the book yet: " + application::CountsOf(draft_.Difference()) + "."))
                      : QString("What is changed here comes into the book with OK, as one entry of the journal."));
  state_->setAccessibleName(state_->text());
}

void ListsWindow::ShowAnew() {
  for (ListPage* page : {accounts_, fields_}) page->ShowAnew();
  years_->ShowAnew();
  Follow();
}

void ListsWindow::Refuse(const Text& words) {
  state_->setText(ToQt(Shown(words)));
  state_->setAccessibleName(state_->text());
}

void ListsWindow::Undo() {
  draft_.Undo();
  ShowAnew();
}

void ListsWindow::Find() {
  auto* const page = dynamic_cast<ListPage*>(pages_->currentWidget());
  if (page != nullptr) page->BeginSearch();
}

// --- The book --------------------------------------------------------------------------------------------------------

void ListsWindow::accept() {
  if (!draft_.IsChanged()) return QDialog::accept();
  if (is_changing_) return;
  is_changing_ = true;
  // Windows live while figures are counted, and what is being brought into the book stays as it is.
  QWidget* const focus = focusWidget();
  pages_->setEnabled(false);
  undo_->setEnabled(false);
  const ListsChanged changed =
      ChangeLists(conversations_, files_, draft_.Stored(), draft_.Now(),
                  [this](const ListsQuestion& question) { return AskAboutLists(this, question); });
  is_changing_ = false;
  pages_->setEnabled(true);
  undo_->setEnabled(draft_.CanUndo());
  if (focus != nullptr) focus->setFocus();
  entries_ = changed.entries;
  if (changed.outcome == ListsOutcome::kDone) return QDialog::accept();
  if (changed.outcome == ListsOutcome::kOthers) TakeOthers();
}

void ListsWindow::reject() {
  if (is_changing_) return;
  if (draft_.IsChanged()) {
    QMessageBox box(QMessageBox::Question, windowTitle(), "What you have changed is not in the book.",
                    QMessageBox::NoButton, this);
    box.setInformativeText("If you leave now it is gone; the book stays as it is.");
    QPushButton* stay = box.addButton("&Stay", QMessageBox::RejectRole);
    box.addButton("&Leave", QMessageBox::DestructiveRole);
    box.setDefaultButton(stay);
    box.setEscapeButton(stay);
    box.exec();
    if (box.clickedButton() == stay) return;
  }
  QDialog::reject();
}

// Nothing is shown anew under a dialog that asks about a row.
void ListsWindow::Watch() {
  if (is_changing_ || QApplication::activeModalWidget() != this || !reader_.HasChanged()) return;
  TakeOthers();
}

void ListsWindow::TakeOthers() {
  Text refusal;
  try {
    reader_.Refresh();
    engine::StoredDescription now = StoredIn(reader_);
    if (now == draft_.Stored()) return;
    refusal = draft_.Rebase(std::move(now));
  } catch (const Failure& failure) {
    return Refuse(failure.Description());
  }
  ShowAnew();
  Text words = "Others have changed these lists; they are shown as they are now.";
  if (draft_.IsChanged()) words += " What you have changed stands on top: look at it, and choose OK again.";
  if (!refusal.empty()) words += " What you had changed does not fit any more: " + refusal;
  Refuse(words);
}

}  // namespace tallybook::desktop
