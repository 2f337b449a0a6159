// What the main window shows of the receive side, the supervision and the upload: counters,
// label texts and colours. The cores write it; the Qt side reads it after every event or tick it
// passes on and refreshes its widgets from it.
#pragma once

#include <cstddef>
#include <string>

namespace vela {

struct LabelColour {
  int red = 0;
  int green = 0;
  int blue = 0;
  bool operator==(const LabelColour&) const = default;
};

inline constexpr LabelColour kIndicatorPink{255, 110, 210};  // the port was closed and reopened
inline constexpr LabelColour kIndicatorGrey{128, 128, 128};  // nothing is arriving
inline constexpr LabelColour kLabelGreen{128, 255, 128};
inline constexpr LabelColour kLabelRed{255, 20, 20};
inline constexpr LabelColour kLinkStalled{255, 160, 64};  // recent send aborts

struct LabelLook {
  std::string text;
  LabelColour colour;
  bool operator==(const LabelLook&) const = default;
};

struct LinkDisplay {
  // Receive event and dispatcher.
  int overflow_count = 0;
  int tick_count = 0;
  std::size_t last_chunk_length = 0;
  std::string last_overflow_text;
  LabelLook receive_indicator;

  // Connection supervision.
  LabelLook status;  // the watchdog count, or "UPLOAD" / "ERR" while an upload runs
  LabelLook link_indicator;
  std::string datalog_button_text;

  // Upload.
  std::string orange_block;  // the `LabelOrangeBlock` label
  int upload_progress = 0;   // percent of the reply received
};

}  // namespace vela
