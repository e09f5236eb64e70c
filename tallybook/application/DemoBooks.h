// The two books of the demo: a shop with figures for every day, and a head office that keeps one record a month, under
// account numbers of its own and without the shop's last field. The figures are made up from a fixed seed, so that they
// are the same at every run.
#pragma once

#include <vector>

#include "base/Types.h"
#include "tallybook/engine/BookDescription.h"

namespace tallybook::application {

[[nodiscard]] engine::BookDescription DemoShop();
[[nodiscard]] engine::BookDescription DemoOffice();

// Which department of the shop goes to which account of the office, by code. Two of them go to one account.
struct DemoMatch {
  Text shop_code;
  Text office_code;
};
[[nodiscard]] const std::vector<DemoMatch>& DemoMatches();

// The fields, by number, that both books have.
[[nodiscard]] const std::vector<Integer>& DemoSharedFields();

// The year that the demo moves from one book to the other.
inline constexpr int kDemoYear = 2024;

}  // namespace tallybook::application
