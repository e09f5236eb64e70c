#include "tallybook/inspect/DateOrders.h"

#include <algorithm>
#include <fmt/format.h>
#include <limits>
#include <optional>

#include "base/Dates.h"
#include "base/Failure.h"
#include "base/Narrow.h"
#include "host/Masterfile.h"
#include "import/DelimitedImport.h"
#include "tallybook/application/LineEnds.h"
#include "tallybook/inspect/Troubles.h"

namespace tallybook::inspect {

namespace {

constexpr std::size_t kOrders = 3;

const std::array<DateOrder, kOrders>& AllOrders() {
  static const std::array<DateOrder, kOrders> orders = {{{kMonthDayYear, "MDY", "month, day, year"},
                                                         {kDayMonthYear, "DMY", "day, month, year"},
                                                         {kYearMonthDay, "YMD", "year, month, day"}}};
  return orders;
}

// What the dates so far say of one order.
struct Fit {
  std::optional<DateOrders::RuledOut> ruled_out;
  std::optional<Date> reading;  // of the date under way
};

class OrderSearch {
 public:
  OrderSearch(Masterfile& masterfile, const Text& file, const DelimitedForm& form)
      : masterfile_(masterfile), file_(file, form) {}

  DateOrders Find() {
    masterfile_.BeginProgress("Looking at the Dates");
    masterfile_.SetProgressCancelEnabled(true);
    while (!found_.cancelled && file_.Next()) {
      const LineFields fields = split_(file_.Line());
      if (!std::ranges::all_of(fields, IsBlank)) LookAt(file_.DateOf(fields));
      masterfile_.SetProgressFraction(file_.Share());
      found_.cancelled = masterfile_.ProgressCancelled();
    }
    masterfile_.EndProgress();
    return found_.cancelled ? std::move(found_) : Verdict();
  }

 private:
  void LookAt(const LineDate& date) {
    ++found_.dates;
    for (std::size_t i = 0; i < kOrders; ++i) Read(date, AllOrders()[i], fits_[i]);
    for (std::size_t i = 0; i < kOrders; ++i) {
      for (std::size_t j = i + 1; j < kOrders; ++j) Compare(date, i, j);
    }
  }

  void Read(const LineDate& date, const DateOrder& order, Fit& fit) {
    fit.reading.reset();
    std::array<Integer, 3> numbers{};
    std::optional<Trouble> trouble;
    for (std::size_t i = 0; i < numbers.size() && !trouble; ++i) {
      using Limits = std::numeric_limits<Integer>;
      trouble = LooseWholeTrouble(date.parts[i], Limits::min(), Limits::max());
      if (!trouble) numbers[i] = static_cast<Integer>(LeadingLong(date.parts[i]));
    }
    const OrderedDate ordered = InOrder(numbers, order.order);
    if (!trouble) trouble = DateTrouble(masterfile_, ordered.year, ordered.month, ordered.day);
    if (!trouble) fit.reading = DateFromParts(ordered.year, ordered.month, ordered.day);
    if (trouble && !fit.ruled_out) fit.ruled_out = {order, {file_.Number(), date.text}, trouble->reason};
  }

  void Compare(const LineDate& date, std::size_t i, std::size_t j) {
    std::optional<Difference>& difference = differences_[i][j];
    const auto& one = fits_[i].reading;
    const auto& other = fits_[j].reading;
    if (difference || !one || !other || *one == *other) return;
    difference = {{file_.Number(), date.text}, *one, *other};
  }

  DateOrders Verdict() {
    std::vector<std::size_t> fitting;
    for (std::size_t i = 0; i < kOrders; ++i) {
      if (fits_[i].ruled_out) {
        found_.ruled_out.push_back(*fits_[i].ruled_out);
      } else if (std::ranges::none_of(fitting, [&](std::size_t before) { return !differences_[before][i]; })) {
        fitting.push_back(i);
      }
    }
    std::ranges::stable_sort(found_.ruled_out, {}, [](const auto& out) { return out.date.line; });
    for (const std::size_t i : fitting) found_.fitting.push_back(AllOrders()[i]);
    if (fitting.size() > 1) {
      const Difference& difference = *differences_[fitting[0]][fitting[1]];
      found_.open = difference.date;
      found_.readings = {difference.one, difference.other};
    }
    return std::move(found_);
  }

  struct Difference {
    DateAt date;
    Date one = kNoDate;
    Date other = kNoDate;
  };

  Masterfile& masterfile_;
  DelimitedFile file_;
  LineSplitter split_{";"};
  std::array<Fit, kOrders> fits_;
  std::array<std::array<std::optional<Difference>, kOrders>, kOrders>
      differences_;  // of the later order from the earlier
  DateOrders found_;
};

Text Place(const DateAt& date) {
  return fmt::format("line {} \"{}\"", date.line, Cut(date.text));
}

// "line 1 "13.02.2004" rules out MDY and YMD, line 2 ..."
Text RuledOut(const DateOrders& orders) {
  Text text;
  long long line = 0;
  for (const auto& out : orders.ruled_out) {
    if (out.date.line == line) {
      text += " and " + out.order.word;
    } else {
      text += fmt::format("{}{} rules out {}", text.empty() ? "" : ", ", Place(out.date), out.order.word);
    }
    line = out.date.line;
  }
  return text;
}

}  // namespace

DateOrders FindDateOrders(Masterfile& masterfile, const Text& file, const DelimitedForm& form) {
  return OrderSearch(masterfile, file, form).Find();
}

Text Tell(const DateOrders& orders) {
  if (orders.fitting.empty()) return "no order of month, day and year fits all dates: " + RuledOut(orders);
  const DateOrder& first = orders.fitting.front();
  if (orders.fitting.size() == 1) {
    const Text others = orders.ruled_out.empty() ? Text() : ": " + RuledOut(orders);
    return fmt::format("the dates are {} ({}){}", first.word, first.words, others);
  }
  return fmt::format("{} and {} both fit all dates: {} is {} or {}", first.word, orders.fitting[1].word,
                     Place(orders.open), DateText(orders.readings[0]), DateText(orders.readings[1]));
}

std::optional<Integer> FittingDateOrder(Masterfile& masterfile, const Text& file, const DelimitedForm& form) {
  if (!form.any_line_end && application::BadLineEnds(file)) return kMonthDayYear;
  const DateOrders orders = FindDateOrders(masterfile, file, form);
  if (orders.cancelled) return std::nullopt;
  if (orders.fitting.size() == 1) return orders.fitting.front().order;
  throw Failure(FailureNumber::kInvalidArgument, file + ": " + Tell(orders));
}

}  // namespace tallybook::inspect
