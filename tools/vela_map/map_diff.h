// What differs between two map files: the map cells (on each file's own layout) and every other
// byte, named after the field that holds it. Two files with the same 1023 bytes have no
// difference, and two that differ in any byte have at least one.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "calibration/calibration_image.h"
#include "tools/vela_map/map_sheets.h"

namespace vela::mapfile {

// A cell as the grid shows it; a side whose layout has no such cell holds nothing. RPM and load
// are A's, or B's for a cell that only B has.
struct CellDifference {
  MapId map;
  int row;
  int column;
  int rpm;
  double load;
  std::string load_unit;
  std::optional<int> a;  // raw values
  std::optional<int> b;
};

// A byte outside the map cells. `field` names the setup field that holds it, "unowned" for a
// position no editor owns, or the map area whose unused tail it lies in; `offset` is the byte's
// place within a field of several bytes (0 for the first).
struct ByteDifference {
  int position;
  std::string field;
  int offset;
  int a;
  int b;
};

struct MapDiff {
  std::vector<CellDifference> cells;  // map by map, then grid row and column
  std::vector<ByteDifference> bytes;  // by position
  bool Empty() const { return cells.empty() && bytes.empty(); }
};

MapDiff DiffImages(const CalibrationImage& a, const CalibrationImage& b);

// The name of a position outside the map cells, and its place within the field.
struct PositionName {
  std::string field;
  int offset = 0;
};
PositionName NameOfPosition(int position);

// Readable: per map the differing cells, then the set-up bytes, then the counts.
std::string DiffText(const MapDiff& diff, const std::string& a_name, const std::string& b_name);
// {"a": .., "b": .., "cells": [...], "bytes": [...], "counts": {"cells": n, "bytes": m}}.
std::string DiffJson(const MapDiff& diff, const std::string& a_name, const std::string& b_name);

}  // namespace vela::mapfile
