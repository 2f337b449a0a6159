// The instant help topics of the outputs, inputs and main setup tabs, and the help labels that
// show them.
#include <array>

#include "program/context_help.h"

namespace vela {

namespace {

// Main setup.
constexpr std::string_view kCylinders[] = {" Cylinders: Number of cylinders in the engine."};
constexpr std::string_view kFuelMode[] = {
    " Fuel Mode:  Determines how the injectors are pulsed.",
    " Batch                  - Fires all the injectors at the same time once per crank rotation.",
    " Semi Sequential - fires the injectors in matched pairs according to firing order.",
    " Full Sequential   - fires the injectors in firing order, matching the cylinders."};
constexpr std::string_view kInjectorImpedance[] = {
    " Injector Impedance: The type of injector fitted, whcih decides how the ECU drives them.",
    " Low    - Low resistance (about 0.5 to 3 ohm) peak-and-hold injectors: the driver opens",
    "          them with a high current, then holds them open with a lower one.",
    " Medium - Injectors of about 4 to 8 ohm.",
    " High   - High resistance (about 12 to 16 ohm) saturated injectors. Low resistance",
    "          injectors on this drive overheat the ECU's injector drivers."};
constexpr std::string_view kFuelMapSelection[] = {
    " Fuel Map Selection: Which fuel map the ECU runs the engine on.",
    " Only Map 1   - The engine always runs on fuel map 1.",
    " Only Map 2   - The engine always runs on fuel map 2.",
    " ECU Selected - The ECU switches between the maps itself (for example from an input).",
    " Combine Maps - The ECU uses both maps together."};
constexpr std::string_view kRevLimiter[] = {
    " Rev Limiter: The engine speeds at which the ECU stops the engine from revving higher.",
    " Rev Limiter 1 - The main limit, in RPM.",
    " Rev Limiter 2 - The second limit, in RPM. Keep both below the engine's safe speed and",
    "                 inside the RPM range of the maps."};
constexpr std::string_view kLimiterType[] = {
    " Limiter Type: How the ECU holds the engine at the rev limit.",
    " Cut Fuel  - Injection is stopped. Smooth, but a lean cylinder can run hot.",
    " Cut Spark - Ignition is stopped. Firm, but unburnt fuel reaches the exhaust and catalyst.",
    " Cut Both  - Fuel and spark are both stopped."};
constexpr std::string_view kStartupPrime[] = {
    " Startup Prime: How long the fuel pump runs when the key is turned on, before the engine",
    "   turns, to bring the fuel rail up to pressure.",
    " Permanently Off - The pump never primes; it runs only with the engine turning.",
    " Prime for N     - The pump runs N seconds at key-on, then waits for the engine to turn.",
    " Permanently On  - The pump runs whenever the key is on. Only for testing: a broken fuel",
    "                   line keeps being fed."};
constexpr std::string_view kInstalledMapSensor[] = {
    " Installed Map Sensor: The manifold pressure sensor fitted, by the pressure range it reads",
    "   (1 bar for a naturally aspirated engine, more for boost). The MAP load sites and the",
    "   throttle pump's boost limit are scaled by it."};
constexpr std::string_view kMapSensorScaling[] = {
    " MAP Sensor Scaling: The part of the sensor's range that the fuel and ignition load sites",
    "   cover.", " Full Scale - The load sites spread over the sensor's whole range.",
    " Scaled to  - The load sites spread over the smaller range shown, for finer tuning when",
    "              the engine never sees the sensor's top pressure."};
constexpr std::string_view kLoadSensing[] = {
    " Load Sensing: What the load sites of the maps stand for.",
    " TPS Based - Throttle position, for engines with individual throttles or a camshaft",
    "             that makes manifold pressure unsteady.",
    " MAP Based - Manifold pressure, for most road engines and every boosted engine."};
constexpr std::string_view kSparkMode[] = {
    " Spark Mode: How the ignition coils are wired.",
    " Single Coil       - One coil and a distributor.",
    " Wasted Spark      - One coil for each pair of cylinders, firing twice each cycle.",
    " Coil per Cylinder - One coil on each cylinder; needs a home position signal.",
    " Twin Distributor  - Two coils and two distributors, as on V8 engines built that way."};
constexpr std::string_view kDwellControl[] = {
    " Dwell Control: How long the ECU charges each coil before it fires.",
    " Constant Duty Percentage - The charge lasts a share of the time between sparks; at",
    "                            low engine speed this gives very long charges.",
    " Constant Charge Time     - The charge lasts the same time at every speed; the usual",
    "                            choice for modern coils."};
constexpr std::string_view kDwellSetting[] = {
    " Dwell Setting: The charge time in milliseconds, or the duty in percent, of the dwell",
    "   control. Too long a charge overheats coils and igniters; too short a weak spark. Use",
    "   the coil maker's figure (often 2.5 to 4 ms)."};
constexpr std::string_view kTriggerPattern[] = {
    " Trigger Pattern: The tooth pattern of the wheel the engine speed sensor reads.",
    " Single Trigger - One pulse per firing, as from a distributor.",
    " Multi-Tooth    - Evenly spaced teeth on the crank (12 or 24).",
    " Missing Tooth  - 36 or 60 teeth with one or two missing, which marks a crank position."};
constexpr std::string_view kTriggerSensor[] = {
    " Trigger Sensor: The kind of engine speed sensor and its switching voltage.",
    " Hall         - A sensor with three wires giving a square wave.",
    " Magnetic     - A two wire (reluctor) sensor whose voltage grows with speed.",
    " Magnetic Low - A magnetic sensor with a weak signal.",
    " Voltage      - The input threshold count; raise it when noise gives false pulses."};
constexpr std::string_view kTriggerAngle[] = {
    " Trigger Angle: Where the trigger wheel stands against the engine.",
    " Trigger Angle - Degrees before top dead centre of the reference tooth. Check it with a",
    "                 timing light: the advance shown must match the engine's.",
    " Tooth Offset  - The tooth after the missing teeth that the ECU counts from."};
constexpr std::string_view kTriggerEdges[] = {
    " Trigger Edges: Which edge of a sensor's pulse the ECU reads.",
    " Falling - The usual edge for the engine speed sensor.",
    " Rising  - Mostly for some distributors' sensors; a wrong edge shifts the timing.",
    " Home    - The home position input reads its rising edge unless set otherwise."};
constexpr std::string_view kSparkOutputEdge[] = {
    " Spark Output Edge: How the ignition outputs switch the igniters or coils.",
    " Falling (Default) - The coil fires when the output falls.",
    " Rising            - The coil fires when the output rises, for igniters that need it.",
    " Pull-up           - Whether the output is pulled up; the ECU's byte keeps only the edge."};
constexpr std::string_view kHomePosition[] = {
    " Home Position: The signal that tells the ECU which turn of the crank the engine is on,",
    "   needed for sequential injection and coil per cylinder.",
    " Disabled       - No home signal: batch, semi-sequential or wasted spark only.",
    " Generated      - Worked out from the trigger wheel itself.",
    " On Crank / Cam - A separate sensor on the crank or camshaft."};
constexpr std::string_view kHomeSensor[] = {
    " Home Sensor: The kind of home position sensor and its switching voltage.",
    " Hall     - A sensor with three wires giving a square wave.",
    " Magnetic - A two wire (reluctor) sensor.", " Voltage  - The input threshold count."};
constexpr std::string_view kEngineSpeedSites[] = {
    " Engine Speed Sites: The RPM spacing of the maps' eleven rows; the top of the range is",
    "   shown with each choice. The maps change their row labels at once."};
constexpr std::string_view kFuelLoadSites[] = {
    " Fuel Load Sites: How many load columns the fuel maps have (9, 13 or 17). The maps are",
    "   not converted: the ECU reads the same bytes with the new layout, so re-tune after."};
constexpr std::string_view kIgnitionLoadSites[] = {
    " Ignition Load Sites: How many load columns the ignition map has (5 or 6). The map is",
    "   not converted: re-tune it after a change."};
constexpr std::string_view kAuxiliaryOutput[] = {
    " Auxiliary Output: What the auxiliary output drives.",
    " Idle Control                - The idle air valve.",
    " Rev Counter Signal          - A tachometer.",
    " Trigger Signal Pass-Through - A copy of the engine speed signal for another unit."};
constexpr std::string_view kEngineWarningLight[] = {
    " Engine Warning Light: What the ECU does when it records a fault.",
    " Disabled            - Nothing.",
    " Only Save (OBD)     - The fault is stored for reading out; the light stays off.",
    " Flashes Slowly/Fast - The warning light output flashes, and the fault is stored."};
constexpr std::string_view kAfrDisplay[] = {
    " AFR Display: The fuel the air-fuel ratio read-outs are shown for, or lambda. The ECU",
    "   measures lambda; this choice only changes how it is shown."};

// Outputs.
constexpr std::string_view kWaterSensorFailure[] = {
    " Water Sensor Failure: What an output does when the water temperature sensor fails, for",
    "   example run the cooling fan all the time so that the engine cannot overheat unseen."};
constexpr std::string_view kDutyCycle[] = {
    " Duty Cycle: An output switched on for a share of each period, to drive a valve or a",
    "   pump at part power (a boost control solenoid, an idle valve)."};
constexpr std::string_view kBoostLimiter[] = {
    " Boost Limiter: The manifold pressure above which the ECU cuts the engine to protect it",
    "   from overboost. Set it a little above the boost the engine is tuned for."};
constexpr std::string_view kLaunchControl[] = {
    " Launch Control: Holds the engine at a set speed at the start line, so the car leaves",
    "   with boost and without wheelspin."};
constexpr std::string_view kAntiLag[] = {
    " Anti-Lag: Keeps the turbo spinning off throttle by retarding the ignition and adding",
    "   fuel. Very hard on turbo and exhaust: for competition only."};
constexpr std::string_view kRevLimiterHit[] = {
    " Rev Limiter Hit: The engine reached the rev limiter. Raise the limit only if the engine",
    "   is built for it."};
constexpr std::string_view kBoostLimiterHit[] = {
    " Boost Limiter Hit: The manifold pressure passed the boost limiter. Lower the boost, or",
    "   raise the limiter if the engine is built for more."};
constexpr std::string_view kInjectorOverDuty[] = {
    " Injector Over-Duty Cycle: The injectors are open close to or beyond 100 % of the time:",
    "   the fuel flow cannot keep up. Bigger injectors or pump, or a blocked filter."};
constexpr std::string_view kChargeTimeError[] = {
    " Ignition Charge Time Error: The coils cannot be charged for the time asked before the",
    "   next spark. Shorten the charge time or use more coils."};
constexpr std::string_view kTriggerAngleError[] = {
    " Trigger Angle Error: The ignition timing asked for lies beyond what the trigger angle",
    "   allows. Move the trigger sensor or wheel and set the new trigger angle."};
constexpr std::string_view kNoisyRpm[] = {
    " Eratic/Noisy RPM Signal: The engine speed signal has noise, missing or extra pulses.",
    "   Check the sensor, its gap and that its wiring keeps clear of coils and leads."};
constexpr std::string_view kNoisyHome[] = {
    " Eratic/Noisy Home Signal: The home position signal is missing, extra or noisy. Vital",
    "   for coil per cylinder and sequential injection."};
constexpr std::string_view kAirSensor[] = {
    " Air Temperature Sensor: The air temperature sensor reads open or short circuit. Check",
    "   the plug and wiring."};
constexpr std::string_view kWaterSensor[] = {
    " Water Temperature Sensor: The water temperature sensor reads open or short circuit, or",
    "   the engine is over 100 degrees C."};
constexpr std::string_view kBatteryVoltage[] = {
    " Battery Voltage Low/High: The supply voltage is outside its range. Check the alternator",
    "   and its regulator."};
constexpr std::string_view kTpsRange[] = {
    " TPS Sensor Range Error: The throttle sensor reads below 0 % or above 100 %. Secure the",
    "   sensor and calibrate it again."};
constexpr std::string_view kOutputFunctionCode[] = {
    " Output Function Code: The first byte of an output's group chooses what the output does.",
    "   The ECU accepts codes 0 to 15; the code is shown and sent as it is."};
constexpr std::string_view kOutputSettings[] = {
    " Output Settings: Bytes 2 to 16 of an output's group, the settings of its function,",
    "   shown and sent as they are. Every change goes to the ECU at once."};
constexpr std::string_view kOutputDisplay[] = {
    " Output Display: How the outputs are shown, and whether a change of an output's",
    "   function is asked about first."};
constexpr std::string_view kIdleTarget[] = {
    " Idle Target: The engine speed the idle control holds when the engine is warm."};
constexpr std::string_view kIdleValveLimits[] = {
    " Idle Valve Limits: The least and most the idle valve may open. The minimum must not be",
    "   above the maximum."};
constexpr std::string_view kIdlePwmFrequency[] = {
    " Idle PWM Frequency: The code of the frequency the idle valve is pulsed at (0 to 3);",
    "   use the one the valve is made for."};
constexpr std::string_view kIdleSetting[] = {
    " Idle Setting: A further idle control byte, shown and sent as it is."};
constexpr std::string_view kIdleColdAdjuster[] = {
    " Idle Cold Adjuster: How the idle control opens the valve further while the engine is",
    "   cold. The third byte is shown halved and must stay below 64."};
constexpr std::string_view kIdleValues[] = {
    " Idle Values: Further idle control bytes, shown and sent as they are."};
constexpr std::string_view kIdleOptions[] = {
    " Idle Options: Switches of the idle control, one per bit of its two option bytes."};

// Inputs.
constexpr std::string_view kLaunchLimiter[] = {
    " Launch Limiter: The engine speed launch control holds while the car waits to start."};
constexpr std::string_view kLaunchRetard[] = {
    " Launch Retard: Degrees of ignition taken away while on the launch limiter, to build",
    "   boost. Too much makes exhaust temperatures climb."};
constexpr std::string_view kLaunchFuel[] = {
    " Launch Fuel: Fuel added while on the launch limiter, to cool the engine against the",
    "   retarded timing."};
constexpr std::string_view kAntiLagLimiter[] = {
    " Anti-Lag Limiter: The engine speed limit while anti-lag is working."};
constexpr std::string_view kAntiLagRetard[] = {
    " Anti-Lag Retard: Degrees of ignition taken away while anti-lag works."};
constexpr std::string_view kAntiLagFuel[] = {" Anti-Lag Fuel: Fuel added while anti-lag works."};
constexpr std::string_view kController[] = {
    " Controller: Closed-loop air-fuel control, which trims the fuel so that the measured",
    "   air-fuel ratio meets the setpoint.", " Off - The maps alone decide the fuel.",
    " On  - The fuel is corrected from the wideband sensor's reading."};
constexpr std::string_view kCurrentAfr[] = {
    " Current AFR: The air-fuel ratio measured now, in the display chosen on the main setup."};
constexpr std::string_view kCorrection[] = {
    " Correction %: How much the controller is adding (+) or taking away (-) from the map's",
    "   fuel. A large correction means the map itself needs tuning there."};
constexpr std::string_view kInstantCompensations[] = {
    " Allow Instant Compensations: Lets the controller correct at once on large errors",
    "   instead of slowly."};
constexpr std::string_view kAfrSetpoint[] = {
    " AFR Setpoint: The air-fuel ratio the controller aims for."};
constexpr std::string_view kLoopSpeed[] = {
    " Loop Speed: How quickly the controller corrects. Too fast makes the mixture hunt."};
constexpr std::string_view kEnrichmentGain[] = {
    " En-Richment Gain: How strongly the controller adds fuel when the engine runs lean."};
constexpr std::string_view kEnleanmentGain[] = {
    " En-Leanment Gain: How strongly the controller takes fuel away when the engine runs",
    "   rich."};
constexpr std::string_view kMaxRpm[] = {
    " Max RPM: Above this engine speed the controller stops correcting and the maps rule."};
constexpr std::string_view kMaxMap[] = {
    " Max MAP: Above this manifold pressure the controller stops correcting, so that full",
    "   load runs on the tuned map."};
constexpr std::string_view kInputFunctionCode[] = {
    " Input Function Code: The code that chooses what a general purpose input does. The ECU",
    "   accepts codes 0 to 7; the code is shown and sent as it is."};
constexpr std::string_view kInputSettings[] = {
    " Input Settings: The six settings bytes of an input, shown and sent as they are."};
constexpr std::string_view kInputAuxiliary[] = {
    " Input Auxiliary Bytes: Two further bytes of an input, shown and sent as they are."};

constexpr HelpTopic kMainSetupTopics[] = {
    {"Cylinders", kCylinders},
    {"Fuel Mode", kFuelMode},
    {"Injector Impedance", kInjectorImpedance},
    {"Fuel Map Selection", kFuelMapSelection},
    {"Rev Limiter", kRevLimiter},
    {"Limiter Type", kLimiterType},
    {"Startup Prime", kStartupPrime},
    {"Installed Map Sensor", kInstalledMapSensor},
    {"MAP Sensor Scaling", kMapSensorScaling},
    {"Spark Mode", kSparkMode},
    {"Dwell Control", kDwellControl},
    {"Dwell Setting", kDwellSetting},
    {"Trigger Pattern", kTriggerPattern},
    {"Trigger Sensor", kTriggerSensor},
    {"Trigger Angle", kTriggerAngle},
    {"Trigger Edges", kTriggerEdges},
    {"Home Position", kHomePosition},
    {"Home Sensor", kHomeSensor},
    {"Engine Speed Sites", kEngineSpeedSites},
    {"Fuel Load Sites", kFuelLoadSites},
    {"Ignition Load Sites", kIgnitionLoadSites},
    {"Load Sensing", kLoadSensing},
    {"Spark Output Edge", kSparkOutputEdge},
    {"Auxiliary Output", kAuxiliaryOutput},
    {"Engine Warning Light", kEngineWarningLight},
    {"AFR Display", kAfrDisplay},
};

constexpr HelpTopic kOutputTopics[] = {
    {"Water Sensor Failure", kWaterSensorFailure},
    {"Duty Cycle", kDutyCycle},
    {"Boost Limiter", kBoostLimiter},
    {"Launch Control", kLaunchControl},
    {"Anti-Lag", kAntiLag},
    {"Rev Limiter Hit", kRevLimiterHit},
    {"Boost Limiter Hit", kBoostLimiterHit},
    {"Injector Over-Duty Cycle", kInjectorOverDuty},
    {"Ignition Charge Time Error", kChargeTimeError},
    {"Trigger Angle Error", kTriggerAngleError},
    {"Eratic/Noisy RPM Signal", kNoisyRpm},
    {"Eratic/Noisy Home Signal", kNoisyHome},
    {"Air Temperature Sensor", kAirSensor},
    {"Water Temperature Sensor", kWaterSensor},
    {"Battery Voltage Low/High", kBatteryVoltage},
    {"TPS Sensor Range Error", kTpsRange},
    {"Output Function Code", kOutputFunctionCode},
    {"Output Settings", kOutputSettings},
    {"Output Display", kOutputDisplay},
    {"Idle Target", kIdleTarget},
    {"Idle Valve Limits", kIdleValveLimits},
    {"Idle PWM Frequency", kIdlePwmFrequency},
    {"Idle Setting", kIdleSetting},
    {"Idle Cold Adjuster", kIdleColdAdjuster},
    {"Idle Values", kIdleValues},
    {"Idle Options", kIdleOptions},
};

constexpr HelpTopic kInputTopics[] = {
    {"Launch Limiter", kLaunchLimiter},
    {"Launch Retard", kLaunchRetard},
    {"Launch Fuel", kLaunchFuel},
    {"Anti-Lag Limiter", kAntiLagLimiter},
    {"Anti-Lag Retard", kAntiLagRetard},
    {"Anti-Lag Fuel", kAntiLagFuel},
    {"Controller", kController},
    {"Current AFR", kCurrentAfr},
    {"Correction %", kCorrection},
    {"Allow Instant Compensations", kInstantCompensations},
    {"AFR Setpoint", kAfrSetpoint},
    {"Loop Speed", kLoopSpeed},
    {"En-Richment Gain", kEnrichmentGain},
    {"En-Leanment Gain", kEnleanmentGain},
    {"Max RPM", kMaxRpm},
    {"Max MAP", kMaxMap},
    {"Air Temperature Sensor", kAirSensor},
    {"Water Temperature Sensor", kWaterSensor},
    {"Battery Voltage Low/High", kBatteryVoltage},
    {"TPS Sensor Range Error", kTpsRange},
    {"Input Function Code", kInputFunctionCode},
    {"Input Settings", kInputSettings},
    {"Input Auxiliary Bytes", kInputAuxiliary},
};

}  // namespace

std::span<const HelpTopic> TopicsOf(HelpSet set) {
  switch (set) {
    case HelpSet::kOutputs:
      return kOutputTopics;
    case HelpSet::kInputs:
      return kInputTopics;
    case HelpSet::kMainSetup:
      return kMainSetupTopics;
  }
  return {};
}

}  // namespace vela
