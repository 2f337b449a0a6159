// The axes of the maps as the calibration sets them: the engine speed of each RPM site (byte
// 946, `RpmSitesSetup`), and the load of each load site, which follows the load sensing (bit 6
// of byte 955) and, on a MAP basis, the installed MAP sensor and its scaling (byte 956). The map
// grids label their rows and columns with these values, the duty cap reads its RPM from them,
// the cross-hair places the live engine on them and the simulated ECU looks its cells up with
// them, so all of them agree on where a cell lies.
#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <span>
#include <string_view>
#include <vector>

#include "calibration/map_values.h"

namespace vela {

// The `ComboSiteRPM` entries: a spacing and the top speed each entry names.
inline constexpr std::array<std::string_view, 4> kRpmSiteChoiceTexts = {
    "750 RPM Spacing  (7000RPM)", "900 RPM Spacing (8200RPM)", "1000 RPM Spacing (9000RPM)",
    "1200 RPM Spacing (10000RPM)"};
inline constexpr std::array<int, 4> kRpmSiteSpacings = {750, 900, 1000, 1200};
inline constexpr std::array<int, 4> kRpmSiteTops = {7000, 8200, 9000, 10000};

// Engine speed of RPM sites 0 (lowest, the bottom grid row) to 10 (the top row) for a
// `RpmSitesSetup` code; an invalid code (above 3) is read as code 0. The top site is the speed
// the entry names; below it the sites step down by the spacing as long as they stay at one
// spacing or more; the sites left below those are spread evenly from 0 RPM up (rounded to the
// whole RPM). So 750 RPM spacing runs 0, 500, 1000, 1750, ... 7000 and 1200 RPM spacing runs 0,
// 533, 1067, 1600, 2800, ... 10000.
std::array<int, kMapRows> RpmSites(int rpm_sites_code);

// The MAP sensor types of `ComboMAP` (kept in bits 0 to 2 of byte 955) and the scalings of
// `ComboMAPScale` (byte 956).
struct MapScaleEntry {
  std::uint8_t code;  // the scaling code of byte 956 (the lowest of an open-ended entry)
  double span_bar;    // the pressure the map's load axis spans, 0 to span
  std::string_view text;
};
struct MapSensorType {
  std::string_view name;
  std::span<const MapScaleEntry> scales;  // in `ComboMAPScale` order; entry 0 is the full span
};
inline constexpr int kMapSensorTypes = 6;
inline constexpr std::array<std::string_view, kMapSensorTypes> kMapSensorTexts = {
    " 1 Bar Sensor (Naturally Aspirated)",
    " 2 Bar Sensor",
    " 2.5 Bar Sensor",
    " 3 Bar Sensor",
    " 4 Bar Sensor",
    " 5 Bar Sensor"};
inline constexpr std::uint8_t kMapSensorTypeBits = 0x07;
// Type 0 also stands for no selection (kNoEntry); an unknown type counts as type 0.
const MapSensorType& MapSensorTypeOf(int sensor_type);
// The entry that scaling code `code` selects for a type, or nullopt when the type does not take
// it (type 4's last entry takes every code from 240 up).
std::optional<int> MapScaleEntryOfCode(int sensor_type, std::uint8_t code);
// The scaling code of an entry, or nullopt when the type has no such entry.
std::optional<std::uint8_t> MapScaleCodeOfEntry(int sensor_type, int entry);

// The load axis of the maps.
enum class LoadBasis { kThrottle, kMap };
struct LoadAxis {
  LoadBasis basis = LoadBasis::kMap;
  double top = 100.0;  // the last load site: kPa on a MAP basis, percent of throttle otherwise
  std::string_view unit() const { return basis == LoadBasis::kMap ? "kPa" : "%"; }
};
// From byte 955's load sensing bit, the MAP sensor type and byte 956: on a MAP basis the sites
// run evenly from 0 kPa to the span of the scaling (100 kPa a bar), the type's full span when
// the code is not one of its scalings; on a throttle basis from 0 to 100 %.
LoadAxis LoadAxisOf(bool map_based, int sensor_type, std::uint8_t scaling_code);
// The load of each of `sites` load sites, first to last, evenly from 0 to the axis top.
std::vector<double> LoadSiteValues(const LoadAxis& axis, int sites);

// Where a value lies between increasing axis points, as a fractional zero-based index, clamped
// into the axis (0 for an empty axis).
double AxisPosition(std::span<const double> points, double value);

}  // namespace vela
