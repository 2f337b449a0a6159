#include "datalog/qt/chart_accessible.h"

#include <QStringList>
#include <memory>

#include "datalog/qt/chart_painter.h"
#include "datalog/qt/datalog_chart.h"
#include "shell/qt/accessible_text.h"

namespace vela {

namespace {

QString CursorLabels(const DatalogChart& chart) {
  QStringList labels;
  if (chart.CursorA()) labels << CursorLabel('A', *chart.CursorA());
  if (chart.CursorB()) labels << CursorLabel('B', *chart.CursorB());
  return labels.join(QStringLiteral(", "));
}

QAccessibleInterface* ChartAccessible(const QString& class_name, QObject* object) {
  if (class_name != QLatin1String("vela::DatalogChart")) return nullptr;
  auto* chart = qobject_cast<DatalogChart*>(object);
  if (chart == nullptr) return nullptr;
  return new PaintedTextAccessible(chart, QAccessible::Chart, [](const QWidget* widget) {
    return CursorLabels(*static_cast<const DatalogChart*>(widget));
  });
}

}  // namespace

void MakeChartAccessible(DatalogChart* chart) {
  if (chart == nullptr) return;
  InstallAccessibleFactory<&ChartAccessible>();
  chart->setAccessibleName("Datalog chart");
  auto announced = std::make_shared<QString>(CursorLabels(*chart));
  QObject::connect(chart, &DatalogChart::CursorsChanged, chart, [chart, announced] {
    const QString labels = CursorLabels(*chart);
    if (labels == *announced) return;
    *announced = labels;
    AnnounceValue(chart, labels);
  });
}

}  // namespace vela
