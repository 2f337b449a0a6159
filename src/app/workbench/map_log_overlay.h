// The log on the map pages: the overlay of the log the datalog page holds (being recorded or
// loaded) on the three map grids, the line over each grid naming the layer and the cursor cell's
// figures, the outline of the cell the datalog chart's cursor A stands in, and the chart's shaded
// stretches for the cells selected on a map (Ctrl-M). Ctrl-H steps through the layers: off, time
// spent, mean AFR, AFR spread, AFR error against the target. While a log is recorded the figures
// follow it once a second, taking only the new records.
#pragma once

#include <QLabel>
#include <QObject>
#include <QTimer>
#include <array>
#include <cstdint>
#include <memory>

#include "app/pages/map_pages.h"
#include "editors/mapgrid/key_routing.h"
#include "tune/log_heat.h"
#include "tune/view/heat_overlay.h"

namespace vela {

class DatalogPage;
class TargetSession;
class EditorSession;

class MapLogOverlay : public QObject {
  Q_OBJECT

 public:
  static constexpr int kFollowMs = 1000;

  MapLogOverlay(EditorSession& editors, MapPages& maps, DatalogPage& datalog,
                const TargetSession& targets, QObject* parent = nullptr);

  // The window's key routed as `action` with page `tab` in front: true when it was the log's.
  bool HandleKey(KeyAction action, int tab);
  HeatLayer Layer() const { return layer_; }
  // The line over page `page`'s grid (hidden while the overlay is off).
  QLabel* line(int page) const { return lines_[static_cast<std::size_t>(page)]; }
  // Takes what the log has now and shows it (the timer does this once a second).
  void Refresh();

 signals:
  void Note(const QString& text);

 private:
  void CycleLayer();
  void MarkCellTimes(int tab);
  void ChartCursorMoved();
  // The figures made anew when the calibration's axes changed or the log is another one.
  void Follow();
  // The timer's step: Follow(), and the pages drawn again only when the figures moved.
  void FollowTick();
  void Restart(bool open);
  void BuildHeats();
  void ShowPage(int page);
  QString LineText(int page) const;
  const LogHeat* HeatOf(int page) const;

  EditorSession& editors_;
  MapPages& maps_;
  DatalogPage& datalog_;
  const TargetSession& targets_;
  HeatLayer layer_ = HeatLayer::kOff;
  TuneAxes fuel_axes_;
  TuneAxes ign_axes_;
  std::unique_ptr<LogHeat> fuel_;
  std::unique_ptr<LogHeat> ign_;
  QString delay_text_;
  HeatSettings settings_;  // the filters and the delay the figures are taken with
  std::array<MapCell, MapPages::kPages> chart_cells_{};  // {0, 0}: none
  std::array<QLabel*, MapPages::kPages> lines_{};
  QTimer follow_;
  std::uint64_t heat_builds_ = 0;  // BuildHeats() so far
};

}  // namespace vela
