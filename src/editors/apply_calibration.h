// `ApplyUploadedCalibration` ("Upload Sorting"): distributes one calibration image over the
// editors, checking every setup value on the way. It runs after an upload has arrived complete
// and after a map file has been read. No check stops it: every field is applied, and every
// problem goes into the setup error list.
#pragma once

#include <cstdint>
#include <functional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "base/platform.h"
#include "base/startup_trace.h"
#include "calibration/calibration_image.h"
#include "editors/editor_state.h"
#include "link/link_state.h"

namespace vela {

inline constexpr std::string_view kUploadSortingStarted = "Upload Sorting Started";
inline constexpr std::string_view kUploadSortingComplete = "Upload Sorting Complete";

// The message for an ECU whose firmware is newer than this program. The first line gains two
// more blanks when the version text has changed since the box was last shown.
inline constexpr std::string_view kSoftwareUpdateTitle = "PC Software Update";
inline constexpr std::string_view kSoftwareUpdateLine1 =
    "The Software has detected that your     \"PC Software\"     is not the latest version.";
inline constexpr std::string_view kSoftwareUpdateLine2 =
    "Please contact MORVANE Engine Management for a free upgrade or visit www.morvane.example";
inline constexpr std::string_view kSoftwareOutOfDate = "PC Software out of date";

// The message for old ECU firmware; its test (FirmwareOlderThanSoftware) never passes.
inline constexpr std::string_view kFirmwareUpdateTitle = "Firmware Update";
inline constexpr std::string_view kFirmwareUpdateLine1 =
    "The Software has detected that your MORVANE is not the latest version.";
inline constexpr std::string_view kFirmwareUpdateLine2 =
    "Please could you contact your nearest dealer for a free upgrade on your MORVANE system.     ";
inline constexpr std::string_view kFirmwareNotLatest = "ECU Firmware not latest version";

// Firmware versions this program knows; a higher one means the program is older than the ECU.
inline constexpr int kLatestKnownFirmware = 3;

// An applied upload ends with the live-rate command: kSingleValueWrite at kLiveRateAddress,
// carrying the link's `CommsSpeedValue`, so that the ECU resumes its live frames at the chosen rate
// after the upload preparation (values 8 and 15 at the same address).

// kEditorsImage: the editors' own image shown again after an undo, a redo or a restore; nothing
// reaches the link or the status label, and no note is made.
enum class CalibrationSource { kUpload, kMapFile, kEditorsImage };

// Holds `SuppressChangeEvents` up while the editors are filled, and puts it back as it was.
class ChangeEventsSuppressed {
 public:
  explicit ChangeEventsSuppressed(bool& flag) : flag_(flag), before_(flag) { flag_ = true; }
  ~ChangeEventsSuppressed() { flag_ = before_; }
  ChangeEventsSuppressed(const ChangeEventsSuppressed&) = delete;
  ChangeEventsSuppressed& operator=(const ChangeEventsSuppressed&) = delete;

 private:
  bool& flag_;
  bool before_;
};

// A message the procedure has for the tuner (the version message). No box opens while the
// editors are being filled: a modal box lets other events run, a calibration arriving then would
// be applied into half-filled editors, and the link would wait behind it. The notes are shown
// once the calibration is applied.
struct CalibrationNote {
  MessageIcon icon = MessageIcon::kInformation;
  std::string title;
  std::vector<std::string> lines;
};

// What the procedure reaches beyond the editors.
struct ApplyEnvironment {
  StartupTrace& status;          // the status label `LabelOrangeBlock`
  MessageSink& messages;         // the notes, unless `notes` takes them
  CommandSender& sender;         // the live-rate command of step 12
  const LinkState& link;         // `CommsSpeedValue`
  bool& suppress_change_events;  // `SuppressChangeEvents`: true while the editors fill
  // Step 12 after a map file: the calibration upload is over (it stops its timer and clears its
  // flags), the editors hold what the ECU is about to get. An upload stopped its own timer and
  // cleared its flags when it handed its block on, so an upload's step 12 leaves it alone: one
  // re-armed since (the ECU was lost while the block waited) goes on.
  std::function<void()> end_upload;
  // Takes the notes for the caller to show when it is done; null: they are shown through
  // `messages` as the procedure's last act.
  std::vector<CalibrationNote>* notes = nullptr;
};

// Steps 1 to 12 in order: status "Upload Sorting Started"; the ECU number; cylinders and RPM
// sites; fuel sites and map selection; the maps, trigger offset, ignition sites and lock; the
// version checks and `Check7`; engine setup; outputs and byte 942; fuel, TPS and MAP sensor;
// inputs and dwell; tables and idle; status "Upload Sorting Complete", and for an upload the
// live-rate command, for a map file the end of the upload. `SuppressChangeEvents` is true
// throughout and is restored afterwards; then the notes (the version message) are handed over or
// shown. The setup error list is appended to, not cleared.
void ApplyUploadedCalibration(const CalibrationImage& image, CalibrationSource source,
                              EditorState& state, ApplyEnvironment& env);

}  // namespace vela
