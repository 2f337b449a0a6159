// The built vela-map: its arguments reach the commands, and their output and exit status come
// back to the shell. What each command does is pinned against files in memory.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/wait.h>

#include <cstdio>

namespace vela {
namespace {

using ::testing::HasSubstr;

struct Ran {
  int status;
  std::string out;
};

Ran RunTool(const std::string& arguments) {
  const std::string command = std::string(VELA_MAP_PATH) + " " + arguments + " 2>/dev/null";
  Ran ran{-1, {}};
  FILE* pipe = popen(command.c_str(), "r");
  if (pipe == nullptr) return ran;
  char buffer[4096];
  for (std::size_t n; (n = std::fread(buffer, 1, sizeof buffer, pipe)) > 0;)
    ran.out.append(buffer, n);
  const int raw = pclose(pipe);
  ran.status = WIFEXITED(raw) ? WEXITSTATUS(raw) : -1;
  return ran;
}

TEST(VelaMapProgram, PassesArgumentsAndGivesBackOutputAndExitStatus) {
  const Ran help = RunTool("--help");
  EXPECT_EQ(help.status, 0);
  EXPECT_THAT(help.out, HasSubstr("4 import refused"));
  const Ran missing = RunTool("diff /nonexistent/a.sm1 /nonexistent/b.sm1 --json");
  EXPECT_EQ(missing.status, 3);
  EXPECT_EQ(missing.out, "");
}

}  // namespace
}  // namespace vela
