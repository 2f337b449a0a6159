// The setup error list (`SetupErrorList`) under the tabs: every problem the last calibration was
// found with, all of it in view at once. Its lines run down and then on in further columns, and
// the list is as tall as its columns need, so no line hides behind a scroll bar.
#pragma once

#include <QListWidget>
#include <string>
#include <vector>

namespace vela {

class SetupErrorList : public QListWidget {
  Q_OBJECT

 public:
  explicit SetupErrorList(QWidget* parent = nullptr);

  // Shows `lines` (hidden when there are none).
  void ShowErrors(const std::vector<std::string>& lines);

 protected:
  void resizeEvent(QResizeEvent* event) override;

 private:
  // As many columns as the width holds, and the height of the longest of them.
  void FitToLines();
};

}  // namespace vela
