// A small map grid: one column of values beside a column of row labels, edited with the map
// keys (editors/mapgrid/map_keys.h) like the fuel and ignition maps. Each row holds the byte the
// ECU stores and shows it through its row's format; a value key moves the shown value by the
// key's step and stores the nearest byte the format's conversion gives, always at least one
// storable step, never past the row's limits.
//
// With each change the grid reports the cell's image position plus one and a lower bound (the
// table's lowest position plus one); the program writes at the reported number minus one when it is
// not below the bound.
#pragma once

#include <array>
#include <functional>
#include <string>
#include <vector>

#include "editors/mapgrid/map_keys.h"

namespace vela {

struct CellFormat {
  std::function<double(int)> shown;   // stored byte to shown value
  std::function<int(double)> stored;  // shown value to stored form, made whole, not limited
  int decimals = 1;
  // Step of each value key (ValueKey order: standard, fine, super fine, large, 1 ms, 2 ms) in
  // shown units; 0 for a key that does nothing on the row.
  std::array<double, 6> steps{};
  int min_raw = 0;  // the row's limits, as stored bytes
  int max_raw = 255;
};

struct SmallGridChange {
  int row;
  int reported;     // the cell's image position plus one
  int lower_bound;  // the lowest image position of the table plus one
  bool operator==(const SmallGridChange&) const = default;
};

// A row and the stored byte it takes.
struct SmallRowValue {
  int row;
  int raw;
  bool operator==(const SmallRowValue&) const = default;
};

class SmallGridModel {
 public:
  using ChangedHandler = std::function<void(const std::vector<SmallGridChange>&)>;

  // One row per label; `positions` holds each row's image position.
  SmallGridModel(std::vector<std::string> row_labels, std::vector<int> positions);

  int Rows() const { return static_cast<int>(labels_.size()); }
  const std::string& RowLabel(int row) const { return labels_[Index(row)]; }
  int Position(int row) const { return positions_[Index(row)]; }

  void SetFormat(int row, CellFormat format) { formats_[Index(row)] = std::move(format); }
  const CellFormat& Format(int row) const { return formats_[Index(row)]; }
  void SetDecimalSeparator(char separator) { separator_ = separator; }

  // The stored byte of a row (no change report), its shown value and text.
  int Raw(int row) const { return raw_[Index(row)]; }
  void SetRaw(int row, int raw) { raw_[Index(row)] = raw; }
  double Value(int row) const;
  std::string Text(int row) const;

  // The cursor row and the selected rows (clamped into the grid).
  int Current() const { return current_; }
  int SelectionFirst() const { return first_; }
  int SelectionLast() const { return last_; }
  void Select(int first, int last, int current);

  // The value keys change every selected row; N moves the cursor a row up, P a row down. True
  // when the key belongs to the grid, changed or not.
  bool HandleKey(const MapKeyPress& press);
  std::vector<int> ApplyStep(ValueStep step);
  // Sets a row to a stored value given by the program (a typed value), reporting the change.
  void Enter(int row, int raw);
  // Sets several rows at once (an operation on the selection), reported as one change.
  void Enter(const std::vector<SmallRowValue>& rows);

  void SetChangedHandler(ChangedHandler handler) { handler_ = std::move(handler); }

 private:
  std::size_t Index(int row) const;
  int Stepped(int row, ValueStep step) const;
  void Report(const std::vector<int>& rows);

  std::vector<std::string> labels_;
  std::vector<int> positions_;
  std::vector<CellFormat> formats_;
  std::vector<int> raw_;
  char separator_ = '.';
  int current_ = 0;
  int first_ = 0;
  int last_ = 0;
  ChangedHandler handler_;
};

}  // namespace vela
