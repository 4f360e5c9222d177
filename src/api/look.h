// Where a frame is searched: the whole image, or bands around a stripe.
#pragma once

#include "support/list.h"
#include "trace/frame.h"

namespace weld {

struct TLook {
  TSearchPath path = TSearchPath::first;
  TList<cv::Rect> regions;
};

TLook lookEverywhere(const TFrame& frame);

// In a band of that half height around the stripe of an earlier frame.
TLook lookNear(const TFrame& frame, TPointView stripe, int bandPx);

// The same, to the ends of the guide and no farther; everywhere when the guide is empty.
TLook lookAlong(const TFrame& frame, TPointView guide, int bandPx);

}  // namespace weld
