#include "datalog/chart/chart_keys.h"

#include <algorithm>
#include <cmath>

#include "datalog/chart/chart_view.h"

namespace vela {

namespace {

// Times closer than this are the same moment (a cursor on a record is on it).
constexpr double kSameTime = 1e-9;

std::optional<ChartKey> NamedChartKey(const ChartKeyPress& press) {
  using Named = ChartKeyPress::Named;
  if (press.alt) return std::nullopt;
  if (press.named == Named::kHome) {
    return press.control ? std::nullopt : std::optional(ChartKey::kFitAll);
  }
  if (!press.control) return std::nullopt;
  switch (press.named) {
    case Named::kLeft:
      return ChartKey::kPanBackStep;
    case Named::kRight:
      return ChartKey::kPanForwardStep;
    case Named::kPageUp:
      return ChartKey::kPanBackView;
    case Named::kPageDown:
      return ChartKey::kPanForwardView;
    default:
      return std::nullopt;
  }
}

std::optional<ChartKey> ControlLetterKey(char letter) {
  if (letter == 'X') return ChartKey::kExportCsv;
  if (letter == 'I') return ChartKey::kExportPicture;
  return std::nullopt;
}

std::optional<ChartKey> TypedChartKey(char text) {
  switch (text) {
    case '+':
    case '=':
      return ChartKey::kZoomIn;
    case '-':
      return ChartKey::kZoomOut;
    case ',':
      return ChartKey::kARecordBack;
    case '.':
      return ChartKey::kARecordForward;
    case '<':
      return ChartKey::kASecondBack;
    case '>':
      return ChartKey::kASecondForward;
    case '[':
      return ChartKey::kBRecordBack;
    case ']':
      return ChartKey::kBRecordForward;
    case '{':
      return ChartKey::kBSecondBack;
    case '}':
      return ChartKey::kBSecondForward;
    case ';':
      return ChartKey::kAPreviousMarker;
    case '\'':
      return ChartKey::kANextMarker;
    case 'Z':
    case 'z':
      return ChartKey::kZoomToCursors;
    default:
      return std::nullopt;
  }
}

double Middle(const TimeAxis& axis) { return (axis.min + axis.max) / 2.0; }
double Span(const TimeAxis& axis) { return axis.max - axis.min; }

// The axis moved (never resized) to lie within the whole log; one wider than the log starts at
// the log's start.
TimeAxis Clamped(const DatalogLog& log, TimeAxis axis) {
  const TimeAxis bounds = WholeLogAxis(log);
  const double span = Span(axis);
  if (span >= Span(bounds) || axis.min < bounds.min) return {bounds.min, bounds.min + span};
  if (axis.max > bounds.max) return {bounds.max - span, bounds.max};
  return axis;
}

// The view moved just far enough to show `time` a little inside the edge it was beyond.
TimeAxis Follow(const DatalogLog& log, const TimeAxis& axis, double time) {
  const double span = Span(axis);
  const double room = span * kFollowRoomShare;
  if (time < axis.min) return Clamped(log, {time - room, time - room + span});
  if (time > axis.max) return Clamped(log, {time + room - span, time + room});
  return axis;
}

// The time of the record nearest `time`; `time` itself in an empty log.
double NearestRecordTime(const DatalogLog& log, double time) {
  const std::vector<double>& times = log.Times();
  if (times.empty()) return time;
  const auto after = std::lower_bound(times.begin(), times.end(), time);
  if (after == times.begin()) return *after;
  if (after == times.end()) return times.back();
  return (*after - time) < (time - *(after - 1)) ? *after : *(after - 1);
}

// One record on from `time` (direction +1) or back (-1); `time` when there is none that way.
double RecordStep(const DatalogLog& log, double time, int direction) {
  const std::vector<double>& times = log.Times();
  if (direction > 0) {
    const auto next = std::upper_bound(times.begin(), times.end(), time + kSameTime);
    return next == times.end() ? time : *next;
  }
  const auto next = std::lower_bound(times.begin(), times.end(), time - kSameTime);
  return next == times.begin() ? time : *(next - 1);
}

// A second on: the first record at least a second after `time` (a hole in the log is stepped
// over, never stuck in), or back: the last record at least a second before. At the log's ends,
// its first or last record.
double SecondStep(const DatalogLog& log, double time, int direction) {
  const std::vector<double>& times = log.Times();
  if (times.empty()) return time;
  const double target = time + direction * kCursorSecondStep;
  if (direction > 0) {
    const auto at = std::lower_bound(times.begin(), times.end(), target - kSameTime);
    return at == times.end() ? std::max(time, times.back()) : *at;
  }
  const auto after = std::upper_bound(times.begin(), times.end(), target + kSameTime);
  return after == times.begin() ? std::min(time, times.front()) : *(after - 1);
}

// The nearest marker before (direction -1) or after (+1) `time`.
std::optional<double> MarkerStep(const DatalogLog& log, double time, int direction) {
  const std::vector<LogMarker>& markers = log.Markers();
  if (direction > 0) {
    for (const LogMarker& marker : markers) {
      if (marker.time > time + kSameTime) return marker.time;
    }
    return std::nullopt;
  }
  for (auto it = markers.rbegin(); it != markers.rend(); ++it) {
    if (it->time < time - kSameTime) return it->time;
  }
  return std::nullopt;
}

TimeAxis ZoomedIn(const ChartView& view) {
  const TimeAxis& axis = view.axis;
  if (!view.a) return ZoomAxis(axis, Middle(axis), kKeyZoomFactor);
  if (*view.a >= axis.min && *view.a <= axis.max) return ZoomAxis(axis, *view.a, kKeyZoomFactor);
  const double span = std::max(Span(axis) * kKeyZoomFactor, kNarrowestAxisSeconds);
  return {*view.a - span / 2.0, *view.a + span / 2.0};
}

// Around cursor A when it is on screen, like zooming in; never wider than the whole log (unless
// it already was), never beyond it.
TimeAxis ZoomedOut(const DatalogLog& log, const ChartView& view) {
  const TimeAxis& axis = view.axis;
  const bool a_shown = view.a && *view.a >= axis.min && *view.a <= axis.max;
  const double widest = std::max(Span(axis), Span(WholeLogAxis(log)));
  const double span = std::min(Span(axis) / kKeyZoomFactor, widest);
  return Clamped(log, ZoomAxis(axis, a_shown ? *view.a : Middle(axis), span / Span(axis)));
}

// The span between the cursors with a little room either side, so that both cursor lines show.
TimeAxis ToCursors(const ChartView& view) {
  if (!view.a || !view.b) return view.axis;
  const double from = std::min(*view.a, *view.b);
  const double to = std::max(*view.a, *view.b);
  const double middle = (from + to) / 2.0;
  const double span =
      std::max((to - from) * (1.0 + 2.0 * kCursorSpanRoomShare), kNarrowestAxisSeconds);
  return {middle - span / 2.0, middle + span / 2.0};
}

// A cursor moved by a record step, a second step or to a marker; a missing cursor appears at
// the record nearest the view's middle instead. The view follows it.
enum class CursorMove { kRecord, kSecond, kMarker };

ChartView MoveCursor(const DatalogLog& log, ChartView view, bool cursor_a, CursorMove move,
                     int direction) {
  std::optional<double>& cursor = cursor_a ? view.a : view.b;
  if (!cursor && move != CursorMove::kMarker) {
    cursor = NearestRecordTime(log, Middle(view.axis));
  } else {
    const double from = cursor.value_or(Middle(view.axis));
    switch (move) {
      case CursorMove::kRecord:
        cursor = RecordStep(log, from, direction);
        break;
      case CursorMove::kSecond:
        cursor = SecondStep(log, from, direction);
        break;
      case CursorMove::kMarker:
        if (const std::optional<double> marker = MarkerStep(log, from, direction)) cursor = marker;
        break;
    }
  }
  if (cursor) view.axis = Follow(log, view.axis, *cursor);
  return view;
}

ChartView CursorKey(const DatalogLog& log, const ChartView& view, ChartKey key) {
  switch (key) {
    case ChartKey::kARecordBack:
    case ChartKey::kARecordForward:
      return MoveCursor(log, view, true, CursorMove::kRecord,
                        key == ChartKey::kARecordForward ? 1 : -1);
    case ChartKey::kASecondBack:
    case ChartKey::kASecondForward:
      return MoveCursor(log, view, true, CursorMove::kSecond,
                        key == ChartKey::kASecondForward ? 1 : -1);
    case ChartKey::kBRecordBack:
    case ChartKey::kBRecordForward:
      return MoveCursor(log, view, false, CursorMove::kRecord,
                        key == ChartKey::kBRecordForward ? 1 : -1);
    case ChartKey::kBSecondBack:
    case ChartKey::kBSecondForward:
      return MoveCursor(log, view, false, CursorMove::kSecond,
                        key == ChartKey::kBSecondForward ? 1 : -1);
    case ChartKey::kAPreviousMarker:
    case ChartKey::kANextMarker:
      return MoveCursor(log, view, true, CursorMove::kMarker,
                        key == ChartKey::kANextMarker ? 1 : -1);
    default:
      return view;
  }
}

}  // namespace

std::optional<ChartKey> ChartKeyOf(const ChartKeyPress& press) {
  if (press.named != ChartKeyPress::Named::kNone) return NamedChartKey(press);
  if (press.alt) return std::nullopt;
  if (press.control) return ControlLetterKey(press.text);
  return TypedChartKey(press.text);
}

ChartView ApplyChartKey(const DatalogLog& log, const ChartView& view, ChartKey key) {
  ChartView next = view;
  const double span = Span(view.axis);
  switch (key) {
    case ChartKey::kZoomIn:
      next.axis = ZoomedIn(view);
      return next;
    case ChartKey::kZoomOut:
      next.axis = ZoomedOut(log, view);
      return next;
    case ChartKey::kPanBackStep:
    case ChartKey::kPanForwardStep:
    case ChartKey::kPanBackView:
    case ChartKey::kPanForwardView: {
      const bool whole = key == ChartKey::kPanBackView || key == ChartKey::kPanForwardView;
      const bool back = key == ChartKey::kPanBackStep || key == ChartKey::kPanBackView;
      const double seconds = (whole ? span : span * kPanStepShare) * (back ? -1.0 : 1.0);
      next.axis = Clamped(log, PanAxis(view.axis, seconds));
      return next;
    }
    case ChartKey::kZoomToCursors:
      next.axis = ToCursors(view);
      return next;
    case ChartKey::kFitAll:
      next.axis = WholeLogAxis(log);
      return next;
    case ChartKey::kExportCsv:
    case ChartKey::kExportPicture:
      return next;
    default:
      return CursorKey(log, view, key);
  }
}

TimeSpan ExportSpan(const ChartView& view) {
  if (view.a && view.b) return {std::min(*view.a, *view.b), std::max(*view.a, *view.b)};
  return {view.axis.min, view.axis.max};
}

ChartView CursorAAt(const DatalogLog& log, const ChartView& view, double time) {
  return {Follow(log, view.axis, time), time, view.b};
}

}  // namespace vela
