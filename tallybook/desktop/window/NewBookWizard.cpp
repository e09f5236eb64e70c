#include "tallybook/desktop/window/NewBookWizard.h"

#include <QtCore/QDate>
#include <QtGui/QFontDatabase>
#include <QtWidgets/QComboBox>
#include <QtWidgets/QDateEdit>
#include <QtWidgets/QFileDialog>
#include <QtWidgets/QFormLayout>
#include <QtWidgets/QHBoxLayout>
#include <QtWidgets/QLabel>
#include <QtWidgets/QLineEdit>
#include <QtWidgets/QMessageBox>
#include <QtWidgets/QPlainTextEdit>
#include <QtWidgets/QPushButton>
#include <QtWidgets/QSpinBox>
#include <QtWidgets/QVBoxLayout>
#include <functional>
#include <utility>

#include "base/Dates.h"
#include "base/Failure.h"
#include "tallybook/application/Counts.h"
#include "tallybook/application/Shown.h"
#include "tallybook/desktop/window/CalendarPicture.h"
#include "tallybook/desktop/window/ListFile.h"
#include "tallybook/engine/Book.h"

namespace tallybook::desktop {

namespace {

using application::Counted;

// A page that shows what is wrong with it and lets nobody past until it is mended.
class DraftPage : public QWizardPage {
 public:
  explicit DraftPage(BookDraft& draft) : draft_(draft), trouble_(new QLabel) {
    trouble_->setWordWrap(true);
    trouble_->setTextFormat(Qt::PlainText);
    trouble_->setMinimumHeight(fontMetrics().height() * 2);
    trouble_->setAlignment(Qt::AlignTop | Qt::AlignLeading);
  }

  [[nodiscard]] bool isComplete() const override { return Trouble().empty(); }

 protected:
  [[nodiscard]] virtual Text Trouble() const = 0;
  // Due when anything was changed.
  void Changed() {
    trouble_->setText(ToQt(Trouble()));
    trouble_->setAccessibleName(trouble_->text());
    Q_EMIT completeChanged();
  }
  [[nodiscard]] BookDraft& Draft() const { return draft_; }
  [[nodiscard]] QLabel* TroubleLabel() const { return trouble_; }

 private:
  BookDraft& draft_;
  QLabel* trouble_;
};

// --- What it is called -----------------------------------------------------------------------------------------------

class NamePage final : public DraftPage {
 public:
  NamePage(BookDraft& draft, Text folder) : DraftPage(draft), folder_(std::move(folder)) {
    setTitle("What is the book called?");
    setSubTitle("A book keeps figures for each account and date in one file.");
    auto* form = new QFormLayout(this);
    name_ = new QLineEdit;
    name_->setPlaceholderText("North Shop");
    path_ = new QLineEdit;
    auto* browse = new QPushButton("B&rowse\u2026");
    auto* row = new QHBoxLayout;
    row->addWidget(path_, 1);
    row->addWidget(browse);
    form->addRow("N&ame", name_);
    auto* label = new QLabel("&File");
    label->setBuddy(path_);
    form->addRow(label, row);
    form->addRow(TroubleLabel());
    name_->setAccessibleName("Name");
    path_->setAccessibleName("File");
    connect(name_, &QLineEdit::textChanged, this, [this](const QString& text) {
      Draft().name = FromQt(text);
      if (!path_chosen_) path_->setText(ToQt(PathFor(folder_, Draft().name)));
      Changed();
    });
    connect(path_, &QLineEdit::textChanged, this, [this](const QString& text) {
      Draft().path = FromQt(text);
      Changed();
    });
    connect(path_, &QLineEdit::textEdited, this, [this] { path_chosen_ = true; });
    connect(browse, &QPushButton::clicked, this, [this] { Browse(); });
  }

 protected:
  [[nodiscard]] Text Trouble() const override { return TroubleWithName(Draft()); }

 private:
  void Browse() {
    const QFileDialog::Options options = QFileDialog::DontConfirmOverwrite;
    const QString path =
        QFileDialog::getSaveFileName(this, "New Book", path_->text(), "Books (*.tbk)", nullptr, options);
    if (path.isEmpty()) return;
    path_chosen_ = true;
    path_->setText(ToQt(BookFileFor(FromQt(path))));
  }

  Text folder_;
  QLineEdit* name_ = nullptr;
  QLineEdit* path_ = nullptr;
  bool path_chosen_ = false;
};

// --- Its calendar ----------------------------------------------------------------------------------------------------

class CalendarPage final : public DraftPage {
 public:
  CalendarPage(BookDraft& draft, const LocaleStyle& style) : DraftPage(draft) {
    setTitle("How is its year cut?");
    setSubTitle("The grain and the calendar stay with the book. The picture shows its first year.");
    Build(style);
    for (QComboBox* box : {grain_, kind_, week_ends_})
      connect(box, &QComboBox::currentIndexChanged, this, [this] { Take(); });
    connect(first_, &QDateEdit::dateChanged, this, [this] { Take(); });
    connect(years_, &QSpinBox::valueChanged, this, [this] { Take(); });
    connect(lengths_, &QLineEdit::textChanged, this, [this] { Take(); });
  }

  void initializePage() override { Take(); }

 protected:
  [[nodiscard]] Text Trouble() const override { return TroubleWithCalendar(Draft()); }

 private:
  static QComboBox* NewChoice(const QString& name, const QStringList& texts) {
    auto* box = new QComboBox;
    box->addItems(texts);
    box->setAccessibleName(name);
    return box;
  }

  void Build(const LocaleStyle& style) {
    grain_ = NewChoice("Figures for each", {"Day", "Week", "Period"});
    kind_ = NewChoice("Calendar", {"Calendar months", "Weeks, in blocks of four", "4-4-5 weeks a quarter",
                                   "13 times 4 weeks", "Periods of my own"});
    first_ = new QDateEdit;
    first_->setCalendarPopup(true);
    first_->setDate(QDate(QDate::currentDate().year(), 1, 1));
    first_->setAccessibleName("Year begins on, or near");
    years_ = new QSpinBox;
    years_->setRange(1, engine::kMaxYears);
    years_->setValue(5);
    years_->setAccessibleName("Years held");
    QStringList days;
    for (const char* day : {"Sunday", "Monday", "Tuesday", "Wednesday", "Thursday", "Friday", "Saturday"}) days << day;
    week_ends_ = NewChoice("Weeks end on", days);
    week_ends_->setCurrentIndex(6);
    lengths_ = new QLineEdit;
    lengths_->setPlaceholderText("28, 28, 35, 28, 28, 35 \u2026");
    lengths_->setAccessibleName("Days of the periods");
    picture_ = new CalendarPicture(this, style);
    auto* form = new QFormLayout;
    form->addRow("Figures for &each", grain_);
    form->addRow("&Calendar", kind_);
    form->addRow("Year be&gins on, or near", first_);
    form->addRow("&Years held", years_);
    form->addRow("&Weeks end on", week_ends_);
    form->addRow("&Days of the periods", lengths_);
    form_ = form;
    auto* layout = new QVBoxLayout(this);
    auto* row = new QHBoxLayout;
    row->addLayout(form);
    row->addWidget(picture_, 1);
    layout->addLayout(row, 1);
    layout->addWidget(TroubleLabel());
  }

  void Take() {
    BookDraft& draft = Draft();
    draft.data_level = static_cast<Integer>(grain_->currentIndex() + 1);
    draft.calendar.kind = static_cast<engine::CalendarKind>(kind_->currentIndex());
    draft.calendar.first_date = DateFromParts(first_->date().year(), first_->date().month(), first_->date().day());
    draft.calendar.years = static_cast<Integer>(years_->value());
    draft.calendar.week_ends_on = static_cast<Integer>(week_ends_->currentIndex() + 1);
    draft.custom_lengths = FromQt(lengths_->text());
    const bool own = draft.calendar.kind == engine::CalendarKind::kCustom;
    lengths_->setVisible(own);
    form_->labelForField(lengths_)->setVisible(own);
    picture_->Show(CalendarOf(draft), draft.data_level);
    Changed();
  }

  QComboBox* grain_ = nullptr;
  QComboBox* kind_ = nullptr;
  QDateEdit* first_ = nullptr;
  QSpinBox* years_ = nullptr;
  QComboBox* week_ends_ = nullptr;
  QLineEdit* lengths_ = nullptr;
  CalendarPicture* picture_ = nullptr;
  QFormLayout* form_ = nullptr;
};

// --- Its lists -------------------------------------------------------------------------------------------------------

class ListsPage final : public DraftPage {
 public:
  explicit ListsPage(BookDraft& draft) : DraftPage(draft) {
    setTitle("What does it keep?");
    setSubTitle("One account and one field a line; paste a column of a spreadsheet, or read a CSV file.");
    auto* row = new QHBoxLayout;
    accounts_ = AddList(*row, "&Accounts: code and description", "4100 Groceries\n4110 Bakery\n4120 Dairy",
                        "Read Accounts from a &File\u2026", account_count_);
    fields_ =
        AddList(*row, "Fiel&ds", "Sales\nCost of goods\nCustomers", "Read Fields from a Fi&le\u2026", field_count_);
    auto* layout = new QVBoxLayout(this);
    layout->addLayout(row, 1);
    layout->addWidget(TroubleLabel());
    for (QPlainTextEdit* list : {accounts_, fields_})
      connect(list, &QPlainTextEdit::textChanged, this, [this] { Take(); });
  }

  void initializePage() override { Take(); }

 protected:
  [[nodiscard]] Text Trouble() const override { return TroubleWithLists(Draft()); }

 private:
  QPlainTextEdit* AddList(QHBoxLayout& row, const QString& name, const QString& example, const QString& read,
                          QLabel*& count) {
    auto* column = new QVBoxLayout;
    auto* list = new QPlainTextEdit;
    list->setPlaceholderText(example);
    list->setTabChangesFocus(true);
    list->setLineWrapMode(QPlainTextEdit::NoWrap);
    QString plain = name;
    list->setAccessibleName(plain.remove('&'));
    auto* label = new QLabel(name);
    label->setBuddy(list);
    count = new QLabel;
    auto* button = new QPushButton(read);
    column->addWidget(label);
    column->addWidget(list, 1);
    column->addWidget(count);
    column->addWidget(button, 0, Qt::AlignLeading);
    row.addLayout(column, 1);
    connect(button, &QPushButton::clicked, this, [this, list] { ReadFile(*list); });
    return list;
  }

  void ReadFile(QPlainTextEdit& list) {
    const QString path = QFileDialog::getOpenFileName(this, "Read a List", {}, "Lists (*.csv *.txt);;All files (*)");
    if (path.isEmpty()) return;
    QString why;
    const QString text = TextOfList(path, why);
    if (why.isEmpty()) return list.setPlainText(text);
    QMessageBox::warning(this, "Read a List", QString("%1 cannot be read: %2").arg(path, why));
  }

  void Take() {
    Draft().account_lines = FromQt(accounts_->toPlainText());
    Draft().field_lines = FromQt(fields_->toPlainText());
    const auto accounts = static_cast<long long>(ReadAccountLines(Draft().account_lines).accounts.size());
    const auto fields = static_cast<long long>(ReadFieldLines(Draft().field_lines).fields.size());
    account_count_->setText(ToQt(Counted(accounts, "account")));
    field_count_->setText(ToQt(Counted(fields, "field")));
    Changed();
  }

  QPlainTextEdit* accounts_ = nullptr;
  QPlainTextEdit* fields_ = nullptr;
  QLabel* account_count_ = nullptr;
  QLabel* field_count_ = nullptr;
};

// --- Done ------------------------------------------------------------------------------------------------------------

class DonePage final : public QWizardPage {
 public:
  DonePage(const BookDraft& draft, LocaleStyle style)
      : draft_(draft), style_(std::move(style)), summary_(new QLabel(this)) {
    setTitle("Ready to make the book");
    setSubTitle("Its grain and calendar stay as they are; lists and years can grow.");
    summary_->setWordWrap(true);
    summary_->setTextFormat(Qt::PlainText);
    summary_->setTextInteractionFlags(Qt::TextSelectableByMouse | Qt::TextSelectableByKeyboard);
    auto* layout = new QVBoxLayout(this);
    layout->addWidget(summary_);
    layout->addStretch(1);
  }

  void initializePage() override {
    const engine::BookDescription book = DescriptionOf(draft_);
    const engine::Calendar calendar(book.calendar, book.data_level);
    QStringList lines;
    lines << ToQt(application::Shown(book.system_name)) << ToQt(application::Shown(draft_.path)) << ""
          << QString("%1, %2, a record for each %3")
                 .arg(ToQt(Counted(static_cast<long long>(book.accounts.size()), "account")),
                      ToQt(Counted(static_cast<long long>(book.fields.size()), "field")),
                      ToQt(LevelName(book.data_level)).toLower())
          << QString("%1 to %2, %3")
                 .arg(ToQt(style_.dates(calendar.FirstDate())), ToQt(style_.dates(calendar.LastDate())),
                      ToQt(Counted(book.calendar.years, "year")));
    summary_->setText(lines.join('\n'));
    summary_->setAccessibleName(summary_->text());
  }

 private:
  const BookDraft& draft_;
  LocaleStyle style_;
  QLabel* summary_;
};

}  // namespace

NewBookWizard::NewBookWizard(QWidget* parent, const LocaleStyle& style, const Text& folder) : QWizard(parent) {
  setWindowTitle("New Book");
  setWizardStyle(QWizard::ClassicStyle);
  setOption(QWizard::NoBackButtonOnStartPage);
  setButtonText(QWizard::FinishButton, "&Make the Book");
  addPage(new NamePage(draft_, folder));
  addPage(new CalendarPage(draft_, style));
  addPage(new ListsPage(draft_));
  addPage(new DonePage(draft_, style));
  resize(fontMetrics().height() * 56, fontMetrics().height() * 34);
}

void NewBookWizard::accept() {
  try {
    engine::Book::Create(draft_.path, DescriptionOf(draft_));
  } catch (...) {
    QMessageBox::critical(this, "New Book", ToQt(application::Shown(CurrentFailure().Description())));
    return;
  }
  made_ = draft_.path;
  QWizard::accept();
}

}  // namespace tallybook::desktop
