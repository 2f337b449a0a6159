// The Data Page: the live values a tuner watches, large and with their units. While the ECU is
// not connected every value reads "--" in grey, so no stale number passes for a live one.
#pragma once

#include <QLabel>
#include <QWidget>
#include <vector>

#include "app/widgets/live_value.h"
#include "link/live/live_data.h"
#include "program/live_text.h"

namespace vela {

class DataPage : public QWidget {
  Q_OBJECT

 public:
  explicit DataPage(QWidget* parent = nullptr);

  // Shows `live`; `afr_mode` is the list position of the air-fuel ratio display mode,
  // `live_tuning` the tuner's live tuning switch (Alt-L), `connected` whether the values are live.
  void Show(const LiveData& live, int afr_mode, bool live_tuning, bool connected);
  QWidget* options_area() const { return options_area_; }
  // The value shown by the read-out named `name` ("DataRPM", ...).
  QString Value(const QString& name) const;

 private:
  struct Readout {
    LiveValue* value;
    QLabel* unit;
    LiveQuantity quantity;
  };
  LiveValue* AddReadout(const QString& name, const QString& caption, const QString& unit,
                        LiveQuantity quantity);
  void ShowStatus(const LiveData& live, bool live_tuning, bool connected);

  std::vector<Readout> readouts_;
  QWidget* grid_ = nullptr;
  QWidget* options_area_ = nullptr;
  LiveValue* afr_ = nullptr;
  QLabel* afr_unit_ = nullptr;
  QLabel* status_ = nullptr;
  QLabel* live_tune_ = nullptr;
};

// The air-fuel ratio text for a lambda value in the chosen display mode (`ComboAFRMode`), as
// every AFR read-out shows it (AfrText); `unit` gets the mode's fuel caption.
QString AfrDisplayText(double lambda, int afr_mode, QString* unit = nullptr);

}  // namespace vela
