// What the editors that write single values reach: the editors' state and the program's image
// they keep in step, the sender that takes each changed byte to the ECU, the message boxes, and
// `SuppressChangeEvents`, which stops them while the editors are being filled.
#pragma once

#include <string_view>

#include "base/platform.h"
#include "calibration/calibration_image.h"
#include "editors/editor_state.h"
#include "link/link_state.h"

namespace vela {

struct EditParts {
  EditorState& state;
  CalibrationImage& image;
  CommandSender& sender;
  MessageSink& messages;
  const bool& suppress_change_events;
};

}  // namespace vela
