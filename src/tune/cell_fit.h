// The map values that best explain the evidence. The engine reads its map between the four cells
// around its operating point, so the mixture of a sample says what the blend of those four cells
// should have been, not what any one cell should be. Averaging each cell's samples smears a
// correction into the cells beside it wherever the engine's need changes from cell to cell; the
// fit instead solves, by least squares over every kept sample, for the cell values whose blend at
// each sample gives the fuel the sample asked for:
//
//   sum over its four cells of share x new value = (blend of the present values) x measured /
//   target AFR.
//
// Cells without enough evidence keep their values and take part only as known neighbours. A
// light pull towards each cell's own mean factor (kFitPrior of its own evidence) settles what
// the samples leave open, e.g. two cells only ever seen halfway between them.
#pragma once

#include <vector>

#include "tune/cell_evidence.h"

namespace vela {

inline constexpr double kFitPrior = 0.1;

// Per cell (rows top to bottom, columns left to right): the factor the fit asks for on the
// present value `values[i]`, for the cells marked `free`; 1 for every other cell. A free cell
// whose value is 0 or whose evidence holds no share products gets its mean factor.
std::vector<double> FitCellFactors(const CellGrid& evidence, const std::vector<double>& values,
                                   const std::vector<bool>& free);

}  // namespace vela
