// The status strip along the bottom of the main window. It leads with what the tuner needs: the
// state of the link (one place for off-line, downloading, not connected, reading the
// calibration and connected), live tuning on or off, the live frames arriving per second, the
// map in use and a new fault of the ECU (red, a click opens the list). The start-up and upload
// texts (`LabelOrangeBlock`) follow, and last, small and labelled, the link's counters.
#pragma once

#include <QElapsedTimer>
#include <QFrame>
#include <QHBoxLayout>
#include <QLabel>
#include <QTimer>
#include <optional>

#include "app/widgets/recording_indicator.h"
#include "link/program_status.h"
#include "link/receive/receive_display.h"

namespace vela {

// The style sheet of a label showing `look`.
QString StatusStyle(const StatusLook& look);

// A label that shortens its text with "..." when it has less room than the text needs; the
// whole text is its tooltip then.
class ElidingLabel : public QLabel {
  Q_OBJECT

 public:
  explicit ElidingLabel(QWidget* parent = nullptr);
  QSize minimumSizeHint() const override;

 signals:
  void clicked();

 protected:
  void paintEvent(QPaintEvent* event) override;
  void mousePressEvent(QMouseEvent* event) override;
};

class StatusStrip : public QFrame {
  Q_OBJECT

 public:
  explicit StatusStrip(QWidget* parent = nullptr);

  void ShowStatus(const ProgramStatus& status, bool live_tuning);
  // A new frame arrived; the strip shows how many arrive per second.
  void CountFrame() { ++frames_; }
  void ShowMapInUse(const QString& name, const QString& path);
  // The fault waiting to be looked at (red), or how many faults were seen (none: hidden).
  void ShowFault(std::optional<int> code, int seen);
  void ShowCounters(const LinkDisplay& display);
  void ShowPort(const QString& device);
  // `LabelOrangeBlock`: start-up steps and the upload's progress; hidden while empty.
  void ShowStartupText(const QString& text);
  // Whether a datalog is being recorded, with its time and record count; hidden when not.
  void ShowDatalog(bool logging, double seconds, std::size_t records);
  // `EditNote`: what the last undo, redo or workbench operation did; cleared after a while.
  void ShowEditNote(const QString& text);
  // `SendingCells`: the cells of a change of many cells going out, `sent` of `total`; hidden
  // when total is 0.
  void ShowSending(int sent, int total);

  QLabel* startup_label() const { return startup_; }
  QLabel* status_label() const { return watchdog_; }

 signals:
  void FaultClicked();

 private:
  // The edit history's note and the progress of cells going out.
  void AddEditLabels(QHBoxLayout* row);
  QLabel* AddCounter(const QString& name, const QString& tooltip);
  void ShowLook(QLabel* label, const StatusLook& look);
  void ShowFramesPerSecond();

  QLabel* link_state_;
  QLabel* live_tune_;
  QLabel* frames_per_second_;
  RecordingIndicator* datalog_;
  ElidingLabel* map_in_use_;
  ElidingLabel* fault_;
  ElidingLabel* startup_;
  ElidingLabel* edit_note_;
  QLabel* sending_;
  QTimer* edit_note_timer_;
  QWidget* counters_;
  QLabel* watchdog_ = nullptr;
  QLabel* receive_level_ = nullptr;
  QLabel* ticks_ = nullptr;
  QLabel* overflow_ = nullptr;
  QLabel* chunk_ = nullptr;
  QLabel* port_ = nullptr;
  int frames_ = 0;
  QElapsedTimer frames_clock_;
  QElapsedTimer counters_clock_;
};

}  // namespace vela
