// How the map grids show a log: the overlay's layers and their colours, the figures of a cell as
// text, the cell an operating point stands in, and the stretches of a log the engine spent in a
// rectangle of cells.
#pragma once

#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "datalog/datalog_log.h"
#include "editors/mapgrid/cell_overlay.h"
#include "tune/cell_evidence.h"

namespace vela {

// What the overlay colours the cells by; Ctrl-H steps through them in this order.
enum class HeatLayer { kOff, kTime, kMeanAfr, kSpread, kError };
HeatLayer NextLayer(HeatLayer layer);
// "time spent", "mean AFR", "AFR spread", "AFR error against target" ("off" for kOff).
std::string_view LayerName(HeatLayer layer);

// The scales, each pale enough for the cell's text to stay readable:
// time: from pale yellow through orange to red by the square root of the share of the busiest
// cell's time, so that a cell visited briefly still shows; mean AFR: blue (10) through green to
// red (18); spread: white to purple at 1 AFR; error: blue where the mixture is richer than the
// target, red where it is leaner, white on target, full at 1.5 AFR either way.
Rgb TimeColour(double share);
Rgb MeanAfrColour(double afr);
Rgb SpreadColour(double spread);
Rgb ErrorColour(double error);
inline constexpr Rgb kChartCellMark{20, 20, 20};
// The ground of a cell the log says nothing about while a layer is on (no value colour either).
inline constexpr Rgb kNoFiguresGround{248, 248, 248};  // the outline of the chart cursor's cell
inline constexpr double kFullErrorAfr = 1.5;
inline constexpr double kFullSpreadAfr = 1.0;

// A cell's figures: "12.4 s, 310 samples, mean AFR 13.42, spread 0.21, target 13.40, error
// +0.02", or "0.8 s, no kept samples, target 13.40".
std::string CellFigures(const CellEvidence& cell, double target);

// The grid's overlay for `layer`: cells coloured by their figures (a cell without samples, or
// without time on the time layer, stays uncoloured: kNoFiguresGround; the values stay the
// map's), each cell's figures as its description, and `outlined` framed (row 0: none).
GridOverlay HeatOverlay(const CellGrid& cells, const TargetTable& targets, HeatLayer layer,
                        MapCell outlined);

// The target of a cell of `cells`' grid, read at its own site.
double SiteTarget(const CellGrid& cells, const TargetTable& targets, int row, int column);

// The cell whose site is nearest to (rpm, load) along each axis, held at the edges.
MapCell NearestCell(const TuneAxes& axes, double rpm, double load);

// The stretches of the log's time (the chart's time base) the engine ran in a cell of the
// rectangle `top`..`bottom`, `left`..`right`: each record from its time to the next record's.
// Records without RPM or load, or below `min_rpm`, are in no cell.
using CellStretch = std::pair<double, double>;
std::vector<CellStretch> CellSpans(const DatalogLog& log, LoadBasis basis, const TuneAxes& axes,
                                   MapCellRect cells, double min_rpm = 300.0);

}  // namespace vela
