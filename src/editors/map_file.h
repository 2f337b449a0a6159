// Map files (*.sm1): one calibration image on disk, its 1023 bytes and nothing else. Saving
// builds the image from the editors; loading applies a file to the editors and downloads it.
#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "base/file_system.h"
#include "base/platform.h"
#include "base/program_folders.h"
#include "calibration/calibration_image.h"
#include "editors/apply_calibration.h"
#include "editors/editor_state.h"
#include "link/link_state.h"
#include "link/transfer/download.h"

namespace vela {

// The filters keep their stray quotation mark and, on saving, the repeated entry.
inline constexpr std::string_view kSaveMapFilter =
    "MORVANE Map (*.sm1)|*.sm1|\"MORVANE Map (*.sm1)|*.sm1|";
inline constexpr std::string_view kSaveMapTitle = "Save MORVANE ECU Map to Hard Disk";
inline constexpr std::string_view kLoadMapFilter =
    "MORVANE Maps (*.sm1)|*.sm1|\"All Maps (*.sm*)|*.sm*|";
inline constexpr std::string_view kLoadMapTitle = "Download MORVANE VELA Map to the ECU";
inline constexpr std::string_view kMapExtension = ".sm1";

inline constexpr std::string_view kFolderNotFoundLine =
    "Folder not found. Please select the correct Maps folder where your maps are saved.";
// The save refusal shares the datalog wording on purpose.
inline constexpr std::string_view kSaveNameRefused =
    "Invalid File Name. This datalog will NOT be loaded.";
inline constexpr std::string_view kLoadNameRefused =
    "Invalid File Name. This map will NOT be loaded.";

inline constexpr std::string_view kDownloadErrorTitle = "DownLoad Error";
inline constexpr std::string_view kDownloadErrorLines[] = {
    "You cannot download a map to the ECU while it is          ",
    "not connected and the power is not turned on.",
    "The laptop software will now be swapped into Offline Mode."};
inline constexpr std::string_view kDownloadCheckTitle = " Download Check";
inline constexpr std::string_view kDownloadCheckLines[] = {
    "This operation will change ALL info currently in the ECU.",
    "Are you REALLY sure you want to download a new map into the ECU?       "};
inline constexpr std::string_view kDownloadStatus = "DownLoad";

// The folder the program's file dialog last showed. Every file action of the program (maps and
// datalogs) shares it, which is why a map dialog leaves the datalogs folder for the maps folder.
struct FileDialogMemory {
  std::string folder;
};

// Off-line mode: the tuner works on maps without an ECU. Loading a map then fills the editors
// and runs the download against whatever the port does (a closed port sends nothing).
struct ProgramMode {
  bool Offline = false;
};

// The dots in the name part of `path` (after the last '/' or '\'); five or more refuse it.
int DotsInFileName(const std::string& path);
bool FileNameAccepted(const std::string& path);

// The duty limit of each block row (1 to 11 at index 0 to 10) in microseconds: the cap every edit
// in the map editors is held to, 120000 x B / A milliseconds x RPM over the row's RPM (20 ms for
// the 0 RPM row), with A and B from the image's own injection mode and the RPM of its own sites.
std::array<int, kMapRows> FuelDutyLimits(const CalibrationImage& image);

// The fuel cells of `image` (both fuel maps, as the image lays them out) above the duty limit of
// their RPM row. A cell above it would ask for more than 100 % injector duty.
int OverDutyFuelCells(const CalibrationImage& image);

// The checks a map file passes before it is loaded, judged by the file alone (its own MAP sensor
// type included): the failed setup checks' messages, then one line for fuel cells above their
// duty limit. Empty when it passes.
std::vector<std::string> MapFileCheckFailures(const CalibrationImage& image);

// A map file read from disk: its image, or the line that says why the file is not a map (not
// exactly 1023 bytes, a folder, a pipe or a device, unreadable).
struct MapFileImage {
  std::optional<CalibrationImage> image;
  std::string refusal;
};
MapFileImage ReadMapFileImage(FileSystem& files, const std::string& path);

enum class MapFileResult { kDone, kCancelled, kRefused, kFailed };

// What loading a map works on besides the files. The ECU's firmware version that the loaded map
// keeps in byte 909 is the editors' (`state.version.FirmwareVersion`): byte 909 of the image the
// ECU uploaded, the one source of the version label and the version check (0 before any upload).
struct MapDownloadTarget {
  const LinkState& link;
  ProgramMode& mode;
  CalibrationImage& program_image;  // receives the loaded image
  EditorState& state;
  ApplyEnvironment& apply;
  Download& download;
};

class MapFiles {
 public:
  MapFiles(FileSystem& files, FileDialogs& dialogs, MessageSink& messages,
           const ProgramFolders& folders, FileDialogMemory& memory)
      : files_(files), dialogs_(dialogs), messages_(messages), folders_(folders), memory_(memory) {}

  // The save-map action: validates and builds the image (failed checks shown in one warning),
  // asks for a name, refuses five dots, asks before overwriting, writes the 1023 bytes through a
  // temporary file. A failed write says so and leaves the old file as it was.
  MapFileResult SaveMap(const EditorState& state);

  // The download-map-from-disk action: refuses when the ECU is neither connected nor off-line
  // (and switches to off-line mode), asks for a name, refuses five dots, then checks the file
  // before anything is asked or sent: a file that is not exactly 1023 bytes (or is a folder, a
  // pipe, a device, or cannot be read) is refused with its name and size; an image that fails
  // setup checks (judged by itself, its own MAP sensor type included, as applying it would) or
  // holds fuel cells above their duty limit is shown with its failures and the number of map
  // cells it would change, and goes on only on Yes (No is the default). Then it asks for
  // confirmation, replaces byte 909 by the uploaded ECU's version, applies the image and starts
  // its download, all 1023 bytes.
  MapFileResult LoadAndDownloadMap(MapDownloadTarget& target);

  // The file of the last map saved or loaded, empty before one.
  const std::string& last_path() const { return last_path_; }

 private:
  std::string InitialFolder();
  // The file's image, or nothing after the refusal has been shown.
  std::optional<CalibrationImage> ReadMapImage(const std::string& path);
  // True when the image passes the setup checks or the tuner chooses to go on.
  bool SetupAccepted(const std::string& path, const CalibrationImage& image,
                     const EditorState& state);
  void Remember(const std::string& path);
  void Warn(std::string_view title, std::string_view line);

  FileSystem& files_;
  FileDialogs& dialogs_;
  MessageSink& messages_;
  const ProgramFolders& folders_;
  FileDialogMemory& memory_;
  std::string last_path_;
};

}  // namespace vela
