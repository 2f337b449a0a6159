#include "datalog/review/math_rename.h"

#include <cctype>

#include "datalog/review/log_span.h"

namespace vela::review {

namespace {

bool RenameNameStart(char c) { return std::isalpha(static_cast<unsigned char>(c)) || c == '_'; }
bool RenameNamePart(char c) { return std::isalnum(static_cast<unsigned char>(c)) || c == '_'; }
bool RenameDigit(char c) { return std::isdigit(static_cast<unsigned char>(c)) != 0; }

// The end of the number at `at` and of a unit written right after it ("0.5s", "200ms").
std::size_t NumberEnd(std::string_view text, std::size_t at) {
  while (at < text.size() && (RenameDigit(text[at]) || text[at] == '.')) ++at;
  while (at < text.size() && RenameNamePart(text[at])) ++at;
  return at;
}

}  // namespace

std::string RenameInExpression(std::string_view expression, std::string_view from,
                               std::string_view to) {
  std::string out;
  out.reserve(expression.size() + to.size());
  std::size_t at = 0;
  while (at < expression.size()) {
    const char c = expression[at];
    std::size_t end = at + 1;
    std::string_view name;
    if (RenameDigit(c) || c == '.') {
      end = NumberEnd(expression, at);
    } else if (RenameNameStart(c)) {
      while (end < expression.size() && RenameNamePart(expression[end])) ++end;
      name = expression.substr(at, end - at);
    } else if (c == '"') {
      const std::size_t close = expression.find('"', at + 1);
      if (close == std::string_view::npos) break;
      end = close + 1;
      name = expression.substr(at + 1, close - at - 1);
    }
    if (!name.empty() && SameName(name, from)) {
      out += QuotedName(to);
    } else {
      out += expression.substr(at, end - at);
    }
    at = end;
  }
  out += expression.substr(at);
  return out;
}

void RenameMathChannel(std::vector<MathChannel>& channels, ChartLayout& layout, std::size_t at,
                       const std::string& to) {
  if (at >= channels.size()) return;
  const std::string from = channels[at].name;
  for (std::size_t later = at + 1; later < channels.size(); ++later) {
    channels[later].expression = RenameInExpression(channels[later].expression, from, to);
  }
  layout.Rename(from, to);
  channels[at].name = to;
}

}  // namespace vela::review
