// "Align Second Log": where the second log is laid on the first's time axis: a marker of the
// second on a marker of the first, or a chosen time of the second at a chosen time of the first
// (0 and 0: both from their starts). It also takes the second log away ("Remove Second Log").
#pragma once

#include <QComboBox>
#include <QDialog>
#include <QDoubleSpinBox>
#include <QLabel>
#include <optional>
#include <string>

#include "datalog/datalog_log.h"
#include "datalog/review/two_logs.h"

namespace vela {

class SecondLogDialog : public QDialog {
  Q_OBJECT

 public:
  // What exec() returns when the tuner removes the second log.
  static constexpr int kRemoved = 2;

  // `second_path` names the second log in the title.
  SecondLogDialog(const DatalogLog& first, const DatalogLog& second, const std::string& second_path,
                  const review::LogAlignment& alignment, QWidget* parent = nullptr);

  // The alignment chosen; nullopt when a marker is missing.
  std::optional<review::LogAlignment> Alignment() const;

 private:
  void Update();

  const DatalogLog& first_;
  const DatalogLog& second_;
  QComboBox* way_ = nullptr;
  QComboBox* first_marker_ = nullptr;
  QComboBox* second_marker_ = nullptr;
  QDoubleSpinBox* first_time_ = nullptr;
  QDoubleSpinBox* second_time_ = nullptr;
  QLabel* result_ = nullptr;
};

}  // namespace vela
