#include "tallybook/desktop/figures/PastePreview.h"

#include <QtCore/QAbstractTableModel>
#include <QtWidgets/QDialogButtonBox>
#include <QtWidgets/QHeaderView>
#include <QtWidgets/QLabel>
#include <QtWidgets/QPushButton>
#include <QtWidgets/QTableView>
#include <QtWidgets/QVBoxLayout>
#include <algorithm>
#include <array>
#include <utility>

#include "tallybook/application/Counts.h"

namespace tallybook::desktop {

namespace {

class PreviewModel final : public QAbstractTableModel {
 public:
  PreviewModel(QObject* parent, const FigureTable& table, const PasteBlock& block, const LocaleStyle& style)
      : QAbstractTableModel(parent), table_(table), style_(style) {
    std::ranges::copy_if(block.figures, std::back_inserter(figures_), &PastedFigure::Changes);
    for (const PastedFigure& figure : figures_) {
      decimals_ = std::max({decimals_, DecimalsNeeded(figure.before), DecimalsNeeded(figure.after)});
    }
  }

  [[nodiscard]] int rowCount(const QModelIndex& parent) const override {
    return parent.isValid() ? 0 : static_cast<int>(figures_.size());
  }
  [[nodiscard]] int columnCount(const QModelIndex& parent) const override {
    return parent.isValid() ? 0 : static_cast<int>(kHeads.size());
  }
  [[nodiscard]] QVariant data(const QModelIndex& index, int role) const override {
    if (role == Qt::TextAlignmentRole) return Alignment(index.column());
    if (role != Qt::DisplayRole || !index.isValid()) return {};
    const PastedFigure& figure = figures_[static_cast<std::size_t>(index.row())];
    switch (index.column()) {
      case 0:
        return ToQt(table_.RowHead(figure.row, style_.dates));
      case 1:
        return ToQt(table_.ColumnHead(figure.column, style_.dates));
      case 2:
        return Upright(ToQt(NumberText(figure.before, decimals_, style_.numbers)));
      default:
        return Upright(ToQt(NumberText(figure.after, decimals_, style_.numbers)));
    }
  }
  [[nodiscard]] QVariant headerData(int section, Qt::Orientation orientation, int role) const override {
    if (role == Qt::TextAlignmentRole) return Alignment(section);
    if (orientation != Qt::Horizontal || role != Qt::DisplayRole) return {};
    return QString(kHeads[static_cast<std::size_t>(section)]);
  }

 private:
  static constexpr std::array kHeads = {"Row", "Column", "Old", "New"};
  static int Alignment(int column) {
    return static_cast<int>((column < 2 ? Qt::AlignLeading : Qt::AlignRight | Qt::AlignAbsolute) | Qt::AlignVCenter);
  }

  const FigureTable& table_;
  const LocaleStyle& style_;
  std::vector<PastedFigure> figures_;
  int decimals_ = 0;
};

}  // namespace

PastePreview::PastePreview(QWidget* parent, const FigureTable& table, const PasteBlock& block, const LocaleStyle& style,
                           const QString& what)
    : QDialog(parent) {
  setWindowTitle(what + " Figures");
  auto* layout = new QVBoxLayout(this);
  const Text counted = application::Counted(block.FiguresChanged(), "figure");
  auto* label = new QLabel(
      QString("%1 will change, as one entry of the journal. Ctrl+Z takes all of it back.").arg(ToQt(counted)));
  label->setWordWrap(true);
  layout->addWidget(label);

  auto* list = new QTableView;
  list->setModel(new PreviewModel(list, table, block, style));
  list->setAccessibleName("Figures that change, old and new");
  list->setSelectionBehavior(QAbstractItemView::SelectRows);
  list->setTabKeyNavigation(false);
  list->setAlternatingRowColors(true);
  list->verticalHeader()->hide();
  list->horizontalHeader()->setSectionResizeMode(QHeaderView::Stretch);
  layout->addWidget(list, 1);

  auto* buttons = new QDialogButtonBox(QDialogButtonBox::Cancel);
  QPushButton* accept = buttons->addButton("&" + what, QDialogButtonBox::AcceptRole);
  connect(buttons, &QDialogButtonBox::accepted, this, &QDialog::accept);
  connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
  layout->addWidget(buttons);
  accept->setDefault(true);
  resize(fontMetrics().height() * 36, fontMetrics().height() * 26);
  accept->setFocus();
}

}  // namespace tallybook::desktop
