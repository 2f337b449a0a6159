// vela-ecusim-mkbase: writes the simulator's base calibration, 1023 bytes, to the file given
// (sim/data/base.sm1 in the repository).
#include <cstdio>
#include <fstream>
#include <string_view>

#include "sim/core/base_calibration.h"

int main(int argc, char** argv) {
  if (argc != 2 || std::string_view(argv[1]) == "--help") {
    std::fprintf(stderr, "Usage: vela-ecusim-mkbase OUTPUT.sm1\n");
    return argc == 2 ? 0 : 2;
  }
  const vela::CalibrationImage image = vela::sim::BuildBaseCalibration();
  std::ofstream out(argv[1], std::ios::binary | std::ios::trunc);
  out.write(reinterpret_cast<const char*>(image.Bytes().data()),
            static_cast<std::streamsize>(image.Bytes().size()));
  out.close();
  if (!out) {
    std::fprintf(stderr, "vela-ecusim-mkbase: cannot write %s\n", argv[1]);
    return 1;
  }
  return 0;
}
