#include "datalog/chart/minmax_pyramid.h"

#include <algorithm>
#include <limits>

namespace vela {

namespace {

constexpr float kNoMin = std::numeric_limits<float>::infinity();
constexpr float kNoMax = -std::numeric_limits<float>::infinity();

// Comparisons with NaN are false, so a missing sample changes neither extreme.
inline void Take(float value, float& min, float& max) {
  if (value < min) min = value;
  if (value > max) max = value;
}

}  // namespace

void MinMaxPyramid::AddLeaf(std::span<const float> leaf) {
  if (levels_.empty()) levels_.emplace_back();
  float min = kNoMin;
  float max = kNoMax;
  for (float v : leaf) Take(v, min, max);
  levels_[0].min.push_back(min);
  levels_[0].max.push_back(max);
  leaf_first_.push_back(leaf.front());
  leaf_last_.push_back(leaf.back());
  CarryUp(0);
}

// A level whose block count has just become even completes one block of the level above.
void MinMaxPyramid::CarryUp(std::size_t level) {
  while (levels_[level].min.size() % 2 == 0) {
    if (levels_.size() == level + 1) levels_.emplace_back();
    const Level& below = levels_[level];
    const std::size_t n = below.min.size();
    Level& above = levels_[level + 1];
    above.min.push_back(std::min(below.min[n - 2], below.min[n - 1]));
    above.max.push_back(std::max(below.max[n - 2], below.max[n - 1]));
    ++level;
  }
}

void MinMaxPyramid::Appended(std::span<const float> values) {
  if (values.empty() || values.size() % kLeafSize != 0) return;
  AddLeaf(values.subspan(values.size() - kLeafSize));
}

void MinMaxPyramid::Extended(std::span<const float> values, std::size_t old_size) {
  for (std::size_t end = (old_size / kLeafSize + 1) * kLeafSize; end <= values.size();
       end += kLeafSize) {
    AddLeaf(values.subspan(end - kLeafSize, kLeafSize));
  }
}

void MinMaxPyramid::Build(std::span<const float> values) {
  Clear();
  for (std::size_t i = kLeafSize; i <= values.size(); i += kLeafSize) {
    AddLeaf(values.subspan(i - kLeafSize, kLeafSize));
  }
}

std::size_t MinMaxPyramid::KeepFirst(std::size_t samples) {
  const std::size_t leaves = std::min(samples / kLeafSize, leaf_first_.size());
  leaf_first_.resize(leaves);
  leaf_last_.resize(leaves);
  for (std::size_t level = 0; level < levels_.size(); ++level) {
    levels_[level].min.resize(std::min(levels_[level].min.size(), leaves >> level));
    levels_[level].max.resize(levels_[level].min.size());
  }
  return leaves * kLeafSize;
}

ColumnSummary MinMaxPyramid::Summarize(std::span<const float> values, std::size_t begin,
                                       std::size_t end) const {
  end = std::min(end, values.size());
  ColumnSummary summary;
  if (begin >= end) return summary;
  float min = kNoMin;
  float max = kNoMax;
  // Whole leaves inside the range come from the blocks, the loose ends from the samples.
  std::size_t lo = (begin + kLeafSize - 1) / kLeafSize;
  std::size_t hi = end / kLeafSize;
  if (levels_.empty() || lo >= hi) {
    for (std::size_t i = begin; i < end; ++i) Take(values[i], min, max);
  } else {
    for (std::size_t i = begin; i < lo * kLeafSize; ++i) Take(values[i], min, max);
    for (std::size_t i = hi * kLeafSize; i < end; ++i) Take(values[i], min, max);
    for (std::size_t level = 0; lo < hi && level < levels_.size(); ++level) {
      const Level& blocks = levels_[level];
      if (lo & 1) {
        min = std::min(min, blocks.min[lo]);
        max = std::max(max, blocks.max[lo]);
        ++lo;
      }
      if (hi & 1) {
        --hi;
        min = std::min(min, blocks.min[hi]);
        max = std::max(max, blocks.max[hi]);
      }
      lo >>= 1;
      hi >>= 1;
    }
  }
  const std::size_t leaves = leaf_first_.size();
  summary.first = begin % kLeafSize == 0 && begin / kLeafSize < leaves
                      ? leaf_first_[begin / kLeafSize]
                      : values[begin];
  summary.last = end % kLeafSize == 0 && end / kLeafSize <= leaves ? leaf_last_[end / kLeafSize - 1]
                                                                   : values[end - 1];
  summary.any = min <= max;
  summary.min = summary.any ? min : 0.0f;
  summary.max = summary.any ? max : 0.0f;
  return summary;
}

}  // namespace vela
