// The review state of the log on the DataLogging tab: its math channels and their evaluated
// columns, a second log laid over it with its alignment, and the chart's layout. The chart, the
// cursor read-out, the exports and the review views read it and follow Changed().
//
// The math channels are evaluated again whenever they change or the log is replaced; while the
// log grows (recording) they follow it at a calm pace, at most once per kGrowthEvaluationMs,
// evaluating only the records that may have changed (Grew()). The math channels and the
// layout are kept in the ".review" file beside the log: read when a log is loaded, written when
// it is saved.
#pragma once

#include <QElapsedTimer>
#include <QObject>
#include <QString>
#include <optional>
#include <string>
#include <vector>

#include "datalog/datalog_log.h"
#include "datalog/review/chart_layout.h"
#include "datalog/review/log_span.h"
#include "datalog/review/math_channels.h"
#include "datalog/review/review_file.h"
#include "datalog/review/two_logs.h"

namespace vela {

class FileSystem;

class ReviewSession : public QObject {
  Q_OBJECT

 public:
  // While recording, the math channels follow the log at most this often.
  static constexpr int kGrowthEvaluationMs = 1000;

  // `log` is the page's log; it outlives the session.
  ReviewSession(const DatalogLog& log, FileSystem& files, QObject* parent = nullptr);

  const DatalogLog& log() const { return log_; }

  // --- Math channels ---------------------------------------------------------------------
  const std::vector<review::MathChannel>& math() const { return math_; }
  // One per math channel, in the same order (a refused one: its error and no values).
  const std::vector<review::MathColumn>& math_columns() const { return columns_; }
  // The column of the math channel `name` (letters in any case), or nullptr.
  const review::MathColumn* MathColumnNamed(const std::string& name) const;
  void SetMath(std::vector<review::MathChannel> channels);
  // Math channel `at` becomes `channel`. A new name is followed by the channels after it (their
  // expressions name it anew) and by the layout, so nothing that used it is left behind.
  void EditMath(std::size_t at, review::MathChannel channel);
  // Math channel `at` removed, and from the layout's panels.
  void RemoveMath(std::size_t at);
  // Whether a math channel is drawn (its check box); every one is until it is turned off.
  bool MathShown(const std::string& name) const;
  void ShowMath(const std::string& name, bool shown);
  // What target() in an expression reads (empty: NaN). Evaluates again.
  void SetTarget(review::TargetLookup target);
  // The table the lookup reads changed: evaluates again.
  void TargetChanged();
  // The channels a log without a review file starts with (the defaults of the engine set-up).
  void SetDefaultMath(std::vector<review::MathChannel> channels);
  // The names of every channel with values in the log: the recorded ones by their export names,
  // then the math channels that were evaluated.
  std::vector<std::string> ColumnNames() const;
  // A channel of ColumnNames() (or any name a recorded channel is known by) as a column; nullopt
  // for an unknown name or a refused math channel.
  std::optional<review::ColumnView> Column(const std::string& name) const;
  const std::vector<review::MathChannel>& default_math() const { return default_math_; }

  // --- The log's life --------------------------------------------------------------------
  // The log was replaced by one read from `path` (empty: a recording, a recovered journal):
  // the review file beside it is read, or the defaults are taken.
  void LogReplaced(const std::string& path);
  // Records were added (recording): the math channels follow when kGrowthEvaluationMs have
  // passed since the last time, or when `now` is true (recording stopped). Only the records that
  // may have changed are evaluated, and Grew() says from where.
  void LogGrew(bool now = false);
  // The log was saved as `path`: the review file is written beside it. False (with the reason
  // in problems()) when it could not be written.
  bool LogSaved(const std::string& path);
  // The review file's lines that could not be used when it was read, or why a write failed.
  const std::vector<std::string>& problems() const { return problems_; }

  // --- The second log --------------------------------------------------------------------
  bool HasSecond() const { return second_.has_value(); }
  const DatalogLog* second() const { return second_ ? &*second_ : nullptr; }
  const std::string& second_path() const { return second_path_; }
  const review::LogAlignment& alignment() const { return alignment_; }
  // Both logs from their starts until aligned otherwise.
  void SetSecond(DatalogLog log, std::string path);
  void SetAlignment(const review::LogAlignment& alignment);
  void ClearSecond();
  // The math channels evaluated over the second log, as math_columns() (empty without one).
  const std::vector<review::MathColumn>& second_math_columns() const { return second_columns_; }

  // --- The layout ------------------------------------------------------------------------
  const review::ChartLayout& layout() const { return layout_; }
  void SetLayout(const review::ChartLayout& layout);
  // The tuner's default layout (ChartLayout.txt): what a log without a review file starts with.
  void SetDefaultLayout(const review::ChartLayout& layout) { default_layout_ = layout; }
  const review::ChartLayout& default_layout() const { return default_layout_; }

  // The state saved in the review file.
  review::ReviewState State() const { return {math_, hidden_math_, layout_}; }

 signals:
  // Anything above changed: math channels or their columns, the second log or its alignment,
  // the layout.
  void Changed();
  // The log grew and the math channels followed it: their columns changed from record `from`
  // on (the log's size: not at all); nothing else changed.
  void Grew(std::size_t from);

 private:
  // Both logs' columns afresh.
  void Evaluate();
  void EvaluateSecond();

  const DatalogLog& log_;
  FileSystem& files_;
  std::vector<review::MathChannel> math_;
  std::vector<review::MathChannel> default_math_;
  std::vector<review::MathColumn> columns_;
  review::MathWorkspace workspace_;
  std::size_t evaluated_records_ = 0;  // the log's records when columns_ was evaluated
  std::vector<review::MathColumn> second_columns_;
  review::MathWorkspace second_workspace_;
  std::vector<std::string> hidden_math_;
  review::TargetLookup target_;
  std::optional<DatalogLog> second_;
  std::string second_path_;
  review::LogAlignment alignment_;
  review::ChartLayout layout_;
  review::ChartLayout default_layout_;
  std::vector<std::string> problems_;
  QElapsedTimer since_evaluation_;
};

}  // namespace vela
