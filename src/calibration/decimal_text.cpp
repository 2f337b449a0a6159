#include "calibration/decimal_text.h"

#include <algorithm>
#include <cctype>
#include <charconv>

#include "base/text_fields.h"

namespace vela {

namespace {

constexpr std::int64_t kMaxPoint = 309;            // 1e309 is beyond any double
constexpr std::int64_t kExponentCeiling = 100000;  // saturates absurd exponents

bool IsDigit(char c) { return std::isdigit(static_cast<unsigned char>(c)) != 0; }

std::string TakeDigits(std::string_view text, std::size_t& index) {
  std::string digits;
  while (index < text.size() && IsDigit(text[index])) digits += text[index++];
  return digits;
}

// Reads "e", an optional sign and at least one digit from `index`; nullopt when malformed.
std::optional<std::int64_t> TakeExponent(std::string_view text, std::size_t& index) {
  if (index >= text.size() || (text[index] != 'e' && text[index] != 'E')) return 0;
  ++index;
  bool negative = false;
  if (index < text.size() && (text[index] == '+' || text[index] == '-')) {
    negative = text[index++] == '-';
  }
  const std::string digits = TakeDigits(text, index);
  if (digits.empty()) return std::nullopt;
  std::int64_t exponent = 0;
  for (char c : digits) exponent = std::min(exponent * 10 + (c - '0'), kExponentCeiling);
  return negative ? -exponent : exponent;
}

// Drops leading zeros (moving the point) and trailing zeros; zero becomes empty digits.
void Normalise(DecimalNumber& number) {
  const auto first = number.digits.find_first_not_of('0');
  if (first == std::string::npos) {
    number = DecimalNumber{};
    return;
  }
  number.digits.erase(0, first);
  number.point -= static_cast<std::int64_t>(first);
  number.digits.erase(number.digits.find_last_not_of('0') + 1);
}

bool RoundsUp(const std::string& digits, std::size_t keep) {
  const char first_dropped = digits[keep];
  if (first_dropped != '5') return first_dropped > '5';
  if (digits.find_first_not_of('0', keep + 1) != std::string::npos) return true;
  const char last_kept = keep == 0 ? '0' : digits[keep - 1];
  return (last_kept - '0') % 2 == 1;
}

void Increment(std::string& digits) {
  for (auto it = digits.rbegin(); it != digits.rend(); ++it) {
    if (*it != '9') {
      ++*it;
      return;
    }
    *it = '0';
  }
  digits.insert(digits.begin(), '1');
}

// The digits of the whole number value x 10^decimals after rounding, without leading zeros.
std::string ScaledWholeDigits(const DecimalNumber& number, int decimals) {
  const std::int64_t keep = number.point + decimals;
  if (number.digits.empty() || keep < 0) return "0";
  const auto length = static_cast<std::int64_t>(number.digits.size());
  std::string kept = number.digits.substr(0, static_cast<std::size_t>(std::min(keep, length)));
  if (keep > length) kept.append(static_cast<std::size_t>(keep - length), '0');
  if (keep < length && RoundsUp(number.digits, static_cast<std::size_t>(keep))) Increment(kept);
  const auto first = kept.find_first_not_of('0');
  return first == std::string::npos ? "0" : kept.substr(first);
}

}  // namespace

std::optional<DecimalNumber> ParseDecimal(std::string_view text, char separator) {
  text = TrimBlanks(text);
  std::size_t index = 0;
  DecimalNumber number;
  if (index < text.size() && (text[index] == '+' || text[index] == '-')) {
    number.negative = text[index++] == '-';
  }
  const std::string whole = TakeDigits(text, index);
  std::string fraction;
  if (index < text.size() && text[index] == separator) fraction = TakeDigits(text, ++index);
  if (whole.empty() && fraction.empty()) return std::nullopt;
  const std::optional<std::int64_t> exponent = TakeExponent(text, index);
  if (!exponent || index != text.size()) return std::nullopt;
  number.digits = whole + fraction;
  number.point = static_cast<std::int64_t>(whole.size()) + *exponent;
  Normalise(number);
  if (number.point > kMaxPoint) return std::nullopt;
  return number;
}

std::string RoundedDecimalText(const DecimalNumber& number, int decimals, char separator) {
  decimals = std::max(decimals, 0);
  std::string scaled = ScaledWholeDigits(number, decimals);
  if (scaled == "0") return "0";
  const auto width = static_cast<std::size_t>(decimals) + 1;
  if (scaled.size() < width) scaled.insert(0, width - scaled.size(), '0');
  const std::size_t whole_length = scaled.size() - static_cast<std::size_t>(decimals);
  std::string fraction = scaled.substr(whole_length);
  fraction.erase(fraction.find_last_not_of('0') + 1);
  std::string text = number.negative ? "-" : "";
  text += scaled.substr(0, whole_length);
  if (!fraction.empty()) text += separator + fraction;
  return text;
}

std::optional<double> NumberOfText(std::string_view text, char separator) {
  const std::optional<DecimalNumber> number = ParseDecimal(text, separator);
  if (!number) return std::nullopt;
  if (number->digits.empty()) return 0.0;
  const std::string scientific =
      (number->negative ? "-0." : "0.") + number->digits + "e" + std::to_string(number->point);
  double value = 0.0;
  const auto [end, error] =
      std::from_chars(scientific.data(), scientific.data() + scientific.size(), value);
  if (error != std::errc() || end != scientific.data() + scientific.size()) return std::nullopt;
  return value;
}

}  // namespace vela
