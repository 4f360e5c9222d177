// Where an edge or a corner flares: the light swells far beyond the stripe and hides what lies under it.
#pragma once

#include "stripe/stripe.h"
#include "support/line_math.h"
#include "trace/frame.h"

#include <optional>

namespace weld {

struct TFlare {
  float firstX = 0.0F;  // columns that it covers, px
  float lastX = 0.0F;
  double middleX = 0.0;  // of its light
  double middleY = 0.0;
  double radiusPx = 0.0;

  bool covers(float x) const { return x >= firstX && x <= lastX; }
};

// Every so many centres one is looked at.
inline constexpr std::size_t kFlareStride = 3;

// The saturated stretches of 12 to 100 columns in which the stripe is at least 1.6 times and 8 px thicker than on
// either side of them, left to right; few.
//   points  centres inside the image, x ascending
TList<TFlare> findFlares(const TFrame& frame, TPointView points);

// The same with the halo about their white part, where centres still follow their rim.
TList<TFlare> findFlaresWithHalo(const TFrame& frame, TPointView points);

// The stripe without the centres that flares hide; nothing where it has no flare.
std::optional<TStripe> withoutFlares(const TFrame& frame, const TStripe& stripe, TView<TFlare> flares);

// Whether a pixel is as bright as a flare.
bool isWhite(const cv::Mat& image, cv::Point at);

// Whether a line runs through the white of a flare, or so near that its own light is drowned.
bool drowns(const TFlare& flare, const TSlopeLine& line);

// The flare that hides a piece's end: one that begins or ends within a few columns of it, or covers it.
const TFlare* flareAt(TView<TFlare> flares, double endX);

}  // namespace weld
