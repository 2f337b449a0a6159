// The map grid: what `MapGrid` shows and edits, without any toolkit. 12 rows: row 0 is the header
// with the load-site labels, rows 1 to 11 are the RPM rows (row 1 = the highest RPM site);
// column 0 holds the RPM labels, columns 1 to the load sites hold the values. Row 0 and column 0
// are labels; every other cell is a value of the map's kind, held in whole units (see map_keys.h).
#pragma once

#include <array>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "calibration/map_values.h"
#include "editors/mapgrid/map_keys.h"

namespace vela {

struct MapCell {
  int row;
  int column;
  bool operator==(const MapCell&) const = default;
};

// A rectangle of value cells, bounds included.
struct MapCellRect {
  int top;
  int left;
  int bottom;
  int right;
  bool Contains(MapCell cell) const {
    return cell.row >= top && cell.row <= bottom && cell.column >= left && cell.column <= right;
  }
  bool operator==(const MapCellRect&) const = default;
};

// The settings the program gives a grid when it builds a page (names as the program uses them).
struct MapGridSettings {
  int fixedcols = 1;                   // fixed label columns at the left
  int fontsize = 9;                    // text size in points
  int visiblerows = 12;                // rows shown without scrolling
  std::uint32_t backcolor = 0xFFFFFF;  // background, 0xRRGGBB
  std::string gettext0;                // the corner cell's text: the map's title
  // The load axis: const1 is the full span of the MAP sensor type (kPa; 100 on a throttle
  // basis), mapsensordiv how many times the scaling narrows it (1 = the full span), const2 the
  // load at the first load site. The last load site is const1 / mapsensordiv.
  double const1 = 100.0;
  double const2 = 0.0;
  double mapsensordiv = 1.0;
  std::string load_unit = "kPa";  // "kPa" on a MAP basis, "%" on a throttle basis
  int colwidth0 = 0;              // width of the label column (set by the geometry)
  double maxms = 0.0;             // largest fuel value accepted; 0 = 65.535 ms
  int cylinders = 4;              // kept for the program's duty read-out
};

// Map titles, the fixed texts of the header row's last three cells, and the RPM sites.
inline constexpr std::string_view kTitleFuel1 = "Fuel 1";
inline constexpr std::string_view kTitleFuel2 = "Fuel 2";
inline constexpr std::string_view kTitleIgnition = "Ignition";
// The colour legend of the value cells: the three header cells are painted in the cell colour
// of 1000, 750 and 250 per mille of the map's range and carry these texts.
inline constexpr std::array<std::string_view, 3> kHeaderMarkers = {"1000", "750", "250"};
inline constexpr std::array<int, 3> kHeaderMarkerPerMille = {1000, 750, 250};

class MapGridModel {
 public:
  static constexpr int kRows = 12;
  using ChangedHandler = std::function<void(const std::vector<MapCell>&)>;

  // A grid of `load_sites` value columns (at least 1), values 0, labels from the settings.
  explicit MapGridModel(MapKind kind, int load_sites = 9, char decimal_separator = '.');

  MapKind Kind() const { return kind_; }
  int Rows() const { return kRows; }
  int Columns() const { return load_sites_ + 1; }
  int LoadSites() const { return load_sites_; }
  // Sets the column count (label column included, so at least 2). Values of columns that stay
  // are kept, new columns hold 0, the load labels are written afresh.
  void SetColumns(int columns);

  // New settings; the header row is written afresh when the load labels' inputs (const1, const2,
  // mapsensordiv) change.
  const MapGridSettings& Settings() const { return settings_; }
  void SetSettings(const MapGridSettings& settings);
  void SetColWidth0(int width) { settings_.colwidth0 = width; }
  void SetDecimalSeparator(char separator) { separator_ = separator; }

  // Cell text by row and column: labels as set, values formatted with the map's decimals and the
  // computer's separator. Outside the grid: "". Setting a value cell reads the text as a number
  // (false and no change when it is not one); the value is rounded to units and clamped.
  std::string Text(int row, int column) const;
  bool SetText(int row, int column, const std::string& text);

  // Values in display units (milliseconds, degrees) and in cell units.
  bool IsValueCell(int row, int column) const;
  double Value(int row, int column) const;
  int Units(int row, int column) const;
  void SetValue(int row, int column, double value);
  void SetUnits(int row, int column, int units);
  int MinCellUnits() const { return MinUnits(kind_); }
  int MaxCellUnits() const { return MaxUnits(kind_, settings_.maxms); }

  // Whole maps: loading sets the load sites to the map's columns.
  void Load(const MapValues& values);
  MapValues ToMapValues() const;

  // Labels. The RPM label of a row is the engine speed of its RPM site (SetRpmSites; until
  // then the sites of the first RPM spacing). The load label of a column is its load in the
  // axis unit (see LoadSiteValue); the header row shows it except in the last three cells,
  // which hold kHeaderMarkers, so the whole load axis is LoadLabel of every column.
  std::string RpmLabel(int row) const { return Text(row, 0); }
  // The engine speed of a row as a number: its RPM site, or what a label written with SetText
  // reads as; none when the row's label is empty or no number, and outside rows 1 to 11.
  std::optional<double> RowRpm(int row) const;
  void SetRpmSites(const std::array<int, kMapRows>& rpm_of_site);
  const std::array<int, kMapRows>& RpmSitesOfAxis() const { return rpm_sites_; }
  double LoadSiteValue(int column) const;
  std::string LoadLabel(int column) const;
  const std::string& LoadUnit() const { return settings_.load_unit; }
  // The header row from the settings: load labels, then the three markers.
  void WriteDefaultLabels();

  // Cursor and selection (value cells only; everything is clamped into the grid).
  MapCell Current() const { return current_; }
  void SetCurrent(int row, int column);
  MapCellRect Selection() const { return selection_; }
  void Select(MapCellRect rect, MapCell current);
  std::vector<MapCell> SelectedCells() const;
  // Takes the cursor and the selected cells as the grid's view shows them after any change of
  // either (a click, a drag, a key): the selection becomes the rectangle around the selected
  // value cells, or the cursor's cell when none is selected, so that a key or Enter acts on the
  // cells the tuner sees selected.
  void FollowView(MapCell cursor, const std::vector<MapCell>& selected);

  // Modes switched by the tuner: all ranges up (Alt-A) and live tuning (Alt-L).
  bool AllRanges() const { return all_ranges_; }
  void SetAllRanges(bool on) { all_ranges_ = on; }
  bool LiveTuning() const { return live_tuning_; }
  void SetLiveTuning(bool on) { live_tuning_ = on; }

  // Keys of the grid: the value keys, Left/Right, N (next RPM range: one row up) and P (one row
  // down). Returns true when the key belongs to the grid, changed or not.
  bool HandleKey(const MapKeyPress& press);
  // Adds `direction` x the key's step to the cells a key acts on (the selection, and with
  // AllRanges every cell above it in its columns); returns the cells whose value changed.
  std::vector<MapCell> ApplyStep(ValueStep step);
  // With live tuning on, writes `value` into the cells a key acts on; otherwise changes nothing.
  std::vector<MapCell> InsertLiveValue(double value);
  // Moves the cursor to the nearest cell of a fractional (row, column) position.
  void MoveCursorTo(double row, double column);

  // Called with the changed cells after a key or an insert changed one or more cells.
  void SetCellsChangedHandler(ChangedHandler handler) { changed_handler_ = std::move(handler); }

 private:
  std::size_t Index(int row, int column) const;
  std::vector<MapCell> TargetCells() const;
  std::vector<MapCell> ChangeCells(const std::function<int(int)>& new_units);
  void ClampCursor();

  MapKind kind_;
  int load_sites_;
  char separator_;
  MapGridSettings settings_;
  std::vector<int> units_;                      // rows 1..11 x columns 1..load sites
  std::vector<std::string> header_;             // row 0, columns 1..load sites
  std::vector<std::string> rpm_labels_;         // column 0, rows 1..11
  std::vector<std::optional<double>> row_rpm_;  // the RPM those labels give, rows 1..11
  std::array<int, kMapRows> rpm_sites_{};       // RPM of sites 0 (lowest) to 10
  MapCell current_{1, 1};
  MapCellRect selection_{1, 1, 1, 1};
  bool all_ranges_ = false;
  bool live_tuning_ = false;
  ChangedHandler changed_handler_;
};

}  // namespace vela
