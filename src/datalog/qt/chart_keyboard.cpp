// The chart's keys: a key event turned into the toolkit-free press the chart's key logic reads,
// and the view that logic returns shown.
#include <QKeyEvent>

#include "datalog/qt/datalog_chart.h"

namespace vela {

namespace {

ChartKeyPress::Named NamedKeyOf(int key) {
  using Named = ChartKeyPress::Named;
  switch (key) {
    case Qt::Key_Left:
      return Named::kLeft;
    case Qt::Key_Right:
      return Named::kRight;
    case Qt::Key_PageUp:
      return Named::kPageUp;
    case Qt::Key_PageDown:
      return Named::kPageDown;
    case Qt::Key_Home:
      return Named::kHome;
    default:
      return Named::kNone;
  }
}

// With Control the typed text is a control character, so the key's letter is taken instead.
ChartKeyPress ChartKeyPressOf(const QKeyEvent& event) {
  ChartKeyPress press;
  press.control = event.modifiers() & Qt::ControlModifier;
  press.alt = event.modifiers() & Qt::AltModifier;
  press.named = NamedKeyOf(event.key());
  if (press.named != ChartKeyPress::Named::kNone) return press;
  if (press.control) {
    if (event.key() >= Qt::Key_A && event.key() <= Qt::Key_Z) {
      press.text = static_cast<char>('A' + (event.key() - Qt::Key_A));
    }
  } else if (event.text().size() == 1 && event.text()[0].unicode() < 0x80) {
    press.text = event.text()[0].toLatin1();
  }
  return press;
}

}  // namespace

void DatalogChart::keyPressEvent(QKeyEvent* event) {
  const std::optional<ChartKey> key = ChartKeyOf(ChartKeyPressOf(*event));
  if (!key) {
    QWidget::keyPressEvent(event);
    return;
  }
  event->accept();
  if (*key == ChartKey::kExportCsv) {
    emit ExportCsvAsked();
  } else if (*key == ChartKey::kExportPicture) {
    emit ExportPictureAsked();
  } else {
    ShowView(ApplyChartKey(log_, View(), *key), *key);
  }
}

// A view the keys moved: the axis is then the tuner's (it stops following the newest point),
// except for the whole log, which gives it back as a double click does.
void DatalogChart::PutCursorA(double time) {
  const ChartView view = CursorAAt(log_, {log_.axis, cursor_a_, cursor_b_}, time);
  if (!(view.axis == log_.axis)) TakeAxisInHand(view.axis);
  SetCursors(view.a, view.b);
}

void DatalogChart::ShowView(const ChartView& view, ChartKey key) {
  if (key == ChartKey::kFitAll) {
    ShowWholeLog();
    emit AxisChangedByHand();
  } else if (!(view.axis == log_.axis)) {
    TakeAxisInHand(view.axis);
  }
  if (view.a != cursor_a_ || view.b != cursor_b_) SetCursors(view.a, view.b);
}

}  // namespace vela
