// Every choice of the set-up pages described once: the control that offers it (its shape,
// objectName, caption and entries), the image field it lives in and the bits of that byte it
// holds, and how the editors hold it. The pages build their controls from a description, the
// set-up editor keeps a tuner's choice through it, and building and applying a calibration write
// and read the choice's bits through it.
#pragma once

#include <cstdint>
#include <span>
#include <string_view>

#include "calibration/calibration_image.h"
#include "editors/editor_state.h"

namespace vela {

// The option groups, lists and tick boxes of the set-up pages.
enum class SetupChoice {
  kCylinders,          // byte 947
  kFuelMode,           // byte 907, bits 0 and 1
  kInjectorImpedance,  // byte 907, bits 6 and 7
  kLimiterMode,        // byte 942, bits 6 and 7
  kTriggerInputEdge,   // byte 942, bit 0
  kHomeInputEdge,      // byte 942, bit 1
  kSparkOutputEdge,    // byte 942, bit 2
  kAuxOutput,          // byte 942, bit 5
  kTriggerPattern,     // byte 902
  kTriggerSensorType,  // byte 903, bits 0 to 6
  kTriggerSensorFlag,  // byte 903, bit 7 (0 or 1)
  kHomePattern,        // byte 904
  kHomeSensorType,     // byte 905, bits 0 to 6
  kHomeSensorFlag,     // byte 905, bit 7 (0 or 1)
  kSparkMode,          // byte 906
  kDwellMode,          // byte 958, bit 6
  kRpmSites,           // byte 946
  kFuelLoadSites,      // byte 995, bits 0 to 4
  kIgnLoadSites,       // byte 996
  kFuelPumpPrime,      // byte 998
  kWarningLight,       // byte 997
  kLoadSensing,        // byte 955, bit 6
  kAltitudeComp,       // byte 955, bit 5 (0 or 1)
  kThrottlePumpBasis,  // byte 955, bit 7 (0 or 1)
  kMapSensorType,      // byte 955, bits 0 to 2
  kMapScale,           // byte 956
  kMapSelection,       // byte 995, bits 5 to 7
};

// The control a choice is offered by: a group of option buttons (the entry is the button's id),
// a list (the entry is its row), or a tick box (1 ticked, 0 not).
enum class ChoiceShape { kOptions, kList, kTickBox };

// What a change of the choice does to the maps: nothing, their labels and limits change (the
// pages draw them again), or the ECU reads the same map bytes with a new layout (the editors
// read the maps afresh from the image, and the pages draw them again).
enum class MapEffect { kNone, kRedraw, kLayout };

struct SetupChoiceDescription {
  SetupChoice choice;
  ChoiceShape shape;
  std::string_view name;     // the control's objectName; an option group's buttons add 0, 1, ...
  std::string_view caption;  // the caption over the control; a tick box's own text
  std::string_view spoken;   // the name a screen reader says, when not the caption
  std::string_view tip;      // the control's tooltip, if any
  // The entries in order; empty for a tick box, and for a list whose entries depend on what the
  // editors hold (`entries` gives their count).
  std::span<const std::string_view> texts;
  int columns;             // an option group's columns
  std::string_view field;  // the image field of its byte
  std::uint8_t bits;       // the bits of that byte it holds
  // A second field a change writes (a new MAP sensor type starts at a scaling of its own).
  std::string_view also_writes;
  MapEffect maps;
  // The entry the editors hold: may lie beyond the entries (the control then shows no entry).
  int (*held)(const EditorState& state);
  // Keeps entry `entry` in the editors (one the control offers).
  void (*keep)(EditorState& state, int entry);
  // The choice's bits of its field's byte (within `bits`) from what the editors hold.
  std::uint8_t (*encode)(const EditorState& state);
  // What the editors hold from the field's byte as the image carries it.
  void (*decode)(std::uint8_t byte, EditorState& state);
  // Whether the held entry can be shown; null: whenever it lies among the entries.
  bool (*showable)(const EditorState& state, const CalibrationImage& image) = nullptr;
  // How many entries the control offers now, for a list built from the editors' state.
  int (*entries)(const EditorState& state) = nullptr;
};

// Every choice, in the order of SetupChoice.
std::span<const SetupChoiceDescription> SetupChoiceDescriptions();
const SetupChoiceDescription& Describe(SetupChoice choice);

// The image field a choice lives in ("LimiterTacho" for the edges, the limiter and the
// auxiliary output).
std::string_view SetupFieldOf(SetupChoice choice);

// How many entries a group or list offers (the MAP scalings: those of the chosen type); 2 for a
// tick box.
int ChoiceEntries(SetupChoice choice, const EditorState& state);

// The entry a group or list shows for what the editors and the image hold; kNoEntry when no
// entry stands for it (a code beyond the entries, no limiter type, more than one fuel map
// selection bit, a dwell byte with bit 7 set, a scaling code the sensor type does not take).
int ShownChoice(SetupChoice choice, const EditorState& state, const CalibrationImage& image);

// Keeps an offered entry of a choice in the editors.
void KeepChoice(SetupChoice choice, int entry, EditorState& state);

// The byte of a field that choices live in, from what the editors hold: each choice's bits, and
// the bits of `rest` that no choice holds (the dwell value beside the dwell mode).
std::uint8_t ChoiceFieldByte(std::string_view field, const EditorState& state,
                             std::uint8_t rest = 0);
// Writes every field that choices live in into `image`, each from `image`'s byte and the
// choices' bits (ChoiceFieldByte).
void EncodeChoices(const EditorState& state, CalibrationImage& image);
// Reads the choices of `field` from the image into the editors.
void DecodeChoices(std::string_view field, const CalibrationImage& image, EditorState& state);

// Byte 958: bit 6 chooses "Constant Charge Time" over "Constant Duty Percentage"; bits 0 to 5
// hold the duty in percent or the charge time in tenths of a millisecond.
inline constexpr std::uint8_t kDwellChargeTimeBit = 0x40;
// Bit 7, which neither dwell control sets: a byte with it stands for no dwell mode or value.
inline constexpr std::uint8_t kDwellUnusedBit = 0x80;
inline constexpr int kMaxDwellValue = 63;
int DwellModeOf(std::uint8_t dwell_byte);
int DwellValueOf(std::uint8_t dwell_byte);

}  // namespace vela
