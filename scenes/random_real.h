// Random frames as workshops give them.
#pragma once

#include "scenes/random.h"
#include "scenes/scene.h"

namespace scenes {

// Turns a noisy random scene into a real one. scale: frame width over the design width.
void makeReal(double scale, TRandom& random, TSceneParams& params);

}  // namespace scenes
