// The columns of a report. They belong to their printer and live as long as it.
#pragma once

#include "base/Types.h"

namespace tallybook {

class ReportColumn {
 public:
  virtual ~ReportColumn() = default;
  // The cell's text for the next row.
  [[nodiscard]] virtual tallybook::Text Text() const = 0;
  virtual void SetText(const tallybook::Text& text) = 0;
};

class ReportColumns {
 public:
  virtual ~ReportColumns() = default;
  // Appends a column `width` report units wide and gives it.
  virtual ReportColumn& Add(Single width) = 0;
  // The column at a position from 1; a position outside the set is a host failure (9, range).
  virtual ReportColumn& Item(Integer position) = 0;
  // Removes all columns. The spacing stays.
  virtual void Clear() = 0;
  // Blanks the text of all columns.
  virtual void ClearText() = 0;
  // The room between two columns, as a multiple of a report's usual room; 1 at first. A table keeps the spacing that
  // stood when its first row was printed.
  [[nodiscard]] virtual Single Spacing() const = 0;
  virtual void SetSpacing(Single spacing) = 0;
};

}  // namespace tallybook
