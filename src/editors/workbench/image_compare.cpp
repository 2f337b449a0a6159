#include "editors/workbench/image_compare.h"

#include <algorithm>
#include <set>

namespace vela {

namespace {

constexpr double kMsPerFuelRaw = 0.001;

std::optional<int> RawAt(const CalibrationImage& image, int position, int width) {
  if (position <= 0) return std::nullopt;
  return width == 2 ? static_cast<int>(image.Read16(position)) : image.Byte(position);
}

// The raw values of a table's cells in a grid of `rows` x `columns` (the larger of both sides).
std::vector<std::optional<int>> RawGrid(const CellTable& table, const CalibrationImage& image,
                                        int rows, int columns) {
  std::vector<std::optional<int>> raws(static_cast<std::size_t>(rows * columns));
  for (int r = 0; r < table.rows; ++r) {
    for (int c = 0; c < table.columns; ++c) {
      const std::size_t own = static_cast<std::size_t>(r * table.columns + c);
      if (own >= table.positions.size()) continue;
      raws[static_cast<std::size_t>(r * columns + c)] =
          RawAt(image, table.positions[own], table.width);
    }
  }
  return raws;
}

std::vector<int> PositionGrid(const CellTable& table, int rows, int columns) {
  std::vector<int> positions(static_cast<std::size_t>(rows * columns), 0);
  for (int r = 0; r < table.rows; ++r) {
    for (int c = 0; c < table.columns; ++c) {
      const std::size_t own = static_cast<std::size_t>(r * table.columns + c);
      if (own < table.positions.size()) {
        positions[static_cast<std::size_t>(r * columns + c)] = table.positions[own];
      }
    }
  }
  return positions;
}

// The set-up field a position belongs to, or nothing for a map byte or a byte no editor owns.
const SetupField* FieldAt(int position) {
  for (const SetupField& field : kSetupFields) {
    if (position >= field.position && position <= field.LastPosition()) return &field;
  }
  return nullptr;
}

bool IsMapArea(int position) {
  return (position >= kFuelMap1Start && position < kFuelMap2Start + kFuelMapAreaLength) ||
         (position >= kIgnMapStart && position < kIgnMapStart + kIgnMapAreaLength);
}

// Every byte position the tables beyond the maps cover.
std::set<int> TablePositions(const std::vector<CellTable>& extra) {
  std::set<int> covered;
  for (const CellTable& table : extra) {
    for (int position : table.positions) {
      for (int b = 0; position > 0 && b < table.width; ++b) covered.insert(position + b);
    }
  }
  return covered;
}

}  // namespace

CellTable FuelMapTable(const CalibrationImage& image, int map) {
  CellTable table;
  table.name = map == 2 ? "FuelMap2" : "FuelMap1";
  table.page = map == 2 ? ComparePage::kFuel2 : ComparePage::kFuel1;
  table.rows = kMapRows;
  table.columns = image.FuelLoadSites();
  table.width = 2;
  for (int row = 1; row <= kMapRows; ++row) {
    for (int column = 1; column <= table.columns; ++column) {
      table.positions.push_back(image.FuelCellPosition(map, BlockRowOfGridRow(row), column));
    }
  }
  table.shown = [](int, int raw) { return raw * kMsPerFuelRaw; };
  return table;
}

CellTable IgnMapTable(const CalibrationImage& image) {
  CellTable table;
  table.name = "IgnMap";
  table.page = ComparePage::kIgnition;
  table.rows = kMapRows;
  table.columns = image.IgnLoadSites();
  for (int row = 1; row <= kMapRows; ++row) {
    for (int column = 1; column <= table.columns; ++column) {
      table.positions.push_back(image.IgnCellPosition(BlockRowOfGridRow(row), column));
    }
  }
  table.shown = [](int, int raw) { return kIgnReference - raw / 2.0; };
  return table;
}

CellTable ByteColumnTable(std::string name, std::vector<int> positions,
                          std::function<double(int row, int raw)> shown) {
  CellTable table;
  table.name = std::move(name);
  table.page = ComparePage::kCompensation;
  table.first_row = 0;
  table.rows = static_cast<int>(positions.size());
  table.columns = 1;
  table.positions = std::move(positions);
  table.shown = std::move(shown);
  return table;
}

CompareView NextView(CompareView view) {
  switch (view) {
    case CompareView::kCurrent:
      return CompareView::kOther;
    case CompareView::kOther:
      return CompareView::kDifference;
    case CompareView::kDifference:
      break;
  }
  return CompareView::kCurrent;
}

TableComparison::TableComparison(const CellTable& ours, const CalibrationImage& our_image,
                                 const CellTable& theirs, const CalibrationImage& their_image)
    : name_(ours.name),
      page_(ours.page),
      first_row_(ours.first_row),
      rows_(std::max(ours.rows, theirs.rows)),
      columns_(std::max(ours.columns, theirs.columns)),
      width_(ours.width),
      our_positions_(PositionGrid(ours, rows_, columns_)),
      our_raw_(RawGrid(ours, our_image, rows_, columns_)),
      their_raw_(RawGrid(theirs, their_image, rows_, columns_)),
      our_shown_(ours.shown),
      their_shown_(theirs.shown) {
  for (int r = 0; r < rows_; ++r) {
    for (int c = 1; c <= columns_; ++c) {
      const MapCell cell{first_row_ + r, c};
      if (OurRaw(cell) != TheirRaw(cell)) differing_.push_back(cell);
    }
  }
}

std::optional<std::size_t> TableComparison::Index(MapCell cell) const {
  const int r = cell.row - first_row_;
  if (r < 0 || r >= rows_ || cell.column < 1 || cell.column > columns_) return std::nullopt;
  return static_cast<std::size_t>(r * columns_ + cell.column - 1);
}

std::optional<int> TableComparison::At(const std::vector<std::optional<int>>& raws,
                                       MapCell cell) const {
  const std::optional<std::size_t> index = Index(cell);
  return index ? raws[*index] : std::nullopt;
}

std::optional<double> TableComparison::Ours(MapCell cell) const {
  const std::optional<int> raw = OurRaw(cell);
  if (!raw) return std::nullopt;
  return our_shown_(cell.row, *raw);
}

std::optional<double> TableComparison::Theirs(MapCell cell) const {
  const std::optional<int> raw = TheirRaw(cell);
  if (!raw) return std::nullopt;
  return their_shown_(cell.row, *raw);
}

std::optional<double> TableComparison::Difference(MapCell cell) const {
  const std::optional<double> ours = Ours(cell);
  const std::optional<double> theirs = Theirs(cell);
  if (!ours || !theirs) return std::nullopt;
  if (OurRaw(cell) == TheirRaw(cell)) return 0.0;  // exactly 0, whatever the conversion
  return *ours - *theirs;
}

std::optional<double> TableComparison::Shown(MapCell cell, CompareView view) const {
  switch (view) {
    case CompareView::kCurrent:
      return Ours(cell);
    case CompareView::kOther:
      return Theirs(cell);
    case CompareView::kDifference:
      break;
  }
  return Difference(cell);
}

bool TableComparison::Differs(MapCell cell) const {
  return Index(cell) && OurRaw(cell) != TheirRaw(cell);
}

int TableComparison::OurPosition(MapCell cell) const {
  const std::optional<std::size_t> index = Index(cell);
  return index ? our_positions_[*index] : 0;
}

int ImageComparison::CountOn(ComparePage page) const {
  if (page == ComparePage::kSetup) return static_cast<int>(setup.size());
  int count = 0;
  for (const TableComparison& table : tables) {
    if (table.Page() == page) count += table.DifferingCount();
  }
  return count;
}

const TableComparison* ImageComparison::Table(std::string_view name) const {
  for (const TableComparison& table : tables) {
    if (table.Name() == name) return &table;
  }
  return nullptr;
}

ImageComparison CompareImages(const CalibrationImage& ours, const CalibrationImage& theirs,
                              const std::vector<CellTable>& extra) {
  ImageComparison result;
  for (int map = 1; map <= 2; ++map) {
    result.tables.emplace_back(FuelMapTable(ours, map), ours, FuelMapTable(theirs, map), theirs);
  }
  result.tables.emplace_back(IgnMapTable(ours), ours, IgnMapTable(theirs), theirs);
  for (const CellTable& table : extra) result.tables.emplace_back(table, ours, table, theirs);
  const std::set<int> covered = TablePositions(extra);
  for (int position = 1; position <= kImageLength; ++position) {
    if (IsMapArea(position) || covered.count(position) > 0) continue;
    const SetupField* field = FieldAt(position);
    if (field == nullptr || ours.Byte(position) == theirs.Byte(position)) continue;
    result.setup.push_back({position, field->name, ours.Byte(position), theirs.Byte(position)});
  }
  return result;
}

TakeOther TakeOtherValues(const TableComparison& table, const MapCellRect& selection) {
  TakeOther take;
  for (const MapCell& cell : table.DifferingCells()) {
    if (!selection.Contains(cell)) continue;
    const int position = table.OurPosition(cell);
    const std::optional<int> before = table.OurRaw(cell);
    const std::optional<int> after = table.TheirRaw(cell);
    if (position <= 0 || !before || !after) {
      ++take.skipped;
      continue;
    }
    for (int b = 0; b < table.Width(); ++b) {
      const auto byte_of = [b](int raw) {
        return static_cast<std::uint8_t>((raw >> (8 * b)) & 0xFF);
      };
      if (byte_of(*before) == byte_of(*after)) continue;
      take.bytes.push_back(
          {static_cast<std::uint16_t>(position + b), byte_of(*before), byte_of(*after)});
    }
    take.cells.push_back(cell);
  }
  std::sort(take.bytes.begin(), take.bytes.end(),
            [](const ByteChange& a, const ByteChange& b) { return a.position < b.position; });
  return take;
}

TakeOther TakeOtherValues(const TableComparison& table) {
  const int last_row = table.FirstRow() + table.Rows() - 1;
  return TakeOtherValues(table, MapCellRect{table.FirstRow(), 1, last_row, table.Columns()});
}

std::vector<int> PositionsToSend(const TableComparison& table) {
  std::vector<int> positions;
  for (const MapCell& cell : table.DifferingCells()) {
    const int position = table.OurPosition(cell);
    if (position > 0) positions.push_back(position);
  }
  std::sort(positions.begin(), positions.end());
  return positions;
}

std::vector<int> PositionsToSend(const ImageComparison& comparison) {
  std::vector<int> positions;
  for (const TableComparison& table : comparison.tables) {
    const std::vector<int> cells = PositionsToSend(table);
    positions.insert(positions.end(), cells.begin(), cells.end());
  }
  for (const SetupByteDifference& byte : comparison.setup) positions.push_back(byte.position);
  std::sort(positions.begin(), positions.end());
  return positions;
}

}  // namespace vela
