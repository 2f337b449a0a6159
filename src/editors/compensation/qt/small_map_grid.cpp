#include "editors/compensation/qt/small_map_grid.h"

#include <QHeaderView>
#include <QKeyEvent>
#include <algorithm>

#include "editors/mapgrid/map_display.h"
#include "editors/mapgrid/qt/map_grid_table.h"
#include "editors/mapgrid/qt/map_key_press.h"

namespace vela {

// Row 0 is the heading, rows 1.. the model's rows; column 0 the labels, column 1 the values.
class SmallGridTable : public QAbstractTableModel {
 public:
  SmallGridTable(SmallMapGrid& grid, QString corner, QString heading)
      : QAbstractTableModel(&grid), grid_(grid), corner_(corner), heading_(heading) {}

  int rowCount(const QModelIndex& parent = {}) const override {
    return parent.isValid() ? 0 : grid_.Model().Rows() + 1;
  }
  int columnCount(const QModelIndex& parent = {}) const override {
    return parent.isValid() ? 0 : 2;
  }

  QVariant data(const QModelIndex& index, int role) const override {
    if (!index.isValid()) return {};
    const int row = index.row() - 1;
    const bool value = row >= 0 && index.column() == 1;
    switch (role) {
      case Qt::DisplayRole:
      case Qt::EditRole:
        if (row < 0) return index.column() == 0 ? corner_ : heading_;
        return index.column() == 0 ? QString::fromStdString(grid_.Model().RowLabel(row))
                                   : QString::fromStdString(grid_.Model().Text(row));
      case Qt::BackgroundRole:
        return value ? CellColour(Share(row)) : HeaderColour();
      case Qt::TextAlignmentRole:
        return int(value ? Qt::AlignCenter : Qt::AlignLeft | Qt::AlignVCenter);
      case Qt::ToolTipRole:
        return value ? QStringLiteral("Image position %1").arg(grid_.Model().Position(row))
                     : QVariant();
      default:
        return {};
    }
  }

  Qt::ItemFlags flags(const QModelIndex& index) const override {
    if (index.row() >= 1 && index.column() == 1) {
      return Qt::ItemIsEnabled | Qt::ItemIsSelectable | Qt::ItemIsEditable;
    }
    return Qt::ItemIsEnabled;
  }

  // A typed value is the program's to judge; the cell shows what the model holds.
  bool setData(const QModelIndex& index, const QVariant& value, int role) override {
    if (role != Qt::EditRole || index.row() < 1) return false;
    emit grid_.TextTyped(index.row() - 1, value.toString());
    return false;
  }

  void Refresh() { emit dataChanged(index(0, 0), index(rowCount() - 1, 1)); }

 private:
  // Where a row's byte lies between the table's smallest and largest.
  double Share(int row) const {
    const SmallGridModel& model = grid_.Model();
    int low = model.Raw(0);
    int high = low;
    for (int r = 0; r < model.Rows(); ++r) {
      low = std::min(low, model.Raw(r));
      high = std::max(high, model.Raw(r));
    }
    return RangeFraction({low, high}, model.Raw(row));
  }

  SmallMapGrid& grid_;
  QString corner_;
  QString heading_;
};

SmallMapGrid::SmallMapGrid(std::vector<std::string> row_labels, std::vector<int> positions,
                           const QString& corner, const QString& heading, QWidget* parent)
    : QTableView(parent),
      model_(std::move(row_labels), std::move(positions)),
      table_(new SmallGridTable(*this, corner, heading)) {
  setModel(table_);
  horizontalHeader()->hide();
  verticalHeader()->hide();
  horizontalHeader()->setStretchLastSection(true);
  verticalHeader()->setSectionResizeMode(QHeaderView::Fixed);
  verticalHeader()->setDefaultSectionSize(fontMetrics().height() + 6);
  setSelectionMode(QAbstractItemView::ContiguousSelection);
  setEditTriggers(QAbstractItemView::DoubleClicked | QAbstractItemView::EditKeyPressed |
                  QAbstractItemView::AnyKeyPressed);
  setTabKeyNavigation(false);
  setVerticalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
  setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
  setWordWrap(true);
  setColumnWidth(0, fontMetrics().horizontalAdvance(QStringLiteral(" De-activate Over ")) + 8);
  if (heading.contains('\n')) setRowHeight(0, 2 * fontMetrics().height() + 6);
  model_.SetChangedHandler(
      [this](const std::vector<SmallGridChange>& changes) { emit CellsChanged(changes); });
  PushCurrent();
}

SmallMapGrid::~SmallMapGrid() { model_.SetChangedHandler(nullptr); }

void SmallMapGrid::Refresh() {
  table_->Refresh();
  viewport()->update();
}

void SmallMapGrid::SetCurrentRow(int row) {
  model_.Select(row, row, row);
  PushCurrent();
}

QSize SmallMapGrid::sizeHint() const {
  int height = 2 * frameWidth();
  for (int row = 0; row < table_->rowCount(); ++row) height += rowHeight(row);
  const int width = columnWidth(0) +
                    fontMetrics().horizontalAdvance(QStringLiteral(" Compensation ")) +
                    2 * frameWidth() + 8;
  return {width, height};
}

void SmallMapGrid::keyPressEvent(QKeyEvent* event) {
  if (state() == QAbstractItemView::EditingState) {
    QTableView::keyPressEvent(event);
    return;
  }
  PullSelection();
  if (model_.HandleKey(MapKeyPressOf(*event))) {
    event->accept();
    PushCurrent();
    Refresh();
    return;
  }
  // A number typed onto a value cell starts editing it with that character; other text is not
  // the grid's.
  const QString text = event->text();
  if (!text.isEmpty() && text.at(0).isPrint() &&
      !QStringLiteral("0123456789-.,").contains(text.at(0))) {
    event->ignore();
    return;
  }
  QTableView::keyPressEvent(event);
}

void SmallMapGrid::currentChanged(const QModelIndex& current, const QModelIndex& previous) {
  QTableView::currentChanged(current, previous);
  if (!pushing_) PullSelection();
}

void SmallMapGrid::PullSelection() {
  const QModelIndex current = currentIndex();
  int cursor = current.isValid() ? current.row() - 1 : model_.Current();
  int first = cursor;
  int last = cursor;
  bool any = false;
  for (const QModelIndex& index : selectionModel()->selectedIndexes()) {
    if (index.row() < 1 || index.column() != 1) continue;
    const int row = index.row() - 1;
    first = any ? std::min(first, row) : row;
    last = any ? std::max(last, row) : row;
    any = true;
  }
  if (cursor < 0) cursor = first;
  model_.Select(first, last, cursor);
}

void SmallMapGrid::PushCurrent() {
  pushing_ = true;
  const QModelIndex index = table_->index(model_.Current() + 1, 1);
  if (model_.SelectionFirst() == model_.SelectionLast()) {
    selectionModel()->setCurrentIndex(index, QItemSelectionModel::ClearAndSelect);
  } else {
    selectionModel()->setCurrentIndex(index, QItemSelectionModel::NoUpdate);
  }
  pushing_ = false;
}

}  // namespace vela

#include "moc_small_map_grid.cpp"
