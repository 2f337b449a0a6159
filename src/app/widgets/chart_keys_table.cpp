#include "app/widgets/chart_keys_table.h"

#include <QHeaderView>

#include "datalog/chart/chart_keys.h"

namespace vela {

namespace {

QString ChartKeyText(std::string_view text) {
  return QString::fromUtf8(text.data(), static_cast<qsizetype>(text.size()));
}

}  // namespace

QTableWidget* BuildChartKeysTable(QWidget* parent) {
  auto* table = new QTableWidget(static_cast<int>(kChartKeyRows.size()), 2, parent);
  table->setObjectName("ChartKeys");
  table->setAccessibleName("Datalog chart keys");
  table->verticalHeader()->hide();
  table->horizontalHeader()->setStretchLastSection(true);
  table->setEditTriggers(QAbstractItemView::NoEditTriggers);
  table->setFocusPolicy(Qt::NoFocus);
  table->verticalHeader()->setDefaultSectionSize(22);
  table->setHorizontalHeaderLabels(
      {ChartKeyText(kChartKeyHeadings.keys), ChartKeyText(kChartKeyHeadings.function)});
  for (int i = 0; i < static_cast<int>(kChartKeyRows.size()); ++i) {
    table->setItem(i, 0, new QTableWidgetItem(ChartKeyText(kChartKeyRows[i].keys)));
    table->setItem(i, 1, new QTableWidgetItem(ChartKeyText(kChartKeyRows[i].function)));
  }
  table->resizeColumnToContents(0);
  return table;
}

}  // namespace vela
