#include "datalog/qt/chart_accessible.h"

#include <QStringList>
#include <memory>

#include "base/qt/accessible_text.h"
#include "datalog/qt/chart_painter.h"
#include "datalog/qt/datalog_chart.h"

namespace vela {

namespace {

QString Number(double value) { return QString::number(value, 'g', 6); }

// "2 panels, RPM in panel 1, scale auto 0 to 8000": the panels and the selected channel's scale
// as it is drawn now.
QString PanelsText(const DatalogChart& chart) {
  const review::ChartLayout& layout = chart.Layout();
  const int panels = static_cast<int>(layout.Panels().size());
  QString text = QStringLiteral("%1 %2").arg(panels).arg(panels == 1 ? "panel" : "panels");
  const QString selected = QString::fromStdString(layout.Selected());
  if (selected.isEmpty()) return text;
  const review::PanelChannel* placed = layout.Find(layout.Selected());
  const int panel = layout.PanelOf(layout.Selected()).value_or(0) + 1;
  text += QStringLiteral(", %1 in panel %2, scale ").arg(selected).arg(panel);
  text += placed && !placed->scale.automatic ? QStringLiteral("fixed") : QStringLiteral("auto");
  const ChartPlan plan = chart.Plan();
  for (const PlannedLine& line : plan.lines) {
    if (!review::SameName(line.name, layout.Selected())) continue;
    text += QStringLiteral(" %1 to %2").arg(Number(line.range.low), Number(line.range.high));
    break;
  }
  return text;
}

QString CursorLabels(const DatalogChart& chart) {
  QStringList labels;
  if (chart.CursorA()) labels << CursorLabel('A', *chart.CursorA());
  if (chart.CursorB()) labels << CursorLabel('B', *chart.CursorB());
  if (!chart.ShadedSpans().empty()) {
    labels << QStringLiteral("%1 stretches shaded").arg(chart.ShadedSpans().size());
  }
  labels << PanelsText(chart);
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
  QObject::connect(chart, &DatalogChart::LayoutChanged, chart,
                   [chart, announcer] { announcer->Changed(CursorLabels(*chart)); });
}

}  // namespace vela
