// Drawing of the datalog chart with QPainter: the plot's frame, ticks and labels, every active
// channel's line, the gaps where the link lost frames, the markers and the cursors.
#pragma once

#include <QPainter>
#include <QRect>
#include <optional>
#include <utility>
#include <vector>

#include "datalog/datalog_log.h"

namespace vela {

struct ChartLook {
  QColor background{12, 12, 18};
  QColor grid{48, 48, 56};
  QColor axis_line{255, 255, 255};  // white axis lines
  QColor label{192, 192, 192};      // silver labels
  QColor marker{255, 150, 40};
  QColor cursor_a{255, 255, 255};
  QColor cursor_b{160, 200, 255};
  QColor gap{255, 60, 60};
  QColor span{70, 130, 255, 70};  // the shaded stretches (times spent in chosen map cells)
};

struct ChartScene {
  const DatalogLog& log;
  QRect plot;
  int axis_channel;
  std::optional<double> cursor_a;
  std::optional<double> cursor_b;
  QRect dirty;  // only the lines crossing it are drawn (the painter clips the rest anyway)
  const std::vector<std::pair<double, double>>* spans = nullptr;  // shaded, from and to
};

void PaintChart(QPainter& painter, const QRect& whole, const ChartScene& scene,
                const ChartLook& look = {});

// The label the chart paints beside cursor `name` ('A' or 'B') at `time`: "A 12.345 s".
QString CursorLabel(char name, double time);

}  // namespace vela
