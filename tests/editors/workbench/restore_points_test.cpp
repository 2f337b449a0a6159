#include "editors/workbench/restore_points.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "support/platform_fakes.h"

namespace vela {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::SizeIs;

constexpr std::int64_t kJan31 = 1706711130123;  // 2024-01-31 14:25:30.123 UTC
constexpr std::int64_t kMinute = 60'000;
const ProgramFolders kFolders{"/d/M/", "/d/M/V/", "/d/M/V/Maps/", "/d/M/V/Datalogs/"};

CalibrationImage ImageWith(int position, int value) {
  CalibrationImage image;
  image.SetByte(position, static_cast<std::uint8_t>(value));
  return image;
}

std::vector<std::int64_t> TimesOf(const std::vector<RestorePoint>& points) {
  std::vector<std::int64_t> times;
  for (const RestorePoint& point : points) times.push_back(point.time_ms);
  return times;
}

TEST(RestorePointNameTest, CarriesTimeAndReasonBothWays) {
  EXPECT_EQ(RestorePointName(kJan31, RestoreReason::kFromEcu), "20240131-142530-123 ecu.sm1");
  EXPECT_EQ(RestorePointName(0, RestoreReason::kBeforeMapFile), "19700101-000000-000 mapfile.sm1");
  for (RestoreReason reason : {RestoreReason::kFromEcu, RestoreReason::kBeforeDownload,
                               RestoreReason::kBeforeMapFile, RestoreReason::kOnRequest}) {
    const std::string name = RestorePointName(kJan31, reason);
    EXPECT_EQ(RestorePointOfName(name), (RestorePoint{name, kJan31, reason})) << name;
  }
  for (const char* foreign :
       {"notes.txt", "tune.sm1", "20240131-142530-123 lunch.sm1", "20240231-142530-123 ecu.sm1",
        "20240131-252530-123 ecu.sm1", "20240131-142530-123 ecu.sm1.saving",
        "2024013x-142530-123 ecu.sm1", "20240131-142530-123ecu.sm1"}) {
    EXPECT_EQ(RestorePointOfName(foreign), std::nullopt) << foreign;
  }
}

class RestorePointsTest : public ::testing::Test {
 protected:
  std::string folder = RestorePoints::FolderIn(kFolders);
  testing::MemoryFileSystem files;
  RestorePoints points{files, folder};
};

TEST_F(RestorePointsTest, WrittenPointsListNewestFirstAndReadBackExactly) {
  EXPECT_EQ(folder, "/d/M/V/Restore Points/");
  const auto first = points.Take(ImageWith(1, 1), RestoreReason::kFromEcu, kJan31);
  const auto second = points.Take(ImageWith(2, 2), RestoreReason::kBeforeDownload, kJan31 + 5);
  ASSERT_EQ(first.outcome, RestorePoints::Outcome::kWritten);
  ASSERT_EQ(second.outcome, RestorePoints::Outcome::kWritten);
  EXPECT_TRUE(files.folders.count(folder));
  EXPECT_EQ(files.files.at(folder + "20240131-142530-123 ecu.sm1").size(), 1023u);

  const std::vector<RestorePoint> listed = points.List();
  EXPECT_THAT(listed, ElementsAre(second.point, first.point));
  EXPECT_EQ(points.Read(listed[0])->Bytes(), ImageWith(2, 2).Bytes());
  EXPECT_EQ(points.Read(listed[1])->Bytes(), ImageWith(1, 1).Bytes());
}

// Whatever its reason, a point equal to the newest one is not written again; an image equal to
// an older point is (it is a return to an earlier state, worth its own place in the list).
TEST_F(RestorePointsTest, AnImageEqualToTheNewestPointIsNotWrittenTwice) {
  const auto first = points.Take(ImageWith(1, 1), RestoreReason::kFromEcu, kJan31);
  const auto again = points.Take(ImageWith(1, 1), RestoreReason::kOnRequest, kJan31 + kMinute);
  EXPECT_EQ(again.outcome, RestorePoints::Outcome::kSameAsNewest);
  EXPECT_EQ(again.point, first.point);
  points.Take(ImageWith(2, 2), RestoreReason::kFromEcu, kJan31 + 2 * kMinute);
  const auto back = points.Take(ImageWith(1, 1), RestoreReason::kFromEcu, kJan31 + 3 * kMinute);
  EXPECT_EQ(back.outcome, RestorePoints::Outcome::kWritten);
  EXPECT_THAT(points.List(), SizeIs(3));
}

TEST_F(RestorePointsTest, TwoPointsInOneMillisecondBothStay) {
  points.Take(ImageWith(1, 1), RestoreReason::kFromEcu, kJan31);
  const auto later = points.Take(ImageWith(2, 2), RestoreReason::kOnRequest, kJan31);
  EXPECT_EQ(later.point.time_ms, kJan31 + 1);
  EXPECT_THAT(points.List(), SizeIs(2));
}

TEST_F(RestorePointsTest, ForeignAndDamagedFilesAreSkippedAndKept) {
  const std::string good = RestorePointName(kJan31, RestoreReason::kFromEcu);
  files.files[folder + good] = std::string(1023, '\x05');
  files.files[folder + RestorePointName(kJan31 + 1, RestoreReason::kFromEcu)] = "short";
  files.files[folder + "notes.txt"] = "my notes";
  files.files[folder + "sub/" + good] = std::string(1023, '\0');
  const std::vector<RestorePoint> listed = points.List();
  ASSERT_THAT(listed, SizeIs(1));
  EXPECT_EQ(listed[0].name, good);

  const auto taken = points.Take(ImageWith(1, 1), RestoreReason::kOnRequest, kJan31 + kMinute);
  EXPECT_EQ(taken.outcome, RestorePoints::Outcome::kWritten);
  EXPECT_EQ(files.files.count(folder + "notes.txt"), 1u);
  EXPECT_EQ(points.Read(RestorePoint{"gone.sm1", 0, RestoreReason::kFromEcu}), std::nullopt);
}

TEST_F(RestorePointsTest, AFailedWriteSaysSoAndLeavesNoPoint) {
  files.write_error = kFileErrorDiskFull;
  const auto taken = points.Take(ImageWith(1, 1), RestoreReason::kBeforeDownload, kJan31);
  EXPECT_EQ(taken.outcome, RestorePoints::Outcome::kFailed);
  EXPECT_EQ(taken.error, kFileErrorDiskFull);
  EXPECT_THAT(points.List(), IsEmpty());
}

// Points every `step` ms back from `newest`, newest first, all taken automatically.
std::vector<RestorePoint> Series(std::int64_t newest, std::int64_t step, int count) {
  std::vector<RestorePoint> series;
  for (int i = 0; i < count; ++i) {
    const std::int64_t time = newest - i * step;
    series.push_back(
        {RestorePointName(time, RestoreReason::kFromEcu), time, RestoreReason::kFromEcu});
  }
  return series;
}

TEST(ThinningTest, TheNewestFiftyStayAndOlderOnesKeepOnePerHourThenOnePerDay) {
  // Within the newest fifty nothing goes, however close together.
  EXPECT_THAT(ThinnedPoints(Series(kJan31, 1000, 50), kJan31), IsEmpty());

  // 10 minutes apart from 14:25:30.123: the 50th point is at 06:15:30; of the older ones
  // (06:05 back to 04:35) the newest of hours 5 and 4 stay, the rest of hours 6, 5 and 4 go.
  const std::vector<RestorePoint> series = Series(kJan31, 10 * kMinute, 60);
  std::vector<std::int64_t> expected;
  for (int i : {50, 52, 53, 54, 55, 56, 58, 59}) expected.push_back(kJan31 - i * 10 * kMinute);
  EXPECT_EQ(TimesOf(ThinnedPoints(series, kJan31)), expected);
}

TEST(ThinningTest, PointsOlderThanADayKeepTheNewestOfEachDay) {
  // 50 recent points, then 3 points a day (8 hours apart) for three days beginning two days back.
  std::vector<RestorePoint> series = Series(kJan31, kMinute, 50);
  const std::int64_t day_start = kJan31 - kJan31 % kMsPerDay;
  for (int day = 2; day <= 4; ++day) {
    for (int hour : {20, 12, 4}) {
      const std::int64_t time = day_start - day * kMsPerDay + hour * kMsPerHour;
      series.push_back(
          {RestorePointName(time, RestoreReason::kFromEcu), time, RestoreReason::kFromEcu});
    }
  }
  const std::vector<RestorePoint> thinned = ThinnedPoints(series, kJan31);
  ASSERT_THAT(thinned, SizeIs(6));
  for (const RestorePoint& point : thinned) {
    EXPECT_NE((point.time_ms - day_start) % kMsPerDay, 20 * kMsPerHour) << point.name;
  }
}

TEST(ThinningTest, PointsTakenOnRequestAreNeverThinned) {
  std::vector<RestorePoint> series = Series(kJan31, kMinute, 53);
  series[51].reason = RestoreReason::kOnRequest;
  // Points 49 to 52 share one hour: 49 is the hour's newest, 51 was asked for.
  EXPECT_THAT(TimesOf(ThinnedPoints(series, kJan31)),
              ElementsAre(kJan31 - 50 * kMinute, kJan31 - 52 * kMinute));
}

TEST_F(RestorePointsTest, TakingAPointThinsTheFolderAndReportsWhatWent) {
  for (int i = 0; i < 50; ++i) {
    points.Take(ImageWith(1, i), RestoreReason::kFromEcu, kJan31 + i * kMinute);
  }
  // One hour holds all of them: the 51st point thins the oldest.
  const auto taken = points.Take(ImageWith(1, 99), RestoreReason::kFromEcu, kJan31 + 50 * kMinute);
  EXPECT_EQ(taken.outcome, RestorePoints::Outcome::kWritten);
  EXPECT_THAT(TimesOf(taken.thinned), ElementsAre(kJan31));
  EXPECT_EQ(files.files.count(points.PathOf(taken.thinned[0])), 0u);
  EXPECT_THAT(points.List(), SizeIs(50));

  files.remove_fails = true;
  const auto stuck = points.Take(ImageWith(1, 100), RestoreReason::kFromEcu, kJan31 + 51 * kMinute);
  EXPECT_THAT(stuck.thinned, IsEmpty());
  EXPECT_THAT(TimesOf(stuck.not_removed), ElementsAre(kJan31 + kMinute));
  EXPECT_THAT(points.List(), SizeIs(51));
}

}  // namespace
}  // namespace vela
