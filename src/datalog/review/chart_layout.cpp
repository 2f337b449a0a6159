#include "datalog/review/chart_layout.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>

#include "base/text_fields.h"
#include "datalog/channels.h"
#include "datalog/review/log_span.h"

namespace vela::review {

namespace {

bool BareNameCharacter(char c) { return std::isalnum(static_cast<unsigned char>(c)) || c == '_'; }

// A recorded channel is kept by its export name, however it was named ("Duty %" is Duty).
std::string ChannelName(std::string_view name) {
  const std::optional<int> recorded = RecordedChannelNamed(name);
  return recorded ? std::string(kChannels[*recorded].name) : std::string(name);
}

bool SameChannel(std::string_view a, std::string_view b) {
  const std::optional<int> recorded = RecordedChannelNamed(a);
  return recorded ? recorded == RecordedChannelNamed(b) : SameName(a, b);
}

std::string ScaleNumber(double value) {
  char text[32];
  std::snprintf(text, sizeof text, "%.10g", value);
  return text;
}

// One "name" or "name=min:max" item of a panel line, from `at`; moves `at` past it.
std::optional<std::string> ReadItem(std::string_view line, std::size_t& at, PanelChannel& item) {
  if (line[at] == '"') {
    const std::size_t end = line.find('"', at + 1);
    if (end == std::string_view::npos || end == at + 1) return "a quoted name is not closed";
    item.name = ChannelName(line.substr(at + 1, end - at - 1));
    at = end + 1;
  } else {
    const std::size_t start = at;
    while (at < line.size() && BareNameCharacter(line[at])) ++at;
    if (at == start) return std::string("unexpected character '") + line[at] + "'";
    item.name = std::string(line.substr(start, at - start));
  }
  item.name = ChannelName(item.name);
  if (at >= line.size() || line[at] != '=') return std::nullopt;
  std::size_t end = line.find(' ', at);
  if (end == std::string_view::npos) end = line.size();
  const std::string range(line.substr(at + 1, end - at - 1));
  at = end;
  char* stop = nullptr;
  const double min = std::strtod(range.c_str(), &stop);
  if (stop == range.c_str() || *stop != ':') return "a fixed scale is written =MIN:MAX";
  const char* max_text = stop + 1;
  const double max = std::strtod(max_text, &stop);
  if (stop == max_text || *stop != '\0' || !std::isfinite(min) || !std::isfinite(max) ||
      !(min < max)) {
    return "a fixed scale is written =MIN:MAX with MIN below MAX";
  }
  item.scale = {false, min, max};
  return std::nullopt;
}

}  // namespace

ChartLayout::ChartLayout() {
  ChartPanel panel;
  for (const ChannelInfo& channel : kChannels)
    panel.channels.push_back({std::string(channel.name), {}});
  panels_.push_back(std::move(panel));
  selected_ = std::string(kChannels[kChannelRpm].name);
}

std::optional<int> ChartLayout::PanelOf(std::string_view name) const {
  for (std::size_t p = 0; p < panels_.size(); ++p) {
    for (const PanelChannel& channel : panels_[p].channels) {
      if (SameChannel(channel.name, name)) return static_cast<int>(p);
    }
  }
  return std::nullopt;
}

const PanelChannel* ChartLayout::Find(std::string_view name) const {
  for (const ChartPanel& panel : panels_) {
    for (const PanelChannel& channel : panel.channels) {
      if (SameChannel(channel.name, name)) return &channel;
    }
  }
  return nullptr;
}

bool ChartLayout::AddPanel() {
  if (static_cast<int>(panels_.size()) >= kMaxPanels) return false;
  panels_.emplace_back();
  return true;
}

bool ChartLayout::RemovePanel(int panel) {
  if (panels_.size() < 2 || panel < 0 || panel >= static_cast<int>(panels_.size())) return false;
  ChartPanel& into = panels_[panel == 0 ? 1 : panel - 1];
  for (PanelChannel& channel : panels_[panel].channels) into.channels.push_back(std::move(channel));
  panels_.erase(panels_.begin() + panel);
  return true;
}

bool ChartLayout::Place(std::string_view name, int panel) {
  if (panel < 0 || panel >= static_cast<int>(panels_.size())) return false;
  PanelChannel moved{ChannelName(name), {}};
  if (const PanelChannel* found = Find(name)) moved = *found;
  Remove(name);
  panels_[panel].channels.push_back(std::move(moved));
  return true;
}

void ChartLayout::Select(std::string_view name) { selected_ = ChannelName(name); }

void ChartLayout::Rename(std::string_view from, std::string_view to) {
  for (ChartPanel& panel : panels_) {
    for (PanelChannel& channel : panel.channels) {
      if (SameChannel(channel.name, from)) channel.name = ChannelName(to);
    }
  }
  if (SameChannel(selected_, from)) selected_ = ChannelName(to);
}

void ChartLayout::Remove(std::string_view name) {
  for (ChartPanel& panel : panels_) {
    std::erase_if(panel.channels, [&](const PanelChannel& c) { return SameChannel(c.name, name); });
  }
}

bool ChartLayout::SetScale(std::string_view name, const ChannelScale& scale) {
  for (ChartPanel& panel : panels_) {
    for (PanelChannel& channel : panel.channels) {
      if (!SameChannel(channel.name, name)) continue;
      channel.scale = scale;
      return true;
    }
  }
  return false;
}

std::string QuotedName(std::string_view name) {
  const bool bare = !name.empty() && std::all_of(name.begin(), name.end(), BareNameCharacter);
  return bare ? std::string(name) : "\"" + std::string(name) + "\"";
}

std::string LayoutText(const ChartLayout& layout) {
  std::string text;
  for (const ChartPanel& panel : layout.Panels()) {
    text += "panel";
    for (const PanelChannel& channel : panel.channels) {
      text += " " + QuotedName(channel.name);
      if (!channel.scale.automatic) {
        text += "=" + ScaleNumber(channel.scale.min) + ":" + ScaleNumber(channel.scale.max);
      }
    }
    text += "\n";
  }
  if (!layout.Selected().empty()) text += "select " + QuotedName(layout.Selected()) + "\n";
  return text;
}

std::optional<std::string> LayoutReader::Line(std::string_view line) {
  if (line.starts_with("select ")) {
    std::size_t at = 7;
    PanelChannel item;
    if (auto problem = ReadItem(line, at, item)) return problem;
    layout.selected_ = item.name;
    return std::nullopt;
  }
  if (line != "panel" && !line.starts_with("panel ")) return "not a layout line";
  if (any_panel && static_cast<int>(layout.panels_.size()) >= kMaxPanels) {
    return "more than 4 panels";
  }
  if (!any_panel) layout.panels_.clear();
  ChartPanel panel;
  std::optional<std::string> problem;
  for (std::size_t at = 5; at < line.size() && !problem;) {
    if (line[at] == ' ') {
      ++at;
      continue;
    }
    PanelChannel item;
    problem = ReadItem(line, at, item);
    if (!problem && at < line.size() && line[at] != ' ') problem = "a blank expected";
    const bool in_line =
        std::any_of(panel.channels.begin(), panel.channels.end(),
                    [&](const PanelChannel& c) { return SameChannel(c.name, item.name); });
    if (!problem && (layout.PanelOf(item.name) || in_line)) problem = item.name + " is shown twice";
    if (!problem) panel.channels.push_back(std::move(item));
  }
  if (problem) return problem;
  any_panel = true;
  layout.panels_.push_back(std::move(panel));
  return std::nullopt;
}

ChartLayout LayoutReader::Finish() {
  if (!any_panel) layout.panels_ = ChartLayout().panels_;
  return layout;
}

LayoutRead ReadLayout(std::string_view text) {
  LayoutReader reader;
  LayoutRead read;
  int number = 0;
  while (!text.empty()) {
    const std::string_view line = TakeLine(text);
    ++number;
    if (line.empty() || line.starts_with('#')) continue;
    if (auto problem = reader.Line(line)) {
      read.problems.push_back("line " + std::to_string(number) + ": " + *problem);
    }
  }
  read.layout = reader.Finish();
  return read;
}

}  // namespace vela::review
