// The list of a log's markers: the tuner's own, the ECU faults the program marked while
// recording (markers whose text begins "Fault N:"), and the gaps where the link lost frames,
// in time order, with the steps to the next and previous one from a time.
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "datalog/datalog_log.h"

namespace vela::review {

enum class MarkerKind { kTuner, kFault, kGap };

struct MarkerEntry {
  double time = 0.0;
  std::string text;
  MarkerKind kind = MarkerKind::kTuner;
  // The index in the log's markers (tuner's and faults: the index to edit the text by) or in
  // its gaps.
  std::size_t source = 0;
  bool Editable() const { return kind != MarkerKind::kGap; }
  bool operator==(const MarkerEntry&) const = default;
};

// True for the text the program gives a fault it marks: "Fault " and a number and ":".
bool IsFaultMarkerText(std::string_view text);
// A gap's text: "Gap: 7 frames missing, 0.800 s" (the frames lost and the clock time between
// the records on either side).
std::string GapMarkerText(const LogGap& gap);

// Every marker and gap of `log`, by time (a gap at the time of the record after it); at the same
// time markers come before gaps, each in its own order.
std::vector<MarkerEntry> BuildMarkerList(const DatalogLog& log);

// The first entry after `time` (later by more than a microsecond), or the last before it;
// nullopt when there is none.
std::optional<std::size_t> NextMarker(const std::vector<MarkerEntry>& list, double time);
std::optional<std::size_t> PreviousMarker(const std::vector<MarkerEntry>& list, double time);

}  // namespace vela::review
