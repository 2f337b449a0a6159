// `CompareChooser` (Ctrl-Shift-Q): which two sides are compared. Two short lists driven by the
// keyboard: "Compare" (the first side, shown as the current values: the editors' image, the
// ECU as last read, a map file) and "with" (the other side, or stop comparing). The keyboard
// starts on "with", so the usual comparison of the editors' image is one Enter; Left and Right
// (or Tab) go between the lists, Up and Down (or the first letter) pick, Enter on "Compare"
// goes on to "with", Enter on "with" takes, Escape leaves. Restore points are compared from
// their own list, with the first side chosen here last.
#pragma once

#include <QDialog>
#include <QListWidget>

#include "app/sessions/compare_session.h"

namespace vela {

class CompareChooser : public QDialog {
  Q_OBJECT

 public:
  enum class Choice { kEcu, kMapFile, kStop };

  // `ecu_read`: the ECU's calibration has been read; `comparing`: a comparison is on; `base`:
  // the first side chosen last.
  CompareChooser(bool ecu_read, bool comparing, CompareSession::Source base,
                 QWidget* parent = nullptr);

  CompareSession::Source Base() const;
  Choice Chosen() const;

 protected:
  bool eventFilter(QObject* watched, QEvent* event) override;
  void showEvent(QShowEvent* event) override;

 private:
  QListWidget* bases_;
  QListWidget* list_;
};

}  // namespace vela
