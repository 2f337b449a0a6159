#include "datalog/review/math_channels.h"

#include <algorithm>
#include <cstdio>

#include "datalog/review/log_span.h"

namespace vela::review {

namespace {

constexpr std::string_view kFunctionNames[] = {"min", "max", "abs", "d", "avg", "target"};

std::string NumberText(double value) {
  char text[32];
  std::snprintf(text, sizeof text, "%.6g", value);
  return text;
}

}  // namespace

std::optional<std::string> RefuseMathName(std::string_view name) {
  if (name.empty()) return "the name is empty";
  if (name.size() > kMaxMathNameLength) return "the name is longer than 40 characters";
  for (char c : name) {
    if (c == '"') return "a name holds no double quote";
    if (static_cast<unsigned char>(c) < 0x20 || c == 0x7F)
      return "a name holds no control character";
  }
  if (RecordedChannelNamed(name)) return "a recorded channel has that name";
  for (std::string_view function : kFunctionNames) {
    if (SameName(name, function)) return "a function has that name";
  }
  return std::nullopt;
}

std::string DutyExpression(double duty_base) {
  return "100 * Fuel * RPM / " + NumberText(duty_base);
}

std::string AfrErrorExpression(bool load_is_map) {
  return std::string("AFR / 10 - target(RPM, ") + (load_is_map ? "MAP" : "TPS") + ")";
}

std::vector<MathChannel> DefaultMathChannels(double duty_base, bool load_is_map) {
  return {{std::string(kDutyChannelName), DutyExpression(duty_base)},
          {std::string(kAfrErrorChannelName), AfrErrorExpression(load_is_map)}};
}

CompiledExpression CompileAfter(std::string_view expression,
                                const std::vector<MathChannel>& before) {
  std::vector<NamedColumn> names = RecordedChannelNames();
  for (std::size_t k = 0; k < before.size(); ++k) {
    names.push_back({before[k].name, kChannelCount + static_cast<int>(k)});
  }
  return CompileExpression(expression, names);
}

std::vector<MathColumn> EvaluateMathChannels(const DatalogLog& log,
                                             const std::vector<MathChannel>& channels,
                                             const TargetLookup& target) {
  MathWorkspace workspace;
  std::vector<MathColumn> columns;
  EvaluateMathChannels(log, channels, target, workspace, columns);
  return columns;
}

namespace {

// Why `channels[k]`'s name is refused, if it is.
std::optional<std::string> RefusedName(const std::vector<MathChannel>& channels, std::size_t k) {
  std::optional<std::string> refused = RefuseMathName(channels[k].name);
  for (std::size_t j = 0; !refused && j < k; ++j) {
    if (SameName(channels[j].name, channels[k].name)) {
      refused = "an earlier math channel has that name";
    }
  }
  return refused;
}

// Channel `k` compiled against the names before it into `column` (its name and error set).
std::optional<MathExpression> CompileChannel(const std::vector<MathChannel>& channels,
                                             std::size_t k, const std::vector<NamedColumn>& names,
                                             MathColumn& column) {
  column.name = channels[k].name;
  column.error.reset();
  if (std::optional<std::string> refused = RefusedName(channels, k)) {
    column.error = ExpressionError{0, *refused};
    return std::nullopt;
  }
  CompiledExpression compiled = CompileExpression(channels[k].expression, names);
  column.error = compiled.error;
  return std::move(compiled.expression);
}

EvaluationInput InputOf(const DatalogLog& log, const TargetLookup& target,
                        MathWorkspace& workspace) {
  EvaluationInput input{log.Times(), {}, target, &workspace};
  for (int n = 0; n < kChannelCount; ++n) input.columns.push_back(log.Series(n).values);
  return input;
}

// `input` from record `from` on.
EvaluationInput FromRecord(const EvaluationInput& input, std::size_t from) {
  EvaluationInput part{input.times.subspan(from), {}, input.target, input.workspace};
  for (std::span<const float> column : input.columns) {
    part.columns.push_back(column.size() > from ? column.subspan(from) : std::span<const float>());
  }
  return part;
}

}  // namespace

void EvaluateMathChannels(const DatalogLog& log, const std::vector<MathChannel>& channels,
                          const TargetLookup& target, MathWorkspace& workspace,
                          std::vector<MathColumn>& columns) {
  EvaluationInput input = InputOf(log, target, workspace);
  // Sized first: the columns read the ones before them where they stand.
  columns.resize(channels.size());
  std::vector<NamedColumn> names = RecordedChannelNames();
  for (std::size_t k = 0; k < channels.size(); ++k) {
    MathColumn& column = columns[k];
    // A refused channel keeps its column index (no points) so the ones after it stay in place.
    if (const std::optional<MathExpression> expression =
            CompileChannel(channels, k, names, column)) {
      Evaluate(*expression, input, column.values);
    } else {
      column.values.clear();
    }
    column.summaries.Build(column.values);
    names.push_back({channels[k].name, static_cast<int>(input.columns.size())});
    input.columns.push_back(column.values);
  }
}

std::size_t ExtendMathChannels(const DatalogLog& log, const std::vector<MathChannel>& channels,
                               const TargetLookup& target, MathWorkspace& workspace,
                               std::vector<MathColumn>& columns, std::size_t old_size) {
  const std::size_t size = log.Times().size();
  if (old_size == 0 || old_size > size || columns.size() != channels.size()) {
    EvaluateMathChannels(log, channels, target, workspace, columns);
    return 0;
  }
  EvaluationInput input = InputOf(log, target, workspace);
  std::vector<std::size_t> changed_from(kChannelCount, old_size);
  std::vector<NamedColumn> names = RecordedChannelNames();
  std::vector<float> part;
  std::size_t first_changed = size;
  for (std::size_t k = 0; k < channels.size(); ++k) {
    MathColumn& column = columns[k];
    std::size_t from = size;  // a refused channel has no points before or after
    if (const std::optional<MathExpression> expression =
            CompileChannel(channels, k, names, column)) {
      from = FirstChangedRecord(*expression, input.times, old_size, changed_from);
      const std::size_t read_from = FirstRecordRead(*expression, input.times, from);
      Evaluate(*expression, FromRecord(input, read_from), part);
      column.values.resize(size);
      std::copy(part.begin() + static_cast<std::ptrdiff_t>(from - read_from), part.end(),
                column.values.begin() + static_cast<std::ptrdiff_t>(from));
      column.summaries.Extended(column.values, column.summaries.KeepFirst(from));
    } else {
      column.values.clear();
      column.summaries.Clear();
    }
    first_changed = std::min(first_changed, from);
    changed_from.push_back(from);
    names.push_back({channels[k].name, static_cast<int>(input.columns.size())});
    input.columns.push_back(column.values);
  }
  return first_changed;
}

}  // namespace vela::review
