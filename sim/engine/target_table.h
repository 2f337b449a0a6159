// The target air-fuel ratio table: the ratio the engine should run at, on the fuel map's axes
// (the RPM sites and the load sites, in the load axis's unit: kPa on a MAP basis, percent of
// throttle otherwise). Between its points a target is read from the four around, as the ECU
// reads its map, and held at the table's edges.
//
// Its file, "target table CSV": plain text, one line per row, fields separated by commas (blanks
// around a field are ignored, lines may end in CR LF, empty lines are skipped), numbers with a
// decimal point. The first line is the header: a label of the table in the first field (written
// as "RPM/kPa" or "RPM/%"; any text is read), then the load of each column, strictly rising. Every
// further line is a row: its engine speed (RPM) and one air-fuel ratio per column. Rows may come
// in any order of speed (written lowest first), no two with the same speed. At least two columns
// and two rows, at most 64 of each; every ratio between 6.0 and 25.0.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "calibration/calibration_image.h"

namespace vela::sim {

inline constexpr double kLowestTargetAfr = 6.0;
inline constexpr double kHighestTargetAfr = 25.0;
inline constexpr int kMostTargetPoints = 64;

// The default target at a load in the load axis's unit (kPa, or percent of throttle): the
// program's own default (tune/target_table.h), so that the engine and the correction aim at the
// same mixture. Cells take it rounded to one decimal.
double DefaultTargetAfr(double load);

struct TargetTable {
  std::vector<double> rpm;   // rising
  std::vector<double> load;  // rising
  std::vector<double> afr;   // rpm.size() rows of load.size() values, lowest RPM first

  double At(double rpm_value, double load_value) const;
  double Cell(std::size_t row, std::size_t column) const { return afr[row * load.size() + column]; }
};

// The default table on the axes of `image`'s fuel map.
TargetTable DefaultTargetTable(const CalibrationImage& image);

// The file's text; `load_unit` ("kPa" or "%") goes into the header's label.
std::string TargetTableCsv(const TargetTable& table, std::string_view load_unit);
// Reads a file's text; nullopt and a one-line reason (naming the line) when it is not one.
std::optional<TargetTable> ParseTargetTableCsv(std::string_view text, std::string* error);

}  // namespace vela::sim
