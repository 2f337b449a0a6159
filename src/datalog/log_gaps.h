// Where the link lost frames during a log. Every record has two times: its log time, which counts
// frames at the chosen frame rate (the chart's time base), and its arrival time on the program's
// clock. While no frame is lost the two run side by side, the arrival a little late by however
// long the frame waited in the receive path. A lost frame moves the arrival ahead of the log
// time for good by one frame step; a frame that only waited moves it ahead for a moment, and the
// frames behind it arrive bunched and take the lead back.
//
// So a gap is judged on the lead of the arrival over the log time (the lag): a record whose
// arrival came markedly later than one step after the record before is a candidate; its lag's
// lowest value over the settle window after it, less the lowest over the settle window before it
// (back to the last gap at most), is what the log lost there, in frame steps. The lowest values
// are those of the frames that waited least, so the receive path's waits cancel out.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

namespace vela {

struct LogGap {
  std::size_t record = 0;            // the first record after the gap
  std::uint32_t missing_frames = 0;  // frames the link lost there
  double clock_s = 0.0;              // arrival time between the record before and this one
  bool operator==(const LogGap&) const = default;
};

// A record is a candidate when its arrival came this much later than one step after the record
// before, or half a step when that is more.
inline constexpr double kGapCandidateSeconds = 0.02;
// The settle window: long enough for a backlog that the receive path kept to drain (22 frames
// at 60 frames a second drain in about a third of a second), and at least this many steps.
inline constexpr double kGapSettleSeconds = 1.0;
inline constexpr int kGapSettleSteps = 8;

class GapFinder {
 public:
  void Clear() { *this = GapFinder(); }
  // Looks at the records appended since the last call (`times` and `arrivals` are the log's
  // whole arrays; an arrival that is NaN is unknown) and decides every candidate whose settle
  // window has passed.
  void Update(const std::vector<double>& times, const std::vector<double>& arrivals);
  // The log ends: the candidates still waiting are decided on the records there are.
  void Close(const std::vector<double>& times, const std::vector<double>& arrivals);

  // The gaps decided so far, in record order.
  const std::vector<LogGap>& gaps() const { return gaps_; }
  std::uint64_t MissingFrames() const { return missing_frames_; }

 private:
  void Decide(std::size_t candidate, const std::vector<double>& times,
              const std::vector<double>& arrivals);

  std::size_t next_ = 1;  // the next record to look at
  std::vector<std::size_t> pending_;
  std::size_t floor_ = 0;  // the first record after the last gap: lags before it do not count
  std::vector<LogGap> gaps_;
  std::uint64_t missing_frames_ = 0;
};

}  // namespace vela
