// The datalog chart driven from the keyboard: which key asks for what, and what each asks of the
// time axis and the two cursors, as a plain function of the log, the view and the key. The chart
// widget only turns its key events into `ChartKeyPress` and shows the view that comes back.
#pragma once

#include <array>
#include <optional>
#include <string_view>

#include "datalog/datalog_log.h"

namespace vela {

enum class ChartKey {
  kZoomIn,           // + or =: around cursor A, or the view's middle without one
  kZoomOut,          // -
  kPanBackStep,      // Ctrl-Left: a tenth of the view earlier
  kPanForwardStep,   // Ctrl-Right
  kPanBackView,      // Ctrl-PgUp: a whole view earlier
  kPanForwardView,   // Ctrl-PgDown
  kARecordBack,      // ,
  kARecordForward,   // .
  kASecondBack,      // <
  kASecondForward,   // >
  kBRecordBack,      // [
  kBRecordForward,   // ]
  kBSecondBack,      // {
  kBSecondForward,   // }
  kAPreviousMarker,  // ;
  kANextMarker,      // '
  kZoomToCursors,    // Z
  kFitAll,           // Home
  kExportCsv,        // Ctrl-X: what is seen, as CSV
  kExportPicture,    // Ctrl-I: the chart as a PNG picture
};

// A key as the chart sees it, free of any toolkit: a named key, or the character it types
// (for a Control chord, the upper-case letter of the key).
struct ChartKeyPress {
  enum class Named { kNone, kLeft, kRight, kPageUp, kPageDown, kHome };
  Named named = Named::kNone;
  char text = 0;
  bool control = false;
  bool alt = false;
};

// The chart's key for `press`; nullopt for a key the chart leaves to others.
std::optional<ChartKey> ChartKeyOf(const ChartKeyPress& press);

// What the chart shows: its time axis and the cursors.
struct ChartView {
  TimeAxis axis;
  std::optional<double> a = std::nullopt;
  std::optional<double> b = std::nullopt;
  bool operator==(const ChartView&) const = default;
};

// Zoom steps of the keys and the room a followed cursor keeps from the edge it left by.
inline constexpr double kKeyZoomFactor = 0.5;
inline constexpr double kPanStepShare = 0.1;
inline constexpr double kFollowRoomShare = 0.05;
inline constexpr double kCursorSecondStep = 1.0;
// Zooming to the cursors leaves this share of their span free on either side.
inline constexpr double kCursorSpanRoomShare = 0.02;

// What `key` makes of `view` on `log`. Pans and zooming out stay within the whole log (the
// `WholeLogAxis`); zooming in keeps cursor A's time where it is on screen, or centres the view on
// A when A is off screen; a cursor moved off screen pulls the view after it. A cursor key
// without that cursor puts it at the record nearest the view's middle. The export keys change
// nothing.
ChartView ApplyChartKey(const DatalogLog& log, const ChartView& view, ChartKey key);

// Cursor A put at `time` (a marker chosen in a list, a point clicked on a scatter), the view
// moved just far enough to show it, as a cursor key moves it.
ChartView CursorAAt(const DatalogLog& log, const ChartView& view, double time);

// The times the exports take: between the cursors when both are set (in time order), otherwise
// the view.
struct TimeSpan {
  double from = 0.0;
  double to = 0.0;
};
TimeSpan ExportSpan(const ChartView& view);

// The Help page's table of the chart's keys.
struct ChartKeyRow {
  std::string_view keys;
  std::string_view function;
};
inline constexpr ChartKeyRow kChartKeyHeadings = {" Chart Key", " Function (DataLogging)"};
inline constexpr std::array<ChartKeyRow, 18> kChartKeyRows = {{
    {"+ or =, -", "Zoom in around cursor A, zoom out"},
    {"Ctrl-Left, Ctrl-Right", "Pan by a tenth of the view"},
    {"Ctrl-PgUp, Ctrl-PgDown", "Pan by a whole view"},
    {", .", "Cursor A one record back, forward"},
    {"< >", "Cursor A one second back, forward"},
    {"[ ]", "Cursor B one record back, forward"},
    {"{ }", "Cursor B one second back, forward"},
    {"; '", "Cursor A to the previous, next marker"},
    {"Z", "Zoom to the span between the cursors"},
    {"Home", "Fit the whole log"},
    {"K", "Drop a marker (at cursor A between logs)"},
    {"Ctrl-X", "Export the cursors' span (or the view) as CSV"},
    {"Ctrl-I", "Export the chart as a PNG picture"},
    {"Ctrl-Shift-L", "The marker list (Enter: cursor A there, F2: edit, Esc: back)"},
    {"Ctrl-Shift-D", "Scatter and histogram of the log's channels"},
    {"Ctrl-Shift-E", "The math channels: add, edit, remove"},
    {"Ctrl-Shift-O", "Load a second log to compare"},
    {"Ctrl-Shift-A", "Align the second log at a marker or a time"},
}};

}  // namespace vela
