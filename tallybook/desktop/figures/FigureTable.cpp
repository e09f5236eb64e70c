#include "tallybook/desktop/figures/FigureTable.h"

#include <algorithm>

#include "base/Narrow.h"
#include "tallybook/application/Shown.h"

namespace tallybook::desktop {

namespace {

Integer FittingPosition(Integer position, std::size_t count) {
  return std::clamp<Integer>(position, 1, ToInteger(std::max<long long>(static_cast<long long>(count), 1)));
}

Integer FittingLevel(Integer level, Integer data_level) {
  return level == kOwnLevel ? data_level : std::clamp(level, data_level, engine::kYearLevel);
}

}  // namespace

FigureTable::FigureTable(BookReader& reader) : reader_(reader), lists_seen_(reader.ListsSeen()) {
  Choose({});
}

void FigureTable::Choose(const FigureChoice& choice) {
  const engine::BookDescription& book = reader_.Description();
  const engine::Calendar& calendar = reader_.CalendarRules();
  choice_ = choice;
  choice_.level = FittingLevel(choice.level, book.data_level);
  if (choice_.stretch < choice_.level) choice_.stretch = choice_.level;
  if (choice_.stretch > engine::kYearLevel) choice_.stretch = engine::kAllYearsLevel;
  choice_.account = FittingPosition(choice.account, book.accounts.size());
  choice_.field = FittingPosition(choice.field, book.fields.size());
  choice_.date = std::clamp(choice.date, calendar.FirstDate(), calendar.LastRecordDate());
  TakeLevel();
  unit_ = Units().IndexOf(choice_.date);
  shown_ = UnitsWithin(Units(), calendar, choice_.stretch, choice_.date);
}

void FigureTable::TakeLevel() {
  if (sums_ == nullptr || Units().Level() != choice_.level)
    sums_ = std::make_unique<FigureSums>(reader_, choice_.level);
}

std::vector<Integer> FigureTable::Stretches() const {
  std::vector<Integer> stretches = LevelsFrom(choice_.level);
  stretches.push_back(engine::kAllYearsLevel);
  return stretches;
}

void FigureTable::FollowLists() {
  if (lists_seen_ == reader_.ListsSeen()) return;
  lists_seen_ = reader_.ListsSeen();
  sums_.reset();
  Choose(choice_);
}

bool FigureTable::Go(int steps) {
  const FigureChoice before = choice_;
  FigureChoice after = choice_;
  for (int step = 0; step < std::abs(steps); ++step) {
    const engine::DateSpan shown = Shown();
    after.date = steps > 0 ? shown.last + 1 : shown.first - 1;
    if (after.date > reader_.CalendarRules().LastRecordDate() || after.date < reader_.CalendarRules().FirstDate())
      break;
    Choose(after);
  }
  return choice_ != before;
}

engine::DateSpan FigureTable::Shown() const {
  if (choice_.view == FigureView::kDate) return Units().At(unit_);
  if (choice_.stretch == engine::kAllYearsLevel)
    return {reader_.CalendarRules().FirstDate(), reader_.CalendarRules().LastRecordDate()};
  const Date held = std::min(choice_.date, reader_.CalendarRules().LastDate());
  return reader_.CalendarRules().UnitOf(held, choice_.stretch);
}

Text FigureTable::ShownName(const DateWriter& write) const {
  const Integer level = choice_.view == FigureView::kDate ? choice_.level : choice_.stretch;
  return UnitName(reader_.CalendarRules(), level, Shown(), write);
}

int FigureTable::Rows() const {
  return static_cast<int>(RowsAreDates() ? shown_.Count() : reader_.Description().accounts.size());
}

int FigureTable::Columns() const {
  return static_cast<int>(ColumnsAreDates() ? shown_.Count() : reader_.Description().fields.size());
}

FigurePlace FigureTable::PlaceOf(int row, int column) const {
  FigurePlace place{choice_.account, unit_, choice_.field};
  if (RowsAreDates()) {
    place.unit = shown_.first + static_cast<std::size_t>(row);
  } else {
    place.account = ToInteger(row + 1);
  }
  if (ColumnsAreDates()) {
    place.unit = shown_.first + static_cast<std::size_t>(column);
  } else {
    place.field = ToInteger(column + 1);
  }
  return place;
}

int FigureTable::RowOf(const FigurePlace& place) const {
  if (!RowsAreDates()) return place.account - 1;
  return place.unit < shown_.first || place.unit >= shown_.end ? -1 : static_cast<int>(place.unit - shown_.first);
}

int FigureTable::ColumnOf(const FigurePlace& place) const {
  if (!ColumnsAreDates()) return place.field - 1;
  return place.unit < shown_.first || place.unit >= shown_.end ? -1 : static_cast<int>(place.unit - shown_.first);
}

Text FigureTable::RowHead(int row, const DateWriter& write) const {
  const FigurePlace place = PlaceOf(row, 0);
  if (RowsAreDates()) return UnitName(reader_.CalendarRules(), choice_.level, Units().At(place.unit), write);
  const engine::AccountDescription& account = Account(place.account);
  return application::Shown(account.code + "  " + account.description);
}

Text FigureTable::ColumnHead(int column, const DateWriter& write) const {
  const FigurePlace place = PlaceOf(0, column);
  if (ColumnsAreDates()) return UnitName(reader_.CalendarRules(), choice_.level, Units().At(place.unit), write);
  return application::Shown(Field(place.field).description);
}

const engine::AccountDescription& FigureTable::Account(Integer position) const {
  return reader_.Description().accounts.at(static_cast<std::size_t>(position - 1));
}

const engine::FieldDescription& FigureTable::Field(Integer position) const {
  return reader_.Description().fields.at(static_cast<std::size_t>(position - 1));
}

Double FigureTable::Value(int row, int column) {
  return ValueAt(PlaceOf(row, column));
}

Text FigureTable::WhyNotTyped(int row, int column) const {
  const Integer own = reader_.Description().data_level;
  if (choice_.level != own) {
    return "This is a sum over a " + LevelName(choice_.level) +
           ". Figures are typed at the book's own level: choose \"" + LevelName(own) + "\" under Level.";
  }
  const engine::FieldDescription& field = Field(PlaceOf(row, column).field);
  if (field.system) return "\"" + application::Shown(field.description) + "\" is kept by the book itself.";
  return "";
}

}  // namespace tallybook::desktop
