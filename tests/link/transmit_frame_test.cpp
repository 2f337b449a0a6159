#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "link/comms_sender.h"

namespace vela {
namespace {

TEST(CommandFrameTest, SplitsAddressReducesValueAndSumsModulo256) {
  using ::testing::ElementsAre;
  EXPECT_THAT(BuildFrameBytes({6, 0, 0}), ElementsAre(6, 0, 0, 0, 0, 6));
  EXPECT_THAT(BuildFrameBytes({4, 300, 1000}), ElementsAre(4, 44, 1, 232, 3, 28));
  EXPECT_THAT(BuildFrameBytes({200, 300, 0x10FF}), ElementsAre(200, 44, 1, 255, 16, 4));
  EXPECT_THAT(BuildFrameBytes({4, 0, 65'535}), ElementsAre(4, 0, 0, 255, 255, 2));
  EXPECT_THAT(BuildFrameBytes({4, 0, 65'536}), ElementsAre(4, 0, 0, 0, 0, 4));
  // 16,777,217 loses 1 (the quotient) and is then a multiple of 65,536.
  EXPECT_THAT(BuildFrameBytes({4, 0, 16'777'217}), ElementsAre(4, 0, 0, 0, 0, 4));
  // 3 x 16,777,216 + 5 loses 3, not 3 x 16,777,216: 2 remains after the modulo.
  EXPECT_THAT(BuildFrameBytes({4, 0, 50'331'653}), ElementsAre(4, 0, 0, 2, 0, 6));
  EXPECT_THAT(BuildFrameBytes({1, -1, -2}), ElementsAre(1, 255, 255, 254, 255, 252));
}

TEST(PacingTest, RowsHaveExclusiveBounds) {
  EXPECT_EQ(PacingRowFor(2999.9f).byte_delay, 3.6f);
  EXPECT_EQ(PacingRowFor(3000.0f).byte_delay, 4.0f);
  EXPECT_EQ(PacingRowFor(325'000.0f).byte_delay, 14.0f);
  EXPECT_EQ(PacingRowFor(325'000.0f).steps, 5);
  EXPECT_EQ(PacingRowFor(379'999.0f).byte_delay, 35.0f);
  EXPECT_EQ(PacingRowFor(380'000.0f).byte_delay, 40.0f);
}

}  // namespace
}  // namespace vela
