// A log's records as the correction reads them: the operating point, the conditions the filters
// judge and the measured air-fuel ratio, on a time line that counts the frames the link lost.
#pragma once

#include <array>
#include <cstddef>
#include <vector>

#include "calibration/map_axes.h"
#include "datalog/datalog_log.h"

namespace vela {

struct TuneSample {
  double time = 0.0;  // seconds: the log time plus the frames lost before this record
  double rpm = 0.0;
  double load = 0.0;  // MAP in kPa on a MAP basis, throttle in % otherwise
  double fuel_ms = 0.0;
  double tps = 0.0;
  double water_c = 0.0;
  double pump = 0.0;    // throttle pump addition
  double afr = 0.0;     // the ratio itself (the channel holds ten times it)
  int lost_before = 0;  // gaps between the log's start and this record (a count, not frames)
};
// A channel that was not recorded for a record leaves NaN in its field.

struct SampleLog {
  std::vector<TuneSample> samples;
  double step = 0.0;  // seconds between two frames of the log (0 with fewer than two records)
};

// The columns of a log the correction reads, copied: a computation on another thread reads
// them while the log they were taken from goes on growing (its arrays move when they grow).
// Channels the correction does not read stay empty.
struct LogColumns {
  std::vector<double> times;
  std::vector<LogGap> gaps;
  std::array<std::vector<float>, kChannelCount> values;
};

// Brings `columns` up to `log`: only the records it lacks are copied while it holds the start of
// this same log (same first time, same time at its last record); otherwise all of them again.
// The gaps are always taken whole (one decided late moves later records). False when it
// started over.
bool TakeColumns(const DatalogLog& log, LogColumns& columns);
// True when `columns` hold the first records of `log` (false when they hold none).
bool HoldsStartOf(const LogColumns& columns, const DatalogLog& log);

// Record `record` of `log` without its time (time and lost_before are left 0).
TuneSample SampleAt(const DatalogLog& log, LoadBasis basis, std::size_t record);

// The records of `log`, in order. A frame lost by the link moves every later record on by one
// frame step, so that times stay true across a gap.
SampleLog SamplesOf(const DatalogLog& log, LoadBasis basis);
SampleLog SamplesOf(const LogColumns& log, LoadBasis basis);

// The first sample at or after `time`, from `from` on (the samples' count when none).
std::size_t SampleAtOrAfter(const std::vector<TuneSample>& samples, double time, std::size_t from);

// The AFR measured at `time` for the sample `from`: straight between the two samples around it
// when both read inside [valid_low, valid_high], otherwise the nearer one's reading as it is.
// `beyond` when `time` lies past the log's end or across a gap after `from`. `cursor` keeps the
// place between calls (any value to start).
struct PairedAfr {
  double afr = 0.0;
  bool beyond = false;
};
PairedAfr AfrAt(const std::vector<TuneSample>& samples, std::size_t from, double time,
                double valid_low, double valid_high, std::size_t& cursor);

}  // namespace vela
