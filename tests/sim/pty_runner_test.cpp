// End to end on a real pseudo-terminal: the in-process simulator as the program's --simulate
// starts it. These tests wait on the terminal with time limits; they never sleep.
#include "sim/pty_runner.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <poll.h>
#include <termios.h>
#include <unistd.h>

#include <chrono>
#include <filesystem>

#include "sim/core/ecu_simulator.h"
#include "sim_test_support.h"

namespace vela::sim {
namespace {

using testing::Split;

int OpenSlave(const std::string& path) {
  const int fd = ::open(path.c_str(), O_RDWR | O_NOCTTY);
  if (fd >= 0) {
    termios t{};
    ::tcgetattr(fd, &t);
    ::cfmakeraw(&t);
    ::tcsetattr(fd, TCSANOW, &t);
  }
  return fd;
}

// Reads from `fd` until `done` holds for what was read, or three seconds have passed.
template <typename Done>
std::vector<std::uint8_t> ReadUntil(int fd, Done done) {
  std::vector<std::uint8_t> got;
  const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(3);
  while (!done(got) && std::chrono::steady_clock::now() < deadline) {
    pollfd p{fd, POLLIN, 0};
    if (::poll(&p, 1, 50) <= 0) continue;
    std::uint8_t buffer[512];
    const ssize_t n = ::read(fd, buffer, sizeof buffer);
    if (n > 0) got.insert(got.end(), buffer, buffer + n);
  }
  return got;
}

bool HasFrame(const std::vector<std::uint8_t>& s) { return !Split(s).frames.empty(); }

// The terminal behind its link streams frames and survives its reader closing and opening it
// again (the program's end-to-end tests take uploads through it); a second start is refused, and
// stopping removes the link.
TEST(PtyRunnerTest, StreamsFramesAndSurvivesAReopenBehindItsLink) {
  const auto link = std::filesystem::temp_directory_path() / "vela_sim_test_link";
  std::filesystem::remove(link);
  SimCommandLine options;
  options.link_path = link.string();
  InProcessSimulator sim;
  std::string error;
  ASSERT_TRUE(sim.Start(options, &error)) << error;
  EXPECT_FALSE(sim.Start(options, &error));
  int fd = OpenSlave(link.string());
  ASSERT_GE(fd, 0);
  EXPECT_TRUE(HasFrame(ReadUntil(fd, HasFrame)));

  ::close(fd);
  fd = OpenSlave(sim.SlavePath());
  ASSERT_GE(fd, 0);
  EXPECT_TRUE(HasFrame(ReadUntil(fd, HasFrame)));
  ::close(fd);
  sim.Stop();
  EXPECT_FALSE(sim.Running());
  EXPECT_FALSE(std::filesystem::exists(std::filesystem::symlink_status(link)));
}

TEST(PtyRunnerTest, ReportsAnImageThatCannotBeLoaded) {
  SimCommandLine options;
  options.image_path = "/nonexistent/base.sm1";
  InProcessSimulator sim;
  std::string error;
  EXPECT_FALSE(sim.Start(options, &error));
  EXPECT_NE(error.find("/nonexistent/base.sm1"), std::string::npos);
  EXPECT_FALSE(sim.Running());
}

}  // namespace
}  // namespace vela::sim
