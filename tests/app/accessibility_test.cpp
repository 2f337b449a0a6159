// What accessibility tools read of the window against the simulated ECU: every self-painted live
// value reads, through its accessible interface, the text it paints, and tools hear of a value
// only when its text really changes.
#include <QAccessible>
#include <QLabel>
#include <QTemporaryDir>
#include <QtTest>

#include "app/pages/data_page.h"
#include "app/widgets/live_value.h"
#include "app/widgets/status_strip.h"
#include "editors/compensation/qt/curve_view.h"
#include "editors/mapgrid/qt/map_graph.h"
#include "editors/mapgrid/qt/map_readout.h"
#include "editors/mapgrid/qt/map_surface_view.h"
#include "running_program.h"
#include "sim/pty_runner.h"
#include "support/gui_test_main.h"

using namespace vela;

// The file's own namespace: the test programs are compiled several files at a time.
namespace accessibility_test {

struct ValueEvent {
  QObject* object;  // the widget, or null for a part of one
  QString value;
  QString name;     // the accessible name of what changed
  QString painted;  // a live value's text when the change was told
};

// The value changes tools hear, as a listening tool would.
std::vector<ValueEvent>& Heard() {
  static std::vector<ValueEvent> heard;
  return heard;
}

void Listen(QAccessibleEvent* event) {
  if (event->type() != QAccessible::ValueChanged) return;
  QAccessibleInterface* iface = event->accessibleInterface();
  auto* live_value = qobject_cast<LiveValue*>(event->object());
  Heard().push_back({event->object(),
                     static_cast<QAccessibleValueChangeEvent*>(event)->value().toString(),
                     iface ? iface->text(QAccessible::Name) : QString(),
                     live_value ? live_value->text() : QString()});
}

// A tool listens while the test runs: it hears what the toolkit's bridge would pass on.
struct ToolListening {
  ToolListening() {
    Heard().clear();
    previous = QAccessible::installUpdateHandler(&Listen);
  }
  ~ToolListening() { QAccessible::installUpdateHandler(previous); }
  QAccessible::UpdateHandler previous;
};

using testing::AccessibleText;
using testing::ShownProgram;

class AccessibilityTest : public QObject {
  Q_OBJECT

 private slots:
  // The class runs on an accessibility bus of its own (scripts/with-accessibility-bus.sh), so the
  // toolkit's bridge is active as it is on a screen reader's desktop.
  void initTestCase() {
    QWidget window;
    window.show();
    QTRY_VERIFY2_WITH_TIMEOUT(QAccessible::isActive(), "no accessibility bus", 10000);
  }

  void aValueIsHeardOnlyWhenItsTextChanges() {
    ToolListening tool;
    DataPage page;
    auto* rpm = page.findChild<LiveValue*>("DataRPM");
    LiveData live;
    live.lambda = 1.0;
    const auto show = [&](const char* rpm_text) {
      live.engine_rpm = std::stod(rpm_text);
      page.Show(live, 0, false, true);
    };
    const auto heard_rpm = [rpm] {
      QStringList values;
      for (const ValueEvent& event : Heard()) {
        if (event.object == rpm) values << event.value;
      }
      return values;
    };
    const auto interval_ends = [] { QTest::qWait(3 * ValueAnnouncer::kIntervalMs); };
    show("2500");
    interval_ends();
    Heard().clear();
    show("2500");
    interval_ends();
    QVERIFY(Heard().empty());
    // A change after a quiet while is heard at once; changes in quick succession once the
    // interval ends, the newest of them; a return to what was heard is no change.
    show("2510");
    QCOMPARE(heard_rpm(), QStringList({"2510"}));
    show("2520");
    show("2530");
    QCOMPARE(heard_rpm(), QStringList({"2510"}));
    interval_ends();
    QCOMPARE(heard_rpm(), QStringList({"2510", "2530"}));
    show("2540");
    show("2550");
    show("2540");
    interval_ends();
    QCOMPARE(heard_rpm(), QStringList({"2510", "2530", "2540"}));
    QCOMPARE(Heard().size(), std::size_t{3});
    // Not connected: every value reads "--", each heard once.
    Heard().clear();
    page.Show(live, 0, false, false);
    page.Show(live, 0, false, false);
    interval_ends();
    QCOMPARE(Heard().size(), std::size_t{12});
    QCOMPARE(AccessibleText(page.findChild<LiveValue*>("DataAFR"), QAccessible::Value), "--");
  }

  void eachPageReadsWhatItShows() {
    ToolListening tool;
    ShownProgram p;
    QVERIFY(p.started && p.loaded);
    QTRY_VERIFY_WITH_TIMEOUT(p.Live(), 10000);
    auto* readout = p.window().findChild<MapReadout*>("FuelMap1A");
    QTRY_VERIFY_WITH_TIMEOUT(readout->Value(Readout::kRpm).toInt() > 0, 5000);
    // The status strip reads what it shows.
    for (const char* name : {"LinkState", "LiveTuneState", "FramesPerSecond", "MapInUse"}) {
      auto* label = p.window().status_strip().findChild<QLabel*>(name);
      QVERIFY2(label != nullptr, name);
      QCOMPARE(AccessibleText(label, QAccessible::Name), label->text());
    }
    QAccessibleInterface* whole = QAccessible::queryAccessibleInterface(readout);
    QCOMPARE(whole->text(QAccessible::Name), QString("Fuel 1 live values"));
    QCOMPARE(whole->childCount(), static_cast<int>(kReadoutLabels.size()));
    for (int i = 0; i < whole->childCount(); ++i) {
      QAccessibleInterface* part = whole->child(i);
      QCOMPARE(part->role(), QAccessible::StaticText);
      QCOMPARE(part->text(QAccessible::Name), QString(kReadoutLabels[i]));
      QCOMPARE(part->text(QAccessible::Value), readout->Value(static_cast<Readout>(i)));
      QCOMPARE(whole->indexOfChild(part), i);
    }
    Heard().clear();
    QTRY_VERIFY_WITH_TIMEOUT(std::any_of(Heard().begin(), Heard().end(),
                                         [](const ValueEvent& e) { return e.name == "RPM"; }),
                             5000);

    // The 3D graph's live label.
    p.window().findChild<QCheckBox*>("Numerical")->setChecked(false);
    MapSurfaceView* surface = p.window().findChild<MapGraph*>("FuelGraphVelaB1")->Surface();
    QTRY_VERIFY(!surface->MarkerText().isEmpty());
    QAccessibleInterface* graph = QAccessible::queryAccessibleInterface(surface);
    QCOMPARE(graph->role(), QAccessible::Chart);
    QCOMPARE(graph->text(QAccessible::Name), QString("Fuel 1 graph"));
    QCOMPARE(graph->text(QAccessible::Value), surface->MarkerText());

    // A compensation curve's live caption.
    p.window().tabs()->setCurrentIndex(5);
    auto* curve = p.window().findChild<CurveView*>("BattMapCurve");
    QTRY_VERIFY(!curve->LiveCaption().isEmpty());
    QAccessibleInterface* chart = QAccessible::queryAccessibleInterface(curve);
    QCOMPARE(chart->role(), QAccessible::Chart);
    QCOMPARE(chart->text(QAccessible::Name), QString("Injector opening time added"));
    QCOMPARE(chart->text(QAccessible::Value), curve->LiveCaption());
    QVERIFY2(curve->LiveCaption().contains(" Volts: "), qPrintable(curve->LiveCaption()));

    // The Data Page's values read as they are painted.
    p.window().tabs()->setCurrentIndex(9);
    auto* page = p.window().findChild<DataPage*>();
    QTRY_VERIFY_WITH_TIMEOUT(p.Live() && page->Value("DataRPM").toInt() > 0, 10000);
    const QList<LiveValue*> values = page->findChildren<LiveValue*>();
    QCOMPARE(values.size(), 12);
    for (LiveValue* value : values) {
      QAccessibleInterface* iface = QAccessible::queryAccessibleInterface(value);
      QVERIFY(iface != nullptr);
      QCOMPARE(iface->role(), QAccessible::StaticText);
      QVERIFY2(!iface->text(QAccessible::Name).isEmpty(), qPrintable(value->objectName()));
      QCOMPARE(iface->text(QAccessible::Value), page->Value(value->objectName()));
      QAccessibleTextInterface* text = iface->textInterface();
      QVERIFY(text != nullptr);
      QCOMPARE(text->text(0, text->characterCount()), value->text());
    }
    auto* rpm = page->findChild<LiveValue*>("DataRPM");
    QCOMPARE(AccessibleText(rpm, QAccessible::Name), "Engine Speed");
    QCOMPARE(AccessibleText(rpm, QAccessible::Description), "RPM");

    // While the engine runs, each change is heard once, with the text painted at that moment.
    Heard().clear();
    QTRY_VERIFY_WITH_TIMEOUT(
        std::count_if(Heard().begin(), Heard().end(),
                      [rpm](const ValueEvent& e) { return e.object == rpm; }) >= 3,
        5000);
    QString last;
    for (const ValueEvent& event : Heard()) {
      if (event.object != rpm) continue;
      QVERIFY2(event.value != last, "a value heard twice in a row");
      QCOMPARE(event.value, event.painted);
      last = event.value;
    }
  }
};

VELA_GUI_TEST(AccessibilityTest)

}  // namespace accessibility_test

#include "accessibility_test.moc"
