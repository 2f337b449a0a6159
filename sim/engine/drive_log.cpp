#include "sim/engine/drive_log.h"

#include <array>
#include <cmath>

#include "base/file_system.h"
#include "datalog/datalog_capture.h"
#include "datalog/files/log_file.h"
#include "link/live/live_data.h"
#include "link/live/live_frame.h"
#include "sim/core/engine_model.h"
#include "sim/core/live_encoder.h"

namespace vela::sim {

namespace {

constexpr int kWaterSensorCal = 987;
constexpr int kAirSensorCal = 971;
constexpr double kGasolineAfr = 14.7;

std::array<double, 8> SensorPoints(const CalibrationImage& image, int first_position) {
  std::array<double, 8> points{};
  for (int i = 0; i < 8; ++i) points[i] = image.Byte(first_position + i);
  return points;
}

// What the program's live display makes of a frame, for the channels that go through it.
ChannelInputs InputsOf(const live::Frame& frame, const CalibrationImage& image) {
  ChannelInputs inputs;
  inputs.afr = live::Lambda(frame) * kGasolineAfr;
  inputs.water_c = live::SensorTemperatureOf(static_cast<std::uint16_t>(live::WaterReading(frame)),
                                             SensorPoints(image, kWaterSensorCal));
  inputs.air_c = live::SensorTemperatureOf(static_cast<std::uint16_t>(live::AirReading(frame)),
                                           SensorPoints(image, kAirSensorCal));
  inputs.duty_percent = live::InjectorDutyPercent(frame);
  return inputs;
}

}  // namespace

void RunDrive(const SimOptions& options, const CalibrationImage& image, double seconds,
              DatalogLog& log, int frames_per_second) {
  DatalogCapture capture(log);
  for (int n = 0; n < kChannelCount; ++n) capture.SetChannelEnabled(n, true);
  capture.FramesPerSecond = static_cast<std::int16_t>(frames_per_second);
  capture.StartLogging(TimeAxis{}.max, 0.0);
  EngineModel engine(options.seed, options.fuel_errors);
  const std::int64_t frame_us = 1'000'000 / frames_per_second;
  const auto end_us = static_cast<std::int64_t>(std::llround(seconds * 1e6));
  std::int64_t next_frame_us = frame_us;
  for (std::int64_t now = EngineModel::kStepUs; now <= end_us; now += EngineModel::kStepUs) {
    engine.Step(image);
    if (now < next_frame_us) continue;
    next_frame_us += frame_us;
    const live::Frame frame = EncodeLiveFrame(engine.State(), image, frames_per_second);
    capture.CaptureFrame(frame, InputsOf(frame, image), 1.0, false, static_cast<double>(now) / 1e6);
  }
  capture.StopLogging();
}

bool WriteDriveLog(const SimOptions& options, const CalibrationImage& image, double seconds,
                   const std::string& path, std::string* error) {
  DatalogLog log;
  RunDrive(options, image, seconds, log);
  DiskFileSystem files;
  if (files.WriteFile(path, EncodeLogFile(log)) != kFileErrorNone) {
    if (error) *error = "cannot write " + FileErrorLine(path, files.LastWriteReason());
    return false;
  }
  return true;
}

}  // namespace vela::sim
