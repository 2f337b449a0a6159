// Scripted stand-ins and a sound calibration for the editors' core tests.
#pragma once

#include <deque>
#include <functional>
#include <map>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "base/file_system.h"
#include "base/platform.h"
#include "calibration/calibration_image.h"
#include "editors/apply_calibration.h"
#include "editors/edit_parts.h"
#include "link/link_state.h"
#include "support/platform_fakes.h"
#include "support/recording_sender.h"

namespace vela::editor_testing {

using ::vela::testing::RecordingSender;
using ::vela::testing::ScriptedDialogs;
using ::vela::testing::ScriptedMessages;
using ::vela::testing::SentFrame;
using MemoryFiles = ::vela::testing::MemoryFileSystem;

// An editor's surroundings: state, image, a recording sender and scripted messages.
struct EditFixture {
  EditorState state;
  CalibrationImage image;
  RecordingSender sender;
  ScriptedMessages messages;
  bool suppress = false;
  EditParts Parts() { return {state, image, sender, messages, suppress}; }
};

// A calibration that passes every check: 4 cylinders, 9 fuel and 5 ignition load sites, a
// 36-1 trigger wheel, falling NTC sensor curves, firmware 2.
inline CalibrationImage SoundImage() {
  CalibrationImage image;
  const std::pair<int, int> bytes[] = {
      {947, 3},   {946, 1},  {995, 0x20}, {959, 40},  {909, 2},    {901, 5},   {902, 3},  {903, 1},
      {852, 100}, {904, 1},  {853, 100},  {906, 1},   {907, 65},   {908, 10},  {884, 1},  {910, 2},
      {926, 3},   {942, 64}, {950, 4},    {952, 1},   {955, 64},   {956, 64},  {1022, 1}, {1023, 2},
      {958, 50},  {998, 5},  {1012, 19},  {1014, 20}, {1015, 200}, {1018, 40}, {867, 2}};
  for (auto [position, value] : bytes) image.SetByte(position, static_cast<std::uint8_t>(value));
  const int curve[8] = {252, 246, 218, 170, 120, 75, 50, 35};
  for (int i = 0; i < 8; ++i) {
    image.SetByte(971 + i, static_cast<std::uint8_t>(curve[i]));
    image.SetByte(987 + i, static_cast<std::uint8_t>(curve[i]));
  }
  for (int p = 999; p <= 1010; ++p) image.SetByte(p, 100);
  return image;
}

// The sound calibration with some bytes changed (position, value).
inline CalibrationImage SoundImageWith(std::initializer_list<std::pair<int, int>> bytes) {
  CalibrationImage image = SoundImage();
  for (auto [position, value] : bytes) image.SetByte(position, static_cast<std::uint8_t>(value));
  return image;
}

// What applying a calibration reaches besides the editors, nothing of it shown or sent elsewhere.
struct ApplyRig {
  StartupTrace status;
  ScriptedMessages messages;
  RecordingSender sender;
  LinkState link;
  bool suppress = false;
  ApplyEnvironment env{status, messages, sender, link, suppress, {}, {}};
};

// The editors filled from `image` as after an upload.
inline EditorState Applied(const CalibrationImage& image) {
  EditorState state;
  ApplyRig rig;
  ApplyUploadedCalibration(image, CalibrationSource::kMapFile, state, rig.env);
  return state;
}

}  // namespace vela::editor_testing
