#include "editors/compare/compare_keys.h"

#include <gtest/gtest.h>

namespace vela {
namespace {

MapKeyPress Press(MapKey key, bool shift = false, bool alt = false, bool control = false) {
  return MapKeyPress{key, 0, shift, alt, control};
}

MapKeyPress Chord(char letter, bool shift = false) {
  return MapKeyPress{MapKey::kLetter, letter, shift, false, true};
}

TEST(CompareKeys, KeysThatChangeValuesAreKnown) {
  for (MapKey key : {MapKey::kUp, MapKey::kDown, MapKey::kPageUp, MapKey::kPageDown}) {
    EXPECT_TRUE(ChangesMapValues(Press(key), 0));
    EXPECT_TRUE(ChangesMapValues(Press(key, true), 0)) << "Shift-Up is a value key";
    EXPECT_TRUE(ChangesMapValues(Press(key, false, true), 0));
  }
  EXPECT_TRUE(ChangesMapValues(Press(MapKey::kEnter), 0));
  for (char typed : std::string("0579=*/+-.,")) {
    EXPECT_TRUE(ChangesMapValues(Press(MapKey::kOther), typed)) << typed;
  }
  for (char letter : std::string("vVbBrRwWeE")) {
    EXPECT_TRUE(ChangesMapValues(Chord(letter), 0)) << letter;
  }
  EXPECT_TRUE(ChangesMapValues(Chord('R', true), 0)) << "interpolate along each column";
}

TEST(CompareKeys, MovingSelectingCopyingAndUndoStayFree) {
  EXPECT_FALSE(ChangesMapValues(Press(MapKey::kLeft), 0));
  EXPECT_FALSE(ChangesMapValues(Press(MapKey::kRight), 0));
  EXPECT_FALSE(ChangesMapValues(MapKeyPress{MapKey::kLetter, 'n'}, 'n'));
  EXPECT_FALSE(ChangesMapValues(Press(MapKey::kUp, true, false, true), 0)) << "Ctrl-Shift-Up";
  for (char letter : std::string("aAcCzZyYqQjJ")) {
    EXPECT_FALSE(ChangesMapValues(Chord(letter), 0)) << letter;
  }
  EXPECT_FALSE(ChangesMapValues(Chord('c', true), 0)) << "copy with the axes";
  EXPECT_FALSE(ChangesMapValues(MapKeyPress{MapKey::kLetter, 'a', false, true, false}, 'a'));
  EXPECT_FALSE(ChangesMapValues(Press(MapKey::kOther), 0)) << "a modifier alone";
  EXPECT_FALSE(ChangesMapValues(Press(MapKey::kOther, false, true), '5')) << "Alt-5";
}

}  // namespace
}  // namespace vela
