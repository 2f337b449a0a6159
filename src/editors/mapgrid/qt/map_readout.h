// The live read-out grid beside a map (`FuelMap1A`, `FuelMap2A`, `IgnMapA`): one row per live
// quantity, its label and its latest value. The receive handlers call the setters.
#pragma once

#include <QString>
#include <QTableWidget>
#include <array>

namespace vela {

enum class Readout { kRpm, kMap, kTps, kMs, kIgn, kWat, kAir, kBatt, kAfr };

inline constexpr std::array<const char*, 9> kReadoutLabels = {"RPM", "MAP", "TPS",  "Ms", "Ign",
                                                              "Wat", "Air", "Batt", "AFR"};

class MapReadout : public QTableWidget {
  Q_OBJECT

 public:
  explicit MapReadout(QWidget* parent = nullptr);

  void SetRpm(double rpm);           // whole RPM
  void SetMap(double kpa);           // manifold pressure, kPa with one decimal
  void SetTps(double percent);       // throttle, % with one decimal
  void SetMs(double milliseconds);   // injector time, three decimals
  void SetIgn(double degrees);       // advance, one decimal
  void SetWat(const QString& text);  // temperature text as the sensor table gives it
  void SetAir(const QString& text);
  void SetBatt(double volts);  // two decimals
  void SetAfr(double afr);     // one decimal

  // The decimal separator of the computer ('.' or ',').
  void SetDecimalSeparator(QChar separator) { separator_ = separator; }
  void SetValue(Readout readout, const QString& text);
  QString Value(Readout readout) const;

 private:
  void SetNumber(Readout readout, double value, int decimals);

  QChar separator_ = QLatin1Char('.');
};

}  // namespace vela
