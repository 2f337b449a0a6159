// Summaries of one channel's values for drawing: the lowest and highest value of every block of
// 16 samples, of every two such blocks, and so on up. Any range of samples is then summed up from
// at most two blocks per level, so the cost of a pixel column does not grow with the log's
// length, and no single sample (a spike) is ever left out. A missing sample (NaN, the channel
// was off) takes part in no minimum or maximum.
#pragma once

#include <cstddef>
#include <span>
#include <vector>

namespace vela {

// What one pixel column shows: the values at its ends and its extremes. `any` is false when the
// range holds no value at all; `first` and `last` may be NaN.
struct ColumnSummary {
  float first = 0.0f;
  float min = 0.0f;
  float max = 0.0f;
  float last = 0.0f;
  bool any = false;
};

class MinMaxPyramid {
 public:
  static constexpr std::size_t kLeafSize = 16;

  void Clear() {
    levels_.clear();
    leaf_first_.clear();
    leaf_last_.clear();
  }
  // `values` has just grown by one sample at its end; the blocks it completes are added.
  void Appended(std::span<const float> values);
  // `values` has grown from `old_size` samples; every block it completes is added.
  void Extended(std::span<const float> values, std::size_t old_size);
  // All blocks made afresh from `values`.
  void Build(std::span<const float> values);
  // Keeps only the blocks that lie wholly within the first `samples` samples, as if built from
  // them rounded down to whole leaves; returns that many samples. For values that changed from
  // `samples` on: Extended(values, KeepFirst(samples)) brings the blocks up to date again.
  std::size_t KeepFirst(std::size_t samples);

  // The summary of samples [begin, end) of `values` (the array this pyramid was built from).
  // Ranges that begin and end on whole blocks of kLeafSize are summed up from the blocks alone,
  // without reading a sample.
  ColumnSummary Summarize(std::span<const float> values, std::size_t begin, std::size_t end) const;

 private:
  struct Level {
    std::vector<float> min;
    std::vector<float> max;
  };
  void AddLeaf(std::span<const float> leaf);
  void CarryUp(std::size_t level);

  std::vector<Level> levels_;  // levels_[k]: blocks of kLeafSize << k samples
  // The first and last sample of every leaf block.
  std::vector<float> leaf_first_;
  std::vector<float> leaf_last_;
};

}  // namespace vela
