// How lists of figures name what a figure belongs to, and write it: accounts by code, fields by number, each with its
// description; dates and numbers as the user's locale has them.
#pragma once

#include <QString>

#include "base/Types.h"
#include "tallybook/engine/BookDescription.h"

namespace tallybook::desktop {

// "4110  Bakery" and "1  Sales", by position in the lists.
[[nodiscard]] QString AccountName(const engine::BookDescription& book, Integer position);
[[nodiscard]] QString FieldName(const engine::BookDescription& book, Integer position);

// "03.02.2004", as tables of figures write it.
[[nodiscard]] QString DateIn(Date date);

// With the decimals that the figure needs, and two where it needs any: "1,234.50". What is no number is "?".
[[nodiscard]] QString FigureIn(Double figure);

}  // namespace tallybook::desktop
