// The item model through which a QTableView shows a MapGridModel: the same 12 rows and columns,
// the header row and label column drawn as fixed cells, value cells coloured by value, and above
// them the load axis in full.
#pragma once

#include <QAbstractTableModel>
#include <QColor>
#include <QFont>
#include <QPainter>
#include <QStaticText>
#include <QString>
#include <QVector>

#include "editors/mapgrid/cell_overlay.h"
#include "editors/mapgrid/map_display.h"
#include "editors/mapgrid/map_grid_model.h"

namespace vela {

// The colour of a value share 0..1 of the map's range (blue, green, red), paled for cell text.
QColor CellColour(double fraction);
QColor HeaderColour();

// The frame an overlay's mark puts inside the edges of the cell at `index` (kCellMarkRole).
void PaintCellMark(QPainter& painter, const QRect& cell, const QModelIndex& index);

class MapGridTable : public QAbstractTableModel {
  Q_OBJECT

 public:
  // A cell's text laid out in its font (a QStaticText), for drawing without laying it out again.
  static constexpr int kLaidOutTextRole = Qt::UserRole + 1;
  // The colour of a cell's mark (an overlay's frame), invalid for none.
  static constexpr int kCellMarkRole = Qt::UserRole + 2;

  explicit MapGridTable(MapGridModel& grid, QObject* parent = nullptr);

  int rowCount(const QModelIndex& parent = {}) const override;
  int columnCount(const QModelIndex& parent = {}) const override;
  QVariant data(const QModelIndex& index, int role) const override;
  Qt::ItemFlags flags(const QModelIndex& index) const override;
  // The column header shows the whole load axis: the unit over the label column, then the load
  // of every load site (row 0 keeps its own texts, which hide the last three loads).
  QVariant headerData(int section, Qt::Orientation orientation, int role) const override;

  // After the grid changed: every cell again, or the whole model when the columns changed.
  void Refresh();
  // The text size of the cells in points; 0 takes the grid's fontsize setting.
  void SetPointSize(int points);

  // What the cells show over their own values (a comparison); an empty overlay shows the values.
  void SetOverlay(GridOverlay overlay);
  const GridOverlay& Overlay() const { return compare_overlay_; }
  // A log's overlay, shown under the one above (cell_overlay.h, Layered).
  void SetLogOverlay(GridOverlay overlay);
  const GridOverlay& LogOverlay() const { return log_overlay_; }

 private:
  // A cell's text, ground and mark as the overlay has them, or as the grid has them.
  QString TextAt(int row, int column) const;
  std::optional<QColor> OverlayGround(int row, int column, const UnitsRange& range) const;
  QVariant MarkAt(int row, int column) const;
  // The overlay's words for a cell (its colour's meaning), for a screen reader.
  QVariant DescriptionAt(int row, int column) const;
  QColor Background(int row, int column, const UnitsRange& range) const;
  QVariant ToolTip(int row, int column) const;
  int MarkerIndex(int column) const;  // 0..2 for a header marker cell, else -1
  // Works out every cell's text and colour and the two fonts.
  void Cache();

  MapGridModel& grid_;
  int shown_columns_;
  int point_size_ = 0;
  // What the cells show, worked out on every Refresh (a change of the grid) rather than each
  // time a cell is drawn: the live point redraws a row and a column of cells ten times a second.
  QVector<QString> texts_;
  QVector<QStaticText> laid_out_;
  QVector<QColor> backgrounds_;
  QFont value_font_;
  QFont label_font_;
  GridOverlay compare_overlay_;
  GridOverlay log_overlay_;
  GridOverlay overlay_;  // the two layered: what the cells show
};

}  // namespace vela
