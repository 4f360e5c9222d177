// Centre lists of joints whose features are known.
#pragma once

#include "zelWeldJoint.h"

#include <array>
#include <cstdint>
#include <vector>

namespace made {

enum class TLevel { clean, noisy, harsh };

struct TPlace {
  bool isFound = false;
  cv::Point2d pos;
  double sigmaPx = 0.0;
};

inline constexpr std::size_t kFeatures = static_cast<std::size_t>(TFeature::rightEnd) + 1;

struct TJoint {
  TWeldType weldType = TWeldType::none;
  std::vector<cv::Point2f> points;
  std::array<TPlace, kFeatures> features{};
  TJointMeasurement measures;
  bool isHard = false;  // its edge hides, or nothing can tell it from a neighbouring form

  const TPlace& at(TFeature f) const { return features[static_cast<std::size_t>(f)]; }
};

// A random joint of a type, 1,280 columns. harsh: speckle, waves, 15 % of the columns missing in runs of 3 to 22,
// runs of a ghost 12 to 80 px off.
//   weldType  lap, corner, plate, U, V, single bevel, flare V, flare bevel; none gives a curved plate
TJoint makeJoint(TWeldType weldType, TLevel level, std::uint64_t seed);

}  // namespace made
