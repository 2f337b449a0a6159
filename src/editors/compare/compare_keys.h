// Keys while a map page shows the other side's values or the difference: what is shown there is
// not what is edited, so a key that would change the editors' values does nothing and says why.
// Moving, selecting, copying, undo and the window's keys go on as ever.
#pragma once

#include "editors/mapgrid/map_keys.h"

namespace vela {

// True for a key that changes a map's values: a value key, Enter (the live value), a character
// that opens the typed operation line (a digit, "=", "*", "/", "+", "-", a decimal mark), and
// Ctrl with V, B, R, W or E (paste, interpolate, smooth, fill). `typed` is the character the key
// types, 0 for none.
bool ChangesMapValues(const MapKeyPress& press, char typed);

}  // namespace vela
