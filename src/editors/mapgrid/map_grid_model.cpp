#include "editors/mapgrid/map_grid_model.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <optional>

#include "calibration/conversions.h"
#include "calibration/map_axes.h"
#include "calibration/rounding.h"

namespace vela {

namespace {

// Reads number text with `separator` as the decimal separator; blanks around it are allowed.
std::optional<double> ReadNumber(std::string text, char separator) {
  std::replace(text.begin(), text.end(), separator, '.');
  const auto first = text.find_first_not_of(" \t");
  if (first == std::string::npos) return std::nullopt;
  const auto last = text.find_last_not_of(" \t");
  std::string_view view(text.data() + first, last - first + 1);
  if (!view.empty() && view.front() == '+') view.remove_prefix(1);
  double value = 0.0;
  const auto [end, error] = std::from_chars(view.data(), view.data() + view.size(), value);
  if (error != std::errc() || end != view.data() + view.size() || !std::isfinite(value)) {
    return std::nullopt;
  }
  return value;
}

}  // namespace

MapGridModel::MapGridModel(MapKind kind, int load_sites, char decimal_separator)
    : kind_(kind), load_sites_(std::max(load_sites, 1)), separator_(decimal_separator) {
  units_.assign(static_cast<std::size_t>(kMapRows * load_sites_), 0);
  rpm_labels_.resize(kMapRows);
  row_rpm_.resize(kMapRows);
  SetRpmSites(RpmSites(0));
  WriteDefaultLabels();
}

void MapGridModel::SetRpmSites(const std::array<int, kMapRows>& rpm_of_site) {
  rpm_sites_ = rpm_of_site;
  for (int row = 1; row <= kMapRows; ++row) {
    const int rpm = rpm_of_site[BlockRowOfGridRow(row) - 1];
    rpm_labels_[row - 1] = std::to_string(rpm);
    row_rpm_[row - 1] = rpm;
  }
}

std::optional<double> MapGridModel::RowRpm(int row) const {
  if (row < 1 || row > kMapRows) return std::nullopt;
  return row_rpm_[row - 1];
}

void MapGridModel::SetColumns(int columns) {
  const int sites = std::max(columns - 1, 1);
  std::vector<int> units(static_cast<std::size_t>(kMapRows * sites), 0);
  for (int row = 1; row <= kMapRows; ++row) {
    for (int column = 1; column <= std::min(sites, load_sites_); ++column) {
      units[static_cast<std::size_t>((row - 1) * sites + column - 1)] = Units(row, column);
    }
  }
  load_sites_ = sites;
  units_ = std::move(units);
  WriteDefaultLabels();
  ClampCursor();
}

void MapGridModel::SetSettings(const MapGridSettings& settings) {
  const bool loads_moved =
      settings.const1 != settings_.const1 || settings.const2 != settings_.const2 ||
      settings.mapsensordiv != settings_.mapsensordiv || settings.load_unit != settings_.load_unit;
  settings_ = settings;
  if (loads_moved) WriteDefaultLabels();
}

std::size_t MapGridModel::Index(int row, int column) const {
  return static_cast<std::size_t>((row - 1) * load_sites_ + (column - 1));
}

bool MapGridModel::IsValueCell(int row, int column) const {
  return row >= 1 && row <= kMapRows && column >= 1 && column <= load_sites_;
}

std::string MapGridModel::Text(int row, int column) const {
  if (row == 0 && column == 0) return settings_.gettext0;
  if (row == 0 && column >= 1 && column <= load_sites_) return header_[column - 1];
  if (column == 0 && row >= 1 && row <= kMapRows) return rpm_labels_[row - 1];
  if (!IsValueCell(row, column)) return "";
  return FormatFixed(Value(row, column), CellDecimals(kind_), separator_, nullptr);
}

bool MapGridModel::SetText(int row, int column, const std::string& text) {
  if (row == 0 && column == 0) {
    settings_.gettext0 = text;
  } else if (row == 0 && column >= 1 && column <= load_sites_) {
    header_[column - 1] = text;
  } else if (column == 0 && row >= 1 && row <= kMapRows) {
    rpm_labels_[row - 1] = text;
    row_rpm_[row - 1] = ReadNumber(text, separator_);
  } else if (IsValueCell(row, column)) {
    const std::optional<double> value = ReadNumber(text, separator_);
    if (!value) return false;
    SetValue(row, column, *value);
  } else {
    return false;
  }
  return true;
}

double MapGridModel::Value(int row, int column) const {
  return static_cast<double>(Units(row, column)) / UnitsPerDisplayUnit(kind_);
}

int MapGridModel::Units(int row, int column) const {
  return IsValueCell(row, column) ? units_[Index(row, column)] : 0;
}

void MapGridModel::SetValue(int row, int column, double value) {
  if (std::isnan(value)) return;
  const double units = RoundHalfEven(value * UnitsPerDisplayUnit(kind_));
  const double clamped =
      std::clamp(units, static_cast<double>(MinCellUnits()), static_cast<double>(MaxCellUnits()));
  SetUnits(row, column, static_cast<int>(clamped));
}

void MapGridModel::SetUnits(int row, int column, int units) {
  if (!IsValueCell(row, column)) return;
  units_[Index(row, column)] = std::clamp(units, MinCellUnits(), MaxCellUnits());
}

void MapGridModel::Load(const MapValues& values) {
  if (values.Columns() >= 1 && values.Columns() != load_sites_) {
    SetColumns(values.Columns() + 1);
  }
  for (int row = 1; row <= kMapRows; ++row) {
    for (int column = 1; column <= load_sites_; ++column) {
      SetValue(row, column, values.At(row, column));
    }
  }
}

MapValues MapGridModel::ToMapValues() const {
  MapValues values(load_sites_);
  for (int row = 1; row <= kMapRows; ++row) {
    for (int column = 1; column <= load_sites_; ++column) {
      values.Set(row, column, Value(row, column));
    }
  }
  return values;
}

double MapGridModel::LoadSiteValue(int column) const {
  const double divisor = settings_.mapsensordiv > 0.0 ? settings_.mapsensordiv : 1.0;
  const double top = settings_.const1 / divisor;
  if (load_sites_ <= 1) return settings_.const2;
  const double share = static_cast<double>(column - 1) / (load_sites_ - 1);
  return settings_.const2 + (top - settings_.const2) * share;
}

std::string MapGridModel::LoadLabel(int column) const {
  if (column < 1 || column > load_sites_) return "";
  return FormatFixed(RoundHalfEven(LoadSiteValue(column)), 0, separator_, nullptr);
}

void MapGridModel::WriteDefaultLabels() {
  header_.resize(static_cast<std::size_t>(load_sites_));
  for (int column = 1; column <= load_sites_; ++column) header_[column - 1] = LoadLabel(column);
  for (int i = 0; i < static_cast<int>(kHeaderMarkers.size()); ++i) {
    const int column = load_sites_ - static_cast<int>(kHeaderMarkers.size()) + 1 + i;
    if (column >= 1) header_[column - 1] = std::string(kHeaderMarkers[i]);
  }
}

void MapGridModel::SetCurrent(int row, int column) {
  current_ = {std::clamp(row, 1, kMapRows), std::clamp(column, 1, load_sites_)};
  selection_ = {current_.row, current_.column, current_.row, current_.column};
}

void MapGridModel::Select(MapCellRect rect, MapCell current) {
  const auto row = [](int r) { return std::clamp(r, 1, kMapRows); };
  const auto column = [this](int c) { return std::clamp(c, 1, load_sites_); };
  selection_ = {row(std::min(rect.top, rect.bottom)), column(std::min(rect.left, rect.right)),
                row(std::max(rect.top, rect.bottom)), column(std::max(rect.left, rect.right))};
  current_ = {row(current.row), column(current.column)};
}

std::vector<MapCell> MapGridModel::SelectedCells() const {
  std::vector<MapCell> cells;
  for (int row = selection_.top; row <= selection_.bottom; ++row) {
    for (int column = selection_.left; column <= selection_.right; ++column) {
      cells.push_back({row, column});
    }
  }
  return cells;
}

void MapGridModel::FollowView(MapCell cursor, const std::vector<MapCell>& selected) {
  MapCellRect rect{cursor.row, cursor.column, cursor.row, cursor.column};
  bool any = false;
  for (const MapCell& cell : selected) {
    if (!IsValueCell(cell.row, cell.column)) continue;
    if (!any) rect = {cell.row, cell.column, cell.row, cell.column};
    any = true;
    rect = {std::min(rect.top, cell.row), std::min(rect.left, cell.column),
            std::max(rect.bottom, cell.row), std::max(rect.right, cell.column)};
  }
  Select(rect, cursor);
}

void MapGridModel::ClampCursor() {
  const MapCellRect rect = selection_;
  Select(rect, current_);
}

bool MapGridModel::HandleKey(const MapKeyPress& press) {
  if (const std::optional<ValueStep> step = ValueStepOf(press)) {
    ApplyStep(*step);
    return true;
  }
  if (press.control || press.alt) return false;
  switch (press.key) {
    case MapKey::kLeft:
      SetCurrent(current_.row, current_.column - 1);
      return true;
    case MapKey::kRight:
      SetCurrent(current_.row, current_.column + 1);
      return true;
    case MapKey::kLetter:
      break;
    default:
      return false;
  }
  if (press.letter == 'N' || press.letter == 'n') {
    SetCurrent(current_.row - 1, current_.column);
    return true;
  }
  if (press.letter == 'P' || press.letter == 'p') {
    SetCurrent(current_.row + 1, current_.column);
    return true;
  }
  return false;
}

std::vector<MapCell> MapGridModel::TargetCells() const {
  if (!all_ranges_) return SelectedCells();
  std::vector<MapCell> cells;
  for (int row = 1; row <= selection_.bottom; ++row) {
    for (int column = selection_.left; column <= selection_.right; ++column) {
      cells.push_back({row, column});
    }
  }
  return cells;
}

std::vector<MapCell> MapGridModel::ChangeCells(const std::function<int(int)>& new_units) {
  std::vector<MapCell> changed;
  for (const MapCell& cell : TargetCells()) {
    int& units = units_[Index(cell.row, cell.column)];
    const int updated = new_units(units);
    if (updated == units) continue;
    units = updated;
    changed.push_back(cell);
  }
  if (!changed.empty() && changed_handler_) changed_handler_(changed);
  return changed;
}

std::vector<MapCell> MapGridModel::ApplyStep(ValueStep step) {
  const int size = StepUnits(kind_, step.key);
  if (size == 0) return {};
  const int low = MinCellUnits();
  const int high = MaxCellUnits();
  // A cell beyond the range (left there when maxms was lowered) is never pushed further out;
  // a key towards the range moves it by one step.
  return ChangeCells([&](int units) {
    if (step.direction > 0) return units >= high ? units : std::min(units + size, high);
    return units <= low ? units : std::max(units - size, low);
  });
}

std::vector<MapCell> MapGridModel::InsertLiveValue(double value) {
  if (!live_tuning_ || std::isnan(value)) return {};
  const double units =
      std::clamp(RoundHalfEven(value * UnitsPerDisplayUnit(kind_)),
                 static_cast<double>(MinCellUnits()), static_cast<double>(MaxCellUnits()));
  return ChangeCells([&](int) { return static_cast<int>(units); });
}

void MapGridModel::MoveCursorTo(double row, double column) {
  if (std::isnan(row) || std::isnan(column)) return;
  SetCurrent(static_cast<int>(std::lround(std::clamp(row, 0.0, 12.0))),
             static_cast<int>(std::lround(std::clamp(column, 0.0, 1.0 + load_sites_))));
}

}  // namespace vela
