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
  root,
  leftRoot,
  rightRoot,
  leftShoulder,
  rightShoulder,
  leftEdge,
  rightEdge,
  upperCorner,
  lowerCorner,
  corner,
  leftEnd,
  rightEnd
};

struct TFeaturePoint {
  TFeature feature = TFeature::root;
  cv::Point2f pos;       // px
  float sigmaPx = 0.0F;  // standard deviation of the position
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
  static constexpr double kNone = std::numeric_limits<double>::quiet_NaN();

  bool isValid = false;
  TWeldType weldType = TWeldType::none;
  float confidence = 0.0F;  // 0..1
  std::vector<TFeaturePoint> points;
  double widthPx = kNone;
  double depthPx = kNone;
  double gapPx = kNone;
  double mismatchPx = kNone;
  double areaPx2 = kNone;
  double leftAngleDeg = kNone;
  double rightAngleDeg = kNone;
  double includedAngleDeg = kNone;
  double baseAngleDeg = kNone;
  double leftRadiusPx = kNone;
  double rightRadiusPx = kNone;
};

// Measures the joint that a result shows: on its stripe points, with its seam. Garbage (no seam, unsorted points,
// numbers that are not finite) gives a measurement that is not valid. A tracker's seam carries this already.
//   result  of a frame, found
//   params  that it was found with
ZELWELDDETECT_EXPORT TJointMeasurement measureJoint(const TWeldLineRes& result, const TWeldParams& params);

struct TJointCandidate {
  TWeldType weldType = TWeldType::none;
  double score = 0.0;  // by how much the joint explains the stripe better than a plate or a curve does, > 0; of a
                       // butt gap, which stands alone, its width in px
};

// What joint the stripe in an image may be: every one that explains it better than a plate or a curve, the best
// first, rivals behind it. Empty on images without a joint. Image as in detectWeldLineViaTracking.
ZELWELDDETECT_EXPORT std::vector<TJointCandidate> recogniseJoint(const cv::Mat& image);

// A seam measured once, before tracking.
struct TWeldFeatures {
  float leftVal = 0.0F;
  float leftAg = 0.0F;  // angle of the left flank, degrees
  std::int64_t leftReserved1 = 0;
  std::int64_t leftReserved2 = 0;
  float rightVal = 0.0F;
  float rightAg = 0.0F;  // angle of the right flank, degrees
  std::int64_t rightReserved1 = 0;
  std::int64_t rightReserved2 = 0;
  float intersecAg = 0.0F;  // angle between the flanks, degrees
  cv::Point2f center{0.0F, 0.0F};
  std::int64_t centerReserved = 0;
  bool haveGap = false;
  float score = 0.0F;  // confidence
  bool featFlag1 = false;
  bool featFlag2 = false;
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
