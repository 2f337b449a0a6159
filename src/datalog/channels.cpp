#include "datalog/channels.h"

#include <cmath>

#include "calibration/rounding.h"

namespace vela {

double RoundToDecimals(double value, int decimals) {
  const double scale = std::pow(10.0, decimals);
  return RoundHalfEven(value * scale) / scale;
}

double DecodeChannel(int channel, const live::Frame& frame, const ChannelInputs& inputs) {
  switch (channel) {
    case 0:  // 0 RPM when the period's high character is 40 or more (live::EngineRpm)
      return RoundToDecimals(live::EngineRpm(frame), 2);
    case 1:
      return RoundToDecimals(live::MapKpa(frame), 1);
    case 2:
      return RoundToDecimals(live::TpsPercent(frame), 1);
    case 3:
      return live::InjectionMs(frame);
    case 4:
      return inputs.duty_percent >= kDutyRecordLimit ? kDutyRecordLimit : inputs.duty_percent;
    case 5:
      return RoundToDecimals(live::AdvanceDegrees(frame), 1);
    case 6:
      return RoundToDecimals(inputs.water_c, 1);
    case 7:
      return RoundToDecimals(inputs.air_c, 1);
    case 8:
      return RoundToDecimals(live::BatteryVolts(frame), 2);
    case 9:
      return live::IdleValvePercent(frame);
    case 10:
      return RoundToDecimals(live::ThrottlePumpPercent(frame), 1);
    case 11:
      return RoundToDecimals(inputs.afr * 10.0, 1);
    default:
      return 0.0;
  }
}

}  // namespace vela
