#include "sim/engine/target_table.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <numeric>
#include <span>

#include "base/text_fields.h"
#include "calibration/map_axes.h"
#include "sim/core/base_calibration.h"
#include "tune/target_table.h"

namespace vela::sim {

namespace {

std::vector<std::string_view> Fields(std::string_view line) {
  std::vector<std::string_view> fields;
  for (;;) {
    const std::size_t comma = line.find(',');
    fields.push_back(TrimBlanks(line.substr(0, comma)));
    if (comma == std::string_view::npos) return fields;
    line.remove_prefix(comma + 1);
  }
}

std::optional<double> Number(std::string_view text) {
  double value = 0;
  const char* end = text.data() + text.size();
  auto [ptr, ec] = std::from_chars(text.data(), end, value);
  if (text.empty() || ec != std::errc() || ptr != end || !std::isfinite(value)) return {};
  return value;
}

// The lines that hold something, with their numbers (counted from 1).
std::vector<std::pair<std::size_t, std::string_view>> Lines(std::string_view text) {
  std::vector<std::pair<std::size_t, std::string_view>> lines;
  for (std::size_t number = 1; !text.empty(); ++number) {
    const std::size_t end = text.find('\n');
    std::string_view line = text.substr(0, end);
    if (!line.empty() && line.back() == '\r') line.remove_suffix(1);
    if (line.find_first_not_of(" \t") != std::string_view::npos) lines.emplace_back(number, line);
    text = end == std::string_view::npos ? std::string_view() : text.substr(end + 1);
  }
  return lines;
}

bool Rising(std::span<const double> values) {
  return std::adjacent_find(values.begin(), values.end(), std::greater_equal<>()) == values.end();
}

// Position of `value` between rising `points`, as a lower index and a fraction, held at the ends.
std::pair<std::size_t, double> Between(std::span<const double> points, double value) {
  const double at = AxisPosition(points, value);
  const auto i = std::min(static_cast<std::size_t>(at), points.size() - 2);
  return {i, at - static_cast<double>(i)};
}

std::string Text(double value) {
  char buffer[32];
  auto [end, ec] = std::to_chars(buffer, buffer + sizeof buffer, value);
  return std::string(buffer, end);
}

bool Fail(std::string* error, std::string reason) {
  if (error) *error = std::move(reason);
  return false;
}

bool ReadHeader(std::string_view line, std::size_t number, TargetTable& table, std::string* error) {
  const std::string where = "line " + std::to_string(number) + ": ";
  const std::vector<std::string_view> fields = Fields(line);
  for (std::size_t i = 1; i < fields.size(); ++i) {
    const std::optional<double> load = Number(fields[i]);
    if (!load)
      return Fail(error, where + "the load of column " + std::to_string(i) + " is no number");
    table.load.push_back(*load);
  }
  if (table.load.size() < 2 || table.load.size() > kMostTargetPoints) {
    return Fail(error, where + "2 to 64 load columns are needed");
  }
  return Rising(table.load) || Fail(error, where + "the loads must rise from column to column");
}

bool ReadRow(std::string_view line, std::size_t number, TargetTable& table,
             std::vector<std::pair<double, std::vector<double>>>& rows, std::string* error) {
  const std::string where = "line " + std::to_string(number) + ": ";
  const std::vector<std::string_view> fields = Fields(line);
  if (fields.size() != table.load.size() + 1) {
    return Fail(error, where + "expected " + std::to_string(table.load.size() + 1) + " fields");
  }
  const std::optional<double> rpm = Number(fields[0]);
  if (!rpm) return Fail(error, where + "the engine speed is no number");
  std::vector<double> values;
  for (std::size_t i = 1; i < fields.size(); ++i) {
    const std::optional<double> afr = Number(fields[i]);
    if (!afr || *afr < kLowestTargetAfr || *afr > kHighestTargetAfr) {
      return Fail(error, where + "column " + std::to_string(i) + " is not a ratio of 6.0 to 25.0");
    }
    values.push_back(*afr);
  }
  rows.emplace_back(*rpm, std::move(values));
  return true;
}

}  // namespace

double DefaultTargetAfr(double load) { return vela::DefaultTargetAfr(load); }

double TargetTable::At(double rpm_value, double load_value) const {
  const auto [r, fr] = Between(rpm, rpm_value);
  const auto [c, fc] = Between(load, load_value);
  const double low = Cell(r, c) * (1 - fc) + Cell(r, c + 1) * fc;
  const double high = Cell(r + 1, c) * (1 - fc) + Cell(r + 1, c + 1) * fc;
  return low * (1 - fr) + high * fr;
}

TargetTable DefaultTargetTable(const CalibrationImage& image) {
  TargetTable table;
  for (int rpm : RpmSites(image.Byte(FieldPos("RpmSitesSetup")))) table.rpm.push_back(rpm);
  const int sites = image.FuelLoadSites();
  table.load = LoadSiteValues(LoadAxisOfImage(image), sites);
  for (std::size_t row = 0; row < table.rpm.size(); ++row) {
    for (int column = 0; column < sites; ++column) {
      const double afr = DefaultTargetAfr(table.load[static_cast<std::size_t>(column)]);
      table.afr.push_back(std::round(afr * 10.0) / 10.0);
    }
  }
  return table;
}

std::string TargetTableCsv(const TargetTable& table, std::string_view load_unit) {
  std::string text = "RPM/" + std::string(load_unit);
  for (double load : table.load) text += "," + Text(load);
  text += "\n";
  for (std::size_t row = 0; row < table.rpm.size(); ++row) {
    text += Text(table.rpm[row]);
    for (std::size_t column = 0; column < table.load.size(); ++column) {
      text += "," + Text(table.Cell(row, column));
    }
    text += "\n";
  }
  return text;
}

std::optional<TargetTable> ParseTargetTableCsv(std::string_view text, std::string* error) {
  const auto lines = Lines(text);
  TargetTable table;
  if (lines.empty()) return Fail(error, "the file is empty"), std::nullopt;
  if (!ReadHeader(lines[0].second, lines[0].first, table, error)) return std::nullopt;
  std::vector<std::pair<double, std::vector<double>>> rows;
  for (std::size_t i = 1; i < lines.size(); ++i) {
    if (!ReadRow(lines[i].second, lines[i].first, table, rows, error)) return std::nullopt;
  }
  if (rows.size() < 2 || rows.size() > kMostTargetPoints) {
    return Fail(error, "2 to 64 rows are needed"), std::nullopt;
  }
  std::stable_sort(rows.begin(), rows.end(),
                   [](const auto& a, const auto& b) { return a.first < b.first; });
  for (auto& [rpm, values] : rows) {
    table.rpm.push_back(rpm);
    table.afr.insert(table.afr.end(), values.begin(), values.end());
  }
  if (!Rising(table.rpm)) return Fail(error, "two rows have the same engine speed"), std::nullopt;
  return table;
}

}  // namespace vela::sim
