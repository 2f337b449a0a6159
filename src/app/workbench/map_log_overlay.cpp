#include "app/workbench/map_log_overlay.h"

#include <QAccessible>
#include <cstdio>

#include "app/pages/datalog_page.h"
#include "app/sessions/editor_session.h"
#include "app/sessions/target_session.h"
#include "tune/tune_run.h"

namespace vela {

namespace {

constexpr int kIgnitionPage = 2;

QString CellName(const MapGridModel& grid, MapCell cell) {
  return QStringLiteral("cell %1 RPM, %2 %3")
      .arg(QString::fromStdString(grid.RpmLabel(cell.row)).trimmed(),
           QString::fromStdString(grid.LoadLabel(cell.column)),
           QString::fromStdString(grid.LoadUnit()));
}

QString DelayText(const DelayModel& delay, const char* how) {
  char text[96];
  std::snprintf(text, sizeof text, "delay %s: %.3f s + %.0f / (RPM x load)", how, delay.floor_s,
                delay.k);
  return QString::fromLatin1(text);
}

}  // namespace

MapLogOverlay::MapLogOverlay(EditorSession& editors, MapPages& maps, DatalogPage& datalog,
                             const TargetSession& targets, QObject* parent)
    : QObject(parent), editors_(editors), maps_(maps), datalog_(datalog), targets_(targets) {
  for (int page = 0; page < MapPages::kPages; ++page) {
    auto* line = new QLabel;
    line->setObjectName(QStringLiteral("LogOverlayLine%1").arg(page + 1));
    line->setWordWrap(true);
    line->setTextInteractionFlags(Qt::TextSelectableByMouse);
    line->hide();
    lines_[static_cast<std::size_t>(page)] = line;
    maps_.page(page)->AddAboveGrid(line);
    connect(maps_.page(page)->grid(), &MapGrid::CursorMoved, this, [this, page] {
      if (layer_ != HeatLayer::kOff) ShowPage(page);
    });
  }
  connect(datalog_.chart(), &DatalogChart::CursorsChanged, this, &MapLogOverlay::ChartCursorMoved);
  // New targets: the errors are taken again from the whole log, with the delay already chosen
  // (the targets do not move the exhaust).
  connect(&targets_, &TargetSession::Changed, this, [this] {
    if (layer_ == HeatLayer::kOff || !fuel_ || !fuel_->Follows(datalog_.log())) {
      fuel_.reset();  // all again when next shown
      ign_.reset();
      if (layer_ != HeatLayer::kOff) Refresh();
      return;
    }
    BuildHeats();
    fuel_->Follow(datalog_.log(), datalog_.Logging());
    ign_->Follow(datalog_.log(), datalog_.Logging());
    for (int page = 0; page < MapPages::kPages; ++page) ShowPage(page);
  });
  follow_.setInterval(kFollowMs);
  connect(&follow_, &QTimer::timeout, this, &MapLogOverlay::FollowTick);
}

bool MapLogOverlay::HandleKey(KeyAction action, int tab) {
  if (action == KeyAction::kLogOverlay) {
    CycleLayer();
    return true;
  }
  if (action == KeyAction::kMarkCellTimes) {
    MarkCellTimes(tab);
    return true;
  }
  return false;
}

void MapLogOverlay::CycleLayer() {
  layer_ = NextLayer(layer_);
  if (layer_ == HeatLayer::kOff) {
    follow_.stop();
  } else if (!follow_.isActive()) {
    follow_.start();
  }
  Refresh();
  emit Note(QStringLiteral("Log overlay: %1").arg(QString::fromLatin1(LayerName(layer_))));
}

void MapLogOverlay::Refresh() {
  if (layer_ != HeatLayer::kOff) Follow();
  for (int page = 0; page < MapPages::kPages; ++page) ShowPage(page);
}

// A log that neither grew nor changed leaves the pages as they are drawn (a loaded log, or a
// pause in the frames).
void MapLogOverlay::FollowTick() {
  const std::uint64_t builds = heat_builds_;
  const std::size_t taken = fuel_ ? fuel_->RecordsTaken() : 0;
  if (layer_ == HeatLayer::kOff) return;
  Follow();
  if (heat_builds_ == builds && fuel_->RecordsTaken() == taken) return;
  for (int page = 0; page < MapPages::kPages; ++page) ShowPage(page);
}

void MapLogOverlay::Follow() {
  const CalibrationImage& image = editors_.image();
  const DatalogLog& log = datalog_.log();
  const bool open = datalog_.Logging();
  TuneAxes fuel = FuelAxesOf(image);
  TuneAxes ign = IgnAxesOf(image);
  if (!fuel_ || fuel != fuel_axes_ || ign != ign_axes_ ||
      (log.RecordCount() > 0 && !fuel_->Follows(log))) {
    fuel_axes_ = std::move(fuel);
    ign_axes_ = std::move(ign);
    Restart(open);
  }
  fuel_->Follow(log, open);
  ign_->Follow(log, open);
}

// A loaded log's transport delay is fitted from its own steps once; a log being recorded uses
// the default delay throughout (a fit that moved would change every figure taken so far).
void MapLogOverlay::Restart(bool open) {
  const CalibrationImage& image = editors_.image();
  settings_ = HeatSettings{};
  settings_.basis = fuel_axes_.basis;
  settings_.filters = FiltersFor(image, settings_.filters);
  settings_.delay = kDefaultDelay;
  delay_text_ = DelayText(kDefaultDelay, "default");
  const DatalogLog& log = datalog_.log();
  if (!open && log.RecordCount() > 0) {
    const SampleLog samples = SamplesOf(log, fuel_axes_.basis);
    DelayFit fit;
    TuneSettings tune;
    tune.filters = settings_.filters;
    settings_.delay = ChooseDelay(std::span<const SampleLog>(&samples, 1), tune, fit);
    delay_text_ = DelayText(settings_.delay, fit.fitted ? "fitted" : "default");
  }
  BuildHeats();
}

// Both maps' figures from nothing, taken again from the log by the next Follow().
void MapLogOverlay::BuildHeats() {
  ++heat_builds_;
  const TargetTable targets = targets_.TableOn(fuel_axes_);
  fuel_ = std::make_unique<LogHeat>(fuel_axes_, targets, settings_);
  ign_ = std::make_unique<LogHeat>(ign_axes_, targets, settings_);
}

const LogHeat* MapLogOverlay::HeatOf(int page) const {
  return page == kIgnitionPage ? ign_.get() : fuel_.get();
}

void MapLogOverlay::ShowPage(int page) {
  MapGrid* grid = maps_.page(page)->grid();
  const LogHeat* heat = HeatOf(page);
  const MapCell outlined = chart_cells_[static_cast<std::size_t>(page)];
  const bool shown = layer_ != HeatLayer::kOff && heat != nullptr;
  const bool fits = heat != nullptr && heat->Cells().Axes().Rows() == MapGridModel::kRows - 1 &&
                    heat->Cells().Axes().Columns() == grid->Model().LoadSites();
  if ((shown || outlined.row > 0) && fits) {
    grid->SetLogOverlay(HeatOverlay(heat->Cells(), heat->Targets(), layer_, outlined));
  } else if (outlined.row > 0) {
    GridOverlay marks(MapGridModel::kRows - 1, grid->Model().LoadSites());
    CellOverlay outline;
    outline.mark = kChartCellMark;
    marks.Set(outlined, std::move(outline));
    grid->SetLogOverlay(std::move(marks));
  } else {
    grid->SetLogOverlay({});
  }
  QLabel* line = lines_[static_cast<std::size_t>(page)];
  line->setVisible(shown);
  const QString text = shown ? LineText(page) : QString();
  line->setText(text);
  if (grid->accessibleDescription() != text) {
    grid->setAccessibleDescription(text);
    QAccessibleEvent event(grid, QAccessible::DescriptionChanged);
    QAccessible::updateAccessibility(&event);
  }
}

// "Log overlay: mean AFR. cell 3000 RPM, 60 kPa: 12.4 s, 310 samples, mean AFR 13.42, ..."
QString MapLogOverlay::LineText(int page) const {
  const MapGridModel& grid = maps_.page(page)->grid()->Model();
  const LogHeat& heat = *HeatOf(page);
  QString text = QStringLiteral("Log overlay: %1").arg(QString::fromLatin1(LayerName(layer_)));
  if (heat.RecordsTaken() == 0) return text + QStringLiteral(". No log on the datalog page.");
  const MapCell cell = grid.Current();
  const CellGrid& cells = heat.Cells();
  if (cell.row < 1 || cell.row > cells.Axes().Rows() || cell.column > cells.Axes().Columns()) {
    return text;
  }
  const double target = SiteTarget(cells, heat.Targets(), cell.row, cell.column);
  return text + QStringLiteral(". %1: %2. %3 records, %4.")
                    .arg(CellName(grid, cell), QString::fromStdString(CellFigures(
                                                   cells.At(cell.row, cell.column), target)))
                    .arg(heat.RecordsTaken())
                    .arg(delay_text_);
}

void MapLogOverlay::ChartCursorMoved() {
  const std::optional<double> a = datalog_.chart()->CursorA();
  const DatalogLog& log = datalog_.log();
  for (int page = 0; page < MapPages::kPages; ++page) {
    MapCell cell{0, 0};
    const TuneAxes axes =
        page == kIgnitionPage ? IgnAxesOf(editors_.image()) : FuelAxesOf(editors_.image());
    const int load_channel = axes.basis == LoadBasis::kMap ? kChannelMap : kChannelTps;
    const std::optional<double> rpm = a ? log.ValueAt(kChannelRpm, *a) : std::nullopt;
    const std::optional<double> load = a ? log.ValueAt(load_channel, *a) : std::nullopt;
    if (rpm && load) cell = NearestCell(axes, *rpm, *load);
    if (cell == chart_cells_[static_cast<std::size_t>(page)]) continue;
    chart_cells_[static_cast<std::size_t>(page)] = cell;
    ShowPage(page);
  }
}

// Ctrl-M: the times the engine spent in the selected cells shaded on the chart; again, or on
// cells the engine never ran in, the shading goes.
void MapLogOverlay::MarkCellTimes(int tab) {
  DatalogChart* chart = datalog_.chart();
  if (!chart->ShadedSpans().empty()) {
    chart->SetShadedSpans({});
    emit Note(QStringLiteral("Datalog chart: marked times cleared"));
    return;
  }
  const MapGridModel& grid = maps_.page(tab)->grid()->Model();
  const TuneAxes axes =
      tab == kIgnitionPage ? IgnAxesOf(editors_.image()) : FuelAxesOf(editors_.image());
  std::vector<CellStretch> spans = CellSpans(datalog_.log(), axes.basis, axes, grid.Selection());
  if (spans.empty()) {
    emit Note(QStringLiteral("The log spent no time in the selected cells"));
    return;
  }
  double seconds = 0.0;
  for (const CellStretch& span : spans) seconds += span.second - span.first;
  const auto count = spans.size();
  chart->SetShadedSpans(std::move(spans));
  emit Note(QStringLiteral("Datalog chart: %1 stretches, %2 s in the selected cells")
                .arg(count)
                .arg(seconds, 0, 'f', 1));
}

}  // namespace vela

#include "moc_map_log_overlay.cpp"
