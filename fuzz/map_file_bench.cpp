#include "map_file_bench.h"

#include "editors/build_calibration.h"
#include "invariant.h"
#include "link/connection_supervisor.h"

namespace vela::fuzz {
namespace {

const ProgramFolders kFolders{"/", "/program/", "/maps/", "/datalogs/"};

// The frames a download ends with: one more than the last pair, then the closing frame.
constexpr int kLastPairPosition = kImageLength - 2;
constexpr int kClosePosition = kImageLength + 2;

}  // namespace

std::vector<std::uint8_t> DownloadLineBytes(const CalibrationImage& image) {
  std::vector<FrameBytes> frames;
  for (int p = 1; p <= kLastPairPosition; p += 2) {
    frames.push_back(
        BuildFrameBytes({kDownloadPairCommand, p, static_cast<std::int32_t>(image.Read16(p))}));
  }
  frames.push_back(BuildFrameBytes({kSingleValueWrite, kImageLength, image.Byte(kImageLength)}));
  frames.push_back(BuildFrameBytes({kCloseCommand, kClosePosition, 0}));
  return LineBytesOf(frames);
}

DownloadCallbacks ReadyWhileOpen(const SerialPort& port) {
  DownloadCallbacks callbacks;
  callbacks.line_ready = [&port] { return port.IsOpen(); };
  return callbacks;
}

CalibrationImage::Block BuiltBytes(const EditorState& state) {
  return BuildCalibrationFromEditors(state).image.Bytes();
}

MapFileBench::MapFileBench(std::uint8_t ecu_firmware)
    : map_files_(files, dialogs, messages, kFolders, memory), target_{line.link,     mode,
                                                                      program_image, state,
                                                                      apply,         download} {
  state.version.FirmwareVersion = ecu_firmware;
  files.folders[kFolders.maps] = true;
  dialogs.path = kMapPath;
  line.link.Caption = std::string(kCaptionConnected);
}

MapFileResult MapFileBench::LoadAndDownload(const std::string& content) {
  files.files[kMapPath] = content;
  const MapFileResult result = map_files_.LoadAndDownloadMap(target_);
  // A download sends one frame a tick, two positions a frame, and the closing frame last.
  constexpr int kDownloadTicks = (kImageLength + 1) / 2 + 1;
  for (int tick = 0; download.running(); ++tick) {
    Require(tick < kDownloadTicks, "a download ends after its last frame");
    download.Tick();
  }
  return result;
}

std::optional<std::string> MapFileBench::Save() {
  files.files.erase(kMapPath);
  if (map_files_.SaveMap(state) != MapFileResult::kDone) return std::nullopt;
  return files.ReadFile(kMapPath);
}

}  // namespace vela::fuzz
