// An uploaded calibration on its way into the editors, wired as the program wires it: the upload
// hands its block on, the editors are filled once the dispatch that found it has ended, and the
// notes of the application are shown after that. The ECU may be swapped at any point of the way.
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
  void ShowNotes() {
    for (const CalibrationNote& note : notes)
      messages.Show(note.icon, note.title, note.lines, MessageButtons::kOk);
    notes.clear();
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

// The "PC Software Update" note of an ECU newer than the program is open when the ECU is swapped.
TEST_F(UploadRoad, AnEcuSwappedWhileTheVersionNoteIsOpenIsAskedForItsCalibration) {
  CalibrationImage newer = SoundImage();
  newer.SetByte(909, 4);
  ReceiveBlock(newer);
  EXPECT_FALSE(rig.upload.TimerEnabled());
  messages.while_open = [this](const std::string&) { SwapTheEcu(); };
  ApplyWaitingBlock();
  EXPECT_TRUE(messages.shown.empty());  // no box while the editors fill
  ASSERT_EQ(notes.size(), 1u);
  ShowNotes();
  ASSERT_EQ(messages.shown.size(), 1u);
  EXPECT_EQ(messages.shown[0].title, "PC Software Update");
  ExpectTheNewEcuIsAsked();
}

// The swap comes while the block waits to be applied: applying it leaves the re-armed upload be.
TEST_F(UploadRoad, AnEcuSwappedBeforeTheBlockIsAppliedIsAskedForItsCalibration) {
  ReceiveBlock(SoundImage());
  SwapTheEcu();
  ApplyWaitingBlock();
  ExpectTheNewEcuIsAsked();
}

}  // namespace
}  // namespace vela
