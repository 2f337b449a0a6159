// Two calibration images side by side: "ours" (the image the tuner works on, shown in the grids)
// and "theirs" (the ECU's calibration as last read, a map file, a restore point). Per table of
// cells (the three maps, the compensation tables) the cells that differ as the grids number
// them, with their values in the table's shown units; the set-up bytes that differ with their
// field names; a count per page. From it: the value a grid shows in each view mode, the bytes
// that take the other side's values, and the positions to send when only the differences go.
#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "calibration/calibration_image.h"
#include "editors/mapgrid/map_grid_model.h"
#include "editors/workbench/edit_journal.h"  // ByteChange, one byte before and after

namespace vela {

// The pages a difference is counted on.
enum class ComparePage { kFuel1, kFuel2, kIgnition, kCompensation, kSetup };

// One table of cells held in the image, laid out as its grid shows it.
struct CellTable {
  std::string name;  // the grid's objectName: "FuelMap1", "FuelMap2", "IgnMap", "AirMap", ...
  ComparePage page = ComparePage::kSetup;
  int first_row = 1;  // the grid's number of its first value row (1 on a map, 0 on a small grid)
  int rows = 0;
  int columns = 0;  // value columns, numbered from 1
  int width = 1;    // bytes of a cell: 2 (little-endian) for fuel, 1 otherwise
  // The first byte of each cell, row after row from the first row; 0 for a grid cell that this
  // image's layout does not hold.
  std::vector<int> positions;
  // A cell's stored value as its grid shows it (milliseconds, degrees, percent, ...).
  std::function<double(int row, int raw)> shown;
};

// The maps as an image lays them out (its own load sites decide the columns).
CellTable FuelMapTable(const CalibrationImage& image, int map);
CellTable IgnMapTable(const CalibrationImage& image);
// A one-column small grid of single bytes (a compensation table): rows numbered from 0.
CellTable ByteColumnTable(std::string name, std::vector<int> positions,
                          std::function<double(int row, int raw)> shown);

// What a grid shows while a comparison is on; a key cycles through the three.
enum class CompareView { kCurrent, kOther, kDifference };
CompareView NextView(CompareView view);

// One table of both images. The grid is as large as the larger side; a cell only one side holds
// reads as nothing on the other and counts as differing.
class TableComparison {
 public:
  TableComparison(const CellTable& ours, const CalibrationImage& our_image, const CellTable& theirs,
                  const CalibrationImage& their_image);

  const std::string& Name() const { return name_; }
  ComparePage Page() const { return page_; }
  int FirstRow() const { return first_row_; }
  int Rows() const { return rows_; }
  int Columns() const { return columns_; }

  // Raw stored values and shown values of a cell; nothing outside the side's layout.
  std::optional<int> OurRaw(MapCell cell) const { return At(our_raw_, cell); }
  std::optional<int> TheirRaw(MapCell cell) const { return At(their_raw_, cell); }
  std::optional<double> Ours(MapCell cell) const;
  std::optional<double> Theirs(MapCell cell) const;
  // Ours minus theirs in shown units: positive where our cell is higher. Nothing when a side
  // lacks the cell.
  std::optional<double> Difference(MapCell cell) const;
  // The value the grid shows at `cell` in `view` (the difference is 0 on equal cells).
  std::optional<double> Shown(MapCell cell, CompareView view) const;

  bool Differs(MapCell cell) const;
  // Differing cells, top row first and left to right within a row.
  const std::vector<MapCell>& DifferingCells() const { return differing_; }
  int DifferingCount() const { return static_cast<int>(differing_.size()); }

  // The first byte position of a cell in our image (0 when ours lacks it) and its width.
  int OurPosition(MapCell cell) const;
  int Width() const { return width_; }

 private:
  std::optional<std::size_t> Index(MapCell cell) const;
  std::optional<int> At(const std::vector<std::optional<int>>& raws, MapCell cell) const;

  std::string name_;
  ComparePage page_;
  int first_row_;
  int rows_;
  int columns_;
  int width_;
  std::vector<int> our_positions_;
  std::vector<std::optional<int>> our_raw_;
  std::vector<std::optional<int>> their_raw_;
  std::function<double(int, int)> our_shown_;
  std::function<double(int, int)> their_shown_;
  std::vector<MapCell> differing_;
};

struct SetupByteDifference {
  int position;
  std::string_view field;  // the field of kSetupFields the byte belongs to
  std::uint8_t ours;
  std::uint8_t theirs;
  bool operator==(const SetupByteDifference&) const = default;
};

struct ImageComparison {
  std::vector<TableComparison> tables;
  // Set-up bytes that differ and belong to no compared table, in position order.
  std::vector<SetupByteDifference> setup;

  // Differing cells of the page's tables, or differing set-up bytes for kSetup.
  int CountOn(ComparePage page) const;
  const TableComparison* Table(std::string_view name) const;
};

// The three maps of both images, then `extra` (tables beyond the maps, such as the compensation
// tables, laid out the same way on both sides), then the set-up bytes. Bytes that no editor owns
// and the unused room of a map area are not compared: a block the program builds zeroes them.
ImageComparison CompareImages(const CalibrationImage& ours, const CalibrationImage& theirs,
                              const std::vector<CellTable>& extra = {});

// Taking the other side's values into ours: the bytes to write (position order) and the cells
// they belong to, for the caller to put through the edit rules, journal as one entry and send.
// A differing cell that our layout does not hold, or theirs does not, cannot be taken and is
// counted in `skipped`.
struct TakeOther {
  std::vector<ByteChange> bytes;
  std::vector<MapCell> cells;
  int skipped = 0;
};
TakeOther TakeOtherValues(const TableComparison& table, const MapCellRect& selection);
TakeOther TakeOtherValues(const TableComparison& table);  // the whole table

// Sending only the differences: the positions of our differing cells (one per cell: a fuel cell
// travels as one frame at its first byte) and of the differing set-up bytes, ascending.
std::vector<int> PositionsToSend(const TableComparison& table);
std::vector<int> PositionsToSend(const ImageComparison& comparison);

}  // namespace vela
