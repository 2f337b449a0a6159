// Restore points: copies of the editors' calibration kept on disk so that any earlier state can be
// compared with or put back. Each is a map file of its own (the 1023 bytes of the image, nothing
// else, so every map tool reads it) in the folder "Restore Points" of the program folder; its
// name carries the time (UTC, to the millisecond) and the reason:
//   "20240131-142530-123 ecu.sm1"
// A file of any other name or size in the folder is not a restore point: it is skipped when the
// folder is listed, never removed.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "base/file_system.h"
#include "base/program_folders.h"
#include "calibration/calibration_image.h"

namespace vela {

inline constexpr std::string_view kRestorePointFolderName = "Restore Points";
// The newest points are always kept; older ones are thinned (ThinnedPoints).
inline constexpr int kRestorePointsKept = 50;
inline constexpr std::int64_t kMsPerHour = 3'600'000;
inline constexpr std::int64_t kMsPerDay = 24 * kMsPerHour;

enum class RestoreReason { kFromEcu, kBeforeDownload, kBeforeMapFile, kOnRequest };

// The word a file name carries ("ecu", "download", "mapfile", "request") and the words the list
// shows.
std::string_view ReasonWord(RestoreReason reason);
std::string_view ReasonText(RestoreReason reason);

struct RestorePoint {
  std::string name;      // the file's name in the folder
  std::int64_t time_ms;  // milliseconds since 1970-01-01 UTC
  RestoreReason reason;
  bool operator==(const RestorePoint&) const = default;
};

// The file name of a point, and the point a file name stands for (nothing for a foreign name).
std::string RestorePointName(std::int64_t time_ms, RestoreReason reason);
std::optional<RestorePoint> RestorePointOfName(std::string_view name);

// The thinning rule, for points newest first at `now_ms`: the newest kRestorePointsKept are kept,
// and so is every point taken on request. Of the rest, a point younger than a day is kept when it
// is the newest of its clock hour, an older one when it is the newest of its day (UTC); the
// others are returned, newest first.
std::vector<RestorePoint> ThinnedPoints(const std::vector<RestorePoint>& newest_first,
                                        std::int64_t now_ms);

class RestorePoints {
 public:
  // `folder` ends with the folder separator.
  RestorePoints(FileSystem& files, std::string folder)
      : files_(files), folder_(std::move(folder)) {}
  static std::string FolderIn(const ProgramFolders& folders);

  enum class Outcome { kWritten, kSameAsNewest, kFailed };
  struct Taken {
    Outcome outcome = Outcome::kFailed;
    RestorePoint point{};                   // the point written, or the newest one when the same
    int error = kFileErrorNone;             // a failed write's error number
    std::vector<RestorePoint> thinned;      // points the thinning removed after the write
    std::vector<RestorePoint> not_removed;  // points the thinning could not remove
  };
  // Writes `image` as a new point unless it equals the newest point's image (then nothing is
  // written), then thins the folder.
  Taken Take(const CalibrationImage& image, RestoreReason reason, std::int64_t now_ms);

  // Every restore point in the folder, newest first; foreign and damaged files are left out.
  std::vector<RestorePoint> List();
  // A point's image; nothing when its file is gone or no longer 1023 bytes.
  std::optional<CalibrationImage> Read(const RestorePoint& point);
  std::string PathOf(const RestorePoint& point) const { return folder_ + point.name; }

 private:
  FileSystem& files_;
  std::string folder_;
};

}  // namespace vela
