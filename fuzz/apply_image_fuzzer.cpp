// Applying a calibration: any bytes as a 1023-byte image (a shorter input is padded with zero
// bytes, a longer one cut) applied to a fresh editor state as an uploaded calibration.
//
// Invariants:
// - applying sends exactly one frame, the live-rate command that ends an upload;
// - the editors' change events are held only while the image is applied;
// - the maps are laid out for a load-site count the map pages offer, and every cell is a
//   number the map grids can show;
// - a saved map reloads to the same bytes: what the applied editors build is what the save
//   writes, loading that file downloads exactly its bytes, and the editors it fills build the
//   same bytes again.
#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <string>

#include "editors/apply_calibration.h"
#include "invariant.h"
#include "map_file_bench.h"

namespace {

using vela::fuzz::Require;

void RequireGrid(const vela::MapValues& grid, int load_sites, double low, double high) {
  Require(grid.Columns() == load_sites, "each map has a column for every load site");
  for (int row = 1; row <= grid.Rows(); ++row) {
    for (int column = 1; column <= grid.Columns(); ++column) {
      const double value = grid.At(row, column);
      Require(std::isfinite(value) && value >= low && value <= high,
              "every map cell lies within what its image byte can stand for");
    }
  }
}

void RequireMapLayout(const vela::MapEditors& maps) {
  using namespace vela;
  Require(std::ranges::count(kFuelLoadSiteChoices, maps.FuelLoadSites) == 1,
          "the fuel maps have 9, 13 or 17 load sites");
  Require(std::ranges::count(kIgnLoadSiteChoices, maps.IgnLoadSites) == 1,
          "the ignition map has 5 or 6 load sites");
  RequireGrid(maps.FuelMap1, maps.FuelLoadSites, 0.0, 65.535);
  RequireGrid(maps.FuelMap2, maps.FuelLoadSites, 0.0, 65.535);
  RequireGrid(maps.IgnMap, maps.IgnLoadSites, kIgnReference - 127.5, kIgnReference);
}

// Saves the applied editors, loads the saved file into fresh editors and builds them again.
void RequireSavedMapReloads(vela::fuzz::MapFileBench& applied) {
  using namespace vela;
  const CalibrationImage::Block built = fuzz::BuiltBytes(applied.state);
  const std::optional<std::string> saved = applied.Save();
  Require(saved && std::ranges::equal(
                       *saved, built,
                       [](char c, std::uint8_t b) { return static_cast<std::uint8_t>(c) == b; }),
          "the saved map is the 1023 bytes the editors build");

  fuzz::MapFileBench reloaded(applied.state.version.FirmwareVersion);
  Require(reloaded.LoadAndDownload(*saved) == MapFileResult::kDone, "a saved map loads");
  CalibrationImage saved_image;
  saved_image.Assign(built);
  Require(reloaded.line.port.written == fuzz::DownloadLineBytes(saved_image),
          "loading a saved map downloads exactly its bytes");
  Require(fuzz::BuiltBytes(reloaded.state) == built,
          "a saved map reloads into editors that build the same bytes");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace vela;
  CalibrationImage::Block bytes{};
  std::copy_n(data, std::min(size, bytes.size()), bytes.begin());
  CalibrationImage image;
  image.Assign(bytes);

  fuzz::MapFileBench bench(0);
  ApplyUploadedCalibration(image, CalibrationSource::kUpload, bench.state, bench.apply);
  Require(!bench.suppress_change_events, "change events flow again once the image is applied");
  const FrameBytes live_rate =
      BuildFrameBytes({kSingleValueWrite, kLiveRateAddress, bench.line.link.CommsSpeedValue});
  Require(std::ranges::equal(bench.line.port.written, live_rate),
          "applying an upload sends the live-rate command and nothing else");
  RequireMapLayout(bench.state.maps);

  bench.line.port.written.clear();
  RequireSavedMapReloads(bench);
  return 0;
}
