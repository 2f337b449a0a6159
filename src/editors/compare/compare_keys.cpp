#include "editors/compare/compare_keys.h"

#include <string_view>

namespace vela {

bool ChangesMapValues(const MapKeyPress& press, char typed) {
  if (ValueStepOf(press)) return true;
  if (press.key == MapKey::kEnter) return true;
  if (press.control && !press.alt && press.key == MapKey::kLetter) {
    const char letter =
        press.letter >= 'a' ? static_cast<char>(press.letter - 'a' + 'A') : press.letter;
    return std::string_view("VBRWE").find(letter) != std::string_view::npos;
  }
  if (press.control || press.alt || typed == 0) return false;
  return std::string_view("0123456789=*/+-.,").find(typed) != std::string_view::npos;
}

}  // namespace vela
