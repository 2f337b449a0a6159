// The Data Page: the live values a tuner watches, large and with their units, refreshed from the
// live data set after every dispatched frame.
#pragma once

#include <QLabel>
#include <QWidget>
#include <vector>

#include "link/live_data.h"

namespace vela {

class DataPage : public QWidget {
  Q_OBJECT

 public:
  explicit DataPage(QWidget* parent = nullptr);

  // Shows `live`; `afr_mode` is the list position of the air-fuel ratio display mode.
  void Show(const LiveData& live, int afr_mode);
  QWidget* options_area() const { return options_area_; }

 private:
  struct Readout {
    QLabel* value;
    QLabel* unit;
  };
  QLabel* AddReadout(const QString& name, const QString& caption, const QString& unit);

  std::vector<Readout> readouts_;
  QWidget* grid_ = nullptr;
  QWidget* options_area_ = nullptr;
  QLabel* rpm_ = nullptr;
  QLabel* map_ = nullptr;
  QLabel* tps_ = nullptr;
  QLabel* injection_ = nullptr;
  QLabel* duty_ = nullptr;
  QLabel* ignition_ = nullptr;
  QLabel* water_ = nullptr;
  QLabel* air_ = nullptr;
  QLabel* battery_ = nullptr;
  QLabel* idle_ = nullptr;
  QLabel* throttle_pump_ = nullptr;
  QLabel* afr_ = nullptr;
  QLabel* afr_unit_ = nullptr;
  QLabel* status_ = nullptr;
};

// The air-fuel ratio text for a lambda value in the chosen display mode ("-" with no reading).
QString AfrDisplayText(double lambda, int afr_mode, QString* unit = nullptr);
// The same as a number (0 with no reading): lambda times the mode's stoichiometric ratio.
double AfrDisplayValue(double lambda, int afr_mode);

}  // namespace vela
