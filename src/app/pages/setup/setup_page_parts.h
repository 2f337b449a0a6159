// What the set-up pages (outputs, inputs, compensation, main setup, sensor setup) reach.
#pragma once

#include <functional>

namespace vela {

class EditorSession;
class InstantHelp;
class LinkSession;
class ProgramSetup;

struct SetupPageParts {
  EditorSession& editors;
  LinkSession& link;
  ProgramSetup& setup;
  InstantHelp& help;
  // The map pages set their grids up again from the editors (site counts, RPM and load labels).
  std::function<void()> maps_changed;
};

}  // namespace vela
