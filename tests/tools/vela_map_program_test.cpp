// The built vela-map on real files: exit status, standard output and the file an import writes.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/wait.h>

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <sstream>

#include "editors/editor_fakes.h"

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

std::string Slurp(const std::filesystem::path& path) {
  std::ifstream in(path, std::ios::binary);
  std::ostringstream bytes;
  bytes << in.rdbuf();
  return bytes.str();
}

TEST(VelaMapProgram, DiffsExportsAndImportsFilesOnDisk) {
  const std::filesystem::path dir =
      std::filesystem::temp_directory_path() / ("vela_map_test_" + std::to_string(getpid()));
  std::filesystem::create_directories(dir);
  CalibrationImage image = editor_testing::SoundImage();
  const auto write = [&](const std::string& name, const CalibrationImage& content) {
    std::ofstream(dir / name, std::ios::binary)
        .write(reinterpret_cast<const char*>(content.Bytes().data()), kImageLength);
  };
  write("a.sm1", image);
  image.Write16(kFuelMap1Start, 1500);  // fuel 1, bottom row, first column
  write("b.sm1", image);
  const std::string a = (dir / "a.sm1").string();
  const std::string b = (dir / "b.sm1").string();

  const Ran diff = RunTool("diff " + a + " " + b + " --json");
  EXPECT_EQ(diff.status, 1);
  EXPECT_THAT(diff.out, HasSubstr("\"row\": 11, \"column\": 1, \"rpm\": 0"));
  const Ran csv = RunTool("export " + b + " --map fuel1 > " + (dir / "b.csv").string());
  EXPECT_EQ(csv.status, 0);
  const std::string c = (dir / "c.sm1").string();
  EXPECT_EQ(
      RunTool("import " + a + " " + (dir / "b.csv").string() + " --map fuel1 --out " + c).status,
      0);
  EXPECT_EQ(Slurp(c), Slurp(b));
  EXPECT_EQ(RunTool("diff " + b + " " + c).status, 0);
  EXPECT_EQ(RunTool("info " + (dir / "b.csv").string()).status, 3);
  std::filesystem::remove_all(dir);
}

}  // namespace
}  // namespace vela
