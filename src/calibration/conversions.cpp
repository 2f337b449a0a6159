#include "calibration/conversions.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <optional>
#include <vector>

#include "calibration/calibration_image.h"
#include "calibration/decimal_text.h"
#include "calibration/rounding.h"

namespace vela {

namespace {

constexpr int kMaxDecimals = 32767;

// The text with its first '.' replaced by `separator`.
std::string WithSeparator(std::string text, char separator) {
  const auto dot = text.find('.');
  if (dot != std::string::npos) text[dot] = separator;
  return text;
}

void ShowLanguageError(MessageSink* sink) {
  if (sink == nullptr) return;
  const std::vector<std::string> lines(kLanguageErrorLines.begin(), kLanguageErrorLines.end());
  sink->Show(MessageIcon::kInformation, std::string(kLanguageErrorTitle), lines);
}

// Rounds half to even and clamps into [low, high]; NaN gives 0.
double ClampedWhole(double value, double low, double high) {
  if (std::isnan(value)) return 0.0;
  return std::clamp(RoundHalfEven(value), low, high);
}

std::uint8_t ClampedByte(double value) {
  return static_cast<std::uint8_t>(ClampedWhole(value, 0.0, 255.0));
}

// The temperature of the first calibration segment that holds `reading`, if any.
std::optional<double> Interpolated(double reading, const std::array<double, 8>& points) {
  if (std::isnan(reading)) return std::nullopt;  // lies between no two points
  for (std::size_t i = 0; i + 1 < points.size(); ++i) {
    const double from = points[i];
    const double to = points[i + 1];
    if (reading < std::min(from, to) || reading > std::max(from, to)) continue;
    const double base = kSensorPointTemperatures[i];
    if (from == to) return base;
    return (reading - from) / (to - from) * 20.0 + base;
  }
  return std::nullopt;
}

// True when `reading` lies beyond point 1 on the side away from point 8.
bool ColderThanFirstPoint(double reading, const std::array<double, 8>& points) {
  if (points.front() > points.back()) return reading > points.front();
  if (points.front() < points.back()) return reading < points.front();
  return false;
}

}  // namespace

char DecimalSeparatorFrom(std::string_view text_of_one_thousandth) {
  if (text_of_one_thousandth.find('.') != std::string_view::npos) return '.';
  if (text_of_one_thousandth.find(',') != std::string_view::npos) return ',';
  return '.';
}

std::string FormatFixed(const std::string& number_text, int decimals, char decimal_separator,
                        MessageSink* sink) {
  decimals = std::clamp(decimals, 0, kMaxDecimals);
  const std::string text =
      decimal_separator == '.' ? number_text : WithSeparator(number_text, decimal_separator);
  const std::optional<DecimalNumber> number = ParseDecimal(text, decimal_separator);
  if (!number) {
    ShowLanguageError(sink);
    return text;
  }
  std::string result = RoundedDecimalText(*number, decimals, decimal_separator);
  auto separator_at = result.find(decimal_separator);
  if (separator_at == std::string::npos && decimals >= 1) {
    separator_at = result.size();
    result += decimal_separator;
  }
  const std::size_t digits_after = result.size() - separator_at - 1;
  if (decimals >= 1) result.append(static_cast<std::size_t>(decimals) - digits_after, '0');
  return result;
}

std::string FormatFixed(double value, int decimals, char decimal_separator, MessageSink* sink) {
  char buffer[64];
  const auto [end, error] = std::to_chars(buffer, buffer + sizeof buffer, value);
  const std::string text = error == std::errc{} ? std::string(buffer, end) : std::string("nan");
  return FormatFixed(text, decimals, decimal_separator, sink);
}

double FuelMsFromRaw(int raw) { return raw / 1000.0; }

std::uint16_t RawFromFuelMs(double milliseconds) {
  return static_cast<std::uint16_t>(ClampedWhole(milliseconds * 1000.0, 0.0, 65535.0));
}

double IgnDegreesFromRaw(int raw) { return kIgnReference - raw / 2.0; }

// Only the low byte of the raw value is stored: -28.5 degrees (raw 255) and 99.5 degrees
// (raw -1) both become byte 255.
std::uint8_t RawFromIgnDegrees(double degrees) {
  const double raw = RoundHalfEven(2.0 * (kIgnReference - degrees));
  if (!std::isfinite(raw)) return 0;
  double low_byte = std::fmod(raw, 256.0);
  if (low_byte < 0) low_byte += 256.0;
  return static_cast<std::uint8_t>(low_byte);
}

double TriggerOffsetFromRaw(int raw) { return raw / 2.0; }
std::uint8_t RawFromTriggerOffset(double degrees) { return ClampedByte(degrees * 2.0); }

double AirCompFromRaw(int raw) { return (raw - 128) / 10.0; }
std::uint8_t RawFromAirComp(double value) { return ClampedByte(value * 10.0 + 128.0); }

// raw / 100 gives the double nearest to raw x 0.01, which raw * 0.01 does not always do.
double BattCompFromRaw(int raw) { return raw / 100.0; }
std::uint8_t RawFromBattComp(double milliseconds) { return ClampedByte(milliseconds * 100.0); }

double SensorFractionFromRaw(int raw) { return raw / 256.0; }
std::uint8_t RawFromSensorFraction(double fraction) { return ClampedByte(fraction * 256.0); }

double RpmFromEnginePeriod(std::uint32_t period_us) {
  return period_us == 0 ? 0.0 : kMicrosecondsPerMinute / period_us;
}

std::optional<std::uint32_t> EnginePeriodFromRpm(double rpm, std::uint32_t largest) {
  if (!(rpm > 0.0) || !std::isfinite(rpm)) return std::nullopt;
  const double period = RoundHalfEven(kMicrosecondsPerMinute / rpm);
  if (period < 1.0 || period > static_cast<double>(largest)) return std::nullopt;
  return static_cast<std::uint32_t>(period);
}

double SensorTemperature(double reading, const std::array<double, 8>& calibration_points) {
  const std::optional<double> degrees = Interpolated(reading, calibration_points);
  if (degrees) return *degrees;
  return ColderThanFirstPoint(reading, calibration_points) ? kTemperatureBeyondCold
                                                           : kTemperatureBeyondHot;
}

std::string TemperatureText(double reading, const std::array<double, 8>& calibration_points) {
  const double degrees = SensorTemperature(reading, calibration_points);
  if (degrees == kTemperatureBeyondHot) return ">120";
  if (degrees == kTemperatureBeyondCold) return "<-20";
  return std::to_string(static_cast<int>(RoundHalfEven(degrees)));
}

}  // namespace vela
