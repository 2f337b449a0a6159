// An uploaded calibration on its way into the editors, wired as the program wires it: the upload
// hands its block on and the editors are filled once the dispatch that found it has ended. An ECU
// swapped on the way is asked for its own calibration. (A swap while the notes of the application
// are open is driven end to end in the calibration road test.)
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "editor_fakes.h"
#include "editors/apply_calibration.h"
#include "support/receive_rig.h"

namespace vela {
namespace {

using editor_testing::ScriptedMessages;
using editor_testing::SoundImage;
using testing::Frames;
using testing::SentFrame;

struct UploadRoad : ::testing::Test {
  UploadRoad() {
    rig.upload.SetCallbacks({[this](const CalibrationImage& i) { waiting.push_back(i); }, nullptr});
    rig.upload.EnableTimer();
  }
  // The ECU whose block is on its way is unplugged and another one plugged in: the link is lost
  // and found again.
  void SwapTheEcu() {
    for (int tick = 0; tick <= rig.state.RxLevel; ++tick) rig.supervisor.CommsTimer();
    rig.Receive(Frames(1));
    rig.supervisor.CommsTimer();
  }
  void ReceiveBlock(const CalibrationImage& image) {
    rig.Receive("ALL" + std::string(image.Bytes().begin(), image.Bytes().end()) + "DONE");
    rig.Dispatch();
  }
  void ApplyWaitingBlock() {
    ASSERT_EQ(waiting.size(), 1u);
    ApplyUploadedCalibration(waiting[0], CalibrationSource::kUpload, state, env);
    waiting.clear();
  }
  // The next two upload ticks prepare the new ECU's link and ask it for its calibration.
  void ExpectTheNewEcuIsAsked() {
    EXPECT_TRUE(rig.upload.UploadExpected());
    EXPECT_TRUE(rig.upload.TimerEnabled());
    rig.sender.frames.clear();
    rig.upload.UploadTimer();
    rig.upload.UploadTimer();
    EXPECT_EQ(rig.sender.frames, (std::vector<SentFrame>{{4, 864, 15}, {1, 770, 1284}}));
  }

  testing::ReceiveRig rig;
  std::vector<CalibrationImage> waiting;
  EditorState state;
  StartupTrace status;
  ScriptedMessages messages;
  bool suppress = false;
  std::vector<CalibrationNote> notes;
  ApplyEnvironment env{
      status, messages, rig.sender, rig.state, suppress, [this] { rig.upload.Complete(); }, &notes};
};

// The swap comes while the block waits to be applied: applying it leaves the re-armed upload be.
TEST_F(UploadRoad, AnEcuSwappedBeforeTheBlockIsAppliedIsAskedForItsCalibration) {
  ReceiveBlock(SoundImage());
  SwapTheEcu();
  ApplyWaitingBlock();
  ExpectTheNewEcuIsAsked();
}

}  // namespace
}  // namespace vela
