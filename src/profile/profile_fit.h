// What a profile laid over a stripe tells: the elements, the features and the measures of the joint.
#pragma once

#include "profile/profile_template.h"
#include "zelWeldJoint.h"

#include <opencv2/core.hpp>

#include <array>
#include <cstddef>
#include <cstdint>
#include <limits>

namespace weld {

struct TMeasuredPoint {
  bool isFound = false;
  cv::Point2d pos{0.0, 0.0};  // image, px
  double sigmaPx = 0.0;       // root mean square of the distance from the true point
};

// A point that is known less well counts as hidden, as a shoulder under a flare.
inline constexpr double kMostPointSigmaPx = 5.0;

inline constexpr double kNoMeasure = std::numeric_limits<double>::quiet_NaN();

// NaN: the joint has no such measure, or it cannot be seen.
struct TJointMeasures {
  double widthPx = kNoMeasure;       // between the shoulders
  double depthPx = kNoMeasure;       // of the root under the line through the shoulders
  double gapPx = kNoMeasure;         // between the root edges, or the circles; 0 where they meet
  double mismatchPx = kNoMeasure;    // right plate minus left plate along y at the root
  double areaPx2 = kNoMeasure;       // between the stripe and the line through the shoulders
  double leftAngleDeg = kNoMeasure;  // of the left flank in the image, y down
  double rightAngleDeg = kNoMeasure;
  double includedAngleDeg = kNoMeasure;
  double baseAngleDeg = kNoMeasure;  // mean of the plates
  double leftRadiusPx = kNoMeasure;
  double rightRadiusPx = kNoMeasure;
};

// An element where it lies in the image.
struct TProfileElement {
  TElementKind kind = TElementKind::line;
  TElementRole role = TElementRole::plate;
  cv::Point2d left{0.0, 0.0};  // ends
  cv::Point2d right{0.0, 0.0};
  cv::Point2d centre{0.0, 0.0};  // of an arc
  double radiusPx = 0.0;
  double noisePx = 0.0;      // standard deviation of its centres
  double inlierShare = 0.0;  // of the centres near its ends that belong to it
};

// A stretch without a stripe, in the sense of the template.
struct TGapMeasure {
  double widthPx = 0.0;  // 0: closed
  double stepPx = 0.0;   // by which its right side lies deeper under the plates
};

// Why a stripe has no such profile.
enum class TProfileOutcome : std::int32_t {
  found,
  tooFewCentres,  // after the wild ones are gone
  noLayout,       // the template fits nowhere
  notMeeting,     // its elements do not meet as they should
  tooShallow,     // depth within the noise, or round edges that overlap
  platesApart,    // plates that point elsewhere
  stepped,        // plates farther apart than the groove is deep
  darkFeet,       // flanks that end in the dark before their flat root
  notSeen,        // too few centres next to a corner
  notBetter,      // a plate or a curve explains the stripe as well
};

struct TProfileFit {
  TProfileOutcome outcome = TProfileOutcome::noLayout;
  const TProfileTemplate* profile = nullptr;  // the form found
  int sense = 1;                              // 1: the groove opens upwards in the image; -1: downwards
  double confidence = 0.0;                    // 0..1
  double score = 0.0;                         // by how much it is cheaper than a plate or a curve
  double noisePx = 0.0;                       // of the stripe
  double unseenPx = 0.0;  // root mean square of the columns by which its holes cut an end short
  std::array<TMeasuredPoint, kFeatures> features{};
  TJointMeasures measures;
  double leastDepthPx = kNoMeasure;    // that stands out of the noise
  double platesApartDeg = kNoMeasure;  // between the plates
  double worstShare = kNoMeasure;      // of the centres beside a corner that belong to its elements
  std::size_t elementCount = 0;
  std::array<TProfileElement, kMostElements> elements{};
  std::array<TGapMeasure, kMostElements - 1> gaps{};  // behind each element, where the template names the points

  bool isFound() const { return outcome == TProfileOutcome::found; }
  const TMeasuredPoint& feature(TFeature f) const { return features[static_cast<std::size_t>(f)]; }
};

}  // namespace weld
