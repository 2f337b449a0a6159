#include "editors/workbench/edit_journal.h"

#include <gtest/gtest.h>

#include <functional>

#include "workbench/test_images.h"

namespace vela {
namespace {

using testing::Noise;

// The tuner's image with its journal; every state reached is kept to compare undo and redo with.
struct Bench {
  CalibrationImage image = Noise(1);
  EditJournal journal;
  std::vector<CalibrationImage> states{image};

  bool Edit(EditKind kind, EditPlace place, const std::function<void(CalibrationImage&)>& change) {
    CalibrationImage after = image;
    change(after);
    if (!journal.Record(kind, place, image, after, "src", 1000)) return false;
    image = after;
    states.resize(journal.Applied());
    states.push_back(image);
    return true;
  }
  JournalStep Apply(std::optional<JournalStep> step) {
    EXPECT_TRUE(step.has_value());
    if (step) ApplyWrites(image, step->writes);
    return step.value_or(JournalStep{});
  }
};

// Overlapping changes of every kind: single bytes, a fuel cell, a whole map, set-up bytes, a
// whole image replaced as a map file or a restore would.
void MixedSequence(Bench& b) {
  b.Edit(EditKind::kKeyStep, EditPlace::kFuelMap1, [](auto& i) { i.SetFuelMs(1, 1, 1, 3.21); });
  b.Edit(EditKind::kTypedOperation, EditPlace::kFuelMap1, [](auto& i) {
    for (int col = 1; col <= 9; ++col) i.SetFuelMs(1, 1, col, 4.0 + col);
  });
  b.Edit(EditKind::kSetupChange, EditPlace::kSetup, [](auto& i) { i.Write16(949, 7000); });
  b.Edit(EditKind::kMapFileLoaded, EditPlace::kWholeImage, [](auto& i) { i = Noise(2); });
  b.Edit(EditKind::kPaste, EditPlace::kIgnMap, [](auto& i) { i.SetIgnDegrees(2, 3, 20); });
  b.Edit(EditKind::kSmoothing, EditPlace::kFuelMap2, [](auto& i) {
    i.SetByte(375, i.Byte(375) ^ 1);
    i.SetByte(748, i.Byte(748) ^ 0x80);
  });
  b.Edit(EditKind::kRestore, EditPlace::kWholeImage, [](auto& i) { i = Noise(1); });
  b.Edit(EditKind::kInterpolation, EditPlace::kFuelMap1, [](auto& i) { i.SetFuelMs(1, 1, 1, 9); });
}

TEST(EditJournalTest, UndoAndRedoRestoreExactBytesOverMixedEntries) {
  Bench b;
  MixedSequence(b);
  ASSERT_EQ(b.journal.Entries().size(), 8u);
  for (std::size_t n = b.states.size() - 1; n > 0; --n) {
    const JournalStep step = b.Apply(b.journal.Undo());
    EXPECT_EQ(b.image.Bytes(), b.states[n - 1].Bytes()) << "undo to " << n - 1;
    EXPECT_EQ(step.writes.size(), DiffImages(b.states[n], b.states[n - 1]).size());
  }
  EXPECT_FALSE(b.journal.Undo());
  for (std::size_t n = 1; n < b.states.size(); ++n) {
    b.Apply(b.journal.Redo());
    EXPECT_EQ(b.image.Bytes(), b.states[n].Bytes()) << "redo to " << n;
  }
  EXPECT_FALSE(b.journal.Redo());
}

TEST(EditJournalTest, NewChangeAfterUndoDropsTheRedoBranch) {
  Bench b;
  MixedSequence(b);
  b.Apply(b.journal.Undo());
  b.Apply(b.journal.Undo());
  ASSERT_TRUE(b.journal.CanRedo());
  ASSERT_TRUE(b.Edit(EditKind::kFill, EditPlace::kIgnMap, [](auto& i) { i.SetByte(760, 1); }));
  EXPECT_FALSE(b.journal.CanRedo());
  EXPECT_EQ(b.journal.Entries().size(), 7u);
  EXPECT_EQ(b.journal.Entries().back().kind, EditKind::kFill);
  b.Apply(b.journal.Undo());
  EXPECT_EQ(b.image.Bytes(), b.states[6].Bytes());
}

TEST(EditJournalTest, ReturnToAnyEntryInOneStep) {
  Bench b;
  MixedSequence(b);
  for (std::size_t target : {2u, 0u, 8u, 5u, 3u, 8u}) {
    const CalibrationImage before = b.image;
    const JournalStep step = b.Apply(b.journal.ReturnTo(target));
    EXPECT_EQ(b.image.Bytes(), b.states[target].Bytes()) << "return to " << target;
    EXPECT_EQ(step.writes.size(), DiffImages(before, b.image).size()) << "only changed bytes";
    EXPECT_EQ(b.journal.Applied(), target);
  }
  EXPECT_FALSE(b.journal.ReturnTo(9));
  EXPECT_EQ(b.journal.Applied(), 8u);
}

TEST(EditJournalTest, OnlyChangesAndEcuEventsAreEntries) {
  Bench b;
  const auto nothing = [](CalibrationImage&) {};
  EXPECT_FALSE(b.Edit(EditKind::kKeyStep, EditPlace::kFuelMap1, nothing));
  EXPECT_TRUE(b.Edit(EditKind::kDownload, EditPlace::kWholeImage, nothing));
  EXPECT_TRUE(b.Edit(EditKind::kTakenFromEcu, EditPlace::kWholeImage, nothing));
  EXPECT_EQ(b.journal.Entries().size(), 2u);
  EXPECT_FALSE(b.journal.Append({EditKind::kKeyStep, EditPlace::kSetup, {{5, 1, 1}}, "", 0}));
  EXPECT_FALSE(
      b.journal.Append({EditKind::kKeyStep, EditPlace::kSetup, {{6, 1, 2}, {5, 1, 2}}, "", 0}));
  EXPECT_FALSE(b.journal.Append({EditKind::kKeyStep, EditPlace::kSetup, {{1024, 1, 2}}, "", 0}));
}

// Undoing a calibration taken from the ECU brings the editors' earlier image back on the PC
// only; until it is redone (or a new change drops it) nothing is for the ECU.
TEST(EditJournalTest, CalibrationTakenFromEcuIsABoundaryForSending) {
  Bench b;
  b.Edit(EditKind::kKeyStep, EditPlace::kIgnMap, [](auto& i) { i.SetByte(751, 1); });
  b.Edit(EditKind::kTakenFromEcu, EditPlace::kWholeImage, [](auto& i) { i = Noise(3); });
  b.Edit(EditKind::kKeyStep, EditPlace::kIgnMap, [](auto& i) { i.SetByte(752, 2); });

  JournalStep step = b.Apply(b.journal.Undo());
  EXPECT_TRUE(step.for_ecu);
  EXPECT_FALSE(step.differs_from_ecu);
  step = b.Apply(b.journal.Undo());
  EXPECT_FALSE(step.for_ecu);
  EXPECT_TRUE(step.differs_from_ecu);
  EXPECT_EQ(b.image.Bytes(), b.states[1].Bytes());
  step = b.Apply(b.journal.Undo());
  EXPECT_FALSE(step.for_ecu) << "behind the calibration read, the ECU is not touched";
  step = b.Apply(b.journal.ReturnTo(2));
  EXPECT_FALSE(step.for_ecu);
  EXPECT_FALSE(step.differs_from_ecu);
  EXPECT_EQ(b.image.Bytes(), b.states[2].Bytes());

  b.Apply(b.journal.ReturnTo(1));
  EXPECT_TRUE(b.journal.BehindEcu());
  b.Edit(EditKind::kKeyStep, EditPlace::kIgnMap, [](auto& i) { i.SetByte(753, 3); });
  EXPECT_FALSE(b.journal.BehindEcu());
  EXPECT_TRUE(b.Apply(b.journal.Undo()).for_ecu);
}

TEST(EditJournalTest, WritesGroupIntoWholeCells) {
  CalibrationImage image = Noise(4);
  const std::vector<ByteWrite> writes = {{2, 0}, {376, 1}, {377, 2}, {378, 3}, {751, 4}, {949, 5}};
  ApplyWrites(image, writes);
  const std::vector<CellWrite> cells = CellsToSend(writes, image);
  const std::vector<CellWrite> expected = {
      {1, 2, image.Read16(1), true},      // the high byte of fuel map 1's first cell
      {375, 2, image.Read16(375), true},  // fuel map 2 counts its cells from 375
      {377, 2, image.Read16(377), true},  // both bytes of one cell: sent once
      {751, 1, 4, true},
      {949, 1, 5, false},
  };
  EXPECT_EQ(cells, expected);
}

}  // namespace
}  // namespace vela
