#include "app/sessions/compare_session.h"

#include <cmath>
#include <set>

#include "base/file_names.h"
#include "editors/compensation/compensation_compare.h"
#include "editors/map_file.h"
#include "editors/workbench/bulk_change.h"
#include "tune/view/proposal_view.h"

namespace vela {

namespace {

constexpr std::string_view kCompareFileTitle = "Compare with a Map File";
constexpr std::string_view kCompareBaseFileTitle = "Compare a Map File";

const char* TableName(EditedMap map) {
  return map == EditedMap::kFuel1 ? "FuelMap1" : map == EditedMap::kFuel2 ? "FuelMap2" : "IgnMap";
}

QString Plural(int count, const char* one, const char* many) {
  return QString("%1 %2").arg(count).arg(count == 1 ? one : many);
}

}  // namespace

CompareSession::CompareSession(CompareSessionParts parts, QObject* parent)
    : QObject(parent), parts_(parts) {
  // Every journaled change of the image, and every refill of the editors (an undo, a new read
  // of the ECU's calibration, a map file loaded).
  connect(&parts_.editors.history(), &EditHistory::Changed, this, &CompareSession::Recompute);
  connect(&parts_.editors, &EditorSession::EditorsFilled, this, &CompareSession::Recompute);
}

const TableComparison* CompareSession::Table(EditedMap map) const {
  return comparing_ ? comparison_.Table(TableName(map)) : nullptr;
}

void CompareSession::SetView(EditedMap map, CompareView view) {
  if (views_[Index(map)] == view) return;
  views_[Index(map)] = view;
  emit Changed();
}

std::optional<CompareSession::Picked> CompareSession::Pick(Source source,
                                                           std::string_view file_title) {
  switch (source) {
    case Source::kEditors:
      return Picked{{OtherSideKind::kEditors, {}}, std::nullopt};
    case Source::kEcu:
      if (!parts_.editors.ecu_image()) {
        emit Note("Nothing compared: the ECU's calibration has not been read yet.");
        return std::nullopt;
      }
      return Picked{{OtherSideKind::kEcu, {}}, std::nullopt};
    case Source::kMapFile:
      break;
  }
  return AskMapFile(file_title);
}

std::optional<CompareSession::Picked> CompareSession::AskMapFile(std::string_view title) {
  std::string& folder = parts_.editors.dialog_memory().folder;
  if (folder.empty() || folder.rfind(parts_.folders.datalogs, 0) == 0) {
    folder = parts_.folders.maps;
  }
  const std::optional<std::string> path =
      parts_.dialogs.AskOpenPath(std::string(kLoadMapFilter), std::string(title), folder);
  if (!path) return std::nullopt;
  if (const std::size_t start = NameStart(*path); start > 0) folder = path->substr(0, start);
  MapFileImage read = ReadMapFileImage(parts_.files, *path);
  std::vector<std::string> refusal;
  if (read.image) {
    // As loading does: the ECU's firmware version stands in the file's byte, so that a file
    // saved under another version shows no difference the tuner could never take.
    read.image->SetByte(FieldPos("FirmwareVersion"),
                        parts_.editors.state().version.FirmwareVersion);
    refusal = MapFileCheckFailures(*read.image);
  } else {
    refusal = {read.refusal};
  }
  if (!refusal.empty()) {
    refusal.insert(refusal.begin(), path->substr(NameStart(*path)) + " is not compared:");
    parts_.messages.Show(MessageIcon::kExclamation, std::string(title), refusal);
    return std::nullopt;
  }
  return Picked{{OtherSideKind::kMapFile, path->substr(NameStart(*path))}, std::move(read.image)};
}

bool CompareSession::Compare(Source base, Source other) {
  std::optional<Picked> first = Pick(base, kCompareBaseFileTitle);
  if (!first) return false;
  std::optional<Picked> second = Pick(other, kCompareFileTitle);
  return second && Start(std::move(*first), std::move(*second));
}

void CompareSession::CompareWith(QString name, CalibrationImage image) {
  Start({pair_.base, base_},
        {{OtherSideKind::kRestorePoint, name.toStdString()}, std::move(image)});
}

void CompareSession::CompareWithProposal(FuelProposal proposal) {
  const bool shown = comparing_ && proposal_.has_value();
  proposal_ = std::move(proposal);
  if (shown) {
    Recompute();
    return;
  }
  Start({{OtherSideKind::kEditors, {}}, std::nullopt},
        {{OtherSideKind::kFuelProposal, {}}, std::nullopt});
}

void CompareSession::StopComparing() {
  if (!comparing_) return;
  comparing_ = false;
  pair_ = {};
  base_.reset();
  other_.reset();
  proposal_.reset();
  comparison_ = {};
  views_.fill(CompareView::kCurrent);
  emit Note("Comparing stopped");
  emit Changed();
}

bool CompareSession::Start(Picked base, Picked other) {
  const ComparePair pair{base.side, other.side};
  if (const std::optional<std::string> refusal = PairRefusal(pair)) {
    emit Note(QString::fromStdString(*refusal));
    return false;
  }
  comparing_ = true;
  pair_ = pair;
  if (pair_.other.kind != OtherSideKind::kFuelProposal) proposal_.reset();
  base_ = std::move(base.image);
  other_ = std::move(other.image);
  Recompute();
  const std::string first = Editable() ? "" : OtherSideText(pair_.base) + " ";
  emit Note(QString::fromStdString("Comparing " + first + "with " + OtherSideText(pair_.other)));
  return true;
}

const CalibrationImage* CompareSession::ImageOf(const OtherSide& side,
                                                const std::optional<CalibrationImage>& own) const {
  if (side.kind == OtherSideKind::kEditors) return &parts_.editors.image();
  if (side.kind != OtherSideKind::kEcu) return own ? &*own : nullptr;
  const std::optional<CalibrationImage>& ecu = parts_.editors.ecu_image();
  return ecu ? &*ecu : nullptr;
}

void CompareSession::Recompute() {
  if (!comparing_) return;
  if (proposal_) other_ = ProposedImage(parts_.editors.image(), *proposal_);
  const CalibrationImage* ours = ImageOf(pair_.base, base_);
  const CalibrationImage* theirs = ImageOf(pair_.other, other_);
  if (!ours || !theirs) return;
  comparison_ =
      CompareImages(*ours, *theirs, CompensationCompareTables(parts_.editors.state().sensors));
  emit Changed();
}

QString CompareSession::TakeOther(EditedMap map, MapGridModel& grid, bool whole_map) {
  const TableComparison* table = Table(map);
  if (!table) return "Nothing compared: Ctrl-Shift-Q chooses what to compare with.";
  if (const std::optional<std::string> refusal = TakeRefusal(pair_)) {
    return QString::fromStdString(*refusal);
  }
  const CellRect rect = whole_map ? WholeMap(grid) : SelectionOf(grid);
  const vela::TakeOther take =
      whole_map ? TakeOtherValues(*table) : TakeOtherValues(*table, ToMapCellRect(rect));
  const std::set<std::pair<int, int>> taken = [&] {
    std::set<std::pair<int, int>> cells;
    for (const MapCell& cell : take.cells) cells.insert({cell.row, cell.column});
    return cells;
  }();
  const TableComparison& from = *table;
  const CellTarget target = [&](int row, int column, double) {
    if (!taken.count({row, column})) return std::nan("");
    return from.Theirs({row, column}).value_or(std::nan(""));
  };
  const EditorState& state = parts_.editors.state();
  const DutyContext duty{state.setup.ignition_divide, state.setup.fuel_mode == kFuelModeSequential};
  const BulkChange change = ApplyTargets(grid, rect, target, duty);
  parts_.editors.CellsBulkEdited(map, grid, change.changed, EditKind::kTakeOther,
                                 OtherSideText(pair_.other));
  QString note = QString("Took %1 of %2")
                     .arg(Plural(static_cast<int>(change.changed.size()), "value", "values"),
                          QString::fromStdString(OtherSideText(pair_.other)));
  if (change.capped > 0) note += QString(", %1 held at the duty limit").arg(change.capped);
  if (take.skipped > 0) {
    note += QString(", %1 only one side holds").arg(Plural(take.skipped, "cell", "cells"));
  }
  return note;
}

QString CompareSession::SendDifferences(EditedMap map) {
  const TableComparison* table = Table(map);
  if (!table) return "Nothing compared: Ctrl-Shift-Q chooses what to compare with.";
  if (const std::optional<std::string> refusal = SendRefusal(pair_)) {
    return QString::fromStdString(*refusal);
  }
  const std::vector<int> positions = PositionsToSend(*table);
  parts_.editors.SendCells(positions);
  return QString("Sending %1 that differ from %2")
      .arg(Plural(static_cast<int>(positions.size()), "cell", "cells"),
           QString::fromStdString(OtherSideText(pair_.other)));
}

}  // namespace vela

#include "moc_compare_session.cpp"
