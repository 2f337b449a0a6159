// Channels computed from others: a small expression language, parsed once into a compiled form
// and evaluated over a whole log into a column. The language (docs/review.md):
//
//   numbers        12, 0.5, .25
//   channels       RPM, Fuel, "Duty %", "Throttle Pump Addition" (a name with anything but
//                  letters, digits and _ in double quotes); letters in any case
//   arithmetic     a + b, a - b, a * b, a / b, -a, ( a )
//   comparisons    a < b, a <= b, a > b, a >= b, a == b, a != b   (1 or 0)
//   functions      min(a, b), max(a, b), abs(a), d(a) (per second), avg(a, 0.5s), avg(a, 8),
//                  target(rpm, load) (the target AFR table, when one is bound)
//   look-back      RPM[-1] (records), TPS@-0.5s, TPS@-500ms (time); any term may be shifted
//
// A value is NaN (no point) where it is undefined: before the log's start or past its end for a
// shift, a channel not recorded there, a division by zero, and anything computed from NaN.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace vela::review {

// Where and why an expression was refused; `position` is the index of the character (0 = the
// first) where the fault was found.
struct ExpressionError {
  std::size_t position = 0;
  std::string reason;
  bool operator==(const ExpressionError&) const = default;
};

enum class MathOp : std::uint8_t {
  kNumber,
  kColumn,
  kNegate,
  kAdd,
  kSubtract,
  kMultiply,
  kDivide,
  kLess,
  kLessEqual,
  kGreater,
  kGreaterEqual,
  kEqual,
  kNotEqual,
  kMin,
  kMax,
  kAbs,
  kShiftRecords,    // `records`: negative looks back
  kShiftSeconds,    // `seconds`: negative looks back
  kDerivative,      // per second, against the record before
  kAverageSeconds,  // the records of the last `seconds` up to this one
  kAverageRecords,  // the last `records` records up to this one
  kTarget,          // target(a, b)
};

struct MathNode {
  MathOp op = MathOp::kNumber;
  int a = -1;  // operand nodes
  int b = -1;
  double value = 0.0;  // kNumber: the number; kShiftSeconds, kAverageSeconds: seconds
  long records = 0;    // kShiftRecords, kAverageRecords
  int column = -1;     // kColumn: the column index the name resolved to
};

// The names an expression may use, each the index of its column in the evaluation.
struct NamedColumn {
  std::string name;
  int column = 0;
};
// The twelve recorded channels, each under its export name and its caption, columns 0 to 11.
std::vector<NamedColumn> RecordedChannelNames();

// A refused expression is longer than this, or nests deeper.
inline constexpr std::size_t kMaxExpressionLength = 2000;
inline constexpr int kMaxExpressionDepth = 64;

class MathExpression {
 public:
  const std::vector<MathNode>& Nodes() const { return nodes_; }
  int Root() const { return root_; }
  // The columns it reads, ascending, each once.
  std::vector<int> Columns() const;

 private:
  friend class MathParser;
  std::vector<MathNode> nodes_;
  int root_ = -1;
};

struct CompiledExpression {
  std::optional<MathExpression> expression;  // set when accepted
  std::optional<ExpressionError> error;      // set when refused
};
CompiledExpression CompileExpression(std::string_view text, std::span<const NamedColumn> names);

// What an expression is evaluated over: the records' times (ascending) and the columns by index;
// a column shorter than the times has no point past its end, a missing column none at all.
using TargetLookup = std::function<double(double rpm, double load)>;
// The working columns of evaluations, kept between them: a long log's columns are megabytes,
// and memory the system hands out afresh costs more to touch the first time than the arithmetic
// on it. Whoever evaluates again and again (a view redrawing its math channels) keeps one.
struct MathWorkspace {
  std::vector<std::vector<double>> spare;
};
struct EvaluationInput {
  std::span<const double> times;
  std::vector<std::span<const float>> columns;
  TargetLookup target;                 // empty: target() is NaN
  MathWorkspace* workspace = nullptr;  // none: working columns are made for this evaluation
};
std::vector<float> Evaluate(const MathExpression& expression, const EvaluationInput& input);
// The same into `out` (resized to the records; its storage reused).
void Evaluate(const MathExpression& expression, const EvaluationInput& input,
              std::vector<float>& out);

// How far an expression reaches around a record, for a log that grows: only the records whose
// value may change, and the ones those read, need evaluating again.
//
// The first record at or after which `expression`'s values over `times` may differ from what
// they were when the log held `old_size` records (old_size: none). The columns it reads are
// known to differ from `changed_from[c]` on (a column past the list's end: from `old_size`).
std::size_t FirstChangedRecord(const MathExpression& expression, std::span<const double> times,
                               std::size_t old_size, std::span<const std::size_t> changed_from);
// The first record whose values the values at `record` and after it read: evaluating the records
// from there on gives the same values from `record` on as evaluating the whole log.
std::size_t FirstRecordRead(const MathExpression& expression, std::span<const double> times,
                            std::size_t record);

}  // namespace vela::review
