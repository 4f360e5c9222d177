// Where a frame is searched: the whole image, or bands around a stripe.
#pragma once

#include "support/list.h"
#include "trace/frame.h"

namespace weld {

struct TLook {
  TSearchPath path = TSearchPath::first;
  TList<cv::Rect> regions;
};

// Around the stripe of an earlier frame.
struct TBand {
  int halfPx = 60;
  // Stretches of a guide are taken for straight, so that a stripe which is bent by more than the band is cut off.
  // true: along a guide the band holds all of it.
  bool coversGuide = false;
};

TLook lookEverywhere(const TFrame& frame);

TLook lookNear(const TFrame& frame, TPointView stripe, const TBand& band);

// The same, to the ends of the guide and no farther; everywhere when the guide is empty.
TLook lookAlong(const TFrame& frame, TPointView guide, const TBand& band);

}  // namespace weld
