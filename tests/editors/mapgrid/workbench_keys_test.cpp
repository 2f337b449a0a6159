#include "editors/mapgrid/workbench_keys.h"

#include <gtest/gtest.h>

#include <string>

#include "editors/mapgrid/key_routing.h"

namespace vela {
namespace {

MapKeyPress Chord(MapKey key, char letter = 0, bool shift = false, bool control = true,
                  bool alt = false) {
  return {key, letter, shift, alt, control};
}

TEST(WorkbenchChordTest, ControlChordsNameTheirOperations) {
  EXPECT_EQ(GridChordOf(Chord(MapKey::kUp, 0, true), 0), GridChord::kExtendUp);
  EXPECT_EQ(GridChordOf(Chord(MapKey::kLeft, 0, true), 0), GridChord::kExtendLeft);
  EXPECT_EQ(GridChordOf(Chord(MapKey::kLetter, 'a'), 0), GridChord::kSelectAll);
  EXPECT_EQ(GridChordOf(Chord(MapKey::kLetter, 'B'), 0), GridChord::kInterpolateBoth);
  EXPECT_EQ(GridChordOf(Chord(MapKey::kLetter, 'R'), 0), GridChord::kInterpolateRows);
  EXPECT_EQ(GridChordOf(Chord(MapKey::kLetter, 'R', true), 0), GridChord::kInterpolateColumns);
  EXPECT_EQ(GridChordOf(Chord(MapKey::kLetter, 'W'), 0), GridChord::kSmooth);
  EXPECT_EQ(GridChordOf(Chord(MapKey::kLetter, 'E'), 0), GridChord::kFill);
  EXPECT_EQ(GridChordOf(Chord(MapKey::kLetter, 'c'), 0), GridChord::kCopy);
  EXPECT_EQ(GridChordOf(Chord(MapKey::kLetter, 'C', true), 0), GridChord::kCopyWithAxes);
  EXPECT_EQ(GridChordOf(Chord(MapKey::kLetter, 'V'), 0), GridChord::kPaste);
}

// The value keys, the other developers' chords and anything with Alt stay out of the grid's
// workbench.
TEST(WorkbenchChordTest, ValueKeysHistoryAndAltAreNoChords) {
  EXPECT_EQ(GridChordOf(Chord(MapKey::kUp, 0, true, false), 0), GridChord::kNone);  // Shift-Up
  EXPECT_EQ(GridChordOf(Chord(MapKey::kUp, 0, false), 0), GridChord::kNone);        // Ctrl-Up
  EXPECT_EQ(GridChordOf(Chord(MapKey::kUp, 0, true, true, true), 0), GridChord::kNone);
  EXPECT_EQ(GridChordOf(Chord(MapKey::kLetter, 'A', false, true, true), 0), GridChord::kNone);
  for (char letter : std::string("ZYJQ")) {
    EXPECT_EQ(GridChordOf(Chord(MapKey::kLetter, letter), 0), GridChord::kNone) << letter;
  }
  EXPECT_EQ(GridChordOf(Chord(MapKey::kLetter, 'V', true), 0), GridChord::kNone);
}

TEST(WorkbenchChordTest, TheTypedLineOpensOnEqualsDigitsAndOperators) {
  for (char typed : std::string("=0123456789*/+-")) {
    EXPECT_EQ(GridChordOf(Chord(MapKey::kOther, 0, false, false), typed), GridChord::kOpenLine)
        << typed;
  }
  for (char typed : std::string(".,%a ")) {
    EXPECT_EQ(GridChordOf(Chord(MapKey::kOther, 0, false, false), typed), GridChord::kNone)
        << typed;
  }
  // With Ctrl or Alt a digit is no typing.
  EXPECT_EQ(GridChordOf(Chord(MapKey::kOther, 0, false, true), '5'), GridChord::kNone);
  EXPECT_EQ(GridChordOf(Chord(MapKey::kOther, 0, false, false, true), '5'), GridChord::kNone);
}

// The table names no bare page letter nor N, P, L, U or K: those keys belong to the window.
TEST(WorkbenchKeysTableTest, NoKeyIsABareLetter) {
  for (const WorkbenchKeyRow& row : kWorkbenchKeyRows) {
    const std::string keys(row.keys);
    EXPECT_FALSE(keys.size() == 1 && keys[0] >= 'A' && keys[0] <= 'Z') << keys;
    EXPECT_FALSE(row.function.empty()) << keys;
  }
}

}  // namespace
}  // namespace vela
