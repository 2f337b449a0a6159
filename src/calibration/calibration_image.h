// The calibration image: the PC's copy of everything the ECU stores, one block of exactly 1023
// bytes at positions 1 to 1023 (position p is offset p - 1). Multi-byte numbers are
// little-endian: the lower position holds the low byte. The same bytes are uploaded, downloaded
// and stored as a map file.
#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <span>
#include <string_view>
#include <vector>

#include "calibration/map_values.h"
#include "calibration/setup_fields.h"

namespace vela {

inline constexpr int kImageLength = 1023;
inline constexpr int kFuelMap1Start = 1;
inline constexpr int kFuelMap2Start = 375;
inline constexpr int kIgnMapStart = 751;
inline constexpr int kIgnReference = 99;        // degrees of advance of an ignition raw 0
inline constexpr int kFuelMapAreaLength = 374;  // room for 17 load sites
inline constexpr int kIgnMapAreaLength = 66;    // room for 6 load sites
inline constexpr int kDefaultFuelLoadSites = 9;
inline constexpr int kDefaultIgnLoadSites = 5;
// The load sites an image lays its maps out in for a code beyond the valid ones.
inline constexpr int kFuelLoadSitesAboveCodes = 17;
inline constexpr int kIgnLoadSitesAboveCodes = 6;
inline constexpr std::array<int, 2> kGpiStarts = {872, 878};
inline constexpr std::array<int, 3> kGpoStarts = {884, 910, 926};

class CalibrationImage {
 public:
  using Block = std::array<std::uint8_t, kImageLength>;

  // An image of 1023 zero bytes.
  CalibrationImage() = default;

  // Takes `bytes` as the whole block when there are exactly 1023 of them; otherwise returns
  // false and leaves the image as it was.
  bool Assign(std::span<const std::uint8_t> bytes);
  const Block& Bytes() const { return bytes_; }
  std::vector<std::uint8_t> ToVector() const { return {bytes_.begin(), bytes_.end()}; }

  // Positions outside 1..1023 read as 0; writes that would touch one change nothing and return
  // false.
  static constexpr bool IsPosition(int position) {
    return position >= 1 && position <= kImageLength;
  }
  std::uint8_t Byte(int position) const;
  bool SetByte(int position, std::uint8_t value);
  std::uint32_t Read16(int position) const;
  std::uint32_t Read24(int position) const;
  bool Write16(int position, std::uint16_t value);
  bool Write24(int position, std::uint32_t value);  // bits above 23 are dropped

  // Named setup fields. FieldValue gives the little-endian number of a kNumber field and nullopt
  // for an unknown name or a byte group; FieldBytes gives the bytes of any field (empty when
  // the name is unknown).
  std::uint32_t FieldValue(const SetupField& field) const;
  std::optional<std::uint32_t> FieldValue(std::string_view name) const;
  std::vector<std::uint8_t> FieldBytes(std::string_view name) const;

  std::uint8_t TriggerVoltage() const { return Byte(FieldPos("TriggerVoltage")); }
  std::uint8_t HomeVoltage() const { return Byte(FieldPos("HomeVoltage")); }
  std::uint8_t IdlePwmFrequency() const { return Byte(FieldPos("IdlePwmFrequency")); }
  std::uint8_t IgnitionLock() const { return Byte(FieldPos("IgnitionLock")); }
  std::uint8_t FirmwareVersion() const { return Byte(FieldPos("FirmwareVersion")); }
  std::uint8_t FuelSitesSelection() const { return Byte(FieldPos("FuelSitesSelection")); }
  std::uint8_t IgnSites() const { return Byte(FieldPos("IgnSites")); }
  std::uint32_t RevLimit1() const { return FieldValue(SetupFieldNamed("RevLimit1")); }
  std::uint32_t RevLimit2() const { return FieldValue(SetupFieldNamed("RevLimit2")); }
  std::uint32_t EcuNumber() const { return FieldValue(SetupFieldNamed("EcuNumber")); }
  std::uint32_t IdleTargetRpm() const { return FieldValue(SetupFieldNamed("IdleTargetRpm")); }

  // Load sites. The code of byte 995 (bits 0 to 4) gives 9, 13 or 17 fuel load sites and byte
  // 996 gives 5 or 6 ignition load sites; an invalid code gives nullopt. The image then lays its
  // maps out as the editors read them: 17 fuel load sites for any code above 2, 6 ignition load
  // sites for any code above 1, so that a map saved from such an image reads back the same.
  static std::optional<int> FuelLoadSitesOfCode(std::uint8_t fuel_sites_selection);
  static std::optional<int> IgnLoadSitesOfCode(std::uint8_t ign_sites);
  int FuelLoadSites() const;
  int IgnLoadSites() const;

  // Map cells by block row (1 to 11) and column (1 to the load sites); `map` is 1 or 2. The
  // position of a cell's first byte, or 0 when there is no such cell.
  int FuelCellPosition(int map, int block_row, int column) const;
  int IgnCellPosition(int block_row, int column) const;

  // Cell values in milliseconds and degrees. A cell that does not exist reads as 0 and is not
  // written (false). Fuel values beyond 0..65.535 ms are clamped; an ignition value keeps only
  // the low byte of its raw value.
  double FuelMs(int map, int block_row, int column) const;
  bool SetFuelMs(int map, int block_row, int column, double milliseconds);
  double IgnDegrees(int block_row, int column) const;
  bool SetIgnDegrees(int block_row, int column, double degrees);

  // The maps as their editor grids show them (11 grid rows x the load sites).
  MapValues ReadFuelMap(int map) const;
  MapValues ReadIgnMap() const;

  // Writes a grid back into its map area, bottom grid row first, for the image's current number
  // of load sites (missing grid cells count as 0), and zeroes the rest of the area.
  bool WriteFuelMap(int map, const MapValues& grid);
  void WriteIgnMap(const MapValues& grid);

 private:
  Block bytes_{};
};

// How many map cells (fuel cells of both maps and ignition cells, each on its image's own layout)
// differ between two images; a cell that only one of them has counts as differing.
int DifferingMapCells(const CalibrationImage& a, const CalibrationImage& b);

// A fresh block for a download or a map file: the two fuel maps and the ignition map from the
// editors' grids, every setup field copied from `setup_source` (whose bytes 995 and 996 decide
// the map layouts), and zero bytes everywhere else.
CalibrationImage BuildImage(const MapValues& fuel_map1, const MapValues& fuel_map2,
                            const MapValues& ign_map, const CalibrationImage& setup_source);

}  // namespace vela
