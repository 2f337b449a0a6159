// The text of a field as a file or the clipboard gives it: blanks (spaces and tabs) around it
// dropped, and for a CSV field one pair of surrounding quotes.
#pragma once

#include <string>
#include <string_view>

namespace vela {

inline std::string_view TrimBlanks(std::string_view text) {
  const auto first = text.find_first_not_of(" \t");
  if (first == std::string_view::npos) return {};
  const auto last = text.find_last_not_of(" \t");
  return text.substr(first, last - first + 1);
}

// A CSV field without its blanks and one pair of quotes around it ("" inside is left as it is).
inline std::string UnquotedField(std::string_view field) {
  field = TrimBlanks(field);
  if (field.size() >= 2 && field.front() == '"' && field.back() == '"') {
    field = field.substr(1, field.size() - 2);
  }
  return std::string(field);
}

}  // namespace vela
