// Keys as the map editors see them, free of any toolkit, and the value keys' steps. A map cell is
// held in whole units: microseconds for a fuel cell (the ECU's raw value) and half degrees for an
// ignition cell (the ignition raw step), so that every step lands exactly and never drifts. A
// target AFR cell (the program's own table, never sent) is held in hundredths of an AFR.
#pragma once

#include <optional>

namespace vela {

enum class MapKind { kFuel, kIgnition, kAfr };

enum class MapKey {
  kUp,
  kDown,
  kLeft,
  kRight,
  kPageUp,
  kPageDown,
  kEnter,
  kSpace,
  kLetter,
  kOther
};

struct MapKeyPress {
  MapKey key = MapKey::kOther;
  char letter = 0;  // for kLetter: the letter as typed, either case
  bool shift = false;
  bool alt = false;
  bool control = false;
};

// The six value keys, each raising (+1) or lowering (-1) the selected cells.
enum class ValueKey { kStandard, kFine, kSuperFine, kLarge, kOneMs, kTwoMs };

struct ValueStep {
  ValueKey key;
  int direction;
};

// Up/Down: standard, Shift fine, Alt super fine; PgUp/PgDown: large, Shift 1 ms, Alt 2 ms.
// Control, or Shift and Alt together, make no value key.
std::optional<ValueStep> ValueStepOf(const MapKeyPress& press);

// Units per displayed unit: 1000 microseconds per millisecond, 2 half degrees per degree, 100
// hundredths per AFR.
int UnitsPerDisplayUnit(MapKind kind);

// The step of a value key in cell units; 0 when the key does nothing on that kind of map (the
// 1 ms and 2 ms keys on the ignition map and the target AFR table).
int StepUnits(MapKind kind, ValueKey key);

// Decimals of a cell's text: 3 for fuel (milliseconds), 1 for ignition (degrees), 2 for AFR.
int CellDecimals(MapKind kind);

// The valid range of a cell in units: fuel 0 to 65535 us (0 to 65.535 ms), lowered to `max_ms`
// when that is above 0; ignition -57 to 198 half degrees (-28.5 to 99 degrees, raw 255 to 0).
int MinUnits(MapKind kind);
int MaxUnits(MapKind kind, double max_ms);

}  // namespace vela
