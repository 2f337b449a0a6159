#include "link/program_status.h"

#include <algorithm>

#include "calibration/error_codes.h"

namespace vela {

StatusLook LinkStateLook(const ProgramStatus& status) {
  if (status.offline) {
    return {"Off-line", kOfflineAmber, kStatusText,
            "Working off-line: nothing is sent to the ECU (File Options, Go On-line)"};
  }
  if (status.downloading) {
    return {"Downloading " + std::to_string(status.download_percent) + " %", kDownloadBlue,
            kStatusText, "A map is being written into the ECU"};
  }
  if (!status.connected) {
    return {"Not connected", kNotConnectedGrey, kStatusText,
            "No live data arrives from the ECU: check the cable, the port and the ECU's power"};
  }
  if (status.reading_calibration) {
    return {"Reading calibration", kReadingCyan, kStatusText, "The ECU's calibration is arriving"};
  }
  if (status.sends_stalled) {
    return {"Connected, sends stalled", kStalledOrange, kStatusText,
            "Live data arrives, but a command to the ECU could not be written lately"};
  }
  return {"Connected", kConnectedGreen, kStatusText, "Live data arrives from the ECU"};
}

StatusLook LiveTuneLook(bool on) {
  if (on) {
    return {"Live Tune ON", kConnectedGreen, kStatusText,
            "Live tuning (Alt-L): Enter writes the live value into the selected cells"};
  }
  return {"Live Tune OFF", kOffGround, kOffText, "Live tuning is off (Alt-L switches it on)"};
}

StatusLook FaultLook(int code) {
  std::string_view title = ErrorTitle(code);
  title.remove_prefix(std::min(title.find_first_not_of(' '), title.size()));
  std::string text = "ECU fault " + std::to_string(code);
  if (!title.empty()) text += ": " + std::string(title);
  return {text, kFaultRed, kStatusLightText,
          "The ECU reported a new fault. Click for the faults seen and the ECU's codes."};
}

}  // namespace vela
