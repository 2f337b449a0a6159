#include "editors/compare/compare_pair.h"

#include <gtest/gtest.h>

namespace vela {
// The file's own namespace: the test programs are compiled several files at a time.
namespace compare_pair_test {

const OtherSide kEditors{OtherSideKind::kEditors, {}};
const OtherSide kEcu{OtherSideKind::kEcu, {}};
const OtherSide kFile{OtherSideKind::kMapFile, "base.sm1"};
const OtherSide kPoint{OtherSideKind::kRestorePoint, "2024-01-31 14:25:30"};

TEST(ComparePair, OnlyAPairWithTheEditorsImageAsBaseTakesSendsAndEdits) {
  const ComparePair working{kEditors, kEcu};
  EXPECT_TRUE(Editable(working));
  EXPECT_EQ(TakeRefusal(working), std::nullopt);
  EXPECT_EQ(SendRefusal(working), std::nullopt);
  EXPECT_EQ(EditRefusal(CompareView::kCurrent, working), std::nullopt);
  EXPECT_EQ(EditRefusal(CompareView::kDifference, working),
            EditRefusedNote(CompareView::kDifference));

  for (const ComparePair& shown : {ComparePair{kEcu, kFile}, ComparePair{kFile, kPoint},
                                   ComparePair{kFile, kFile}, ComparePair{kEcu, kPoint}}) {
    EXPECT_FALSE(Editable(shown));
    for (CompareView view :
         {CompareView::kCurrent, CompareView::kOther, CompareView::kDifference}) {
      EXPECT_NE(EditRefusal(view, shown), std::nullopt) << "even the current view is not edited";
    }
  }
  const ComparePair shown{kEcu, kFile};
  EXPECT_EQ(EditRefusal(CompareView::kCurrent, shown),
            "Nothing changed: the map shows ECU as last read, not the editors' image. Ctrl-Shift-Q "
            "compares it.");
  EXPECT_EQ(TakeRefusal(shown),
            "Nothing taken: the editors' image is not one of the two sides. Ctrl-Shift-Q compares "
            "it.");
  EXPECT_EQ(SendRefusal(shown),
            "Nothing sent: the editors' image is not one of the two sides. Ctrl-Shift-Q compares "
            "it.");
}

TEST(ComparePair, ThePairIsTwoDifferentSidesWithTheEditorsFirst) {
  EXPECT_EQ(PairRefusal({kEditors, kEcu}), std::nullopt);
  EXPECT_EQ(PairRefusal({kEcu, kFile}), std::nullopt);
  EXPECT_EQ(PairRefusal({kFile, kFile}), std::nullopt) << "two map files may differ";
  EXPECT_NE(PairRefusal({kEcu, kEcu}), std::nullopt);
  EXPECT_NE(PairRefusal({kEcu, kEditors}), std::nullopt);
}

TEST(ComparePair, CaptionsNameBothSides) {
  const ComparePair shown{kEcu, kFile};
  EXPECT_EQ(ViewCaption(CompareView::kCurrent, shown),
            "Current: ECU as last read, compared with map file base.sm1");
  EXPECT_EQ(ViewCaption(CompareView::kOther, shown), "Other side: map file base.sm1");
  EXPECT_EQ(ViewCaption(CompareView::kDifference, ComparePair{kFile, kPoint}),
            "Difference: map file base.sm1 minus restore point 2024-01-31 14:25:30");
  // With the editors' image first, the captions are the working comparison's.
  EXPECT_EQ(ViewCaption(CompareView::kCurrent, ComparePair{kEditors, kEcu}),
            "Current: the editors' values, compared with ECU as last read");
  EXPECT_EQ(ViewCaption(CompareView::kDifference, ComparePair{kEditors, kFile}),
            "Difference: editors minus map file base.sm1");
}

}  // namespace compare_pair_test
}  // namespace vela
