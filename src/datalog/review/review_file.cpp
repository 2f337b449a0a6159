#include "datalog/review/review_file.h"

#include <algorithm>

#include "base/text_fields.h"
#include "datalog/review/log_span.h"

namespace vela::review {

namespace {

// The name at the start of `rest`, quoted or bare (up to a blank); `rest` moves past it.
std::optional<std::string> TakeName(std::string_view& rest, std::string& name) {
  std::size_t end = 0;
  if (rest.starts_with('"')) {
    end = rest.find('"', 1);
    if (end == std::string_view::npos) return "a quoted name is not closed";
    name = std::string(rest.substr(1, end - 1));
    ++end;
  } else {
    end = std::min(rest.find(' '), rest.size());
    name = std::string(rest.substr(0, end));
  }
  rest.remove_prefix(end);
  return std::nullopt;
}

// A "math" line's name and expression.
std::optional<std::string> ReadMathLine(std::string_view line, MathChannel& channel) {
  std::string_view rest = line.substr(5);
  if (auto problem = TakeName(rest, channel.name)) return problem;
  if (!rest.starts_with(" = ")) return "\" = \" expected after the name";
  channel.expression = std::string(rest.substr(3));
  if (auto refused = RefuseMathName(channel.name)) return refused;
  return std::nullopt;
}

// A "hide" line's name: one of the math channels read before it.
std::optional<std::string> ReadHideLine(std::string_view line, ReviewState& state) {
  std::string_view rest = line.substr(5);
  std::string name;
  if (auto problem = TakeName(rest, name)) return problem;
  if (!rest.empty()) return "nothing may follow the name";
  const bool known = std::any_of(state.math.begin(), state.math.end(),
                                 [&](const MathChannel& m) { return SameName(m.name, name); });
  if (!known) return "no math channel of that name before it";
  state.hidden.push_back(std::move(name));
  return std::nullopt;
}

}  // namespace

std::string ReviewFileText(const ReviewState& state) {
  std::string text = std::string(kReviewFileHeader) + "\n";
  for (const MathChannel& channel : state.math) {
    text += "math " + QuotedName(channel.name) + " = " + channel.expression + "\n";
  }
  for (const std::string& name : state.hidden) text += "hide " + QuotedName(name) + "\n";
  return text + LayoutText(state.layout);
}

ReviewRead ReadReviewFile(std::string_view text) {
  ReviewRead read;
  if (text.size() > kMaxReviewFileBytes) return read;
  if (text.starts_with("\xEF\xBB\xBF")) text.remove_prefix(3);
  LayoutReader layout;
  int number = 0;
  while (!text.empty()) {
    const std::string_view line = TakeLine(text);
    ++number;
    if (!read.recognised) {
      if (line != kReviewFileHeader) return read;
      read.recognised = true;
      continue;
    }
    if (line.empty() || line.starts_with('#')) continue;
    std::optional<std::string> problem;
    if (line.starts_with("math ")) {
      MathChannel channel;
      problem = ReadMathLine(line, channel);
      const bool repeated =
          std::any_of(read.state.math.begin(), read.state.math.end(),
                      [&](const MathChannel& m) { return SameName(m.name, channel.name); });
      if (!problem && repeated) problem = "a math channel of that name is already read";
      if (!problem && read.state.math.size() >= kMaxMathChannels)
        problem = "more than 32 math channels";
      if (!problem) read.state.math.push_back(std::move(channel));
    } else if (line.starts_with("hide ")) {
      problem = ReadHideLine(line, read.state);
    } else {
      problem = layout.Line(line);
    }
    if (problem) read.problems.push_back("line " + std::to_string(number) + ": " + *problem);
  }
  read.state.layout = layout.Finish();
  return read;
}

std::string ReviewPathFor(const std::string& log_path) {
  constexpr std::string_view kLogEnding = ".sl1";
  std::string path = log_path;
  if (path.size() >= kLogEnding.size() &&
      SameName(std::string_view(path).substr(path.size() - kLogEnding.size()), kLogEnding)) {
    path.resize(path.size() - kLogEnding.size());
  }
  return path + ".review";
}

}  // namespace vela::review
