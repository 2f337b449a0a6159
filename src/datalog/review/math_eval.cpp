// Evaluation column by column: every node gives the whole column of its value at once, so a
// node costs one pass over the log and a shift or a window is a walk along the times.
#include <algorithm>
#include <cmath>
#include <limits>

#include "datalog/review/math_expression.h"

namespace vela::review {

namespace {

using EvalColumn = std::vector<double>;
constexpr double kUndefined = std::numeric_limits<double>::quiet_NaN();
// Times that differ by less than this are the same time (log times are sums of steps).
constexpr double kSameTime = 1e-9;
// A workspace keeps at most this many columns (an expression needs about its depth).
constexpr std::size_t kSpareColumns = 6;

// A node's value: one number for every record (a constant, kept without a column) or a column.
struct Value {
  EvalColumn column;
  double number = 0.0;
  bool constant = false;
};

double Undefined(bool undefined, double value) { return undefined ? kUndefined : value; }

template <typename L, typename R, typename F>
void EachRecord(double* out, std::size_t n, L left, R right, F f) {
  for (std::size_t i = 0; i < n; ++i) out[i] = f(left(i), right(i));
}

// out[i] = left(i) op right(i); `out` may be the storage of either side (each record is read
// before it is written).
template <typename L, typename R>
void Apply(MathOp op, double* out, std::size_t n, L l, R r) {
  const auto nan = [](double x, double y) { return std::isnan(x) || std::isnan(y); };
  switch (op) {
    case MathOp::kAdd:
      return EachRecord(out, n, l, r, [](double x, double y) { return x + y; });
    case MathOp::kSubtract:
      return EachRecord(out, n, l, r, [](double x, double y) { return x - y; });
    case MathOp::kMultiply:
      return EachRecord(out, n, l, r, [](double x, double y) { return x * y; });
    case MathOp::kDivide:
      return EachRecord(out, n, l, r,
                        [](double x, double y) { return Undefined(y == 0.0, x / y); });
    case MathOp::kMin:
      return EachRecord(out, n, l, r,
                        [&](double x, double y) { return Undefined(nan(x, y), std::min(x, y)); });
    case MathOp::kMax:
      return EachRecord(out, n, l, r,
                        [&](double x, double y) { return Undefined(nan(x, y), std::max(x, y)); });
    case MathOp::kLess:
      return EachRecord(out, n, l, r,
                        [&](double x, double y) { return Undefined(nan(x, y), x < y); });
    case MathOp::kLessEqual:
      return EachRecord(out, n, l, r,
                        [&](double x, double y) { return Undefined(nan(x, y), x <= y); });
    case MathOp::kGreater:
      return EachRecord(out, n, l, r,
                        [&](double x, double y) { return Undefined(nan(x, y), x > y); });
    case MathOp::kGreaterEqual:
      return EachRecord(out, n, l, r,
                        [&](double x, double y) { return Undefined(nan(x, y), x >= y); });
    case MathOp::kEqual:
      return EachRecord(out, n, l, r,
                        [&](double x, double y) { return Undefined(nan(x, y), x == y); });
    default:
      return EachRecord(out, n, l, r,
                        [&](double x, double y) { return Undefined(nan(x, y), x != y); });
  }
}

class Evaluator {
 public:
  Evaluator(const MathExpression& expression, const EvaluationInput& input,
            MathWorkspace& workspace)
      : nodes_(expression.Nodes()),
        input_(input),
        n_(input.times.size()),
        spare_(workspace.spare) {}

  EvalColumn Result(int node) { return Materialize(Run(node)); }
  void Release(EvalColumn&& column) {
    if (column.size() == n_ && spare_.size() < kSpareColumns) spare_.push_back(std::move(column));
  }

 private:
  Value Run(int node) {
    const MathNode& at = nodes_[node];
    switch (at.op) {
      case MathOp::kNumber:
        return Constant(at.value);
      case MathOp::kColumn:
        return {Read(at.column)};
      case MathOp::kNegate:
        return Each(Run(at.a), [](double v) { return -v; });
      case MathOp::kAbs:
        return Each(Run(at.a), [](double v) { return std::fabs(v); });
      case MathOp::kShiftRecords:
        return Through(
            at.a, [&](const EvalColumn& x, EvalColumn& out) { ShiftRecords(x, at.records, out); });
      case MathOp::kShiftSeconds:
        return Through(
            at.a, [&](const EvalColumn& x, EvalColumn& out) { ShiftSeconds(x, at.value, out); });
      case MathOp::kDerivative:
        return Through(at.a, [&](const EvalColumn& x, EvalColumn& out) { Derivative(x, out); });
      case MathOp::kAverageSeconds:
        return Through(
            at.a, [&](const EvalColumn& x, EvalColumn& out) { AverageSeconds(x, at.value, out); });
      case MathOp::kAverageRecords:
        return Through(at.a, [&](const EvalColumn& x, EvalColumn& out) {
          AverageRecords(x, at.records, out);
        });
      case MathOp::kTarget:
        return {Target(Materialize(Run(at.a)), Materialize(Run(at.b)))};
      default:
        return Binary(at.op, Run(at.a), Run(at.b));
    }
  }

  static Value Constant(double number) {
    Value value;
    value.number = number;
    value.constant = true;
    return value;
  }

  // A column for the results of a node: a spare one when there is one (its values are
  // overwritten), so that a long expression reuses a few columns instead of making one per node.
  EvalColumn Acquire() {
    while (!spare_.empty()) {
      EvalColumn column = std::move(spare_.back());
      spare_.pop_back();
      if (column.size() == n_) return column;  // a workspace used for a log of another length
    }
    return EvalColumn(n_);
  }
  EvalColumn Materialize(Value value) {
    if (!value.constant) return std::move(value.column);
    EvalColumn column = Acquire();
    std::fill(column.begin(), column.end(), value.number);
    return column;
  }

  template <typename F>
  static Value Each(Value x, F f) {
    if (x.constant) return Constant(f(x.number));
    for (double& v : x.column) v = f(v);
    return x;
  }

  // A node that reads its operand's column around each record into a column of its own.
  template <typename F>
  Value Through(int operand, F f) {
    EvalColumn x = Materialize(Run(operand));
    EvalColumn out = Acquire();
    std::fill(out.begin(), out.end(), kUndefined);
    f(x, out);
    Release(std::move(x));
    return {std::move(out)};
  }

  Value Binary(MathOp op, Value x, Value y) {
    if (x.constant && y.constant) {
      double out = 0.0;
      Apply(
          op, &out, 1, [&](std::size_t) { return x.number; },
          [&](std::size_t) { return y.number; });
      return Constant(out);
    }
    if (y.constant) {
      Apply(
          op, x.column.data(), n_, [&](std::size_t i) { return x.column[i]; },
          [&](std::size_t) { return y.number; });
      return x;
    }
    if (x.constant) {
      Apply(
          op, y.column.data(), n_, [&](std::size_t) { return x.number; },
          [&](std::size_t i) { return y.column[i]; });
      return y;
    }
    Apply(
        op, x.column.data(), n_, [&](std::size_t i) { return x.column[i]; },
        [&](std::size_t i) { return y.column[i]; });
    Release(std::move(y.column));
    return x;
  }

  EvalColumn Read(int column) {
    EvalColumn x = Acquire();
    std::size_t have = 0;
    if (column >= 0 && static_cast<std::size_t>(column) < input_.columns.size()) {
      const std::span<const float> values = input_.columns[column];
      have = std::min(n_, values.size());
      for (std::size_t i = 0; i < have; ++i) x[i] = values[i];
    }
    std::fill(x.begin() + have, x.end(), kUndefined);
    return x;
  }

  void ShiftRecords(const EvalColumn& x, long records, EvalColumn& out) const {
    for (std::size_t i = 0; i < n_; ++i) {
      const long long from = static_cast<long long>(i) + records;
      if (from >= 0 && from < static_cast<long long>(n_)) out[i] = x[from];
    }
  }

  // The value of the last record at or before each record's time plus `seconds`.
  void ShiftSeconds(const EvalColumn& x, double seconds, EvalColumn& out) const {
    const std::span<const double> t = input_.times;
    std::size_t j = 0;
    for (std::size_t i = 0; i < n_; ++i) {
      const double when = t[i] + seconds;
      if (when < t[0] - kSameTime || when > t[n_ - 1] + kSameTime) continue;
      while (j + 1 < n_ && t[j + 1] <= when + kSameTime) ++j;
      while (j > 0 && t[j] > when + kSameTime) --j;
      out[i] = x[j];
    }
  }

  void Derivative(const EvalColumn& x, EvalColumn& out) const {
    const std::span<const double> t = input_.times;
    for (std::size_t i = 1; i < n_; ++i) {
      const double dt = t[i] - t[i - 1];
      if (dt > 0.0) out[i] = (x[i] - x[i - 1]) / dt;
    }
  }

  // The mean of the values (NaN left out) of the records whose time lies within `seconds`
  // before each record, the record itself included.
  void AverageSeconds(const EvalColumn& x, double seconds, EvalColumn& out) const {
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
  }

  void AverageRecords(const EvalColumn& x, long records, EvalColumn& out) const {
    double sum = 0.0;
    std::size_t count = 0;
    for (std::size_t i = 0; i < n_; ++i) {
      if (!std::isnan(x[i])) sum += x[i], ++count;
      if (i >= static_cast<std::size_t>(records) && !std::isnan(x[i - records])) {
        sum -= x[i - records], --count;
      }
      if (count > 0) out[i] = sum / static_cast<double>(count);
    }
  }

  EvalColumn Target(EvalColumn rpm, EvalColumn load) {
    for (std::size_t i = 0; i < n_; ++i) {
      const bool known = input_.target && !std::isnan(rpm[i]) && !std::isnan(load[i]);
      rpm[i] = known ? input_.target(rpm[i], load[i]) : kUndefined;
    }
    Release(std::move(load));
    return rpm;
  }

  const std::vector<MathNode>& nodes_;
  const EvaluationInput& input_;
  std::size_t n_;
  std::vector<EvalColumn>& spare_;
};

// A node's reach around a record over the log's times. Both questions below give answers
// that only grow with the record (a later record reads no earlier records and changes no
// sooner), which is what lets FirstChangedRecord search and FirstRecordRead cover every later
// record.
class Reach {
 public:
  Reach(const std::vector<MathNode>& nodes, std::span<const double> times)
      : nodes_(nodes), t_(times) {}

  std::size_t FirstRead(int node, std::size_t i) const {
    const MathNode& at = nodes_[node];
    switch (at.op) {
      case MathOp::kNumber:
      case MathOp::kColumn:
        return i;
      case MathOp::kShiftRecords: {
        const long long j = static_cast<long long>(i) + at.records;
        if (j < 0) return 0;  // before the log: no point, read from the start to keep the order
        if (j >= static_cast<long long>(t_.size())) return i;
        return std::min(i, FirstRead(at.a, static_cast<std::size_t>(j)));
      }
      case MathOp::kShiftSeconds: {
        const double when = t_[i] + at.value;
        if (when < t_.front() - kSameTime) return 0;
        if (when > t_.back() + kSameTime) return i;
        return std::min(i, FirstRead(at.a, AtOrBefore(when, t_.size())));
      }
      case MathOp::kDerivative:
        return FirstRead(at.a, i > 0 ? i - 1 : 0);
      case MathOp::kAverageRecords: {
        const auto back = static_cast<std::size_t>(std::max(at.records - 1, 0L));
        return FirstRead(at.a, i > back ? i - back : 0);
      }
      case MathOp::kAverageSeconds: {
        const double from = t_[i] - at.value - kSameTime;
        return FirstRead(at.a, static_cast<std::size_t>(
                                   std::lower_bound(t_.begin(), t_.end(), from) - t_.begin()));
      }
      default:
        return at.b < 0 ? FirstRead(at.a, i) : std::min(FirstRead(at.a, i), FirstRead(at.b, i));
    }
  }

  // Whether the value at record `i` (< old_size) may differ from what it was over the first
  // `old_size` records.
  bool Changed(int node, std::size_t i, std::size_t old_size,
               std::span<const std::size_t> changed_from) const {
    const MathNode& at = nodes_[node];
    switch (at.op) {
      case MathOp::kNumber:
        return false;
      case MathOp::kColumn: {
        const auto c = static_cast<std::size_t>(at.column);
        return i >= (c < changed_from.size() ? changed_from[c] : old_size);
      }
      case MathOp::kShiftRecords: {
        const long long j = static_cast<long long>(i) + at.records;
        if (j < 0) return false;
        if (j >= static_cast<long long>(old_size)) return true;  // it was past the end
        return Changed(at.a, static_cast<std::size_t>(j), old_size, changed_from);
      }
      case MathOp::kShiftSeconds: {
        const double when = t_[i] + at.value;
        if (when < t_.front() - kSameTime) return false;
        if (when > t_[old_size - 1] - kSameTime) return true;
        return Changed(at.a, AtOrBefore(when, old_size), old_size, changed_from);
      }
      default:
        break;
    }
    // Every other node reads its operands at this record or before it; a later change of an
    // operand shows at this record first.
    return (at.a >= 0 && Changed(at.a, i, old_size, changed_from)) ||
           (at.b >= 0 && Changed(at.b, i, old_size, changed_from));
  }

 private:
  // The last of the first `end` records at or before `when` (the first record for earlier).
  std::size_t AtOrBefore(double when, std::size_t end) const {
    const auto after = std::upper_bound(t_.begin(), t_.begin() + static_cast<std::ptrdiff_t>(end),
                                        when + kSameTime);
    return after == t_.begin() ? 0 : static_cast<std::size_t>(after - t_.begin() - 1);
  }

  const std::vector<MathNode>& nodes_;
  std::span<const double> t_;
};

}  // namespace

std::size_t FirstChangedRecord(const MathExpression& expression, std::span<const double> times,
                               std::size_t old_size, std::span<const std::size_t> changed_from) {
  old_size = std::min(old_size, times.size());
  if (expression.Root() < 0 || old_size == 0) return 0;
  const Reach reach(expression.Nodes(), times);
  std::size_t low = 0;  // the first changed record lies in [low, high]
  std::size_t high = old_size;
  while (low < high) {
    const std::size_t mid = low + (high - low) / 2;
    if (reach.Changed(expression.Root(), mid, old_size, changed_from)) {
      high = mid;
    } else {
      low = mid + 1;
    }
  }
  return low;
}

std::size_t FirstRecordRead(const MathExpression& expression, std::span<const double> times,
                            std::size_t record) {
  if (expression.Root() < 0 || record >= times.size()) return std::min(record, times.size());
  return Reach(expression.Nodes(), times).FirstRead(expression.Root(), record);
}

std::vector<float> Evaluate(const MathExpression& expression, const EvaluationInput& input) {
  std::vector<float> out;
  Evaluate(expression, input, out);
  return out;
}

void Evaluate(const MathExpression& expression, const EvaluationInput& input,
              std::vector<float>& out) {
  out.resize(input.times.size());
  if (expression.Root() < 0) {
    std::fill(out.begin(), out.end(), std::numeric_limits<float>::quiet_NaN());
    return;
  }
  MathWorkspace own;
  Evaluator evaluator(expression, input, input.workspace ? *input.workspace : own);
  EvalColumn column = evaluator.Result(expression.Root());
  for (std::size_t i = 0; i < column.size(); ++i) {
    out[i] = std::isfinite(column[i]) ? static_cast<float>(column[i])
                                      : std::numeric_limits<float>::quiet_NaN();
  }
  evaluator.Release(std::move(column));
}

}  // namespace vela::review
