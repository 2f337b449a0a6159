#include "calibration/error_codes.h"

namespace vela {

namespace {

constexpr int kNoCode = 0x10000;  // no 16-bit code

struct ErrorCode {
  int code;
  int second_code;  // a second code with the same texts, or kNoCode
  std::string_view title;
  std::string_view explanation;
  std::string_view explanation_more;  // appended directly to `explanation`
};

constexpr std::string_view kRevLimiter =
    "Rev Limiter protection was engaged to protect the engine from damage. If a higher RPM is "
    "required then raise the rev-limiter.";
constexpr std::string_view kBoostLimiter =
    "Boost Limiter protection was engaged to protect the engine from damage. Lower the engine's "
    "boost to reduce boost below the boost limiter value, otherwise raise the boost-limiter if a "
    "higher boost is required.";
constexpr std::string_view kChargeTime =
    "Ignition charge time is to long to fit into the time available before for the next spark "
    "event needs to happen. The best option to fix this is to change to a coil setup with more "
    "coils. This allows each coil more time to fully charge and discharge between spark events.";
constexpr std::string_view kHomeNeeded =
    "This signal is needed if wasted spark or coil on plug is being used. It is possible to run "
    "sequential fueling without a home position signal, but it is prefered to run it if "
    "possible.";
constexpr std::string_view kHomeVital =
    " It is, however, vital that a home position is used for coil-on-plug applications.";
constexpr std::string_view kTpsAdvice =
    "This can cause a tuning inaccuracy. Confirm the TPS is properly secured and cannot move due "
    "to vibration or any other reasons. Otherwise, if you have not calibrated the TPS yet, then "
    "calibrate your TPS to remove the error code.";
constexpr std::string_view kIdleRange =
    "Idle control has reached the maximum or minimum limit and will not be able to correctly "
    "control the idle RPM.";

// The explanations that share their wording are put together once, at start.
const std::string kTriggerAdvanced =
    "Ignition Trigger angle has bumped up against the limit and cannot hold the requested "
    "ignition angle. Advance the physical RPM input sensor position or trigger wheel so that it "
    "increases the trigger angle to a larger number on the main setup page. ";
const std::string kTriggerAdvancedMore =
    "Calibrate the ECU to this new trigger angle position. Typical reason for this is if the "
    "trigger angle has to be set to low number, for eg: 30 deg "
    "and the ignition map requests 40 deg.";
const std::string kTriggerRetarded =
    "Ignition Trigger angle has bumped up against the limit and cannot hold the required "
    "ignition angle. Retard the physical RPM input sensor position or trigger wheel so that it "
    "decreases the trigger angle to a smaller number on the main setup page. ";
const std::string kTriggerRetardedMore =
    "Calibrate the ECU to this new trigger angle position. Typical reason for this is if the "
    "trigger angle has to be set to high number, for eg: 90 "
    "deg and the ignition map, or Anti-Lag control requests a negative ignition angle.";
const std::string kHomeMissedPulse =
    "Home position signal was expected but did not happen. The signal missed a pulse. " +
    std::string(kHomeNeeded);
const std::string kHomeMissing =
    "Home position signal is missing completely. The signal is not present at all. " +
    std::string(kHomeNeeded);
const std::string kHomeExtra =
    "Home position signal was expected but did not happen. The signal either missed a pulse or "
    "is not present at all. " +
    std::string(kHomeNeeded);
const std::string kTpsLow =
    "TPS is out of range and is registering below 0% (under-voltage). " + std::string(kTpsAdvice);
const std::string kTpsHigh =
    "TPS is out of range and is registering over 100% (over-voltage). " + std::string(kTpsAdvice);

// In the order in which the codes are tested; the first match wins.
const ErrorCode kTable[] = {
    {0, kNoCode, "  No Error", "No Errors Present.", ""},
    {1, kNoCode, "  Rev Limiter Exceeded", kRevLimiter, ""},
    {31, kNoCode, "  Ignition Rev Limiter Exceeded", kRevLimiter, ""},
    {2, kNoCode, "  Boost Limiter Exceeded", kBoostLimiter, ""},
    {32, kNoCode, "  Ignition Boost Limiter Exceeded", kBoostLimiter, ""},
    {3, 139, "  Injector Duty Cycle too High",
     "Injector open time is approaching or has exceeded 100%. Fuel flow rate is not sufficient to "
     "supply the engine with enough fuel at the correct AFR. This can cause damage to the "
     "engine. ",
     "Possible issues are: Injectors are too small, fuel is pump too small, fuel filter blocked "
     "or one of these components are failing."},
    {4, kNoCode, "  Ignition Charge Time Reduced 1", kChargeTime, ""},
    {24, kNoCode, "  Ignition Charge Time Reduced 2", kChargeTime, ""},
    {5, kNoCode, "  Ignition Trigger Angle too Small (Advanced)", kTriggerAdvanced,
     kTriggerAdvancedMore},
    {25, kNoCode, "  Ignition Trigger Angle too Large (Retarded)", kTriggerRetarded,
     kTriggerRetardedMore},
    {6, kNoCode, "  Noisy RPM Signal",
     "The RPM Trigger Input either is picking up electrical noise which can cause false trigger "
     "events. Make sure the wiring to the sensor is connected correctly and does not go near the "
     "ignition coils or other electrically noisy components.",
     ""},
    {66, kNoCode, "  Missing RPM Pulse",
     "The RPM Trigger Input has pulses missing completely. This can be from a faulty sensor or "
     "the sensor being mounted too far from the trigger wheel. Make sure the wiring to the sensor "
     "is connected correctly and is not placed near the ignition coils or other electrically "
     "noisy components. Also confirm the correct sensor type has been selected.",
     ""},
    {76, kNoCode, "  High Frequency RPM Noise",
     "The RPM Trigger Input is receiving high frequency pulses that are to fast to be a true "
     "signal. This can be from a faulty sensor, bad/loose connections on the wiring or bad/loose "
     "earthing of the engine, coils etc. Make sure the wiring to the sensor is connected "
     "correctly and is not placed near the ignition coils, alternator or other electrically "
     "noisy components. Also confirm the correct sensor type has been selected.",
     ""},
    {7, kNoCode, "  Home Position Signal Erratic Missing Pulses", kHomeMissedPulse, kHomeVital},
    {77, kNoCode, "  Home Position Signal Missing Completely", kHomeMissing, kHomeVital},
    {79, kNoCode, "  Home Position Signal EXTRA Pulse", kHomeExtra, ""},
    {37, kNoCode, "  Noisy Home Position Signal",
     "There is noise on the home position signal. This causes multiple home position pulses to "
     "be read that may be out of sequence. This can make the ECU calculate and output incorrect "
     "information.",
     ""},
    {8, kNoCode, "  Air Temp Sensor Unplugged",
     "Air temperature sensor possibly unplugged or open circuit.", ""},
    {18, kNoCode, "  Air Temp Sensor Shorted",
     "Air temperature sensor wiring possibly shorted out.", ""},
    {9, kNoCode, "  Water Temp Sensor unplugged",
     "Water temperature sensor possibly unplugged or open circuit.", ""},
    {19, kNoCode, "  Water Temp Sensor Shorted",
     "Water temperature sensor wiring possibly shorted out.", ""},
    {29, kNoCode, "  Water Temp Over 100 deg C",
     "Dangerously high water temperature measured. Cool engine down to avoid engine damage", ""},
    {10, kNoCode, "  Battery Voltage High",
     "Battery voltage too high. Check if the alternator's voltage regulator is damaged.", ""},
    {20, kNoCode, "  Battery Voltage Low",
     "Battery voltage either too high or too low. Check that the alternator is charging at the "
     "correct voltage. If voltage too low it might not be activating correctly.",
     ""},
    {11, kNoCode, "  TPS out of Range - Low", kTpsLow, ""},
    {21, kNoCode, "  TPS out of Range - High", kTpsHigh, ""},
    {12, kNoCode, "  Throttle Pump Error", "Oops....", ""},
    // Code 13 keeps this title with the idle control explanation.
    {13, kNoCode, "  TPS out of Range", kIdleRange, ""},
    {33, kNoCode, "  Idle Control Range Error - High", kIdleRange, ""},
    {14, kNoCode, "  Lambda Range Error", "Need to figure out what to say here.", ""},
    {15, kNoCode, "  Spare 1", "Spare 1", ""},
    {16, 17, "", "", ""},
};

constexpr ErrorCode kUnknown = {kNoCode, kNoCode, "  Unknown Code", "Unknown Code....", ""};

const ErrorCode& EntryOf(int code) {
  for (const ErrorCode& entry : kTable) {
    if (entry.code == code || entry.second_code == code) return entry;
  }
  return kUnknown;
}

const std::string kNoText;

}  // namespace

std::string_view ErrorTitle(int code) { return EntryOf(code).title; }

std::string ErrorExplanation(int code) {
  const ErrorCode& entry = EntryOf(code);
  return std::string(entry.explanation) + std::string(entry.explanation_more);
}

std::string ErrorExplanations::ErrorCodeText(int slot, std::int16_t code) {
  if (slot >= 0 && slot < kErrorExplanationSlots) slots_[slot] = ErrorExplanation(code);
  return std::string(ErrorTitle(code));
}

const std::string& ErrorExplanations::Explanation(int slot) const {
  return slot >= 0 && slot < kErrorExplanationSlots ? slots_[slot] : kNoText;
}

void ErrorExplanations::Clear() {
  for (std::string& slot : slots_) slot.clear();
}

std::string ErrorCodeNumberText(int code) {
  const std::string digits = code < 0 ? std::to_string(code) : " " + std::to_string(code);
  const std::string padding = code < 11 ? "    " : code <= 100 ? "  " : "";
  return padding + digits;
}

std::string ErrorRowText(int code) {
  return ErrorCodeNumberText(code) + "  -" + std::string(ErrorTitle(code));
}

}  // namespace vela
