// The twelve datalog channels: their captions and colours, what each records from a live frame,
// and the order in which a record is decoded.
#pragma once

#include <array>
#include <cstdint>
#include <string_view>

#include "link/live/live_frame.h"

namespace vela {

inline constexpr int kChannelCount = 12;

struct ChannelColour {
  std::uint8_t red = 0;
  std::uint8_t green = 0;
  std::uint8_t blue = 0;
  bool operator==(const ChannelColour&) const = default;
};

struct ChannelInfo {
  std::string_view caption;  // the check box's caption, exactly
  ChannelColour colour;      // caption and line colour
  std::string_view name;     // in exports
  std::string_view unit;
  int decimals;            // decimals of the value as shown and exported
  std::string_view label;  // short, with its unit, for the cursor read-out
};

inline constexpr std::array<ChannelInfo, kChannelCount> kChannels = {{
    {"RPM", {255, 0, 0}, "RPM", "rpm", 2, "RPM"},
    {"MAP", {255, 255, 255}, "MAP", "kPa", 1, "MAP kPa"},
    {"TPS", {128, 128, 255}, "TPS", "%", 1, "TPS %"},
    {"Fuel", {0, 255, 0}, "Fuel", "ms", 2, "Fuel ms"},
    {"Duty %", {0, 192, 0}, "Duty", "%", 2, "Duty %"},
    {"Ignition", {255, 255, 0}, "Ignition", "deg", 1, "Ign. deg"},
    {"Water", {192, 0, 192}, "Water", "C", 1, "Water C"},
    {"Air", {192, 192, 0}, "Air", "C", 1, "Air C"},
    {"Battery", {128, 128, 128}, "Battery", "V", 2, "Batt. V"},
    {"Idle %", {0, 128, 0}, "Idle", "%", 2, "Idle %"},
    {"Throttle Pump Addition", {0, 192, 192}, "Throttle Pump Addition", "% of fuel", 1, "Pump %"},
    {"AFR Ratio (x10)", {223, 0, 160}, "AFR", "x10", 1, "AFR x10"},
}};

inline constexpr int kChannelRpm = 0;
inline constexpr int kChannelMap = 1;
inline constexpr int kChannelTps = 2;
inline constexpr int kChannelDuty = 4;
inline constexpr int kChannelAfr = 11;

// A record is decoded channel by channel in this order.
inline constexpr std::array<int, kChannelCount> kCaptureOrder = {0, 11, 3, 4, 5, 1,
                                                                 2, 6,  7, 8, 9, 10};

// A duty cycle at or above this is recorded as this.
inline constexpr double kDutyRecordLimit = 200.0;

// What the live display has made of the same frame: the channels that go through the display's
// own conversions (the temperature tables, the air-fuel ratio mode, the engine set-up's duty).
struct ChannelInputs {
  double afr = 0.0;           // the air-fuel ratio as the live display shows it
  double water_c = 0.0;       // degrees C through the water sensor table
  double air_c = 0.0;         // degrees C through the air sensor table
  double duty_percent = 0.0;  // injector duty from the injection time and engine speed
};

// `value` rounded to `decimals` places, a half going to the even neighbour.
double RoundToDecimals(double value, int decimals);

// The value channel `channel` records for `frame`.
double DecodeChannel(int channel, const live::Frame& frame, const ChannelInputs& inputs);

}  // namespace vela
