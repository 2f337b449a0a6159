// The ECU's fault codes: the title and the explanation of every code the ECU records, and the
// texts of the error grid (`OBDGrid`) that lists them. A title always begins with two blanks.
#pragma once

#include <array>
#include <cstdint>
#include <string>
#include <string_view>

namespace vela {

// The error grid has four rows; the explanation store has a slot for each row and two more.
inline constexpr int kErrorGridRows = 4;
inline constexpr int kErrorExplanationSlots = 6;

// The grid's rows when the ECU does not answer (rows 1 to 3), and the row of the no-error branch
// (all four rows).
inline constexpr std::string_view kCommsInterruptedRow = " ** Comms interrupted **";
inline constexpr std::string_view kNoErrorRow = "     0  -  No Error";
inline constexpr int kCommsInterruptedRows = 3;

// The title of `code` ("  Unknown Code" for a code the table does not hold).
std::string_view ErrorTitle(int code);
// Its explanation, the two parts of a joined explanation put together.
std::string ErrorExplanation(int code);

// The six explanation slots, one per grid row.
class ErrorExplanations {
 public:
  // `ErrorCodeText`: returns the title of `code` and stores its explanation in `slot` (0 to 5);
  // a slot outside 0 to 5 stores nothing.
  std::string ErrorCodeText(int slot, std::int16_t code);

  // The explanation in `slot`, empty for a slot outside 0 to 5.
  const std::string& Explanation(int slot) const;
  void Clear();

 private:
  std::array<std::string, kErrorExplanationSlots> slots_;
};

// The code as the row shows it: a blank for its sign (a minus for a negative code) before the
// digits, the whole padded on the left with four blanks below 11, two from 11 to 100 and none
// above 100.
std::string ErrorCodeNumberText(int code);
// A grid row: the padded number, "  -" and the title.
std::string ErrorRowText(int code);

}  // namespace vela
