#include "editors/mapgrid/workbench_keys.h"

#include <string_view>

namespace vela {

namespace {

GridChord ExtensionOf(MapKey key) {
  switch (key) {
    case MapKey::kUp:
      return GridChord::kExtendUp;
    case MapKey::kDown:
      return GridChord::kExtendDown;
    case MapKey::kLeft:
      return GridChord::kExtendLeft;
    case MapKey::kRight:
      return GridChord::kExtendRight;
    default:
      return GridChord::kNone;
  }
}

GridChord ControlLetterChord(char letter, bool shift) {
  switch (letter >= 'a' && letter <= 'z' ? static_cast<char>(letter - 'a' + 'A') : letter) {
    case 'A':
      return shift ? GridChord::kNone : GridChord::kSelectAll;
    case 'B':
      return shift ? GridChord::kNone : GridChord::kInterpolateBoth;
    case 'R':
      return shift ? GridChord::kInterpolateColumns : GridChord::kInterpolateRows;
    case 'W':
      return shift ? GridChord::kNone : GridChord::kSmooth;
    case 'E':
      return shift ? GridChord::kNone : GridChord::kFill;
    case 'C':
      return shift ? GridChord::kCopyWithAxes : GridChord::kCopy;
    case 'V':
      return shift ? GridChord::kNone : GridChord::kPaste;
    default:
      return GridChord::kNone;
  }
}

}  // namespace

GridChord GridChordOf(const MapKeyPress& press, char typed) {
  if (press.alt) return GridChord::kNone;
  if (press.control) {
    if (press.key == MapKey::kLetter) return ControlLetterChord(press.letter, press.shift);
    return press.shift ? ExtensionOf(press.key) : GridChord::kNone;
  }
  constexpr std::string_view kOpeners = "=0123456789*/+-";
  if (typed != 0 && kOpeners.find(typed) != std::string_view::npos) return GridChord::kOpenLine;
  return GridChord::kNone;
}

}  // namespace vela
