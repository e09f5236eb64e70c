#include "tallybook/application/DemoBooks.h"

#include <array>
#include <cmath>
#include <numbers>
#include <random>

#include "base/Dates.h"

namespace tallybook::application {

namespace {

constexpr std::uint_fast64_t kSeed = 20240101;
constexpr int kShopYears = 2;
constexpr int kOfficeYears = 4;
constexpr int kFirstOfficeYear = kDemoYear - 1;

enum Field : Integer { kSales = 1, kCost = 2, kCustomers = 3, kHours = 4, kWaste = 5 };

struct Department {
  Long number;
  const char* code;
  const char* name;
  const char* office_code;
  Double daily_sales;  // of a common day
  Double margin;       // the share of sales that is not cost
  Double basket;       // sales for each customer
  Double summer;       // how much more is sold at midsummer than at midwinter, as a share
  bool sundays;        // open on Sundays
};

constexpr std::array kDepartments = {
    Department{101, "100", "Groceries", "4100", 2350, 0.24, 18.5, 0.02, false},
    Department{102, "110", "Bakery", "4110", 640, 0.58, 6.2, -0.05, true},
    Department{103, "120", "Dairy", "4120", 910, 0.21, 9.8, 0.06, false},
    Department{104, "130", "Household", "4130", 480, 0.33, 14.1, 0.0, false},
    Department{105, "140", "Garden", "4140", 390, 0.41, 27.4, 0.85, false},
    Department{106, "150", "Toys and gifts", "4130", 270, 0.45, 21.9, -0.35, false},
};

// Sunday to Saturday, as shares of a common day.
constexpr std::array kWeekdays = {0.62, 0.84, 0.88, 0.93, 1.04, 1.32, 1.41};

// A number from 0 to below 1. The standard distributions differ between libraries; this does not.
Double Uniform(std::mt19937_64& random) {
  constexpr int kUsedBits = 53;
  return static_cast<Double>(random() >> (64 - kUsedBits)) / std::ldexp(1.0, kUsedBits);
}

Double ToCents(Double amount) {
  return std::round(amount * 100) / 100;
}

// How busy the shop is on a date: weekday, season, the weeks before the holidays, a little growth, and chance.
Double Business(const Department& department, Date date, std::mt19937_64& random) {
  const DateParts parts = PartsOf(date);
  const Double day_of_year = date - DateFromParts(parts.year, 1, 1);
  const Double season = 1 - department.summer / 2 * std::cos(2 * std::numbers::pi * (day_of_year - 15) / 365.25);
  const Double december = parts.month == 12 && parts.day < 25 ? 1.0 + 0.018 * parts.day : 1.0;
  const Double growth = 1 + 0.035 * (date - DateFromParts(kDemoYear, 1, 1)) / 365.25;
  const Double chance = 0.9 + 0.2 * Uniform(random);
  return kWeekdays[static_cast<std::size_t>(DayOfWeek(date) - 1)] * season * december * growth * chance;
}

bool IsOpen(const Department& department, Date date) {
  constexpr Integer kSunday = 1;
  const DateParts parts = PartsOf(date);
  const bool holiday =
      (parts.month == 12 && (parts.day == 25 || parts.day == 26)) || (parts.month == 1 && parts.day == 1);
  return !holiday && (department.sundays || DayOfWeek(date) != kSunday);
}

void AddDay(const Department& department, Date date, std::mt19937_64& random, engine::BookDescription& shop) {
  const Double sales = ToCents(department.daily_sales * Business(department, date, random));
  const auto add = [&](Field field, Double value) {
    shop.values.push_back({.account = department.number, .date = date, .field = field, .value = value});
  };
  add(kSales, sales);
  add(kCost, ToCents(sales * (1 - department.margin) * (0.97 + 0.06 * Uniform(random))));
  add(kCustomers, std::round(sales / department.basket * (0.92 + 0.16 * Uniform(random))));
  add(kHours, std::round(4 * (4 + sales / 110)) / 4);
  const Double waste = ToCents(sales * 0.02 * Uniform(random));
  if (waste > 0.5) add(kWaste, waste);
}

engine::CalendarDescription Months(int first_year, int years) {
  engine::CalendarDescription calendar;
  calendar.kind = engine::CalendarKind::kMonths;
  calendar.first_date = DateFromParts(first_year, 1, 1);
  calendar.first_year = static_cast<Integer>(first_year);
  calendar.years = static_cast<Integer>(years);
  calendar.years_in_use = calendar.years;
  return calendar;
}

}  // namespace

engine::BookDescription DemoShop() {
  engine::BookDescription shop;
  shop.system_name = "North Shop";
  shop.type_name = "Sales";
  shop.data_level = kDayLevel;
  shop.calendar = Months(kDemoYear, kShopYears);
  shop.fields = {{kSales, "Sales", false},
                 {kCost, "Cost of goods", false},
                 {kCustomers, "Customers", false},
                 {kHours, "Hours worked", false},
                 {kWaste, "Waste", false}};
  std::mt19937_64 random(kSeed);
  const Date end = DateFromParts(kDemoYear + kShopYears, 1, 1);
  for (const Department& department : kDepartments) {
    shop.accounts.push_back({department.number, department.code, department.name});
    for (Date date = shop.calendar.first_date; date < end; ++date) {
      if (IsOpen(department, date)) AddDay(department, date, random, shop);
    }
  }
  return shop;
}

engine::BookDescription DemoOffice() {
  engine::BookDescription office;
  office.system_name = "Head Office";
  office.type_name = "Accounts";
  office.data_level = kPeriodLevel;
  office.calendar = Months(kFirstOfficeYear, kOfficeYears);
  office.accounts = {{1, "4100", "North: groceries"},        {2, "4110", "North: bakery"}, {3, "4120", "North: dairy"},
                     {4, "4130", "North: household, gifts"}, {5, "4140", "North: garden"}, {9, "4900", "Rents"}};
  office.fields = {{kSales, "Sales", false},
                   {kCost, "Cost of goods", false},
                   {kCustomers, "Customers", false},
                   {kHours, "Hours worked", false}};
  // What the office has so far: estimates of sales for the shop's departments, and rents that the shop has no part in.
  for (int month = 1; month <= 12; ++month) {
    const Date date = DateFromParts(kDemoYear, month, 1);
    for (Long account = 1; account <= 5; ++account) {
      office.values.push_back({.account = account, .date = date, .field = kSales, .value = 10'000});
    }
    office.values.push_back({.account = 9, .date = date, .field = kSales, .value = 2'450});
  }
  return office;
}

const std::vector<DemoMatch>& DemoMatches() {
  static const std::vector<DemoMatch> matches = [] {
    std::vector<DemoMatch> all;
    all.reserve(kDepartments.size());
    for (const Department& department : kDepartments) all.push_back({department.code, department.office_code});
    return all;
  }();
  return matches;
}

const std::vector<Integer>& DemoSharedFields() {
  static const std::vector<Integer> fields = {kSales, kCost, kCustomers, kHours};
  return fields;
}

}  // namespace tallybook::application
