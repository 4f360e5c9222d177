// Synthetic camera frames of a laser stripe with known truth. Seeded and deterministic: the same parameters
// give the same bytes on every machine.
#pragma once

#include "zelWeldDetect.h"

#include <opencv2/core.hpp>

#include <cstdint>
#include <limits>
#include <optional>
#include <string>
#include <vector>

namespace scenes {

enum class TJoint { buttGap, lap, corner, plate, vGroove, singleBevel, uGroove, flareV, flareBevel, plain, blank };

// The five groove joints in full. Depth, root gap and flank angles are those of TGeometry; lengths are those of
// the workpiece before the tilt turns it. "Deeper" is away from the shoulders.
struct TGroove {
  bool isRootUpper = false;  // the root is the upper end of the groove in the image
  bool isMirrored = false;   // singleBevel: the bevel is on the left; flareBevel: the round side is on the right
  bool isTube = false;       // flares: tubes instead of plates with a rounded edge
  bool isLeftDark = false;   // the left surface is the darker one of the two
  double mismatchPx =
      0.0;               // the right plate lies so much deeper than the left one; not: closed uGroove, flareBevel
  double bendDeg = 0.0;  // vGroove, singleBevel: angle between the plates; > 0: both fall away from the groove
  double rootFacePx = 0.0;        // vGroove, singleBevel: the backing lies this much deeper than the flanks end
  double backingShare = 0.0;      // vGroove, singleBevel: share of the root gap in which the backing is lit
  double shoulderRadiusPx = 0.0;  // vGroove, singleBevel, uGroove: of the rounded edge between plate and flank
  double leftBowPx = 0.0;         // vGroove, singleBevel: the flank's middle is this much deeper than its chord
  double rightBowPx = 0.0;
  double leftRadiusPx =
      60.0;  // uGroove: between wall and bottom; flares: of the round side (flareBevel: of its only one)
  double rightRadiusPx = 60.0;
  double flatPx =
      0.0;  // uGroove: flat bottom between the corner arcs, without the gap; 0 and equal radii: one arc
};

// What the joint looks like, in pixels of the frame.
struct TGeometry {
  cv::Point2d seam{0.5, 0.5};  // seam position as a share of the frame width and height
  double tiltDeg = 0.0;        // shears the whole stripe around the seam by this slope angle, y down
  double gapPx = 30.0;         // buttGap: distance of its last and first lit columns; grooves: root gap
  double stepPx = 60.0;    // lap: height of the step (right end lower when positive); plate: height over the table
  double overlapPx = 0.0;  // lap: how far the right piece reaches back beside the left one (negative: a hole)
  double leftFlankDeg = 25.0;  // corner, grooves: flank angles, y down
  double rightFlankDeg = -25.0;
  double depthPx = 120.0;       // grooves: depth below the shoulders
  double plateWidthPx = 500.0;  // plate: width
  double sideStepPx = 0.0;      // buttGap: the right plate lies so much lower in the image
  double bowPx = 0.0;           // corner, plain: the middle of each flank lies so many rows below its chord
  // The five groove joints: the tilt turns the whole groove, and the truth is complete. None: plain level grooves
  // with sharp edges, sheared by the tilt, without measures.
  std::optional<TGroove> groove = std::nullopt;
};

// How the stripe and its surroundings look.
struct TLook {
  double fwhmPx = 7.0;      // full width at half maximum on the parent surface
  double rootFwhmPx = 7.0;  // the same in the groove, at the root and on far flanks (2..50)
  double peak = 200.0;      // grey level of the stripe's ridge before clipping at 255; above 255 saturates
  double rootPeak = 200.0;  // the same in the groove and on far flanks
  double brightnessRatio =
      1.0;               // right surface (plate: the table) darker by this factor (1..10); below 1: brighter
  double fade = 0.0;     // loss of brightness towards the sides, share, 0..1
  double speckle = 0.0;  // contrast of the multiplicative speckle, 0..1
  double speckleGrainPx = 2.0;    // grain of the speckle, 1..4
  double noiseSigma = 0.0;        // additive Gaussian noise, grey levels
  double background = 0.0;        // mean grey level of the surroundings
  double texture = 0.0;           // amplitude of the background texture, grey levels
  double flatTop = 0.0;           // 0: Gaussian across the stripe; 1: flat top with steep edges
  double missingShare = 0.0;      // share of the frame's columns in which the stripe is lost, in stretches
  double missingRunPx = 40.0;     // longest such stretch; all keep 40 px from each other, 30 from features
  double flare = 0.0;             // 0..1: flare that fattens the stripe near the seam
  int blobs = 0;                  // specular blobs beside the stripe
  int spatter = 0;                // spatter streaks
  double arcGlow = 0.0;           // grey level of the arc glow above the seam
  double ghostShare = 0.0;        // brightness of a reflected second stripe, share of the first; 0: none
  double ghostOffsetPx = 40.0;    // its distance below the first
  double ghostTiltDeg = 0.0;      // its tilt against the first: not 0 gives a crossing ghost
  double ghostSpan = 1.0;         // share of the frame width that it covers, around the seam
  double doubleExposurePx = 0.0;  // shift of a second exposure of the same stripe; 0: none
  double steepestSlope = 2.5;     // steeper walls send the stripe away from the camera
  double slopeDimming = 0.0;      // share of the brightness that a surface loses as it turns upright, 0..1
  double flankGhostShare =
      0.0;  // grooves: brightness of each flank's reflection on the other, share of the flank; 0: none
};

// What makes frames from a workshop hard, beyond TLook.
struct TTroubles {
  double dropShare = 0.0;  // share of the columns that lose the stripe in runs of 3 to 25, up to the points' sides
  int dropAtPointPx = 0;   // one more such run, this long, covers an edge, corner or shoulder
  double darkRoughPx = 0.0;       // scatter of the drawn stripe around its true row on the darker surface
  double flankRoughPx = 0.0;      // the same in a groove, where it is more
  double darkFwhmPx = 0.0;        // width of the stripe on the darker surface; 0: as on the other
  double toeBlobPx = 0.0;         // diameter of a saturated blob at an edge, corner or shoulder
  double secondLaserShare = 0.0;  // brightness of a second laser's stripe against the first; 0: none
  double secondLaserRise = 2.0;   // its profile is so many times as high ...
  double secondLaserDropPx = 0;   // ... and its seam lies so far below the first one's
  int mirrorLines = 0;            // dim mirror images that fan out of the seam
  double torchLevel = 0.0;        // grey level of torch and wire above the seam; 0: out of view
  double flashLevel = 0.0;        // a flash floods the frame with this grey level ...
  double scrapPx = 0.0;           // ... and leaves so many columns of the stripe, anywhere; 0: no flash
  double seamLine = 0.0;  // the joint seen in room light: a line across the frame, so many grey levels darker
};

struct TSceneParams {
  TJoint joint = TJoint::buttGap;
  cv::Size size{1280, 1024};
  std::uint64_t seed = 1;
  std::uint64_t frame = 0;  // noise, speckle, glow and spatter are new in every frame; the workpiece stays
  TGeometry geometry;
  TLook look;
  TTroubles troubles;
};

struct TFeature {
  std::string name;  // "gapLeft", "gapRight", "leftShoulder", "rightShoulder", "root", "upperCorner", ...
  cv::Point2d point;
};

// What a gauge would read from the profile; NaN where the joint has no such measure. Angles are those of the
// image, y down, left to right; lengths hold for the turned groove as it stands in the image.
struct TMeasures {
  static constexpr double kNone = std::numeric_limits<double>::quiet_NaN();
  double widthPx = kNone;  // distance of the shoulders
  double depthPx = kNone;  // of the root from the line through the shoulders
  double gapPx = kNone;    // distance of the two root edges, or of the round sides
  double mismatchPx =
      kNone;  // row of the right plate minus row of the left one, both carried to the root's column
  double leftAngleDeg = kNone;   // chord of the left flank
  double rightAngleDeg = kNone;  // chord of the right flank
  double includedAngleDeg =
      kNone;                    // between the flanks; singleBevel: between the flank and the other plate's normal
  double baseAngleDeg = kNone;  // mean of the two plates; flareBevel: the flat plate
  double leftRadiusPx = kNone;  // of the round side; uGroove: between wall and bottom
  double rightRadiusPx = kNone;
};

struct TTruth {
  bool hasSeam = false;
  cv::Point2d seam;             // centre of the seam
  std::vector<double> centreY;  // one per column: true stripe row, NaN where the stripe is not visible
  std::vector<double> fwhmPx;   // one per column, 0 where the stripe is not visible
  std::vector<TFeature> features;
  TMeasures measures;  // of a groove described by TGroove
};

struct TScene {
  cv::Mat image;  // 8-bit grey
  TTruth truth;
};

TScene renderScene(const TSceneParams& params);

// The seam point for a welding position, as the detector of that joint defines it. Grooves: centre and lower give
// the root, left and right the shoulders, upper the middle between these; a shoulder that the joint lacks gives
// the root.
cv::Point2d seamPoint(TJoint joint, const TTruth& truth, TWeldPosType pos);

enum class TLevel { clean, noisy, harsh, real };

// A random joint of that kind at that level of difficulty, its seam within the middle 40 % of the frame width.
//   clean  unsaturated stripe, nothing else in the frame.
//   noisy  noise, speckle, surfaces of unlike brightness (up to 10:1), fading, background with texture.
//   harsh  a saturated stripe up to 40 px tall on surfaces up to 4:1, noise, speckle, lost stretches, flare,
//          blobs, a ghost, arc glow and spatter.
//   real   like frames from workshops: thin speckled, medium or saturated stripes; each frame has some of
//   TTroubles, half
//          of the butt gaps are tight (1 to 3 px), half of the plates lie flush with the table. Parameters for
//          wide gaps and high steps do not find these.
TSceneParams randomScene(TJoint joint, TLevel level, std::uint64_t seed, cv::Size size = {1280, 1024});

// Parameters that find the joints that randomScene makes.
TWeldParams weldParamsFor(TJoint joint, TWeldPosType pos = TWeldPosType::centre);

// Frame by frame changes of a scene.
struct TMotion {
  cv::Point2d driftPx{0.0, 0.0};  // per frame
  double jitterPx = 0.0;          // random shift of each frame
  double tiltDriftDeg = 0.0;      // per frame
  int jumpAtFrame = -1;           // the seam jumps here by jumpPx, or the profile changes abruptly
  cv::Point2d jumpPx{0.0, 0.0};
  bool changesProfile = false;
  int flashAtFrame = -1;  // here the arc flashes ...
  int flashFrames = 1;    // ... for so long
};

// Frame n of a sequence; noise, speckle and spatter are new in every frame.
TSceneParams frameOf(const TSceneParams& first, const TMotion& motion, int n);

}  // namespace scenes
