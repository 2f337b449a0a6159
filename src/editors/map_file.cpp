#include "editors/map_file.h"

#include <algorithm>
#include <cctype>
#include <utility>
#include <vector>

#include "editors/build_calibration.h"

namespace vela {

namespace {

constexpr int kFirmwareTextStart = 18;  // the 19th character, counted from 0
constexpr std::string_view kUnreadableMapLines[] = {
    "The map file could not be read.", "Nothing was loaded and nothing was sent to the ECU."};
constexpr std::string_view kSaveFailedLine2 =
    "The map was not saved. The file on disk is unchanged.";

std::size_t NameStart(const std::string& path) {
  const std::size_t separator = path.find_last_of("/\\");
  return separator == std::string::npos ? 0 : separator + 1;
}

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

std::uint8_t FirmwareVersionFromText(const std::string& version_text) {
  if (version_text.size() <= static_cast<std::size_t>(kFirmwareTextStart)) return 0;
  std::size_t i = static_cast<std::size_t>(kFirmwareTextStart);
  while (i < version_text.size() && version_text[i] == ' ') ++i;
  int number = 0;
  bool any_digit = false;
  for (; i < version_text.size() && std::isdigit(static_cast<unsigned char>(version_text[i]));
       ++i) {
    number = number * 10 + (version_text[i] - '0');
    any_digit = true;
    if (number > 255) return 0;
  }
  return any_digit ? static_cast<std::uint8_t>(number) : 0;
}

bool LinkConnected(const LinkState& link) {
  return !link.Caption.empty() && link.Caption.find("Not") == std::string::npos;
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
    messages_.Show(MessageIcon::kExclamation, std::string(kMapWarningTitle), built.errors);
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
                    std::string(kSaveFailedLine2)});
    return MapFileResult::kFailed;
  }
  return MapFileResult::kDone;
}

MapFileResult MapFiles::LoadAndDownloadMap(MapDownloadTarget& target) {
  if (!LinkConnected(target.link) && !target.mode.Offline) {
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
  if (messages_.Show(MessageIcon::kExclamation, std::string(kDownloadCheckTitle),
                     LinesOf(kDownloadCheckLines), MessageButtons::kYesNo) != MessageAnswer::kYes) {
    return MapFileResult::kCancelled;
  }
  const std::optional<std::string> content = files_.ReadFile(*path);
  if (!content) {
    messages_.Show(MessageIcon::kExclamation, std::string(kLoadMapTitle),
                   LinesOf(kUnreadableMapLines));
    return MapFileResult::kFailed;
  }
  // The file's first 1023 bytes are the image. A shorter file gives a shorter image: the editors
  // read it as far as it reaches, and the download sends only the bytes it holds, so the ECU
  // keeps its own values beyond them. Byte 909 is replaced where the image reaches it.
  const auto* first = reinterpret_cast<const std::uint8_t*>(content->data());
  std::vector<std::uint8_t> bytes(first,
                                  first + std::min<std::size_t>(content->size(), kImageLength));
  constexpr int kVersionPosition = SetupFieldNamed("FirmwareVersion").position;
  if (bytes.size() >= static_cast<std::size_t>(kVersionPosition)) {
    bytes[static_cast<std::size_t>(kVersionPosition - 1)] =
        FirmwareVersionFromText(target.ecu_version_text);
  }
  const CalibrationImage image = ImageReadAsFarAsItReaches(bytes);
  target.program_image = image;
  target.state.SetupErrors.clear();
  ApplyUploadedCalibration(image, CalibrationSource::kMapFile, target.state, target.apply);
  target.download.Start(std::move(bytes));
  target.apply.status.Show(std::string(kDownloadStatus));
  return MapFileResult::kDone;
}

}  // namespace vela
