// The three map pages (fuel map 1, fuel map 2, the ignition map) bound to the editors and the
// link: grids filled from the editors' state, edits passed on for transmission, live read-outs,
// the cross-hair and the page labels.
#pragma once

#include <QObject>
#include <QTimer>
#include <array>
#include <optional>
#include <vector>

#include "app/pages/map_page.h"
#include "app/workbench/grid_operations.h"
#include "base/platform.h"
#include "editors/mapgrid/qt/cross_hair.h"
#include "link/live/live_data.h"

namespace vela {

class EditorSession;
class LinkSession;
class LiveView;

class MapPages : public QObject {
  Q_OBJECT

 public:
  static constexpr int kPages = 3;  // fuel map 1, fuel map 2, ignition: tabs 0, 1 and 2

  MapPages(EditorSession& editors, LinkSession& link, LiveView& live_view, MessageSink& messages,
           QObject* parent = nullptr);

  // Builds page `index` (0..2) inside `parent`.
  MapPage* BuildPage(int index, QWidget* parent);
  MapPage* page(int index) const { return pages_[index]; }

  // The grid set-up: rows, columns by load sites, titles and header texts, then the values.
  void SetUpGrids();
  // After a calibration filled the editors: grids, map selection, cross-hair sites.
  void ShowEditors();
  // One map's values again after an undo or redo within it: its grid, graph and duty read-out.
  void ShowMapValues(int index);
  // The read-out and the labels of map page `tab` (0..2) from the shown live values, the AFR in
  // display mode `afr_mode`; greyed, with no value, while `connected` is false.
  void ShowLive(const LiveData& live, int afr_mode, bool connected, int tab);
  // `Numerical`: the maps as numbers only, their graphs folded away.
  void SetNumerical(bool numerical);
  bool LiveTuning() const;
  // The tab in front: the cross-hair marks that map.
  void TabShown(int tab);

  void ToggleAllRanges();
  void ToggleLiveTuning();
  void InsertLiveValue(int tab);
  void MovePointerToLoadSite(int tab);
  // The workbench's operations on the grids (selection, typed line, shaping, copy and paste).
  GridOperations& operations() { return *operations_; }

 private:
  void GridEdited(int index, const std::vector<MapCell>& cells);
  void ShowDuty(int index);
  // The graph and the duty read-out after grid `index` changed.
  void ShowEdited(int index);
  // A choice of the fuel map selection: sent to the ECU once the tuner confirms it.
  void MapSelectionChosen(int choice);

  EditorSession& editors_;
  LinkSession& link_;
  LiveView& live_view_;
  MessageSink& messages_;
  std::array<MapPage*, kPages> pages_{};
  CrossHair cross_hair_;
  GridOperations* operations_;
  // The cross-hair follows the live point when the read-outs are redrawn (10 times a second),
  // not with every frame: redrawing 60 times a second costs far more than the eye gains.
  bool live_new_ = false;
  bool all_ranges_ = false;
};

}  // namespace vela
