// Random shapes and looks of the five groove joints.
#pragma once

#include "scenes/random.h"
#include "scenes/scene.h"

namespace scenes {

// Every point of the truth can be told from the picture: no flank steeper than 70 degrees in the image, no
// overhanging wall, at least 60 px of plate on either side of the groove at the design width. scale: frame width
// over that width.
void placeGroove(TJoint joint, TLevel level, double scale, TRandom& random, TGeometry& g);

// What a groove's surfaces add to the look of that level.
void lookGroove(TLevel level, TRandom& random, TLook& look);

}  // namespace scenes
