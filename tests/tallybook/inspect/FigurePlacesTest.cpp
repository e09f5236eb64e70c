#include <gtest/gtest.h>
#include <rapidcheck/gtest.h>
#include <set>
#include <tuple>

#include "tallybook/inspect/FigurePlaces.h"

namespace tallybook::inspect {
namespace {

RC_GTEST_PROP(FigurePlacesProperties, AFigureIsNewTheFirstTimeOnly, ()) {
  constexpr Long kAccounts = 5;
  constexpr Long kFields = 130;  // more than two words of bits
  FigurePlaces places(kAccounts, kFields);
  std::set<std::tuple<Long, Date, Long>> named;
  const auto count = *rc::gen::inRange(0, 400);
  for (int i = 0; i < count; ++i) {
    const Long account = *rc::gen::inRange<Long>(1, kAccounts + 1);
    const Date date = 38000 + *rc::gen::inRange(0, 4);
    const Long field = *rc::gen::inRange<Long>(1, kFields + 1);
    const bool is_new = named.insert({account, date, field}).second;
    RC_ASSERT(places.Add(account, date, field) == is_new);
  }
}

}  // namespace
}  // namespace tallybook::inspect
