#include "app/widgets/recording_indicator.h"

namespace vela {

namespace {

QString IndicatorText(const QLabel& label) { return label.text(); }

}  // namespace

RecordingIndicator::RecordingIndicator(QWidget* parent)
    : SteadyLabel({"Logging 88888.8 s, 8888888 records"}, parent) {
  InstallPaintedTextAccessible<RecordingIndicator, QAccessible::StaticText, &IndicatorText>();
  setObjectName("DatalogState");
  setAccessibleName("Datalog recording");
  setToolTip("A datalog is being recorded: its time and the records taken so far");
  setStyleSheet("background-color: rgb(200, 30, 20); color: white; padding: 1px 6px;");
  hide();
}

void RecordingIndicator::Show(bool logging, double seconds, std::size_t records) {
  const QString text =
      logging ? QString("Logging %1 s, %2 records").arg(seconds, 0, 'f', 1).arg(records)
              : QString();
  if (this->text() != text) {
    setText(text);
    announcer_.Changed(text);
  }
  setVisible(logging);
}

}  // namespace vela

#include "moc_recording_indicator.cpp"
