// The per-cell figures of a log kept up to date while it grows: each call takes only the records
// added since the last one, so a log being recorded costs the new records and nothing more. The
// figures are those of AddEvidence over the same records (cell_evidence.h).
#pragma once

#include <cstddef>
#include <vector>

#include "tune/cell_evidence.h"

namespace vela {

// While a log is open, records this recent are left for the next call: the link's gaps are
// decided about a second after they happen, and a gap moves the time of every record after it.
inline constexpr double kHeatSettleSeconds = 1.5;
// Records are taken this many at a time.
inline constexpr std::size_t kHeatSlice = 8192;

struct HeatSettings {
  LoadBasis basis = LoadBasis::kMap;
  FilterSettings filters;
  DelayModel delay;
};

class LogHeat {
 public:
  LogHeat(TuneAxes axes, TargetTable targets, HeatSettings settings);

  // Takes the records of `log` not yet taken. While `open` (being recorded) the newest
  // kHeatSettleSeconds wait, and a sample whose exhaust reading lies beyond the newest record
  // waits for it; once closed, everything is taken. A log that is not the one followed so far
  // (cleared, replaced, or a gap decided among the records already taken) starts over.
  void Follow(const DatalogLog& log, bool open);
  // Forgets every record: the next Follow starts from the first.
  void Reset();

  // True when the records taken so far are `log`'s (and there are some).
  bool Follows(const DatalogLog& log) const { return RecordsTaken() > 0 && SameLog(log); }

  const Evidence& Figures() const { return evidence_; }
  const CellGrid& Cells() const { return evidence_.cells; }
  const TargetTable& Targets() const { return targets_; }
  std::size_t RecordsTaken() const { return base_ + samples_.size(); }

 private:
  bool SameLog(const DatalogLog& log) const;
  void Take(const DatalogLog& log, std::size_t end);
  void Judge(std::size_t begin);
  void Pair(bool open);
  // Drops the samples no later one looks back at.
  void Forget();

  TuneAxes axes_;
  TargetTable targets_;
  HeatSettings settings_;
  Evidence evidence_;
  // The samples from record base_ on; the earlier ones are done with.
  std::vector<TuneSample> samples_;
  std::size_t base_ = 0;
  std::vector<SampleVerdict> verdicts_;
  std::size_t gaps_taken_ = 0;
  double lost_time_ = 0.0;
  double step_ = 0.0;
  double first_time_ = 0.0;
  int gap_count_ = 0;
  std::size_t next_pair_ = 0;  // the first kept sample not yet paired with its reading
  std::size_t cursor_ = 0;
};

}  // namespace vela
