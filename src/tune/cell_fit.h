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
// Every cell with evidence is solved for, also one that will not be changed: held at its
// present value it would push its error into the neighbours the samples between them share. A
// cell without evidence keeps its value and takes part as a known neighbour. A light pull
// towards each cell's own mean factor (kFitPrior of its own evidence) settles what the samples
// leave open, e.g. two cells only ever seen halfway between them.
//
// How well the samples pin a cell is its "pinned samples": one over the cell's entry on the
// diagonal of the inverse of the fit's normal matrix, i.e. how many samples on the cell's site
// alone would fix its value as firmly. A sample on the site counts (about) one; a sample at the
// far corner of the cell, or samples only ever seen halfway to a neighbour that is solved for
// too, count for little, however many there are: they fix a blend, not the cell.
#pragma once

#include <vector>

#include "tune/cell_evidence.h"

namespace vela {

inline constexpr double kFitPrior = 0.03;

struct CellFit {
  // Per cell (rows top to bottom, columns left to right): the factor the fit asks for on the
  // present value, 1 for a cell not solved for.
  std::vector<double> factors;
  // Per cell: its pinned samples, 0 for a cell not solved for.
  std::vector<double> pinned;
};

// The fit over the cells marked `free` (`values[i]`: the present values). A free cell whose
// value is 0 or whose evidence holds no share products gets its mean factor and pins nothing.
CellFit FitCells(const CellGrid& evidence, const std::vector<double>& values,
                 const std::vector<bool>& free);

}  // namespace vela
