// Renaming a math channel so that what uses it follows: the expressions of the channels after
// it (only they can use it) and the chart layout's panels and selection.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

#include "datalog/review/chart_layout.h"
#include "datalog/review/math_channels.h"

namespace vela::review {

// `expression` with every use of the channel `from` (a bare or quoted name, letters in any case)
// written as `to`, quoted when it needs quotes. Everything else is kept as written, spacing
// included; a quote that is never closed ends the rewriting there.
std::string RenameInExpression(std::string_view expression, std::string_view from,
                               std::string_view to);

// Math channel `at` of `channels` named `to`: the channels after it and `layout` follow. Nothing
// changes for an `at` past the end.
void RenameMathChannel(std::vector<MathChannel>& channels, ChartLayout& layout, std::size_t at,
                       const std::string& to);

}  // namespace vela::review
