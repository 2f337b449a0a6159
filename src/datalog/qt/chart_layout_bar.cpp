#include "datalog/qt/chart_layout_bar.h"

#include <QHBoxLayout>
#include <QLabel>
#include <QSignalBlocker>

#include "datalog/channels.h"

namespace vela {

namespace {

constexpr double kScaleLimit = 1e9;

template <typename Control>
Control* Focusable(Control* control, const char* name, const char* accessible) {
  control->setObjectName(name);
  control->setAccessibleName(accessible);
  control->setFocusPolicy(Qt::StrongFocus);
  return control;
}

QDoubleSpinBox* ScaleBox(QWidget* parent, const char* name, const char* accessible) {
  auto* box = Focusable(new QDoubleSpinBox(parent), name, accessible);
  box->setRange(-kScaleLimit, kScaleLimit);
  box->setDecimals(2);
  box->setKeyboardTracking(false);
  box->setMinimumWidth(80);
  return box;
}

}  // namespace

ChartLayoutBar::ChartLayoutBar(DatalogChart& chart, QWidget* parent)
    : QWidget(parent), chart_(chart) {
  setObjectName("ChartLayoutBar");
  BuildControls();
  // Tab leads from the chart straight along the bar.
  QWidget* previous = &chart_;
  for (QWidget* next : std::initializer_list<QWidget*>{panels_, channel_, panel_, scale_, min_,
                                                       max_, save_default_}) {
    setTabOrder(previous, next);
    previous = next;
  }
  connect(&chart_, &DatalogChart::LayoutChanged, this, &ChartLayoutBar::ShowLayout);
  connect(&chart_, &DatalogChart::LinesChanged, this, &ChartLayoutBar::ShowLayout);
  ShowLayout();
}

void ChartLayoutBar::BuildControls() {
  auto* row = new QHBoxLayout(this);
  row->setContentsMargins(0, 0, 0, 0);
  const auto label = [&](const char* text, QWidget* buddy) {
    auto* l = new QLabel(text, this);
    l->setBuddy(buddy);
    row->addWidget(l);
    row->addWidget(buddy);
  };
  panels_ = Focusable(new QSpinBox(this), "ChartPanels", "Panels");
  panels_->setRange(1, review::kMaxPanels);
  label("Panels", panels_);
  channel_ = Focusable(new QComboBox(this), "ChartLayoutChannel", "Channel");
  label("Channel", channel_);
  panel_ = Focusable(new QSpinBox(this), "ChartChannelPanel", "In panel");
  label("in panel", panel_);
  scale_ = Focusable(new QComboBox(this), "ChartChannelScale", "Scale");
  scale_->addItems({"Auto", "Fixed"});
  label("Scale", scale_);
  min_ = ScaleBox(this, "ChartScaleMin", "Scale minimum");
  label("from", min_);
  max_ = ScaleBox(this, "ChartScaleMax", "Scale maximum");
  label("to", max_);
  save_default_ = Focusable(new QPushButton("Save as default", this), "ChartLayoutSaveDefault",
                            "Save as default");
  save_default_->setToolTip("Logs without a layout of their own start with this one");
  row->addWidget(save_default_);
  row->addStretch(1);
  connect(panels_, &QSpinBox::valueChanged, this, &ChartLayoutBar::SetPanels);
  connect(channel_, &QComboBox::currentIndexChanged, this, &ChartLayoutBar::SelectChannel);
  connect(panel_, &QSpinBox::valueChanged, this, &ChartLayoutBar::SetChannelPanel);
  connect(scale_, &QComboBox::currentIndexChanged, this, &ChartLayoutBar::SetScaleKind);
  connect(min_, &QDoubleSpinBox::valueChanged, this, &ChartLayoutBar::SetFixedRange);
  connect(max_, &QDoubleSpinBox::valueChanged, this, &ChartLayoutBar::SetFixedRange);
  connect(save_default_, &QPushButton::clicked, this, &ChartLayoutBar::SaveDefaultAsked);
}

// The channels to choose from: the recorded ones, then every other name the plan or the layout
// holds (math channels, a second log's).
void ChartLayoutBar::ShowLayout() {
  showing_ = true;
  const review::ChartLayout& layout = chart_.Layout();
  QStringList names;
  for (int n = 0; n < kChannelCount; ++n) names << QString::fromStdString(LayoutNameOf(n));
  const auto add = [&](const std::string& name) {
    const QString text = QString::fromStdString(name);
    if (!names.contains(text, Qt::CaseInsensitive)) names << text;
  };
  for (const PlannedLine& line : chart_.Plan().lines) add(line.name);
  for (const review::ChartPanel& panel : layout.Panels()) {
    for (const review::PanelChannel& channel : panel.channels) add(channel.name);
  }
  {
    const QSignalBlocker block(channel_);
    if (channel_->count() != names.size() || [&] {
          for (int i = 0; i < names.size(); ++i) {
            if (channel_->itemText(i) != names[i]) return true;
          }
          return false;
        }()) {
      channel_->clear();
      channel_->addItems(names);
    }
    channel_->setCurrentIndex(
        std::max(0, static_cast<int>(names.indexOf(QString::fromStdString(layout.Selected()), 0))));
  }
  const int count = static_cast<int>(layout.Panels().size());
  panels_->setValue(count);
  panel_->setRange(1, count);
  panel_->setValue(layout.PanelOf(ChannelName()).value_or(0) + 1);
  const review::PanelChannel* placed = layout.Find(ChannelName());
  const bool fixed = placed != nullptr && !placed->scale.automatic;
  scale_->setCurrentIndex(fixed ? 1 : 0);
  min_->setEnabled(fixed);
  max_->setEnabled(fixed);
  if (fixed) {
    min_->setValue(placed->scale.min);
    max_->setValue(placed->scale.max);
  }
  showing_ = false;
}

std::string ChartLayoutBar::ChannelName() const { return channel_->currentText().toStdString(); }

void ChartLayoutBar::Apply(review::ChartLayout layout) {
  if (showing_) return;
  chart_.SetLayout(std::move(layout));
}

void ChartLayoutBar::SetPanels(int count) {
  review::ChartLayout layout = chart_.Layout();
  while (static_cast<int>(layout.Panels().size()) < count && layout.AddPanel()) {
  }
  while (static_cast<int>(layout.Panels().size()) > count &&
         layout.RemovePanel(static_cast<int>(layout.Panels().size()) - 1)) {
  }
  Apply(std::move(layout));
}

void ChartLayoutBar::SelectChannel(int index) {
  if (index < 0) return;
  review::ChartLayout layout = chart_.Layout();
  layout.Select(ChannelName());
  Apply(std::move(layout));
}

void ChartLayoutBar::SetChannelPanel(int panel) {
  review::ChartLayout layout = chart_.Layout();
  layout.Place(ChannelName(), panel - 1);
  Apply(std::move(layout));
}

// Fixed starts from the range the channel is drawn over now.
void ChartLayoutBar::SetScaleKind(int index) {
  if (showing_) return;
  review::ChartLayout layout = chart_.Layout();
  const std::string name = ChannelName();
  if (!layout.PanelOf(name)) layout.Place(name, 0);
  review::ChannelScale scale;
  if (index == 1) {
    scale = {false, 0.0, 10.0};
    for (const PlannedLine& line : chart_.Plan().lines) {
      if (review::SameName(line.name, name)) scale = {false, line.range.low, line.range.high};
    }
  }
  layout.SetScale(name, scale);
  Apply(std::move(layout));
}

// A fixed range whose minimum is not below its maximum is not taken.
void ChartLayoutBar::SetFixedRange() {
  if (showing_ || scale_->currentIndex() != 1 || !(min_->value() < max_->value())) return;
  review::ChartLayout layout = chart_.Layout();
  const std::string name = ChannelName();
  if (!layout.PanelOf(name)) layout.Place(name, 0);
  layout.SetScale(name, {false, min_->value(), max_->value()});
  Apply(std::move(layout));
}

}  // namespace vela

#include "moc_chart_layout_bar.cpp"
