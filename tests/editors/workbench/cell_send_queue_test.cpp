#include "editors/workbench/cell_send_queue.h"

#include <gtest/gtest.h>

#include "support/recording_sender.h"

namespace vela {
namespace {

using testing::RecordingSender;
using testing::SentFrame;

void Drain(CellSendQueue& queue, const CalibrationImage& image, CommandSender& sender) {
  while (!queue.Empty()) static_cast<void>(queue.SendNext(image, sender));
}

// Each frame carries the image's value when it goes, so a cell changed again while it waits is
// never sent an older value, and a cell queued twice goes once, in its first place.
TEST(CellSendQueueTest, SendsTheValueAtSendingTimeOncePerCell) {
  CalibrationImage image;
  const int fuel = kFuelMap1Start + 4;
  const int ign = kIgnMapStart + 1;
  ASSERT_TRUE(image.Write16(fuel, 0x1234));
  ASSERT_TRUE(image.SetByte(ign, 40));
  CellSendQueue queue;
  queue.Add({{fuel, 2, 0, true}, {ign, 1, 0, true}});
  queue.Add({{ign, 1, 0, true}});
  EXPECT_EQ(queue.Total(), 2);
  EXPECT_TRUE(queue.Waiting(fuel));
  EXPECT_FALSE(queue.Waiting(fuel + 1));
  EXPECT_EQ(queue.WaitingPositions(), (std::vector<int>{fuel, ign}));

  RecordingSender sender;
  static_cast<void>(queue.SendNext(image, sender));
  ASSERT_TRUE(image.SetByte(ign, 44));  // changed again while it waits
  Drain(queue, image, sender);
  EXPECT_EQ(sender.frames, (std::vector<SentFrame>{{kSingleValueWrite, fuel, 0x1234},
                                                   {kSingleValueWrite, ign, 44}}));
  EXPECT_EQ(queue.Sent(), 2);
  EXPECT_FALSE(queue.Waiting(ign));
}

// Progress counts one run from an empty queue; frames that found no ECU are counted as failed,
// and a cleared queue sends nothing more.
TEST(CellSendQueueTest, CountsARunAndForgetsOnClear) {
  CalibrationImage image;
  CellSendQueue queue;
  RecordingSender sender;
  sender.outcome = SendOutcome::kNotSent;
  queue.Add({{kIgnMapStart, 1, 0, true}, {kIgnMapStart + 1, 1, 0, true}});
  static_cast<void>(queue.SendNext(image, sender));
  queue.Add({{kIgnMapStart + 2, 1, 0, true}});
  EXPECT_EQ(queue.Total(), 3);
  EXPECT_EQ(queue.Sent(), 1);
  EXPECT_EQ(queue.Failed(), 1);
  queue.Clear();
  EXPECT_TRUE(queue.Empty());
  EXPECT_FALSE(queue.Waiting(kIgnMapStart + 1));
  static_cast<void>(queue.SendNext(image, sender));
  EXPECT_EQ(sender.frames.size(), 1u);
  queue.Add({{900, 1, 0, false}});
  EXPECT_EQ(queue.Total(), 1);  // a new run
  EXPECT_EQ(queue.Sent(), 0);
}

}  // namespace
}  // namespace vela
