// The workbench's operations on the map grids: the keys a grid does not own come here and are
// carried out on the grid's selection (selection keys, the typed line, interpolation, smoothing,
// fill, copy and paste). Every change goes through the rules of a key change and is written,
// queued for the ECU and journaled as one entry by the editors. The grids also mark the cells
// still waiting to go to the ECU.
#pragma once

#include <QObject>
#include <QString>
#include <array>
#include <functional>
#include <optional>
#include <string>

#include "app/sessions/editor_session.h"
#include "editors/grid_workbench.h"
#include "editors/mapgrid/map_display.h"
#include "editors/mapgrid/workbench_keys.h"

class QKeyEvent;

namespace vela {

class MapGrid;
class MapPage;
class OperationLine;

class GridOperations : public QObject {
  Q_OBJECT

 public:
  // The three map grids, then grids of the program's own tables (the target AFR table).
  static constexpr int kGrids = 4;
  static constexpr int kTargetGrid = 3;

  struct Parts {
    EditorSession& editors;
    MessageSink& messages;
    // The live operating point on the map in front, in its grid's coordinates, when known.
    std::function<std::optional<OperatingPoint>()> live_point;
    // After the cells of grid `index` changed: its graph and read-outs are shown again.
    std::function<void(int index)> changed;
  };

  explicit GridOperations(Parts parts, QObject* parent = nullptr);

  // Takes the keys that the page's grid does not own; `map` is what the grid edits.
  void Attach(int index, MapPage* page, EditedMap map);
  // A grid of a table that is not the ECU's: a change is handed to `finish` (with its kind and
  // source, as a journal would name it) instead of the editors, and nothing goes to the ECU.
  using Finisher =
      std::function<void(const BulkChange& change, EditKind kind, const std::string& source)>;
  void AttachOwn(int index, MapGrid* grid, OperationLine* line, Finisher finish);
  // Carries out the workbench chord of `event` on grid `index`; false when the key is none.
  bool HandleKey(int index, const QKeyEvent& event);
  bool Carry(int index, GridChord chord, char typed = 0);

 signals:
  // A short note for the status strip: what an operation did, or why it did nothing.
  void Note(const QString& text);

 private:
  struct Slot {
    MapPage* page = nullptr;
    EditedMap map = EditedMap::kFuel1;
    std::optional<CellSelection> selection;
    MapGrid* grid = nullptr;
    OperationLine* line = nullptr;
    Finisher finish;  // set for a table of the program's own
  };

  void ConnectLine(int index, MapGrid* grid, OperationLine* line);
  OperationLine* LineOf(int index) const { return slots_[index].line; }
  MapGrid* GridOf(int index) const;
  DutyContext Duty() const;
  void Extend(int index, int rows, int columns, bool whole_map = false);
  void Shape(int index, ShapeKind kind);
  void Copy(int index, bool with_axes);
  void Paste(int index);
  void Preview(int index, const QString& text);
  void Enter(int index, const QString& text);
  void LeaveLine(int index);
  // Journals and sends a change already made in grid `index`, and shows it.
  void Finish(int index, const BulkChange& change, EditKind kind, const std::string& source);
  void ShowWaitingCells();

  Parts parts_;
  std::array<Slot, kGrids> slots_{};
};

}  // namespace vela
