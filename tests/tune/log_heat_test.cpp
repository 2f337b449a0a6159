#include "tune/log_heat.h"

#include <gtest/gtest.h>

#include <cmath>

#include "synthetic_drive.h"
#include "tune/view/heat_overlay.h"

namespace vela {
namespace {

using tune_testing::AppendDrive;
using tune_testing::DriveRecords;
using tune_testing::DriveShape;
using tune_testing::FillDrive;

TuneAxes TestAxes() {
  TuneAxes axes;
  for (int i = 0; i < 11; ++i) axes.rpm.push_back(500.0 + 600.0 * i);
  for (int i = 0; i < 9; ++i) axes.loads.push_back(20.0 + 10.0 * i);
  return axes;
}

void ExpectSameFigures(const CellGrid& a, const CellGrid& b) {
  for (int row = 1; row <= a.Axes().Rows(); ++row) {
    for (int column = 1; column <= a.Axes().Columns(); ++column) {
      SCOPED_TRACE(::testing::Message() << "cell " << row << "," << column);
      EXPECT_NEAR(a.At(row, column).time_s, b.At(row, column).time_s, 1e-9);
      EXPECT_NEAR(a.At(row, column).samples, b.At(row, column).samples, 1e-9);
      EXPECT_NEAR(a.At(row, column).error_sum, b.At(row, column).error_sum, 1e-7);
    }
  }
}

// The log grows in uneven steps, with a lost stretch the gap finder decides late; the figures
// followed along come out as the evidence of the finished log taken whole.
TEST(LogHeatTest, FollowingAGrowingLogEqualsTheWholeLogAtOnce) {
  const DriveShape shape{150.0, 60.0, 70.0, 9};
  const TuneAxes axes = TestAxes();
  HeatSettings settings;
  settings.delay = {0.05, 3000.0};
  LogHeat followed(axes, TargetTable(axes), settings);
  DatalogLog growing;
  std::size_t done = 0;
  const std::size_t records = DriveRecords(shape);
  for (std::size_t chunk = 1; done < records; chunk = chunk * 3 % 97 + 5) {
    const std::size_t to = std::min(records, done + chunk);
    AppendDrive(growing, shape, done, to);
    done = to;
    followed.Follow(growing, true);
    ASSERT_LE(followed.RecordsTaken(), growing.RecordCount());
  }
  EXPECT_LT(followed.RecordsTaken(), growing.RecordCount());  // the newest records wait
  growing.CloseGaps();
  followed.Follow(growing, false);
  ASSERT_EQ(growing.Gaps().size(), 1u);
  EXPECT_EQ(followed.RecordsTaken(), growing.RecordCount());

  DatalogLog whole;
  FillDrive(whole, shape);
  Evidence evidence{CellGrid(axes), {}};
  AddEvidence(SamplesOf(whole, LoadBasis::kMap), TargetTable(axes), settings.filters,
              settings.delay, evidence);

  ExpectSameFigures(followed.Cells(), evidence.cells);
  EXPECT_EQ(followed.Figures().verdicts, evidence.verdicts);
  EXPECT_GT(evidence.verdicts[static_cast<int>(SampleVerdict::kKept)], 1000u);
  EXPECT_GT(evidence.verdicts[static_cast<int>(SampleVerdict::kDecelCut)], 0u);
  EXPECT_GT(evidence.verdicts[static_cast<int>(SampleVerdict::kCold)], 0u);
}

TEST(LogHeatTest, AnotherLogStartsOver) {
  const TuneAxes axes = TestAxes();
  LogHeat heat(axes, TargetTable(axes), HeatSettings{});
  DatalogLog log;
  FillDrive(log, {60.0, 60.0});
  heat.Follow(log, false);

  // Cleared and recorded again: shorter than what was taken.
  log.Clear();
  AppendDrive(log, {60.0, 60.0}, 0, 600);
  log.CloseGaps();
  heat.Follow(log, false);
  EXPECT_EQ(heat.RecordsTaken(), 600u);

  // Replaced by a log of another rate with more records.
  DatalogLog other;
  FillDrive(other, {70.0, 50.0});
  LogHeat fresh(axes, TargetTable(axes), HeatSettings{});
  fresh.Follow(other, false);
  heat.Follow(other, false);
  ExpectSameFigures(heat.Cells(), fresh.Cells());
}

TEST(HeatOverlayTest, SpansOfASelectionFollowTheNearestCell) {
  const TuneAxes axes = TestAxes();  // RPM sites 500, 1100, ..., loads 20, 30, ...
  DatalogLog log;
  const auto add = [&log](double t, double rpm, double map) {
    ChannelValues values{};
    values[0] = rpm;
    values[1] = map;
    log.Append(t, t, values, 0b11);
  };
  add(0.0, 200.0, 40.0);   // not running: in no cell
  add(0.1, 1100.0, 40.0);  // row 10 (1100), column 3 (40)
  add(0.2, 1390.0, 44.0);  // still nearest 1100 and 40
  add(0.3, 1410.0, 40.0);  // 1700 is nearer: row 9
  add(0.4, 1100.0, 46.0);  // column 4
  add(0.5, 1000.0, 38.0);  // back in
  add(0.6, 100.0, 38.0);   // stopped
  log.CloseGaps();
  const MapCellRect one{10, 3, 10, 3};
  const std::vector<CellStretch> spans = CellSpans(log, LoadBasis::kMap, axes, one);
  EXPECT_EQ(spans, (std::vector<CellStretch>{{0.1, 0.3}, {0.5, 0.6}}));
  // A rectangle of four cells joins the first three stretches into one.
  const std::vector<CellStretch> wide = CellSpans(log, LoadBasis::kMap, axes, {9, 3, 10, 4});
  ASSERT_EQ(wide.size(), 1u);
  EXPECT_DOUBLE_EQ(wide[0].second, 0.6);
  EXPECT_TRUE(CellSpans(log, LoadBasis::kMap, axes, {1, 1, 1, 1}).empty());
  // Beyond the axes a point is held at the edge cell.
  EXPECT_EQ(NearestCell(axes, 9000.0, 5.0), (MapCell{1, 1}));
}

TEST(HeatOverlayTest, CellsAreColouredOnlyWhereTheLogSaysSomething) {
  const TuneAxes axes = TestAxes();
  CellGrid cells(axes);
  const TargetTable targets(axes);  // 14.7 at 40 kPa and below
  cells.At(5, 2).time_s = 3.0;      // time, no kept samples
  CellEvidence& lean = cells.At(6, 2);
  lean.time_s = 1.0;
  ShareAfr(cells, {0.0, axes.RowRpm(6), axes.ColumnLoad(2)}, 15.7, 14.7);
  ShareAfr(cells, {0.0, axes.RowRpm(7), axes.ColumnLoad(2)}, 13.7, 14.7);  // a rich cell

  const GridOverlay time = HeatOverlay(cells, targets, HeatLayer::kTime, {6, 2});
  EXPECT_NE(time.At(5, 2)->ground, kNoFiguresGround);
  EXPECT_EQ(time.At(1, 1)->ground, kNoFiguresGround);
  EXPECT_EQ(time.At(6, 2)->mark, kChartCellMark);
  EXPECT_FALSE(time.At(5, 2)->mark.has_value());
  EXPECT_FALSE(time.At(5, 2)->text.has_value());  // the values stay the map's

  const GridOverlay error = HeatOverlay(cells, targets, HeatLayer::kError, {0, 0});
  EXPECT_EQ(error.At(5, 2)->ground, kNoFiguresGround);  // time says nothing of the mixture
  const Rgb lean_colour = *error.At(6, 2)->ground;
  const Rgb rich_colour = *error.At(7, 2)->ground;
  EXPECT_GT(lean_colour.red, lean_colour.blue);
  EXPECT_GT(rich_colour.blue, rich_colour.red);
  EXPECT_EQ(*error.At(6, 2)->description,
            "1.0 s, 1 samples, mean AFR 15.70, spread 0.00, target 14.70, error +1.00");
  EXPECT_EQ(*error.At(5, 2)->description, "3.0 s, no kept samples, target 14.70");

  const GridOverlay off = HeatOverlay(cells, targets, HeatLayer::kOff, {6, 2});
  EXPECT_FALSE(off.At(6, 2)->ground.has_value());
  EXPECT_FALSE(off.At(6, 2)->description.has_value());
  EXPECT_TRUE(off.At(6, 2)->mark.has_value());  // the chart's cell is outlined without a layer

  HeatLayer layer = HeatLayer::kOff;
  for (int i = 0; i < 5; ++i) layer = NextLayer(layer);
  EXPECT_EQ(layer, HeatLayer::kOff);
}

void ExpectSameSamples(const SampleLog& a, const SampleLog& b) {
  ASSERT_EQ(a.samples.size(), b.samples.size());
  EXPECT_EQ(a.step, b.step);
  const auto same = [](double x, double y) { return x == y || (std::isnan(x) && std::isnan(y)); };
  for (std::size_t i = 0; i < a.samples.size(); ++i) {
    const TuneSample& x = a.samples[i];
    const TuneSample& y = b.samples[i];
    ASSERT_TRUE(same(x.time, y.time) && same(x.rpm, y.rpm) && same(x.load, y.load) &&
                same(x.fuel_ms, y.fuel_ms) && same(x.tps, y.tps) && same(x.water_c, y.water_c) &&
                same(x.pump, y.pump) && same(x.afr, y.afr) && x.lost_before == y.lost_before)
        << "record " << i;
  }
}

// A copy of a log's columns, brought up to date as the log grows (a lost stretch, a channel
// switched on late among it), reads as the log itself; another log is copied from its start.
TEST(LogColumnsTest, ACopyKeptUpToDateReadsAsTheLog) {
  const tune_testing::DriveShape shape{90.0, 60.0, 40.0, 7};
  DatalogLog log;
  ChannelValues values = tune_testing::DriveValuesAt(0.5);
  for (int i = 0; i < 30; ++i) log.Append(i / 60.0, i / 60.0, values, 1u << 0);  // RPM only
  LogColumns columns;
  EXPECT_FALSE(TakeColumns(log, columns));
  std::size_t done = 30;
  for (std::size_t chunk = 7; done < DriveRecords(shape); chunk = chunk * 5 % 1013 + 11) {
    const std::size_t to = std::min(DriveRecords(shape), done + chunk);
    AppendDrive(log, shape, done, to);
    done = to;
    EXPECT_TRUE(TakeColumns(log, columns));
    EXPECT_TRUE(HoldsStartOf(columns, log));
  }
  log.CloseGaps();
  TakeColumns(log, columns);
  ASSERT_EQ(log.Gaps().size(), 1u);
  ExpectSameSamples(SamplesOf(columns, LoadBasis::kMap), SamplesOf(log, LoadBasis::kMap));
  ExpectSameSamples(SamplesOf(columns, LoadBasis::kThrottle), SamplesOf(log, LoadBasis::kThrottle));

  // Cleared and recorded again, or replaced by a longer log: copied from the start.
  log.Clear();
  AppendDrive(log, shape, 0, 500);
  EXPECT_FALSE(HoldsStartOf(columns, log));
  EXPECT_FALSE(TakeColumns(log, columns));
  ExpectSameSamples(SamplesOf(columns, LoadBasis::kMap), SamplesOf(log, LoadBasis::kMap));
  DatalogLog longer;
  FillDrive(longer, {100.0, 50.0});
  EXPECT_FALSE(TakeColumns(longer, columns));
  ExpectSameSamples(SamplesOf(columns, LoadBasis::kMap), SamplesOf(longer, LoadBasis::kMap));
}

}  // namespace
}  // namespace vela
