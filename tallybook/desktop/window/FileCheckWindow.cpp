#include "tallybook/desktop/window/FileCheckWindow.h"

#include <QtCore/QAbstractTableModel>
#include <QtGui/QKeyEvent>
#include <QtWidgets/QCheckBox>
#include <QtWidgets/QComboBox>
#include <QtWidgets/QDialogButtonBox>
#include <QtWidgets/QFileDialog>
#include <QtWidgets/QGridLayout>
#include <QtWidgets/QHBoxLayout>
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
#include "tallybook/application/Counts.h"
#include "tallybook/desktop/forms/ElidedBox.h"
#include "tallybook/desktop/host/QtTexts.h"
#include "tallybook/desktop/host/RowsView.h"
#include "tallybook/desktop/window/FilePane.h"

namespace tallybook::desktop {

namespace {

using inspect::Finding;

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

// Enter shows where the current finding stands.
class FindingTable final : public QTableView {
 public:
  explicit FindingTable(std::function<void()> chosen) : chosen_(std::move(chosen)) {
    connect(this, &QTableView::doubleClicked, this, [this] { chosen_(); });
  }

 protected:
  void keyPressEvent(QKeyEvent* event) override {
    const bool enters = event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter;
    if (enters && currentIndex().isValid()) return chosen_();
    QTableView::keyPressEvent(event);
  }

 private:
  std::function<void()> chosen_;
};

}  // namespace

// The findings of one effect, or all; rows are asked for as they come into view.
class FileCheckWindow::Model final : public QAbstractTableModel {
 public:
  using QAbstractTableModel::QAbstractTableModel;

  void Show(const FileCheckResult* result, int effect) {
    beginResetModel();
    result_ = result;
    rows_.clear();
    const std::size_t count = result == nullptr ? 0 : result->findings.size();
    for (std::size_t index = 0; index < count; ++index) {
      if (effect == kAllEffects || effect == AsData(result->findings[index].effect)) rows_.push_back(index);
    }
    endResetModel();
  }
  [[nodiscard]] const Finding& At(int row) const { return result_->findings[rows_[static_cast<std::size_t>(row)]]; }

  [[nodiscard]] int rowCount(const QModelIndex& parent = {}) const override {
    return parent.isValid() ? 0 : static_cast<int>(rows_.size());
  }
  [[nodiscard]] int columnCount(const QModelIndex& parent = {}) const override {
    return parent.isValid() ? 0 : static_cast<int>(kHeads.size());
  }
  [[nodiscard]] QVariant data(const QModelIndex& index, int role) const override {
    if (role == Qt::TextAlignmentRole) return static_cast<int>(AlignmentOf(index.column()));
    if (role != Qt::DisplayRole && role != Qt::ToolTipRole) return {};
    return CellOf(At(index.row()), index.column());
  }
  [[nodiscard]] QVariant headerData(int section, Qt::Orientation orientation, int role) const override {
    if (orientation != Qt::Horizontal) return {};
    if (role == Qt::TextAlignmentRole) return static_cast<int>(AlignmentOf(section));
    return role == Qt::DisplayRole ? QVariant(kHeads[static_cast<std::size_t>(section)]) : QVariant();
  }

 private:
  enum Column : int { kLine, kRecord, kColumn, kText, kEffect, kReason, kHelp };
  static constexpr std::array kHeads = {"Line", "Record", "Column", "Text", "The import", "Reason", "What would help"};

  static Qt::Alignment AlignmentOf(int column) {
    return (column <= kRecord ? Qt::AlignRight : Qt::AlignLeading) | Qt::AlignVCenter;
  }
  static QString CellOf(const Finding& finding, int column) {
    switch (column) {
      case kLine:
        return ToQt(application::WithCommas(finding.line));
      case kRecord:
        return finding.record == 0 ? QString() : ToQt(application::WithCommas(finding.record));
      case kColumn:
        return ShownLine(finding.column_name);
      case kText:
        return AsWritten(ShownLine(finding.text));
      case kEffect:
        return ToQt(EffectWords(finding.effect));
      case kReason:
        return ShownLine(finding.reason);
      default:
        return ShownLine(finding.help);
    }
  }

  const FileCheckResult* result_ = nullptr;
  std::vector<std::size_t> rows_;
};

FileCheckWindow::FileCheckWindow(Means means)
    : QDialog(nullptr, Qt::Window),
      means_(std::move(means)),
      work_(means_.ask_to_end),
      file_(new QLineEdit),
      kind_(NewChoiceBox("kind", {{"Comma-separated", 0}, {"Delimited", 1}})),
      math_(NewChoiceBox("math", {})),
      encoding_(NewChoiceBox("encoding", {{"Found out", AsData(TextEncoding::kDetect)},
                                          {"UTF-8", AsData(TextEncoding::kUtf8)},
                                          {"Windows-1252", AsData(TextEncoding::kCodePage)}})),
      date_order_(NewChoiceBox(
          "date_order", {{"Found out", 0}, {"MDY", kMonthDayYear}, {"DMY", kDayMonthYear}, {"YMD", kYearMonthDay}})),
      line_ends_(NewChoiceBox("line_ends", {{"CR, or CR and LF", 0}, {"Any", 1}})),
      date_parts_(NewSwitch("date_parts", "The date stands in &three fields")),
      system_fields_(NewSwitch("system_fields", "Fields that the s&ystem keeps, too")),
      summary_(new QLabel),
      effect_(NewChoiceBox("effect", {{"All findings", kAllEffects}})),
      table_(new FindingTable([this] { text_->setFocus(); })),
      text_(new FilePane(nullptr)) {
  setWindowTitle("Check a Text File");
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
  resize(fontMetrics().height() * 64, fontMetrics().height() * 40);
  ShowNothing(
      "What the import would ask about, end at, or take in silence is listed before anything is imported. "
      "Nothing is changed.");
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
  rows->addWidget(LabelOf("&Encoding", encoding_), 1, 4);
  rows->addWidget(encoding_, 1, 5);
  AddDelimitedChoices(*rows);
  for (const int column : {1, 3, 5}) rows->setColumnStretch(column, 1);
  connect(browse, &QPushButton::clicked, this, [this] { Browse(); });
  connect(kind_, &QComboBox::currentIndexChanged, this, [this] { Follow(); });
  connect(file_, &QLineEdit::textChanged, this, [this] { Follow(); });
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

QWidget* FileCheckWindow::NewFindings() {
  model_ = new Model(this);
  table_->setObjectName("findings");
  table_->setAccessibleName("Findings");
  table_->setModel(model_);
  ShowAsRows(*table_, {8, 8, 12, 18, 24, 44});
  text_->setObjectName("text");
  for (const auto effect : {inspect::Effect::kAudit, inspect::Effect::kStop, inspect::Effect::kSilent})
    effect_->addItem(ToQt(EffectWords(effect)), AsData(effect));
  auto* const filter = new QHBoxLayout;
  filter->addWidget(LabelOf("Sho&w", effect_));
  filter->addWidget(effect_);
  filter->addStretch();
  auto* const list = new QWidget;
  auto* const column = new QVBoxLayout(list);
  column->setContentsMargins(0, 0, 0, 0);
  column->addLayout(filter);
  column->addWidget(table_);
  found_ = new QSplitter(Qt::Vertical);
  found_->setChildrenCollapsible(false);
  found_->addWidget(list);
  found_->addWidget(text_);
  found_->setStretchFactor(0, 3);
  found_->setStretchFactor(1, 2);
  connect(effect_, &QComboBox::activated, this, [this] { Choose(); });
  connect(table_->selectionModel(), &QItemSelectionModel::currentChanged, this, [this] { ShowLine(); });
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
  connect(import_, &QPushButton::clicked, this, [this] {
    const FileCheckWish wish = Wish();
    means_.import(wish.file, wish.is_delimited);
  });
  connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
  return buttons;
}

// What an import does with figures is asked of a delimited file; a comma-separated one says it itself, unless it is
// told.
void FileCheckWindow::Follow() {
  const bool is_delimited = kind_->currentData().toInt() != 0;
  delimited_->setVisible(is_delimited);
  const int chosen = math_->currentData().toInt();
  const bool as_file_says = math_->findData(AsData(eMath::mDefault)) >= 0;
  if (math_->count() == 0 || as_file_says == is_delimited) {
    math_->clear();
    if (!is_delimited) math_->addItem("As the file says", AsData(eMath::mDefault));
    math_->addItem("Replace", AsData(eMath::mReplace));
    math_->addItem("Add", AsData(eMath::mAdd));
    math_->addItem("Subtract", AsData(eMath::mSubtract));
    math_->setCurrentIndex(std::max(math_->findData(chosen), 0));
  }
  const bool has_file = !file_->text().isEmpty();
  check_->setEnabled(has_file && !work_.IsRunning());
  check_->setDefault(true);
  import_->setEnabled(has_file && !work_.IsRunning());
  save_->setEnabled(result_ && result_->tally.All() > 0);
}

void FileCheckWindow::Browse() {
  const QString chosen = QFileDialog::getOpenFileName(this, "The Text File", ToQt(means_.folder),
                                                      "Text files (*.csv *.txt);;All files (*)");
  if (chosen.isEmpty()) return;
  file_->setText(chosen);
  kind_->setCurrentIndex(chosen.endsWith(".txt", Qt::CaseInsensitive) ? 1 : 0);
}

FileCheckWish FileCheckWindow::Wish() const {
  const auto chosen = [](const QComboBox* box) { return box->currentData().toInt(); };
  return {.file = FromQt(file_->text()),
          .is_delimited = chosen(kind_) != 0,
          .math = static_cast<eMath>(chosen(math_)),
          .encoding = static_cast<TextEncoding>(chosen(encoding_)),
          .date_order = static_cast<Integer>(chosen(date_order_)),
          .any_line_end = chosen(line_ends_) != 0,
          .date_parts = date_parts_->isChecked(),
          .system_fields = system_fields_->isChecked()};
}

void FileCheckWindow::Check() {
  if (work_.IsRunning() || file_->text().isEmpty()) return;
  std::optional<FileCheckResult> result;
  const bool closes = work_.Run([&] {
    Follow();
    result = means_.check(Wish());
  });
  if (closes) return done(Rejected);
  result ? Show(std::move(*result)) : ShowNothing("The file has not been looked at to its end.");
}

void FileCheckWindow::ShowNothing(const QString& words) {
  model_->Show(nullptr, kAllEffects);
  result_.reset();
  found_->hide();
  summary_->setText(words);
  Follow();
}

void FileCheckWindow::Show(FileCheckResult result) {
  ShowNothing({});
  result_ = std::move(result);
  const QString name = ShownLine(std::filesystem::path(result_->wish.file).filename().string());
  summary_->setText(name + ": " + ToQt(FileCheckWords(*result_)));
  Follow();
  if (result_->findings.empty()) return import_->setFocus();
  text_->SetFile(result_->wish.file, result_->wish.encoding, result_->wish.is_delimited ? ",\t" : ",");
  found_->show();
  effect_->setCurrentIndex(0);
  Choose();
  table_->setFocus();
}

void FileCheckWindow::Choose() {
  model_->Show(result_ ? &*result_ : nullptr, effect_->currentData().toInt());
  table_->setCurrentIndex(model_->index(0, 0));
}

void FileCheckWindow::ShowLine() {
  const QModelIndex index = table_->currentIndex();
  if (index.isValid()) text_->ShowFinding(model_->At(index.row()));
}

void FileCheckWindow::SaveLines() {
  if (!result_) return;
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
