// `CompareChooser` (Ctrl-Shift-Q): what the editors' image is compared with. A short list
// driven by the keyboard: Up and Down (or the first letter) pick, Enter takes, Escape leaves.
// Restore points are compared from their own list.
#pragma once

#include <QDialog>
#include <QListWidget>

namespace vela {

class CompareChooser : public QDialog {
  Q_OBJECT

 public:
  enum class Choice { kEcu, kMapFile, kStop };

  // `ecu_read`: the ECU's calibration has been read; `comparing`: a comparison is on.
  CompareChooser(bool ecu_read, bool comparing, QWidget* parent = nullptr);

  Choice Chosen() const;

 private:
  QListWidget* list_;
};

}  // namespace vela
