#include "editors/history/history_words.h"

#include <gtest/gtest.h>

#include <set>

namespace vela {
namespace {

EditEntry EntryAt(EditPlace place, std::initializer_list<int> positions) {
  EditEntry entry;
  entry.place = place;
  for (int position : positions) {
    entry.changes.push_back({static_cast<std::uint16_t>(position), 0, 1});
  }
  return entry;
}

// Every kind and place has words of its own: two kinds that read alike would make the history
// lie about what it holds.
TEST(HistoryWordsTest, EveryKindAndPlaceHasItsOwnWords) {
  std::set<std::string_view> kinds;
  for (int k = 1; k <= kEditKindCount; ++k) kinds.insert(KindText(static_cast<EditKind>(k)));
  EXPECT_EQ(kinds.size(), static_cast<std::size_t>(kEditKindCount));
  std::set<std::string_view> places;
  for (int p = 1; p <= kEditPlaceCount; ++p) places.insert(PlaceText(static_cast<EditPlace>(p)));
  EXPECT_EQ(places.size(), static_cast<std::size_t>(kEditPlaceCount));
  EXPECT_EQ(KindText(EditKind::kTakenFromEcu), "Read from the ECU");
  EXPECT_EQ(PlaceText(EditPlace::kIgnMap), "Ignition map");
}

// A fuel cell is two bytes and counts once, whichever of its bytes changed; the cells are counted
// from the map area's own start, so the first cell of Fuel Map 2 (375, 376) is one cell.
TEST(HistoryWordsTest, SizeCountsMapCellsAndOtherBytes) {
  EXPECT_EQ(SizeText(EntryAt(EditPlace::kFuelMap1, {1, 2, 3})), "2 cells");
  EXPECT_EQ(SizeText(EntryAt(EditPlace::kFuelMap1, {2})), "1 cell");
  EXPECT_EQ(SizeText(EntryAt(EditPlace::kFuelMap2, {375, 376, 748})), "2 cells");
  EXPECT_EQ(SizeText(EntryAt(EditPlace::kIgnMap, {751, 752, 816})), "3 cells");
  // A byte outside the map the entry names is said apart, never hidden among the cells.
  EXPECT_EQ(SizeText(EntryAt(EditPlace::kIgnMap, {751, 995})), "1 cell, 1 byte");
  EXPECT_EQ(SizeText(EntryAt(EditPlace::kFuelMap1, {375})), "1 byte");
  EXPECT_EQ(SizeText(EntryAt(EditPlace::kSetup, {990})), "1 byte");
  EXPECT_EQ(SizeText(EntryAt(EditPlace::kWholeImage, {1, 2, 751})), "3 bytes");
  EXPECT_EQ(SizeText(EntryAt(EditPlace::kWholeImage, {})), "No change");
}

TEST(HistoryWordsTest, TakenSaysThinnedAndUnremovablePoints) {
  RestorePoints::Taken taken;
  taken.outcome = RestorePoints::Outcome::kWritten;
  EXPECT_EQ(TakenText(taken), "Restore point taken.");
  taken.thinned = {{"a.sm1", 1, RestoreReason::kFromEcu}, {"b.sm1", 2, RestoreReason::kFromEcu}};
  taken.not_removed = {{"20240131-142530-123 ecu.sm1", 3, RestoreReason::kFromEcu}};
  EXPECT_EQ(TakenText(taken),
            "Restore point taken. 2 older restore points thinned out. 1 point to thin could not "
            "be removed: 20240131-142530-123 ecu.sm1.");
  taken = {};
  taken.outcome = RestorePoints::Outcome::kSameAsNewest;
  EXPECT_EQ(TakenText(taken), "No restore point taken: the calibration equals the newest one.");
  taken.outcome = RestorePoints::Outcome::kFailed;
  taken.error = 28;
  EXPECT_EQ(TakenText(taken), "The restore point could not be written (error 28).");
}

}  // namespace
}  // namespace vela
