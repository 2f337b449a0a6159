#include <gtest/gtest.h>

#include <cmath>

#include "link/engine_rate.h"

namespace vela {
namespace {

constexpr std::size_t kLength = kEngineRateTableLength;

TEST(EngineRateTest, MeanOfRecentFramesAtThirtyTimesRpmAndStoppedEngineIsInfinite) {
  LinkState link;
  EngineRate rate(link);
  rate.AddCount(6000);  // 10,000 rpm among zeros
  EXPECT_FLOAT_EQ(link.EngineRate, 300'000.0f / kLength);
  for (std::size_t i = 0; i < kLength; ++i) rate.AddCount(75'000);  // 800 rpm
  EXPECT_FLOAT_EQ(link.EngineRate, 24'000.0f);
  rate.AddCount(0);
  EXPECT_TRUE(std::isinf(link.EngineRate));
  for (std::size_t i = 1; i < kLength; ++i) rate.AddCount(6000);
  EXPECT_TRUE(std::isinf(link.EngineRate));
  rate.AddCount(6000);
  EXPECT_FLOAT_EQ(link.EngineRate, 300'000.0f);
  rate.AddCount(0);
  rate.Refill(1234.0f);
  EXPECT_FLOAT_EQ(link.EngineRate, 1234.0f);
}

}  // namespace
}  // namespace vela
