// The Qt side's one way from the cores' text to a QString.
#pragma once

#include <QString>
#include <string_view>

namespace vela {

inline QString TextOf(std::string_view text) {
  return QString::fromUtf8(text.data(), static_cast<qsizetype>(text.size()));
}

}  // namespace vela
