// A new book made from one that is there, for what cannot change in it: its data level, its kind of calendar, its first
// year. Figures come to the records of the new book that hold their dates, and are added up there. One thread.
#pragma once

#include <optional>
#include <vector>

#include "base/Types.h"
#include "tallybook/engine/Book.h"
#include "tallybook/engine/BookDescription.h"

namespace tallybook::engine {

// What is to be another than in the book that is there.
struct RegroupRequest {
  std::optional<Integer> data_level;
  std::optional<CalendarKind> calendar;  // of those with periods of their own: not kCustom
  std::optional<Integer> first_year;     // by its name; the years before it are left behind
};

// The figures of an account and a field added up.
struct FigureTotal {
  Integer account_position = 0;
  Integer field_position = 0;
  long long figures = 0;
  Double total = 0;
};

struct Regrouped {
  long long figures_read = 0;            // of those that are not left behind
  long long figures = 0;                 // in the new book
  std::vector<FigureTotal> left_behind;  // of the years before the first one, in the lists' order
};

// The description of the new book: the same lists and names, and as many years as reach the last date of the old one.
//   fails  Failure 5 for a year that the book has not, and where its years cannot be had without those before: a
//          calendar of weeks whose years would begin elsewhere
[[nodiscard]] BookDescription RegroupedDescription(const BookDescription& book, const RegroupRequest& request);

// Makes the book of such a description and fills it. The totals of every account and field in the new file are compared
// with those of the old one, as far as rounding allows, before it has its name; no file is left where this fails.
//   fails  as Book::Create and Book::VisitFigures; 5 for a figure whose date the new calendar does not hold; 6 where a
//          sum is no figure; 51 where totals differ
Regrouped MakeRegroupedBook(Book& book, const Text& path, const BookDescription& description);

}  // namespace tallybook::engine
