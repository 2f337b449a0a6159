#include "editors/compensation/small_grid_model.h"

#include <algorithm>
#include <cmath>

#include "calibration/conversions.h"
#include "calibration/decimal_text.h"

namespace vela {

namespace {

// How many steps a key may take at the most to reach the next storable value.
constexpr int kMaxStepsToNextValue = 64;

}  // namespace

SmallGridModel::SmallGridModel(std::vector<std::string> row_labels, std::vector<int> positions)
    : labels_(std::move(row_labels)),
      positions_(std::move(positions)),
      formats_(labels_.size()),
      raw_(labels_.size(), 0) {
  positions_.resize(labels_.size(), 0);
}

std::size_t SmallGridModel::Index(int row) const {
  return static_cast<std::size_t>(std::clamp(row, 0, std::max(Rows() - 1, 0)));
}

double SmallGridModel::Value(int row) const {
  const CellFormat& format = Format(row);
  return format.shown ? format.shown(Raw(row)) : static_cast<double>(Raw(row));
}

std::string SmallGridModel::Text(int row) const {
  return FormatFixed(Value(row), Format(row).decimals, separator_, nullptr);
}

void SmallGridModel::Select(int first, int last, int current) {
  const auto clamp = [this](int row) { return std::clamp(row, 0, std::max(Rows() - 1, 0)); };
  first_ = clamp(std::min(first, last));
  last_ = clamp(std::max(first, last));
  current_ = clamp(current);
}

bool SmallGridModel::HandleKey(const MapKeyPress& press) {
  if (const std::optional<ValueStep> step = ValueStepOf(press)) {
    ApplyStep(*step);
    return true;
  }
  if (press.control || press.alt || press.key != MapKey::kLetter) return false;
  if (press.letter == 'N' || press.letter == 'n') {
    Select(current_ - 1, current_ - 1, current_ - 1);
    return true;
  }
  if (press.letter == 'P' || press.letter == 'p') {
    Select(current_ + 1, current_ + 1, current_ + 1);
    return true;
  }
  return false;
}

// The shown value moved by whole steps until the conversion gives another byte; the row's
// limit when the move would pass it.
int SmallGridModel::Stepped(int row, ValueStep step) const {
  const CellFormat& format = Format(row);
  const double size = format.steps[static_cast<std::size_t>(step.key)];
  const int raw = Raw(row);
  if (size == 0.0 || !format.shown || !format.stored) return raw;
  if (step.direction > 0 ? raw >= format.max_raw : raw <= format.min_raw) return raw;
  const double shown = format.shown(raw);
  for (int k = 1; k <= kMaxStepsToNextValue; ++k) {
    const std::string text =
        FormatFixed(shown + step.direction * size * k, format.decimals, '.', nullptr);
    const int stored = format.stored(NumberOfText(text, '.').value_or(shown));
    if (step.direction > 0 ? stored > raw : stored < raw) {
      return std::clamp(stored, format.min_raw, format.max_raw);
    }
  }
  return step.direction > 0 ? format.max_raw : format.min_raw;
}

std::vector<int> SmallGridModel::ApplyStep(ValueStep step) {
  std::vector<int> changed;
  for (int row = first_; row <= last_; ++row) {
    const int next = Stepped(row, step);
    if (next == Raw(row)) continue;
    SetRaw(row, next);
    changed.push_back(row);
  }
  Report(changed);
  return changed;
}

void SmallGridModel::Enter(int row, int raw) {
  SetRaw(row, raw);
  Report({row});
}

void SmallGridModel::Enter(const std::vector<SmallRowValue>& rows) {
  std::vector<int> changed;
  for (const SmallRowValue& value : rows) {
    SetRaw(value.row, value.raw);
    changed.push_back(value.row);
  }
  Report(changed);
}

void SmallGridModel::Report(const std::vector<int>& rows) {
  if (rows.empty() || !handler_) return;
  const int lower_bound = *std::min_element(positions_.begin(), positions_.end()) + 1;
  std::vector<SmallGridChange> changes;
  for (const int row : rows) changes.push_back({row, Position(row) + 1, lower_bound});
  handler_(changes);
}

}  // namespace vela
