// Drawing of the datalog chart with QPainter: the panels' frames, ticks and labels, every planned
// line in its panel over its own scale, the gaps where the link lost frames, the markers (the
// tuner's, the faults the ECU reported) and the cursors across all panels.
#pragma once

#include <QPainter>
#include <QRect>
#include <optional>
#include <utility>
#include <vector>

#include "datalog/datalog_log.h"
#include "datalog/qt/chart_plan.h"

namespace vela {

struct ChartLook {
  QColor background{12, 12, 18};
  QColor grid{48, 48, 56};
  QColor axis_line{255, 255, 255};  // white axis lines
  QColor label{192, 192, 192};      // silver labels
  QColor marker{255, 150, 40};
  QColor fault{255, 80, 200};  // a marker for a fault the ECU reported
  QColor cursor_a{255, 255, 255};
  QColor cursor_b{160, 200, 255};
  QColor gap{255, 60, 60};
  QColor span{70, 130, 255, 70};  // the shaded stretches (times spent in chosen map cells)
  QColor rubber_band{255, 255, 255, 50};
};

struct ChartScene {
  const DatalogLog& log;
  QRect plot;  // all panels together
  const ChartPlan& plan;
  std::optional<double> cursor_a;
  std::optional<double> cursor_b;
  QRect dirty;  // only the lines crossing it are drawn (the painter clips the rest anyway)
  const std::vector<std::pair<double, double>>* spans = nullptr;  // shaded, from and to
  std::optional<QRect> rubber_band;  // the rectangle being dragged to zoom to
};

// The rect of each panel of `plot` for `count` panels, top first.
std::vector<QRect> PanelRects(const QRect& plot, int count);

void PaintChart(QPainter& painter, const QRect& whole, const ChartScene& scene,
                const ChartLook& look = {});

// The label the chart paints beside cursor `name` ('A' or 'B') at `time`: "A 12.345 s".
QString CursorLabel(char name, double time);

}  // namespace vela
