// Reading `Setup.txt`: any text as the file, read at start-up into the controls it stands for.
//
// Invariants:
// - no control is left at a value outside its range, and the port opened is the number line 1
//   gave;
// - writing the settings read and reading that file back gives the same settings, from any
//   controls the reading starts with, and writes the same file again.
#include <cstddef>
#include <cstdint>
#include <string>

#include "invariant.h"
#include "program/program_setup.h"
#include "support/platform_fakes.h"

namespace {

using vela::fuzz::Require;

bool Within(int value, int low, int high) { return value >= low && value <= high; }

void RequireInRange(const vela::ProgramSettings& s) {
  using namespace vela;
  Require(Within(s.port_index, 0, kPortCount - 1), "the port is one of CommPort 1 to 10");
  Require(Within(s.frames_per_second_index, 0, kFramesPerSecondChoices - 1),
          "the live-frame rate is one of its choices");
  Require(Within(s.datalog_time_scale, kDatalogTimeScaleMin, kDatalogTimeScaleMax),
          "the datalog time scale lies within its range");
  Require(Within(s.afr_display_mode, 0, kAfrDisplayModes - 1),
          "the air-fuel display mode is one of its choices");
  Require(Within(s.comms_packet_speed, 0, kPacketSpeedChoices - 1),
          "the comms multiply is one of its choices");
  Require(Within(s.reduce_comms_sending, 0, 1) && Within(s.rpm_smoothing, 0, 1) &&
              Within(s.map_smoothing, 0, 1) && Within(s.afr_smoothing, 0, 1),
          "the tick boxes are ticked or not");
  Require(Within(s.scale, kScaleMin, kScaleMax), "the scale lies within its range");
}

// Settings other than the defaults in every control, so that a line that is not read back
// shows.
vela::ProgramSettings EveryControlMoved() {
  return {.port_index = 8,
          .frames_per_second_index = 9,
          .datalog_time_scale = 3599,
          .afr_display_mode = 6,
          .fuel_map_numerical = false,
          .gpo_name_enable = true,
          .gpo_change_confirm = false,
          .map_integrity = false,
          .instant_help = false,
          .comms_packet_speed = 4,
          .reduce_comms_sending = 1,
          .rpm_smoothing = 1,
          .map_smoothing = 1,
          .afr_smoothing = 1,
          .language_first = false,
          .scale = -49};
}

struct SettingsBench {
  explicit SettingsBench(const std::string& file_text) {
    files.files[setup.SetupFilePath()] = file_text;
  }
  vela::ProgramFolders folders = vela::ProgramFoldersUnder("/home/tuner");
  vela::testing::MemoryFileSystem files;
  vela::testing::RecordingMessages messages;
  vela::StartupTrace trace;
  vela::testing::ScriptedPort port;
  vela::ProgramSetup setup{folders, files, messages, trace};
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string text(reinterpret_cast<const char*>(data), size);
  SettingsBench read(text);
  read.setup.ReadProgramSettings(read.port);
  RequireInRange(read.setup.settings);
  Require(read.port.opened == std::vector<int>{read.setup.CommPortNumber},
          "the port is opened once, with the number line 1 gave");

  read.setup.SaveProgramSettings();
  const std::string saved = read.files.files[read.setup.SetupFilePath()];
  SettingsBench reread(saved);
  reread.setup.settings = EveryControlMoved();
  reread.setup.ReadProgramSettings(reread.port);
  Require(reread.setup.settings == read.setup.settings,
          "settings written and read back are the settings written");
  reread.setup.SaveProgramSettings();
  Require(reread.files.files[reread.setup.SetupFilePath()] == saved,
          "settings read back write the same file");
  return 0;
}
