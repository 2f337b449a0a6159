#include "editors/mapgrid/qt/map_readout.h"

#include <QHeaderView>
#include <QPainter>
#include <QStyledItemDelegate>

#include "editors/mapgrid/qt/map_accessible.h"

namespace vela {

namespace {

// Draws a cell as its ground and its text straight onto the painter: the values change ten
// times a second, and the style's way of laying out an item costs several times more.
class ReadoutDelegate : public QStyledItemDelegate {
 public:
  using QStyledItemDelegate::QStyledItemDelegate;

  void paint(QPainter* painter, const QStyleOptionViewItem& option,
             const QModelIndex& index) const override {
    const QVariant ground = index.data(Qt::BackgroundRole);
    painter->fillRect(option.rect, ground.isValid() ? ground.value<QBrush>()
                                                    : option.palette.brush(QPalette::Base));
    const QVariant ink = index.data(Qt::ForegroundRole);
    painter->setPen(ink.isValid() ? ink.value<QBrush>().color()
                                  : option.palette.color(QPalette::Text));
    const QVariant font = index.data(Qt::FontRole);
    painter->setFont(font.isValid() ? font.value<QFont>() : option.font);
    const int alignment = index.data(Qt::TextAlignmentRole).toInt();
    painter->drawText(option.rect.adjusted(4, 0, -4, 0), alignment,
                      index.data(Qt::DisplayRole).toString());
  }
};

}  // namespace

MapReadout::MapReadout(QWidget* parent, Qt::Orientation orientation)
    : QTableWidget(parent), across_(orientation == Qt::Horizontal) {
  // Before the rows exist: their arrival is told to a listening tool, which then asks for the
  // grid's interface and keeps the one it gets.
  InstallReadoutAccessibility();
  const int quantities = static_cast<int>(kReadoutLabels.size());
  setRowCount(across_ ? 2 : quantities);
  setColumnCount(across_ ? quantities : 2);
  horizontalHeader()->hide();
  verticalHeader()->hide();
  horizontalHeader()->setSectionResizeMode(QHeaderView::Stretch);
  verticalHeader()->setSectionResizeMode(QHeaderView::Stretch);
  setEditTriggers(QAbstractItemView::NoEditTriggers);
  setSelectionMode(QAbstractItemView::NoSelection);
  setFocusPolicy(Qt::NoFocus);
  setItemDelegate(new ReadoutDelegate(this));
  setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
  setVerticalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
  QFont bold = font();
  bold.setBold(true);
  for (int i = 0; i < quantities; ++i) {
    auto* label = new QTableWidgetItem(QString::fromLatin1(kReadoutLabels[i]));
    label->setFont(bold);
    label->setBackground(QColor(214, 218, 224));
    label->setTextAlignment(Qt::AlignCenter);
    auto* value = new QTableWidgetItem(QString());
    value->setTextAlignment((across_ ? Qt::AlignHCenter : Qt::AlignRight) | Qt::AlignVCenter);
    setItem(across_ ? 0 : i, across_ ? i : 0, label);
    setItem(across_ ? 1 : i, across_ ? i : 1, value);
    announcers_.push_back(std::make_unique<ValueAnnouncer>(
        [this, i](const QString& text) { AnnounceValue(ReadoutValueInterface(this, i), text); }));
  }
}

QTableWidgetItem* MapReadout::ValueItem(Readout readout) const {
  const int i = static_cast<int>(readout);
  return across_ ? item(1, i) : item(i, 1);
}

void MapReadout::SetValue(Readout readout, const QString& text) {
  QTableWidgetItem* value = ValueItem(readout);
  if (value == nullptr || value->text() == text) return;
  value->setText(text);
  announcers_[static_cast<std::size_t>(readout)]->Changed(text);
}

QRect MapReadout::ValueRect(Readout readout) const {
  const QTableWidgetItem* value = ValueItem(readout);
  return value == nullptr ? QRect() : visualItemRect(value);
}

QString MapReadout::Value(Readout readout) const {
  const QTableWidgetItem* value = ValueItem(readout);
  return value == nullptr ? QString() : value->text();
}

void MapReadout::SetNumber(Readout readout, double value, int decimals) {
  QString text = QString::number(value, 'f', decimals);
  text.replace(QLatin1Char('.'), separator_);
  SetValue(readout, text);
}

void MapReadout::SetRpm(double rpm) { SetNumber(Readout::kRpm, rpm, 0); }
void MapReadout::SetMap(double kpa) { SetNumber(Readout::kMap, kpa, 1); }
void MapReadout::SetTps(double percent) { SetNumber(Readout::kTps, percent, 1); }
void MapReadout::SetMs(double milliseconds) { SetNumber(Readout::kMs, milliseconds, 3); }
void MapReadout::SetIgn(double degrees) { SetNumber(Readout::kIgn, degrees, 1); }
void MapReadout::SetWat(const QString& text) { SetValue(Readout::kWat, text); }
void MapReadout::SetAir(const QString& text) { SetValue(Readout::kAir, text); }
void MapReadout::SetBatt(double volts) { SetNumber(Readout::kBatt, volts, 2); }

}  // namespace vela

namespace vela {

void MapReadout::Show(const LiveData& live, const ReadoutTexts& texts, bool live_values) {
  if (greyed_ != !live_values) {
    greyed_ = !live_values;
    const QColor ink = greyed_ ? QColor(150, 150, 150) : palette().color(QPalette::Text);
    for (int i = 0; i < static_cast<int>(kReadoutLabels.size()); ++i) {
      ValueItem(static_cast<Readout>(i))->setForeground(ink);
    }
  }
  if (!live_values) {
    for (int i = 0; i < static_cast<int>(kReadoutLabels.size()); ++i) {
      SetValue(static_cast<Readout>(i), QStringLiteral("--"));
    }
    return;
  }
  SetRpm(live.engine_rpm);
  SetMap(live.map_kpa);
  SetTps(live.tps_percent);
  SetMs(live.injection_ms);
  SetIgn(live.ignition_advance_deg);
  SetWat(texts.water);
  SetAir(texts.air);
  SetBatt(live.battery_volts);
  SetValue(Readout::kAfr, texts.afr);
}

}  // namespace vela

#include "moc_map_readout.cpp"
