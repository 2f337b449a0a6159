#include "app/pages/target_panel.h"

#include <QHBoxLayout>
#include <QShortcut>
#include <QVBoxLayout>

#include "app/sessions/target_session.h"
#include "app/workbench/grid_operations.h"
#include "app/workbench/operation_line.h"
#include "base/file_names.h"
#include "editors/compare/compare_overlay.h"
#include "editors/mapgrid/qt/map_grid.h"
#include "tune/target/target_edits.h"
#include "tune/view/target_colours.h"

namespace vela {

namespace {

constexpr const char* kTargetTitle = "AFR";

QPushButton* TargetButton(const QString& text, const char* name, QWidget* parent) {
  auto* button = new QPushButton(text, parent);
  button->setObjectName(name);
  // Enter belongs to the grid and its typed line, never to a button by default.
  button->setAutoDefault(false);
  return button;
}

QString Swatch(const Rgb& colour) {
  return QStringLiteral("<span style=\"background-color:%1\">&nbsp;&nbsp;&nbsp;&nbsp;</span>")
      .arg(QColor(colour.red, colour.green, colour.blue).name());
}

QLabel* BuildLegend(QWidget* parent) {
  auto* legend = new QLabel(parent);
  legend->setObjectName("TargetLegend");
  legend->setTextFormat(Qt::RichText);
  legend->setText(QStringLiteral("%1 richer than 14.7 &nbsp; %2 14.7 (stoichiometric) &nbsp; "
                                 "%3 leaner than 14.7 &nbsp; deeper the further from 14.7")
                      .arg(Swatch(DifferenceGround(-1.0, 1.0)), Swatch(kEqualGround),
                           Swatch(DifferenceGround(1.0, 1.0))));
  legend->setAccessibleName(
      "Colours: blue richer than 14.7, grey 14.7 (stoichiometric), red leaner than 14.7, "
      "deeper the further from 14.7");
  return legend;
}

QString FileNameOf(const std::string& path) {
  return QString::fromStdString(path.substr(NameStart(path)));
}

}  // namespace

TargetPanel::TargetPanel(TargetSession& session, GridOperations& operations,
                         std::function<const MapGridModel&()> fuel_grid, QWidget* parent)
    : QDialog(parent),
      session_(session),
      fuel_grid_(std::move(fuel_grid)),
      grid_(new MapGrid(MapKind::kAfr, this)),
      line_(new OperationLine(this)),
      where_(new QLabel(this)),
      legend_(BuildLegend(this)),
      note_(new QLabel(this)),
      default_(TargetButton("&Default", "TargetDefault", this)),
      undo_(TargetButton("&Undo", "TargetUndo", this)),
      redo_(TargetButton("&Redo", "TargetRedo", this)) {
  setObjectName("TargetAfrTable");
  setWindowTitle("Target AFR Table");
  setModal(false);
  grid_->setObjectName("TargetAfr");
  grid_->setAccessibleName("Target AFR table");
  where_->setObjectName("TargetFile");
  note_->setObjectName("TargetNote");
  note_->setWordWrap(true);
  QPushButton* close = TargetButton("Close", "CloseTargets", this);
  auto* buttons = new QHBoxLayout;
  buttons->addWidget(note_, 1);
  for (QPushButton* button : {default_, undo_, redo_, close}) buttons->addWidget(button);
  auto* layout = new QVBoxLayout(this);
  layout->addWidget(where_);
  layout->addWidget(grid_, 1);
  layout->addWidget(line_);
  layout->addWidget(legend_);
  layout->addLayout(buttons);
  connect(close, &QPushButton::clicked, this, &QDialog::hide);
  connect(default_, &QPushButton::clicked, &session_, &TargetSession::ResetToDefault);
  connect(undo_, &QPushButton::clicked, &session_, &TargetSession::Undo);
  connect(redo_, &QPushButton::clicked, &session_, &TargetSession::Redo);
  connect(&session_, &TargetSession::Changed, this, &TargetPanel::ShowTable);
  connect(&session_, &TargetSession::Note, this, &TargetPanel::ShowNote);
  connect(grid_, &MapGrid::CellsChanged, this, [this](const std::vector<MapCell>& cells) {
    TakeGrid(QString("Target changed: %1 %2")
                 .arg(cells.size())
                 .arg(cells.size() == 1 ? "cell" : "cells"));
  });
  operations.AttachOwn(GridOperations::kTargetGrid, grid_, line_,
                       [this](const BulkChange&, EditKind, const std::string&) { TakeGrid({}); });
  AddShortcuts();
  ShowTable();
}

void TargetPanel::AddShortcuts() {
  const auto add = [this](const QKeySequence& keys, auto slot) {
    auto* shortcut = new QShortcut(keys, this);
    connect(shortcut, &QShortcut::activated, this, slot);
  };
  add(QKeySequence(Qt::CTRL | Qt::Key_Z), [this] { session_.Undo(); });
  add(QKeySequence(Qt::CTRL | Qt::Key_Y), [this] { session_.Redo(); });
  add(QKeySequence(Qt::CTRL | Qt::SHIFT | Qt::Key_Z), [this] { session_.Redo(); });
  add(QKeySequence(Qt::CTRL | Qt::Key_T), [this] { hide(); });
}

void TargetPanel::Toggle() {
  if (isVisible() && isActiveWindow()) {
    hide();
    return;
  }
  Open();
}

void TargetPanel::Open() {
  session_.Follow();
  ShowTable();
  show();
  raise();
  activateWindow();
  grid_->setFocus(Qt::OtherFocusReason);
}

void TargetPanel::ShowTable() {
  const TargetTable& table = session_.table();
  const TuneAxes& axes = table.Axes();
  MapGridSettings settings = fuel_grid_().Settings();
  settings.gettext0 = kTargetTitle;
  settings.maxms = 0.0;
  if (grid_->Model().LoadSites() != axes.Columns()) {
    grid_->SetUp(kTargetTitle, axes.Columns());
  }
  grid_->SetSettings(settings);
  MapGridModel& model = grid_->Model();
  model.SetRpmSites(fuel_grid_().RpmSitesOfAxis());
  // The header's last cells carry their loads: the fuel grid's colour legend means nothing here.
  for (int column = 1; column <= model.LoadSites(); ++column) {
    static_cast<void>(model.SetText(0, column, model.LoadLabel(column)));
  }
  grid_->LoadValues(TargetValues(table));
  grid_->SetOverlay(TargetOverlay(table));
  grid_->Refresh();
  undo_->setEnabled(session_.CanUndo());
  redo_->setEnabled(session_.CanRedo());
  ShowWhere();
}

void TargetPanel::ShowWhere() {
  const QString file = FileNameOf(session_.path());
  where_->setText(session_.map_path().empty()
                      ? QString("No map file in use: the targets are kept in %1 in the program "
                                "folder.")
                            .arg(file)
                      : QString("Targets of %1, kept beside it in %2.")
                            .arg(FileNameOf(session_.map_path()), file));
  where_->setToolTip(QString::fromStdString(session_.path()));
}

void TargetPanel::TakeGrid(const QString& what) {
  session_.Change(TargetFromValues(grid_->Model().ToMapValues(), session_.table().Axes()), what);
}

void TargetPanel::ShowNote(const QString& text) { note_->setText(text); }

}  // namespace vela

#include "moc_target_panel.cpp"
