#include "datalog/files/datalog_files.h"

#include <algorithm>
#include <array>

#include "base/file_names.h"
#include "datalog/files/log_export.h"

namespace vela {

namespace {

constexpr std::string_view kUnchangedLine = "Any file of that name on disk is unchanged.";

// Positions of the first four dots of the name and whether a fifth follows.
struct NameDots {
  std::array<std::size_t, kMaxDotsInFileName> at{};
  int count = 0;
  bool too_many = false;
};

NameDots DotsOf(const std::string& path) {
  NameDots dots;
  std::size_t from = NameStart(path);
  while (true) {
    const std::size_t dot = path.find('.', from);
    if (dot == std::string::npos) break;
    if (dots.count == kMaxDotsInFileName) {
      dots.too_many = true;
      break;
    }
    dots.at[dots.count++] = dot;
    from = dot + 1;
  }
  return dots;
}

std::string Slashed(std::string path) {
  std::replace(path.begin(), path.end(), '\\', '/');
  return path;
}

bool HasDot(const std::string& path) {
  return path.find('.', NameStart(path)) != std::string::npos;
}

}  // namespace

bool DatalogNameAccepted(const std::string& path) { return !DotsOf(path).too_many; }

std::optional<std::string> ChartSavePath(const std::string& path) {
  const NameDots dots = DotsOf(path);
  if (dots.too_many) return std::nullopt;
  if (dots.count == 0) return path;
  return path.substr(0, dots.at[dots.count - 1]) + std::string(kChartExtension);
}

std::string DatalogFiles::InitialFolder(std::string_view missing_line) {
  if (!files_.IsDirectory(folders_.datalogs)) {
    messages_.Show(MessageIcon::kExclamation, std::string(kFolderNotFoundTitle),
                   {std::string(missing_line)});
  }
  if (dialog_folder_.empty() ||
      Slashed(dialog_folder_).find(Slashed(folders_.maps)) != std::string::npos) {
    dialog_folder_ = folders_.datalogs;
  }
  return dialog_folder_;
}

void DatalogFiles::Remember(const std::string& path) {
  const std::size_t start = NameStart(path);
  if (start > 0) dialog_folder_ = path.substr(0, start);
}

DatalogFileResult DatalogFiles::Write(const std::string& path, const std::string& content,
                                      std::string_view title) {
  const int error = files_.WriteFile(path, content);
  if (error == kFileErrorNone) return DatalogFileResult::kDone;
  messages_.Show(MessageIcon::kCritical, std::string(title),
                 {"The datalog could not be saved (error " + std::to_string(error) + ").",
                  std::string(kUnchangedLine)});
  return DatalogFileResult::kFailed;
}

DatalogFileResult DatalogFiles::Save(const DatalogLog& log) {
  return DatalogFileKind == kDatalogKindChart ? SaveDatalog3(log) : SaveDatalog1(log);
}

DatalogFileResult DatalogFiles::SaveDatalog3(const DatalogLog& log) {
  const std::optional<std::string> chosen =
      dialogs_.AskSavePath(std::string(kDatalogFilter), std::string(kSaveDatalogTitle),
                           InitialFolder(kSaveFolderMissingLine));
  if (!chosen) return DatalogFileResult::kCancelled;
  Remember(*chosen);
  const std::optional<std::string> path = ChartSavePath(*chosen);
  if (!path) {
    messages_.Show(MessageIcon::kNone, std::string(kSaveDatalogTitle),
                   {std::string(kDatalogSaveRefused)});
    return DatalogFileResult::kRefused;
  }
  if (files_.ReadFile(*path) && messages_.Show(MessageIcon::kQuestion, std::string(kOverwriteTitle),
                                               {std::string(kOverwriteLine)},
                                               MessageButtons::kYesNo) != MessageAnswer::kYes) {
    return DatalogFileResult::kCancelled;
  }
  const DatalogFileResult result = Write(*path, EncodeLogFile(log), kSaveDatalogTitle);
  if (result == DatalogFileResult::kDone) saved_path = *path;
  return result;
}

DatalogFileResult DatalogFiles::SaveDatalog1(const DatalogLog& log) {
  const std::optional<std::string> chosen =
      dialogs_.AskSavePath(std::string(kDl1Filter), std::string(kDl1Title), folders_.datalogs);
  if (!chosen) return DatalogFileResult::kCancelled;
  const std::string path = HasDot(*chosen) ? *chosen : *chosen + std::string(kDl1Extension);
  return Write(path, Dl1Text(log), kDl1Title);
}

std::optional<std::string> DatalogFiles::AskExportPath(std::string_view filter,
                                                       std::string_view title,
                                                       std::string_view extension) {
  const std::optional<std::string> chosen = dialogs_.AskSavePath(
      std::string(filter), std::string(title), InitialFolder(kSaveFolderMissingLine));
  if (!chosen) return std::nullopt;
  Remember(*chosen);
  return HasDot(*chosen) ? *chosen : *chosen + std::string(extension);
}

std::optional<std::string> DatalogFiles::AskCsvPath() {
  return AskExportPath(kCsvFilter, kCsvTitle, kCsvExtension);
}

DatalogFileResult DatalogFiles::ExportCsv(const DatalogLog& log, std::span<const CsvColumn> extra) {
  const std::optional<std::string> path = AskCsvPath();
  if (!path) return DatalogFileResult::kCancelled;
  return Write(*path, CsvText(log, extra), kCsvTitle);
}

DatalogFileResult DatalogFiles::ExportCsvSpan(const DatalogLog& log, double from, double to,
                                              std::span<const CsvColumn> extra) {
  const std::optional<std::string> path = AskCsvPath();
  if (!path) return DatalogFileResult::kCancelled;
  return Write(*path, CsvText(log, from, to, extra), kCsvTitle);
}

DatalogFileResult DatalogFiles::ExportPicture(const std::function<std::string()>& png) {
  const std::optional<std::string> path =
      AskExportPath(kPictureFilter, kPictureTitle, kPictureExtension);
  if (!path) return DatalogFileResult::kCancelled;
  const std::string bytes = png();
  if (bytes.empty()) {
    messages_.Show(MessageIcon::kCritical, std::string(kPictureTitle),
                   {"The picture of the chart could not be made.", std::string(kUnchangedLine)});
    return DatalogFileResult::kFailed;
  }
  return Write(*path, bytes, kPictureTitle);
}

DatalogLoadResult DatalogFiles::LoadDatalog(DatalogLog& log) {
  DatalogLoadResult outcome;
  // "All DataLogs" lists every chart file by its content too: a log saved under a name without
  // a dot has no extension.
  const FileDialogs::ContentListing chart_files{1, kLogFileHeadBytes, LooksLikeLogFile};
  const std::optional<std::string> path =
      dialogs_.AskOpenPathListing(std::string(kDatalogFilter), std::string(kLoadDatalogTitle),
                                  InitialFolder(kLoadFolderMissingLine), chart_files);
  if (!path) return outcome;
  Remember(*path);
  outcome.path = *path;
  if (!DatalogNameAccepted(*path)) {
    messages_.Show(MessageIcon::kNone, std::string(kLoadDatalogTitle),
                   {std::string(kDatalogLoadRefused)});
    outcome.result = DatalogFileResult::kRefused;
    return outcome;
  }
  // The shown log is replaced only by a file that is read as a datalog.
  const std::optional<std::string> bytes = files_.ReadFile(*path);
  if (bytes) outcome.report = DecodeLogFile(*bytes, log);
  if (!outcome.report.recognised) {
    messages_.Show(MessageIcon::kExclamation, std::string(kLoadDatalogTitle),
                   {"This file is not a MORVANE VELA datalog this program can read.",
                    "The chart keeps what it holds."});
    outcome.result = DatalogFileResult::kFailed;
    return outcome;
  }
  const std::vector<std::string> loss = DescribeLoss(outcome.report, log);
  if (!loss.empty())
    messages_.Show(MessageIcon::kExclamation, std::string(kLoadDatalogTitle), loss);
  outcome.result = DatalogFileResult::kDone;
  return outcome;
}

}  // namespace vela
