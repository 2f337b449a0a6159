// Every control of the set-up pages (Main Setup, Sensor Setup, Outputs, Inputs, Compensation)
// driven through every value it offers, from every combination reachable with the controls it
// meets (shares a byte with, or shares a check with): each byte written passes every check that
// reads it, the calibration keeps passing the setup validation, and a refused change sends
// nothing and changes nothing.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>
#include <deque>
#include <functional>
#include <map>
#include <memory>
#include <numeric>
#include <set>
#include <string>
#include <vector>

#include "editor_fakes.h"
#include "editors/build_calibration.h"
#include "editors/compensation/compensation_tables.h"
#include "editors/compensation/temperature_sensors.h"
#include "editors/setup/raw_fields.h"
#include "editors/setup/setup_checks.h"
#include "editors/setup/setup_choice_table.h"
#include "editors/setup/setup_editor.h"

namespace vela {
namespace {

using editor_testing::RecordingSender;
using editor_testing::ScriptedMessages;
using editor_testing::SoundImage;

// The editors of the pages over one state and image.
struct Editors {
  Editors(const EditorState& s, const CalibrationImage& i) : state(s), image(i) {}
  EditorState state;
  CalibrationImage image;
  RecordingSender sender;
  ScriptedMessages messages;
  bool suppress = false;
  EditParts parts{state, image, sender, messages, suppress};
  SetupEditor setup{parts};
  CompensationEditor compensation{parts};
  SensorTableSender sensors{parts};
};

// How the walk goes on from the states a control's changes reach.
enum class GoesOn {
  kAlways,       // a list, group or tick box: every state it reaches
  kAtLandmarks,  // a number typed as stored: the states where it stands at a landmark (its
                 // first and last value, its base value, and either side of each value where
                 // the base turns from taking it to refusing it)
  kNever,        // a typed table row: its changes are tried from every state, not walked on
};

struct Control {
  std::string name;
  std::vector<int> values;  // what the tuner can pick, type or key in
  std::function<void(Editors&, int)> apply;
  std::function<int(const EditorState&)> held;
  GoesOn goes_on = GoesOn::kAlways;
  std::vector<int> offered = {};  // entries that must each be reachable
  std::set<int> field = {};       // the positions it may write, besides those seen from the base
};

// A byte some check reads: a typed number there is walked on from its landmarks. Any value of a
// byte no check reads passes whatever the others hold, so one step from the base tries it.
GoesOn TypedWalk(int position) {
  const auto& checks = AllSetupChecks();
  const bool read = std::any_of(checks.begin(), checks.end(),
                                [position](const SetupCheck& c) { return c.Reads(position); });
  return read ? GoesOn::kAtLandmarks : GoesOn::kNever;
}

std::vector<int> Range(int first, int last) {
  std::vector<int> values(static_cast<std::size_t>(last - first + 1));
  std::iota(values.begin(), values.end(), first);
  return values;
}

Control Choice(std::string name, SetupChoice choice, int entries,
               std::function<int(const EditorState&)> held) {
  const SetupField field = *FindSetupField(SetupFieldOf(choice));
  std::set<int> positions;
  for (int p = field.position; p <= field.LastPosition(); ++p) positions.insert(p);
  return {std::move(name),
          Range(-1, entries),
          [choice](Editors& e, int value) { e.setup.Choose(choice, value); },
          std::move(held),
          GoesOn::kAlways,
          Range(0, entries - 1),
          positions};
}

// Every choice of the set-up pages, walked as the choice table offers it (the MAP scalings:
// those of type 4, which has the most).
std::vector<Control> MainSetupControls() {
  std::vector<Control> controls;
  EditorState four_bar;
  four_bar.sensors.map_sensor_type = 4;
  for (const SetupChoiceDescription& d : SetupChoiceDescriptions()) {
    const int entries = ChoiceEntries(d.choice, four_bar);
    controls.push_back(Choice(std::string(d.name), d.choice, entries, d.held));
  }
  // The number fields, in the units the tuner types.
  controls.push_back({"RevLimit1 RPM",
                      {0, 1, 915, 916, 917, 6800, 19999, 20000, 20001, 60000},
                      [](Editors& e, int rpm) { e.setup.SetRevLimitRpm(1, rpm); },
                      [](auto& s) { return int{s.setup.rev_limit1_period}; }});
  controls.push_back({"RevLimit2 RPM",
                      {0, 1, 915, 916, 917, 7000, 19999, 20000, 20001, 60000},
                      [](Editors& e, int rpm) { e.setup.SetRevLimitRpm(2, rpm); },
                      [](auto& s) { return int{s.setup.rev_limit2_period}; }});
  controls.push_back({"TriggerOffset half degrees", Range(-1, 130),
                      [](Editors& e, int half) { e.setup.SetTriggerOffsetDegrees(half / 2.0); },
                      [](auto& s) { return int{s.setup.trigger_offset}; }});
  controls.push_back({"DwellValue", Range(-1, 64),
                      [](Editors& e, int value) { e.setup.SetDwellValue(value); },
                      [](auto& s) { return DwellValueOf(s.setup.dwell); }});
  controls.push_back({"IdleTarget RPM",
                      {0, 1, 3, 4, 5, 900, 19999, 20000, 20001, 60000},
                      [](Editors& e, int rpm) { e.setup.SetIdleTargetRpm(rpm); },
                      [](auto& s) { return static_cast<int>(s.idle.IdleTargetRpm); }});
  return controls;
}

// Every byte shown as stored (Main Setup's trigger bytes, Sensor Setup's TPS bytes, the outputs,
// inputs and idle bytes, the battery bytes beyond the table) and the idle switches.
std::vector<Control> RawControls() {
  std::set<int> positions = {852, 853, 908};
  for (const auto& groups : {OutputGroups(), InputGroups(), IdleGroups(), TpsGroups()}) {
    for (const RawGroup& group : groups) {
      for (const RawField& field : group.fields) {
        if (field.show == RawShow::kByte || field.show == RawShow::kHalved) {
          positions.insert(field.position);
        }
      }
    }
  }
  for (int p = kFirstUnshownBattByte; p <= 1010; ++p) positions.insert(p);
  std::vector<Control> controls;
  for (const int p : positions) {
    controls.push_back(
        {"byte " + std::to_string(p), Range(0, 255),
         [p](Editors& e, int v) { e.setup.SetRawByte(p, static_cast<std::uint8_t>(v)); },
         [p](const EditorState& s) { return static_cast<int>(EncodeSetup(s).Byte(p)); },
         TypedWalk(p)});
  }
  for (int bit = 0; bit < 16; ++bit) {
    controls.push_back({"CheckIdle" + std::to_string(bit),
                        {0, 1},
                        [bit](Editors& e, int on) { e.setup.SetIdleFlag(bit, on != 0); },
                        [bit](const EditorState& s) { return int{s.idle.idle_flags[bit]}; },
                        GoesOn::kAlways,
                        {0, 1}});
  }
  return controls;
}

std::vector<Control> CompensationControls() {
  std::vector<Control> controls;
  for (const CompTable table : kCompTables) {
    const CompTableLayout layout = LayoutOf(table);
    const int lowest = *std::min_element(layout.positions.begin(), layout.positions.end());
    for (int row = 0; row < static_cast<int>(layout.positions.size()); ++row) {
      const int position = layout.positions[static_cast<std::size_t>(row)];
      controls.push_back(
          {std::string(layout.name) + " row " + std::to_string(row), Range(-1, 256),
           [table, row, position, lowest](Editors& e, int stored) {
             e.compensation.CellChanged(table, row, position + 1, lowest + 1, stored);
           },
           [table, row](const EditorState& s) {
             return StoredValues(table, s.compensation)[static_cast<std::size_t>(row)];
           },
           GoesOn::kAtLandmarks});
    }
  }
  return controls;
}

// The sensor lists, and each row typed: as every ratio byte's resistance, and texts refused.
std::vector<Control> SensorTableControls() {
  std::vector<Control> controls;
  for (const SensorTable table : {SensorTable::kWater, SensorTable::kAir}) {
    const std::string name = table == SensorTable::kWater ? "Water" : "Air";
    const auto held = [table](const EditorState& s) {
      const auto& bytes =
          table == SensorTable::kWater ? s.sensors.water_sensor_cal : s.sensors.air_sensor_cal;
      int key = 0;
      for (const std::uint8_t b : bytes) key = key * 31 + b;
      return key;
    };
    const int entries = static_cast<int>(SensorListTexts(table, false).size());
    controls.push_back({name + " list", Range(1, entries - 1),
                        [table](Editors& e, int choice) {
                          std::array<std::string, kSensorPoints> texts;
                          for (int r = 0; r < kSensorPoints; ++r) {
                            texts[r] = std::to_string((*KnownSensorOhms(table, choice))[r]);
                          }
                          e.sensors.Send(table, texts, '.');
                        },
                        held, GoesOn::kAlways, Range(1, entries - 1)});
    for (int row = 0; row < kSensorPoints; ++row) {
      controls.push_back({name + " row " + std::to_string(row), Range(-2, 256),
                          [table, row](Editors& e, int byte) {
                            const std::string text = byte == -2   ? "ohms"
                                                     : byte == -1 ? "0"
                                                     : byte == 256
                                                         ? "300000"
                                                         : std::to_string(OhmsOfRatioByte(byte));
                            e.sensors.SendRow(table, row, text, '.');
                          },
                          held, GoesOn::kNever});
    }
  }
  return controls;
}

struct Snapshot {
  EditorState state;
  CalibrationImage image;
};

class SetupWalk : public ::testing::Test {
 protected:
  SetupWalk() {
    base_.image = SoundImage();
    base_.state = editor_testing::Applied(base_.image);
    base_.state.SetupErrors.clear();
  }

  // The positions each control writes from the base, by trying every value once.
  std::set<int> Writes(const Control& control) const {
    std::set<int> positions = control.field;
    for (const int value : control.values) {
      Editors e(base_.state, base_.image);
      control.apply(e, value);
      for (const auto& frame : e.sender.frames) positions.insert(frame.address);
    }
    return positions;
  }

  // The landmarks of a typed control, from the base.
  std::set<int> Landmarks(const Control& control) const {
    std::set<int> landmarks = {control.values.front(), control.values.back(),
                               control.held(base_.state)};
    bool took_previous = false;
    for (std::size_t i = 0; i < control.values.size(); ++i) {
      const int value = control.values[i];
      Editors e(base_.state, base_.image);
      control.apply(e, value);
      const bool took = control.held(e.state) == value;
      if (i > 0 && took != took_previous) landmarks.insert({control.values[i - 1], value});
      took_previous = took;
    }
    return landmarks;
  }

  // Controls that share a written byte, or a check that reads bytes both write, walk together.
  std::vector<std::vector<const Control*>> Families(const std::vector<Control>& controls) const {
    const std::size_t n = controls.size();
    std::vector<std::size_t> parent(n);
    std::iota(parent.begin(), parent.end(), 0);
    const std::function<std::size_t(std::size_t)> root = [&](std::size_t i) {
      return parent[i] == i ? i : parent[i] = root(parent[i]);
    };
    std::vector<std::set<int>> reach(n);
    for (std::size_t i = 0; i < n; ++i) {
      reach[i] = Writes(controls[i]);
      for (const SetupCheck& check : AllSetupChecks()) {
        if (std::any_of(reach[i].begin(), reach[i].end(), [&](int p) { return check.Reads(p); })) {
          for (const PositionRange& r : check.reads) {
            for (int p = r.first; p <= r.last; ++p) reach[i].insert(-p);  // read, not written
          }
        }
      }
    }
    for (std::size_t i = 0; i < n; ++i) {
      for (std::size_t j = i + 1; j < n; ++j) {
        const bool meet = std::any_of(reach[i].begin(), reach[i].end(), [&](int p) {
          return reach[j].count(p) > 0 || reach[j].count(-p) > 0;
        });
        if (meet) parent[root(j)] = root(i);
      }
    }
    std::map<std::size_t, std::vector<const Control*>> families;
    for (std::size_t i = 0; i < n; ++i) families[root(i)].push_back(&controls[i]);
    std::vector<std::vector<const Control*>> result;
    for (auto& [root_index, family] : families) result.push_back(family);
    return result;
  }

  // Walks one family breadth first; returns the values of offered controls ever taken.
  void Walk(const std::vector<const Control*>& family, std::set<std::pair<std::string, int>>& taken,
            int& transitions) {
    const auto key = [&](const EditorState& s) {
      std::vector<int> k;
      for (const Control* control : family) k.push_back(control->held(s));
      return k;
    };
    std::map<const Control*, std::set<int>> landmarks;
    for (const Control* control : family) {
      if (control->goes_on == GoesOn::kAtLandmarks) landmarks[control] = Landmarks(*control);
    }
    const auto goes_on = [&](const Control& changed, const EditorState& s) {
      if (changed.goes_on == GoesOn::kNever) return false;
      return std::all_of(landmarks.begin(), landmarks.end(), [&s](const auto& entry) {
        return entry.second.count(entry.first->held(s)) > 0;
      });
    };
    std::set<std::vector<int>> seen = {key(base_.state)};
    std::deque<Snapshot> queue = {base_};
    while (!queue.empty()) {
      const Snapshot from = queue.front();
      queue.pop_front();
      for (const Control* control : family) {
        for (const int value : control->values) {
          Editors e(from.state, from.image);
          control->apply(e, value);
          ++transitions;
          Verify(*control, value, from, e);
          if (!e.sender.frames.empty() || control->held(e.state) == value) {
            taken.insert({control->name, value});
          }
          if (goes_on(*control, e.state) && seen.insert(key(e.state)).second) {
            queue.push_back({e.state, e.image});
          }
        }
      }
    }
  }

  static void Verify(const Control& control, int value, const Snapshot& from, const Editors& e) {
    const CheckContext context{e.state.sensors.map_sensor_type};
    if (e.sender.frames.empty()) {
      ASSERT_EQ(e.image.Bytes(), from.image.Bytes()) << control.name << " = " << value;
      return;
    }
    for (const auto& frame : e.sender.frames) {
      ASSERT_EQ(frame.value, e.image.Byte(frame.address));
      const int position = frame.address;
      std::vector<std::string_view> failed;
      for (const SetupCheck& check : FailedChecksReading(e.image, context, {&position, 1})) {
        failed.push_back(check.message);
      }
      ASSERT_THAT(failed, ::testing::IsEmpty())
          << control.name << " = " << value << " wrote byte " << position << " = " << frame.value;
    }
    ASSERT_THAT(ValidateSetup(e.image, context), ::testing::IsEmpty())
        << control.name << " = " << value;
  }

  Snapshot base_;
};

TEST_F(SetupWalk, NoReachableCombinationOfAnySetupControlWritesAByteThatFailsItsChecks) {
  ASSERT_THAT(ValidateSetup(base_.image, {base_.state.sensors.map_sensor_type}),
              ::testing::IsEmpty());
  std::vector<Control> controls = MainSetupControls();
  for (auto more : {RawControls(), CompensationControls(), SensorTableControls()}) {
    for (Control& control : more) controls.push_back(std::move(control));
  }
  std::set<std::pair<std::string, int>> taken;
  int transitions = 0;
  const auto families = Families(controls);
  for (const auto& family : families) {
    Walk(family, taken, transitions);
    if (HasFatalFailure()) return;
  }
  // Nothing on offer is out of reach: every entry of every list, group and tick box can be
  // chosen from some reachable state (the MAP scalings: those of type 4, which has 12).
  for (const Control& control : controls) {
    for (const int value : control.offered) {
      EXPECT_TRUE(taken.count({control.name, value})) << control.name << " " << value;
    }
  }
  RecordProperty("transitions", transitions);
}

// The walk, and the rule that refuses a change, trust each check to read nothing beyond the
// positions it names: no byte elsewhere changes its outcome.
TEST(SetupCheckReads, NoByteACheckDoesNotNameChangesItsOutcome) {
  std::uint32_t seed = 12345;
  const auto next = [&seed] {
    seed = seed * 1103515245u + 12345u;
    return static_cast<int>((seed >> 8) & 0xFFFF);
  };
  for (int round = 0; round < 300; ++round) {
    CalibrationImage image = SoundImage();
    // A few bytes near each check's turning points, so that both outcomes occur.
    for (int i = 0; i < 40; ++i)
      image.SetByte(852 + next() % 172, static_cast<std::uint8_t>(next()));
    const CheckContext context{image.Byte(955) & kMapSensorTypeBits};
    for (const SetupCheck& check : AllSetupChecks()) {
      const int outcome = check.failures(image, context);
      for (int i = 0; i < 20; ++i) {
        const int position = 749 + next() % 275;
        if (check.Reads(position)) continue;
        CalibrationImage changed = image;
        changed.SetByte(position, static_cast<std::uint8_t>(next()));
        ASSERT_EQ(check.failures(changed, context), outcome)
            << check.message << " changed by byte " << position;
      }
    }
  }
}

}  // namespace
}  // namespace vela
