#include "tune/target/target_table.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstdio>

#include "base/text_fields.h"

namespace vela {

namespace {

// The default's corners: (load, AFR), straight between them, held beyond the last.
constexpr std::array<std::pair<double, double>, 5> kDefaultTargets = {
    {{0.0, 14.7}, {40.0, 14.7}, {80.0, 13.2}, {100.0, 12.5}, {200.0, 11.5}}};
// How far a CSV's axis value may lie from the map's.
constexpr double kTargetAxisTolerance = 0.0005;

using CsvFields = std::vector<std::string>;

// The CSV's non-blank lines split at commas (a byte-order mark and "\r" line ends tolerated).
std::vector<CsvFields> CsvLines(std::string_view csv) {
  if (csv.substr(0, 3) == "\xEF\xBB\xBF") csv.remove_prefix(3);
  std::vector<CsvFields> lines;
  while (!csv.empty()) {
    const std::string_view line = TakeLine(csv);
    if (line.find_first_not_of(" \t,") == std::string_view::npos) continue;
    CsvFields fields;
    std::size_t start = 0;
    for (std::size_t comma; (comma = line.find(',', start)) != std::string_view::npos;
         start = comma + 1) {
      fields.push_back(UnquotedField(line.substr(start, comma - start)));
    }
    fields.push_back(UnquotedField(line.substr(start)));
    lines.push_back(std::move(fields));
  }
  return lines;
}

std::optional<double> CsvNumber(const std::string& text) {
  double value = 0.0;
  const char* end = text.data() + text.size();
  const auto [stop, error] = std::from_chars(text.data(), end, value);
  if (text.empty() || error != std::errc() || stop != end || !std::isfinite(value)) {
    return std::nullopt;
  }
  return value;
}

// A number with up to `decimals` decimals and no trailing zeros.
std::string ShortNumber(double value, int decimals) {
  char text[40];
  std::snprintf(text, sizeof text, "%.*f", decimals, value);
  std::string out = text;
  if (out.find('.') != std::string::npos) {
    while (out.back() == '0') out.pop_back();
    if (out.back() == '.') out.pop_back();
  }
  return out == "-0" ? "0" : out;
}

bool ShapeFits(const std::vector<CsvFields>& lines, const TuneAxes& axes,
               std::vector<std::string>& refusals) {
  if (lines.size() != static_cast<std::size_t>(axes.Rows()) + 1) {
    refusals.push_back("The target CSV has " + std::to_string(lines.size()) +
                       " lines; it needs a header line and " + std::to_string(axes.Rows()) +
                       " RPM lines.");
    return false;
  }
  for (std::size_t line = 0; line < lines.size(); ++line) {
    if (lines[line].size() != static_cast<std::size_t>(axes.Columns()) + 1) {
      refusals.push_back("Target CSV line " + std::to_string(line + 1) + " has " +
                         std::to_string(lines[line].size()) + " fields; the fuel map has " +
                         std::to_string(axes.Columns()) + " load sites, so it needs " +
                         std::to_string(axes.Columns() + 1) + ".");
      return false;
    }
  }
  return true;
}

void CheckAxis(const std::string& text, double expected, const std::string& where,
               std::string_view unit, std::vector<std::string>& refusals) {
  const std::optional<double> value = CsvNumber(text);
  if (!value || std::abs(*value - expected) > kTargetAxisTolerance) {
    refusals.push_back(where + ": \"" + text + "\" is not the fuel map's " +
                       ShortNumber(expected, 3) + " " + std::string(unit) + ".");
  }
}

void CheckAxes(const std::vector<CsvFields>& lines, const TuneAxes& axes,
               std::vector<std::string>& refusals) {
  for (int column = 1; column <= axes.Columns(); ++column) {
    CheckAxis(lines[0][static_cast<std::size_t>(column)], axes.ColumnLoad(column),
              "Load of column " + std::to_string(column), axes.LoadUnit(), refusals);
  }
  for (int row = 1; row <= axes.Rows(); ++row) {
    CheckAxis(lines[static_cast<std::size_t>(row)][0], axes.RowRpm(row),
              "RPM of line " + std::to_string(row + 1), "RPM", refusals);
  }
}

void ReadTargets(const std::vector<CsvFields>& lines, TargetTable& table,
                 std::vector<std::string>& refusals) {
  const TuneAxes& axes = table.Axes();
  for (int row = 1; row <= axes.Rows(); ++row) {
    for (int column = 1; column <= axes.Columns(); ++column) {
      const std::string& text =
          lines[static_cast<std::size_t>(row)][static_cast<std::size_t>(column)];
      const std::optional<double> afr = CsvNumber(text);
      const std::string where = "Line " + std::to_string(row + 1) + ", column " +
                                std::to_string(column) + " (" + ShortNumber(axes.RowRpm(row), 0) +
                                " RPM, " + ShortNumber(axes.ColumnLoad(column), 3) + " " +
                                std::string(axes.LoadUnit()) + ")";
      if (!afr) {
        refusals.push_back(where + ": \"" + text + "\" is not a number.");
      } else if (*afr < kMinTargetAfr || *afr > kMaxTargetAfr) {
        refusals.push_back(where + ": " + text + " is outside the targets' " +
                           ShortNumber(kMinTargetAfr, 1) + " to " + ShortNumber(kMaxTargetAfr, 1) +
                           " AFR.");
      } else {
        table.Set(row, column, *afr);
      }
    }
  }
}

}  // namespace

TargetTable::TargetTable(TuneAxes axes)
    : axes_(std::move(axes)), afr_(static_cast<std::size_t>(axes_.Rows() * axes_.Columns()), 0.0) {
  for (int row = 1; row <= axes_.Rows(); ++row) {
    for (int column = 1; column <= axes_.Columns(); ++column) {
      Set(row, column, DefaultTargetAfr(axes_.ColumnLoad(column)));
    }
  }
}

std::size_t TargetTable::Index(int row, int column) const {
  return static_cast<std::size_t>((row - 1) * axes_.Columns() + (column - 1));
}

double TargetTable::At(int row, int column) const { return afr_[Index(row, column)]; }

void TargetTable::Set(int row, int column, double afr) { afr_[Index(row, column)] = afr; }

double TargetTable::AtPoint(double rpm, double load) const {
  double afr = 0.0;
  for (const CellShare& share : SharesAt(axes_, rpm, load)) {
    afr += share.weight * At(share.row, share.column);
  }
  return afr;
}

double DefaultTargetAfr(double load) {
  if (!(load > kDefaultTargets.front().first)) return kDefaultTargets.front().second;
  for (std::size_t i = 1; i < kDefaultTargets.size(); ++i) {
    const auto [load1, afr1] = kDefaultTargets[i];
    if (load <= load1) {
      const auto [load0, afr0] = kDefaultTargets[i - 1];
      const double afr = afr0 + (afr1 - afr0) * (load - load0) / (load1 - load0);
      return std::round(afr * 10.0) / 10.0;
    }
  }
  return kDefaultTargets.back().second;
}

std::string TargetCsv(const TargetTable& table) {
  const TuneAxes& axes = table.Axes();
  std::string out = "target AFR RPM/" + std::string(axes.LoadUnit());
  for (double load : axes.loads) out += "," + ShortNumber(load, 3);
  out += "\n";
  for (int row = 1; row <= axes.Rows(); ++row) {
    out += ShortNumber(axes.RowRpm(row), 0);
    for (int column = 1; column <= axes.Columns(); ++column) {
      out += "," + ShortNumber(table.At(row, column), 2);
    }
    out += "\n";
  }
  return out;
}

TargetRead ReadTargetCsv(std::string_view csv, const TuneAxes& axes) {
  TargetRead read;
  if (csv.size() > kMaxTargetCsvBytes) {
    read.refusals.push_back("The target CSV holds " + std::to_string(csv.size()) +
                            " bytes; a target table is never larger than " +
                            std::to_string(kMaxTargetCsvBytes) + ".");
    return read;
  }
  const std::vector<CsvFields> lines = CsvLines(csv);
  if (!ShapeFits(lines, axes, read.refusals)) return read;
  CheckAxes(lines, axes, read.refusals);
  TargetTable table(axes);
  ReadTargets(lines, table, read.refusals);
  if (read.refusals.empty()) read.table = std::move(table);
  return read;
}

std::string TargetPathFor(const std::string& map_path) {
  std::string stem = map_path;
  if (stem.size() >= 4) {
    std::string ending = stem.substr(stem.size() - 4);
    std::transform(ending.begin(), ending.end(), ending.begin(),
                   [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    if (ending == ".sm1") stem.resize(stem.size() - 4);
  }
  return stem + ".afr.csv";
}

}  // namespace vela
