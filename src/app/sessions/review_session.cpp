#include "app/sessions/review_session.h"

#include <algorithm>
#include <utility>

#include "base/file_system.h"
#include "datalog/review/math_rename.h"

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

void ReviewSession::EditMath(std::size_t at, review::MathChannel channel) {
  if (at >= math_.size()) return;
  if (math_[at].name != channel.name) {
    for (std::string& hidden : hidden_math_) {
      if (review::SameName(hidden, math_[at].name)) hidden = channel.name;
    }
    review::RenameMathChannel(math_, layout_, at, channel.name);
  }
  math_[at].expression = std::move(channel.expression);
  Evaluate();
  emit Changed();
}

void ReviewSession::RemoveMath(std::size_t at) {
  if (at >= math_.size()) return;
  layout_.Remove(math_[at].name);
  // A channel later given this name starts shown, as any new channel does.
  std::erase_if(hidden_math_,
                [&](const std::string& h) { return review::SameName(h, math_[at].name); });
  math_.erase(math_.begin() + static_cast<std::ptrdiff_t>(at));
  Evaluate();
  emit Changed();
}

bool ReviewSession::MathShown(const std::string& name) const {
  return std::none_of(hidden_math_.begin(), hidden_math_.end(),
                      [&](const std::string& hidden) { return review::SameName(hidden, name); });
}

void ReviewSession::ShowMath(const std::string& name, bool shown) {
  if (MathShown(name) == shown) return;
  if (shown) {
    std::erase_if(hidden_math_, [&](const std::string& h) { return review::SameName(h, name); });
  } else {
    hidden_math_.push_back(name);
  }
  emit Changed();
}

void ReviewSession::SetTarget(review::TargetLookup target) {
  target_ = std::move(target);
  Evaluate();
  emit Changed();
}

void ReviewSession::TargetChanged() {
  Evaluate();
  emit Changed();
}

void ReviewSession::SetDefaultMath(std::vector<review::MathChannel> channels) {
  default_math_ = std::move(channels);
}

void ReviewSession::LogReplaced(const std::string& path) {
  problems_.clear();
  review::ReviewState state{default_math_, {}, default_layout_};
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
  hidden_math_ = std::move(state.hidden);
  Evaluate();
  emit Changed();
}

void ReviewSession::LogGrew(bool now) {
  if (!now && since_evaluation_.elapsed() < kGrowthEvaluationMs) return;
  const std::size_t from =
      review::ExtendMathChannels(log_, math_, target_, workspace_, columns_, evaluated_records_);
  evaluated_records_ = log_.RecordCount();
  since_evaluation_.restart();
  emit Grew(from);
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
  EvaluateSecond();
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
  second_columns_.clear();
  emit Changed();
}

void ReviewSession::SetLayout(const review::ChartLayout& layout) {
  layout_ = layout;
  emit Changed();
}

void ReviewSession::Evaluate() {
  review::EvaluateMathChannels(log_, math_, target_, workspace_, columns_);
  evaluated_records_ = log_.RecordCount();
  since_evaluation_.restart();
  EvaluateSecond();
}

// The second log does not grow; its columns follow the channels and the target table.
void ReviewSession::EvaluateSecond() {
  if (!second_) return;
  review::EvaluateMathChannels(*second_, math_, target_, second_workspace_, second_columns_);
}

}  // namespace vela

#include "moc_review_session.cpp"
