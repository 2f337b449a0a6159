#include "app/pages/map_page.h"

#include <QGridLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QRadioButton>
#include <QScrollArea>
#include <QVBoxLayout>

#include "app/widgets/status_strip.h"
#include "editors/editor_state.h"
#include "link/program_status.h"

namespace vela {

namespace {

QLabel* Indicator(QWidget* parent, const QString& name, const QString& text) {
  auto* label = new QLabel(text, parent);
  label->setObjectName(name);
  label->setAlignment(Qt::AlignCenter);
  label->setMinimumWidth(70);
  label->setFrameShape(QFrame::StyledPanel);
  return label;
}

// Restyles only on a change: the labels are refreshed with every redraw of the read-outs.
void SetStyle(QLabel* label, const QString& style) {
  if (label->styleSheet() != style) label->setStyleSheet(style);
}

void Light(QLabel* label, bool on, const char* colour) {
  SetStyle(label, on ? QString("background-color: %1; font-weight: bold;").arg(colour)
                     : QString("color: #909090;"));
}

// The grid shows all its rows: every row as high as the grid's own smallest.
int FullGridHeight(const MapGrid* grid) {
  return grid->Model().Rows() * (grid->fontMetrics().height() + 4) +
         grid->horizontalHeader()->sizeHint().height() + 2 * grid->frameWidth();
}

}  // namespace

MapPage::MapPage(MapKind kind, const MapPageNames& names, QWidget* parent)
    : QWidget(parent),
      grid_(new MapGrid(kind, this)),
      readout_(new MapReadout(this)),
      graph_(new MapGraph(kind, this)),
      operation_line_(new OperationLine(this)) {
  grid_->setObjectName(names.grid);
  readout_->setObjectName(names.readout);
  graph_->setObjectName(names.graph);
  graph_->Follow(grid_);

  // The grid and its graph on the left; the read-out, the labels and the choices on the right,
  // scrolling when the screen is too low for them.
  auto* layout = new QHBoxLayout(this);
  layout->setContentsMargins(0, 0, 0, 0);
  auto* maps = new QVBoxLayout;
  maps_ = maps;
  out_of_step_ = new QLabel(
      "The ECU's calibration is not the one shown here: the last download did not complete.", this);
  out_of_step_->setObjectName("EcuOutOfStep" + names.suffix);
  out_of_step_->setStyleSheet("color: white; background-color: rgb(200, 30, 20); padding: 3px;");
  out_of_step_->setWordWrap(true);
  out_of_step_->hide();
  maps->addWidget(out_of_step_);
  grid_->setMinimumHeight(FullGridHeight(grid_));
  maps->addWidget(grid_, 3);
  maps->addWidget(operation_line_);
  graph_->setMinimumHeight(120);
  maps->addWidget(graph_, 4);
  layout->addLayout(maps, 3);
  layout->addWidget(BuildSide(kind, names.suffix), 1);
}

QWidget* MapPage::BuildSide(MapKind kind, const QString& suffix) {
  auto* side_content = new QWidget;
  auto* side = new QVBoxLayout(side_content);
  side->setContentsMargins(0, 0, 4, 0);
  readout_->setMaximumWidth(260);
  readout_->setMinimumHeight(static_cast<int>(kReadoutLabels.size()) *
                             (readout_->fontMetrics().height() + 5));
  side->addWidget(readout_);
  side->addWidget(BuildLabels(kind, suffix));
  if (kind == MapKind::kFuel) side->addWidget(BuildMapSelection(suffix));
  options_area_ = new QWidget(side_content);
  auto* options = new QVBoxLayout(options_area_);
  options->setContentsMargins(0, 0, 0, 0);
  side->addWidget(options_area_);
  side->addStretch(1);
  auto* scroll = new QScrollArea(this);
  scroll->setObjectName("MapSide" + suffix);
  scroll->setWidgetResizable(true);
  scroll->setFrameShape(QFrame::NoFrame);
  scroll->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
  scroll->setWidget(side_content);
  scroll->setMinimumWidth(270);
  scroll->setMaximumWidth(300);
  return scroll;
}

void MapPage::AddAboveGrid(QWidget* bar) { maps_->insertWidget(maps_->indexOf(grid_), bar); }

void MapPage::ShowGraph(bool shown) { graph_->setVisible(shown); }

void MapPage::KeepKeyboardOnGrid() {
  for (QWidget* widget : findChildren<QWidget*>()) {
    if (widget == grid_ || grid_->isAncestorOf(widget)) continue;
    if (widget->focusPolicy() & Qt::TabFocus) widget->setFocusPolicy(Qt::ClickFocus);
  }
}

bool MapPage::focusNextPrevChild(bool) {
  grid_->setFocus(Qt::TabFocusReason);
  return true;
}

void MapPage::ShowOutOfStep(bool out_of_step) { out_of_step_->setVisible(out_of_step); }

QWidget* MapPage::BuildLabels(MapKind kind, const QString& suffix) {
  auto* box = new QGroupBox(this);
  auto* column = new QVBoxLayout(box);
  if (kind == MapKind::kFuel) {
    auto* duty_row = new QHBoxLayout;
    duty_row->addWidget(new QLabel("Injector Duty Cycle =", box));
    duty_ = new QLabel("100.00", box);
    duty_->setObjectName("Duty2" + suffix);
    duty_row->addWidget(duty_);
    duty_row->addStretch(1);
    column->addLayout(duty_row);
  }
  all_ranges_ = new QCheckBox("All Ranges Up", box);
  all_ranges_->setObjectName("AllRanges" + suffix);
  column->addWidget(all_ranges_);
  auto* lights = new QGridLayout;
  live_tune_ = Indicator(box, "LiveTune" + suffix, "Live Tune");
  lights->addWidget(live_tune_, 0, 0);
  if (kind == MapKind::kFuel) {
    map_in_use_ = Indicator(box, "LabelFuelMapInUse" + suffix, "Not in use");
    throttle_pump_ = Indicator(box, "LabelThrottlePump" + suffix, "T.PUMP");
    limiter_ = Indicator(box, "LabelLimiter" + suffix, "LIMIT");
    lights->addWidget(map_in_use_, 0, 1);
    lights->addWidget(throttle_pump_, 1, 0);
    lights->addWidget(limiter_, 1, 1);
  }
  column->addLayout(lights);
  ShowLiveState(false, false, false, false);
  return box;
}

QWidget* MapPage::BuildMapSelection(const QString& suffix) {
  auto* box = new QGroupBox("Fuel Map Selection", this);
  box->setObjectName("MapSelection" + suffix);
  auto* grid = new QGridLayout(box);
  map_selection_ = new QButtonGroup(box);
  for (int i = 0; i < 4; ++i) {
    auto* button = new QRadioButton(
        QString::fromUtf8(kMapSelectionTexts[i].data(), kMapSelectionTexts[i].size()), box);
    button->setObjectName(QString("MapSelection%1%2").arg(suffix).arg(i));
    map_selection_->addButton(button, i);
    grid->addWidget(button, i / 2, i % 2);
  }
  return box;
}

void MapPage::ShowLiveState(bool live_tuning, bool map_in_use, bool throttle_pump, bool limiter) {
  // "Live Tune" in the words and colours of the status strip.
  const StatusLook look = LiveTuneLook(live_tuning);
  SetStyle(live_tune_, StatusStyle(look));
  live_tune_->setToolTip(QString::fromStdString(look.tooltip));
  if (map_in_use_) {
    const QString in_use_text = map_in_use ? "In use" : "Not in use";
    if (map_in_use_->text() != in_use_text) map_in_use_->setText(in_use_text);
    Light(map_in_use_, map_in_use, "rgb(128, 255, 128)");
    Light(throttle_pump_, throttle_pump, "rgb(255, 200, 60)");
    Light(limiter_, limiter, "rgb(255, 80, 60)");
  }
}

void MapPage::ShowDuty(double percent) {
  if (duty_) duty_->setText(QString::number(percent, 'f', 2).replace(QLatin1Char('.'), separator_));
}

}  // namespace vela

#include "moc_map_page.cpp"
