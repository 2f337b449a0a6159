// What is saved with a log for its review: its math channels and its chart layout, in a text
// file beside the log (the log file itself stays as it is). The file:
//
//   VELA review 1
//   math "Injector Duty" = 100 * Fuel * RPM / 120000
//   math Lean = AFR / 10 > 15
//   hide Lean
//   panel RPM "Injector Duty"
//   panel AFR=100:200 Lean
//   select RPM
//
// The first line names the file and its version; then one "math" line per math channel, in
// order (the name as in the layout, " = ", the expression to the end of the line), one "hide"
// line per math channel the tuner turned off, and the layout's lines. UTF-8 or ASCII, lines ending
// in "\n" ("\r\n" read too).
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "datalog/review/chart_layout.h"
#include "datalog/review/math_channels.h"

namespace vela::review {

inline constexpr std::string_view kReviewFileHeader = "VELA review 1";
// A review file larger than this is refused unread.
inline constexpr std::size_t kMaxReviewFileBytes = 64 * 1024;

struct ReviewState {
  std::vector<MathChannel> math;
  std::vector<std::string> hidden;  // math channels not drawn (their check boxes unticked)
  ChartLayout layout;
  bool operator==(const ReviewState&) const = default;
};

std::string ReviewFileText(const ReviewState& state);

// A read review file. `recognised` is false for a file that is too large or does not begin
// with the header (or has a newer version): nothing is taken from it then. Lines that cannot be
// used are skipped, each with its reason in `problems`; a math channel's expression is kept as
// written (its evaluation reports what is wrong with it).
struct ReviewRead {
  bool recognised = false;
  ReviewState state;
  std::vector<std::string> problems;
};
ReviewRead ReadReviewFile(std::string_view text);

// The review file of a log: the log's path with ".sl1" (any case) replaced by ".review", or
// ".review" added when it has no such ending. (Not ".sl1.review": the load dialog lists every
// name matching *.sl*.)
std::string ReviewPathFor(const std::string& log_path);

}  // namespace vela::review
