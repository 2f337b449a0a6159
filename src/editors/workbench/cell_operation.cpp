#include "editors/workbench/cell_operation.h"

#include <algorithm>
#include <charconv>
#include <cmath>

#include "calibration/conversions.h"

namespace vela {

namespace {

constexpr std::string_view kLineBlanks = " \t";
constexpr std::string_view kLineOperators = "=+-*/";

std::string_view TrimLineLeft(std::string_view text) {
  const auto first = text.find_first_not_of(kLineBlanks);
  return first == std::string_view::npos ? std::string_view() : text.substr(first);
}

std::string_view TrimLine(std::string_view text) {
  text = TrimLineLeft(text);
  const auto last = text.find_last_not_of(kLineBlanks);
  return last == std::string_view::npos ? std::string_view() : text.substr(0, last + 1);
}

std::string QuotedText(std::string_view text) { return "\"" + std::string(text) + "\""; }

OperationParse RefusedWith(std::string reason) { return {std::nullopt, std::move(reason)}; }

// The character at `at` with the rest of its UTF-8 sequence, for naming it in a refusal.
std::string_view CharacterNamed(std::string_view text, std::size_t at) {
  std::size_t end = at + 1;
  while (end < text.size() && (static_cast<unsigned char>(text[end]) & 0xC0) == 0x80) ++end;
  return text.substr(at, end - at);
}

std::string MissingNumberReason(char op) {
  switch (op) {
    case '+':
      return "Type the amount to add after +.";
    case '-':
      return "Type the amount to subtract after -.";
    case '*':
      return "Type the factor after *.";
    case '/':
      return "Type the divisor after /.";
    default:
      return "Type the value after =.";
  }
}

// Reads digits with at most one decimal mark ('.' or `mark`), no sign; a refusal otherwise.
OperationParse ReadTypedNumber(std::string_view text, char mark, double& value) {
  std::string plain;
  int marks = 0;
  bool digits = false;
  for (std::size_t i = 0; i < text.size(); ++i) {
    const char c = text[i];
    if (c >= '0' && c <= '9') {
      digits = true;
      plain += c;
    } else if (c == '.' || c == mark) {
      ++marks;
      plain += '.';
    } else {
      return RefusedWith(QuotedText(CharacterNamed(text, i)) + " is not part of a number.");
    }
  }
  if (marks > 1) return RefusedWith(QuotedText(text) + " has more than one decimal mark.");
  if (!digits) return RefusedWith(QuotedText(text) + " is no number.");
  const auto [end, error] = std::from_chars(plain.data(), plain.data() + plain.size(), value);
  if (error != std::errc() || end != plain.data() + plain.size() || !std::isfinite(value)) {
    value = HUGE_VAL;  // more digits than a double holds: beyond any map
  }
  return {};
}

std::string BoundsText(const ValueBounds& bounds, char mark) {
  return "(" + FormatFixed(bounds.lowest, bounds.decimals, mark, nullptr) + " to " +
         FormatFixed(bounds.highest, bounds.decimals, mark, nullptr) + ")";
}

// The largest factor that leaves one stored step inside the bounds.
double LargestFactorOf(const ValueBounds& bounds) {
  const double reach = std::max(std::abs(bounds.lowest), std::abs(bounds.highest));
  return bounds.step > 0.0 ? reach / bounds.step : reach;
}

OperationParse CheckedOperation(CellOperation operation, std::string_view typed, char mark,
                                const ValueBounds& bounds) {
  const double half = 0.5 * std::pow(10.0, -bounds.decimals);
  const std::string holds = " beyond what this map holds " + BoundsText(bounds, mark) + ".";
  switch (operation.kind) {
    case OperationKind::kSet:
      if (operation.operand < bounds.lowest - half || operation.operand > bounds.highest + half) {
        return RefusedWith(QuotedText(typed) + " is" + holds);
      }
      break;
    case OperationKind::kAdd:
      if (std::abs(operation.operand) > bounds.highest - bounds.lowest + half) {
        return RefusedWith(QuotedText(typed) + " takes every value" + holds);
      }
      break;
    case OperationKind::kScale:
      if (!(operation.operand > 0.0)) {
        return RefusedWith(QuotedText(typed) +
                           " leaves no value: type 0 to set the cells to zero.");
      }
      if (operation.operand > LargestFactorOf(bounds)) {
        return RefusedWith(QuotedText(typed) + " takes every value other than 0" + holds);
      }
      break;
  }
  return {operation, ""};
}

CellOperation OperationFromParts(char op, char sign, bool percent, double number) {
  if (percent) {
    return {OperationKind::kScale, 1.0 + (op == '-' ? -number : number) / 100.0};
  }
  switch (op) {
    case '+':
      return {OperationKind::kAdd, number};
    case '-':
      return {OperationKind::kAdd, -number};
    case '*':
      return {OperationKind::kScale, number};
    case '/':
      return {OperationKind::kScale, 1.0 / number};
    default:
      return {OperationKind::kSet, sign == '-' ? -number : number};
  }
}

}  // namespace

double CellOperation::Apply(double current) const {
  switch (kind) {
    case OperationKind::kSet:
      return operand;
    case OperationKind::kAdd:
      return current + operand;
    case OperationKind::kScale:
      return current * operand;
  }
  return current;
}

ValueBounds ValueBoundsOf(const MapGridModel& grid) {
  const double per_unit = UnitsPerDisplayUnit(grid.Kind());
  return {grid.MinCellUnits() / per_unit, grid.MaxCellUnits() / per_unit, 1.0 / per_unit,
          CellDecimals(grid.Kind())};
}

OperationParse ParseCellOperation(std::string_view text, char decimal_mark,
                                  const ValueBounds& bounds) {
  const std::string_view typed = TrimLine(text);
  if (typed.empty()) {
    return RefusedWith("Type a value or an operation: 12.5 sets, +0.3 adds, *1.05 scales, +5% " +
                       std::string("scales by a percentage."));
  }
  const char op =
      kLineOperators.find(typed.front()) != std::string_view::npos ? typed.front() : '=';
  std::string_view rest = op == typed.front() ? TrimLineLeft(typed.substr(1)) : typed;
  char sign = 0;
  if (op == '=' && !rest.empty() && (rest.front() == '+' || rest.front() == '-')) {
    sign = rest.front();  // the value's own sign: =-5 sets -5
    rest = TrimLineLeft(rest.substr(1));
  }
  if (!rest.empty() && kLineOperators.find(rest.front()) != std::string_view::npos) {
    return RefusedWith(QuotedText(typed) + " has two signs: type one (+0.3 adds, -0.3 subtracts).");
  }
  const bool percent = !rest.empty() && rest.back() == '%';
  if (percent) {
    if (op != '+' && op != '-') {
      return RefusedWith("A percentage needs + or - before it: +5% raises the cells by 5 %, -3% " +
                         std::string("lowers them by 3 %."));
    }
    rest = TrimLine(rest.substr(0, rest.size() - 1));
    if (rest.empty()) return RefusedWith("Type the percentage before %.");
  }
  if (rest.empty()) return RefusedWith(MissingNumberReason(op));
  double number = 0.0;
  if (OperationParse bad = ReadTypedNumber(rest, decimal_mark, number); !bad.refusal.empty()) {
    return bad;
  }
  if (op == '/' && number == 0.0)
    return RefusedWith("Division by zero: type a divisor other than 0.");
  return CheckedOperation(OperationFromParts(op, sign, percent, number), typed, decimal_mark,
                          bounds);
}

OperationPreview PreviewOperation(const MapGridModel& grid, const CellRect& rect,
                                  const CellOperation& operation, const DutyContext& duty) {
  MapGridModel trial = grid;
  trial.SetCellsChangedHandler(nullptr);
  const BulkChange change = ApplyOperation(trial, rect, operation, duty);
  return {change.lowest, change.highest, static_cast<int>(change.changed.size()), change.capped,
          change.clamped};
}

std::string RangeText(const OperationPreview& preview, MapKind kind, char decimal_mark) {
  const int decimals = CellDecimals(kind);
  const std::string low = FormatFixed(preview.lowest, decimals, decimal_mark, nullptr);
  const std::string high = FormatFixed(preview.highest, decimals, decimal_mark, nullptr);
  return low == high ? low : low + " .. " + high;
}

BulkChange ApplyOperation(MapGridModel& grid, const CellRect& rect, const CellOperation& operation,
                          const DutyContext& duty) {
  return ApplyTargets(
      grid, rect, [&operation](int, int, double current) { return operation.Apply(current); },
      duty);
}

}  // namespace vela
