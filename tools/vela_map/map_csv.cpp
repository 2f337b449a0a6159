#include "tools/vela_map/map_csv.h"

#include <charconv>
#include <cmath>
#include <cstdio>

#include "base/text_fields.h"
#include "calibration/conversions.h"
#include "editors/map_file.h"

namespace vela::mapfile {

namespace {

constexpr double kFuelMaxMs = 65.535;
constexpr double kIgnMinDegrees = -28.5;
constexpr double kIgnMaxDegrees = 99.0;
constexpr double kAxisTolerance = 0.0005;

using Row = std::vector<std::string>;
using Block = std::vector<Row>;

std::string CsvBlock(const CalibrationImage& image, MapId map) {
  const SheetAxes axes = AxesOf(image, map);
  std::string out =
      std::string(MapName(map)) + " " + std::string(ValueUnit(map)) + " RPM/" + axes.load_unit;
  for (double load : axes.loads) out += "," + AxisText(load);
  out += "\n";
  for (int row = 1; row <= kMapRows; ++row) {
    out += std::to_string(axes.rpm[row - 1]);
    for (int column = 1; column <= LoadSitesOf(image, map); ++column) {
      out += "," + DisplayText(map, *CellRaw(image, map, row, column));
    }
    out += "\n";
  }
  return out;
}

// The CSV's blocks: runs of non-empty lines.
std::vector<Block> BlocksOf(std::string_view csv) {
  std::vector<Block> blocks(1);
  while (!csv.empty()) {
    const std::size_t end = csv.find('\n');
    std::string_view line = csv.substr(0, end);
    csv = end == std::string_view::npos ? std::string_view() : csv.substr(end + 1);
    if (!line.empty() && line.back() == '\r') line.remove_suffix(1);
    if (line.find_first_not_of(" \t,") == std::string_view::npos) {
      if (!blocks.back().empty()) blocks.emplace_back();
      continue;
    }
    Row row;
    std::size_t start = 0;
    for (std::size_t comma; (comma = line.find(',', start)) != std::string_view::npos;
         start = comma + 1) {
      row.push_back(UnquotedField(line.substr(start, comma - start)));
    }
    row.push_back(UnquotedField(line.substr(start)));
    blocks.back().push_back(std::move(row));
  }
  if (blocks.back().empty()) blocks.pop_back();
  return blocks;
}

std::optional<double> NumberOf(const std::string& text) {
  double value = 0.0;
  const char* end = text.data() + text.size();
  const auto [stop, error] = std::from_chars(text.data(), end, value);
  if (text.empty() || error != std::errc() || stop != end || !std::isfinite(value)) {
    return std::nullopt;
  }
  return value;
}

const Block* BlockFor(const std::vector<Block>& blocks, MapId map, ImportOutcome& outcome) {
  if (blocks.size() == 1) return &blocks.front();
  for (const Block& block : blocks) {
    const std::string& corner = block.front().front();
    if (corner.substr(0, corner.find(' ')) == MapName(map)) return &block;
  }
  outcome.refusals.push_back("The CSV holds " + std::to_string(blocks.size()) +
                             " blocks and none is named \"" + std::string(MapName(map)) + "\".");
  return nullptr;
}

// The block's shape and axes against the target's map.
bool ShapeAndAxesMatch(const Block& block, const SheetAxes& axes, ImportOutcome& outcome) {
  const std::size_t sites = axes.loads.size();
  if (block.size() != kMapRows + 1) {
    outcome.refusals.push_back("The CSV block has " + std::to_string(block.size()) +
                               " rows; it needs a header row and 11 RPM rows.");
    return false;
  }
  for (std::size_t r = 0; r < block.size(); ++r) {
    if (block[r].size() != sites + 1) {
      outcome.refusals.push_back("CSV line " + std::to_string(r + 1) + " has " +
                                 std::to_string(block[r].size()) + " fields; the map has " +
                                 std::to_string(sites) + " load sites, so it needs " +
                                 std::to_string(sites + 1) + ".");
      return false;
    }
  }
  for (std::size_t c = 0; c < sites; ++c) {
    const std::optional<double> load = NumberOf(block[0][c + 1]);
    if (!load || std::abs(*load - axes.loads[c]) > kAxisTolerance) {
      outcome.refusals.push_back("Column " + std::to_string(c + 1) + ": the CSV's load \"" +
                                 block[0][c + 1] + "\" is not the file's " +
                                 AxisText(axes.loads[c]) + " " + axes.load_unit + ".");
    }
  }
  for (int row = 1; row <= kMapRows; ++row) {
    const std::string& text = block[static_cast<std::size_t>(row)][0];
    const std::optional<double> rpm = NumberOf(text);
    if (!rpm || std::abs(*rpm - axes.rpm[row - 1]) > kAxisTolerance) {
      outcome.refusals.push_back("Row " + std::to_string(row) + ": the CSV's RPM \"" + text +
                                 "\" is not the file's " + std::to_string(axes.rpm[row - 1]) +
                                 " RPM.");
    }
  }
  return outcome.refusals.empty();
}

std::string CellName(MapId map, int row, int column, const SheetAxes& axes) {
  return std::string(MapName(map)) + " row " + std::to_string(row) + ", column " +
         std::to_string(column) + " (" + std::to_string(axes.rpm[row - 1]) + " RPM, " +
         AxisText(axes.loads[static_cast<std::size_t>(column - 1)]) + " " + axes.load_unit + ")";
}

// The raw value of a cell's text, or nothing after the refusal has been said.
std::optional<int> CellRawOf(MapId map, const std::string& text, const std::string& name,
                             ImportOutcome& outcome) {
  const std::optional<double> value = NumberOf(text);
  if (!value) {
    outcome.refusals.push_back(name + ": \"" + text + "\" is not a number.");
    return std::nullopt;
  }
  const bool ignition = map == MapId::kIgnition;
  const double low = ignition ? kIgnMinDegrees : 0.0;
  const double high = ignition ? kIgnMaxDegrees : kFuelMaxMs;
  if (*value < low || *value > high) {
    outcome.refusals.push_back(name + ": " + text + " is outside " + AxisText(low) + " to " +
                               AxisText(high) + " " + std::string(ValueUnit(map)) + ".");
    return std::nullopt;
  }
  return ignition ? RawFromIgnDegrees(*value) : RawFromFuelMs(*value);
}

// A fuel cell above its row's duty limit: refused, or lowered to the limit with a note.
int HeldToDuty(int raw, int limit, const std::string& name, bool cap, ImportOutcome& outcome) {
  if (raw <= limit) return raw;
  const std::string line = name + ": " + DisplayText(MapId::kFuel1, raw) +
                           " ms is above the duty limit of its RPM row, " +
                           DisplayText(MapId::kFuel1, limit) + " ms";
  if (!cap) {
    outcome.refusals.push_back(line + ".");
    return raw;
  }
  outcome.notes.push_back(line + "; lowered to the limit.");
  return limit;
}

void PutCells(const Block& block, MapId map, const SheetAxes& axes, bool cap,
              ImportOutcome& outcome) {
  CalibrationImage& image = *outcome.image;
  const std::array<int, kMapRows> limits = FuelDutyLimits(image);
  for (int row = 1; row <= kMapRows; ++row) {
    for (int column = 1; column <= static_cast<int>(axes.loads.size()); ++column) {
      const std::string name = CellName(map, row, column, axes);
      const std::string& text =
          block[static_cast<std::size_t>(row)][static_cast<std::size_t>(column)];
      std::optional<int> raw = CellRawOf(map, text, name, outcome);
      if (!raw) continue;
      const int position = CellPosition(image, map, row, column);
      if (map == MapId::kIgnition) {
        image.SetByte(position, static_cast<std::uint8_t>(*raw));
        continue;
      }
      const int limit = limits[BlockRowOfGridRow(row) - 1];
      image.Write16(position,
                    static_cast<std::uint16_t>(HeldToDuty(*raw, limit, name, cap, outcome)));
    }
  }
}

}  // namespace

std::string MapCsv(const CalibrationImage& image, std::span<const MapId> maps) {
  std::string out;
  for (MapId map : maps) out += (out.empty() ? "" : "\n") + CsvBlock(image, map);
  return out;
}

ImportOutcome ImportMapCsv(const CalibrationImage& target, MapId map, std::string_view csv,
                           bool cap_to_duty) {
  ImportOutcome outcome;
  const std::vector<Block> blocks = BlocksOf(csv);
  if (blocks.empty()) {
    outcome.refusals.emplace_back("The CSV holds no map.");
    return outcome;
  }
  const Block* block = BlockFor(blocks, map, outcome);
  const SheetAxes axes = AxesOf(target, map);
  if (block == nullptr || !ShapeAndAxesMatch(*block, axes, outcome)) return outcome;
  outcome.image = target;
  PutCells(*block, map, axes, cap_to_duty, outcome);
  if (!outcome.refusals.empty()) {
    outcome.image.reset();
    outcome.notes.clear();
  }
  return outcome;
}

}  // namespace vela::mapfile
