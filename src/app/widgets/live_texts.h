// The Qt side's way to the live values' texts: LiveText with the computer's decimal separator.
#pragma once

#include <QString>

#include "app/widgets/text_of.h"
#include "base/qt/qt_platform.h"
#include "editors/mapgrid/qt/map_readout.h"
#include "program/live_text.h"

namespace vela {

inline LiveTextStyle ShownTextStyle(int afr_mode) { return {SystemDecimalSeparator(), afr_mode}; }

inline QString LiveQText(const LiveData& live, LiveQuantity quantity, const LiveTextStyle& style) {
  return TextOf(LiveText(live, quantity, style));
}

// What a map read-out shows as texts rather than numbers.
inline ReadoutTexts MapReadoutTexts(const LiveData& live, const LiveTextStyle& style) {
  return {LiveQText(live, LiveQuantity::kWaterTemp, style),
          LiveQText(live, LiveQuantity::kAirTemp, style),
          LiveQText(live, LiveQuantity::kAfr, style)};
}

}  // namespace vela
