#include "editors/mapgrid/qt/map_grid_table.h"

#include <QFont>
#include <cmath>

#include "editors/mapgrid/map_display.h"

namespace vela {

namespace {

constexpr double kPaleShare = 0.35;  // how much white is mixed into a cell colour

}  // namespace

QColor CellColour(double fraction) {
  const Rgb rgb = RampColour(fraction);
  const auto pale = [](int channel) {
    return static_cast<int>(channel + (255 - channel) * kPaleShare);
  };
  return QColor(pale(rgb.red), pale(rgb.green), pale(rgb.blue));
}

QColor HeaderColour() { return QColor(214, 218, 224); }

void PaintCellMark(QPainter& painter, const QRect& cell, const QModelIndex& index) {
  const QVariant mark = index.data(MapGridTable::kCellMarkRole);
  if (!mark.isValid()) return;
  painter.save();
  painter.setPen(QPen(mark.value<QColor>(), 3));
  painter.setBrush(Qt::NoBrush);
  painter.drawRect(QRectF(cell).adjusted(2.5, 2.5, -2.5, -2.5));
  painter.restore();
}

MapGridTable::MapGridTable(MapGridModel& grid, QObject* parent)
    : QAbstractTableModel(parent), grid_(grid), shown_columns_(grid.Columns()) {
  Cache();
}

void MapGridTable::Cache() {
  const int rows = grid_.Rows();
  const int columns = grid_.Columns();
  const UnitsRange range = RangeOf(grid_);
  value_font_ = QFont();
  const int points = point_size_ > 0 ? point_size_ : grid_.Settings().fontsize;
  if (points > 0) value_font_.setPointSize(points);
  label_font_ = value_font_;
  label_font_.setBold(true);
  texts_.resize(rows * columns);
  laid_out_.resize(rows * columns);
  backgrounds_.resize(rows * columns);
  for (int row = 0; row < rows; ++row) {
    for (int column = 0; column < columns; ++column) {
      const int at = row * columns + column;
      texts_[at] = TextAt(row, column);
      laid_out_[at] = QStaticText(texts_[at]);
      laid_out_[at].setTextFormat(Qt::PlainText);
      laid_out_[at].prepare(QTransform(),
                            grid_.IsValueCell(row, column) ? value_font_ : label_font_);
      backgrounds_[at] = Background(row, column, range);
    }
  }
}

int MapGridTable::rowCount(const QModelIndex& parent) const {
  return parent.isValid() ? 0 : grid_.Rows();
}

int MapGridTable::columnCount(const QModelIndex& parent) const {
  return parent.isValid() ? 0 : shown_columns_;
}

int MapGridTable::MarkerIndex(int column) const {
  const int index = column - (grid_.LoadSites() - static_cast<int>(kHeaderMarkers.size())) - 1;
  if (index < 0 || index >= static_cast<int>(kHeaderMarkers.size())) return -1;
  return grid_.Text(0, column) == kHeaderMarkers[index] ? index : -1;
}

QColor MapGridTable::Background(int row, int column, const UnitsRange& range) const {
  if (const std::optional<QColor> ground = OverlayGround(row, column, range)) return *ground;
  if (grid_.IsValueCell(row, column)) {
    return CellColour(RangeFraction(range, grid_.Units(row, column)));
  }
  const int marker = row == 0 ? MarkerIndex(column) : -1;
  if (marker >= 0) return CellColour(kHeaderMarkerPerMille[marker] / 1000.0);
  return HeaderColour();
}

QVariant MapGridTable::ToolTip(int row, int column) const {
  if (row == 0 && column >= 1) {
    QString tip = QStringLiteral("Load site %1: %2 %3")
                      .arg(column)
                      .arg(QString::fromStdString(grid_.LoadLabel(column)),
                           QString::fromStdString(grid_.LoadUnit()));
    if (MarkerIndex(column) >= 0) {
      tip += QStringLiteral("\nColour of %1 per mille of the map's range")
                 .arg(QString::fromStdString(grid_.Text(0, column)));
    }
    return tip;
  }
  if (grid_.IsValueCell(row, column)) {
    return QStringLiteral("%1 rpm, %2 %3")
        .arg(QString::fromStdString(grid_.RpmLabel(row)),
             QString::fromStdString(grid_.LoadLabel(column)),
             QString::fromStdString(grid_.LoadUnit()));
  }
  return {};
}

QVariant MapGridTable::data(const QModelIndex& index, int role) const {
  if (!index.isValid()) return {};
  const int row = index.row();
  const int column = index.column();
  const int at = row * grid_.Columns() + column;
  if (at >= texts_.size()) return {};
  switch (role) {
    case Qt::DisplayRole:
      return texts_[at];
    case kLaidOutTextRole:
      return QVariant::fromValue(laid_out_[at]);
    case Qt::BackgroundRole:
      return backgrounds_[at];
    case Qt::ForegroundRole:
      return QColor(Qt::black);
    case Qt::ToolTipRole:
      return ToolTip(row, column);
    case kCellMarkRole:
      return MarkAt(row, column);
    case Qt::AccessibleDescriptionRole:
      return DescriptionAt(row, column);
    case Qt::TextAlignmentRole:
      return Qt::AlignCenter;
    case Qt::FontRole:
      return grid_.IsValueCell(row, column) ? value_font_ : label_font_;
    default:
      return {};
  }
}

QVariant MapGridTable::headerData(int section, Qt::Orientation orientation, int role) const {
  if (orientation != Qt::Horizontal) return {};
  if (role == Qt::DisplayRole) {
    if (section == 0) {
      return QStringLiteral("RPM \\ %1").arg(QString::fromStdString(grid_.LoadUnit()));
    }
    return QString::fromStdString(grid_.LoadLabel(section));
  }
  if (role == Qt::ToolTipRole && section >= 1) {
    return QStringLiteral("Load site %1: %2 %3")
        .arg(section)
        .arg(QString::fromStdString(grid_.LoadLabel(section)),
             QString::fromStdString(grid_.LoadUnit()));
  }
  if (role == Qt::TextAlignmentRole) return Qt::AlignCenter;
  return {};
}

Qt::ItemFlags MapGridTable::flags(const QModelIndex& index) const {
  if (!index.isValid()) return Qt::NoItemFlags;
  if (grid_.IsValueCell(index.row(), index.column())) {
    return Qt::ItemIsEnabled | Qt::ItemIsSelectable;
  }
  return Qt::ItemIsEnabled;
}

void MapGridTable::SetPointSize(int points) {
  if (points == point_size_) return;
  point_size_ = points;
  Cache();
  emit dataChanged(index(0, 0), index(rowCount() - 1, columnCount() - 1), {Qt::FontRole});
}

void MapGridTable::SetOverlay(GridOverlay overlay) {
  if (overlay == overlay_) return;
  overlay_ = std::move(overlay);
  Refresh();
}

QString MapGridTable::TextAt(int row, int column) const {
  const CellOverlay* look = grid_.IsValueCell(row, column) ? overlay_.At(row, column) : nullptr;
  if (look && look->text) return QString::fromStdString(*look->text);
  return QString::fromStdString(grid_.Text(row, column));
}

std::optional<QColor> MapGridTable::OverlayGround(int row, int column,
                                                  const UnitsRange& range) const {
  const CellOverlay* look = grid_.IsValueCell(row, column) ? overlay_.At(row, column) : nullptr;
  if (!look) return std::nullopt;
  if (look->ground) return QColor(look->ground->red, look->ground->green, look->ground->blue);
  if (!look->value) return std::nullopt;
  const double units = *look->value * UnitsPerDisplayUnit(grid_.Kind());
  return CellColour(RangeFraction(range, static_cast<int>(std::lround(units))));
}

QVariant MapGridTable::MarkAt(int row, int column) const {
  const CellOverlay* look = grid_.IsValueCell(row, column) ? overlay_.At(row, column) : nullptr;
  if (!look || !look->mark) return {};
  return QColor(look->mark->red, look->mark->green, look->mark->blue);
}

QVariant MapGridTable::DescriptionAt(int row, int column) const {
  const CellOverlay* look = grid_.IsValueCell(row, column) ? overlay_.At(row, column) : nullptr;
  if (!look || !look->description) return {};
  return QString::fromStdString(*look->description);
}

void MapGridTable::Refresh() {
  if (shown_columns_ != grid_.Columns()) {
    beginResetModel();
    shown_columns_ = grid_.Columns();
    Cache();
    endResetModel();
    return;
  }
  Cache();
  emit dataChanged(index(0, 0), index(rowCount() - 1, columnCount() - 1));
  emit headerDataChanged(Qt::Horizontal, 0, columnCount() - 1);
}

}  // namespace vela

#include "moc_map_grid_table.cpp"
