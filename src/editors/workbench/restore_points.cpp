#include "editors/workbench/restore_points.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <chrono>
#include <cstdio>

namespace vela {

namespace {

constexpr std::string_view kPointExtension = ".sm1";
// "YYYYMMDD-HHMMSS-mmm " before the reason word.
constexpr std::size_t kStampLength = 19;

constexpr std::array<RestoreReason, 4> kReasons = {
    RestoreReason::kFromEcu, RestoreReason::kBeforeDownload, RestoreReason::kBeforeMapFile,
    RestoreReason::kOnRequest};

std::int64_t FloorDiv(std::int64_t value, std::int64_t by) {
  return value / by - ((value % by != 0 && value < 0) ? 1 : 0);
}

std::optional<int> Digits(std::string_view text, std::size_t from, std::size_t count) {
  int value = 0;
  const char* first = text.data() + from;
  const auto [end, error] = std::from_chars(first, first + count, value);
  if (error != std::errc() || end != first + count) return std::nullopt;
  return value;
}

// The time of a stamp "YYYYMMDD-HHMMSS-mmm", or nothing when it is no valid time.
std::optional<std::int64_t> TimeOfStamp(std::string_view stamp) {
  if (stamp[8] != '-' || stamp[15] != '-') return std::nullopt;
  const auto year = Digits(stamp, 0, 4), month = Digits(stamp, 4, 2), day = Digits(stamp, 6, 2);
  const auto hour = Digits(stamp, 9, 2), minute = Digits(stamp, 11, 2);
  const auto second = Digits(stamp, 13, 2), milli = Digits(stamp, 16, 3);
  if (!year || !month || !day || !hour || !minute || !second || !milli) return std::nullopt;
  const std::chrono::year_month_day date{std::chrono::year(*year),
                                         std::chrono::month(static_cast<unsigned>(*month)),
                                         std::chrono::day(static_cast<unsigned>(*day))};
  if (!date.ok() || *hour > 23 || *minute > 59 || *second > 59) return std::nullopt;
  const std::int64_t days = std::chrono::sys_days(date).time_since_epoch().count();
  return days * kMsPerDay + (*hour * 3600LL + *minute * 60LL + *second) * 1000LL + *milli;
}

std::optional<RestoreReason> ReasonOfWord(std::string_view word) {
  for (RestoreReason reason : kReasons) {
    if (ReasonWord(reason) == word) return reason;
  }
  return std::nullopt;
}

bool NewerFirst(const RestorePoint& a, const RestorePoint& b) {
  return a.time_ms != b.time_ms ? a.time_ms > b.time_ms : a.name > b.name;
}

}  // namespace

std::string_view ReasonWord(RestoreReason reason) {
  switch (reason) {
    case RestoreReason::kFromEcu:
      return "ecu";
    case RestoreReason::kBeforeDownload:
      return "download";
    case RestoreReason::kBeforeMapFile:
      return "mapfile";
    case RestoreReason::kOnRequest:
      break;
  }
  return "request";
}

std::string_view ReasonText(RestoreReason reason) {
  switch (reason) {
    case RestoreReason::kFromEcu:
      return "Calibration read from the ECU";
    case RestoreReason::kBeforeDownload:
      return "Before a download";
    case RestoreReason::kBeforeMapFile:
      return "Before a map file was loaded";
    case RestoreReason::kOnRequest:
      break;
  }
  return "Taken on request";
}

std::string RestorePointName(std::int64_t time_ms, RestoreReason reason) {
  const std::int64_t days = FloorDiv(time_ms, kMsPerDay);
  const std::int64_t in_day = time_ms - days * kMsPerDay;
  const std::chrono::year_month_day date{
      std::chrono::sys_days(std::chrono::days(static_cast<int>(days)))};
  char stamp[32];
  std::snprintf(stamp, sizeof(stamp), "%04d%02u%02u-%02d%02d%02d-%03d",
                static_cast<int>(date.year()), static_cast<unsigned>(date.month()),
                static_cast<unsigned>(date.day()), static_cast<int>(in_day / kMsPerHour),
                static_cast<int>(in_day / 60000 % 60), static_cast<int>(in_day / 1000 % 60),
                static_cast<int>(in_day % 1000));
  return std::string(stamp) + " " + std::string(ReasonWord(reason)) + std::string(kPointExtension);
}

std::optional<RestorePoint> RestorePointOfName(std::string_view name) {
  if (name.size() <= kStampLength + 1 + kPointExtension.size() ||
      !name.ends_with(kPointExtension) || name[kStampLength] != ' ') {
    return std::nullopt;
  }
  const std::optional<std::int64_t> time = TimeOfStamp(name.substr(0, kStampLength));
  const std::string_view word =
      name.substr(kStampLength + 1, name.size() - kStampLength - 1 - kPointExtension.size());
  const std::optional<RestoreReason> reason = ReasonOfWord(word);
  if (!time || !reason) return std::nullopt;
  return RestorePoint{std::string(name), *time, *reason};
}

std::vector<RestorePoint> ThinnedPoints(const std::vector<RestorePoint>& newest_first,
                                        std::int64_t now_ms) {
  std::vector<RestorePoint> thinned;
  std::optional<std::int64_t> last_bucket;  // the hour or day of the last point kept
  for (std::size_t i = 0; i < newest_first.size(); ++i) {
    const RestorePoint& point = newest_first[i];
    const bool recent = now_ms - point.time_ms < kMsPerDay;
    // Hours count from 0 and days from -1 so that an hour never equals a day.
    const std::int64_t bucket =
        recent ? FloorDiv(point.time_ms, kMsPerHour) : -1 - FloorDiv(point.time_ms, kMsPerDay);
    const bool kept = i < static_cast<std::size_t>(kRestorePointsKept) ||
                      point.reason == RestoreReason::kOnRequest || bucket != last_bucket;
    if (kept) {
      last_bucket = bucket;
    } else {
      thinned.push_back(point);
    }
  }
  return thinned;
}

std::string RestorePoints::FolderIn(const ProgramFolders& folders) {
  const char separator = folders.program.empty() ? '/' : folders.program.back();
  return folders.program + std::string(kRestorePointFolderName) + separator;
}

std::vector<RestorePoint> RestorePoints::List() {
  std::vector<RestorePoint> points;
  for (const std::string& name : files_.FileNames(folder_)) {
    std::optional<RestorePoint> point = RestorePointOfName(name);
    if (!point) continue;
    const FileHead head = files_.ReadHead(PathOf(*point), kImageLength + 1);
    if (head.kind != FileHead::Kind::kFile || head.size != kImageLength) continue;
    points.push_back(std::move(*point));
  }
  std::sort(points.begin(), points.end(), NewerFirst);
  return points;
}

std::optional<CalibrationImage> RestorePoints::Read(const RestorePoint& point) {
  const FileHead head = files_.ReadHead(PathOf(point), kImageLength + 1);
  if (head.kind != FileHead::Kind::kFile || head.size != kImageLength) return std::nullopt;
  CalibrationImage image;
  const auto* bytes = reinterpret_cast<const std::uint8_t*>(head.bytes.data());
  if (!image.Assign(std::span<const std::uint8_t>(bytes, head.bytes.size()))) return std::nullopt;
  return image;
}

RestorePoints::Taken RestorePoints::Take(const CalibrationImage& image, RestoreReason reason,
                                         std::int64_t now_ms) {
  Taken taken;
  std::vector<RestorePoint> points = List();
  const std::optional<CalibrationImage> newest =
      points.empty() ? std::nullopt : Read(points.front());
  if (newest && newest->Bytes() == image.Bytes()) {
    taken.outcome = Outcome::kSameAsNewest;
    taken.point = points.front();
    return taken;
  }
  if (!files_.IsDirectory(folder_) && !files_.CreateDirectory(folder_)) {
    taken.error = kFileErrorPathNotFound;
    return taken;
  }
  // Two points in one millisecond: the later one takes the next free millisecond.
  std::int64_t time = now_ms;
  while (std::any_of(points.begin(), points.end(),
                     [time](const RestorePoint& p) { return p.time_ms == time; })) {
    ++time;
  }
  taken.point = {RestorePointName(time, reason), time, reason};
  const std::vector<std::uint8_t> bytes = image.ToVector();
  taken.error = files_.WriteFile(PathOf(taken.point), std::string(bytes.begin(), bytes.end()));
  if (taken.error != kFileErrorNone) return taken;
  taken.outcome = Outcome::kWritten;
  points.insert(points.begin(), taken.point);
  std::sort(points.begin(), points.end(), NewerFirst);
  for (const RestorePoint& old : ThinnedPoints(points, now_ms)) {
    (files_.RemoveFile(PathOf(old)) ? taken.thinned : taken.not_removed).push_back(old);
  }
  return taken;
}

}  // namespace vela
