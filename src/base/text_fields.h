// The text of a line or a field as a file or the clipboard gives it: a line without its end
// ("\n" or "\r\n"), a field without the blanks (spaces and tabs) around it and, for a CSV
// field, one pair of surrounding quotes.
#pragma once

#include <algorithm>
#include <string>
#include <string_view>

namespace vela {

// The first line of `text`, taken off it: up to "\n" (or the end), a "\r" before it dropped.
inline std::string_view TakeLine(std::string_view& text) {
  const std::size_t end = std::min(text.find('\n'), text.size());
  std::string_view line = text.substr(0, end);
  text.remove_prefix(std::min(end + 1, text.size()));
  if (line.ends_with('\r')) line.remove_suffix(1);
  return line;
}

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
