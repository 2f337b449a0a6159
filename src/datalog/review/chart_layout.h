// The chart's layout as plain data: 1 to 4 panels stacked over one time axis, the channels each
// panel shows (by name: a recorded channel's export name, to which its check box's caption is
// turned when read or placed, or a math channel's name) with each
// channel's vertical scale, and the channel whose axis labels are shown. Its text form is saved
// with a log and as the tuner's default:
//
//   panel RPM MAP=0:250 "Duty %"
//   panel AFR=10:20 "AFR Error"
//   select RPM
//
// One "panel" line per panel, top first; a channel is a name (in double quotes when it holds
// anything but letters, digits and _), followed by =MIN:MAX for a fixed scale. Lines end in
// "\n" ("\r\n" read too); blank lines and lines starting with "#" are skipped.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "datalog/review/autoscale.h"

namespace vela::review {

inline constexpr int kMaxPanels = 4;

struct PanelChannel {
  std::string name;
  ChannelScale scale;
  bool operator==(const PanelChannel&) const = default;
};

struct ChartPanel {
  std::vector<PanelChannel> channels;
  bool operator==(const ChartPanel&) const = default;
};

class ChartLayout {
 public:
  // One panel with the twelve recorded channels, every scale automatic, RPM selected.
  ChartLayout();

  const std::vector<ChartPanel>& Panels() const { return panels_; }
  const std::string& Selected() const { return selected_; }
  // The panel showing `name` (0 = top), or nullopt.
  std::optional<int> PanelOf(std::string_view name) const;
  const PanelChannel* Find(std::string_view name) const;

  // A panel added at the bottom (false when there are 4 already).
  bool AddPanel();
  // Panel `panel` removed, its channels moved to the panel above (below for the top one); false
  // for the last panel or no such panel.
  bool RemovePanel(int panel);
  // `name` shown in `panel` (moved there if another shows it; added at the end); false for no
  // such panel.
  bool Place(std::string_view name, int panel);
  // The channel `from` called `to` where it is shown and when it is the selected one.
  void Rename(std::string_view from, std::string_view to);
  // `name` shown in no panel.
  void Remove(std::string_view name);
  // false when no panel shows `name`.
  bool SetScale(std::string_view name, const ChannelScale& scale);
  void Select(std::string_view name);

  bool operator==(const ChartLayout&) const = default;

 private:
  friend struct LayoutReader;
  std::vector<ChartPanel> panels_;
  std::string selected_;
};

// The text form (above), and a name as it is written there (quoted when needed).
std::string LayoutText(const ChartLayout& layout);
std::string QuotedName(std::string_view name);

// A layout read from text. Lines it cannot use are skipped, each with a reason ("line 3: ...");
// a text without a usable panel line gives the default layout.
struct LayoutRead {
  ChartLayout layout;
  std::vector<std::string> problems;
};
LayoutRead ReadLayout(std::string_view text);
// Reads a layout line by line (the side file mixes it with other lines): Line takes one "panel"
// or "select" line and gives the reason when it cannot use it; Finish gives the layout (the
// default's panels when no panel line was usable).
struct LayoutReader {
  ChartLayout layout;
  bool any_panel = false;
  std::optional<std::string> Line(std::string_view line);
  ChartLayout Finish();
};

}  // namespace vela::review
