// The live values as the window shows them: the link's latest values with the smoothing the
// tuner chose applied, and whether they are live at all. Every new frame feeds the filters; the
// read-outs and the live point on the maps read the shown set when they redraw.
#pragma once

#include <QObject>

#include "base/program_settings.h"
#include "editors/mapgrid/map_display.h"
#include "link/live/live_data.h"
#include "link/live/live_smoothing.h"

namespace vela {

class LinkSession;

// The air-fuel value of a lambda reading in the display mode the tuner chose (0 with no reading
// or the display off).
double ShownAfr(double lambda, int afr_mode);

class LiveView : public QObject {
  Q_OBJECT

 public:
  LiveView(LinkSession& link, const ProgramSettings& settings, QObject* parent = nullptr);

  // The live data set with the chosen smoothing applied.
  LiveData Shown() const;
  // The engine speed and load of the shown set, for the live point on the maps.
  LiveLoad Load() const;
  // True while the ECU is connected: the values are live.
  bool Live() const;

 signals:
  // A new frame arrived (the filters have taken it).
  void Updated();

 private:
  LinkSession& link_;
  const ProgramSettings& settings_;
  LiveSmoothing smoothing_;
};

}  // namespace vela
