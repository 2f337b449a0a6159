// The Data Page: the live values a tuner watches, large and with their units. While the ECU is
// not connected every value reads "--" in grey, so no stale number passes for a live one.
#pragma once

#include <QLabel>
#include <QWidget>
#include <vector>

#include "link/live_data.h"

namespace vela {

// One large read-out value. It draws its own text, so a new value repaints this value alone
// and never lays the page out again: the read-outs change ten times a second.
class ReadoutValue : public QWidget {
  Q_OBJECT

 public:
  explicit ReadoutValue(QWidget* parent = nullptr);
  void SetText(const QString& text);
  void SetGreyed(bool greyed);
  QString text() const { return text_; }
  QSize sizeHint() const override;
  QSize minimumSizeHint() const override { return sizeHint(); }

 protected:
  void paintEvent(QPaintEvent* event) override;

 private:
  QString text_;
  bool greyed_ = false;
};

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
    ReadoutValue* value;
    QLabel* unit;
  };
  ReadoutValue* AddReadout(const QString& name, const QString& caption, const QString& unit);
  void ShowStatus(const LiveData& live, bool live_tuning, bool connected);

  std::vector<Readout> readouts_;
  QWidget* grid_ = nullptr;
  QWidget* options_area_ = nullptr;
  ReadoutValue* rpm_ = nullptr;
  ReadoutValue* map_ = nullptr;
  ReadoutValue* tps_ = nullptr;
  ReadoutValue* injection_ = nullptr;
  ReadoutValue* duty_ = nullptr;
  ReadoutValue* ignition_ = nullptr;
  ReadoutValue* water_ = nullptr;
  ReadoutValue* air_ = nullptr;
  ReadoutValue* battery_ = nullptr;
  ReadoutValue* idle_ = nullptr;
  ReadoutValue* throttle_pump_ = nullptr;
  ReadoutValue* afr_ = nullptr;
  QLabel* afr_unit_ = nullptr;
  QLabel* status_ = nullptr;
  QLabel* live_tune_ = nullptr;
};

// The air-fuel ratio text for a lambda value in the chosen display mode (`ComboAFRMode`), "-"
// with no reading or with the display disabled; `unit` gets the mode's fuel caption.
QString AfrDisplayText(double lambda, int afr_mode, QString* unit = nullptr);

}  // namespace vela
