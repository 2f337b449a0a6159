#include "app/review/distribution_view.h"

#include <QFormLayout>
#include <QHBoxLayout>
#include <QVBoxLayout>
#include <string>
#include <vector>

#include "app/sessions/review_session.h"

namespace vela {

namespace {

constexpr const char* kNoColour = "(none)";

QComboBox* DistributionChoice(const QString& name, QWidget* parent) {
  auto* box = new QComboBox(parent);
  box->setObjectName(name);
  box->setSizeAdjustPolicy(QComboBox::AdjustToContents);
  return box;
}

void ChooseText(QComboBox* box, const QString& text) {
  const int index = box->findText(text, Qt::MatchFixedString);
  if (index >= 0) box->setCurrentIndex(index);
}

}  // namespace

DistributionView::DistributionView(ReviewSession& review, std::function<CursorSpan()> cursors,
                                   QWidget* parent)
    : QDialog(parent), review_(review), cursors_(std::move(cursors)) {
  setObjectName("DatalogDistribution");
  setWindowTitle("Scatter and Histogram");
  auto* layout = new QVBoxLayout(this);
  auto* row = new QHBoxLayout;
  mode_ = DistributionChoice("DistributionMode", this);
  mode_->addItems({"Scatter", "Histogram"});
  x_ = DistributionChoice("DistributionX", this);
  y_ = DistributionChoice("DistributionY", this);
  colour_ = DistributionChoice("DistributionColour", this);
  span_ = DistributionChoice("DistributionSpan", this);
  span_->addItems({"Whole log", "Between the cursors"});
  const std::pair<const char*, QComboBox*> fields[] = {
      {"&Plot", mode_}, {"&X", x_}, {"&Y", y_}, {"Co&lour", colour_}, {"&Records", span_}};
  for (const auto& [caption, box] : fields) {
    auto* label = new QLabel(caption, this);
    label->setBuddy(box);
    box->setAccessibleName(QString(caption).remove('&'));
    row->addWidget(label);
    row->addWidget(box);
    connect(box, &QComboBox::currentIndexChanged, this, [this] {
      if (!filling_) Redraw();
    });
  }
  row->addStretch(1);
  layout->addLayout(row);
  plot_ = new DistributionPlot(this);
  plot_->setToolTip("Click: cursor A on the nearest record");
  layout->addWidget(plot_, 1);
  summary_ = new QLabel(this);
  summary_->setObjectName("DistributionSummary");
  layout->addWidget(summary_);
  connect(plot_, &DistributionPlot::Clicked, this, &DistributionView::Clicked);
  connect(plot_, &DistributionPlot::Resized, this, &DistributionView::Redraw);
  resize(800, 560);
  // AFR against RPM coloured by MAP to begin with, drawn when the view is shown.
  FillChannels();
  filling_ = true;
  ChooseText(x_, "RPM"), ChooseText(y_, "AFR"), ChooseText(colour_, "MAP");
  filling_ = false;
}

void DistributionView::FillChannels() {
  filling_ = true;
  const QString x = x_->currentText(), y = y_->currentText(), z = colour_->currentText();
  for (QComboBox* box : {x_, y_, colour_}) box->clear();
  colour_->addItem(kNoColour);
  for (const std::string& name : review_.ColumnNames()) {
    const QString text = QString::fromStdString(name);
    for (QComboBox* box : {x_, y_, colour_}) box->addItem(text);
  }
  ChooseText(x_, x), ChooseText(y_, y), ChooseText(colour_, z);
  filling_ = false;
}

void DistributionView::ShowScatter(const QString& x, const QString& y, const QString& colour) {
  filling_ = true;
  mode_->setCurrentIndex(0);
  ChooseText(x_, x), ChooseText(y_, y);
  ChooseText(colour_, colour.isEmpty() ? QString(kNoColour) : colour);
  filling_ = false;
  Redraw();
}

void DistributionView::ShowHistogram(const QString& channel) {
  filling_ = true;
  mode_->setCurrentIndex(1);
  ChooseText(x_, channel);
  filling_ = false;
  Redraw();
}

void DistributionView::SetBetweenCursors(bool between) { span_->setCurrentIndex(between ? 1 : 0); }

void DistributionView::Refresh() {
  if (!isVisible()) return;
  FillChannels();
  Redraw();
}

void DistributionView::CursorsMoved() {
  if (isVisible() && span_->currentIndex() == 1) Redraw();
}

review::RecordRange DistributionView::Records() const {
  const std::vector<double>& times = review_.log().Times();
  const CursorSpan cursors = cursors_ ? cursors_() : CursorSpan{};
  if (span_->currentIndex() == 1 && cursors.a && cursors.b) {
    return review::RecordsInSpan(times, std::min(*cursors.a, *cursors.b),
                                 std::max(*cursors.a, *cursors.b));
  }
  return review::WholeLog(times.size());
}

void DistributionView::Redraw() {
  const bool histogram = mode_->currentIndex() == 1;
  y_->setEnabled(!histogram);
  colour_->setEnabled(!histogram);
  const review::RecordRange records = Records();
  if (!histogram) return DrawScatter(records);
  const std::optional<review::ColumnView> column = review_.Column(x_->currentText().toStdString());
  if (!column) return plot_->ShowNothing("No channel to plot");
  const review::Histogram result = review::ComputeHistogram(*column, records);
  plot_->ShowHistogram(result, x_->currentText());
  summary_->setText(QString("%1 records in span, %2 with a value of %3")
                        .arg(records.size())
                        .arg(result.values)
                        .arg(x_->currentText()));
}

void DistributionView::DrawScatter(const review::RecordRange& records) {
  const std::optional<review::ColumnView> x = review_.Column(x_->currentText().toStdString());
  const std::optional<review::ColumnView> y = review_.Column(y_->currentText().toStdString());
  if (!x || !y) return plot_->ShowNothing("No channels to plot");
  const QRect area = plot_->PlotRect();
  const std::optional<review::ScatterGrid> grid = review::GridForColumns(
      *x, *y, records, std::max(1, area.width()), std::max(1, area.height()));
  if (!grid) return plot_->ShowNothing("No records with both channels in the span");
  const std::optional<review::ColumnView> z = review_.Column(colour_->currentText().toStdString());
  review::ComputeScatter(*x, *y, z.value_or(review::ColumnView{}), records, *grid, density_);
  plot_->ShowScatter(density_, x_->currentText(), y_->currentText(),
                     z ? colour_->currentText() : QString());
  summary_->setText(
      QString("%1 records in span, %2 drawn").arg(records.size()).arg(density_.points));
}

void DistributionView::Clicked(double px, double py) {
  const std::optional<review::ColumnView> x = review_.Column(x_->currentText().toStdString());
  const std::optional<review::ColumnView> y = review_.Column(y_->currentText().toStdString());
  if (!x || !y || density_.counts.empty()) return;
  const std::optional<std::size_t> record =
      review::NearestRecord(*x, *y, Records(), density_.grid, px, py);
  if (record) emit CursorTo(review_.log().Times()[*record]);
}

}  // namespace vela

#include "moc_distribution_view.cpp"
