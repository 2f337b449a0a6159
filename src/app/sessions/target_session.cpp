#include "app/sessions/target_session.h"

#include "app/sessions/editor_session.h"
#include "base/file_system.h"
#include "base/platform.h"

namespace vela {

namespace {

constexpr const char* kDefaultTargetFile = "default.afr.csv";

std::string FileNameOf(const std::string& path) {
  const std::size_t slash = path.find_last_of("/\\");
  return slash == std::string::npos ? path : path.substr(slash + 1);
}

}  // namespace

std::string DefaultTargetPath(const std::string& program_folder) {
  if (program_folder.empty()) return kDefaultTargetFile;
  const char last = program_folder.back();
  const bool ends_in_slash = last == '/' || last == '\\';
  return program_folder + (ends_in_slash ? "" : "/") + kDefaultTargetFile;
}

TargetSession::TargetSession(EditorSession& editors, FileSystem& files, MessageSink& messages,
                             std::string program_folder, QObject* parent)
    : QObject(parent),
      editors_(editors),
      files_(files),
      messages_(messages),
      program_folder_(std::move(program_folder)),
      edits_(TargetTable(FuelAxesOf(editors.image()))) {
  connect(&editors_, &EditorSession::MapInUseChanged, this, [this] { Follow(); });
  connect(&editors_, &EditorSession::EditorsFilled, this, [this] { Follow(); });
  connect(&editors_, &EditorSession::MapFileSaved, this,
          [this](const QString& path) { SavedAs(path.toStdString()); });
}

TargetTable TargetSession::TableOn(const TuneAxes& axes) const {
  return table().Axes() == axes ? table() : TargetOnAxes(table(), axes);
}

void TargetSession::Follow() {
  const TuneAxes axes = FuelAxesOf(editors_.image());
  const std::string map_path = editors_.map_path();
  if (!opened_ || map_path != map_path_) {
    Open(map_path, axes);
    return;
  }
  if (axes == table().Axes()) return;
  // The set-up moved the fuel maps' axes: the targets follow them to the new sites.
  edits_.Reset(TargetOnAxes(table(), axes));
  Write();
  emit Changed();
}

void TargetSession::Open(const std::string& map_path, const TuneAxes& axes) {
  opened_ = true;
  map_path_ = map_path;
  path_ = map_path.empty() ? DefaultTargetPath(program_folder_) : TargetPathFor(map_path);
  TargetTable table(axes);
  const std::optional<std::string> csv = files_.ReadFile(path_);
  if (csv) {
    TargetRead read = ReadTargetCsv(*csv, axes);
    if (read.table) {
      table = std::move(*read.table);
    } else {
      std::vector<std::string> lines = {"The target table " + path_ + " was refused:"};
      lines.insert(lines.end(), read.refusals.begin(), read.refusals.end());
      lines.push_back(
          "The default targets are used. The file is left as it is until a target is "
          "changed; the first change replaces it.");
      messages_.Show(MessageIcon::kExclamation, "Target AFR Table", lines);
    }
  }
  edits_.Reset(std::move(table));
  emit Changed();
}

void TargetSession::SavedAs(const std::string& map_path) {
  if (map_path == map_path_) return;
  // The map file's targets go with it to its new name.
  map_path_ = map_path;
  path_ = TargetPathFor(map_path);
  Write();
}

bool TargetSession::Change(const TargetTable& table, const QString& what) {
  if (!(table.Axes() == this->table().Axes()) || !edits_.Change(table)) {
    emit Note("No target changed");
    return false;
  }
  Write();
  emit Changed();
  if (!what.isEmpty()) emit Note(what);
  return true;
}

bool TargetSession::ResetToDefault() {
  return Change(TargetTable(table().Axes()), "Targets set to the default");
}

bool TargetSession::Undo() {
  if (!edits_.Undo()) {
    emit Note("Nothing to undo");
    return false;
  }
  Write();
  emit Changed();
  emit Note("Target change undone");
  return true;
}

bool TargetSession::Redo() {
  if (!edits_.Redo()) {
    emit Note("Nothing to redo");
    return false;
  }
  Write();
  emit Changed();
  emit Note("Target change redone");
  return true;
}

void TargetSession::Write() {
  if (files_.WriteFile(path_, TargetCsv(table())) == kFileErrorNone) return;
  const std::string line = FileErrorLine(FileNameOf(path_), files_.LastWriteReason());
  emit Note(QString::fromStdString("The targets could not be written: " + line));
}

}  // namespace vela

#include "moc_target_session.cpp"
