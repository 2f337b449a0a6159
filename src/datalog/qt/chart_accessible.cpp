#include "datalog/qt/chart_accessible.h"

#include <QStringList>
#include <memory>

#include "base/qt/accessible_text.h"
#include "datalog/qt/chart_painter.h"
#include "datalog/qt/datalog_chart.h"

namespace vela {

namespace {

QString CursorLabels(const DatalogChart& chart) {
  QStringList labels;
  if (chart.CursorA()) labels << CursorLabel('A', *chart.CursorA());
  if (chart.CursorB()) labels << CursorLabel('B', *chart.CursorB());
  if (!chart.ShadedSpans().empty()) {
    labels << QStringLiteral("%1 stretches shaded").arg(chart.ShadedSpans().size());
  }
  return labels.join(QStringLiteral(", "));
}

}  // namespace

void MakeChartAccessible(DatalogChart* chart) {
  if (chart == nullptr) return;
  InstallPaintedTextAccessible<DatalogChart, QAccessible::Chart, &CursorLabels>();
  chart->setAccessibleName("Datalog chart");
  auto announcer = std::make_shared<ValueAnnouncer>(chart);
  QObject::connect(chart, &DatalogChart::CursorsChanged, chart,
                   [chart, announcer] { announcer->Changed(CursorLabels(*chart)); });
}

}  // namespace vela
