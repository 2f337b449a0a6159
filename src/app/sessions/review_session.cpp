#include "app/sessions/review_session.h"

#include <utility>

#include "base/file_system.h"

namespace vela {

ReviewSession::ReviewSession(const DatalogLog& log, FileSystem& files, QObject* parent)
    : QObject(parent), log_(log), files_(files) {
  since_evaluation_.start();
}

const review::MathColumn* ReviewSession::MathColumnNamed(const std::string& name) const {
  for (const review::MathColumn& column : columns_) {
    if (review::SameName(column.name, name)) return &column;
  }
  return nullptr;
}

std::vector<std::string> ReviewSession::ColumnNames() const {
  std::vector<std::string> names;
  for (int n = 0; n < kChannelCount; ++n) {
    if (log_.Series(n).points > 0) names.emplace_back(kChannels[n].name);
  }
  for (const review::MathColumn& column : columns_) {
    if (!column.error) names.push_back(column.name);
  }
  return names;
}

std::optional<review::ColumnView> ReviewSession::Column(const std::string& name) const {
  if (const std::optional<int> n = review::RecordedChannelNamed(name)) {
    return review::RecordedColumn(log_, *n);
  }
  const review::MathColumn* column = MathColumnNamed(name);
  if (!column || column->error) return std::nullopt;
  return review::ColumnView{column->values, &column->summaries};
}

void ReviewSession::SetMath(std::vector<review::MathChannel> channels) {
  math_ = std::move(channels);
  Evaluate();
  emit Changed();
}

void ReviewSession::SetTarget(review::TargetLookup target) {
  target_ = std::move(target);
  Evaluate();
  emit Changed();
}

void ReviewSession::SetDefaultMath(std::vector<review::MathChannel> channels) {
  default_math_ = std::move(channels);
}

void ReviewSession::LogReplaced(const std::string& path) {
  problems_.clear();
  review::ReviewState state{default_math_, default_layout_};
  if (!path.empty()) {
    const std::string review_path = review::ReviewPathFor(path);
    const FileHead head = files_.ReadHead(review_path, review::kMaxReviewFileBytes + 1);
    if (head.kind == FileHead::Kind::kFile) {
      review::ReviewRead read = review::ReadReviewFile(head.bytes);
      if (read.recognised) {
        state = std::move(read.state);
        problems_ = std::move(read.problems);
      } else {
        problems_.push_back(review_path + ": not a review file of this program; not used.");
      }
    }
  }
  math_ = std::move(state.math);
  layout_ = std::move(state.layout);
  Evaluate();
  emit Changed();
}

void ReviewSession::LogGrew(bool now) {
  if (math_.empty()) return;
  if (!now && since_evaluation_.elapsed() < kGrowthEvaluationMs) return;
  Evaluate();
  emit Changed();
}

bool ReviewSession::LogSaved(const std::string& path) {
  problems_.clear();
  const std::string review_path = review::ReviewPathFor(path);
  const int error = files_.WriteFile(review_path, review::ReviewFileText(State()));
  if (error == kFileErrorNone) return true;
  problems_.push_back(FileErrorLine(review_path, files_.LastWriteReason()));
  return false;
}

void ReviewSession::SetSecond(DatalogLog log, std::string path) {
  second_ = std::move(log);
  second_path_ = std::move(path);
  alignment_ = {};
  emit Changed();
}

void ReviewSession::SetAlignment(const review::LogAlignment& alignment) {
  alignment_ = alignment;
  emit Changed();
}

void ReviewSession::ClearSecond() {
  second_.reset();
  second_path_.clear();
  alignment_ = {};
  emit Changed();
}

void ReviewSession::SetLayout(const review::ChartLayout& layout) {
  layout_ = layout;
  emit Changed();
}

void ReviewSession::Evaluate() {
  review::EvaluateMathChannels(log_, math_, target_, workspace_, columns_);
  since_evaluation_.restart();
}

}  // namespace vela

#include "moc_review_session.cpp"
