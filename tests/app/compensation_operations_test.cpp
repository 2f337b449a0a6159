// The workbench on the compensation tables against the simulated ECU, from the keyboard alone:
// rows selected with the selection keys, a typed operation, undo, a paste; the ECU gets exactly
// the changed bytes and its calibration read back equals the editors' image. A comparison with
// the ECU frames the rows that differ. Set VELA_SHOTS to a folder to keep pictures of the typed
// line on the page at 1280x720 and 1024x600.
#include <QApplication>
#include <QClipboard>
#include <QLabel>
#include <QLineEdit>
#include <QtTest>
#include <algorithm>

#include "app/pages/setup/compensation_page.h"
#include "app/pages/setup/setup_pages.h"
#include "app/sessions/compare_session.h"
#include "editors/workbench/edit_journal.h"
#include "running_program.h"
#include "support/gui_test_main.h"
#include "support/wire_log.h"

using namespace vela;
using vela::testing::SentFrame;

// The file's own namespace: the test programs are compiled several files at a time.
namespace compensation_operations_test {

constexpr auto kExtend = Qt::ControlModifier | Qt::ShiftModifier;

class CompensationOperationsTest : public QObject {
  Q_OBJECT

  testing::WireLog wire_;
  std::unique_ptr<testing::RunningProgram> p_;
  int read_backs_ = 0;
  CalibrationImage read_back_;

  void Key(Qt::Key key, Qt::KeyboardModifiers modifiers = Qt::NoModifier) {
    QTest::keyClick(QApplication::focusWidget(), key, modifiers);
  }

  CompensationPage& Page() { return *p_->window().setup_pages().compensation(); }

  bool ReadBack(CalibrationImage& image) {
    const int before = read_backs_;
    p_->link().ForceUpload();
    if (!QTest::qWaitFor([&] { return read_backs_ > before; }, 10000)) return false;
    image = read_back_;
    return QTest::qWaitFor([&] { return p_->Live(); }, 5000);
  }

  // Runs `step` from the keyboard and checks that the ECU got one single-value write per changed
  // byte and nothing else, and that its calibration equals the editors' image.
  void Step(const char* what, const std::function<void()>& step) {
    EditorSession& editors = p_->editors();
    const CalibrationImage before = editors.image();
    const std::size_t mark = wire_.Mark();
    step();
    std::vector<SentFrame> expected;
    for (const ByteChange& change : DiffImages(before, editors.image())) {
      expected.push_back({kSingleValueWrite, change.position, change.after});
    }
    QVERIFY2(!expected.empty(), what);
    QVERIFY2(
        QTest::qWaitFor([&] { return wire_.WritesSince(mark).size() >= expected.size(); }, 5000),
        what);
    QTest::qWait(200);  // for any frame that should not come
    std::vector<SentFrame> sent = wire_.WritesSince(mark);
    std::sort(sent.begin(), sent.end(),
              [](const SentFrame& a, const SentFrame& b) { return a.address < b.address; });
    QVERIFY2(sent == expected, what);
    CalibrationImage ecu;
    QVERIFY2(ReadBack(ecu), what);
    QVERIFY2(ecu.Bytes() == editors.image().Bytes(), what);
  }

  void KeepShot(QSize size) {
    p_->window().resize(size);
    QTest::qWait(150);
    const QString folder = qEnvironmentVariable("VELA_SHOTS");
    if (!folder.isEmpty()) {
      p_->window().grab().save(QString("%1/compensation-typed-line-%2x%3.png")
                                   .arg(folder)
                                   .arg(size.width())
                                   .arg(size.height()));
    }
  }

 private slots:
  void init() {
    testing::RunningOptions options;
    options.log = wire_.Hook();
    options.size = {1280, 720};
    p_ = std::make_unique<testing::RunningProgram>(options);
    QVERIFY2(p_->started, p_->error.c_str());
    QVERIFY(p_->Run());
    QVERIFY(QTest::qWaitFor([&] { return p_->Live(); }, 5000));
    connect(&p_->link(), &LinkSession::CalibrationReceived, this,
            [this](const CalibrationImage& image) {
              read_back_ = image;
              ++read_backs_;
            });
  }
  void cleanup() { p_.reset(); }

  void selectedRowsScaledReachTheEcuByteForByteAndUndoPutsThemBack() {
    SmallMapGrid* water = Page().grid(CompTable::kWaterMap);
    OperationLine* line = Page().operation_line(CompTable::kWaterMap);
    QVERIFY(p_->Press(Qt::Key_C));
    water->SetCurrentRow(0);
    water->setFocus();
    for (int i = 0; i < 3; ++i) Key(Qt::Key_Down, kExtend);
    Key(Qt::Key_Up, kExtend);
    QCOMPARE(water->Model().SelectionFirst(), 0);
    QCOMPARE(water->Model().SelectionLast(), 2);
    const std::size_t entries = p_->editors().history().journal().Entries().size();

    Step("*1.1", [&] {
      Key(Qt::Key_Asterisk);
      QVERIFY(line->IsOpen());
      QTest::keyClicks(QApplication::focusWidget(), "1.1");
      QVERIFY2(line->preview()->text().contains("cells change"),
               qPrintable(line->preview()->text()));
      KeepShot({1280, 720});
      KeepShot({1024, 600});
      p_->window().resize(1280, 720);
      Key(Qt::Key_Return);
      QVERIFY(!line->IsOpen());
      QCOMPARE(QApplication::focusWidget(), water);
    });
    const auto& journal = p_->editors().history().journal();
    QCOMPARE(journal.Entries().size(), entries + 1);
    QCOMPARE(journal.Entries().back().kind, EditKind::kTypedOperation);
    QCOMPARE(journal.Entries().back().place, EditPlace::kSetup);
    QCOMPARE(QString::fromStdString(journal.Entries().back().source),
             QString("Water temperature compensation: *1.1"));

    // Compared with the ECU as last read (the change read back): the undo makes the changed
    // rows differ until the ECU is read again, and they are framed meanwhile.
    QVERIFY(p_->window().compare().Compare(CompareSession::Source::kEditors,
                                           CompareSession::Source::kEcu));
    QVERIFY(!water->Mark(0).isValid() && !water->Mark(2).isValid());
    Step("Ctrl-Z", [&] {
      Key(Qt::Key_Z, Qt::ControlModifier);
      int framed = 0;
      for (int row = 0; row < 3; ++row) framed += water->Mark(row).isValid() ? 1 : 0;
      QVERIFY(framed > 0);
      QVERIFY(!water->Mark(5).isValid());
    });
    QVERIFY(!water->Mark(0).isValid() && !water->Mark(1).isValid());
    QCOMPARE(journal.Applied(), entries);
  }

  // A column pasted onto the selected rows is one entry; a refused typed value changes nothing.
  void aPastedColumnIsOneEntryAndARefusalStaysOnTheLine() {
    SmallMapGrid* batt = Page().grid(CompTable::kBattMap);
    OperationLine* line = Page().operation_line(CompTable::kBattMap);
    QVERIFY(p_->Press(Qt::Key_C));
    batt->SetCurrentRow(4);
    batt->setFocus();
    Step("Ctrl-V", [&] {
      QGuiApplication::clipboard()->setText("0.31\r\n0.27\r\n");
      Key(Qt::Key_V, Qt::ControlModifier);
    });
    QCOMPARE(batt->Model().Text(4), std::string("0.31"));
    QCOMPARE(batt->Model().Text(5), std::string("0.27"));
    QCOMPARE(p_->editors().history().journal().Entries().back().kind, EditKind::kPaste);
    // Copied with the axis column and pasted higher up: the volts are checked and skipped.
    batt->SetCurrentRow(4);
    Key(Qt::Key_Down, Qt::ControlModifier | Qt::ShiftModifier);
    Key(Qt::Key_C, Qt::ControlModifier | Qt::ShiftModifier);
    const QString copied = QGuiApplication::clipboard()->text();
    QVERIFY2(copied.startsWith(QString::fromStdString(batt->Model().RowLabel(4)) + "\t"),
             qPrintable(copied));
    batt->SetCurrentRow(1);
    Step("Ctrl-V with the axis", [&] { Key(Qt::Key_V, Qt::ControlModifier); });
    QCOMPARE(batt->Model().Text(1), std::string("0.31"));
    QCOMPARE(batt->Model().Text(2), std::string("0.27"));

    const CalibrationImage before = p_->editors().image();
    Key(Qt::Key_Equal);
    QTest::keyClicks(QApplication::focusWidget(), "2.5");
    QVERIFY2(line->preview()->text().contains("beyond"), qPrintable(line->preview()->text()));
    Key(Qt::Key_Return);
    QVERIFY(line->IsOpen());
    Key(Qt::Key_Escape);
    QVERIFY(!line->IsOpen());
    QCOMPARE(QApplication::focusWidget(), batt);
    QVERIFY(p_->editors().image().Bytes() == before.Bytes());

    // The keyboard taken to another table closes the line and stays where the tuner put it.
    Key(Qt::Key_Plus);
    QVERIFY(line->IsOpen());
    SmallMapGrid* air = Page().grid(CompTable::kAirMap);
    air->setFocus(Qt::MouseFocusReason);
    QVERIFY(!line->IsOpen());
    QCOMPARE(QApplication::focusWidget(), air);
  }
};

VELA_GUI_TEST(CompensationOperationsTest)

}  // namespace compensation_operations_test

#include "compensation_operations_test.moc"
