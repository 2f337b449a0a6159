#include "tools/vela_map/map_diff.h"

#include <algorithm>
#include <array>
#include <cstdio>

#include "calibration/setup_fields.h"

namespace vela::mapfile {

namespace {

// The positions that carry a map cell in the layout of `image`.
void MarkCellPositions(const CalibrationImage& image, std::array<bool, kImageLength + 1>& cell) {
  for (MapId map : kAllMaps) {
    const int width = map == MapId::kIgnition ? 1 : 2;
    for (int row = 1; row <= kMapRows; ++row) {
      for (int column = 1; column <= LoadSitesOf(image, map); ++column) {
        const int position = CellPosition(image, map, row, column);
        for (int i = 0; i < width; ++i) cell[position + i] = true;
      }
    }
  }
}

void DiffCells(const CalibrationImage& a, const CalibrationImage& b, MapDiff& diff) {
  for (MapId map : kAllMaps) {
    const SheetAxes axes_a = AxesOf(a, map);
    const SheetAxes axes_b = AxesOf(b, map);
    const int columns = std::max(LoadSitesOf(a, map), LoadSitesOf(b, map));
    for (int row = 1; row <= kMapRows; ++row) {
      for (int column = 1; column <= columns; ++column) {
        const std::optional<int> raw_a = CellRaw(a, map, row, column);
        const std::optional<int> raw_b = CellRaw(b, map, row, column);
        if (raw_a == raw_b) continue;
        const SheetAxes& axes = raw_a ? axes_a : axes_b;
        diff.cells.push_back({map, row, column, axes.rpm[row - 1],
                              axes.loads[static_cast<std::size_t>(column - 1)], axes.load_unit,
                              raw_a, raw_b});
      }
    }
  }
}

std::string Printf(const char* format, auto... values) {
  char text[256];
  std::snprintf(text, sizeof text, format, values...);
  return text;
}

std::string ValueOrNone(MapId map, const std::optional<int>& raw, bool json) {
  if (!raw) return json ? "null" : "(no cell)";
  return DisplayText(map, *raw) + (json ? "" : " " + std::string(ValueUnit(map)));
}

std::string JsonString(const std::string& text) {
  std::string out = "\"";
  for (char c : text) {
    if (c == '"' || c == '\\') {
      out += '\\';
      out += c;
    } else if (static_cast<unsigned char>(c) < 0x20) {
      out += Printf("\\u%04x", c);
    } else {
      out += c;
    }
  }
  return out + "\"";
}

std::string FieldLabel(const ByteDifference& difference) {
  const std::optional<SetupField> field = FindSetupField(difference.field);
  if (!field || field->width == 1) return difference.field;
  return difference.field + " byte " + std::to_string(difference.offset + 1) + " of " +
         std::to_string(field->width);
}

}  // namespace

PositionName NameOfPosition(int position) {
  for (const SetupField& field : kSetupFields) {
    if (position >= field.position && position <= field.LastPosition()) {
      return {std::string(field.name), position - field.position};
    }
  }
  for (const PositionRange& range : kUnownedPositions) {
    if (position >= range.first && position <= range.last) return {"unowned"};
  }
  if (position < kFuelMap2Start) return {"Fuel 1 area, no cell"};
  if (position < kIgnMapStart) return {"Fuel 2 area, no cell"};
  return {"Ignition area, no cell"};
}

MapDiff DiffImages(const CalibrationImage& a, const CalibrationImage& b) {
  MapDiff diff;
  DiffCells(a, b, diff);
  std::array<bool, kImageLength + 1> cell{};
  MarkCellPositions(a, cell);
  MarkCellPositions(b, cell);
  for (int position = 1; position <= kImageLength; ++position) {
    if (cell[position] || a.Byte(position) == b.Byte(position)) continue;
    PositionName name = NameOfPosition(position);
    diff.bytes.push_back(
        {position, std::move(name.field), name.offset, a.Byte(position), b.Byte(position)});
  }
  return diff;
}

std::string DiffText(const MapDiff& diff, const std::string& a_name, const std::string& b_name) {
  std::string out = "A: " + a_name + "\nB: " + b_name + "\n";
  for (MapId map : kAllMaps) {
    const auto count = std::count_if(diff.cells.begin(), diff.cells.end(),
                                     [map](const CellDifference& c) { return c.map == map; });
    if (count == 0) continue;
    out += Printf("%s: %d cell%s differ%s (row 1 is the top row)\n", MapTitle(map).data(),
                  static_cast<int>(count), count == 1 ? "" : "s", count == 1 ? "s" : "");
    for (const CellDifference& c : diff.cells) {
      if (c.map != map) continue;
      out += Printf("  row %2d  column %2d  (%5d RPM, %s %s):  %s -> %s\n", c.row, c.column, c.rpm,
                    AxisText(c.load).c_str(), c.load_unit.c_str(),
                    ValueOrNone(map, c.a, false).c_str(), ValueOrNone(map, c.b, false).c_str());
    }
  }
  if (!diff.bytes.empty()) {
    out += Printf("Set-up bytes: %d differ\n", static_cast<int>(diff.bytes.size()));
    for (const ByteDifference& d : diff.bytes) {
      out += Printf("  %4d  %-28s %3d -> %3d\n", d.position, FieldLabel(d).c_str(), d.a, d.b);
    }
  }
  out += diff.Empty()
             ? "No differences.\n"
             : Printf("Differences: %d cells, %d set-up bytes\n",
                      static_cast<int>(diff.cells.size()), static_cast<int>(diff.bytes.size()));
  return out;
}

std::string DiffJson(const MapDiff& diff, const std::string& a_name, const std::string& b_name) {
  std::string out = "{\n  \"a\": " + JsonString(a_name) + ",\n  \"b\": " + JsonString(b_name) +
                    ",\n  \"cells\": [";
  for (std::size_t i = 0; i < diff.cells.size(); ++i) {
    const CellDifference& c = diff.cells[i];
    out += std::string(i == 0 ? "\n" : ",\n") +
           Printf(
               "    {\"map\": \"%s\", \"row\": %d, \"column\": %d, \"rpm\": %d, \"load\": %s, "
               "\"load_unit\": \"%s\", \"unit\": \"%s\", \"a\": %s, \"b\": %s}",
               MapName(c.map).data(), c.row, c.column, c.rpm, AxisText(c.load).c_str(),
               c.load_unit.c_str(), ValueUnit(c.map).data(), ValueOrNone(c.map, c.a, true).c_str(),
               ValueOrNone(c.map, c.b, true).c_str());
  }
  out += diff.cells.empty() ? "],\n  \"bytes\": [" : "\n  ],\n  \"bytes\": [";
  for (std::size_t i = 0; i < diff.bytes.size(); ++i) {
    const ByteDifference& d = diff.bytes[i];
    out += std::string(i == 0 ? "\n" : ",\n") +
           Printf("    {\"position\": %d, \"field\": %s, \"offset\": %d, \"a\": %d, \"b\": %d}",
                  d.position, JsonString(d.field).c_str(), d.offset, d.a, d.b);
  }
  out += diff.bytes.empty() ? "],\n" : "\n  ],\n";
  out += Printf("  \"counts\": {\"cells\": %d, \"bytes\": %d}\n}\n",
                static_cast<int>(diff.cells.size()), static_cast<int>(diff.bytes.size()));
  return out;
}

}  // namespace vela::mapfile
