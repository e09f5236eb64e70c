// The dates of an exchange file held against a book: whether the book has them, and which week or period of the book
// the figures of which of them go into.
#pragma once

#include <map>
#include <optional>
#include <set>
#include <tuple>

#include "base/Types.h"
#include "qdx/Body.h"
#include "qdx/HeaderRecord.h"
#include "tallybook/inspect/Finding.h"
#include "tallybook/inspect/QdxMatch.h"

namespace tallybook::inspect {

class QdxDates {
 public:
  // A date of the file.
  struct Place {
    Date date = kNoDate;  // parts beyond the calendar run over
    bool can_be_written = false;
    std::optional<Date> level = {};  // the date of the book that holds its figures; none where that cannot be told
    Text failure = {};               // why not
    std::optional<bool> is_in_book = {};
  };

  // `masterfile` outlives this. Its calendar and its current record move.
  explicit QdxDates(Masterfile& masterfile) : masterfile_(masterfile) {}

  [[nodiscard]] Place& Of(const BodyDate& date);
  // Whether the book has a record of the date for an account of it.
  [[nodiscard]] bool IsInBook(Place& place, Integer account_number);
  // Figures of the date would be applied.
  void Take(const Place& place);

  // Tells which weeks and periods the figures taken go into, and what of the file's range fills no whole one.
  //   replaces  the range is set to 0 before
  void Tell(const HeaderRecord& header, bool replaces, const TellFinding& tell);
  // Whether the file's range lies in that of the book: else it is refused.
  [[nodiscard]] bool HoldsRange(const HeaderRecord& header) const;

 private:
  void TellUnit(Date level, const std::set<Date>& dates, Integer file_level, const TellFinding& tell);
  void TellPartialUnits(const HeaderRecord& header, bool replaces, const TellFinding& tell);
  void TellLongYears(const TellFinding& tell);

  Masterfile& masterfile_;
  std::map<std::tuple<Integer, Integer, Integer>, Place> places_;
  std::map<Date, std::set<Date>> units_;  // dates of the file by the book's
};

}  // namespace tallybook::inspect
