#include "calibration/calibration_image.h"

#include <algorithm>

#include "calibration/conversions.h"

namespace vela {

namespace {

constexpr std::uint8_t kFuelSitesCodeMask = 0x1F;  // bits 5 to 7 hold the map selection

int FuelMapStart(int map) {
  if (map == 1) return kFuelMap1Start;
  if (map == 2) return kFuelMap2Start;
  return 0;
}

bool HoldsCell(int block_row, int column, int load_sites) {
  return block_row >= 1 && block_row <= kMapRows && column >= 1 && column <= load_sites;
}

}  // namespace

bool CalibrationImage::Assign(std::span<const std::uint8_t> bytes) {
  if (bytes.size() != bytes_.size()) return false;
  std::copy(bytes.begin(), bytes.end(), bytes_.begin());
  return true;
}

std::uint8_t CalibrationImage::Byte(int position) const {
  return IsPosition(position) ? bytes_[static_cast<std::size_t>(position - 1)] : 0;
}

bool CalibrationImage::SetByte(int position, std::uint8_t value) {
  if (!IsPosition(position)) return false;
  bytes_[static_cast<std::size_t>(position - 1)] = value;
  return true;
}

std::uint32_t CalibrationImage::Read16(int position) const {
  return Byte(position) | (std::uint32_t{Byte(position + 1)} << 8);
}

std::uint32_t CalibrationImage::Read24(int position) const {
  return Read16(position) | (std::uint32_t{Byte(position + 2)} << 16);
}

bool CalibrationImage::Write16(int position, std::uint16_t value) {
  if (!IsPosition(position) || !IsPosition(position + 1)) return false;
  SetByte(position, static_cast<std::uint8_t>(value & 0xFF));
  SetByte(position + 1, static_cast<std::uint8_t>(value >> 8));
  return true;
}

bool CalibrationImage::Write24(int position, std::uint32_t value) {
  if (!IsPosition(position) || !IsPosition(position + 2)) return false;
  Write16(position, static_cast<std::uint16_t>(value & 0xFFFF));
  SetByte(position + 2, static_cast<std::uint8_t>((value >> 16) & 0xFF));
  return true;
}

std::uint32_t CalibrationImage::FieldValue(const SetupField& field) const {
  std::uint32_t value = 0;
  for (int i = std::min(field.width, 4) - 1; i >= 0; --i) {
    value = (value << 8) | Byte(field.position + i);
  }
  return value;
}

std::optional<std::uint32_t> CalibrationImage::FieldValue(std::string_view name) const {
  const std::optional<SetupField> field = FindSetupField(name);
  if (!field || field->kind != FieldKind::kNumber) return std::nullopt;
  return FieldValue(*field);
}

std::vector<std::uint8_t> CalibrationImage::FieldBytes(std::string_view name) const {
  const std::optional<SetupField> field = FindSetupField(name);
  if (!field) return {};
  const auto first = bytes_.begin() + (field->position - 1);
  return {first, first + field->width};
}

std::optional<int> CalibrationImage::FuelLoadSitesOfCode(std::uint8_t fuel_sites_selection) {
  switch (fuel_sites_selection & kFuelSitesCodeMask) {
    case 0:
      return 9;
    case 1:
      return 13;
    case 2:
      return 17;
    default:
      return std::nullopt;
  }
}

std::optional<int> CalibrationImage::IgnLoadSitesOfCode(std::uint8_t ign_sites) {
  if (ign_sites == 0) return 5;
  if (ign_sites == 1) return 6;
  return std::nullopt;
}

int CalibrationImage::FuelLoadSites() const {
  return FuelLoadSitesOfCode(FuelSitesSelection()).value_or(kFuelLoadSitesAboveCodes);
}

int CalibrationImage::IgnLoadSites() const {
  return IgnLoadSitesOfCode(IgnSites()).value_or(kIgnLoadSitesAboveCodes);
}

int CalibrationImage::FuelCellPosition(int map, int block_row, int column) const {
  const int start = FuelMapStart(map);
  const int sites = FuelLoadSites();
  if (start == 0 || !HoldsCell(block_row, column, sites)) return 0;
  return start + 2 * ((block_row - 1) * sites + (column - 1));
}

int CalibrationImage::IgnCellPosition(int block_row, int column) const {
  const int sites = IgnLoadSites();
  if (!HoldsCell(block_row, column, sites)) return 0;
  return kIgnMapStart + (block_row - 1) * sites + (column - 1);
}

double CalibrationImage::FuelMs(int map, int block_row, int column) const {
  const int position = FuelCellPosition(map, block_row, column);
  return position == 0 ? 0.0 : FuelMsFromRaw(static_cast<int>(Read16(position)));
}

bool CalibrationImage::SetFuelMs(int map, int block_row, int column, double milliseconds) {
  const int position = FuelCellPosition(map, block_row, column);
  return position != 0 && Write16(position, RawFromFuelMs(milliseconds));
}

double CalibrationImage::IgnDegrees(int block_row, int column) const {
  const int position = IgnCellPosition(block_row, column);
  return position == 0 ? 0.0 : IgnDegreesFromRaw(Byte(position));
}

bool CalibrationImage::SetIgnDegrees(int block_row, int column, double degrees) {
  const int position = IgnCellPosition(block_row, column);
  return position != 0 && SetByte(position, RawFromIgnDegrees(degrees));
}

// Walks the cells in block order: p from the start in steps of 2 over 22 x sites bytes.
MapValues CalibrationImage::ReadFuelMap(int map) const {
  const int start = FuelMapStart(map);
  const int sites = FuelLoadSites();
  MapValues grid(sites);
  if (start == 0) return grid;
  for (int p = start; p <= start + 22 * sites - 1; p += 2) {
    const int block_row = (p - start) / (2 * sites) + 1;
    const int column = (p - start) / 2 - (block_row - 1) * sites + 1;
    grid.Set(GridRowOfBlockRow(block_row), column, FuelMsFromRaw(static_cast<int>(Read16(p))));
  }
  return grid;
}

MapValues CalibrationImage::ReadIgnMap() const {
  const int sites = IgnLoadSites();
  MapValues grid(sites);
  for (int p = kIgnMapStart; p <= kIgnMapStart + 11 * sites - 1; ++p) {
    const int block_row = (p - kIgnMapStart) / sites + 1;
    const int column = (p - kIgnMapStart) - (block_row - 1) * sites + 1;
    grid.Set(GridRowOfBlockRow(block_row), column, IgnDegreesFromRaw(Byte(p)));
  }
  return grid;
}

// Appends the cells' encodings from grid row 11 up to row 1, each row left to right, which is
// the block's own order; the unused tail of the area stays zero.
bool CalibrationImage::WriteFuelMap(int map, const MapValues& grid) {
  const int start = FuelMapStart(map);
  if (start == 0) return false;
  std::fill_n(bytes_.begin() + (start - 1), kFuelMapAreaLength, std::uint8_t{0});
  int position = start;
  for (int grid_row = kMapRows; grid_row >= 1; --grid_row) {
    for (int column = 1; column <= FuelLoadSites(); ++column) {
      Write16(position, RawFromFuelMs(grid.At(grid_row, column)));
      position += 2;
    }
  }
  return true;
}

void CalibrationImage::WriteIgnMap(const MapValues& grid) {
  std::fill_n(bytes_.begin() + (kIgnMapStart - 1), kIgnMapAreaLength, std::uint8_t{0});
  int position = kIgnMapStart;
  for (int grid_row = kMapRows; grid_row >= 1; --grid_row) {
    for (int column = 1; column <= IgnLoadSites(); ++column) {
      SetByte(position++, RawFromIgnDegrees(grid.At(grid_row, column)));
    }
  }
}

CalibrationImage BuildImage(const MapValues& fuel_map1, const MapValues& fuel_map2,
                            const MapValues& ign_map, const CalibrationImage& setup_source) {
  CalibrationImage image;
  for (const SetupField& field : kSetupFields) {
    for (int position = field.position; position <= field.LastPosition(); ++position) {
      image.SetByte(position, setup_source.Byte(position));
    }
  }
  image.WriteFuelMap(1, fuel_map1);
  image.WriteFuelMap(2, fuel_map2);
  image.WriteIgnMap(ign_map);
  return image;
}

int DifferingMapCells(const CalibrationImage& a, const CalibrationImage& b) {
  int differing = 0;
  const auto count = [&](int columns, auto position_in, auto value_at) {
    for (int row = 1; row <= kMapRows; ++row) {
      for (int column = 1; column <= columns; ++column) {
        const int in_a = position_in(a, row, column);
        const int in_b = position_in(b, row, column);
        if ((in_a == 0) != (in_b == 0) || value_at(a, in_a) != value_at(b, in_b)) ++differing;
      }
    }
  };
  const auto read16 = [](const CalibrationImage& image, int position) {
    return position == 0 ? 0u : image.Read16(position);
  };
  const auto read8 = [](const CalibrationImage& image, int position) {
    return position == 0 ? 0u : static_cast<std::uint32_t>(image.Byte(position));
  };
  for (int map = 1; map <= 2; ++map) {
    count(
        std::max(a.FuelLoadSites(), b.FuelLoadSites()),
        [map](const CalibrationImage& image, int row, int column) {
          return image.FuelCellPosition(map, row, column);
        },
        read16);
  }
  count(
      std::max(a.IgnLoadSites(), b.IgnLoadSites()),
      [](const CalibrationImage& image, int row, int column) {
        return image.IgnCellPosition(row, column);
      },
      read8);
  return differing;
}

}  // namespace vela
