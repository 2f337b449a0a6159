#include "app/widgets/status_strip.h"

#include <QHBoxLayout>
#include <QMouseEvent>
#include <QPainter>
#include <algorithm>

#include "app/widgets/steady_label.h"
#include "app/widgets/text_of.h"

namespace vela {

namespace {

constexpr int kFramesWindowMs = 1000;
constexpr int kCountersIntervalMs = 1000;
// How long a note of the edit history stays in the strip.
constexpr int kEditNoteMs = 6000;

QString CssColour(const LabelColour& c) {
  return QString("rgb(%1, %2, %3)").arg(c.red).arg(c.green).arg(c.blue);
}

}  // namespace

QString StatusStyle(const StatusLook& look) {
  return QString("background-color: %1; color: %2; padding: 1px 6px; border-radius: 2px;")
      .arg(CssColour(look.background), CssColour(look.foreground));
}

ElidingLabel::ElidingLabel(QWidget* parent) : QLabel(parent) {
  setSizePolicy(QSizePolicy::Preferred, QSizePolicy::Preferred);
}

QSize ElidingLabel::minimumSizeHint() const {
  const QSize hint = QLabel::minimumSizeHint();
  return {std::min(hint.width(), fontMetrics().horizontalAdvance(QStringLiteral("M...")) + 14),
          hint.height()};
}

void ElidingLabel::paintEvent(QPaintEvent* event) {
  const QRect room = contentsRect().adjusted(6, 0, -6, 0);
  if (fontMetrics().horizontalAdvance(text()) <= room.width()) {
    QLabel::paintEvent(event);
    return;
  }
  // The frame and the ground as QLabel draws them, then the shortened text.
  QFrame::paintEvent(event);
  QPainter painter(this);
  painter.setPen(palette().color(foregroundRole()));
  painter.drawText(room, Qt::AlignVCenter | Qt::AlignLeft,
                   fontMetrics().elidedText(text(), Qt::ElideRight, room.width()));
}

void ElidingLabel::mousePressEvent(QMouseEvent* event) {
  if (event->button() == Qt::LeftButton) emit clicked();
  QLabel::mousePressEvent(event);
}

StatusStrip::StatusStrip(QWidget* parent)
    : QFrame(parent),
      link_state_(new QLabel(this)),
      live_tune_(new QLabel(this)),
      frames_per_second_(new QLabel(this)),
      datalog_(new RecordingIndicator(this)),
      map_in_use_(new ElidingLabel(this)),
      fault_(new ElidingLabel(this)),
      startup_(new ElidingLabel(this)),
      edit_note_(new ElidingLabel(this)),
      sending_(new SteadyLabel({"Sending 8888 of 8888 cells"}, this)),
      edit_note_timer_(new QTimer(this)),
      counters_(new QWidget(this)) {
  setObjectName("StatusStrip");
  setFrameShape(QFrame::StyledPanel);
  auto* row = new QHBoxLayout(this);
  row->setContentsMargins(4, 2, 4, 2);
  row->setSpacing(6);
  link_state_->setObjectName("LinkState");
  live_tune_->setObjectName("LiveTuneState");
  frames_per_second_->setObjectName("FramesPerSecond");
  frames_per_second_->setToolTip("Live frames the program takes from the ECU each second");
  map_in_use_->setObjectName("MapInUse");
  fault_->setObjectName("FaultIndicator");
  fault_->setCursor(Qt::PointingHandCursor);
  fault_->hide();
  connect(fault_, &ElidingLabel::clicked, this, &StatusStrip::FaultClicked);
  startup_->setObjectName("LabelOrangeBlock");
  startup_->setStyleSheet("background-color: rgb(255, 160, 40); padding: 1px 6px;");
  startup_->hide();
  for (QWidget* w : {static_cast<QWidget*>(link_state_), static_cast<QWidget*>(live_tune_),
                     static_cast<QWidget*>(frames_per_second_), static_cast<QWidget*>(datalog_)}) {
    row->addWidget(w);
  }
  row->addWidget(map_in_use_, 2);
  row->addWidget(fault_, 3);
  row->addStretch(1);
  startup_->setMaximumWidth(260);
  row->addWidget(startup_, 1);
  AddEditLabels(row);

  // The counters: small, grey, each with its meaning in a tooltip.
  auto* counters = new QHBoxLayout(counters_);
  counters->setContentsMargins(0, 0, 0, 0);
  counters->setSpacing(8);
  QFont small = counters_->font();
  small.setPointSizeF(small.pointSizeF() * 0.85);
  counters_->setFont(small);
  counters_->setStyleSheet("color: rgb(90, 90, 90);");
  watchdog_ = AddCounter("StatusLabel",
                         "Watchdog: counts down every 100 ms without data from the ECU (0 = not "
                         "connected); UPLOAD while a calibration arrives, ERR after a damaged one");
  receive_level_ = AddCounter("RxIndicator", "Receive level when the last live frame was taken");
  ticks_ = AddCounter("TickCount", "Receive timer ticks that ran the dispatcher");
  overflow_ = AddCounter("OverflowCount",
                         "Receive overflows: reads of 500 bytes or more, and buffers dropped");
  chunk_ = AddCounter("ChunkLength", "Bytes in the last read from the serial port");
  port_ = AddCounter("PortLabel", "The serial device of the ECU link");
  row->addWidget(counters_);
  frames_clock_.start();
  ShowStatus(ProgramStatus{}, false);
  ShowMapInUse(QString(), QString());
}

QLabel* StatusStrip::AddCounter(const QString& name, const QString& tooltip) {
  auto* label = new QLabel(counters_);
  label->setObjectName(name);
  label->setToolTip(tooltip);
  counters_->layout()->addWidget(label);
  return label;
}

void StatusStrip::ShowLook(QLabel* label, const StatusLook& look) {
  const QString text = TextOf(look.text);
  const QString style = StatusStyle(look);
  if (label->text() != text) label->setText(text);
  if (label->styleSheet() != style) label->setStyleSheet(style);
  label->setToolTip(TextOf(look.tooltip));
}

void StatusStrip::ShowStatus(const ProgramStatus& status, bool live_tuning) {
  ShowLook(link_state_, LinkStateLook(status));
  ShowLook(live_tune_, LiveTuneLook(live_tuning));
  ShowFramesPerSecond();
}

void StatusStrip::ShowFramesPerSecond() {
  const qint64 elapsed = frames_clock_.elapsed();
  if (elapsed < kFramesWindowMs && !frames_per_second_->text().isEmpty()) return;
  const int rate = static_cast<int>(frames_ * 1000LL / std::max<qint64>(elapsed, 1));
  frames_ = 0;
  frames_clock_.restart();
  frames_per_second_->setText(QString("%1 frames/s").arg(rate));
}

void StatusStrip::ShowMapInUse(const QString& name, const QString& path) {
  map_in_use_->setText("Map: " + (name.isEmpty() ? QString("none") : name));
  map_in_use_->setToolTip(path.isEmpty() ? QString("The calibration the maps show")
                                         : "The map file in use: " + path);
}

void StatusStrip::ShowFault(std::optional<int> code, int seen) {
  if (code) {
    ShowLook(fault_, FaultLook(*code));
  } else {
    const StatusLook look{seen == 1 ? "1 fault seen" : std::to_string(seen) + " faults seen",
                          kOffGround, kStatusText,
                          "The faults the ECU reported: click for the list"};
    ShowLook(fault_, look);
  }
  fault_->setVisible(code.has_value() || seen > 0);
}

void StatusStrip::ShowCounters(const LinkDisplay& d) {
  // The counters change with every tick; once a second is enough for reading them.
  if (counters_clock_.isValid() && counters_clock_.elapsed() < kCountersIntervalMs) return;
  counters_clock_.start();
  auto set = [](QLabel* label, const QString& text) {
    if (label->text() != text) label->setText(text);
  };
  const QString status = TextOf(d.status.text);
  bool numeric = false;
  status.toInt(&numeric);
  set(watchdog_, numeric ? "Watchdog " + status : status);
  set(receive_level_, "Rx " + TextOf(d.receive_indicator.text));
  set(ticks_, QString("Ticks %1").arg(d.tick_count));
  set(overflow_, QString("Overflow %1").arg(d.overflow_count));
  set(chunk_, QString("Chunk %1").arg(d.last_chunk_length));
}

void StatusStrip::ShowPort(const QString& device) {
  QString shown = device;
  if (shown.startsWith("/dev/")) shown.remove(0, 5);
  port_->setText(device.isEmpty() ? QString("Port closed") : shown);
  port_->setToolTip("The serial device of the ECU link: " +
                    (device.isEmpty() ? QString("closed") : device));
}

void StatusStrip::ShowDatalog(bool logging, double seconds, std::size_t records) {
  datalog_->Show(logging, seconds, records);
}

void StatusStrip::AddEditLabels(QHBoxLayout* row) {
  edit_note_->setObjectName("EditNote");
  edit_note_->setMaximumWidth(360);
  edit_note_->hide();
  edit_note_timer_->setSingleShot(true);
  edit_note_timer_->setInterval(kEditNoteMs);
  connect(edit_note_timer_, &QTimer::timeout, this, [this] { ShowEditNote(QString()); });
  row->addWidget(edit_note_, 1);
  sending_->setObjectName("SendingCells");
  sending_->setToolTip("Cells of a change of many cells still going to the ECU");
  sending_->setStyleSheet("background-color: rgb(90, 140, 220); color: white; padding: 1px 6px;");
  sending_->hide();
  row->addWidget(sending_);
}

void StatusStrip::ShowEditNote(const QString& text) {
  // A note is read at once or not at all: it takes the room its words need, up to the label's
  // widest, before the start-up text and the map's name give up theirs.
  edit_note_->setMinimumWidth(
      std::min(edit_note_->fontMetrics().horizontalAdvance(text) + 16, edit_note_->maximumWidth()));
  if (edit_note_->text() != text) edit_note_->setText(text);
  edit_note_->setVisible(!text.isEmpty());
  if (!text.isEmpty()) edit_note_timer_->start();
}

void StatusStrip::ShowSending(int sent, int total) {
  const QString text =
      total > 0 ? QString("Sending %1 of %2 cells").arg(sent).arg(total) : QString();
  if (sending_->text() != text) sending_->setText(text);
  sending_->setVisible(total > 0);
}

void StatusStrip::ShowStartupText(const QString& text) {
  if (startup_->text() != text) startup_->setText(text);
  startup_->setVisible(!text.isEmpty());
}

}  // namespace vela

#include "moc_status_strip.cpp"
