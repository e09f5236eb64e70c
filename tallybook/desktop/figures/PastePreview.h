// What a pasted block would change, shown before it is done: a row for each figure, old and new.
#pragma once

#include <QtWidgets/QDialog>

#include "tallybook/desktop/figures/FigureTable.h"
#include "tallybook/desktop/figures/PasteBlock.h"
#include "tallybook/desktop/forms/LocaleStyle.h"

namespace tallybook::desktop {

class PastePreview final : public QDialog {
 public:
  // `what` is the act in words: "Paste", "Clear".
  PastePreview(QWidget* parent, const FigureTable& table, const PasteBlock& block, const LocaleStyle& style,
               const QString& what);
};

}  // namespace tallybook::desktop
