#include "tallybook/desktop/window/FileCheckWindow.h"

#include <QtGui/QKeyEvent>
#include <QtWidgets/QCheckBox>
#include <QtWidgets/QComboBox>
#include <QtWidgets/QDialogButtonBox>
#include <QtWidgets/QFileDialog>
#include <QtWidgets/QGridLayout>
#include <QtWidgets/QHBoxLayout>
#include <QtWidgets/QHeaderView>
#include <QtWidgets/QLabel>
#include <QtWidgets/QLineEdit>
#include <QtWidgets/QMessageBox>
#include <QtWidgets/QPushButton>
#include <QtWidgets/QSplitter>
#include <QtWidgets/QTableView>
#include <QtWidgets/QVBoxLayout>
#include <algorithm>
#include <array>
#include <filesystem>
#include <utility>

#include "base/Failure.h"
#include "import/DelimitedImport.h"
#include "tallybook/desktop/forms/ElidedBox.h"
#include "tallybook/desktop/host/QtTexts.h"
#include "tallybook/desktop/host/RowsView.h"
#include "tallybook/desktop/window/FilePane.h"
#include "tallybook/desktop/window/FindingModel.h"

namespace tallybook::desktop {

namespace {

constexpr int kAllEffects = -1;
constexpr int kLettersOfBox = 16;

QComboBox* NewChoiceBox(const char* name, std::initializer_list<std::pair<const char*, int>> entries) {
  auto* const box = new ElidedBox;
  box->setObjectName(name);
  box->setSizeAdjustPolicy(QComboBox::AdjustToMinimumContentsLengthWithIcon);
  box->setMinimumContentsLength(kLettersOfBox);
  for (const auto& [words, value] : entries) box->addItem(words, value);
  return box;
}

template <typename Choice>
int AsData(Choice choice) {
  return static_cast<int>(choice);
}

QCheckBox* NewSwitch(const char* name, const QString& words) {
  auto* const box = new QCheckBox(words);
  box->setObjectName(name);
  return box;
}

QLabel* LabelOf(const QString& words, QWidget* part) {
  auto* const label = new QLabel(words);
  label->setBuddy(part);
  part->setAccessibleName(QString(words).remove('&'));
  return label;
}

// Enter shows where the current finding stands, Ctrl and a digit sort by a column.
class FindingTable final : public QTableView {
 public:
  FindingTable(std::function<void()> chosen, std::function<void(int column)> sort)
      : chosen_(std::move(chosen)), sort_(std::move(sort)) {
    connect(this, &QTableView::doubleClicked, this, [this] { chosen_(); });
    horizontalHeader()->setSectionsClickable(true);
    connect(horizontalHeader(), &QHeaderView::sectionClicked, this, [this](int column) { sort_(column); });
  }

 protected:
  void keyPressEvent(QKeyEvent* event) override {
    const bool enters = event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter;
    if (enters && currentIndex().isValid()) return chosen_();
    const int column = event->key() - Qt::Key_1;
    const bool sorts = event->modifiers() == Qt::ControlModifier && column >= 0 && column < model()->columnCount();
    if (sorts) return sort_(column);
    QTableView::keyPressEvent(event);
  }

 private:
  std::function<void()> chosen_;
  std::function<void(int column)> sort_;
};

constexpr const char* kBegin =
    "What the import would ask about, end at, or take in silence is listed before anything is imported. "
    "Nothing is changed.";
constexpr const char* kNoDefinition =
    "This book has no exchange definition yet: Data Exchange, Definitions makes one. An exchange file is looked at by "
    "the "
    "definition that will import it.";

std::optional<ImportKind> KindOf(const QString& file) {
  if (file.endsWith(".qdx", Qt::CaseInsensitive)) return ImportKind::kExchange;
  if (file.endsWith(".csv", Qt::CaseInsensitive)) return ImportKind::kCommaSeparated;
  if (file.endsWith(".txt", Qt::CaseInsensitive)) return ImportKind::kDelimited;
  return std::nullopt;
}

bool Finds(const application::SeenDefinition& definition, const Text& file) {
  return std::ranges::any_of(application::ExchangeFilesOf(definition.exchange_files), [&](const Text& found) {
    std::error_code none;
    return std::filesystem::equivalent(found, file, none);
  });
}

}  // namespace

FileCheckWindow::FileCheckWindow(Means means)
    : QDialog(nullptr, Qt::Window),
      means_(std::move(means)),
      work_(means_.ask_to_end),
      file_(new QLineEdit),
      kind_(NewChoiceBox("kind", {{"Comma-separated", AsData(ImportKind::kCommaSeparated)},
                                  {"Delimited", AsData(ImportKind::kDelimited)},
                                  {"Exchange file", AsData(ImportKind::kExchange)}})),
      math_(NewChoiceBox("math", {})),
      definition_(NewChoiceBox("definition", {})),
      encoding_(NewChoiceBox("encoding", {{"Found out", AsData(TextEncoding::kDetect)},
                                          {"UTF-8", AsData(TextEncoding::kUtf8)},
                                          {"Windows-1252", AsData(TextEncoding::kCodePage)}})),
      date_order_(NewChoiceBox(
          "date_order", {{"Found out", 0}, {"MDY", kMonthDayYear}, {"DMY", kDayMonthYear}, {"YMD", kYearMonthDay}})),
      line_ends_(NewChoiceBox("line_ends", {{"CR, or CR and LF", 0}, {"Any", 1}})),
      date_parts_(NewSwitch("date_parts", "The date stands in &three fields")),
      system_fields_(NewSwitch("system_fields", "Fields that the s&ystem keeps, too")),
      summary_(new QLabel),
      effect_(NewChoiceBox("effect", {})),
      part_(new QLineEdit),
      table_(new FindingTable([this] { text_->setFocus(); }, [this](int column) { SortBy(column); })),
      detail_(new QLabel),
      text_(new FilePane(nullptr)) {
  setWindowTitle("Check a File");
  summary_->setObjectName("summary");
  summary_->setTextFormat(Qt::PlainText);
  summary_->setWordWrap(true);
  summary_->setTextInteractionFlags(Qt::TextSelectableByMouse);
  auto* const layout = new QVBoxLayout(this);
  layout->addWidget(NewChoices());
  layout->addWidget(summary_);
  layout->addWidget(NewFindings(), 1);
  layout->addStretch();  // where there are none
  layout->addWidget(NewButtons());
  resize(fontMetrics().height() * 72, fontMetrics().height() * 40);
  ShowNothing(kBegin);
  FillDefinitions();
  file_->setFocus();
}

FileCheckWindow::~FileCheckWindow() = default;

QWidget* FileCheckWindow::NewChoices() {
  auto* const choices = new QWidget;
  auto* const rows = new QGridLayout(choices);
  rows->setContentsMargins(0, 0, 0, 0);
  file_->setObjectName("file_name");
  auto* const browse = new QPushButton("&Browse\u2026");
  browse->setObjectName("browse");
  browse->setAutoDefault(false);
  rows->addWidget(LabelOf("&File", file_), 0, 0);
  auto* const line = new QHBoxLayout;
  line->addWidget(file_, 1);
  line->addWidget(browse);
  rows->addLayout(line, 0, 1, 1, 5);
  rows->addWidget(LabelOf("Ki&nd", kind_), 1, 0);
  rows->addWidget(kind_, 1, 1);
  rows->addWidget(LabelOf("&Operation", math_), 1, 2);
  rows->addWidget(math_, 1, 3);
  encoding_label_ = LabelOf("&Encoding", encoding_);
  definition_label_ = LabelOf("&Definition", definition_);
  for (QWidget* const label : {encoding_label_, definition_label_}) rows->addWidget(label, 1, 4);
  for (QWidget* const box : {encoding_, definition_}) rows->addWidget(box, 1, 5);
  AddDelimitedChoices(*rows);
  for (const int column : {1, 3, 5}) rows->setColumnStretch(column, 1);
  connect(browse, &QPushButton::clicked, this, [this] { Browse(); });
  connect(kind_, &QComboBox::currentIndexChanged, this, [this] { Follow(); });
  connect(file_, &QLineEdit::textChanged, this, [this] { FollowFile(); });
  return choices;
}

void FileCheckWindow::AddDelimitedChoices(QGridLayout& rows) {
  delimited_ = new QWidget;
  auto* const row = new QHBoxLayout(delimited_);
  row->setContentsMargins(0, 0, 0, 0);
  row->addWidget(LabelOf("&Date order", date_order_));
  row->addWidget(date_order_, 1);
  row->addWidget(LabelOf("&Line ends", line_ends_));
  row->addWidget(line_ends_, 1);
  row->addWidget(date_parts_);
  row->addWidget(system_fields_);
  rows.addWidget(delimited_, 2, 0, 1, 6);
}

QWidget* FileCheckWindow::NewFilters() {
  part_->setObjectName("part");
  part_->setClearButtonEnabled(true);
  auto* const filters = new QWidget;
  auto* const row = new QHBoxLayout(filters);
  row->setContentsMargins(0, 0, 0, 0);
  row->addWidget(LabelOf("Sho&w", effect_));
  row->addWidget(effect_);
  row->addWidget(LabelOf("Containin&g", part_));
  row->addWidget(part_, 1);
  connect(effect_, &QComboBox::activated, this, [this] { Choose(); });
  connect(part_, &QLineEdit::textChanged, this, [this] { Choose(); });
  return filters;
}

QWidget* FileCheckWindow::NewFindings() {
  model_ = new FindingModel(this);
  table_->setObjectName("findings");
  table_->setAccessibleName("Findings");
  table_->setModel(model_);
  text_->setObjectName("text");
  auto* const list = new QWidget;
  auto* const column = new QVBoxLayout(list);
  column->setContentsMargins(0, 0, 0, 0);
  column->addWidget(NewFilters());
  column->addWidget(table_);
  detail_->setObjectName("detail");
  detail_->setTextFormat(Qt::PlainText);
  detail_->setWordWrap(true);
  detail_->setAlignment(Qt::AlignTop | Qt::AlignLeading);
  detail_->setTextInteractionFlags(Qt::TextSelectableByMouse);
  detail_->setMinimumHeight(2 * detail_->fontMetrics().lineSpacing());  // so that the list does not jump
  column->addWidget(detail_);
  found_ = new QSplitter(Qt::Vertical);
  found_->setChildrenCollapsible(false);
  found_->addWidget(list);
  found_->addWidget(text_);
  found_->setStretchFactor(0, 3);
  found_->setStretchFactor(1, 2);
  connect(table_->selectionModel(), &QItemSelectionModel::currentChanged, this, [this] { ShowPlace(); });
  return found_;
}

QWidget* FileCheckWindow::NewButtons() {
  auto* const buttons = new QDialogButtonBox(QDialogButtonBox::Close);
  const auto add = [&](const char* name, const QString& words) {
    QPushButton* const button = buttons->addButton(words, QDialogButtonBox::ActionRole);
    button->setObjectName(name);
    button->setAutoDefault(false);
    return button;
  };
  check_ = add("check", "Chec&k");
  save_ = add("save", "&Save Lines with Findings\u2026");
  import_ = add("import", "&Import\u2026");
  connect(check_, &QPushButton::clicked, this, [this] { Check(); });
  connect(save_, &QPushButton::clicked, this, [this] { SaveLines(); });
  connect(import_, &QPushButton::clicked, this, [this] { means_.import(Wish()); });
  connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
  return buttons;
}

void FileCheckWindow::FillDefinitions() {
  const int chosen = definition_->currentData().toInt();
  why_no_definition_.clear();
  try {
    definitions_ = means_.definitions ? means_.definitions() : std::vector<application::SeenDefinition>();
    if (definitions_.empty()) why_no_definition_ = kNoDefinition;
  } catch (...) {
    definitions_.clear();
    why_no_definition_ = CurrentFailure().Description();
  }
  definition_->clear();
  for (const application::SeenDefinition& each : definitions_)
    definition_->addItem(ShownLine(std::to_string(each.number) + "  " + each.title), static_cast<int>(each.number));
  definition_->setCurrentIndex(std::max(definition_->findData(chosen), 0));
  Follow();
}

// The kind that a name tells, and the definition that imports the file.
void FileCheckWindow::FollowFile() {
  const auto kind = KindOf(file_->text());
  if (kind) kind_->setCurrentIndex(kind_->findData(AsData(*kind)));
  const Text file = FromQt(file_->text());
  std::error_code none;
  const bool is_there = kind == ImportKind::kExchange && std::filesystem::exists(file, none);
  const auto found = is_there ? std::ranges::find_if(definitions_, [&](const auto& each) { return Finds(each, file); })
                              : definitions_.end();
  if (found != definitions_.end()) definition_->setCurrentIndex(definition_->findData(static_cast<int>(found->number)));
  Follow();
}

ImportKind FileCheckWindow::Kind() const {
  return static_cast<ImportKind>(kind_->currentData().toInt());
}

void FileCheckWindow::Follow() {
  const ImportKind kind = Kind();
  const bool is_exchange = kind == ImportKind::kExchange;
  delimited_->setVisible(kind == ImportKind::kDelimited);
  for (QWidget* const part : std::initializer_list<QWidget*>{encoding_label_, encoding_})
    part->setVisible(!is_exchange);
  for (QWidget* const part : std::initializer_list<QWidget*>{definition_label_, definition_})
    part->setVisible(is_exchange);
  FollowMath();
  const bool lacks_definition = is_exchange && definitions_.empty();
  if (!result_) summary_->setText(lacks_definition ? ShownLine(why_no_definition_) : said_);
  const bool can_begin = !file_->text().isEmpty() && !work_.IsRunning() && !lacks_definition;
  check_->setEnabled(can_begin);
  check_->setDefault(true);
  import_->setEnabled(can_begin);
  save_->setVisible(result_ ? result_->IsOfText() : !is_exchange);
  save_->setEnabled(result_ && result_->tally.All() > 0);
}

// What an import does with figures is asked of a delimited and of an exchange file; a comma-separated one says it
// itself, unless it is told.
void FileCheckWindow::FollowMath() {
  const ImportKind kind = Kind();
  if (math_->property("kind") == AsData(kind)) return;
  const QVariant chosen = math_->currentData();
  math_->setProperty("kind", AsData(kind));
  math_->clear();
  if (kind == ImportKind::kCommaSeparated) math_->addItem("As the file says", AsData(eMath::mDefault));
  math_->addItem("Replace", AsData(eMath::mReplace));
  math_->addItem("Add", AsData(eMath::mAdd));
  math_->addItem("Subtract", AsData(eMath::mSubtract));
  if (kind == ImportKind::kExchange) math_->addItem("Set to zero, and read nothing", static_cast<int>(kZeroOnly));
  math_->setCurrentIndex(std::max(math_->findData(chosen), 0));
}

void FileCheckWindow::Browse() {
  const QString chosen = QFileDialog::getOpenFileName(this, "The File", ToQt(means_.folder),
                                                      "Files to import (*.QDX *.qdx *.csv *.txt);;All files (*)");
  if (!chosen.isEmpty()) file_->setText(chosen);
}

void FileCheckWindow::Begin(const FileCheckWish& wish) {
  const auto choose = [](QComboBox* box, int value) { box->setCurrentIndex(std::max(box->findData(value), 0)); };
  file_->setText(ToQt(wish.file));
  choose(kind_, AsData(wish.kind));
  choose(math_, wish.math);
  choose(encoding_, AsData(wish.encoding));
  choose(definition_, wish.definition);
  choose(date_order_, wish.date_order);
  choose(line_ends_, wish.any_line_end ? 1 : 0);
  date_parts_->setChecked(wish.date_parts);
  system_fields_->setChecked(wish.system_fields);
  Check();
}

FileCheckWish FileCheckWindow::Wish() const {
  const auto chosen = [](const QComboBox* box) { return box->currentData().toInt(); };
  return {.file = FromQt(file_->text()),
          .kind = Kind(),
          .math = static_cast<Integer>(chosen(math_)),
          .definition = static_cast<Integer>(chosen(definition_)),
          .encoding = static_cast<TextEncoding>(chosen(encoding_)),
          .date_order = static_cast<Integer>(chosen(date_order_)),
          .any_line_end = chosen(line_ends_) != 0,
          .date_parts = date_parts_->isChecked(),
          .system_fields = system_fields_->isChecked()};
}

void FileCheckWindow::Check() {
  if (!check_->isEnabled()) return;
  std::optional<FileCheckResult> result;
  const bool closes = work_.Run([&] {
    Follow();
    result = means_.check(Wish());
  });
  if (closes) return done(Rejected);
  result ? Show(std::move(*result)) : ShowNothing("The file has not been looked at to its end.");
}

void FileCheckWindow::ShowNothing(const QString& words) {
  model_->SetResult(nullptr);
  result_.reset();
  found_->hide();
  said_ = words;
  Follow();
}

void FileCheckWindow::Show(FileCheckResult result) {
  ShowNothing({});
  const QString name = ShownLine(std::filesystem::path(result.wish.file).filename().string());
  if (result.IsNoExchangeFile() && !result.findings.empty()) {
    return ShowNothing(QString("%1 is no exchange file: %2.\nWhere it is a text file, choose its kind above.")
                           .arg(name, ShownLine(result.findings.front().reason)));
  }
  result_ = std::move(result);
  summary_->setText(name + ": " + ToQt(FileCheckWords(*result_)));
  Follow();
  if (result_->findings.empty()) return import_->setFocus();
  if (result_->IsOfText()) {
    const bool is_delimited = result_->wish.kind == ImportKind::kDelimited;
    text_->SetTextFile(result_->wish.file, result_->wish.encoding, is_delimited ? ",\t" : ",");
  } else {
    text_->SetExchangeFile(result_->wish.file);
  }
  found_->show();
  FillEffects();
  model_->SetResult(&*result_);
  ShowAsRows(*table_, model_->Widths());
  table_->horizontalHeader()->setSortIndicatorShown(false);
  table_->setCurrentIndex(model_->index(0, 0));
  table_->setFocus();
}

// Those that there are findings of.
void FileCheckWindow::FillEffects() {
  using inspect::Effect;
  effect_->clear();
  effect_->addItem("All findings", kAllEffects);
  for (const Effect effect : {Effect::kAudit, Effect::kStop, Effect::kSilent, Effect::kNote}) {
    if (result_->tally.Of(effect) > 0) effect_->addItem(ToQt(EffectWords(effect)), AsData(effect));
  }
  const QSignalBlocker blocker(part_);
  part_->clear();
}

void FileCheckWindow::Choose() {
  const int effect = effect_->currentData().toInt();
  model_->Choose(effect == kAllEffects ? std::nullopt : std::optional(static_cast<inspect::Effect>(effect)),
                 part_->text());
  table_->setCurrentIndex(model_->index(0, 0));
}

// A click on the head that sorts turns the order round.
void FileCheckWindow::SortBy(int column) {
  QHeaderView& heads = *table_->horizontalHeader();
  const bool turns = heads.isSortIndicatorShown() && heads.sortIndicatorSection() == column &&
                     heads.sortIndicatorOrder() == Qt::AscendingOrder;
  const Qt::SortOrder order = turns ? Qt::DescendingOrder : Qt::AscendingOrder;
  heads.setSortIndicatorShown(true);
  heads.setSortIndicator(column, order);
  model_->SortBy(column, order);
  table_->setCurrentIndex(model_->index(0, 0));
}

void FileCheckWindow::ShowPlace() {
  const QModelIndex index = table_->currentIndex();
  if (!index.isValid()) return detail_->clear();
  const inspect::Finding& finding = model_->At(index.row());
  detail_->setText(ShownLine(finding.help.empty() ? finding.reason : finding.reason + "; " + finding.help));
  text_->ShowFinding(finding);
}

void FileCheckWindow::SaveLines() {
  if (!result_ || !result_->IsOfText()) return;
  const std::filesystem::path file(result_->wish.file);
  const Text name = file.stem().string() + "-mend" + file.extension().string();
  const QString chosen =
      QFileDialog::getSaveFileName(this, "Save Lines with Findings", ToQt((file.parent_path() / name).string()),
                                   "Text files (*.csv *.txt);;All files (*)");
  if (chosen.isEmpty()) return;
  try {
    SaveRejects(*result_, means_.book, FromQt(chosen));
    summary_->setText(summary_->text() + "\n" + QString("Written: %1").arg(ShownLine(FromQt(chosen))));
  } catch (...) {
    QMessageBox box(QMessageBox::Warning, windowTitle(), ShownLine(CurrentFailure().Description()), QMessageBox::Ok,
                    this);
    box.setTextInteractionFlags(Qt::TextSelectableByMouse | Qt::TextSelectableByKeyboard);
    box.exec();
  }
}

void FileCheckWindow::done(int result) {
  if (work_.HoldsWindow()) return;
  QDialog::done(result);
}

}  // namespace tallybook::desktop
