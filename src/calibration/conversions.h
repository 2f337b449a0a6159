// The conversions between the calibration image's raw values and what the editors show, the
// fixed-decimal number text every grid cell and text box goes through, and the temperature
// read-out of the two temperature sensors.
#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "base/platform.h"

namespace vela {

// The message shown when a number cannot be read under the computer's language settings. The
// first line's trailing blanks belong to it.
inline constexpr std::string_view kLanguageErrorTitle = "Language Error";
inline constexpr std::array<std::string_view, 2> kLanguageErrorLines = {
    "This error has arrisen from your language settings on your computer.           ",
    "Please contact MORVANE Engine Management to solve the problem."};

// The decimal separator the computer uses, found from its text of the number 0.001: '.' when
// that text holds a point, otherwise ',' when it holds a comma, otherwise '.'.
char DecimalSeparatorFrom(std::string_view text_of_one_thousandth);

// Writes `number_text` rounded to `decimals` places (a half goes to the even neighbour) with
// exactly that many digits after `decimal_separator`, and no separator when `decimals` is 0.
// When the separator is not '.', the first '.' of the text is taken as the separator first, so
// "1.25" reads as 1,25 on a computer that uses a comma. Text that cannot be read as a number
// shows the "Language Error" message through `sink` (when not null) and comes back as it stood
// when reading failed. `decimals` is limited to 0..32767.
std::string FormatFixed(const std::string& number_text, int decimals, char decimal_separator,
                        MessageSink* sink);

// As above for a value the program computed: its shortest exact decimal text is formatted.
std::string FormatFixed(double value, int decimals, char decimal_separator, MessageSink* sink);

// Raw image values and their display values. The way back to raw rounds half to even; a value
// beyond the raw range is clamped to it, except the ignition cell, which keeps only the low byte
// of its raw value (see RawFromIgnDegrees). NaN gives raw 0.
double FuelMsFromRaw(int raw);  // injector time, raw / 1000 ms
std::uint16_t RawFromFuelMs(double milliseconds);
double IgnDegreesFromRaw(int raw);  // advance, 99 - raw / 2 degrees
std::uint8_t RawFromIgnDegrees(double degrees);
double TriggerOffsetFromRaw(int raw);  // raw / 2 degrees
std::uint8_t RawFromTriggerOffset(double degrees);
double AirCompFromRaw(int raw);  // (raw - 128) / 10
std::uint8_t RawFromAirComp(double value);
double BattCompFromRaw(int raw);  // raw x 0.01 ms
std::uint8_t RawFromBattComp(double milliseconds);
double SensorFractionFromRaw(int raw);  // raw / 256 of the sensor input range
std::uint8_t RawFromSensorFraction(double fraction);

// Engine speeds held in the image (the rev limiters, the idle target) are engine periods: the
// microseconds of one crank revolution, the unit of the live frame's first field. RPM = 60,000,000
// / period; a period of 0 is 0 RPM.
inline constexpr double kMicrosecondsPerMinute = 60'000'000.0;
// Milliseconds x RPM of one engine cycle (two crank turns): a cycle at n RPM lasts
// kMsRpmPerEngineCycle / n milliseconds.
inline constexpr double kMsRpmPerEngineCycle = 2 * 60'000.0;
double RpmFromEnginePeriod(std::uint32_t period_us);
// The period of `rpm`, made whole (a half to the even neighbour); nullopt for a speed that is not
// above 0 or whose period does not lie within 1..`largest` (the field's width).
std::optional<std::uint32_t> EnginePeriodFromRpm(double rpm, std::uint32_t largest);

// The throttle sensor's counts per percent: 1023 counts are 100 %.
inline constexpr double kTpsCountsPerPercent = 10.23;

// The pressure unit of the MAP axes, the compensation curves and the boost read-out.
inline constexpr double kKpaPerBar = 100.0;

// Temperatures of the eight calibration points of a temperature sensor, in degrees C.
inline constexpr std::array<int, 8> kSensorPointTemperatures = {-20, 0, 20, 40, 60, 80, 100, 120};

// The temperature for a sensor `reading`, interpolated between the sensor's eight calibration
// points (given in the same unit as the reading), as whole degrees ("23", "-5"); ">120" or
// "<-20" when the reading lies beyond the points. The points may fall or rise with temperature.
std::string TemperatureText(double reading, const std::array<double, 8>& calibration_points);

// The same as a number: degrees C, or kTemperatureBeyondHot (9999) beyond the hottest point and
// kTemperatureBeyondCold (8888) beyond the coldest.
inline constexpr double kTemperatureBeyondHot = 9999.0;
inline constexpr double kTemperatureBeyondCold = 8888.0;
double SensorTemperature(double reading, const std::array<double, 8>& calibration_points);

}  // namespace vela
