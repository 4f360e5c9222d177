// Where plates end at a wall that shows no stripe.
#pragma once

#include "profile/flares.h"
#include "profile/profile_layout.h"
#include "trace/frame.h"

namespace weld {

struct TWallLight {
  const TFrame* frame;  // null: no image
  const TOrientedCentres& centres;
  TView<TFlare> flares;
  double stripeWidthPx;  // 0: not known
};

// Moves the ends of plates at a jump to where their light ends on their lines: centres stop short of an end behind
// a hole, and go past it on stray light. An end that a flare hides lies in its middle, for the edge of a wall
// shines to both sides.
void endAtWalls(const TWallLight& light, TProfileLayout& layout);

}  // namespace weld
