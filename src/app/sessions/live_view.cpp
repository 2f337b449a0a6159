#include "app/sessions/live_view.h"

#include "app/sessions/link_session.h"
#include "editors/map_file.h"
#include "program/afr_display.h"

namespace vela {

double ShownAfr(double lambda, int afr_mode) {
  return AfrShownValue(lambda, afr_mode).value_or(0.0);
}

LiveView::LiveView(LinkSession& link, const ProgramSettings& settings, QObject* parent)
    : QObject(parent), link_(link), settings_(settings) {
  connect(&link_, &LinkSession::FrameTaken, this, [this] {
    smoothing_.Add(link_.live());
    emit Updated();
  });
  connect(&link_, &LinkSession::DisplaysReset, this, [this] { smoothing_.Reset(); });
}

LiveData LiveView::Shown() const {
  const SmoothingChoice choice{settings_.rpm_smoothing != 0, settings_.map_smoothing != 0,
                               settings_.afr_smoothing != 0};
  const int mode = settings_.afr_display_mode;
  return smoothing_.Apply(link_.live(), choice,
                          [mode](double lambda) { return ShownAfr(lambda, mode); });
}

LiveLoad LiveView::Load() const {
  const LiveData shown = Shown();
  return {shown.engine_rpm, shown.map_kpa, shown.tps_percent};
}

bool LiveView::Live() const { return link_.state().CaptionSaysConnected(); }

}  // namespace vela

#include "moc_live_view.cpp"
