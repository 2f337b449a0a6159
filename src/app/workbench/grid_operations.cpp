#include "app/workbench/grid_operations.h"

#include <QClipboard>
#include <QGuiApplication>
#include <QKeyEvent>

#include "app/pages/map_page.h"
#include "base/qt/qt_platform.h"
#include "editors/mapgrid/qt/map_key_press.h"

namespace vela {

namespace {

// The character a key typed, when it is a plain one.
char TypedOf(const QKeyEvent& event) {
  const QString text = event.text();
  if (text.size() != 1 || text.at(0).unicode() >= 128 || !text.at(0).isPrint()) return 0;
  return static_cast<char>(text.at(0).unicode());
}

QString Cells(int count) { return QString("%1 %2").arg(count).arg(count == 1 ? "cell" : "cells"); }

const char* ShapeName(ShapeKind kind) {
  switch (kind) {
    case ShapeKind::kInterpolateBoth:
      return "Interpolated both ways";
    case ShapeKind::kInterpolateRows:
      return "Interpolated along the rows";
    case ShapeKind::kInterpolateColumns:
      return "Interpolated along the columns";
    case ShapeKind::kSmooth:
      return "Smoothed";
    case ShapeKind::kFill:
      break;
  }
  return "Filled";
}

EditKind EditKindOf(ShapeKind kind) {
  switch (kind) {
    case ShapeKind::kSmooth:
      return EditKind::kSmoothing;
    case ShapeKind::kFill:
      return EditKind::kFill;
    default:
      return EditKind::kInterpolation;
  }
}

}  // namespace

GridOperations::GridOperations(Parts parts, QObject* parent)
    : QObject(parent), parts_(std::move(parts)) {
  connect(&parts_.editors, &EditorSession::SendProgress, this, &GridOperations::ShowWaitingCells);
}

void GridOperations::Attach(int index, MapPage* page, EditedMap map) {
  if (index < 0 || index >= kGrids) return;
  slots_[index] = {page, map, std::nullopt, page->grid(), page->operation_line(), nullptr};
  ConnectLine(index, page->grid(), page->operation_line());
}

void GridOperations::AttachOwn(int index, MapGrid* grid, OperationLine* line, Finisher finish) {
  if (index < 0 || index >= kGrids) return;
  slots_[index] = {nullptr, EditedMap::kFuel1, std::nullopt, grid, line, std::move(finish)};
  ConnectLine(index, grid, line);
}

void GridOperations::ConnectLine(int index, MapGrid* grid, OperationLine* line) {
  grid->SetKeyHandler([this, index](QKeyEvent& event) { return HandleKey(index, event); });
  connect(line, &OperationLine::TextChanged, this,
          [this, index](const QString& text) { Preview(index, text); });
  connect(line, &OperationLine::Entered, this,
          [this, index](const QString& text) { Enter(index, text); });
  connect(line, &OperationLine::Left, this, [this, index] { LeaveLine(index); });
}

MapGrid* GridOperations::GridOf(int index) const { return slots_[index].grid; }

DutyContext GridOperations::Duty() const {
  const auto& setup = parts_.editors.state().setup;
  return {setup.ignition_divide, setup.fuel_mode == kFuelModeSequential};
}

bool GridOperations::HandleKey(int index, const QKeyEvent& event) {
  const char typed = TypedOf(event);
  return Carry(index, GridChordOf(MapKeyPressOf(event), typed), typed);
}

bool GridOperations::Carry(int index, GridChord chord, char typed) {
  if (index < 0 || index >= kGrids || slots_[index].grid == nullptr) return false;
  switch (chord) {
    case GridChord::kNone:
      return false;
    case GridChord::kExtendUp:
      Extend(index, -1, 0);
      break;
    case GridChord::kExtendDown:
      Extend(index, 1, 0);
      break;
    case GridChord::kExtendLeft:
      Extend(index, 0, -1);
      break;
    case GridChord::kExtendRight:
      Extend(index, 0, 1);
      break;
    case GridChord::kSelectAll:
      Extend(index, 0, 0, true);
      break;
    case GridChord::kOpenLine:
      LineOf(index)->Open(QString(QLatin1Char(typed)));
      break;
    case GridChord::kInterpolateBoth:
      Shape(index, ShapeKind::kInterpolateBoth);
      break;
    case GridChord::kInterpolateRows:
      Shape(index, ShapeKind::kInterpolateRows);
      break;
    case GridChord::kInterpolateColumns:
      Shape(index, ShapeKind::kInterpolateColumns);
      break;
    case GridChord::kSmooth:
      Shape(index, ShapeKind::kSmooth);
      break;
    case GridChord::kFill:
      Shape(index, ShapeKind::kFill);
      break;
    case GridChord::kCopy:
    case GridChord::kCopyWithAxes:
      Copy(index, chord == GridChord::kCopyWithAxes);
      break;
    case GridChord::kPaste:
      Paste(index);
      break;
  }
  return true;
}

void GridOperations::Extend(int index, int rows, int columns, bool whole_map) {
  MapGrid* grid = GridOf(index);
  MapGridModel& model = grid->Model();
  CellSelection selection = SelectionFollowing(model, slots_[index].selection);
  if (whole_map) {
    selection.SelectAll();
  } else {
    selection.ExtendBy(rows, columns);
  }
  slots_[index].selection = selection;
  model.Select(ToMapCellRect(selection.Rect()), selection.Active());
  grid->ShowSelection();
}

void GridOperations::Shape(int index, ShapeKind kind) {
  MapGridModel& model = GridOf(index)->Model();
  double fill_value = 0.0;
  std::string source;
  if (kind == ShapeKind::kFill && slots_[index].finish) {
    emit Note("The live operating point fills map cells only: nothing was filled");
    return;
  }
  if (kind == ShapeKind::kFill) {
    const std::optional<OperatingPoint> point = parts_.live_point();
    if (!point) {
      emit Note("No live operating point: nothing was filled");
      return;
    }
    const MapCell cell = NearestCell(model, point->row, point->column);
    fill_value = model.Value(cell.row, cell.column);
    source = model.RpmLabel(cell.row) + " rpm, " + model.LoadLabel(cell.column) + " " +
             model.LoadUnit() + ": " + model.Text(cell.row, cell.column);
  }
  const BulkChange change = ShapeCells(model, SelectionOf(model), kind, Duty(), fill_value);
  if (!change.changed.empty()) {
    emit Note(
        QString("%1: %2").arg(ShapeName(kind), Cells(static_cast<int>(change.changed.size()))));
  }
  Finish(index, change, EditKindOf(kind), source);
}

void GridOperations::Copy(int index, bool with_axes) {
  const MapGridModel& model = GridOf(index)->Model();
  const CellRect rect = SelectionOf(model);
  const SheetAxes axes = SheetAxesOf(model, rect);
  const std::string text =
      SheetText(SheetBlockOf(model, rect), SystemDecimalSeparator(), with_axes ? &axes : nullptr);
  QGuiApplication::clipboard()->setText(QString::fromStdString(text));
  emit Note(QString("Copied %1%2").arg(Cells(rect.CellCount()), with_axes ? " with the axes" : ""));
}

void GridOperations::Paste(int index) {
  MapGridModel& model = GridOf(index)->Model();
  const SheetAxes map_axes = SheetAxesOf(model, WholeMap(model));
  const SheetPaste paste = ReadSheetPaste(QGuiApplication::clipboard()->text().toStdString(),
                                          SystemDecimalSeparator(), PasteAreaOf(model), &map_axes);
  if (paste.status == PasteStatus::kRefused) {
    parts_.messages.Show(MessageIcon::kExclamation, std::string(kWarningTitle),
                         PasteRefusalLines(paste));
    return;
  }
  if (paste.status == PasteStatus::kTooBig &&
      parts_.messages.Show(MessageIcon::kQuestion, "Paste", PasteTooBigLines(paste),
                           MessageButtons::kOkCancel) != MessageAnswer::kOk) {
    return;
  }
  const BulkChange change = PasteCells(model, paste.cells, Duty());
  const int rows = paste.status == PasteStatus::kTooBig ? paste.kept_rows : paste.block_rows;
  const int columns =
      paste.status == PasteStatus::kTooBig ? paste.kept_columns : paste.block_columns;
  emit Note(QString("Pasted %1 x %2: %3 changed")
                .arg(rows)
                .arg(columns)
                .arg(Cells(static_cast<int>(change.changed.size()))));
  Finish(index, change, EditKind::kPaste,
         std::to_string(rows) + " x " + std::to_string(columns) + " from the clipboard");
}

void GridOperations::Preview(int index, const QString& text) {
  OperationLine* line = LineOf(index);
  const MapGridModel& model = GridOf(index)->Model();
  const char mark = SystemDecimalSeparator();
  const OperationParse parse = ParseCellOperation(text.toStdString(), mark, ValueBoundsOf(model));
  if (!parse.operation) {
    line->ShowPreview(QString::fromStdString(parse.refusal), true);
    return;
  }
  const OperationPreview preview =
      PreviewOperation(model, SelectionOf(model), *parse.operation, Duty());
  line->ShowPreview(QString::fromStdString(OperationSummary(preview, model.Kind(), mark)), false);
}

void GridOperations::Enter(int index, const QString& text) {
  MapGridModel& model = GridOf(index)->Model();
  const OperationParse parse =
      ParseCellOperation(text.toStdString(), SystemDecimalSeparator(), ValueBoundsOf(model));
  if (!parse.operation) {
    // The refusal stays on the line; the tuner corrects the text or leaves with Escape.
    Preview(index, text);
    return;
  }
  LeaveLine(index);
  const BulkChange change = ApplyOperation(model, SelectionOf(model), *parse.operation, Duty());
  emit Note(QString("%1: %2").arg(text.trimmed(), Cells(static_cast<int>(change.changed.size()))));
  Finish(index, change, EditKind::kTypedOperation, text.trimmed().toStdString());
}

void GridOperations::LeaveLine(int index) {
  LineOf(index)->Close();
  GridOf(index)->setFocus(Qt::OtherFocusReason);
}

void GridOperations::Finish(int index, const BulkChange& change, EditKind kind,
                            const std::string& source) {
  MapGrid* grid = GridOf(index);
  if (change.changed.empty()) {
    emit Note("No cell changed");
    return;
  }
  if (slots_[index].finish) {
    slots_[index].finish(change, kind, source);
    grid->Refresh();
    return;
  }
  parts_.editors.CellsBulkEdited(slots_[index].map, grid->Model(), change.changed, kind, source);
  grid->Refresh();
  if (parts_.changed) parts_.changed(index);
  ShowWaitingCells();
}

void GridOperations::ShowWaitingCells() {
  const std::vector<int> waiting = parts_.editors.send_queue().WaitingPositions();
  for (const Slot& slot : slots_) {
    if (slot.page == nullptr) continue;
    MapGrid* grid = slot.page->grid();
    grid->SetWaitingCells(waiting.empty()
                              ? std::vector<MapCell>{}
                              : WaitingCellsOf(grid->Model(), MapStartOf(slot.map), waiting));
  }
}

}  // namespace vela

#include "moc_grid_operations.cpp"
