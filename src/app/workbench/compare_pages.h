// The comparison on the pages: each map page's grid and graph in its view (current values, the
// other side's, the difference) with the differing cells marked, its compare bar, and the count
// of differing cells or set-up bytes on the compensation and set-up pages. Ctrl-Q cycles the
// view of the map page in front, Ctrl-Shift-Q opens the chooser. While a map page shows another
// view than the current values, a key that would change values does nothing and says why.
#pragma once

#include <QKeyEvent>
#include <QLabel>
#include <QObject>
#include <QTabWidget>
#include <array>
#include <vector>

#include "app/pages/map_pages.h"
#include "app/sessions/compare_session.h"
#include "app/workbench/compare_bar.h"
#include "editors/mapgrid/key_routing.h"

namespace vela {

class SmallMapGrid;

class ComparePages : public QObject {
  Q_OBJECT

 public:
  ComparePages(CompareSession& session, MapPages& maps, QTabWidget* tabs, QWidget* window);

  // The window's key `event`, routed as `action` with page `tab` in front: true when the
  // comparison took it (its chords, or a value key refused in another view).
  bool HandleKey(KeyAction action, const QKeyEvent& event, int tab);
  // Ctrl-Shift-Q: the chooser, opened over the window; its choice acts when it is taken.
  void OpenChooser();
  CompareBar* bar(int page) const { return bars_[static_cast<std::size_t>(page)]; }

 signals:
  void Note(const QString& text);

 private:
  void AddCountLabels(QTabWidget* tabs);
  // The views, marks, captions and counts of every page from the session.
  void Show();
  void ShowMapPage(int page);
  // The compensation tables' rows that differ, framed as the maps' cells are.
  void MarkCompensationGrids();
  void CycleView(int tab);
  void Take(int page, bool whole_map);
  void Send(int page);

  CompareSession& session_;
  MapPages& maps_;
  QWidget* window_;
  std::array<CompareBar*, MapPages::kPages> bars_{};
  QLabel* compensation_count_ = nullptr;
  std::vector<SmallMapGrid*> compensation_grids_;
  std::vector<QLabel*> setup_counts_;
};

}  // namespace vela
