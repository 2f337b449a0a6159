// The engine and sensor set-up as the tuner changes it: each choice or number is kept in the
// editors' state, written into the calibration image and sent to the ECU at once, one
// single-value write (command 4) for each image byte that changed. While the editors are being
// filled from a calibration nothing is kept, sent or shown.
//
// A change whose bytes would fail a setup check that reads them is refused: nothing is kept or
// sent (ChangeBreaks in setup_checks.h). One exception lets a byte the ECU holds bad be mended
// part by part: a choice that puts its control from no entry onto an entry may leave a check
// failing that failed already (byte 907 with both its injection mode and its impedance bad takes
// one of them, then the other). The pages ask first (TryChoose, RawRange) and offer only what
// can be chosen, saying why the rest cannot.
#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "editors/edit_parts.h"
#include "editors/setup/setup_checks.h"
#include "editors/setup/setup_choice_table.h"

namespace vela {

struct ByteWrite {
  int position;
  std::uint8_t value;
  bool operator==(const ByteWrite&) const = default;
};

// What a change would write, and the checks that refuse it (none: it may go ahead). A value a
// control does not offer (an entry beyond its list) is refused as not offered.
struct ChangeOutcome {
  std::vector<ByteWrite> bytes;  // the bytes it would change, in position order
  std::vector<SetupCheck> refusals;
  bool offered = true;
  bool Refused() const { return !offered || !refusals.empty(); }
};
// Why a refused change cannot be made, in the tuner's words: "it would set byte 955 to 229,
// which fails Map Sensor Setup Invalid: byte 955 (...) is above 228". Empty when not refused.
std::string RefusalText(const ChangeOutcome& outcome);

// The order in which the bytes of a number of several bytes go to the ECU: most significant
// first when the number grows, least significant first when it shrinks. No value the ECU holds on
// the way is then below both the old and the new number: a rev limiter's period never passes
// through a speed above both limits (it may pass a lower one for the moment between frames).
std::vector<int> SafeByteOrder(int first_position, int width, std::uint32_t old_value,
                               std::uint32_t new_value);

class SetupEditor {
 public:
  explicit SetupEditor(EditParts parts) : parts_(parts) {}

  // A choice of a group or list (`value` is the entry index, or 0/1 for a flag). Choosing
  // "Rising" for the trigger input first shows the rising-edge warning; the choice is kept and
  // sent whatever the answer. A change of the site lists lays the editors' maps out afresh from
  // the image (the ECU reads the same map bytes with the new layout). Choosing the MAP sensor
  // type already chosen changes nothing. Returns the bytes sent; nothing for a refused choice.
  std::vector<ByteWrite> Choose(SetupChoice choice, int value);
  // What Choose would write now, and whether it would be refused; nothing is kept or sent.
  ChangeOutcome TryChoose(SetupChoice choice, int value) const;

  // Numbers in the tuner's units. nullopt (and nothing kept or sent) when the value cannot be
  // held: a speed whose period does not fit the field, an offset outside 0 to 60 degrees.
  std::optional<std::vector<ByteWrite>> SetRevLimitRpm(int limiter, double rpm);
  std::optional<std::vector<ByteWrite>> SetIdleTargetRpm(double rpm);
  std::optional<std::vector<ByteWrite>> SetTriggerOffsetDegrees(double degrees);
  std::vector<ByteWrite> SetDwellValue(int value);

  // A byte that an editor shows raw (an output or input group, the idle, TPS and trigger bytes,
  // the battery table's bytes beyond its rows); nothing happens for a position no raw editor
  // owns, or for a value refused.
  std::vector<ByteWrite> SetRawByte(int position, std::uint8_t value);
  ChangeOutcome TryRawByte(int position, std::uint8_t value) const;
  // The lowest and highest value a raw byte can take now (every value between them can);
  // nullopt when none can.
  std::optional<std::pair<int, int>> RawRange(int position) const;
  // Why a raw byte takes only `range`, its RawRange (which the pages have at hand: it tries
  // every value): "Takes 0 to 15: 16 would set byte 884 to 16, which fails ...". Empty when it
  // takes every value.
  std::string RawRangeNote(int position, const std::optional<std::pair<int, int>>& range) const;
  // Idle option `index` (0 to 7: byte 856, bits 0 to 7; 8 to 15: byte 857).
  std::vector<ByteWrite> SetIdleFlag(int index, bool on);

  // True when SetRawByte takes `position`.
  static bool IsRawPosition(int position);

 private:
  using Change = std::function<void(EditorState&)>;

  bool Filling() const { return parts_.suppress_change_events; }
  // What `change` would write into `fields`, judged by the checks that read those bytes; with
  // `mends` set, a check that fails already does not refuse it.
  ChangeOutcome Outcome(const Change& change, const std::vector<std::string_view>& fields,
                        bool mends = false) const;
  // Makes `change` and stores `fields` unless it is refused; nullopt when refused.
  std::optional<std::vector<ByteWrite>> Make(const Change& change,
                                             const std::vector<std::string_view>& fields);
  // Makes `change` and stores `fields`, judged already.
  std::vector<ByteWrite> Commit(const Change& change, const std::vector<std::string_view>& fields);
  // Writes the bytes of `field` as the editors now hold them and sends the ones that changed.
  std::vector<ByteWrite> Store(std::string_view field);
  std::vector<ByteWrite> StorePositions(const std::vector<int>& positions);
  void LayOutMaps();

  EditParts parts_;
};

}  // namespace vela
