// The joint, its parameters and the result of a frame. Include zelWeldDetect.h rather than this.
#pragma once

#include <opencv2/core.hpp>

#include <cstdint>
#include <vector>

// Joint kind; selects the detector. Any other value is safe and behaves like `none`.
enum class TWeldType : std::int32_t {
  buttGap = 0,         // one straight stripe broken by a gap
  lap = 1,             // two pieces displaced in height (a step)
  corner = 2,          // two flanks that meet in one corner
  none = 3,            // no detector: every call gives the empty result
  plate = 4,           // one plate: the highest straight piece and its two ends
  uGroove = 5,         // steep walls and a round bottom
  vGroove = 6,         // two sloping flanks
  singleBevel = 7,     // one sloping flank beside an upright wall
  flareV = 8,          // two rounded plates or tubes
  flareBevel = 9,      // a rounded plate or tube beside a flat one
  stripePresence = 10  // is the stripe there, compared with the previous frame
};

// Which point of the joint is the seam point. A detector that does not know a value uses `centre`.
enum class TWeldPosType : std::int32_t {
  centre = 0,  // midway between the ends below; of a corner the corner, of a groove its root
  left = 1,    // buttGap: left edge of the gap;  plate: left end
  right = 2,   // buttGap: right edge of the gap; plate: right end
  upper = 3,   // lap: upper corner in the image
  lower = 4    // lap: lower corner in the image
};

// A closed interval of angles in degrees.
struct TAngleRange {
  double min = 0.0;  // degrees
  double max = 0.0;  // degrees
};

// Tuning of one joint. Every field has a usable default; out-of-range values never crash, they only
// find nothing. `zelweld params --type NAME` prints the fields that a joint reads;
// docs/parameters.md draws them.
struct TWeldParams {
  bool isInit = false;                              // set by initWeldParameters
  TWeldType weldType = TWeldType::none;             // set by initWeldParameters
  TWeldPosType weldPosType = TWeldPosType::centre;  // set by initWeldParameters

  // lap, plate: brightness drop along the piece that must be exceeded to move its end, grey levels, 0..255.
  double dPara1 = 30.0;
  // buttGap, corner: largest distance of a stripe point from its line, px, > 0.
  // lap, plate: largest distance of a stripe point that supports the piece, px, > 0.
  double dPara2 = 5.0;
  // buttGap (first detection): smallest share of stripe points on the line, 0..1.
  // corner: smallest share of points on a flank, and points per column that the better one must exceed, 0..1.
  double dPara3 = 0.1;
  // buttGap (tracking), corner: scale and inlier distance of the robust line fit, px, > 0.
  double dPara4 = 2.0;
  // Read by no detector; carried along.
  double dPara5 = 80.0;
  // corner: points that the better flank must exceed, count, >= 0.
  // lap, plate: length that a piece must exceed, px, >= 0.
  double dPara6 = 50.0;
  // corner: missing stripe columns around the corner must stay below this, count, >= 1.
  std::int32_t nPara1 = 10;
  // lap: height that the step must exceed, px, >= 0.
  double dPara7 = 20.0;
  // buttGap: smallest gap width, px, >= 1 (N missing columns measure N + 1).
  double dPara8 = 10.0;
  // Read by no detector; carried along.
  std::int32_t nPara2 = 0;
  std::int32_t nPara3 = 7;
  std::int32_t nPara4 = 2;
  // plate: admissible angle of the piece, exclusive bounds, degrees, -90..90.
  double angleRange0Min = -10.0;
  double angleRange0Max = 10.0;
  // plate: smallest distance between the two ends, px, >= 0.
  double dPara9 = 50.0;
  // corner: admissible angle of the left flank, exclusive bounds in either order, degrees, -90..90.
  double angleRange1Min = 0.0;
  double angleRange1Max = 45.0;
  // corner: admissible angle of the right flank, exclusive bounds in either order, degrees, -90..90.
  double angleRange2Min = -45.0;
  double angleRange2Max = 0.0;
  // corner: admissible included angle, exclusive bounds in either order, degrees, 0..180.
  double angleRange5Min = 90.0;
  double angleRange5Max = 178.0;
  // corner: share of each flank, counted from the corner, that must be unbroken, 0..1.
  double dPara10 = 0.3;
  // corner: longest run of missing stripe columns inside that band, count, >= 0.
  std::int32_t nPara5 = 10;
  // corner: true accepts a gap at the corner, false demands stripe on both sides of it.
  bool haveGap = true;
  // Read by no detector; carried along. Degrees.
  TAngleRange angleRange3{-45.0, 45.0};
  // buttGap (first detection): admissible angle of the stripe, degrees, -90..90.
  TAngleRange angleRange4{-45.0, 45.0};
  // stripePresence: true uses ridge extraction instead of edge pairs.
  bool flagPara1 = false;
  // stripePresence: true searches only near the previous stripe (with edge pairs).
  bool flagPara2 = false;
};

// What a frame gave. Feed it back as the previous result of the next frame.
struct TWeldLineRes {
  bool isFound = false;                // a seam point was found (stripePresence: the stripe is there)
  cv::Point2f weldPos{0.0F, 0.0F};     // the seam point, px; (0, 0) when not found
  std::vector<cv::Point2f> stripePts;  // stripe centres of this frame, px, left to right
  // corner: slope and intercept of the left flank, then of the right one.
  // plate: slope and intercept of the line through the two ends, twice. Others: 0.
  double auxVal1 = 0.0;
  double auxVal2 = 0.0;
  double auxVal3 = 0.0;
  double auxVal4 = 0.0;
  double trackVal = 0.0;  // corner: included angle, degrees. Others: 0.
};
