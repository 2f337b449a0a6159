// The simulated ECU on a POSIX pseudo-terminal: the terminal's master side stands for the ECU's
// serial line, and the program opens the slave side as its serial port. The runner feeds what
// the program writes into the simulator and sends the simulator's bytes in real time (a
// pseudo-terminal ignores the baud rate, so the simulator paces them itself). It survives the
// program closing and reopening the port. It installs no signal handler and keeps no global
// state, so the program can run one in-process on a thread (`morvane-vela --simulate`).
#pragma once

#include <atomic>
#include <functional>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include "calibration/calibration_image.h"
#include "sim/core/engine_model.h"
#include "sim/core/sim_options.h"

namespace vela::sim {

struct PtyRunnerHooks {
  // Called once, on the runner's thread, with the slave's device path when it is ready to open.
  std::function<void(const std::string&)> on_ready;
  // Called on the runner's thread with log lines: each command frame received when `verbose` is
  // set, and the other end opening and closing.
  std::function<void(const std::string&)> on_log;
  // Called on the runner's thread with the ECU's image at start and after every input that
  // carried a command (so that a watcher sees each write the program made).
  std::function<void(const CalibrationImage&)> on_image;
  // Polled on the runner's thread: bytes to feed the ECU as if they had come down the line, for
  // a local console or a test that changes the ECU's image behind the program's back.
  std::function<std::vector<std::uint8_t>()> take_local_input;
  // Called on the runner's thread with the engine's state after the ECU's time moved on.
  std::function<void(const EngineState&)> on_engine;
};

// Runs until `stop` turns true (checked at least every 20 ms). Returns 0, or 1 with the reason
// in `error` when the image, the terminal or the link cannot be set up.
int RunSimulatorOnPty(const SimCommandLine& options, const std::atomic<bool>& stop,
                      const PtyRunnerHooks& hooks, std::string* error);

// A simulator running on a thread of its own, named kInProcessThreadName. Start and Stop may be
// called from any one thread; the destructor stops it.
inline constexpr char kInProcessThreadName[] = "vela-ecusim";
class InProcessSimulator {
 public:
  InProcessSimulator();
  ~InProcessSimulator();
  InProcessSimulator(const InProcessSimulator&) = delete;
  InProcessSimulator& operator=(const InProcessSimulator&) = delete;

  // Starts the thread and waits until the terminal is ready. False, with the reason in `error`,
  // when it could not start or is already running. `log` receives the runner's log lines on the
  // runner's thread (may be empty).
  bool Start(const SimCommandLine& options, std::string* error,
             std::function<void(const std::string&)> log = {});
  // Stops the runner and waits for its thread; nothing happens when it is not running.
  void Stop();
  // True from a successful Start until Stop, unless the runner failed on its way.
  bool Running() const;
  // The slave's device path, for the serial port to open; empty when not started.
  std::string SlavePath() const;
  // The ECU's image as it stood after the last command it took.
  CalibrationImage ImageSnapshot() const;
  // The engine's state as the ECU last computed it (the values its next frame carries).
  EngineState EngineSnapshot() const;
  // Writes one byte of the ECU's image with the ECU's own single-byte write (command 4), as if
  // it had come down the line; it takes effect on the runner's next round.
  void WriteImageByte(int position, std::uint8_t value);

 private:
  struct Shared;
  std::shared_ptr<Shared> shared_;
  std::thread thread_;
};

}  // namespace vela::sim
