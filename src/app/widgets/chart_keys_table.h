// `ChartKeys`: the Help page's table of the datalog chart's keys, shown beside the keystroke
// table and the workbench keys.
#pragma once

#include <QTableWidget>

namespace vela {

QTableWidget* BuildChartKeysTable(QWidget* parent);

}  // namespace vela
