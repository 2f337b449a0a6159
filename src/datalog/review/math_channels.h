// The math channels of a log: each a name and an expression, evaluated in order over the whole
// log into a column that is shown, scaled and exported like a recorded channel. A channel may
// use the recorded channels and the math channels before it.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "datalog/datalog_log.h"
#include "datalog/review/math_expression.h"

namespace vela::review {

struct MathChannel {
  std::string name;
  std::string expression;
  bool operator==(const MathChannel&) const = default;
};

// A math channel's name: 1 to kMaxMathNameLength characters, no double quote, no control
// character, not a recorded channel's name nor a function's.
inline constexpr std::size_t kMaxMathNameLength = 40;
inline constexpr std::size_t kMaxMathChannels = 32;
std::optional<std::string> RefuseMathName(std::string_view name);

// The defaults. Injector duty in percent from the injection time and engine speed:
// 100 x Fuel x RPM / the duty base (milliseconds x RPM at 100 %: 120000 x B / A of the engine
// set-up, the base of the fuel maps' duty cap). The AFR error against the target table:
// measured AFR less the target at the record's RPM and load (MAP, or TPS on a throttle basis).
inline constexpr std::string_view kDutyChannelName = "Injector Duty";
inline constexpr std::string_view kAfrErrorChannelName = "AFR Error";
std::string DutyExpression(double duty_base);
std::string AfrErrorExpression(bool load_is_map);
std::vector<MathChannel> DefaultMathChannels(double duty_base, bool load_is_map);

// A math channel evaluated over a log: its column (NaN where it has no point) with the summaries
// the chart and the autoscale read, or, for a refused one, the error and no column.
struct MathColumn {
  std::string name;
  std::vector<float> values;
  MinMaxPyramid summaries;
  std::optional<ExpressionError> error;
};

// Evaluates `channels` in order over `log`. A channel whose name is refused (or repeats one
// before it) gets an error at position 0; one whose expression is refused gets that error.
// `target` is what target() reads (empty: no target table, NaN).
std::vector<MathColumn> EvaluateMathChannels(const DatalogLog& log,
                                             const std::vector<MathChannel>& channels,
                                             const TargetLookup& target = {});
// The same into `columns` (one per channel afterwards), reusing their storage and `workspace`'s:
// for a view that evaluates again whenever a channel or the log changes.
void EvaluateMathChannels(const DatalogLog& log, const std::vector<MathChannel>& channels,
                          const TargetLookup& target, MathWorkspace& workspace,
                          std::vector<MathColumn>& columns);

// `columns`, evaluated as above over the first `old_size` records of `log` with the same channels
// and target, brought up to the whole log that has grown since: only the records that may have
// changed are evaluated again (the new ones, and those before them that look ahead into the
// new), from the records they read. Returns the first record that changed (the log's size for
// none). Without an evaluation to extend (old_size 0 or past the log, other channels) every
// record is evaluated and 0 is returned.
std::size_t ExtendMathChannels(const DatalogLog& log, const std::vector<MathChannel>& channels,
                               const TargetLookup& target, MathWorkspace& workspace,
                               std::vector<MathColumn>& columns, std::size_t old_size);

// Compiles `expression` as the next math channel after `before` would be compiled: for a
// dialog that checks what the tuner types.
CompiledExpression CompileAfter(std::string_view expression,
                                const std::vector<MathChannel>& before);

}  // namespace vela::review
