// The choice descriptions as one whole: choices that share a byte never share a bit, and every
// entry a control offers comes back from the image it is written into.
#include "editors/setup/setup_choice_table.h"

#include <gtest/gtest.h>

#include <map>
#include <string>

#include "editors/build_calibration.h"

namespace vela {
namespace {

TEST(SetupChoiceTable, ChoicesSharingAByteHoldBitsOfTheirOwnAndWriteNoOthers) {
  std::map<std::string_view, int> taken;
  for (const SetupChoiceDescription& d : SetupChoiceDescriptions()) {
    SCOPED_TRACE(std::string(d.name));
    ASSERT_TRUE(FindSetupField(d.field).has_value());
    EXPECT_EQ(taken[d.field] & d.bits, 0);
    taken[d.field] |= d.bits;
    EditorState state;
    for (int entry = 0; entry < ChoiceEntries(d.choice, state); ++entry) {
      KeepChoice(d.choice, entry, state);
      EXPECT_EQ(d.encode(state) & ~d.bits, 0) << "entry " << entry;
    }
  }
}

// An entry the byte cannot carry (the spark edge's pull-ups, the auxiliary output's entries 2 and
// 3) writes what an entry that comes back writes.
TEST(SetupChoiceTable, EveryEntryComesBackFromTheImageOrWritesWhatOneThatDoesWrites) {
  for (const SetupChoiceDescription& d : SetupChoiceDescriptions()) {
    EditorState state;
    for (int entry = 0; entry < ChoiceEntries(d.choice, state); ++entry) {
      SCOPED_TRACE(std::string(d.name) + " entry " + std::to_string(entry));
      KeepChoice(d.choice, entry, state);
      const CalibrationImage image = EncodeSetup(state);
      EditorState read;
      DecodeChoices(d.field, image, read);
      if (!d.also_writes.empty()) DecodeChoices(d.also_writes, image, read);
      const int back = ShownChoice(d.choice, read, image);
      ASSERT_NE(back, kNoEntry);
      if (back == entry) continue;
      EditorState other;
      KeepChoice(d.choice, back, other);
      EXPECT_EQ(EncodeSetup(other).Bytes(), image.Bytes());
    }
  }
}

}  // namespace
}  // namespace vela
