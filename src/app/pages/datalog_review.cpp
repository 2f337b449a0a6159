// The DataLogging tab's review of its log: the math channels' rows and the second log's columns
// in the cursor read-out, the marker list under it, the buttons and keys that open the scatter
// and histogram view, the math channels' editor and the second log.
#include <QGridLayout>
#include <QHeaderView>
#include <QPushButton>
#include <QShortcut>
#include <QVBoxLayout>
#include <algorithm>
#include <cmath>
#include <functional>
#include <tuple>

#include "app/pages/datalog_page.h"
#include "app/review/distribution_view.h"
#include "app/review/marker_list_panel.h"
#include "app/review/math_channel_dialog.h"
#include "app/review/second_log_dialog.h"
#include "app/sessions/review_session.h"
#include "app/widgets/chart_review.h"
#include "base/qt/qt_platform.h"
#include "datalog/files/log_export.h"

namespace vela {

namespace {

constexpr int kFirstMathRow = kChannelCount + 2;
constexpr int kSecondColumn = 4;
constexpr int kDeltaColumn = 5;
constexpr int kSecondWidth = 120;
constexpr int kPlainReadoutWidth = 300;  // the read-out's width without the second log

QString Figure(std::optional<double> value, int decimals) {
  if (!value || !std::isfinite(*value)) return "-";
  return QString::fromStdString(FixedText(*value, decimals))
      .replace(QLatin1Char('.'), QLatin1Char(SystemDecimalSeparator()));
}

// The value of `column` at the record shown at `time` (the last at or before it).
std::optional<double> ColumnAt(const DatalogLog& log, std::span<const float> column, double time) {
  const std::vector<double>& times = log.Times();
  const auto after = std::upper_bound(times.begin(), times.end(), time + 1e-9);
  if (after == times.begin()) return std::nullopt;
  const auto record = static_cast<std::size_t>(after - times.begin() - 1);
  if (record >= column.size() || std::isnan(column[record])) return std::nullopt;
  return column[record];
}

}  // namespace

void DatalogPage::BuildReview() {
  review_ = new ReviewSession(log_, parts_.files, this);
  connect(review_, &ReviewSession::Changed, this, &DatalogPage::ReviewChanged);
  connect(review_, &ReviewSession::Grew, this, &DatalogPage::ShowCursorValues);
  AddReviewKeys();
  DrawReview(*review_);
}

QWidget* DatalogPage::BuildReviewButtons(QWidget* parent) {
  auto* box = new QWidget(parent);
  auto* grid = new QGridLayout(box);
  grid->setContentsMargins(0, 0, 0, 0);
  grid->setSpacing(2);
  const std::tuple<const char*, const char*, std::function<void()>> buttons[] = {
      {"Math Channels...", "DatalogMathChannelsButton", [this] { OpenMathChannels(); }},
      {"Scatter / Histogram...", "DatalogScatterButton", [this] { OpenDistribution(); }},
      {"Load Second Log...", "DatalogLoadSecondButton", [this] { LoadSecondLog(); }},
      {"Align Second Log...", "DatalogAlignSecondButton", [this] { AlignSecondLog(); }}};
  int i = 0;
  for (const auto& [caption, name, action] : buttons) {
    auto* button = new QPushButton(caption, box);
    button->setObjectName(name);
    button->setFocusPolicy(Qt::NoFocus);
    connect(button, &QPushButton::clicked, this, action);
    grid->addWidget(button, i / 2, i % 2);
    ++i;
  }
  return box;
}

void DatalogPage::AddReviewKeys() {
  const std::pair<QKeySequence, std::function<void()>> keys[] = {
      {QKeySequence(Qt::CTRL | Qt::SHIFT | Qt::Key_L), [this] { marker_list_->setFocus(); }},
      {QKeySequence(Qt::CTRL | Qt::SHIFT | Qt::Key_D), [this] { OpenDistribution(); }},
      {QKeySequence(Qt::CTRL | Qt::SHIFT | Qt::Key_E), [this] { OpenMathChannels(); }},
      {QKeySequence(Qt::CTRL | Qt::SHIFT | Qt::Key_O), [this] { LoadSecondLog(); }},
      {QKeySequence(Qt::CTRL | Qt::SHIFT | Qt::Key_A), [this] { AlignSecondLog(); }}};
  for (const auto& [sequence, action] : keys) {
    auto* shortcut = new QShortcut(sequence, this);
    shortcut->setContext(Qt::WidgetWithChildrenShortcut);
    connect(shortcut, &QShortcut::activated, this, action);
  }
}

QWidget* DatalogPage::BuildMarkerList(QWidget* parent) {
  marker_list_ = new MarkerListPanel(log_, parent);
  // A few rows, fewer on a small screen: the cursor read-out above keeps the room.
  marker_list_->setMinimumHeight(58);
  marker_list_->setMaximumHeight(96);
  connect(marker_list_, &MarkerListPanel::JumpTo, this, &DatalogPage::PutCursorA);
  connect(marker_list_, &MarkerListPanel::TextEdited, chart_, [this] { chart_->update(); });
  connect(marker_list_, &MarkerListPanel::Leave, chart_, [this] { chart_->setFocus(); });
  return marker_list_;
}

void DatalogPage::PutCursorA(double time) {
  chart_->PutCursorA(time);
  chart_->setFocus();
}

DistributionView* DatalogPage::OpenDistribution() {
  if (!distribution_) {
    distribution_ = new DistributionView(
        *review_,
        [this] {
          return CursorSpan{chart_->CursorA(), chart_->CursorB()};
        },
        this);
    distribution_->setWindowFlag(Qt::Window);
    connect(distribution_, &DistributionView::CursorTo, chart_, &DatalogChart::PutCursorA);
    connect(review_, &ReviewSession::Changed, distribution_, &DistributionView::Refresh);
    connect(review_, &ReviewSession::Grew, distribution_, &DistributionView::Refresh);
    connect(chart_, &DatalogChart::CursorsChanged, distribution_, &DistributionView::CursorsMoved);
  }
  distribution_->show();
  distribution_->Refresh();
  distribution_->raise();
  distribution_->activateWindow();
  return distribution_;
}

void DatalogPage::OpenMathChannels() {
  MathChannelsDialog dialog(*review_, this);
  dialog.exec();
}

void DatalogPage::LoadSecondLog() {
  if (Logging()) return;
  DatalogLog second;
  const DatalogLoadResult loaded = files_.LoadDatalog(second);
  if (loaded.result != DatalogFileResult::kDone) return;
  review_->SetSecond(std::move(second), loaded.path);
  AlignSecondLog();
}

void DatalogPage::AlignSecondLog() {
  if (!review_->second()) return;
  SecondLogDialog dialog(log_, *review_->second(), review_->second_path(), review_->alignment(),
                         this);
  const int answer = dialog.exec();
  if (answer == SecondLogDialog::kRemoved) review_->ClearSecond();
  if (answer != QDialog::Accepted) return;
  if (const std::optional<review::LogAlignment> alignment = dialog.Alignment()) {
    review_->SetAlignment(*alignment);
  }
}

void DatalogPage::ReviewChanged() {
  if (cursor_values_ == nullptr) return;  // the read-out is built after the session
  const int rows = kFirstMathRow + static_cast<int>(review_->math_columns().size());
  cursor_values_->setRowCount(rows);
  for (int row = kFirstMathRow; row < rows; ++row) {
    const review::MathColumn& column = review_->math_columns()[row - kFirstMathRow];
    auto* name = new QTableWidgetItem(QString::fromStdString(column.name));
    name->setForeground(QColor(230, 230, 140));
    if (column.error) name->setToolTip(QString::fromStdString(column.error->reason));
    cursor_values_->setItem(row, 0, name);
  }
  const bool second = review_->HasSecond();
  cursor_values_->setColumnCount(second ? 6 : 4);
  if (second) {
    cursor_values_->setHorizontalHeaderItem(kSecondColumn, new QTableWidgetItem("2nd A"));
    cursor_values_->setHorizontalHeaderItem(kDeltaColumn, new QTableWidgetItem("A - 2nd"));
  }
  cursor_values_->parentWidget()->setFixedWidth(kPlainReadoutWidth + (second ? kSecondWidth : 0));
  ShowMathChannels();
  chart_->update();
  ShowCursorValues();
}

void DatalogPage::ShowMathChannels() {
  std::vector<std::pair<std::string, std::size_t>> shown;  // name, place in the list
  const std::vector<review::MathColumn>& columns = review_->math_columns();
  for (std::size_t i = 0; i < columns.size(); ++i) {
    if (!columns[i].error) shown.emplace_back(columns[i].name, i);
  }
  const bool same = shown.size() == math_checks_.size() &&
                    std::equal(shown.begin(), shown.end(), math_checks_.begin(),
                               [](const auto& math, const QCheckBox* check) {
                                 return check->text().toStdString() == math.first;
                               });
  if (!same) {
    for (QCheckBox* check : math_checks_) delete check;
    math_checks_.clear();
    for (const auto& [name, place] : shown) {
      auto* check = new QCheckBox(QString::fromStdString(name), channels_grid_->parentWidget());
      check->setObjectName(QString("DatalogMathCheck_%1").arg(math_checks_.size()));
      check->setToolTip("Math channel " + check->text() + ": drawn on the chart while ticked");
      QPalette palette = check->palette();
      palette.setColor(QPalette::WindowText, MathColour(place));
      check->setPalette(palette);
      check->setFocusPolicy(Qt::NoFocus);
      connect(check, &QCheckBox::toggled, this,
              [this, name](bool on) { review_->ShowMath(name, on); });
      const int at = kChannelCount + static_cast<int>(math_checks_.size());
      channels_grid_->addWidget(check, at / 6, at % 6);
      math_checks_.push_back(check);
    }
    const QSignalBlocker block(axis_channel_);
    while (axis_channel_->count() > kChannelCount) axis_channel_->removeItem(kChannelCount);
    for (const auto& math : shown) axis_channel_->addItem(QString::fromStdString(math.first));
  }
  for (QCheckBox* check : math_checks_) {
    const QSignalBlocker block(check);
    check->setChecked(review_->MathShown(check->text().toStdString()));
  }
  ShowAxisChannel();
}

void DatalogPage::AxisChosen(int index) {
  if (index < kChannelCount) {
    chart_->SetAxisChannel(index);
  } else {
    chart_->SelectChannel(axis_channel_->itemText(index).toStdString());
  }
}

void DatalogPage::ShowAxisChannel() {
  if (axis_channel_ == nullptr) return;
  const std::string& selected = chart_->Layout().Selected();
  int index = chart_->AxisChannel();
  if (!review::RecordedChannelNamed(selected)) {
    const int math =
        axis_channel_->findText(QString::fromStdString(selected), Qt::MatchFixedString);
    if (math >= kChannelCount) index = math;
  }
  const QSignalBlocker block(axis_channel_);
  axis_channel_->setCurrentIndex(index);
}

void DatalogPage::ShowReviewValues(std::optional<double> a, std::optional<double> b) {
  const auto set = [this](int row, int column, const QString& text) {
    if (QTableWidgetItem* item = cursor_values_->item(row, column)) {
      item->setText(text);
    } else {
      cursor_values_->setItem(row, column, new QTableWidgetItem(text));
    }
  };
  const std::vector<review::MathColumn>& math = review_->math_columns();
  for (int i = 0; i < static_cast<int>(math.size()); ++i) {
    const std::optional<double> va = a ? ColumnAt(log_, math[i].values, *a) : std::nullopt;
    const std::optional<double> vb = b ? ColumnAt(log_, math[i].values, *b) : std::nullopt;
    set(kFirstMathRow + i, 1, Figure(va, 3));
    set(kFirstMathRow + i, 2, Figure(vb, 3));
    set(kFirstMathRow + i, 3, Figure(va && vb ? std::optional(*vb - *va) : std::nullopt, 3));
  }
  const DatalogLog* second = review_->second();
  if (!second) return;
  const std::vector<review::MathColumn>& theirs_math = review_->second_math_columns();
  const std::optional<std::size_t> their_record =
      a ? review::SecondRecordAt(*second, review_->alignment(), *a) : std::nullopt;
  for (int i = 0; i < static_cast<int>(math.size()); ++i) {
    std::optional<double> mine = a ? ColumnAt(log_, math[i].values, *a) : std::nullopt;
    std::optional<double> theirs;
    if (their_record && static_cast<std::size_t>(i) < theirs_math.size()) {
      const float value = review::ValueOr(theirs_math[i].values, *their_record);
      if (!std::isnan(value)) theirs = value;
    }
    set(kFirstMathRow + i, kSecondColumn, Figure(theirs, 3));
    set(kFirstMathRow + i, kDeltaColumn,
        Figure(mine && theirs ? std::optional(*mine - *theirs) : std::nullopt, 3));
  }
  for (int n = 0; n < kChannelCount; ++n) {
    const std::optional<double> mine = a ? log_.ValueAt(n, *a) : std::nullopt;
    const std::optional<double> theirs =
        a ? review::SecondValueAt(*second, review_->alignment(), n, *a) : std::nullopt;
    const int decimals = kChannels[n].decimals;
    set(n + 2, kSecondColumn, Figure(theirs, decimals));
    set(n + 2, kDeltaColumn,
        Figure(mine && theirs ? std::optional(*mine - *theirs) : std::nullopt, decimals));
  }
}

std::vector<CsvColumn> DatalogPage::MathCsvColumns() const {
  std::vector<CsvColumn> columns;
  for (const review::MathColumn& column : review_->math_columns()) {
    if (!column.error) columns.push_back({column.name, column.values, 3});
  }
  return columns;
}

}  // namespace vela
