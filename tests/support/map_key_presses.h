// Key presses as the map editors receive them, for the tests of their key handling.
#pragma once

#include "editors/mapgrid/map_keys.h"

namespace vela::testing {

inline MapKeyPress KeyPress(MapKey key, bool shift = false, bool alt = false,
                            bool control = false) {
  return {key, 0, shift, alt, control};
}

inline MapKeyPress LetterPress(char letter, bool shift = false, bool alt = false,
                               bool control = false) {
  return {MapKey::kLetter, letter, shift, alt, control};
}

}  // namespace vela::testing
