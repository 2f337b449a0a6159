// What accessibility tools read of the datalog chart (`TChart1`): a chart named "Datalog chart"
// whose value is the labels it paints beside its cursors, then its panels and the selected
// channel's scale ("A 12.345 s, B 20.000 s, 2 panels, RPM in panel 1, scale auto 0 to 8000");
// tools hear of every change of them.
#pragma once

namespace vela {

class DatalogChart;

void MakeChartAccessible(DatalogChart* chart);

}  // namespace vela
