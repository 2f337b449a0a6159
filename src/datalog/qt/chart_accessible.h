// What accessibility tools read of the datalog chart (`TChart1`): a chart named "Datalog chart"
// whose value is the labels it paints beside its cursors ("A 12.345 s, B 20.000 s"); tools hear
// of every change of them.
#pragma once

namespace vela {

class DatalogChart;

void MakeChartAccessible(DatalogChart* chart);

}  // namespace vela
