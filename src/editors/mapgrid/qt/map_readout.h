// The live read-out grid beside a map (`FuelMap1A`, `FuelMap2A`, `IgnMapA`): one row per live
// quantity, its label and its latest value. The receive handlers call the setters. Laid out
// across (Qt::Horizontal) it has one column per quantity, as on the compensation page.
// Accessibility tools read one static text per quantity, named by its label (map_accessible.h),
// and hear of each value that changes.
#pragma once

#include <QString>
#include <QTableWidget>
#include <array>
#include <memory>
#include <vector>

#include "base/qt/accessible_text.h"
#include "link/live/live_data.h"

namespace vela {

enum class Readout { kRpm, kMap, kTps, kMs, kIgn, kWat, kAir, kBatt, kAfr };

inline constexpr std::array<const char*, 9> kReadoutLabels = {"RPM", "MAP", "TPS",  "Ms", "Ign",
                                                              "Wat", "Air", "Batt", "AFR"};

// The read-out's values that are texts rather than numbers, made by the page that shows it.
struct ReadoutTexts {
  QString water;
  QString air;
  QString afr;
};

class MapReadout : public QTableWidget {
  Q_OBJECT

 public:
  explicit MapReadout(QWidget* parent = nullptr, Qt::Orientation orientation = Qt::Vertical);

  void SetRpm(double rpm);           // whole RPM
  void SetMap(double kpa);           // manifold pressure, kPa with one decimal
  void SetTps(double percent);       // throttle, % with one decimal
  void SetMs(double milliseconds);   // injector time, three decimals
  void SetIgn(double degrees);       // advance, one decimal
  void SetWat(const QString& text);  // temperature text as the sensor table gives it
  void SetAir(const QString& text);
  void SetBatt(double volts);  // two decimals
  // Every quantity from the live data and `texts`; while the values are not live (the ECU is
  // not connected) every value reads "--" in grey, so no stale number passes for a live one.
  void Show(const LiveData& live, const ReadoutTexts& texts, bool live_values = true);

  // The decimal separator of the computer ('.' or ',').
  void SetDecimalSeparator(QChar separator) { separator_ = separator; }
  void SetValue(Readout readout, const QString& text);
  QString Value(Readout readout) const;
  // Where a quantity's value stands, in the viewport's coordinates.
  QRect ValueRect(Readout readout) const;

 private:
  void SetNumber(Readout readout, double value, int decimals);
  QTableWidgetItem* ValueItem(Readout readout) const;

  QChar separator_ = QLatin1Char('.');
  bool across_;
  bool greyed_ = false;
  std::vector<std::unique_ptr<ValueAnnouncer>> announcers_;  // one per quantity
};

}  // namespace vela
