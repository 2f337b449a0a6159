// The datalog chart kept drawing what the log's ReviewSession holds: its layout (both ways: a
// change made on the chart goes back to the session, which saves it with the log), the columns
// of its math channels, and the channels of the second log shifted by the alignment.
#pragma once

#include <vector>

#include "app/sessions/review_session.h"
#include "datalog/qt/chart_plan.h"
#include "datalog/qt/datalog_chart.h"

namespace vela {

// The lines the session adds to the chart: each math channel that evaluated and is shown (in a
// colour of its own by its place), then each channel of the second log whose first-log channel
// is on, and each of the second log's math channels that is shown, named "<channel> (2)",
// dashed, on the scale of the first log's channel.
std::vector<ChartSeries> ReviewSeries(const ReviewSession& session);

// The colour of the math channel at `place` in the log's list.
QColor MathColour(std::size_t place);

void FollowReview(DatalogChart& chart, ReviewSession& session);

}  // namespace vela
