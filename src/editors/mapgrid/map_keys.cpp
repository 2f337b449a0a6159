#include "editors/mapgrid/map_keys.h"

#include <algorithm>
#include <cmath>

#include "calibration/rounding.h"

namespace vela {

namespace {

constexpr int kMaxFuelUnits = 65535;
constexpr int kMinIgnUnits = -57;  // -28.5 degrees, raw 255
constexpr int kMaxIgnUnits = 198;  // 99 degrees, raw 0
constexpr int kMinAfrUnits = 600;  // 6.00 AFR
constexpr int kMaxAfrUnits = 2500;

// AFR steps: 0.1 standard, 0.01 fine and super fine (nothing finer is kept), 0.5 large.
int AfrStepUnits(ValueKey key) {
  switch (key) {
    case ValueKey::kStandard:
      return 10;
    case ValueKey::kFine:
    case ValueKey::kSuperFine:
      return 1;
    case ValueKey::kLarge:
      return 50;
    case ValueKey::kOneMs:
    case ValueKey::kTwoMs:
      return 0;
  }
  return 0;
}

}  // namespace

std::optional<ValueStep> ValueStepOf(const MapKeyPress& press) {
  if (press.control || (press.shift && press.alt)) return std::nullopt;
  const bool arrow = press.key == MapKey::kUp || press.key == MapKey::kDown;
  const bool page = press.key == MapKey::kPageUp || press.key == MapKey::kPageDown;
  if (!arrow && !page) return std::nullopt;
  const int direction = (press.key == MapKey::kUp || press.key == MapKey::kPageUp) ? 1 : -1;
  if (arrow) {
    if (press.shift) return ValueStep{ValueKey::kFine, direction};
    if (press.alt) return ValueStep{ValueKey::kSuperFine, direction};
    return ValueStep{ValueKey::kStandard, direction};
  }
  if (press.shift) return ValueStep{ValueKey::kOneMs, direction};
  if (press.alt) return ValueStep{ValueKey::kTwoMs, direction};
  return ValueStep{ValueKey::kLarge, direction};
}

int UnitsPerDisplayUnit(MapKind kind) {
  if (kind == MapKind::kAfr) return 100;
  return kind == MapKind::kFuel ? 1000 : 2;
}

int StepUnits(MapKind kind, ValueKey key) {
  if (kind == MapKind::kAfr) return AfrStepUnits(key);
  if (kind == MapKind::kFuel) {
    switch (key) {
      case ValueKey::kStandard:
        return 100;  // 0.1 ms
      case ValueKey::kFine:
        return 10;  // 0.01 ms
      case ValueKey::kSuperFine:
        return 1;  // 0.001 ms, the raw step
      case ValueKey::kLarge:
        return 500;  // 0.5 ms
      case ValueKey::kOneMs:
        return 1000;
      case ValueKey::kTwoMs:
        return 2000;
    }
    return 0;
  }
  switch (key) {
    case ValueKey::kStandard:
      return 2;  // 1 degree
    case ValueKey::kFine:
      return 1;  // 0.5 degree, the raw step
    case ValueKey::kSuperFine:
      return 1;  // 0.5 degree: nothing finer is stored
    case ValueKey::kLarge:
      return 10;  // 5 degrees
    case ValueKey::kOneMs:
    case ValueKey::kTwoMs:
      return 0;
  }
  return 0;
}

int CellDecimals(MapKind kind) {
  if (kind == MapKind::kAfr) return 2;
  return kind == MapKind::kFuel ? 3 : 1;
}

int MinUnits(MapKind kind) {
  if (kind == MapKind::kAfr) return kMinAfrUnits;
  return kind == MapKind::kFuel ? 0 : kMinIgnUnits;
}

int MaxUnits(MapKind kind, double max_ms) {
  if (kind == MapKind::kIgnition) return kMaxIgnUnits;
  if (kind == MapKind::kAfr) return kMaxAfrUnits;
  if (!(max_ms > 0.0)) return kMaxFuelUnits;
  const double units = RoundHalfEven(std::min(max_ms, 65.535) * 1000.0);
  return static_cast<int>(units);
}

}  // namespace vela
