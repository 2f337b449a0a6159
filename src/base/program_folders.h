// The folder tree under which every file of the program lives, and the port naming rule.
#pragma once

#include <array>
#include <string>

namespace vela {

// The four folders in the order they are created: the maker folder, the program folder
// (`ProgramInfoFolder`: settings files), the map files and the datalogs. Each ends with the
// folder separator.
struct ProgramFolders {
  std::string maker;
  std::string program;
  std::string maps;
  std::string datalogs;

  std::array<std::string, 4> InCreationOrder() const { return {maker, program, maps, datalogs}; }
};

// On Windows the tree sits at the root of drive C:. Elsewhere the same tree lives under `root`
// (the user's home folder, or the folder given with --data-dir).
ProgramFolders WindowsProgramFolders();
ProgramFolders ProgramFoldersUnder(const std::string& root);

// The system device behind "CommPort N": COMN on Windows; elsewhere /dev/ttyUSB(N-1), the name a
// USB serial adapter (the usual cable on a laptop) gets from the kernel.
std::string PortDeviceName(int port_number, bool windows);

}  // namespace vela
