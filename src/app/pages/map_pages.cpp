#include "app/pages/map_pages.h"

#include <QLayout>
#include <QSignalBlocker>

#include "app/sessions/editor_session.h"
#include "app/sessions/link_session.h"
#include "app/sessions/live_view.h"
#include "app/widgets/live_texts.h"
#include "base/qt/qt_platform.h"
#include "editors/mapgrid/grid_setup.h"
#include "editors/mapgrid/qt/map_surface_view.h"

namespace vela {

namespace {

constexpr const char* kMapTitles[MapPages::kPages] = {"Fuel 1", "Fuel 2", "Ignition"};
const MapPageNames kNames[MapPages::kPages] = {
    {"FuelMap1", "FuelMap1A", "FuelGraphVelaB1", ""},
    {"FuelMap2", "FuelMap2A", "FuelGraphVelaB2", "Map2"},
    {"IgnMap", "IgnMapA", "IgnitionGraphVelaB1", "Ign"},
};
constexpr EditedMap kEditedMaps[MapPages::kPages] = {EditedMap::kFuel1, EditedMap::kFuel2,
                                                     EditedMap::kIgnition};

const MapValues& ValuesOf(const MapEditors& maps, int index) {
  return index == 0 ? maps.FuelMap1 : index == 1 ? maps.FuelMap2 : maps.IgnMap;
}

}  // namespace

MapPages::MapPages(EditorSession& editors, LinkSession& link, LiveView& live_view,
                   MessageSink& messages, QObject* parent)
    : QObject(parent),
      editors_(editors),
      link_(link),
      live_view_(live_view),
      messages_(messages),
      operations_(new GridOperations({editors, messages, [this] { return cross_hair_.Point(); },
                                      [this](int index) { ShowEdited(index); }},
                                     this)) {
  cross_hair_.SetMotorMap(1);
  // The live point follows the shown values, so the smoothing choices steady it too.
  connect(&live_view_, &LiveView::Updated, this, [this] { live_new_ = true; });
  connect(&link_, &LinkSession::DisplaysReset, this, [this] {
    live_new_ = false;
    cross_hair_.Clear();
  });
  connect(&editors_, &EditorSession::EcuOutOfStepChanged, this, [this](bool out_of_step) {
    for (MapPage* page : pages_) {
      if (page) page->ShowOutOfStep(out_of_step);
    }
  });
}

MapPage* MapPages::BuildPage(int index, QWidget* parent) {
  const MapKind kind = index < 2 ? MapKind::kFuel : MapKind::kIgnition;
  auto* page = new MapPage(kind, kNames[index], parent);
  pages_[index] = page;
  // Cells and read-outs show numbers with the computer's decimal separator.
  const char separator = SystemDecimalSeparator();
  page->grid()->Model().SetDecimalSeparator(separator);
  page->readout()->SetDecimalSeparator(QLatin1Char(separator));
  page->set_decimal_separator(QLatin1Char(separator));
  // The names accessibility tools read.
  page->grid()->setAccessibleName(QString("%1 map").arg(kMapTitles[index]));
  page->readout()->setAccessibleName(QString("%1 live values").arg(kMapTitles[index]));
  if (MapSurfaceView* surface = page->graph()->Surface()) {
    surface->setAccessibleName(QString("%1 graph").arg(kMapTitles[index]));
  }
  cross_hair_.Attach(index + 1, page->grid(), page->graph());
  operations_->Attach(index, page, kEditedMaps[index]);
  connect(page->grid(), &MapGrid::CellsChanged, this,
          [this, index](const std::vector<MapCell>& cells) { GridEdited(index, cells); });
  connect(page->grid(), &MapGrid::CursorMoved, this, [this, index] { ShowDuty(index); });
  connect(page->all_ranges(), &QCheckBox::toggled, this, [this](bool on) {
    if (on != all_ranges_) ToggleAllRanges();
  });
  if (index == 2) {
    // "Lock Timing" holds the link lock: while it is ticked, closing the program sends the ECU
    // no closing command.
    auto* lock = new QCheckBox("Lock Timing", page);
    lock->setObjectName("TLock");
    page->options_area()->layout()->addWidget(lock);
    connect(lock, &QCheckBox::toggled, this, [this](bool on) { link_.state().TLock = on; });
  }
  if (page->map_selection()) {
    connect(page->map_selection(), &QButtonGroup::idClicked, this, &MapPages::MapSelectionChosen);
  }
  return page;
}

// The choice switches the fuel map the running engine gets at once: it is sent only once the
// tuner says so, and the buttons show the choice in force either way.
void MapPages::MapSelectionChosen(int choice) {
  if (choice < 0 || choice >= static_cast<int>(kMapSelectionTexts.size())) return;
  if (choice != editors_.state().setup.fuel_map_selection) {
    const std::string_view text = kMapSelectionTexts[static_cast<std::size_t>(choice)];
    const std::string name(text.substr(text.find_first_not_of(' ')));
    const MessageAnswer answer =
        messages_.Show(MessageIcon::kQuestion, "Fuel Map Selection",
                       {"Switch the fuel map selection to \"" + name + "\"?",
                        "The ECU runs on the new selection at once."},
                       MessageButtons::kYesNoDefaultNo);
    if (answer == MessageAnswer::kYes) editors_.SetMapSelection(choice);
  }
  ShowEditors();
}

void MapPages::SetUpGrids() {
  const EditorState& state = editors_.state();
  const MapEditors& maps = state.maps;
  const GridLoadSites sites = LoadSitesForGrids(maps.FuelLoadSites, maps.IgnLoadSites);
  const GridAxes axes =
      AxesFor(state.setup.rpm_sites_code, state.sensors.load_sensing == kLoadSensingMap,
              state.sensors.map_sensor_type, state.sensors.map_scale_code);
  for (int i = 0; i < kPages; ++i) {
    MapPage* page = pages_[i];
    const int load_sites = i < 2 ? sites.fuel : sites.ignition;
    ApplyAxes(page->grid()->Model(), axes);
    page->grid()->SetUp(kMapTitles[i], load_sites);
    if (ValuesOf(maps, i).Columns() == load_sites) page->grid()->LoadValues(ValuesOf(maps, i));
    page->graph()->SetNumOfLoadSites(load_sites);
    page->graph()->ShowMap(page->grid()->Model());
  }
  cross_hair_.AxesChanged();
}

void MapPages::ShowEditors() {
  SetUpGrids();
  const int selection = editors_.state().setup.fuel_map_selection;
  for (int i = 0; i < 2; ++i) {
    QButtonGroup* group = pages_[i]->map_selection();
    const QSignalBlocker block(group);
    if (QAbstractButton* button = group->button(selection)) button->setChecked(true);
  }
  for (int i = 0; i < kPages; ++i) ShowDuty(i);
}

void MapPages::ShowMapValues(int index) {
  MapPage* page = pages_[index];
  const MapValues& values = ValuesOf(editors_.state().maps, index);
  if (values.Columns() != page->grid()->Model().LoadSites()) {
    ShowEditors();
    return;
  }
  page->grid()->LoadValues(values);
  page->graph()->ShowMap(page->grid()->Model());
  ShowDuty(index);
}

void MapPages::ShowLive(const LiveData& live, int afr_mode, bool connected, int tab) {
  if (tab < 0 || tab >= kPages) return;
  const int selection = editors_.state().setup.fuel_map_selection;
  const bool map1_running = live.status & live::kStatusFuelMap1;
  const bool map2_running = live.status & live::kStatusFuelMap2;
  const bool in_use = tab == 0   ? map1_running || selection == kMapSelectionOnlyMap1
                      : tab == 1 ? map2_running || selection == kMapSelectionOnlyMap2
                                 : true;
  // The live point moves with the read-outs, in the same redraw.
  if (live_new_) cross_hair_.SetLive({live.engine_rpm, live.map_kpa, live.tps_percent});
  live_new_ = false;
  pages_[tab]->readout()->Show(live, MapReadoutTexts(live, ShownTextStyle(afr_mode)), connected);
  pages_[tab]->ShowLiveState(LiveTuning(), in_use, connected && live.throttle_pump_active,
                             connected && live.limiter_active);
}

bool MapPages::LiveTuning() const { return pages_[0]->grid()->LiveTuning(); }

void MapPages::SetNumerical(bool numerical) {
  for (MapPage* page : pages_) page->ShowGraph(!numerical);
}

void MapPages::TabShown(int tab) {
  if (tab >= 0 && tab < kPages) cross_hair_.SetMotorMap(tab + 1);
}

void MapPages::ToggleAllRanges() {
  all_ranges_ = !all_ranges_;
  for (MapPage* page : pages_) {
    page->grid()->SetAllRanges(all_ranges_);
    const QSignalBlocker block(page->all_ranges());
    page->all_ranges()->setChecked(all_ranges_);
  }
}

void MapPages::ToggleLiveTuning() {
  MapGrid* grid = pages_[0]->grid();
  grid->SetLiveTuning(!grid->LiveTuning());
}

void MapPages::InsertLiveValue(int tab) {
  if (tab < 0 || tab >= 2) return;
  MapGrid* grid = pages_[tab]->grid();
  if (!pages_[0]->grid()->LiveTuning()) return;
  grid->Model().InsertLiveValue(link_.live().injection_ms);
  grid->Refresh();
}

void MapPages::MovePointerToLoadSite(int tab) {
  if (tab < 0 || tab >= kPages) return;
  const std::optional<OperatingPoint> point = cross_hair_.Point();
  if (!point) return;
  MapGrid* grid = pages_[tab]->grid();
  grid->Model().MoveCursorTo(point->row, point->column);
  grid->SetCurrentCell(grid->Model().Current().row, grid->Model().Current().column);
}

void MapPages::GridEdited(int index, const std::vector<MapCell>& cells) {
  editors_.CellsEdited(kEditedMaps[index], pages_[index]->grid()->Model(), cells);
  ShowEdited(index);
}

void MapPages::ShowEdited(int index) {
  pages_[index]->graph()->ShowMap(pages_[index]->grid()->Model());
  ShowDuty(index);
}

void MapPages::ShowDuty(int index) {
  if (index >= 2) return;
  const MapGridModel& model = pages_[index]->grid()->Model();
  const MapCell cell = model.Current();
  const double rpm = model.RowRpm(cell.row).value_or(0.0);
  const double base = DutyLimitBase(editors_.state().setup);
  pages_[index]->ShowDuty(
      rpm > 0 && base > 0 ? 100.0 * model.Value(cell.row, cell.column) * rpm / base : 0.0);
}

}  // namespace vela

#include "moc_map_pages.cpp"
