// Evaluation column by column: every node gives the whole column of its value at once, so a
// node costs one pass over the log and a shift or a window is a walk along the times.
#include <cmath>
#include <limits>

#include "datalog/review/math_expression.h"

namespace vela::review {

namespace {

using Column = std::vector<double>;
constexpr double kUndefined = std::numeric_limits<double>::quiet_NaN();
// Times that differ by less than this are the same time (log times are sums of steps).
constexpr double kSameTime = 1e-9;

double Compare(MathOp op, double x, double y) {
  if (std::isnan(x) || std::isnan(y)) return kUndefined;
  switch (op) {
    case MathOp::kLess:
      return x < y;
    case MathOp::kLessEqual:
      return x <= y;
    case MathOp::kGreater:
      return x > y;
    case MathOp::kGreaterEqual:
      return x >= y;
    case MathOp::kEqual:
      return x == y;
    default:
      return x != y;
  }
}

// Combines `y` into `x`, element by element.
void Combine(MathOp op, Column& x, const Column& y) {
  const std::size_t n = x.size();
  switch (op) {
    case MathOp::kAdd:
      for (std::size_t i = 0; i < n; ++i) x[i] += y[i];
      return;
    case MathOp::kSubtract:
      for (std::size_t i = 0; i < n; ++i) x[i] -= y[i];
      return;
    case MathOp::kMultiply:
      for (std::size_t i = 0; i < n; ++i) x[i] *= y[i];
      return;
    case MathOp::kDivide:
      for (std::size_t i = 0; i < n; ++i) x[i] = y[i] == 0.0 ? kUndefined : x[i] / y[i];
      return;
    case MathOp::kMin:
    case MathOp::kMax:
      for (std::size_t i = 0; i < n; ++i) {
        const bool undefined = std::isnan(x[i]) || std::isnan(y[i]);
        const double pick = op == MathOp::kMin ? std::min(x[i], y[i]) : std::max(x[i], y[i]);
        x[i] = undefined ? kUndefined : pick;
      }
      return;
    default:
      for (std::size_t i = 0; i < n; ++i) x[i] = Compare(op, x[i], y[i]);
  }
}

class Evaluator {
 public:
  Evaluator(const MathExpression& expression, const EvaluationInput& input)
      : nodes_(expression.Nodes()), input_(input), n_(input.times.size()) {}

  Column Run(int node) {
    const MathNode& at = nodes_[node];
    switch (at.op) {
      case MathOp::kNumber:
        return Column(n_, at.value);
      case MathOp::kColumn:
        return Read(at.column);
      case MathOp::kNegate:
        return Each(Run(at.a), [](double v) { return -v; });
      case MathOp::kAbs:
        return Each(Run(at.a), [](double v) { return std::fabs(v); });
      case MathOp::kShiftRecords:
        return ShiftRecords(Run(at.a), at.records);
      case MathOp::kShiftSeconds:
        return ShiftSeconds(Run(at.a), at.value);
      case MathOp::kDerivative:
        return Derivative(Run(at.a));
      case MathOp::kAverageSeconds:
        return AverageSeconds(Run(at.a), at.value);
      case MathOp::kAverageRecords:
        return AverageRecords(Run(at.a), at.records);
      case MathOp::kTarget:
        return Target(Run(at.a), Run(at.b));
      default:
        break;
    }
    Column x = Run(at.a);
    Combine(at.op, x, Run(at.b));
    return x;
  }

 private:
  template <typename F>
  static Column Each(Column x, F f) {
    for (double& v : x) v = f(v);
    return x;
  }

  Column Read(int column) const {
    Column x(n_, kUndefined);
    if (column < 0 || static_cast<std::size_t>(column) >= input_.columns.size()) return x;
    const std::span<const float> values = input_.columns[column];
    const std::size_t have = std::min(n_, values.size());
    for (std::size_t i = 0; i < have; ++i) x[i] = values[i];
    return x;
  }

  Column ShiftRecords(const Column& x, long records) const {
    Column out(n_, kUndefined);
    for (std::size_t i = 0; i < n_; ++i) {
      const long long from = static_cast<long long>(i) + records;
      if (from >= 0 && from < static_cast<long long>(n_)) out[i] = x[from];
    }
    return out;
  }

  // The value of the last record at or before each record's time plus `seconds`.
  Column ShiftSeconds(const Column& x, double seconds) const {
    Column out(n_, kUndefined);
    const std::span<const double> t = input_.times;
    if (n_ == 0) return out;
    std::size_t j = 0;
    for (std::size_t i = 0; i < n_; ++i) {
      const double when = t[i] + seconds;
      if (when < t[0] - kSameTime || when > t[n_ - 1] + kSameTime) continue;
      while (j + 1 < n_ && t[j + 1] <= when + kSameTime) ++j;
      while (j > 0 && t[j] > when + kSameTime) --j;
      out[i] = x[j];
    }
    return out;
  }

  Column Derivative(const Column& x) const {
    Column out(n_, kUndefined);
    const std::span<const double> t = input_.times;
    for (std::size_t i = 1; i < n_; ++i) {
      const double dt = t[i] - t[i - 1];
      if (dt > 0.0) out[i] = (x[i] - x[i - 1]) / dt;
    }
    return out;
  }

  // The mean of the values (NaN left out) of the records whose time lies within `seconds`
  // before each record, the record itself included.
  Column AverageSeconds(const Column& x, double seconds) const {
    Column out(n_, kUndefined);
    const std::span<const double> t = input_.times;
    double sum = 0.0;
    std::size_t count = 0;
    std::size_t first = 0;
    for (std::size_t i = 0; i < n_; ++i) {
      if (!std::isnan(x[i])) sum += x[i], ++count;
      for (; first <= i && t[first] <= t[i] - seconds + kSameTime; ++first) {
        if (!std::isnan(x[first])) sum -= x[first], --count;
      }
      if (count > 0) out[i] = sum / static_cast<double>(count);
    }
    return out;
  }

  Column AverageRecords(const Column& x, long records) const {
    Column out(n_, kUndefined);
    double sum = 0.0;
    std::size_t count = 0;
    for (std::size_t i = 0; i < n_; ++i) {
      if (!std::isnan(x[i])) sum += x[i], ++count;
      if (i >= static_cast<std::size_t>(records) && !std::isnan(x[i - records])) {
        sum -= x[i - records], --count;
      }
      if (count > 0) out[i] = sum / static_cast<double>(count);
    }
    return out;
  }

  Column Target(Column rpm, const Column& load) const {
    for (std::size_t i = 0; i < n_; ++i) {
      const bool known = input_.target && !std::isnan(rpm[i]) && !std::isnan(load[i]);
      rpm[i] = known ? input_.target(rpm[i], load[i]) : kUndefined;
    }
    return rpm;
  }

  const std::vector<MathNode>& nodes_;
  const EvaluationInput& input_;
  std::size_t n_;
};

}  // namespace

std::vector<float> Evaluate(const MathExpression& expression, const EvaluationInput& input) {
  if (expression.Root() < 0)
    return std::vector<float>(input.times.size(), std::numeric_limits<float>::quiet_NaN());
  const Column column = Evaluator(expression, input).Run(expression.Root());
  std::vector<float> out(column.size());
  for (std::size_t i = 0; i < column.size(); ++i) {
    out[i] = std::isfinite(column[i]) ? static_cast<float>(column[i])
                                      : std::numeric_limits<float>::quiet_NaN();
  }
  return out;
}

}  // namespace vela::review
