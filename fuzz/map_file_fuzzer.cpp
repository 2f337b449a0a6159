// Loading a map file: any bytes as the file, through the whole load-and-download action with
// every question answered Yes and the download run to its end.
//
// Invariants:
// - a file that is not exactly 1023 bytes is refused: nothing is sent, nothing is applied;
// - a 1023-byte file is downloaded whole: the line carries exactly the download frames of the
//   file's bytes, with byte 909 replaced by the connected ECU's firmware version, and the
//   program's image holds the same bytes;
// - the download gives the link lock back as it found it.
#include <cstddef>
#include <cstdint>
#include <span>
#include <string>

#include "invariant.h"
#include "map_file_bench.h"

namespace {

constexpr std::uint8_t kEcuFirmware = 3;

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace vela;
  using fuzz::Require;
  const std::string content(reinterpret_cast<const char*>(data), size);
  fuzz::MapFileBench bench(kEcuFirmware);
  const MapFileResult result = bench.LoadAndDownload(content);
  Require(!bench.line.link.TLock, "the link lock is as it was once the download has ended");

  if (size != static_cast<std::size_t>(kImageLength)) {
    Require(result == MapFileResult::kRefused, "a file that is not 1023 bytes is refused");
    Require(bench.line.port.written.empty(), "nothing is sent for a file that is not a map");
    Require(bench.program_image.Bytes() == CalibrationImage().Bytes(),
            "a refused file leaves the program's image alone");
    Require(bench.status.texts().empty(), "a refused file is not applied to the editors");
    return 0;
  }

  Require(result == MapFileResult::kDone, "a 1023-byte file answered Yes all the way is loaded");
  CalibrationImage expected;
  expected.Assign(std::span(data, size));
  expected.SetByte(FieldPos("FirmwareVersion"), kEcuFirmware);
  Require(bench.program_image.Bytes() == expected.Bytes(),
          "the program's image is the file with the ECU's firmware version");
  fuzz::CommandFramesOf(bench.line.port.written);
  Require(bench.line.port.written == fuzz::DownloadLineBytes(expected),
          "the download carries exactly the file's bytes, byte 909 from the ECU");
  Require(!bench.download.broken(), "a download on an open, connected line is not broken");
  return 0;
}
