// Widget tests of the map editors. They need a display (gui_tests runs them on one of its own).
#include <QGuiApplication>
#include <QSignalSpy>
#include <QtTest>

#include "calibration/map_axes.h"
#include "editors/mapgrid/qt/cross_hair.h"
#include "editors/mapgrid/qt/map_graph.h"
#include "editors/mapgrid/qt/map_grid.h"
#include "editors/mapgrid/qt/map_readout.h"
#include "editors/mapgrid/qt/map_surface_view.h"
#include "support/gui_test_main.h"

namespace vela {

class MapGridQtTest : public QObject {
  Q_OBJECT

 private slots:
  void KeysActOnEveryCellOfAMouseSelection();
  void AFuelGridIsColouredByValueAndTakesTheLiveValueWhereClicked();
  void GraphsFollowTheGridAndTheSurfacePlacesTheLivePoint();
  void CrossHairMarksOnlyTheSelectedMap();
  void ReadoutShowsEachLiveQuantity();
};

void MapGridQtTest::KeysActOnEveryCellOfAMouseSelection() {
  MapGrid grid(MapKind::kIgnition);
  grid.SetUp(QStringLiteral("Ignition"), 5);
  grid.show();
  QVERIFY(QTest::qWaitForWindowExposed(&grid));
  const QRect first = grid.visualRect(grid.model()->index(2, 2));
  const QRect last = grid.visualRect(grid.model()->index(3, 4));
  QTest::mousePress(grid.viewport(), Qt::LeftButton, {}, first.center());
  QTest::mouseMove(grid.viewport(), last.center());
  QTest::mouseRelease(grid.viewport(), Qt::LeftButton, {}, last.center());
  QSignalSpy spy(&grid, &MapGrid::CellsChanged);
  QTest::keyClick(&grid, Qt::Key_Down);
  QCOMPARE(spy.count(), 1);
  QCOMPARE(spy.at(0).at(0).value<std::vector<MapCell>>().size(), 6u);
  QCOMPARE(grid.CellText(2, 2), QStringLiteral("-1.0"));
  QCOMPARE(grid.CellText(3, 4), QStringLiteral("-1.0"));
  // A key that moves changes nothing.
  QTest::keyClick(&grid, Qt::Key_Right);
  QCOMPARE(spy.count(), 1);
}

// The lowest cells are blue, the highest red. Enter is the window's key: the grid's model must
// already hold the cell the click selected.
void MapGridQtTest::AFuelGridIsColouredByValueAndTakesTheLiveValueWhereClicked() {
  MapGrid grid(MapKind::kFuel);
  grid.SetUp(QStringLiteral("Fuel 1"), 9);
  MapValues values(9);  // rising with load and falling with RPM row
  for (int row = 1; row <= kMapRows; ++row) {
    for (int column = 1; column <= 9; ++column) values.Set(row, column, column + kMapRows - row);
  }
  grid.LoadValues(values);
  grid.SetLiveTuning(true);
  grid.show();
  QVERIFY(QTest::qWaitForWindowExposed(&grid));
  const QImage picture = grid.grab().toImage();
  const auto ground = [&](int row, int column) {
    return picture.pixelColor(grid.visualRect(grid.model()->index(row, column)).topLeft() +
                              QPoint(3, 3));
  };
  const QColor low = ground(11, 1);
  const QColor high = ground(5, 9);
  QVERIFY2(low.blue() > low.red(), qPrintable(low.name()));
  QVERIFY2(high.red() > high.blue(), qPrintable(high.name()));

  grid.SetCurrentCell(3, 3);
  QTest::mouseClick(grid.viewport(), Qt::LeftButton, {},
                    grid.visualRect(grid.model()->index(8, 6)).center());
  const QString untouched = grid.CellText(3, 3);
  grid.Model().InsertLiveValue(9.876);
  QCOMPARE(grid.CellText(8, 6), QStringLiteral("9.876"));
  QCOMPARE(grid.CellText(3, 3), untouched);
}

// Either graph redraws from the grid it follows; the surface also places the live point.
void MapGridQtTest::GraphsFollowTheGridAndTheSurfacePlacesTheLivePoint() {
  MapGrid grid(MapKind::kIgnition);
  grid.SetUp(QStringLiteral("Ignition"), 6);
  MapGraph flat(MapKind::kIgnition, nullptr, GraphMode::kFlat);
  MapGraph graph(MapKind::kIgnition);
  for (MapGraph* shown : {&flat, &graph}) {
    shown->Follow(&grid);
    shown->resize(400, 300);
    shown->show();
    QVERIFY(QTest::qWaitForWindowExposed(shown));
  }
  grid.SetCurrentCell(6, 6);
  QTest::keyClick(&grid, Qt::Key_PageDown);
  QCOMPARE(flat.Data().At(6, 6), -5.0);
  QCOMPARE(graph.Data().At(6, 6), -5.0);
  const QImage before = graph.grab().toImage();
  graph.SetMarker(OperatingPoint{6.0, 6.0});
  const QString rpm = graph.Data().rpm_labels.value(5).trimmed();
  const QString load = graph.Data().load_labels.value(5).trimmed();
  QCOMPARE(graph.Surface()->MarkerText(),
           QStringLiteral("%1 rpm, %2 kPa: -5.0 deg").arg(rpm, load));
  QVERIFY(graph.grab().toImage() != before);
  graph.SetMarker(std::nullopt);
  QVERIFY(graph.Surface()->MarkerText().isEmpty());
  QCOMPARE(graph.grab().toImage(), before);
  // Turning the view draws the same map from another side; the tilt stays within its bounds.
  graph.Surface()->SetAngles({40.0, 200.0});
  QCOMPARE(graph.Surface()->Angles().tilt_degrees, 85.0);
  QVERIFY(graph.grab().toImage() != before);
}

void MapGridQtTest::CrossHairMarksOnlyTheSelectedMap() {
  MapGrid fuel1(MapKind::kFuel);
  MapGrid fuel2(MapKind::kFuel);
  MapGrid ign(MapKind::kIgnition);
  fuel1.SetUp(QStringLiteral("Fuel 1"), 9);
  fuel2.SetUp(QStringLiteral("Fuel 2"), 9);
  ign.SetUp(QStringLiteral("Ignition"), 5);
  MapGraph graph2(MapKind::kFuel, nullptr, GraphMode::kFlat);
  CrossHair cross_hair;
  cross_hair.Attach(1, &fuel1, nullptr);
  cross_hair.Attach(2, &fuel2, &graph2);
  cross_hair.Attach(3, &ign, nullptr);
  cross_hair.setProperty("motormap", 2);
  // 1375 RPM lies halfway between the sites of 1000 and 1750 RPM (sites 2 and 3 of the 750 RPM
  // spacing); 50 kPa is the fifth of nine load sites over 0 to 100 kPa.
  live::Frame frame{};
  const auto period = static_cast<std::uint32_t>(60'000'000 / 1375.0 + 0.5);
  frame[live::kEnginePeriod - 1] = period & 0xFF;
  frame[live::kEnginePeriod] = (period >> 8) & 0xFF;
  frame[live::kMap - 1] = 500 & 0xFF;
  frame[live::kMap] = 500 >> 8;
  cross_hair.SetLiveFrame(frame);
  QVERIFY(!fuel1.Marker().has_value());
  QVERIFY(fuel2.Marker().has_value());
  QVERIFY(std::abs(fuel2.Marker()->row - 8.5) < 1e-3);
  QCOMPARE(fuel2.Marker()->column, 5.0);
  QCOMPARE(graph2.Marker(), fuel2.Marker());
  cross_hair.SetMotorMap(3);
  QVERIFY(!fuel2.Marker().has_value());
  QVERIFY(ign.Marker().has_value());
}

void MapGridQtTest::ReadoutShowsEachLiveQuantity() {
  MapReadout readout;
  readout.setObjectName(QStringLiteral("FuelMap1A"));
  readout.SetDecimalSeparator(QLatin1Char(','));
  readout.SetRpm(3456.4);
  readout.SetMs(4.25);
  readout.SetWat(QStringLiteral(">120"));
  readout.SetBatt(13.8);
  QCOMPARE(readout.item(0, 0)->text(), QStringLiteral("RPM"));
  QCOMPARE(readout.item(8, 0)->text(), QStringLiteral("AFR"));
  QCOMPARE(readout.Value(Readout::kRpm), QStringLiteral("3456"));
  QCOMPARE(readout.Value(Readout::kMs), QStringLiteral("4,250"));
  QCOMPARE(readout.Value(Readout::kWat), QStringLiteral(">120"));
  QCOMPARE(readout.Value(Readout::kBatt), QStringLiteral("13,80"));
}

}  // namespace vela

using vela::MapGridQtTest;
VELA_GUI_TEST(MapGridQtTest)
#include "mapgrid_qt_test.moc"
