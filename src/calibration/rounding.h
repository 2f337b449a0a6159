// Rounding to a whole number the way every value bound for the ECU is rounded: to the nearest
// whole number, a half going to the even neighbour.
#pragma once

namespace vela {

// Rounds `value` to the nearest whole number; an exact half goes to the even neighbour
// (2.5 -> 2, 3.5 -> 4, -2.5 -> -2). Values reach this function as products of decimal text
// (1.2345 ms x 1000), which binary doubles hold only approximately, so a value within 1e-9 of a
// half counts as that half. NaN and infinities are returned unchanged.
double RoundHalfEven(double value);

}  // namespace vela
