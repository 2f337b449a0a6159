// The ECU's fault codes on the Data Page: the error-code button (`Command9`), the error grid
// (`OBDGrid`, four rows) with the explanation of the selected row, and the faults seen since the
// program started, with the time each was first seen and how many times it was reported. An ECU
// holding more codes than the four rows is said to, under the grid.
#pragma once

#include <QGroupBox>
#include <QLabel>
#include <QPushButton>
#include <QTableWidget>
#include <functional>

#include "calibration/error_codes.h"

namespace vela {

class FaultMonitor;

class FaultPanel : public QGroupBox {
  Q_OBJECT

 public:
  // `holds_no_codes`: true when the connected ECU's latest live frame says it holds no codes;
  // the button then lists "No Error" without asking.
  FaultPanel(FaultMonitor& monitor, std::function<bool()> holds_no_codes,
             QWidget* parent = nullptr);

  // The error-code button's action.
  void ReadCodes();
  // Brings the faults seen into view.
  void ShowSeen();

  QTableWidget* error_grid() const { return grid_; }
  QTableWidget* seen_table() const { return seen_; }
  QString Explanation() const { return explanation_->text(); }

 private:
  QWidget* BuildCodes();
  QWidget* BuildSeen();
  void SetRow(int row, const QString& text);
  void ClearCodes();
  void ShowCodes(int held, const QList<int>& codes);
  void ShowNoAnswer();
  void ShowExplanation(int row);
  void ShowSeenFaults();

  FaultMonitor& monitor_;
  std::function<bool()> holds_no_codes_;
  ErrorExplanations explanations_;
  QPushButton* button_ = nullptr;
  QTableWidget* grid_ = nullptr;
  QLabel* explanation_ = nullptr;
  QLabel* more_held_ = nullptr;  // says when the ECU holds more codes than the grid lists
  QTableWidget* seen_ = nullptr;
};

}  // namespace vela
