#include "editors/compare/compare_keys.h"

#include <gtest/gtest.h>

#include "support/map_key_presses.h"

namespace vela {
namespace {

using testing::KeyPress;

MapKeyPress Chord(char letter, bool shift = false) {
  return MapKeyPress{MapKey::kLetter, letter, shift, false, true};
}

TEST(CompareKeys, KeysThatChangeValuesAreKnown) {
  for (MapKey key : {MapKey::kUp, MapKey::kDown, MapKey::kPageUp, MapKey::kPageDown}) {
    EXPECT_TRUE(ChangesMapValues(KeyPress(key), 0));
    EXPECT_TRUE(ChangesMapValues(KeyPress(key, true), 0)) << "Shift-Up is a value key";
    EXPECT_TRUE(ChangesMapValues(KeyPress(key, false, true), 0));
  }
  EXPECT_TRUE(ChangesMapValues(KeyPress(MapKey::kEnter), 0));
  for (char typed : std::string("0579=*/+-.,")) {
    EXPECT_TRUE(ChangesMapValues(KeyPress(MapKey::kOther), typed)) << typed;
  }
  for (char letter : std::string("vVbBrRwWeE")) {
    EXPECT_TRUE(ChangesMapValues(Chord(letter), 0)) << letter;
  }
  EXPECT_TRUE(ChangesMapValues(Chord('R', true), 0)) << "interpolate along each column";
}

TEST(CompareKeys, MovingSelectingCopyingAndUndoStayFree) {
  EXPECT_FALSE(ChangesMapValues(KeyPress(MapKey::kLeft), 0));
  EXPECT_FALSE(ChangesMapValues(KeyPress(MapKey::kRight), 0));
  EXPECT_FALSE(ChangesMapValues(MapKeyPress{MapKey::kLetter, 'n'}, 'n'));
  EXPECT_FALSE(ChangesMapValues(KeyPress(MapKey::kUp, true, false, true), 0)) << "Ctrl-Shift-Up";
  for (char letter : std::string("aAcCzZyYqQjJ")) {
    EXPECT_FALSE(ChangesMapValues(Chord(letter), 0)) << letter;
  }
  EXPECT_FALSE(ChangesMapValues(Chord('c', true), 0)) << "copy with the axes";
  EXPECT_FALSE(ChangesMapValues(MapKeyPress{MapKey::kLetter, 'a', false, true, false}, 'a'));
  EXPECT_FALSE(ChangesMapValues(KeyPress(MapKey::kOther), 0)) << "a modifier alone";
  EXPECT_FALSE(ChangesMapValues(KeyPress(MapKey::kOther, false, true), '5')) << "Alt-5";
}

}  // namespace
}  // namespace vela
