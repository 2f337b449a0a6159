// A synthetic log as the program records it: an engine that starts, sweeps the map with tip-ins,
// decel cuts, a cold start warming up and a dead sensor now and then, `rate` records a second.
// Optionally the link loses `lost_frames` frames at `gap_at` seconds.
#pragma once

#include <cmath>

#include "datalog/datalog_log.h"

namespace vela::tune_testing {

struct DriveShape {
  double seconds = 120.0;
  double rate = 60.0;
  double gap_at = -1.0;  // seconds; below 0: no gap
  int lost_frames = 0;
};

inline ChannelValues DriveValuesAt(double t) {
  ChannelValues values{};
  const bool running = t >= 1.0;
  const double rpm =
      running ? 2800.0 + 1900.0 * std::sin(t / 7.0) + 700.0 * std::sin(t / 1.3) : 0.0;
  const double map = 58.0 + 36.0 * std::sin(t / 5.3 + 1.0);
  const bool cut = std::fmod(t, 23.0) < 1.5;
  values[0] = rpm;
  values[1] = map;
  values[2] = cut ? 0.0 : map * 0.8;
  values[3] = cut ? 0.0 : 1.0 + map / 20.0;
  values[6] = std::min(90.0, 15.0 + t * 1.5);
  values[10] = std::fmod(t, 11.0) < 0.3 ? 0.6 : 0.0;
  const bool dead = std::fmod(t, 37.0) > 36.0;
  values[11] = dead ? 0.0 : 10.0 * (13.8 + 1.1 * std::sin(t / 3.1) + 0.4 * std::sin(t * 2.3));
  return values;
}

// Appends records [from, to) of the drive to `log`.
inline void AppendDrive(DatalogLog& log, const DriveShape& shape, std::size_t from,
                        std::size_t to) {
  const double step = 1.0 / shape.rate;
  constexpr ChannelMask kRecorded =
      (1u << 0) | (1u << 1) | (1u << 2) | (1u << 3) | (1u << 6) | (1u << 10) | (1u << 11);
  for (std::size_t i = from; i < to; ++i) {
    const double t = static_cast<double>(i) * step;
    const bool after_gap = shape.gap_at >= 0.0 && t >= shape.gap_at;
    const double arrival = t + (after_gap ? shape.lost_frames * step : 0.0) + 0.002;
    // The engine moved on while frames were lost: the values are those of the true time.
    log.Append(t, arrival, DriveValuesAt(arrival), kRecorded);
  }
}

inline std::size_t DriveRecords(const DriveShape& shape) {
  return static_cast<std::size_t>(shape.seconds * shape.rate);
}

inline void FillDrive(DatalogLog& log, const DriveShape& shape) {
  AppendDrive(log, shape, 0, DriveRecords(shape));
  log.CloseGaps();
}

}  // namespace vela::tune_testing
