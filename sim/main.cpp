// vela-ecusim: the simulated ECU on a pseudo-terminal. Prints the slave's device path as the
// first line of standard output and runs until SIGINT or SIGTERM. Asked for a drive's log or the
// true fuel map, it writes those instead, with no terminal, and ends.
#include <csignal>
#include <cstdio>
#include <string>
#include <string_view>
#include <vector>

#include "sim/engine/offline_run.h"
#include "sim/pty_runner.h"

namespace {

std::atomic<bool> stop_requested{false};

extern "C" void OnStopSignal(int) { stop_requested.store(true); }

void InstallSignalHandlers() {
  struct sigaction action {};
  action.sa_handler = OnStopSignal;
  sigemptyset(&action.sa_mask);
  sigaction(SIGINT, &action, nullptr);
  sigaction(SIGTERM, &action, nullptr);
  std::signal(SIGPIPE, SIG_IGN);
}

}  // namespace

int main(int argc, char** argv) {
  static_assert(std::atomic<bool>::is_always_lock_free);
  const std::vector<std::string_view> args(argv + 1, argv + argc);
  std::string error;
  const auto options = vela::sim::ParseSimCommandLine(args, &error);
  if (!options) {
    std::fprintf(stderr, "vela-ecusim: %s (try --help)\n", error.c_str());
    return 2;
  }
  if (options->help) {
    std::fputs(vela::sim::SimUsageText().c_str(), stdout);
    return 0;
  }
  if (options->Offline()) {
    const auto report = vela::sim::RunOffline(*options, &error);
    if (!report) {
      std::fprintf(stderr, "vela-ecusim: %s\n", error.c_str());
      return 1;
    }
    std::fputs(report->c_str(), stdout);
    return 0;
  }
  InstallSignalHandlers();
  vela::sim::PtyRunnerHooks hooks;
  hooks.on_ready = [](const std::string& path) {
    std::printf("%s\n", path.c_str());
    std::fflush(stdout);
  };
  hooks.on_log = [](const std::string& line) {
    std::fprintf(stderr, "vela-ecusim: %s\n", line.c_str());
  };
  if (vela::sim::RunSimulatorOnPty(*options, stop_requested, hooks, &error) != 0) {
    std::fprintf(stderr, "vela-ecusim: %s\n", error.c_str());
    return 1;
  }
  return 0;
}
