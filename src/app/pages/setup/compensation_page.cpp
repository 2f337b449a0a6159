#include "app/pages/setup/compensation_page.h"

#include <QClipboard>
#include <QGridLayout>
#include <QGroupBox>
#include <QGuiApplication>
#include <QHBoxLayout>
#include <QLabel>
#include <QVBoxLayout>

#include "app/pages/setup/setup_widgets.h"
#include "app/sessions/editor_session.h"
#include "app/widgets/live_texts.h"
#include "base/qt/qt_platform.h"
#include "calibration/conversions.h"
#include "editors/setup/setup_marks.h"

namespace vela {

namespace {

// The x of each table's rows (their labels as numbers), and the units of its curve.
struct CurveLook {
  const char* title;
  const char* x_unit;
  const char* y_unit;
};
constexpr CurveLook kLooks[] = {
    {"Air temperature compensation", "\u00B0C air", "%"},
    {"Water temperature compensation", "\u00B0C water", "% added"},
    {"Injector opening time added", "Volts", "ms"},
    {"Throttle pump", "% throttle", ""},
};

constexpr const char* kToolTips[] = {
    "Fuel corrected for intake air temperature, in percent, at each temperature. Map keys change "
    "the selected cells; type a number to enter one.",
    "Fuel added while the engine is cold, in percent of the map's fuel, at each water "
    "temperature.",
    "Milliseconds added to every injection at each battery voltage, to make up for the "
    "injectors opening more slowly on a low supply.",
    "Fuel added when the throttle opens quickly: Increase is the enrichment, Decay how fast it "
    "dies away, Dead Band the throttle movement ignored, De-activate Over the throttle (or "
    "boost) above which the pump stays off."};

}  // namespace

CompensationPage::CompensationPage(SetupPageParts parts, QWidget* parent)
    : QWidget(parent),
      parts_(parts),
      readout_(new MapReadout(this, Qt::Horizontal)),
      fields_(new RawFieldPanel(parts.editors, this)) {
  setObjectName("CompensationPage");
  readout_->setObjectName("CompensationReadout");
  readout_->setAccessibleName("Live values");
  readout_->setFixedHeight(readout_->fontMetrics().height() * 2 + 16);
  readout_->SetDecimalSeparator(QLatin1Char(SystemDecimalSeparator()));
  auto* layout = new QVBoxLayout(this);
  layout->setContentsMargins(0, 0, 0, 0);
  layout->addWidget(readout_);
  auto* tables = new QGridLayout;
  for (int i = 0; i < 4; ++i) tables->addWidget(BuildTable(kCompTables[i]), i / 2, i % 2);
  layout->addLayout(tables, 1);
  // The panel shows its own fields again after an edit.
  connect(fields_, &RawFieldPanel::Edited, this, &CompensationPage::ShowTables);
  ShowEditors();
}

QWidget* CompensationPage::BuildTable(CompTable table) {
  const auto index = static_cast<std::size_t>(table);
  const CompTableLayout layout = LayoutOf(table);
  auto* box = new QWidget(this);
  auto* cell = new QVBoxLayout(box);
  cell->setContentsMargins(0, 0, 0, 0);
  auto* row = new QHBoxLayout;
  cell->addLayout(row, 1);
  auto* grid =
      new SmallMapGrid(layout.row_labels, layout.positions, QString::fromStdString(layout.corner),
                       QString::fromStdString(layout.heading), box);
  grid->setObjectName(QString::fromUtf8(layout.name.data(), layout.name.size()));
  grid->setToolTip(kToolTips[index]);
  grid->Model().SetDecimalSeparator(SystemDecimalSeparator());
  connect(
      grid, &SmallMapGrid::CellsChanged, this,
      [this, table](const std::vector<SmallGridChange>& changes) { CellsChanged(table, changes); });
  connect(grid, &SmallMapGrid::TextTyped, this,
          [this, table](int r, const QString& text) { TextTyped(table, r, text); });
  auto* curve = new CurveView(box);
  curve->setObjectName(grid->objectName() + "Curve");
  curve->SetTitle(QString::fromUtf8(kLooks[index].title));
  curve->SetUnits(QString::fromUtf8(kLooks[index].x_unit), kLooks[index].y_unit);
  row->addWidget(grid, 0, Qt::AlignTop);
  row->addWidget(curve, 1);
  auto* line = new OperationLine(box);
  line->setObjectName(grid->objectName() + "OperationLine");
  cell->addWidget(line);
  if (table == CompTable::kBattMap) cell->addWidget(BuildUnshownBattery(box));
  grids_[index] = grid;
  curves_[index] = curve;
  lines_[index] = line;
  ConnectWorkbench(table);
  return box;
}

void CompensationPage::ConnectWorkbench(CompTable table) {
  const auto index = static_cast<std::size_t>(table);
  connect(grids_[index], &SmallMapGrid::ChordPressed, this,
          [this, table](GridChord chord, char typed) { CarryChord(table, chord, typed); });
  OperationLine* line = lines_[index];
  connect(line, &OperationLine::TextChanged, this,
          [this, table](const QString& text) { Preview(table, text); });
  connect(line, &OperationLine::Entered, this,
          [this, table](const QString& text) { EnterLine(table, text); });
  connect(line, &OperationLine::Left, this, [this, table] { LeaveLine(table); });
}

// One row of five bytes under the battery table and its curve, each captioned by its position.
QWidget* CompensationPage::BuildUnshownBattery(QWidget* parent) {
  const RawGroup group = UnshownBattGroup();
  QGroupBox* box = MakeBox(parent, "UnshownBattComp", QString::fromStdString(group.title));
  const std::vector<RawFieldEditor*> editors = AddRawGroup(
      box, group,
      [](QWidget* owner, const RawField& field, int) {
        return new QLabel(QString::number(field.position), owner);
      },
      static_cast<int>(group.fields.size()));
  for (RawFieldEditor* editor : editors) {
    editor->SetAccessibleName(QString::fromStdString(editor->field().label));
  }
  fields_->Add(editors);
  QLabel* note = MakeInfoNote(box, "UnshownBattNote", kUnshownBattNote);
  auto* grid = static_cast<QGridLayout*>(box->layout());
  grid->addWidget(note, grid->rowCount(), 0, 1, grid->columnCount());
  return box;
}

void CompensationPage::CellsChanged(CompTable table, const std::vector<SmallGridChange>& changes) {
  SmallMapGrid* grid = grids_[static_cast<std::size_t>(table)];
  bool refused = false;
  for (const SmallGridChange& change : changes) {
    refused |= !parts_.editors.compensation_editor().CellChanged(
        table, change.row, change.reported, change.lower_bound, grid->Model().Raw(change.row));
  }
  if (refused) ShowEditors();
  ShowCurve(table);
}

void CompensationPage::TextTyped(CompTable table, int row, const QString& text) {
  const std::optional<int> stored = parts_.editors.compensation_editor().StoredOfText(
      table, row, text.toStdString(), SystemDecimalSeparator());
  SmallMapGrid* grid = grids_[static_cast<std::size_t>(table)];
  if (stored) grid->Model().Enter(row, *stored);
  grid->Refresh();
}

void CompensationPage::ShowEditors() {
  ShowTables();
  fields_->ShowEditors();
}

void CompensationPage::ShowTables() {
  const EditorState& state = parts_.editors.state();
  for (const CompTable table : kCompTables) {
    SmallMapGrid* grid = grids_[static_cast<std::size_t>(table)];
    const std::vector<int> values = StoredValues(table, state.compensation);
    for (int row = 0; row < grid->Model().Rows(); ++row) {
      grid->Model().SetFormat(row, FormatOf(table, row, state.sensors));
      grid->Model().SetRaw(row, values[static_cast<std::size_t>(row)]);
    }
    grid->Refresh();
    ShowCurve(table);
  }
  const bool map_basis = state.sensors.throttle_pump_on_map;
  curves_[3]->SetUnits(map_basis ? "bar boost" : "% throttle", "");
}

void CompensationPage::ShowCurve(CompTable table) {
  const auto index = static_cast<std::size_t>(table);
  const SmallGridModel& model = grids_[index]->Model();
  CurveView* curve = curves_[index];
  if (table != CompTable::kThrottlePump) {
    std::vector<QPointF> points;
    for (int row = 0; row < model.Rows(); ++row) {
      points.emplace_back(std::stod(model.RowLabel(row)), model.Value(row));
    }
    curve->SetPoints(std::move(points));
    return;
  }
  // The throttle pump: the throttle (or boost) range, shaded above " De-activate Over".
  const bool map_basis = parts_.editors.state().sensors.throttle_pump_on_map;
  if (map_basis) {
    curve->SetXRange(-1.0, std::max(1.0, std::ceil(model.Value(kThrottlePumpDeactivateRow))));
  } else {
    curve->SetXRange(0.0, 100.0);
  }
  curve->SetShadeFrom(model.Value(kThrottlePumpDeactivateRow), "pump off");
  curve->SetTitle(QString("Throttle pump: increase %1 %, decay %2 %, dead band %3 %")
                      .arg(QString::fromStdString(model.Text(0)),
                           QString::fromStdString(model.Text(1)),
                           QString::fromStdString(model.Text(2))));
}

void CompensationPage::CarryChord(CompTable table, GridChord chord, char typed) {
  switch (chord) {
    case GridChord::kOpenLine:
      grid(table)->KeepSelectionShown(true);
      lines_[static_cast<std::size_t>(table)]->Open(QString(QLatin1Char(typed)));
      break;
    case GridChord::kInterpolateBoth:
    case GridChord::kInterpolateRows:
    case GridChord::kInterpolateColumns:
      Shape(table, true);
      break;
    case GridChord::kSmooth:
      Shape(table, false);
      break;
    case GridChord::kCopy:
    case GridChord::kCopyWithAxes:
      Copy(table, chord == GridChord::kCopyWithAxes);
      break;
    case GridChord::kPaste:
      Paste(table);
      break;
    case GridChord::kFill:
      Fill(table);
      break;
    default:
      break;
  }
}

void CompensationPage::Shape(CompTable table, bool interpolate) {
  const SmallGridModel& model = grid(table)->Model();
  const int first = model.SelectionFirst();
  const int last = model.SelectionLast();
  if (!RowAxisOf(model, first, last)) {
    parts_.editors.Note("The throttle pump's rows are separate settings: nothing to shape");
    return;
  }
  const RowChange change =
      interpolate ? PlanInterpolation(model, first, last) : PlanSmoothing(model, first, last);
  const std::string rows = "rows " + model.RowLabel(first) + " to " + model.RowLabel(last);
  Finish(table, change, interpolate ? EditKind::kInterpolation : EditKind::kSmoothing,
         (interpolate ? "interpolated " : "smoothed ") + rows);
}

// Ctrl-E: the selected rows take the value at the live point of the table's axis.
void CompensationPage::Fill(CompTable table) {
  const SmallGridModel& model = grid(table)->Model();
  const std::optional<double> live_x = curve(table)->LiveX();
  if (!live_x || !RowAxisOf(model, 0, model.Rows() - 1)) {
    parts_.editors.Note(live_x ? "The throttle pump's rows are separate settings: nothing to fill"
                               : "No live value to fill from");
    return;
  }
  const int first = model.SelectionFirst();
  const int last = model.SelectionLast();
  Finish(table, PlanFill(model, first, last, *live_x), EditKind::kFill,
         "filled rows " + model.RowLabel(first) + " to " + model.RowLabel(last) +
             " from the live point");
}

void CompensationPage::Copy(CompTable table, bool with_axis) {
  const SmallGridModel& model = grid(table)->Model();
  const int first = model.SelectionFirst();
  const int last = model.SelectionLast();
  const SheetBlock block = RowSheetBlock(model, first, last);
  const std::optional<SheetAxes> axis = with_axis ? RowSheetAxes(model, first, last) : std::nullopt;
  QGuiApplication::clipboard()->setText(
      QString::fromStdString(SheetText(block, SystemDecimalSeparator(), axis ? &*axis : nullptr)));
  const char* how = axis ? " with the axis" : (with_axis ? " (these rows have no axis)" : "");
  parts_.editors.Note(
      QString("Copied %1 %2%3").arg(block.rows).arg(block.rows == 1 ? "cell" : "cells", how));
}

void CompensationPage::Paste(CompTable table) {
  const SmallGridModel& model = grid(table)->Model();
  MessageSink& messages = parts_.editors.messages();
  const std::optional<SheetAxes> axis = RowSheetAxes(model, 0, model.Rows() - 1);
  const SheetPaste paste =
      ReadSheetPaste(QGuiApplication::clipboard()->text().toStdString(), SystemDecimalSeparator(),
                     RowPasteArea(model), axis ? &*axis : nullptr);
  if (paste.status == PasteStatus::kRefused) {
    messages.Show(MessageIcon::kExclamation, std::string(kWarningTitle), PasteRefusalLines(paste));
    return;
  }
  if (paste.status == PasteStatus::kTooBig &&
      messages.Show(MessageIcon::kQuestion, "Paste", PasteTooBigLines(paste),
                    MessageButtons::kOkCancel) != MessageAnswer::kOk) {
    return;
  }
  const int rows = paste.status == PasteStatus::kTooBig ? paste.kept_rows : paste.block_rows;
  Finish(table, PlanPaste(model, paste.cells), EditKind::kPaste,
         "pasted " + std::to_string(rows) + " x 1 from the clipboard");
}

void CompensationPage::Preview(CompTable table, const QString& text) {
  const SmallGridModel& model = grid(table)->Model();
  const int first = model.SelectionFirst();
  const int last = model.SelectionLast();
  const char mark = SystemDecimalSeparator();
  const OperationParse parse =
      ParseCellOperation(text.toStdString(), mark, RowBoundsOf(model, first, last));
  OperationLine* line = lines_[static_cast<std::size_t>(table)];
  if (!parse.operation) {
    line->ShowPreview(QString::fromStdString(parse.refusal), true);
    return;
  }
  const RowChange change = PlanOperation(model, first, last, *parse.operation);
  line->ShowPreview(QString::fromStdString(RowChangeSummary(change, mark)), false);
}

void CompensationPage::EnterLine(CompTable table, const QString& text) {
  const SmallGridModel& model = grid(table)->Model();
  const int first = model.SelectionFirst();
  const int last = model.SelectionLast();
  const OperationParse parse = ParseCellOperation(text.toStdString(), SystemDecimalSeparator(),
                                                  RowBoundsOf(model, first, last));
  if (!parse.operation) {
    Preview(table, text);  // the refusal stays on the line
    return;
  }
  LeaveLine(table);
  Finish(table, PlanOperation(model, first, last, *parse.operation), EditKind::kTypedOperation,
         text.trimmed().toStdString());
}

void CompensationPage::LeaveLine(CompTable table) {
  OperationLine* line = lines_[static_cast<std::size_t>(table)];
  // Enter and Escape give the keyboard back to the table; a click on another table keeps it there.
  const bool keyboard_in_line = line->edit()->hasFocus();
  line->Close();
  grid(table)->KeepSelectionShown(false);
  if (keyboard_in_line) grid(table)->setFocus(Qt::OtherFocusReason);
}

void CompensationPage::Finish(CompTable table, const RowChange& change, EditKind kind,
                              const std::string& what) {
  if (change.changed.empty()) {
    parts_.editors.Note("No cell changed");
    return;
  }
  SmallMapGrid* shown = grid(table);
  shown->Model().Enter(change.changed);  // written and sent as a key change is
  const std::string title = kLooks[static_cast<std::size_t>(table)].title;
  parts_.editors.RecordNow(kind, EditPlace::kSetup, title + ": " + what);
  shown->Refresh();
  ShowCurve(table);
  const auto count = static_cast<int>(change.changed.size());
  parts_.editors.Note(QString("%1: %2 %3")
                          .arg(QString::fromStdString(what))
                          .arg(count)
                          .arg(count == 1 ? "cell changed" : "cells changed"));
}

void CompensationPage::ShowLive(const LiveData& live, int afr_mode, bool connected) {
  live_ = live;
  afr_mode_ = afr_mode;
  connected_ = connected;
  if (!isVisible()) return;
  const ReadoutTexts texts = MapReadoutTexts(live, ShownTextStyle(afr_mode));
  readout_->Show(live, texts, connected);
  if (!connected) {
    for (auto* curve : curves_) curve->SetLiveX(std::nullopt);
    return;
  }
  curves_[0]->SetLiveX(CurveTemperature(texts.air.toStdString()));
  curves_[1]->SetLiveX(CurveTemperature(texts.water.toStdString()));
  curves_[2]->SetLiveX(live.battery_volts > 0 ? std::optional<double>(live.battery_volts)
                                              : std::nullopt);
  const bool map_basis = parts_.editors.state().sensors.throttle_pump_on_map;
  curves_[3]->SetLiveX(map_basis ? live.map_kpa / kKpaPerBar - 1.0 : live.tps_percent);
}

void CompensationPage::showEvent(QShowEvent* event) {
  ShowEditors();
  ShowLive(live_, afr_mode_, connected_);
  QWidget::showEvent(event);
}

}  // namespace vela

#include "moc_compensation_page.cpp"
