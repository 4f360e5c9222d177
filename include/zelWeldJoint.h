// What a joint measures. Include zelWeldDetect.h rather than this.
#pragma once

#include "zelWeldDetectExport.h"
#include "zelWeldTypes.h"

#include <opencv2/core.hpp>

#include <cstdint>
#include <limits>
#include <vector>

// The points of a joint that have a name.
enum class TFeature : std::int32_t {
  root,           // deepest point of a groove
  leftRoot,       // left edge of the root gap
  rightRoot,      // right edge of the root gap
  leftShoulder,   // where the left plate ends and the flank begins
  rightShoulder,  // the same on the right
  leftEdge,       // left edge of a butt gap
  rightEdge,      // right edge of a butt gap
  upperCorner,    // of a lap, in the image
  lowerCorner,    // of a lap, in the image
  corner,         // where two flanks meet
  leftEnd,        // of a plate
  rightEnd        // of a plate
};

// A named point of the joint.
struct TFeaturePoint {
  TFeature feature = TFeature::root;  // which one
  cv::Point2f pos;                    // px
  float sigmaPx = 0.0F;               // standard deviation of the position
};

// One frame's measures of the joint, in pixels and degrees of the image. NaN: the joint has no such measure, or it
// cannot be seen.
//
//            widthPx            depthPx         gapPx             mismatchPx          angles
//   gap      -                  -               between the edges step across the gap baseAngleDeg
//   lap      -                  -               along the base    across the base     both pieces, base
//   corner   -                  -               -                 -                   flanks, included
//   plate    of its stripe      -               -                 -                   baseAngleDeg
//   grooves  of the shoulders   root below them between the root  right plate less    flanks, included, base
//                                               edges or circles  the left, along y
//
// A seam that its contrast alone tells has the type `none`, widthPx but for an edge, and its direction as
// baseAngleDeg. Flare joints have radii instead of flank angles. The root gap is 0 where it is closed. A joint of
// one's own has the measures of a groove as far as its template names shoulders and root, and the type `none`:
// angles of the outermost flanks left and right of the seam, its first gap, the radii of its first and last arc or
// rounded corner.
struct TJointMeasurement {
  static constexpr double kNone = std::numeric_limits<double>::quiet_NaN();  // no such measure: NaN

  bool isValid = false;                  // false: nothing was measured, every measure is NaN
  TWeldType weldType = TWeldType::none;  // measured as this joint
  float confidence = 0.0F;               // 0..1
  std::vector<TFeaturePoint> points;     // that were seen
  double widthPx = kNone;                // px, as the table says, here and below
  double depthPx = kNone;                // px
  double gapPx = kNone;                  // px
  double mismatchPx = kNone;             // px
  double areaPx2 = kNone;           // px^2, of a groove: between the stripe and the line through the shoulders
  double leftAngleDeg = kNone;      // degrees, -90..90
  double rightAngleDeg = kNone;     // degrees, -90..90
  double includedAngleDeg = kNone;  // degrees, 0..180
  double baseAngleDeg = kNone;      // degrees, -90..90
  double leftRadiusPx = kNone;      // px
  double rightRadiusPx = kNone;     // px
};

// Measures the joint that a result shows: on its stripe points, with its seam. Garbage (no seam, unsorted points,
// numbers that are not finite) gives a measurement that is not valid. A tracker's seam carries this already.
//   result  of a frame, found
//   params  that it was found with
ZELWELDDETECT_EXPORT TJointMeasurement measureJoint(const TWeldLineRes& result, const TWeldParams& params);

// A joint that the stripe may show.
struct TJointCandidate {
  TWeldType weldType = TWeldType::none;  // which joint
  double score = 0.0;  // by how much the joint explains the stripe better than a plate or a curve does, > 0; of a
                       // butt gap, which stands alone, its width in px
};

// What joint the stripe in an image may be: every one that explains it better than a plate or a curve, the best
// first, rivals behind it. Empty on images without a joint. Image as in detectWeldLineViaTracking.
ZELWELDDETECT_EXPORT std::vector<TJointCandidate> recogniseJoint(const cv::Mat& image);

// A seam measured once, before tracking.
struct TWeldFeatures {
  float leftVal = 0.0F;             // carried along
  float leftAg = 0.0F;              // angle of the left flank, degrees
  std::int64_t leftReserved1 = 0;   // carried along
  std::int64_t leftReserved2 = 0;   // carried along
  float rightVal = 0.0F;            // carried along
  float rightAg = 0.0F;             // angle of the right flank, degrees
  std::int64_t rightReserved1 = 0;  // carried along
  std::int64_t rightReserved2 = 0;  // carried along
  float intersecAg = 0.0F;          // angle between the flanks, degrees
  cv::Point2f center{0.0F, 0.0F};   // px
  std::int64_t centerReserved = 0;  // carried along
  bool haveGap = false;             // there is a gap at the seam
  float score = 0.0F;               // confidence
  bool featFlag1 = false;           // carried along
  bool featFlag2 = false;           // carried along
};

// Measures a seam once, before tracking, and reports the measurement as one line of debugging text in the GBK
// code page (see zelFunctions.h).
//   img     8-bit image with 1, 3 (BGR) or 4 (BGRA) channels; never written to. Depths that cannot be converted
//           to grey raise cv::Exception.
//   params  the joint.
// This release measures nothing yet: every value of the record is 0 and every flag false, the score included.
// An empty image gives the same record and no report.
ZELWELDDETECT_EXPORT TWeldFeatures calcWeldFeatures(cv::Mat img, TWeldParams params);

// The parameters with haveGap taken over from a measurement whose score is above 30; every other field as
// handed in. A score of NaN changes nothing.
ZELWELDDETECT_EXPORT TWeldParams updateWeldParamByWeldFeature(TWeldFeatures features, TWeldParams params);
