// Synthetic frames of plates without a laser stripe, lit by the room or a lamp, whose seam is known. Seeded and
// deterministic like the scenes with a stripe.
#pragma once

#include "scenes/scene.h"

#include <opencv2/core.hpp>

#include <cstdint>
#include <vector>

namespace scenes {

// How the joint of two plates looks.
enum class TPlateSeam {
  none,   // one plate
  gap,    // dark, 3 to 20 px wide, with bright chamfers
  tight,  // dark, 1 to 3 px wide
  step,   // one plate is brighter than the other
  scribe  // a bright scribed line
};

// Where the seam runs, px: through the centre, bent like a parabola.
struct TSeamCourse {
  cv::Point2d centre{640.0, 512.0};
  double directionDeg = 90.0;  // -90..90, y down
  double bowPx = 0.0;          // rise of the parabola over halfLengthPx
  double halfLengthPx = 700.0;
  double beginPx = -1e9;  // the seam is there from here to there along its course
  double endPx = 1e9;
  double widthPx = 2.0;
  double depth = 0.5;      // share of light that the seam loses; scribe, step: gains
  double chamferPx = 0.0;  // width of the bright edge on either side of a gap
  double chamferGain = 0.0;
  double edgeJitterPx = 0.0;  // of the seam's edges
};

// What the plates and their light look like. Shares are of the brightness.
struct TPlateLook {
  double level = 120.0;         // grey level
  cv::Point2d slope{0.0, 0.0};  // share by which the light changes over the frame
  double vignette = 0.0;        // share lost in the corners
  double ratio = 1.0;           // brightness of the right or lower plate against the other
  double patches = 0.0;         // amplitude of slow changes of the surface
  double grain = 0.0;           // of what changes from pixel to pixel
  double brushed = 0.0;         // of the marks of a brush or a grinding wheel
  double brushedDeg = 0.0;      // their direction
  double brushedBendPx = 1e9;   // radius of their arcs
  int scratches = 0;
  int oxideSpots = 0;
  int oilSpots = 0;
  double tint = 0.0;    // amplitude of bands of heat tint
  double shadow = 0.0;  // share of light that a shadow takes
  double penumbraPx = 20.0;
  int tacks = 0;        // tack welds on the seam
  double glow = 0.0;    // grey level of the arc's glow at one end of the seam
  int spatter = 0;      // balls on the plate
  double blurPx = 0.6;  // sigma of the lens
  double noise = 1.0;   // sigma of the camera, grey levels
};

struct TPlateParams {
  TPlateSeam seam = TPlateSeam::tight;
  cv::Size size{1280, 1024};
  std::uint64_t seed = 1;
  std::uint64_t frame = 0;  // noise and spatter are new in every frame
  TSeamCourse course;
  TPlateLook look;
};

// One pixel of the seam's length.
struct TSeamStation {
  cv::Point2d point;
  bool isVisible = true;  // neither under a tack weld nor in the glow
};

struct TPlateTruth {
  std::vector<TSeamStation> stations;  // inside the frame, in the direction of the course; empty without a seam
};

struct TPlateScene {
  cv::Mat image;  // 8-bit grey
  TPlateTruth truth;
};

TPlateScene renderPlate(const TPlateParams& params);

// A random plate of that kind at that level, which is clean, noisy or harsh; real counts as harsh.
TPlateParams randomPlate(TPlateSeam seam, TLevel level, std::uint64_t seed, cv::Size size = {1280, 1024});

// Frame n of a sequence: the seam moves, noise and spatter are new; a flash and a change of profile have no
// effect.
TPlateParams plateFrameOf(const TPlateParams& first, const TMotion& motion, int n);

// Distance from the nearest station, px; infinite without a seam.
double distanceToSeam(const TPlateTruth& truth, cv::Point2d point);

}  // namespace scenes
