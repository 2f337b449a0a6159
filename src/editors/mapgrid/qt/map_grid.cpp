#include "editors/mapgrid/qt/map_grid.h"

#include <QHeaderView>
#include <QKeyEvent>
#include <QPainter>
#include <QResizeEvent>
#include <QStaticText>
#include <QStyledItemDelegate>
#include <algorithm>
#include <cmath>

#include "calibration/calibration_image.h"
#include "editors/mapgrid/grid_setup.h"
#include "editors/mapgrid/qt/map_grid_table.h"
#include "editors/mapgrid/qt/map_key_press.h"

namespace vela {

namespace {

constexpr int kUnitsPerPixel = 15;  // display units (1/1440 inch) per pixel at 96 dpi
constexpr int kSmallestPoints = 6;

// The largest size up to `points` at which the widest cell text fits `width` pixels.
int FittingPointSize(QFont font, int points, int width) {
  for (; points > kSmallestPoints; --points) {
    font.setPointSize(points);
    font.setBold(true);
    if (QFontMetrics(font).horizontalAdvance(QStringLiteral("00.000")) + 10 <= width) break;
  }
  return points;
}

int DefaultLoadSites(MapKind kind) {
  return kind == MapKind::kFuel ? kDefaultFuelLoadSites : kDefaultIgnLoadSites;
}

}  // namespace

// Draws the live operating point as a cross over the grid's viewport, exactly where the grid's
// cross shape says: the shape is what the repaint rule counts on.
class GridMarkerOverlay : public QWidget {
 public:
  explicit GridMarkerOverlay(MapGrid* grid) : QWidget(grid->viewport()), grid_(grid) {
    setAttribute(Qt::WA_TransparentForMouseEvents);
    setAttribute(Qt::WA_NoSystemBackground);
  }

 protected:
  void paintEvent(QPaintEvent*) override {
    const std::optional<CrossShape> cross = grid_->Cross();
    if (!cross) return;
    QPainter painter(this);
    // The lines as filled bands: an antialiased stroke across the whole grid costs many times
    // more, and they are straight on whole pixels anyway.
    const QColor ink(20, 20, 20, 200);
    for (const PixelRect& line : {cross->across, cross->down}) {
      painter.fillRect(QRect(line.x, line.y, line.width, line.height), ink);
    }
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(QPen(ink, 2));
    painter.setBrush(Qt::NoBrush);
    painter.drawEllipse(QPointF(cross->CentreX(), cross->CentreY()), 6.0, 6.0);
  }

 private:
  MapGrid* grid_;
};

// Marks the cells that wait to go to the ECU with a small dark triangle in the top-left corner:
// the cell keeps its value colour and text, and the mark goes as the cell goes out.
class WaitingCellsOverlay : public QWidget {
 public:
  explicit WaitingCellsOverlay(MapGrid* grid) : QWidget(grid->viewport()), grid_(grid) {
    setAttribute(Qt::WA_TransparentForMouseEvents);
    setAttribute(Qt::WA_NoSystemBackground);
  }

 protected:
  void paintEvent(QPaintEvent*) override {
    if (grid_->WaitingCells().empty()) return;
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(QPen(Qt::white, 1));
    painter.setBrush(QColor(25, 25, 90));
    for (const MapCell& cell : grid_->WaitingCells()) {
      const QRect r = grid_->visualRect(grid_->model()->index(cell.row, cell.column));
      if (!r.isValid()) continue;
      const int side = std::clamp(r.height() / 2, 6, 12);
      const QPointF corner(r.left() + 1.5, r.top() + 1.5);
      painter.drawPolygon(
          QPolygonF({corner, corner + QPointF(side, 0), corner + QPointF(0, side)}));
    }
  }

 private:
  MapGrid* grid_;
};

// Paints each cell as its ground colour and its text, laid out once when the grid changed (the
// live point redraws a row and a column of cells ten times a second, and laying out their text
// again each time would cost more than all the rest). Selected cells keep their value colour,
// darkened and framed, so that the map's shape stays readable under the cursor and the selection.
class CellDelegate : public QStyledItemDelegate {
 public:
  using QStyledItemDelegate::QStyledItemDelegate;

  void paint(QPainter* painter, const QStyleOptionViewItem& option,
             const QModelIndex& index) const override {
    const QRect& r = option.rect;
    painter->fillRect(r, index.data(Qt::BackgroundRole).value<QColor>());
    const QVariant text = index.data(MapGridTable::kLaidOutTextRole);
    if (text.isValid()) {
      const auto laid_out = text.value<QStaticText>();
      const QSizeF size = laid_out.size();
      painter->setFont(index.data(Qt::FontRole).value<QFont>());
      painter->setPen(Qt::black);
      painter->drawStaticText(QPointF(r.x() + (r.width() - size.width()) / 2.0,
                                      r.y() + (r.height() - size.height()) / 2.0),
                              laid_out);
    }
    PaintCellMark(*painter, r, index);
    if (!option.state.testFlag(QStyle::State_Selected)) return;
    painter->save();
    painter->fillRect(r, QColor(0, 0, 0, 45));
    painter->setPen(QPen(QColor(20, 20, 20), 2));
    painter->drawRect(r.adjusted(1, 1, -1, -1));
    painter->restore();
  }
};

MapGrid::MapGrid(MapKind kind, QWidget* parent)
    : QTableView(parent),
      model_(kind, DefaultLoadSites(kind)),
      table_(new MapGridTable(model_, this)),
      overlay_(new GridMarkerOverlay(this)),
      waiting_overlay_(new WaitingCellsOverlay(this)) {
  setModel(table_);
  setItemDelegate(new CellDelegate(this));
  horizontalHeader()->setSectionResizeMode(QHeaderView::Fixed);
  horizontalHeader()->setHighlightSections(false);
  horizontalHeader()->setSectionsClickable(false);
  verticalHeader()->hide();
  setSelectionMode(QAbstractItemView::ContiguousSelection);
  setSelectionBehavior(QAbstractItemView::SelectItems);
  setEditTriggers(QAbstractItemView::NoEditTriggers);
  setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
  setTabKeyNavigation(false);
  setWordWrap(false);
  model_.SetCellsChangedHandler(
      [this](const std::vector<MapCell>& cells) { OnModelCellsChanged(cells); });
  ApplyLook();
  PushCurrent();
}

MapGrid::~MapGrid() { model_.SetCellsChangedHandler(nullptr); }

void MapGrid::Refresh() {
  const bool reshaped = table_->columnCount() != model_.Columns();
  table_->Refresh();
  if (reshaped) {
    ApplyGeometry();
    PushCurrent();
  }
  PlaceCross(true);
}

void MapGrid::SetOverlay(GridOverlay overlay) { table_->SetOverlay(std::move(overlay)); }

const GridOverlay& MapGrid::Overlay() const { return table_->Overlay(); }

void MapGrid::SetLogOverlay(GridOverlay overlay) { table_->SetLogOverlay(std::move(overlay)); }

const GridOverlay& MapGrid::LogOverlay() const { return table_->LogOverlay(); }

void MapGrid::SetUp(const QString& title, int load_sites) {
  SetUpMapGrid(model_, title.toStdString(), load_sites);
  Refresh();
}

void MapGrid::LoadValues(const MapValues& values) {
  model_.Load(values);
  Refresh();
}

void MapGrid::SetSettings(const MapGridSettings& settings) {
  model_.SetSettings(settings);
  ApplyLook();
  Refresh();
  ApplyGeometry();
}

QString MapGrid::CellText(int row, int column) const {
  return QString::fromStdString(model_.Text(row, column));
}

bool MapGrid::SetCellText(int row, int column, const QString& text) {
  const bool done = model_.SetText(row, column, text.toStdString());
  if (done) Refresh();
  return done;
}

void MapGrid::SetCurrentCell(int row, int column) {
  model_.SetCurrent(row, column);
  PushCurrent();
}

// Only what the cross leaves and what it reaches is drawn again (CrossRepaint), and nothing at
// all while it stays on the same pixels: the live point moves ten times a second.
void MapGrid::SetMarker(std::optional<OperatingPoint> point) {
  // A move of less than two pixels either way is not drawn: it is below what the eye reads on
  // the grid, and sensor noise would otherwise redraw the grid with every refresh.
  if (point && marker_) {
    const QPointF move = ViewportPoint(*point) - ViewportPoint(*marker_);
    if (std::abs(move.x()) < 2.0 && std::abs(move.y()) < 2.0) return;
  }
  marker_ = point;
  PlaceCross();
}

void MapGrid::PlaceCross(bool everywhere) {
  std::optional<CrossShape> cross;
  if (marker_) {
    const QPoint centre = ViewportPoint(*marker_).toPoint();
    const QPoint first = ViewportPoint({1.0, 1.0}).toPoint();
    const QSize area = viewport()->size();
    cross = CrossShapeAt(centre.x(), centre.y(), first.x(), first.y(), area.width(), area.height());
  }
  QRegion dirty;
  for (const PixelRect& r : CrossRepaint(cross_, cross))
    dirty += QRect(r.x, r.y, r.width, r.height);
  cross_ = cross;
  if (everywhere) {
    overlay_->update();
  } else if (!dirty.isEmpty()) {
    overlay_->update(dirty);
  }
}

QPointF MapGrid::ViewportPoint(const OperatingPoint& point) const {
  const auto centre = [](int position, int size) { return position + size / 2.0; };
  const auto along = [&](double place, int count, auto position, auto size) {
    const int first = std::clamp(static_cast<int>(std::floor(place)), 0, count - 1);
    const double share = place - first;
    const double from = centre(position(first), size(first));
    if (share <= 0.0 || first + 1 >= count) return from;
    return from + (centre(position(first + 1), size(first + 1)) - from) * share;
  };
  const double x = along(
      point.column, model_.Columns(), [this](int c) { return columnViewportPosition(c); },
      [this](int c) { return columnWidth(c); });
  const double y = along(
      point.row, model_.Rows(), [this](int r) { return rowViewportPosition(r); },
      [this](int r) { return rowHeight(r); });
  return {x, y};
}

QSize MapGrid::sizeHint() const {
  QFont cell_font = font();
  if (model_.Settings().fontsize > 0) cell_font.setPointSize(model_.Settings().fontsize);
  cell_font.setBold(true);
  const QFontMetrics metrics(cell_font);
  const int site = metrics.horizontalAdvance(QStringLiteral("00.000")) + 10;
  const int label = ReservedWidth(model_.LoadSites()) / kUnitsPerPixel;
  const int frame = 2 * frameWidth();
  return {
      label + site * model_.LoadSites() + frame,
      (metrics.height() + 12) * model_.Rows() + horizontalHeader()->sizeHint().height() + frame};
}

void MapGrid::keyPressEvent(QKeyEvent* event) {
  PullSelection();
  if (!model_.HandleKey(MapKeyPressOf(*event))) {
    if (key_handler_ && key_handler_(*event)) {
      event->accept();
      return;
    }
    event->ignore();
    return;
  }
  event->accept();
  PushCurrent();
  table_->Refresh();
}

void MapGrid::resizeEvent(QResizeEvent* event) {
  QTableView::resizeEvent(event);
  ApplyGeometry();
}

// Scrolling moves the viewport's pixels and its children, the cross among them: the cross goes
// back over the whole viewport and is placed afresh.
void MapGrid::scrollContentsBy(int dx, int dy) {
  QTableView::scrollContentsBy(dx, dy);
  overlay_->setGeometry(viewport()->rect());
  waiting_overlay_->setGeometry(viewport()->rect());
  PlaceCross(true);
}

void MapGrid::currentChanged(const QModelIndex& current, const QModelIndex& previous) {
  QTableView::currentChanged(current, previous);
  if (pushing_) return;
  PullSelection();
  emit CursorMoved(model_.Current().row, model_.Current().column);
}

// A click moves the cursor first and selects afterwards, and a drag changes the selection
// alone: the model takes every change, so that Enter, which the window handles, writes into the
// cells the tuner sees selected.
void MapGrid::selectionChanged(const QItemSelection& selected, const QItemSelection& deselected) {
  QTableView::selectionChanged(selected, deselected);
  if (!pushing_) PullSelection();
}

void MapGrid::OnModelCellsChanged(const std::vector<MapCell>& cells) {
  emit CellsChanged(cells);
  table_->Refresh();
}

void MapGrid::PullSelection() {
  const QModelIndex current = currentIndex();
  MapCell cursor = model_.Current();
  if (current.isValid()) cursor = {current.row(), current.column()};
  std::vector<MapCell> selected;
  for (const QModelIndex& index : selectionModel()->selectedIndexes()) {
    selected.push_back({index.row(), index.column()});
  }
  model_.FollowView(cursor, selected);
}

void MapGrid::PushCurrent() {
  pushing_ = true;
  const MapCell cursor = model_.Current();
  const MapCellRect rect = model_.Selection();
  const QModelIndex index = table_->index(cursor.row, cursor.column);
  if (rect.top == rect.bottom && rect.left == rect.right) {
    selectionModel()->setCurrentIndex(index, QItemSelectionModel::ClearAndSelect);
  } else {
    selectionModel()->setCurrentIndex(index, QItemSelectionModel::NoUpdate);
  }
  pushing_ = false;
  emit CursorMoved(cursor.row, cursor.column);
}

void MapGrid::ApplyGeometry() {
  const int sites = model_.LoadSites();
  const int width = viewport()->width();
  const ColumnWidths widths = ColumnWidthsFor(width * kUnitsPerPixel, sites);
  const int site_pixels = widths.site / kUnitsPerPixel;
  setColumnWidth(0, std::max(width - site_pixels * sites, 0));
  for (int column = 1; column <= sites; ++column) setColumnWidth(column, site_pixels);
  const int points =
      model_.Settings().fontsize > 0 ? model_.Settings().fontsize : font().pointSize();
  table_->SetPointSize(FittingPointSize(font(), points, site_pixels));
  const int rows_shown = std::clamp(model_.Settings().visiblerows, 1, model_.Rows());
  const int row_pixels = std::max(viewport()->height() / rows_shown, fontMetrics().height() + 4);
  for (int row = 0; row < model_.Rows(); ++row) setRowHeight(row, row_pixels);
  model_.SetColWidth0(widths.label);
  overlay_->setGeometry(viewport()->rect());
  overlay_->raise();
  waiting_overlay_->setGeometry(viewport()->rect());
  waiting_overlay_->raise();
  PlaceCross(true);
}

void MapGrid::ShowSelection() {
  pushing_ = true;
  const MapCellRect rect = model_.Selection();
  const MapCell cursor = model_.Current();
  selectionModel()->setCurrentIndex(table_->index(cursor.row, cursor.column),
                                    QItemSelectionModel::NoUpdate);
  selectionModel()->select(
      QItemSelection(table_->index(rect.top, rect.left), table_->index(rect.bottom, rect.right)),
      QItemSelectionModel::ClearAndSelect);
  pushing_ = false;
  scrollTo(table_->index(cursor.row, cursor.column));
  emit CursorMoved(cursor.row, cursor.column);
}

void MapGrid::SetWaitingCells(std::vector<MapCell> cells) {
  if (cells == waiting_cells_) return;
  waiting_cells_ = std::move(cells);
  waiting_overlay_->update();
}

void MapGrid::ApplyLook() {
  const MapGridSettings& settings = model_.Settings();
  QFont grid_font = font();
  if (settings.fontsize > 0) grid_font.setPointSize(settings.fontsize);
  setFont(grid_font);
  QPalette colours = palette();
  colours.setColor(QPalette::Base, QColor::fromRgb(static_cast<QRgb>(settings.backcolor)));
  setPalette(colours);
}

}  // namespace vela

#include "moc_map_grid.cpp"
