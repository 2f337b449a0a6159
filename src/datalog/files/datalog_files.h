// Datalogs on disk: the chart file (*.sl1) saved and loaded, the old text export (*.dl1) and the
// CSV export, each through the file dialog with the program's folder and file-name rules. Every
// file is written to a temporary file and renamed, so a failed save leaves an older file intact.
#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>

#include "base/file_system.h"
#include "base/platform.h"
#include "base/program_folders.h"
#include "datalog/datalog_log.h"
#include "datalog/files/log_export.h"
#include "datalog/files/log_file.h"

namespace vela {

// The chart file is this program's own format, and its filter says so. The filters keep their
// stray quotation mark.
inline constexpr std::string_view kDatalogFilter =
    "MORVANE DataLogs, VELA chart format (*.sl1)|*.sl1|\"All DataLogs (*.sl*)|*.sl*|";
inline constexpr std::string_view kSaveDatalogTitle = "Save MORVANE VELA DataLog to Hard Disk";
inline constexpr std::string_view kLoadDatalogTitle = "Load MORVANE VELA DataLog from Hard Disk";
inline constexpr std::string_view kDl1Filter =
    "MORVANE DataLog (*.dl1)|*.dl1|\"MORVANE DataLog (*.dl1)|*.dl1|";
inline constexpr std::string_view kDl1Title = "Save MORVANE ECU DataLog to Hard Disk";
inline constexpr std::string_view kDl1Extension = ".dl1";
inline constexpr std::string_view kCsvFilter = "CSV, comma separated values (*.csv)|*.csv|";
inline constexpr std::string_view kCsvTitle = "Export MORVANE VELA DataLog as CSV";
inline constexpr std::string_view kCsvExtension = ".csv";
inline constexpr std::string_view kChartExtension = ".SL1";
inline constexpr std::string_view kPictureFilter = "PNG picture (*.png)|*.png|";
inline constexpr std::string_view kPictureTitle = "Export MORVANE VELA DataLog chart as PNG";
inline constexpr std::string_view kPictureExtension = ".png";

inline constexpr std::string_view kSaveFolderMissingLine =
    "Folder not found. Please select the correct Datalogs folder to save your datalogs.";
inline constexpr std::string_view kLoadFolderMissingLine =
    "Folder not found. Please select the correct Datalogs folder where your datalogs are saved.";
inline constexpr std::string_view kDatalogSaveRefused =
    "Invalid File Name. This datalog will NOT be saved.";
inline constexpr std::string_view kDatalogLoadRefused =
    "Invalid File Name. This datalog will NOT be loaded.";

// `DatalogFileKind`: 3 saves the chart file, 1 or 2 the text export.
inline constexpr std::uint8_t kDatalogKindChart = 3;
inline constexpr std::uint8_t kDatalogKindText = 1;

// The name part of `path` holds at most four dots.
bool DatalogNameAccepted(const std::string& path);
// Where a chart save of the chosen `path` goes: cut before the last of the name's first four dots
// and ".SL1" added; a name without a dot as it stands; nullopt when the name has five dots.
std::optional<std::string> ChartSavePath(const std::string& path);

enum class DatalogFileResult { kDone, kCancelled, kRefused, kFailed };

struct DatalogLoadResult {
  DatalogFileResult result = DatalogFileResult::kCancelled;
  LogFileReport report;
  std::string path;  // the file chosen
};

class DatalogFiles {
 public:
  // `dialog_folder` is the folder the program's file dialogs last showed, shared with the maps.
  DatalogFiles(FileSystem& files, FileDialogs& dialogs, MessageSink& messages,
               const ProgramFolders& folders, std::string& dialog_folder)
      : files_(files),
        dialogs_(dialogs),
        messages_(messages),
        folders_(folders),
        dialog_folder_(dialog_folder) {}

  // `Command6` index 2: the chart file or the text export, by `DatalogFileKind`.
  DatalogFileResult Save(const DatalogLog& log);
  DatalogFileResult SaveDatalog3(const DatalogLog& log);
  DatalogFileResult SaveDatalog1(const DatalogLog& log);
  DatalogFileResult ExportCsv(const DatalogLog& log, std::span<const CsvColumn> extra = {});
  // The records from `from` to `to` of log time as CSV, through the same dialog.
  DatalogFileResult ExportCsvSpan(const DatalogLog& log, double from, double to,
                                  std::span<const CsvColumn> extra = {});
  // A picture of the chart, already encoded as PNG: `png` is asked for only once a name is
  // chosen.
  DatalogFileResult ExportPicture(const std::function<std::string()>& png);
  // `Command6` index 1: a chart file replaces `log`. A file that is not a datalog leaves `log` as
  // it was; a damaged one loads what is intact and says what was lost.
  DatalogLoadResult LoadDatalog(DatalogLog& log);

  std::uint8_t DatalogFileKind = kDatalogKindChart;
  // The chart file the last Save wrote (empty: none yet).
  std::string saved_path;

 private:
  std::string InitialFolder(std::string_view missing_line);
  void Remember(const std::string& path);
  // A file to export to, asked in the save folder; `extension` added to a name without a dot.
  std::optional<std::string> AskExportPath(std::string_view filter, std::string_view title,
                                           std::string_view extension);
  // The CSV dialog's chosen path with ".csv" added to a name without a dot.
  std::optional<std::string> AskCsvPath();
  DatalogFileResult Write(const std::string& path, const std::string& content,
                          std::string_view title);

  FileSystem& files_;
  FileDialogs& dialogs_;
  MessageSink& messages_;
  const ProgramFolders& folders_;
  std::string& dialog_folder_;
};

}  // namespace vela
