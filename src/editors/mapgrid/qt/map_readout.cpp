#include "editors/mapgrid/qt/map_readout.h"

#include <QHeaderView>

namespace vela {

MapReadout::MapReadout(QWidget* parent)
    : QTableWidget(static_cast<int>(kReadoutLabels.size()), 2, parent) {
  horizontalHeader()->hide();
  verticalHeader()->hide();
  horizontalHeader()->setSectionResizeMode(QHeaderView::Stretch);
  verticalHeader()->setSectionResizeMode(QHeaderView::Stretch);
  setEditTriggers(QAbstractItemView::NoEditTriggers);
  setSelectionMode(QAbstractItemView::NoSelection);
  setFocusPolicy(Qt::NoFocus);
  setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
  setVerticalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
  QFont bold = font();
  bold.setBold(true);
  for (int row = 0; row < rowCount(); ++row) {
    auto* label = new QTableWidgetItem(QString::fromLatin1(kReadoutLabels[row]));
    label->setFont(bold);
    label->setBackground(QColor(214, 218, 224));
    setItem(row, 0, label);
    auto* value = new QTableWidgetItem(QString());
    value->setTextAlignment(Qt::AlignRight | Qt::AlignVCenter);
    setItem(row, 1, value);
  }
}

void MapReadout::SetValue(Readout readout, const QString& text) {
  QTableWidgetItem* value = item(static_cast<int>(readout), 1);
  if (value != nullptr && value->text() != text) value->setText(text);
}

QString MapReadout::Value(Readout readout) const {
  const QTableWidgetItem* value = item(static_cast<int>(readout), 1);
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
void MapReadout::SetAfr(double afr) { SetNumber(Readout::kAfr, afr, 1); }

}  // namespace vela
