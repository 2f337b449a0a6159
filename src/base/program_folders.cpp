#include "base/program_folders.h"

namespace vela {

namespace {
constexpr char kMakerFolderName[] = "MORVANE Programs Info";
constexpr char kProgramFolderName[] = "MORVANE VELA";
}  // namespace

ProgramFolders WindowsProgramFolders() {
  // Built by appending: GCC 12 warns of a bounds fault that is not there in the `+` chain.
  std::string maker = "C:\\";
  maker.append(kMakerFolderName).append("\\");
  std::string program = maker;
  program.append(kProgramFolderName).append("\\");
  return {maker, program, program + "Maps\\", program + "Datalogs\\"};
}

ProgramFolders ProgramFoldersUnder(const std::string& root) {
  std::string base = root;
  if (base.empty() || base.back() != '/') base += '/';
  const std::string maker = base + kMakerFolderName + "/";
  const std::string program = maker + kProgramFolderName + "/";
  return {maker, program, program + "Maps/", program + "Datalogs/"};
}

std::string PortDeviceName(int port_number, bool windows) {
  if (windows) return "COM" + std::to_string(port_number);
  return "/dev/ttyUSB" + std::to_string(port_number - 1);
}

}  // namespace vela
