// The edit history's costs on the whole program (its window built, its editors filled, its
// journal file written): a typed operation on a whole fuel map from Enter until its last frame is
// handed on, the undo of it, and the history panel opened over ten thousand entries. The program
// is off-line, so every frame is dropped at once: the wire's time is not counted, only the
// program's own. Run under a display (make bench uses a virtual X server).
#include <benchmark/benchmark.h>

#include <QApplication>
#include <QTemporaryDir>
#include <memory>

#include "app/history/history_panel.h"
#include "app/main_window.h"
#include "app/pages/map_pages.h"
#include "app/sessions/editor_session.h"
#include "editors/workbench/cell_operation.h"
#include "editors/workbench/cell_selection.h"
#include "program_fixture.h"
#include "sim/core/base_calibration.h"

namespace {

using namespace vela;

// One program for every case: built, loaded on a line where no ECU answers, filled with the
// simulated ECU's calibration and put off-line.
struct Program {
  QTemporaryDir dir;
  testing::TestProgram program{dir.path(), dir.path() + "/no-ecu"};

  Program() {
    program.window->Load();
    program.window->editors().ApplyUpload(sim::EmbeddedBaseCalibration());
    program.window->editors().SetOffline(true);
    QApplication::processEvents();
  }
  EditorSession& editors() { return program.window->editors(); }
  MapGridModel& fuel_map() { return program.window->map_pages().page(0)->grid()->Model(); }
};

// Made on first use, gone before the application object (its timers need the application).
std::unique_ptr<Program> the_program;
Program& TheProgram() {
  if (!the_program) the_program = std::make_unique<Program>();
  return *the_program;
}

// "*1.02" and "/1.02" by turns, so that the map neither grows nor shrinks over the runs.
void TypedOperation(Program& p, bool up) {
  MapGridModel& grid = p.fuel_map();
  const char* text = up ? "*1.02" : "/1.02";
  const OperationParse parse = ParseCellOperation(text, '.', ValueBoundsOf(grid));
  const DutyContext duty{p.editors().state().setup.ignition_divide, false};
  const BulkChange change = ApplyOperation(grid, WholeMap(grid), *parse.operation, duty);
  p.editors().CellsBulkEdited(EditedMap::kFuel1, grid, change.changed, EditKind::kTypedOperation,
                              text);
}

void BM_TypedOperationOnWholeFuelMap(benchmark::State& state) {
  Program& p = TheProgram();
  bool up = true;
  for (auto _ : state) {
    TypedOperation(p, up);
    up = !up;
  }
  state.counters["cells"] = static_cast<double>(p.fuel_map().LoadSites() * kMapRows);
}
BENCHMARK(BM_TypedOperationOnWholeFuelMap)->Unit(benchmark::kMillisecond);

void BM_UndoOfTypedOperation(benchmark::State& state) {
  Program& p = TheProgram();
  bool up = true;
  for (auto _ : state) {
    state.PauseTiming();
    TypedOperation(p, up);
    up = !up;
    state.ResumeTiming();
    benchmark::DoNotOptimize(p.editors().Undo());
  }
}
BENCHMARK(BM_UndoOfTypedOperation)->Unit(benchmark::kMillisecond);

// A history of ten thousand key steps, as the last session's file would give it back.
void FillHistory(Program& p, int entries) {
  ReplayedJournal last;
  CalibrationImage image = p.editors().image();
  last.base = image;
  for (int i = 0; i < entries; ++i) {
    const int position = 1 + (i % 187) * 2;
    const std::uint8_t before = image.Byte(position);
    const std::uint8_t after = static_cast<std::uint8_t>(before + 1);
    image.SetByte(position, after);
    EditEntry entry{EditKind::kKeyStep,
                    EditPlace::kFuelMap1,
                    {{static_cast<std::uint16_t>(position), before, after}},
                    "",
                    1700000000000 + i};
    last.journal.Append(std::move(entry));
  }
  last.image = image;
  p.editors().history().TakeBack(last);
}

void BM_HistoryPanelOpensOverTenThousandEntries(benchmark::State& state) {
  Program& p = TheProgram();
  FillHistory(p, static_cast<int>(state.range(0)));
  for (auto _ : state) {
    auto panel = std::make_unique<HistoryPanel>(p.editors(), p.program.window.get());
    panel->Open();
    QCoreApplication::sendPostedEvents();  // the layouts
    panel->repaint();                      // the first frame, the rows in view
    state.PauseTiming();
    panel.reset();
    QApplication::processEvents();
    state.ResumeTiming();
  }
  state.counters["entries"] = static_cast<double>(p.editors().history().journal().Entries().size());
}
BENCHMARK(BM_HistoryPanelOpensOverTenThousandEntries)->Arg(10'000)->Unit(benchmark::kMillisecond);

}  // namespace

int main(int argc, char** argv) {
  QApplication app(argc, argv);
  benchmark::Initialize(&argc, argv);
  benchmark::RunSpecifiedBenchmarks();
  benchmark::Shutdown();
  the_program.reset();
  return 0;
}
