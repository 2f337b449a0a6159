#include "editors/workbench/sheet_text.h"

#include <algorithm>
#include <cctype>
#include <cmath>
#include <optional>

#include "base/text_fields.h"
#include "calibration/conversions.h"
#include "calibration/decimal_text.h"

namespace vela {

namespace {

using TextRows = std::vector<std::vector<std::string>>;

constexpr std::string_view kUtf8Mark = "\xEF\xBB\xBF";

// ---- Writing ----

std::string NumberCell(double value, int decimals, char decimal_mark) {
  if (!std::isfinite(value)) return "";
  return FormatFixed(value, decimals, decimal_mark, nullptr);
}

std::string AxisCell(const std::vector<double>& values, int index, int decimals, char mark) {
  if (index < 0 || index >= static_cast<int>(values.size())) return "";
  return NumberCell(values[static_cast<std::size_t>(index)], decimals, mark);
}

int DecimalsOfRow(const SheetBlock& block, int row) {
  if (row < static_cast<int>(block.row_decimals.size())) {
    return block.row_decimals[static_cast<std::size_t>(row)];
  }
  return block.decimals;
}

// ---- Reading the text into cells ----

// The cell separator: a tab anywhere (outside quotes) makes tab-separated text, otherwise a
// semicolon makes semicolon-separated text, otherwise a comma separates cells only when the
// decimal mark is not a comma. 0 means one cell per line.
char CellSeparatorOf(std::string_view text, char decimal_mark) {
  bool quoted = false;
  bool tab = false;
  bool semicolon = false;
  bool comma = false;
  for (char c : text) {
    if (c == '"') quoted = !quoted;
    if (quoted) continue;
    tab = tab || c == '\t';
    semicolon = semicolon || c == ';';
    comma = comma || c == ',';
  }
  if (tab) return '\t';
  if (semicolon) return ';';
  if (comma && decimal_mark != ',') return ',';
  return 0;
}

// Splits into rows of raw cells at line ends ("\n", "\r\n" or a lone "\r") and separators;
// quoted text keeps both as they stand.
TextRows SplitCells(std::string_view text, char separator) {
  TextRows rows(1);
  std::string cell;
  bool quoted = false;
  for (std::size_t i = 0; i < text.size(); ++i) {
    const char c = text[i];
    if (c == '"') quoted = !quoted;
    if (quoted || (c != separator && c != '\n' && c != '\r')) {
      cell += c;
      continue;
    }
    rows.back().push_back(std::move(cell));
    cell.clear();
    if (c == separator) continue;
    if (c == '\r' && i + 1 < text.size() && text[i + 1] == '\n') ++i;
    rows.emplace_back();
  }
  rows.back().push_back(std::move(cell));
  return rows;
}

// A cell's content: blanks around it and one pair of surrounding quotes dropped ("" inside
// quotes is one quote).
std::string CellContent(std::string_view raw) {
  std::string_view text = TrimBlanks(raw);
  if (text.size() < 2 || text.front() != '"' || text.back() != '"') return std::string(text);
  std::string inner;
  const std::string_view quoted = text.substr(1, text.size() - 2);
  for (std::size_t i = 0; i < quoted.size(); ++i) {
    inner += quoted[i];
    if (quoted[i] == '"' && i + 1 < quoted.size() && quoted[i + 1] == '"') ++i;
  }
  return std::string(TrimBlanks(inner));
}

// Blank cells at the end of each row and blank rows at the end of the text go: spreadsheets
// leave both behind.
void DropTrailingBlanks(TextRows& rows) {
  for (auto& row : rows) {
    while (!row.empty() && CellContent(row.back()).empty()) row.pop_back();
  }
  while (!rows.empty() && rows.back().empty()) rows.pop_back();
}

bool AllDigits(std::string_view text) {
  return !text.empty() && std::all_of(text.begin(), text.end(), [](char c) {
    return std::isdigit(static_cast<unsigned char>(c)) != 0;
  });
}

// A comma-separated row that also reads as one number with thousands grouped ("1,234",
// "-12,500,000"): which was meant cannot be told.
bool LooksGrouped(const std::vector<std::string>& row) {
  if (row.size() < 2) return false;
  std::string_view first = TrimBlanks(row.front());
  if (!first.empty() && (first.front() == '-' || first.front() == '+')) first.remove_prefix(1);
  if (!AllDigits(first) || first.size() > 3) return false;
  return std::all_of(row.begin() + 1, row.end(), [](const std::string& cell) {
    const std::string_view group = TrimBlanks(cell);
    return group.size() == 3 && AllDigits(group);
  });
}

// A number with '.' as its decimal mark, or ',' when `comma_allowed`; never both in one cell.
std::optional<double> CellNumber(std::string text, bool comma_allowed) {
  if (text.find(',') != std::string::npos) {
    if (!comma_allowed || text.find('.') != std::string::npos) return std::nullopt;
    std::replace(text.begin(), text.end(), ',', '.');
  }
  return NumberOfText(text, '.');
}

// ---- Checks ----

SheetPaste Refusal(PasteRefusal why, int row = 0, int column = 0, std::string text = {}) {
  SheetPaste paste;
  paste.refusal = why;
  paste.bad_row = row;
  paste.bad_column = column;
  paste.bad_text = std::move(text);
  return paste;
}

std::string JoinedRow(const std::vector<std::string>& row, char separator) {
  std::string line;
  for (std::size_t i = 0; i < row.size(); ++i)
    line += (i ? std::string(1, separator) : "") + row[i];
  return line;
}

// The numbers of every cell (the axis corner stays 0), or the first cell that holds none.
struct ReadNumbers {
  std::vector<std::vector<double>> values;
  std::optional<SheetPaste> refusal;
};

ReadNumbers NumbersOf(const TextRows& rows, int width, bool skip_corner, bool comma_allowed) {
  ReadNumbers read;
  for (int r = 0; r < static_cast<int>(rows.size()); ++r) {
    const auto& row = rows[static_cast<std::size_t>(r)];
    std::vector<double> numbers(static_cast<std::size_t>(width), 0.0);
    for (int c = 0; c < width; ++c) {
      if (skip_corner && r == 0 && c == 0) continue;
      const std::string text = c < static_cast<int>(row.size())
                                   ? CellContent(row[static_cast<std::size_t>(c)])
                                   : std::string();
      const std::optional<double> value = CellNumber(text, comma_allowed);
      if (!value) {
        read.refusal = Refusal(PasteRefusal::kNotANumber, r + 1, c + 1, text);
        return read;
      }
      numbers[static_cast<std::size_t>(c)] = *value;
    }
    read.values.push_back(std::move(numbers));
  }
  return read;
}

bool OnAxis(double pasted, double axis, int decimals) {
  if (!std::isfinite(axis)) return false;
  return std::abs(pasted - axis) <= 0.5 * std::pow(10.0, -decimals) + 1e-9;
}

// The index of the first pasted axis value that breaks a run of consecutive axis values (the
// run starting where the first pasted value lies), or -1 when all of them follow the axis.
int FirstOffAxis(const std::vector<double>& pasted, const std::vector<double>& axis, int decimals) {
  std::size_t start = 0;
  while (start < axis.size() && !OnAxis(pasted.front(), axis[start], decimals)) ++start;
  for (std::size_t i = 0; i < pasted.size(); ++i) {
    if (start + i >= axis.size() || !OnAxis(pasted[i], axis[start + i], decimals)) {
      return static_cast<int>(i);
    }
  }
  return -1;
}

// How a text carries axes: a header row of loads and a first column of RPM under an empty corner
// cell, or (on a one-column table whose rows have an axis) a first column of the rows' axis values.
struct AxisForm {
  int rows = 0;     // header rows to skip
  int columns = 0;  // axis columns to skip
};

AxisForm AxisFormOf(const TextRows& rows, int width, const PasteArea& area,
                    const SheetAxes* map_axes) {
  if (rows.size() >= 2 && width >= 2 && rows.front().size() >= 1 &&
      CellContent(rows.front().front()).empty()) {
    return {1, 1};
  }
  const bool row_axis_only =
      map_axes != nullptr && map_axes->column_values.empty() && !map_axes->row_values.empty();
  if (row_axis_only && width == 2 && area.map.left == area.map.right) return {0, 1};
  return {};
}

std::optional<SheetPaste> AxisRefusal(const TextRows& rows,
                                      const std::vector<std::vector<double>>& values,
                                      const SheetAxes& axes, AxisForm form) {
  int row = 1;
  int column = 1;
  if (form.rows == 1) {
    const std::vector<double> loads(values.front().begin() + 1, values.front().end());
    column = FirstOffAxis(loads, axes.column_values, axes.column_decimals) + 2;
  }
  if (column == 1) {
    std::vector<double> rpms;
    for (auto r = static_cast<std::size_t>(form.rows); r < values.size(); ++r) {
      rpms.push_back(values[r].front());
    }
    row = FirstOffAxis(rpms, axes.row_values, axes.row_decimals) + 1 + form.rows;
    if (row == form.rows) return std::nullopt;
  }
  const auto& cells = rows[static_cast<std::size_t>(row - 1)];
  return Refusal(PasteRefusal::kAxisMismatch, row, column,
                 CellContent(cells[static_cast<std::size_t>(column - 1)]));
}

// ---- Placing ----

bool IsSingleCell(const MapCellRect& rect) {
  return rect.top == rect.bottom && rect.left == rect.right;
}

// The room a block has: the selection when one is active, else the map from the cursor on.
MapCellRect RoomOf(const PasteArea& area, bool& is_selection) {
  const MapCellRect& map = area.map;
  MapCellRect room = area.selection;
  is_selection = !IsSingleCell(room);
  if (!is_selection) {
    room.top = std::clamp(area.cursor.row, map.top, map.bottom);
    room.left = std::clamp(area.cursor.column, map.left, map.right);
  }
  room.top = std::clamp(room.top, map.top, map.bottom);
  room.left = std::clamp(room.left, map.left, map.right);
  room.bottom = is_selection ? std::clamp(room.bottom, room.top, map.bottom) : map.bottom;
  room.right = is_selection ? std::clamp(room.right, room.left, map.right) : map.right;
  return room;
}

void Place(SheetPaste& paste, const std::vector<std::vector<double>>& values, AxisForm skip,
           const PasteArea& area) {
  const MapCellRect room = RoomOf(area, paste.room_is_selection);
  const int room_rows = room.bottom - room.top + 1;
  const int room_columns = room.right - room.left + 1;
  const bool fill = paste.room_is_selection && paste.block_rows == 1 && paste.block_columns == 1;
  paste.kept_rows = fill ? room_rows : std::min(paste.block_rows, room_rows);
  paste.kept_columns = fill ? room_columns : std::min(paste.block_columns, room_columns);
  const bool too_big = paste.block_rows > room_rows || paste.block_columns > room_columns;
  paste.status = too_big ? PasteStatus::kTooBig : PasteStatus::kFits;
  for (int r = 0; r < paste.kept_rows; ++r) {
    for (int c = 0; c < paste.kept_columns; ++c) {
      const auto row = static_cast<std::size_t>(fill ? skip.rows : r + skip.rows);
      const auto column = static_cast<std::size_t>(fill ? skip.columns : c + skip.columns);
      const double value = values[row][column];
      paste.cells.push_back({{room.top + r, room.left + c}, value});
    }
  }
}

std::string Plural(int count, std::string_view one, std::string_view many) {
  return std::to_string(count) + " " + std::string(count == 1 ? one : many);
}

std::string SizeText(int rows, int columns) {
  return Plural(rows, "row", "rows") + " and " + Plural(columns, "column", "columns");
}

}  // namespace

std::string SheetText(const SheetBlock& block, char decimal_mark, const SheetAxes* axes) {
  std::string text;
  if (axes != nullptr && !axes->column_values.empty()) {
    for (int c = 0; c < block.columns; ++c) {
      text += '\t' + AxisCell(axes->column_values, c, axes->column_decimals, decimal_mark);
    }
    text += '\n';
  }
  for (int r = 0; r < block.rows; ++r) {
    if (axes != nullptr) {
      text += AxisCell(axes->row_values, r, axes->row_decimals, decimal_mark) + '\t';
    }
    for (int c = 0; c < block.columns; ++c) {
      if (c > 0) text += '\t';
      text += NumberCell(block.At(r, c), DecimalsOfRow(block, r), decimal_mark);
    }
    text += '\n';
  }
  return text;
}

SheetPaste ReadSheetPaste(std::string_view text, char decimal_mark, const PasteArea& area,
                          const SheetAxes* map_axes) {
  if (text.size() > kMaxPasteBytes) return Refusal(PasteRefusal::kTooLong);
  if (text.substr(0, kUtf8Mark.size()) == kUtf8Mark) text.remove_prefix(kUtf8Mark.size());
  const char separator = CellSeparatorOf(text, decimal_mark);
  TextRows rows = SplitCells(text, separator);
  DropTrailingBlanks(rows);
  if (rows.empty()) return Refusal(PasteRefusal::kEmpty);
  for (std::size_t r = 0; separator == ',' && r < rows.size(); ++r) {
    if (LooksGrouped(rows[r])) {
      return Refusal(PasteRefusal::kAmbiguous, static_cast<int>(r) + 1, 0,
                     JoinedRow(rows[r], separator));
    }
  }
  int width = 0;
  for (const auto& row : rows) width = std::max(width, static_cast<int>(row.size()));
  const AxisForm axes = AxisFormOf(rows, width, area, map_axes);
  const bool comma_allowed = decimal_mark == ',' || separator == ';';
  ReadNumbers read = NumbersOf(rows, width, axes.rows == 1, comma_allowed);
  if (read.refusal) return *read.refusal;
  if (axes.columns == 1 && map_axes != nullptr) {
    if (auto refusal = AxisRefusal(rows, read.values, *map_axes, axes)) return *refusal;
  }
  SheetPaste paste;
  paste.had_axes = axes.columns == 1;
  paste.block_rows = static_cast<int>(rows.size()) - axes.rows;
  paste.block_columns = width - axes.columns;
  Place(paste, read.values, axes, area);
  return paste;
}

std::vector<std::string> PasteRefusalLines(const SheetPaste& paste) {
  const std::string where =
      "Row " + std::to_string(paste.bad_row) + ", column " + std::to_string(paste.bad_column);
  std::vector<std::string> lines;
  switch (paste.refusal) {
    case PasteRefusal::kNone:
      return {};
    case PasteRefusal::kEmpty:
      lines.push_back("The pasted text holds no values.");
      break;
    case PasteRefusal::kTooLong:
      lines.push_back("The pasted text is far larger than any map.");
      break;
    case PasteRefusal::kNotANumber:
      lines.push_back(paste.bad_text.empty() ? where + " of the pasted text is empty."
                                             : where + " of the pasted text holds \"" +
                                                   paste.bad_text + "\", which is not a number.");
      break;
    case PasteRefusal::kAmbiguous:
      lines.push_back("Row " + std::to_string(paste.bad_row) + " of the pasted text, \"" +
                      paste.bad_text + "\", reads as one number or as several cells.");
      lines.push_back("Copy it again with tabs between the cells.");
      break;
    case PasteRefusal::kAxisMismatch:
      lines.push_back(where + " of the pasted text holds \"" + paste.bad_text +
                      "\", which is not on this map's axis.");
      break;
  }
  lines.push_back("Nothing was pasted.");
  return lines;
}

std::vector<std::string> PasteTooBigLines(const SheetPaste& paste) {
  const std::string room = paste.room_is_selection ? "the selection holds"
                                                   : "fits between the cursor and the map's edge";
  return {"The pasted block has " + SizeText(paste.block_rows, paste.block_columns) +
              ", more than " + room + ".",
          "Paste the " + SizeText(paste.kept_rows, paste.kept_columns) +
              " that fit (Clip), or Cancel?"};
}

}  // namespace vela
