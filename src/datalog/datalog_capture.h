// Logging: its start and stop, and the capture of every live frame while it runs. Each frame
// becomes one record stamped with a running log time that advances 1.002 / `FramesPerSecond` a
// frame, `FramesPerSecond` being the frame rate the link chose (the live-frame rate choice), and
// with its arrival time on the program's clock; it is decoded channel by channel in the capture
// order into the channels that are enabled.
#pragma once

#include <array>
#include <cstdint>

#include "datalog/channels.h"
#include "datalog/datalog_log.h"
#include "link/live/live_frame.h"

namespace vela {

// The numerator of the time step: the time axis runs two parts in a thousand slower than the
// nominal frame rate, deliberately.
inline constexpr double kDatalogTimeStep = 1.002;
inline constexpr std::int16_t kChannelMaxReset = 10;
inline constexpr std::int16_t kChannelMinReset = 0;
inline constexpr int kChannelLimitsReset = 21;  // entries 0 to 20 are reset before each record

// The frames a second of the live-frame rate choice `index` ("60 Samples/Second" is 60); 0 for
// an index outside the list.
std::int16_t FramesPerSecondOfChoice(int index);

class DatalogCapture {
 public:
  explicit DatalogCapture(DatalogLog& log) : log_(log) {}

  // Clears the record counters and the log, sets the time axis to 0 .. `time_scale_s`, and
  // draws exactly the enabled channels in their own colours. `now_s` is the program's clock
  // (seconds), from which the records' arrival times are counted.
  void StartLogging(double time_scale_s, double now_s);
  // Logging ends; the log's last gaps are decided.
  void StopLogging();

  // Records `frame`, which arrived at `now_s` on the program's clock, while logging runs
  // (nothing otherwise). The time axis follows the newest point only when `follow` is true;
  // `packet_speed_factor` sets its look-ahead. Returns true when the frame was recorded.
  bool CaptureFrame(const live::Frame& frame, const ChannelInputs& inputs,
                    double packet_speed_factor, bool follow, double now_s);
  // The arrival time a frame at `now_s` would have (seconds since logging started).
  double ArrivalOf(double now_s) const { return now_s - started_s_; }

  // `ChannelEnabled`[n] and the active state of series n, which always go together.
  void SetChannelEnabled(int channel, bool enabled);
  // A nonzero entry counts as enabled (the start-up sets channel 0 to 1).
  bool ChannelOn(int channel) const { return ChannelEnabled[channel] != 0; }

  bool DatalogLive = false;
  double DatalogTime = 0.0;
  float DatalogRecordCount = 0.0f;
  std::int16_t FramesPerSecond = 0;
  std::array<std::int16_t, 16> ChannelEnabled{};
  std::array<std::int16_t, 101> ChannelMax{};
  std::array<std::int16_t, 101> ChannelMin{};

 private:
  void UpdateLimits(int channel, double value);

  DatalogLog& log_;
  double started_s_ = 0.0;
};

}  // namespace vela
