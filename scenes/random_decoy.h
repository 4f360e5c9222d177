// Random frames without a joint, for what may not be found.
#pragma once

#include "scenes/scene.h"

#include <vector>

namespace scenes {

enum class TDecoy {
  straight,  // one straight stripe across the frame
  curve,     // one bowed stripe, about 1,300 px in radius and more
  blank,     // the surroundings of a scene, no stripe
  texture,   // a bright brushed surface, no stripe
  glare,     // arc glow, torch and wire; in every other frame over a straight stripe with flare and blobs
  noise,     // strong noise alone
  spatter    // many streaks, in half of the frames under arc glow
};

const std::vector<TDecoy>& allDecoys();
const char* nameOf(TDecoy decoy);

// Its looks are those of a random scene of the level.
TSceneParams randomDecoy(TDecoy decoy, TLevel level, std::uint64_t seed);

}  // namespace scenes
