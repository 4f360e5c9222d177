// What a joint's detector finds, and what it may know of the frame before.
#pragma once

#include "detectors/known_shape.h"
#include "profile/profile_fit.h"
#include "stripe/break_path.h"
#include "stripe/stripe.h"
#include "trace/frame.h"
#include "zelWeldTypes.h"

#include <opencv2/core.hpp>

#include <functional>
#include <optional>
#include <utility>

namespace weld {

// See TWeldLineRes.
struct TSeamValues {
  bool isFound = false;
  cv::Point2f pos;
  double auxVal1 = 0.0;
  double auxVal2 = 0.0;
  double auxVal3 = 0.0;
  double auxVal4 = 0.0;
  double trackVal = 0.0;
};

// What is measured of a seam that its contrast alone tells.
struct TLineMeasure {
  double widthPx = 0.0;  // 0: an edge has none
  double directionDeg = 0.0;
  float confidence = 0.0F;
};

// The two ends that a seam lies between, read to a fraction of a column.
struct TSeamEnds {
  cv::Point2d left;
  cv::Point2d right;
};

struct TSeam : TSeamValues {
  explicit TSeam(TMemory* memory) : stripePts(memory) {}
  explicit TSeam(TPoints points) : stripePts(std::move(points)) {}

  TPoints stripePts;
  std::optional<TProfileFit> profile;  // of the joints that are solved as one
  std::optional<TLineMeasure> line;    // where no stripe tells the seam
  std::optional<TSeamEnds> ends;       // of lap and plate, where they are read so
  TBreakPlaces places;        // where this frame and those before may show a butt gap; middle and width of
                              // a lap's or plate's ends in them
  TKnownShapes shapes;        // of a groove in this frame and those before
  double hiddenPx = 0.0;      // columns of the flare that hides an end of a lap
  double flankSigmaPx = 0.0;  // of both flanks' rows at a corner, where their light tells it; 0: not told
  bool isFlush = false;       // told by the light along the stripe: a plate flush with its table, a tight gap
  bool isVague = false;       // a flare hides an end, and no stripe near it tells where it is
  bool isUnsure = false;      // another place may be it as well, or little speaks for it: counts once it repeats
};

// The seam of the frame before; its stripe, profile and places belong to somebody else.
struct TPrevious : TSeamValues {
  TPrevious() = default;
  explicit TPrevious(const TSeam& seam)
      : TSeamValues(seam),
        stripePts(seam.stripePts),
        profile(seam.profile ? &*seam.profile : nullptr),
        places(&seam.places),
        shapes(&seam.shapes),
        isFlush(seam.isFlush) {}
  explicit TPrevious(const TWeldLineRes& line)
      : TSeamValues{line.isFound, line.weldPos, line.auxVal1, line.auxVal2,
                    line.auxVal3, line.auxVal4, line.trackVal},
        stripePts(line.stripePts) {}

  TPointView stripePts;
  const TProfileFit* profile = nullptr;
  const TBreakPlaces* places = nullptr;
  const TKnownShapes* shapes = nullptr;  // of the default tracker
  bool isFlush = false;
  bool isSearchedAnew = false;  // it was found, and the image is searched for it as if not
  bool isOfThisFrame = false;   // found in a first look at it
};

inline TWeldLineRes toLineRes(const TSeam& seam) {
  return {seam.isFound, seam.pos,     {seam.stripePts.begin(), seam.stripePts.end()},
          seam.auxVal1, seam.auxVal2, seam.auxVal3,
          seam.auxVal4, seam.trackVal};
}

// A detector is a function of the frame, its stripe and the seam of the frame before.
using TFindSeam = std::function<TSeam(const TFrame& frame, const TStripe& stripe, const TPrevious& previous)>;

}  // namespace weld
