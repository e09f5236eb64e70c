#include "tallybook/application/Counts.h"

#include <string>

namespace tallybook::application {

Text WithCommas(long long count) {
  Text digits = std::to_string(count);
  const std::size_t sign = count < 0 ? 1 : 0;
  for (std::size_t i = digits.size(); i > sign + 3; i -= 3) digits.insert(i - 3, ",");
  return digits;
}

Text Counted(long long count, const Text& noun) {
  return WithCommas(count) + " " + noun + (count == 1 ? "" : "s");
}

}  // namespace tallybook::application
