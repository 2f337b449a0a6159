// The "&Compensation" tab: the air, water and battery compensation tables and the throttle pump
// as small map grids edited with the map keys, each beside its curve with the live operating
// point on it (none while a temperature stands for no temperature: "Error", "999", ">120",
// "<-20"), the battery table's bytes beyond its rows as stored, and the live read-out across the
// top. The workbench works on the tables' selected rows: the typed line under each table,
// interpolation by the table's axis, smoothing, copy and paste, each change one journal entry.
#pragma once

#include <QWidget>
#include <array>

#include "app/pages/setup/raw_field_panel.h"
#include "app/pages/setup/setup_page_parts.h"
#include "app/workbench/operation_line.h"
#include "editors/compensation/compensation_tables.h"
#include "editors/compensation/qt/curve_view.h"
#include "editors/compensation/qt/small_map_grid.h"
#include "editors/compensation/small_grid_workbench.h"
#include "editors/mapgrid/qt/map_readout.h"
#include "editors/workbench/edit_journal.h"
#include "link/live/live_data.h"

namespace vela {

class CompensationPage : public QWidget {
  Q_OBJECT

 public:
  explicit CompensationPage(SetupPageParts parts, QWidget* parent = nullptr);

  SmallMapGrid* grid(CompTable table) const { return grids_[static_cast<std::size_t>(table)]; }
  CurveView* curve(CompTable table) const { return curves_[static_cast<std::size_t>(table)]; }
  OperationLine* operation_line(CompTable table) const {
    return lines_[static_cast<std::size_t>(table)];
  }
  // The tables from the editors' state, in the formats the sensor set-up gives them.
  void ShowEditors();
  // The live values, the AFR in display mode `afr_mode`; greyed and without a live mark while
  // `connected` is false.
  void ShowLive(const LiveData& live, int afr_mode, bool connected);

 protected:
  void showEvent(QShowEvent* event) override;

 private:
  QWidget* BuildTable(CompTable table);
  // The battery compensation's bytes beyond its 16 V row, as stored, with the check they count in.
  QWidget* BuildUnshownBattery(QWidget* parent);
  void CellsChanged(CompTable table, const std::vector<SmallGridChange>& changes);
  void TextTyped(CompTable table, int row, const QString& text);
  void ShowCurve(CompTable table);
  void ConnectWorkbench(CompTable table);
  // The workbench on a table's selected rows (see small_grid_workbench.h).
  void CarryChord(CompTable table, GridChord chord, char typed);
  void Shape(CompTable table, bool interpolate);
  void Fill(CompTable table);
  void Copy(CompTable table, bool with_axis);
  void Paste(CompTable table);
  void Preview(CompTable table, const QString& text);
  void EnterLine(CompTable table, const QString& text);
  void LeaveLine(CompTable table);
  // Sends a planned change through the table's change path and journals it as one entry.
  void Finish(CompTable table, const RowChange& change, EditKind kind, const std::string& what);
  // The tables and their curves (ShowEditors without the raw fields).
  void ShowTables();

  SetupPageParts parts_;
  MapReadout* readout_;
  RawFieldPanel* fields_;
  std::array<SmallMapGrid*, 4> grids_{};
  std::array<CurveView*, 4> curves_{};
  std::array<OperationLine*, 4> lines_{};
  LiveData live_;
  int afr_mode_ = 0;
  bool connected_ = false;
};

}  // namespace vela
