// Qt key events as the map editors' keys.
#pragma once

#include <QKeyEvent>

#include "editors/mapgrid/map_keys.h"

namespace vela {

MapKeyPress MapKeyPressOf(const QKeyEvent& event);

}  // namespace vela
