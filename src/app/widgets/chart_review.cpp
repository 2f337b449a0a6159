#include "app/widgets/chart_review.h"

#include <array>

#include "datalog/channels.h"

namespace vela {

namespace {

// Math channels' colours, apart from the recorded channels' own.
constexpr std::array<QRgb, 6> kMathColours = {0xffff8c00, 0xff00e5ee, 0xffee82ee,
                                              0xffadff2f, 0xffffd700, 0xffff6f61};

}  // namespace

QColor MathColour(std::size_t place) {
  return QColor::fromRgb(kMathColours[place % kMathColours.size()]);
}

namespace {

// The second log's math channels, each beside the first log's line of the same channel.
void AddSecondMath(const ReviewSession& session, std::vector<ChartSeries>& series) {
  const std::vector<review::MathColumn>& columns = session.second_math_columns();
  for (std::size_t i = 0; i < columns.size(); ++i) {
    const review::MathColumn& column = columns[i];
    if (column.error || column.values.empty() || !session.MathShown(column.name)) continue;
    ChartSeries line;
    line.name = column.name + " (2)";
    line.follows = column.name;
    line.column = {column.values, &column.summaries};
    line.times = &session.second()->Times();
    line.offset = session.alignment().offset;
    line.colour = MathColour(i);
    line.second_log = true;
    series.push_back(std::move(line));
  }
}

}  // namespace

std::vector<ChartSeries> ReviewSeries(const ReviewSession& session) {
  std::vector<ChartSeries> series;
  const std::vector<review::MathColumn>& columns = session.math_columns();
  for (std::size_t i = 0; i < columns.size(); ++i) {
    const review::MathColumn& column = columns[i];
    if (column.error || column.values.empty() || !session.MathShown(column.name)) continue;
    ChartSeries line;
    line.name = column.name;
    line.column = {column.values, &column.summaries};
    line.colour = MathColour(i);
    series.push_back(std::move(line));
  }
  const DatalogLog* second = session.second();
  if (second == nullptr) return series;
  for (int n = 0; n < kChannelCount; ++n) {
    const LogSeries& recorded = second->Series(n);
    if (recorded.points == 0 || !session.log().Series(n).active) continue;
    ChartSeries line;
    line.name = LayoutNameOf(n) + " (2)";
    line.follows = LayoutNameOf(n);
    line.column = review::RecordedColumn(*second, n);
    line.times = &second->Times();
    line.offset = session.alignment().offset;
    line.colour = QColor(recorded.colour.red, recorded.colour.green, recorded.colour.blue);
    line.second_log = true;
    series.push_back(std::move(line));
  }
  AddSecondMath(session, series);
  return series;
}

void FollowReview(DatalogChart& chart, ReviewSession& session) {
  QObject::connect(&session, &ReviewSession::Changed, &chart, [&chart, &session] {
    chart.SetExtraSeries(ReviewSeries(session));
    if (!(chart.Layout() == session.layout())) chart.SetLayout(session.layout());
  });
  QObject::connect(&session, &ReviewSession::Grew, &chart, [&chart, &session](std::size_t from) {
    const std::vector<double>& times = session.log().Times();
    if (from < times.size()) chart.ExtraSeriesGrew(ReviewSeries(session), times[from]);
  });
  QObject::connect(&chart, &DatalogChart::LayoutChanged, &session, [&chart, &session] {
    if (!(chart.Layout() == session.layout())) session.SetLayout(chart.Layout());
  });
  chart.SetExtraSeries(ReviewSeries(session));
  session.SetLayout(chart.Layout());
}

}  // namespace vela
