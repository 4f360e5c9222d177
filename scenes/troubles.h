// What else gets into frames from a workshop: TTroubles, but for what the stripe itself loses.
#pragma once

#include "scenes/profile.h"
#include "scenes/scene.h"
#include "scenes/speckle.h"
#include "scenes/stripe.h"

#include <vector>

namespace scenes {

// The joint as a line in room light, torch and wire, into the light before the stripe.
void addRoomLight(const TSceneParams& params, cv::Mat1f& light);

// The second laser, mirror images and the blob at a point of the joint. columns: of the first laser's stripe.
void addTroubles(const TSceneParams& params, const TProfile& profile, const std::vector<TStripeColumn>& columns,
                 const TSpeckle& speckle, cv::Mat1f& light);

}  // namespace scenes
