#include "editors/compensation/qt/small_map_grid.h"

#include <QHeaderView>
#include <QItemSelection>
#include <QKeyEvent>
#include <QPainter>
#include <QStyledItemDelegate>
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
      case MapGridTable::kCellMarkRole: {
        const QColor mark = value ? grid_.Mark(row) : QColor();
        return mark.isValid() ? QVariant(mark) : QVariant();
      }
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

// The cells as a table view draws them, with the frame of a compared row's mark over them.
// Selected cells keep their value colour, darkened and framed as on the maps, with the keyboard
// in the grid or in its typed line alike; the page's other tables do not show their cursors.
class MarkingDelegate : public QStyledItemDelegate {
 public:
  explicit MarkingDelegate(SmallMapGrid* grid) : QStyledItemDelegate(grid), grid_(grid) {}

  void paint(QPainter* painter, const QStyleOptionViewItem& option,
             const QModelIndex& index) const override {
    QStyleOptionViewItem plain(option);
    plain.state &= ~(QStyle::State_Selected | QStyle::State_HasFocus);
    QStyledItemDelegate::paint(painter, plain, index);
    PaintCellMark(*painter, option.rect, index);
    if (!option.state.testFlag(QStyle::State_Selected) || !grid_->SelectionShown()) return;
    painter->save();
    painter->fillRect(option.rect, QColor(0, 0, 0, 45));
    painter->setPen(QPen(QColor(20, 20, 20), 2));
    painter->drawRect(option.rect.adjusted(1, 1, -1, -1));
    painter->restore();
  }

 private:
  SmallMapGrid* grid_;
};

SmallMapGrid::SmallMapGrid(std::vector<std::string> row_labels, std::vector<int> positions,
                           const QString& corner, const QString& heading, QWidget* parent)
    : QTableView(parent),
      model_(std::move(row_labels), std::move(positions)),
      table_(new SmallGridTable(*this, corner, heading)) {
  setModel(table_);
  setItemDelegate(new MarkingDelegate(this));
  horizontalHeader()->hide();
  verticalHeader()->hide();
  horizontalHeader()->setStretchLastSection(true);
  verticalHeader()->setSectionResizeMode(QHeaderView::Fixed);
  verticalHeader()->setDefaultSectionSize(fontMetrics().height() + 6);
  setSelectionMode(QAbstractItemView::ContiguousSelection);
  // A digit typed on the grid opens the typed line (the program's); F2 or a double click edits
  // the cell itself.
  setEditTriggers(QAbstractItemView::DoubleClicked | QAbstractItemView::EditKeyPressed);
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
  if (HandleChord(*event)) {
    event->accept();
    return;
  }
  // Other text is not the grid's.
  const QString text = event->text();
  if (!text.isEmpty() && text.at(0).isPrint()) {
    event->ignore();
    return;
  }
  QTableView::keyPressEvent(event);
}

bool SmallMapGrid::HandleChord(const QKeyEvent& event) {
  const QString text = event.text();
  const char typed = text.size() == 1 && text.at(0).unicode() < 128 && text.at(0).isPrint()
                         ? static_cast<char>(text.at(0).unicode())
                         : 0;
  const GridChord chord = GridChordOf(MapKeyPressOf(event), typed);
  switch (chord) {
    case GridChord::kNone:
      return false;
    case GridChord::kExtendUp:
    case GridChord::kExtendDown:
      ShowSelection(ExtendedBy(model_, RowSelectionFollowing(model_, kept_),
                               chord == GridChord::kExtendUp ? -1 : 1));
      return true;
    case GridChord::kSelectAll:
      ShowSelection(WholeTable(model_));
      return true;
    case GridChord::kExtendLeft:  // one column: nothing to extend to
    case GridChord::kExtendRight:
      return true;
    default:
      emit ChordPressed(chord, typed);
      return true;
  }
}

void SmallMapGrid::ShowSelection(const RowSelection& selection) {
  kept_ = selection;
  model_.Select(selection.First(), selection.Last(), selection.active);
  pushing_ = true;
  const QItemSelection rows(table_->index(model_.SelectionFirst() + 1, 1),
                            table_->index(model_.SelectionLast() + 1, 1));
  selectionModel()->setCurrentIndex(table_->index(model_.Current() + 1, 1),
                                    QItemSelectionModel::NoUpdate);
  selectionModel()->select(rows, QItemSelectionModel::ClearAndSelect);
  pushing_ = false;
}

bool SmallMapGrid::SelectionShown() const {
  return hasFocus() || selection_kept_shown_ || model_.SelectionFirst() != model_.SelectionLast();
}

void SmallMapGrid::KeepSelectionShown(bool shown) {
  selection_kept_shown_ = shown;
  viewport()->update();
}

void SmallMapGrid::focusInEvent(QFocusEvent* event) {
  QTableView::focusInEvent(event);
  viewport()->update();
}

void SmallMapGrid::focusOutEvent(QFocusEvent* event) {
  QTableView::focusOutEvent(event);
  viewport()->update();
}

void SmallMapGrid::SetMarks(std::vector<QColor> marks) {
  if (marks == marks_) return;
  marks_ = std::move(marks);
  viewport()->update();
}

QColor SmallMapGrid::Mark(int row) const {
  return row >= 0 && row < static_cast<int>(marks_.size()) ? marks_[static_cast<std::size_t>(row)]
                                                           : QColor();
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
