// What the window says about the link and the program's mode, worked out in one place so that
// the status strip, the map pages and the Data Page use the same words and colours: off-line,
// downloading, not connected, reading the calibration, connected (with sends stalled or not),
// live tuning on or off, and a new fault of the ECU.
#pragma once

#include <string>

#include "link/receive/receive_display.h"

namespace vela {

struct ProgramStatus {
  bool offline = false;              // the tuner works off-line: nothing is sent
  bool connected = false;            // live data keeps arriving
  bool reading_calibration = false;  // a calibration reply is arriving
  bool downloading = false;
  int download_percent = 0;
  bool sends_stalled = false;  // a command could not be written lately
};

struct StatusLook {
  std::string text;
  LabelColour background;
  LabelColour foreground;
  std::string tooltip;
  bool operator==(const StatusLook&) const = default;
};

inline constexpr LabelColour kStatusText{0, 0, 0};
inline constexpr LabelColour kStatusLightText{255, 255, 255};
inline constexpr LabelColour kConnectedGreen = kLabelGreen;
inline constexpr LabelColour kNotConnectedGrey{200, 200, 200};
inline constexpr LabelColour kOfflineAmber{255, 210, 70};
inline constexpr LabelColour kDownloadBlue{130, 180, 255};
inline constexpr LabelColour kReadingCyan{150, 230, 230};
inline constexpr LabelColour kStalledOrange = kLinkStalled;
inline constexpr LabelColour kFaultRed{200, 30, 20};
// A switch that is off, and a live value that is not live: grey text on a pale ground.
inline constexpr LabelColour kOffGround{235, 235, 235};
inline constexpr LabelColour kOffText{140, 140, 140};

// The one place of the strip that tells the state of the link, the first that applies:
// off-line, downloading, not connected, reading the calibration, sends stalled, connected.
StatusLook LinkStateLook(const ProgramStatus& status);
// Live tuning (Alt-L): "Live Tune ON" in green, "Live Tune OFF" in grey.
StatusLook LiveTuneLook(bool on);
// A new fault: its code and title in white on red.
StatusLook FaultLook(int code);
// True when the live read-outs show live values.
inline bool LiveValuesShown(const ProgramStatus& status) { return status.connected; }

}  // namespace vela
