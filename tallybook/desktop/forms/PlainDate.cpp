#include "tallybook/desktop/forms/PlainDate.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <cstdlib>

#include "base/Dates.h"

namespace tallybook::desktop {

namespace {

constexpr std::array kEnglishMonths = {"january", "february", "march",     "april",   "may",      "june",
                                       "july",    "august",   "september", "october", "november", "december"};
constexpr std::size_t kLettersOfAMonth = 3;
constexpr Date kMostDaysOff = 100'000;

Text Lower(Text text) {
  for (char& character : text) character = static_cast<char>(std::tolower(static_cast<unsigned char>(character)));
  return text;
}

bool IsDigit(char character) {
  return character >= '0' && character <= '9';
}

bool IsLetter(char character) {
  return static_cast<unsigned char>(character) >= 0x80 || std::isalpha(static_cast<unsigned char>(character)) != 0;
}

// Numbers and words, with all else between them.
std::vector<Text> PiecesOf(const Text& text) {
  std::vector<Text> pieces;
  char before = ' ';
  for (const char character : text) {
    const bool counts = IsDigit(character) || IsLetter(character);
    const bool goes_on = counts && (IsDigit(character) ? IsDigit(before) : IsLetter(before));
    if (counts && !goes_on) pieces.emplace_back();
    if (counts) pieces.back() += character;
    before = character;
  }
  return pieces;
}

bool BeginsWith(const Text& name, const Text& word) {
  return Lower(name).starts_with(word);
}

// 1 to 12; 0 for what is no month.
int MonthOf(const Text& word, const DateHabits& habits) {
  if (word.size() < kLettersOfAMonth) return 0;
  for (std::size_t month = 0; month < kEnglishMonths.size(); ++month) {
    if (BeginsWith(kEnglishMonths[month], word)) return static_cast<int>(month) + 1;
    if (month < habits.month_names.size() && BeginsWith(habits.month_names[month], word))
      return static_cast<int>(month) + 1;
  }
  return 0;
}

// What is typed for a day: "3rd", "1st", "2nd".
bool IsOrdinalEnd(const Text& word) {
  return word == "st" || word == "nd" || word == "rd" || word == "th";
}

class DateReader {
 public:
  DateReader(Date from, const DateHabits& habits) : from_(PartsOf(from)), habits_(habits) {}

  std::optional<Date> Read(const Text& text) {
    for (const Text& piece : PiecesOf(text)) {
      if (!Take(piece)) return std::nullopt;
    }
    return month_ > 0 ? WithMonth() : NumbersAlone();
  }

 private:
  bool Take(const Text& piece) {
    if (IsDigit(piece.front())) {
      numbers_.push_back(piece);
      return piece.size() <= 8;
    }
    if (IsOrdinalEnd(piece) && !numbers_.empty()) return true;
    const int month = MonthOf(piece, habits_);
    if (month == 0 || month_ > 0) return false;
    month_ = month;
    return true;
  }

  static int NumberOf(const Text& digits) { return std::atoi(digits.c_str()); }

  [[nodiscard]] int YearOf(const Text& digits) const {
    const int number = NumberOf(digits);
    if (digits.size() > 2) return number;
    const int century = from_.year / 100 * 100;
    int best = century + number;
    for (const int year : {century - 100 + number, century + 100 + number}) {
      if (std::abs(year - from_.year) < std::abs(best - from_.year)) best = year;
    }
    return best;
  }

  [[nodiscard]] static std::optional<Date> Exact(int year, int month, int day) {
    constexpr int kLastYear = 9999;
    if (year < 1 || year > kLastYear || month < 1 || month > 12 || day < 1 || day > 31) return std::nullopt;
    const Date date = DateFromParts(year, month, day);
    const DateParts parts = PartsOf(date);
    return parts.month == month && parts.day == day ? std::optional(date) : std::nullopt;
  }

  [[nodiscard]] std::optional<Date> WithMonth() const {
    if (numbers_.empty()) return Exact(from_.year, month_, 1);
    if (numbers_.size() == 1) {
      const bool is_year = numbers_[0].size() > 2;
      return is_year ? Exact(YearOf(numbers_[0]), month_, 1) : Exact(from_.year, month_, NumberOf(numbers_[0]));
    }
    if (numbers_.size() > 2) return std::nullopt;
    const bool year_first = numbers_[0].size() > 2;
    const Text& day = numbers_[year_first ? 1 : 0];
    const Text& year = numbers_[year_first ? 0 : 1];
    return Exact(YearOf(year), month_, NumberOf(day));
  }

  [[nodiscard]] std::optional<Date> NumbersAlone() const {
    const auto number = [&](std::size_t index) { return NumberOf(numbers_[index]); };
    switch (numbers_.size()) {
      case 1:
        return OneNumber(numbers_[0]);
      case 2:
        if (numbers_[0].size() > 2) return Exact(number(0), number(1), 1);
        if (numbers_[1].size() > 2) return Exact(number(1), number(0), 1);
        return DayAndMonth(from_.year, number(0), number(1));
      case 3:
        if (numbers_[0].size() > 2) return Exact(number(0), number(1), number(2));
        return DayAndMonth(YearOf(numbers_[2]), number(0), number(1));
      default:
        return std::nullopt;
    }
  }

  [[nodiscard]] std::optional<Date> OneNumber(const Text& digits) const {
    constexpr std::size_t kYearMonthDay = 8;
    if (digits.size() == kYearMonthDay)
      return Exact(NumberOf(digits.substr(0, 4)), NumberOf(digits.substr(4, 2)), NumberOf(digits.substr(6, 2)));
    if (digits.size() == 4) return Exact(NumberOf(digits), 1, 1);
    if (digits.size() <= 2) return Exact(from_.year, from_.month, NumberOf(digits));
    return std::nullopt;
  }

  [[nodiscard]] std::optional<Date> DayAndMonth(int year, int first, int second) const {
    return habits_.order == DateOrder::kDayFirst ? Exact(year, second, first) : Exact(year, first, second);
  }

  DateParts from_;
  const DateHabits& habits_;
  std::vector<Text> numbers_;
  int month_ = 0;
};

Text Trimmed(Text text) {
  while (!text.empty() && std::isspace(static_cast<unsigned char>(text.back())) != 0) text.pop_back();
  while (!text.empty() && std::isspace(static_cast<unsigned char>(text.front())) != 0) text.erase(text.begin());
  return text;
}

bool IsCountOfDays(const Text& text) {
  return text.size() > 1 && (text.front() == '+' || text.front() == '-') &&
         std::all_of(text.begin() + 1, text.end(), IsDigit);
}

}  // namespace

std::optional<Date> ReadPlainDate(const Text& typed, Date from, Date today, const DateHabits& habits) {
  const Text text = Lower(Trimmed(typed));
  if (text.empty()) return std::nullopt;
  if (text == "today") return today;
  if (text == "yesterday") return today - 1;
  if (text == "tomorrow") return today + 1;
  if (IsCountOfDays(text)) return from + std::clamp(std::strtod(text.c_str(), nullptr), -kMostDaysOff, kMostDaysOff);
  return DateReader(from, habits).Read(text);
}

}  // namespace tallybook::desktop
