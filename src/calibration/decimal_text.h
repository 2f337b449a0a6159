// Decimal numbers held as their digits, so that rounding to a number of decimals works on the
// digits a tuner typed (0.125 -> 0.12, 2.675 -> 2.68) and not on their nearest binary double.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace vela {

// value = (negative ? -1 : 1) x 0.d1d2d3... x 10^point. `digits` has no leading or trailing
// zeros; it is empty when the value is zero.
struct DecimalNumber {
  bool negative = false;
  std::string digits;
  std::int64_t point = 0;
};

// Reads number text: optional blanks, an optional sign, digits with at most one `separator`
// (at least one digit in all), an optional exponent ("e5", "E-3"), optional blanks. Anything
// else, and any magnitude beyond what a double holds (1e309 and up), is unreadable.
std::optional<DecimalNumber> ParseDecimal(std::string_view text, char separator);

// The value of number text as ParseDecimal reads it; nullopt when it is unreadable.
std::optional<double> NumberOfText(std::string_view text, char separator);

// Rounds to `decimals` places (a half goes to the even neighbour) and writes the result the way
// a number is printed back: no trailing zeros after the separator, no separator for a whole
// number, no sign on zero ("2", "1.25", "-0.5", "0").
std::string RoundedDecimalText(const DecimalNumber& number, int decimals, char separator);

}  // namespace vela
