#include "positioning/Troposphere.h"

#include <algorithm>
#include <cmath>

namespace velagnss {
namespace {

constexpr double kSeaLevelPressure = 1013.25;    // hPa
constexpr double kSeaLevelTemperature = 288.15;  // K
constexpr double kLapseRate = 0.0065;            // K/m
constexpr double kPressureExponent = 5.2559;     // g / (R * lapse rate)
constexpr double kSeaLevelHumidity = 0.5;
constexpr double kHumidityScale = 0.0006396;  // 1/m

// Partial pressure of water vapor in hPa, by Magnus' formula for saturation.
double VaporPressure(double temperature, double height) {
  const double celsius = temperature - 273.15;
  const double saturated = 6.1078 * std::exp(17.27 * celsius / (celsius + 237.3));
  return kSeaLevelHumidity * std::exp(-kHumidityScale * height) * saturated;
}

}  // namespace

double TroposphericDelay(double latitude, double height, double elevation) {
  const double h = std::clamp(height, -1000.0, 11000.0);
  const double temperature = kSeaLevelTemperature - kLapseRate * h;
  const double pressure = kSeaLevelPressure * std::pow(temperature / kSeaLevelTemperature, kPressureExponent);
  const double gravity = 1 - 0.00266 * std::cos(2 * latitude) - 0.28e-6 * h;
  const double dry = 0.0022768 * pressure / gravity;
  const double wet = 0.0022768 * (1255 / temperature + 0.05) * VaporPressure(temperature, h);
  const double sine = std::sin(elevation);
  return (dry + wet) * 1.001 / std::sqrt(0.002001 + sine * sine);
}

}  // namespace velagnss
