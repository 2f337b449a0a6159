#include "editors/map_file.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <utility>
#include <vector>

#include "base/file_names.h"
#include "calibration/map_axes.h"
#include "editors/build_calibration.h"
#include "editors/mapgrid/cell_transmission.h"
#include "editors/setup/setup_checks.h"

namespace vela {

namespace {

constexpr std::string_view kNothingChanged = "Nothing was loaded and nothing was sent to the ECU.";
constexpr std::string_view kSaveFailedLine2 =
    "The map was not saved. The file on disk is unchanged.";

// A folder as a comparable prefix: '/' separators, ASCII lower case, a closing separator.
std::string FolderKey(std::string folder) {
  std::replace(folder.begin(), folder.end(), '\\', '/');
  for (char& c : folder) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
  if (folder.empty() || folder.back() != '/') folder += '/';
  return folder;
}

bool IsInside(const std::string& folder, const std::string& outer) {
  const std::string key = FolderKey(folder);
  const std::string outer_key = FolderKey(outer);
  return key.compare(0, outer_key.size(), outer_key) == 0;
}

// A name typed without any dot gets the map extension.
std::string WithMapExtension(const std::string& path) {
  if (path.find('.', NameStart(path)) != std::string::npos) return path;
  return path + std::string(kMapExtension);
}

std::vector<std::string> LinesOf(std::span<const std::string_view> lines) {
  return {lines.begin(), lines.end()};
}

}  // namespace

int DotsInFileName(const std::string& path) {
  return static_cast<int>(
      std::count(path.begin() + static_cast<std::ptrdiff_t>(NameStart(path)), path.end(), '.'));
}

bool FileNameAccepted(const std::string& path) {
  return DotsInFileName(path) <= kMaxDotsInFileName;
}

std::array<int, kMapRows> FuelDutyLimits(const CalibrationImage& image) {
  EngineSetup setup;
  setup.fuel_mode = image.Byte(FieldPos("InjectionMode")) & 0x03;
  SetupIgnitionDivide(setup);
  const double base = DutyLimitBase(setup);
  const std::array<int, kMapRows> rpm = RpmSites(image.Byte(FieldPos("RpmSitesSetup")));
  std::array<int, kMapRows> limits{};
  for (int i = 0; i < kMapRows; ++i) limits[i] = DutyLimitUnits(base, rpm[i]);
  return limits;
}

int OverDutyFuelCells(const CalibrationImage& image) {
  const std::array<int, kMapRows> limits = FuelDutyLimits(image);
  int over = 0;
  for (int map : {1, 2}) {
    for (int block_row = 1; block_row <= kMapRows; ++block_row) {
      for (int column = 1; column <= image.FuelLoadSites(); ++column) {
        const int raw =
            static_cast<int>(image.Read16(image.FuelCellPosition(map, block_row, column)));
        if (raw > limits[block_row - 1]) ++over;
      }
    }
  }
  return over;
}

std::vector<std::string> MapFileCheckFailures(const CalibrationImage& image) {
  const CheckContext own{image.Byte(FieldPos("MapSensorSetup")) & kMapSensorTypeBits};
  std::vector<std::string> failures = ValidateSetup(image, own);
  const int over_duty = OverDutyFuelCells(image);
  if (over_duty > 0) {
    failures.push_back(std::to_string(over_duty) +
                       (over_duty == 1 ? " fuel cell is above the duty limit of its RPM row"
                                       : " fuel cells are above the duty limit of their RPM row") +
                       " (more than 100 % injector duty)");
  }
  return failures;
}

MapFileImage ReadMapFileImage(FileSystem& files, const std::string& path) {
  // One byte more than a map holds tells a long file from a map without reading it whole.
  const FileHead head = files.ReadHead(path, kImageLength + 1);
  MapFileImage read;
  switch (head.kind) {
    case FileHead::Kind::kFile:
      if (head.size == static_cast<std::uint64_t>(kImageLength) &&
          head.bytes.size() == static_cast<std::size_t>(kImageLength)) {
        const auto* first = reinterpret_cast<const std::uint8_t*>(head.bytes.data());
        read.image.emplace();
        read.image->Assign(std::span<const std::uint8_t>(first, head.bytes.size()));
        return read;
      }
      read.refusal = "This file holds " + std::to_string(head.size) +
                     (head.size == 1 ? " byte." : " bytes.") +
                     " A map file holds exactly 1023 bytes, so this is not a map.";
      break;
    case FileHead::Kind::kFolder:
      read.refusal = "This is a folder, not a map file.";
      break;
    case FileHead::Kind::kNotAFile:
      read.refusal = "This is not a file on the disk (a pipe or a device), so it is not a map.";
      break;
    case FileHead::Kind::kMissing:
    case FileHead::Kind::kUnreadable:
      read.refusal = "The map file could not be read" +
                     (head.reason.empty() ? std::string(".") : ": " + head.reason + ".");
      break;
  }
  return read;
}

std::string MapFiles::InitialFolder() {
  if (!files_.IsDirectory(folders_.maps)) Warn(kFolderNotFoundTitle, kFolderNotFoundLine);
  if (memory_.folder.empty() || IsInside(memory_.folder, folders_.datalogs)) {
    memory_.folder = folders_.maps;
  }
  return memory_.folder;
}

void MapFiles::Remember(const std::string& path) {
  const std::size_t start = NameStart(path);
  if (start > 0) memory_.folder = path.substr(0, start);
}

void MapFiles::Warn(std::string_view title, std::string_view line) {
  messages_.Show(MessageIcon::kExclamation, std::string(title), {std::string(line)});
}

MapFileResult MapFiles::SaveMap(const EditorState& state) {
  const BuiltCalibration built = BuildCalibrationFromEditors(state);
  if (!built.errors.empty()) {
    messages_.Show(MessageIcon::kExclamation, std::string(kWarningTitle), built.errors);
  }
  const std::optional<std::string> chosen = dialogs_.AskSavePath(
      std::string(kSaveMapFilter), std::string(kSaveMapTitle), InitialFolder());
  if (!chosen) return MapFileResult::kCancelled;
  Remember(*chosen);
  if (!FileNameAccepted(*chosen)) {
    Warn(kSaveMapTitle, kSaveNameRefused);
    return MapFileResult::kRefused;
  }
  const std::string path = WithMapExtension(*chosen);
  if (files_.ReadFile(path) && messages_.Show(MessageIcon::kQuestion, std::string(kOverwriteTitle),
                                              {std::string(kOverwriteLine)},
                                              MessageButtons::kYesNo) != MessageAnswer::kYes) {
    return MapFileResult::kCancelled;
  }
  const CalibrationImage::Block& bytes = built.image.Bytes();
  const int error = files_.WriteFile(path, std::string(bytes.begin(), bytes.end()));
  if (error != kFileErrorNone) {
    messages_.Show(MessageIcon::kCritical, std::string(kSaveMapTitle),
                   {" Error Saving Program Settings, " + std::to_string(error) + "  ",
                    FileErrorLine(path, files_.LastWriteReason()), std::string(kSaveFailedLine2)});
    return MapFileResult::kFailed;
  }
  last_path_ = path;
  return MapFileResult::kDone;
}

MapFileResult MapFiles::LoadAndDownloadMap(MapDownloadTarget& target) {
  if (!target.link.CaptionSaysConnected() && !target.mode.Offline) {
    messages_.Show(MessageIcon::kExclamation, std::string(kDownloadErrorTitle),
                   LinesOf(kDownloadErrorLines));
    target.mode.Offline = true;
    return MapFileResult::kRefused;
  }
  const std::optional<std::string> path = dialogs_.AskOpenPath(
      std::string(kLoadMapFilter), std::string(kLoadMapTitle), InitialFolder());
  if (!path) return MapFileResult::kCancelled;
  Remember(*path);
  if (!FileNameAccepted(*path)) {
    Warn(kLoadMapTitle, kLoadNameRefused);
    return MapFileResult::kRefused;
  }
  std::optional<CalibrationImage> image = ReadMapImage(*path);
  if (!image) return MapFileResult::kRefused;
  image->SetByte(FieldPos("FirmwareVersion"), target.state.version.FirmwareVersion);
  if (!SetupAccepted(*path, *image, target.state)) return MapFileResult::kCancelled;
  if (messages_.Show(MessageIcon::kExclamation, std::string(kDownloadCheckTitle),
                     LinesOf(kDownloadCheckLines), MessageButtons::kYesNo) != MessageAnswer::kYes) {
    return MapFileResult::kCancelled;
  }
  target.program_image = *image;
  target.state.SetupErrors.clear();
  ApplyUploadedCalibration(*image, CalibrationSource::kMapFile, target.state, target.apply);
  target.download.Start(image->ToVector());
  target.apply.status.Show(std::string(kDownloadStatus));
  last_path_ = *path;
  return MapFileResult::kDone;
}

std::optional<CalibrationImage> MapFiles::ReadMapImage(const std::string& path) {
  MapFileImage read = ReadMapFileImage(files_, path);
  if (read.image) return std::move(read.image);
  messages_.Show(MessageIcon::kExclamation, std::string(kLoadMapTitle),
                 {"\"" + path + "\"", read.refusal, std::string(kNothingChanged)});
  return std::nullopt;
}

// The file is judged by itself: its scaling against its own MAP sensor type (byte 955), as
// applying it reads them, never against the sensor the editors show now.
bool MapFiles::SetupAccepted(const std::string& path, const CalibrationImage& image,
                             const EditorState& state) {
  const std::vector<std::string> failures = MapFileCheckFailures(image);
  if (failures.empty()) return true;
  const int differing = DifferingMapCells(image, BuildCalibrationFromEditors(state).image);
  std::vector<std::string> lines = {"The map file \"" + path.substr(NameStart(path)) +
                                    "\" fails these setup checks:"};
  for (const std::string& failure : failures) lines.push_back("    " + failure);
  lines.push_back(differing == 0 ? std::string("Its map cells are the same as the maps shown now.")
                                 : "It changes " + std::to_string(differing) +
                                       (differing == 1 ? " map cell" : " map cells") +
                                       " of the maps shown now.");
  lines.emplace_back("Download it into the ECU all the same?");
  return messages_.Show(MessageIcon::kExclamation, std::string(kWarningTitle), lines,
                        MessageButtons::kYesNoDefaultNo) == MessageAnswer::kYes;
}

}  // namespace vela
