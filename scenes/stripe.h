// The stripe as light: one bell-shaped or flat-topped profile per image column.
#pragma once

#include "scenes/profile.h"
#include "scenes/scene.h"
#include "scenes/speckle.h"

#include <vector>

namespace scenes {

// The stripe in one column.
struct TStripeColumn {
  int x = 0;
  double row = 0.0;
  double cosine = 1.0;   // of the stripe's angle: a slanted stripe is taller in its column
  double fwhmPx = 0.0;   // across the stripe
  double peak = 0.0;     // grey level of the ridge before clipping
  double roughPx = 0.0;  // how far it is drawn from its row, standard deviation
};

// The visible columns of a profile, piece by piece. Too steep, lost, too dark or outside the frame: left out.
std::vector<TStripeColumn> layOutStripe(const TSceneParams& params, const TProfile& profile);

// Adds one column of a stripe. flatTop 0: a Gaussian across it; 1: steeper edges around a flat top. Both have
// their half height at the same width.
void drawColumn(const TStripeColumn& column, double flatTop, const TSpeckle& speckle, cv::Mat1f& light);

// Adds the stripe, its flare, its second exposure and its ghost to the light.
void drawStripe(const TSceneParams& params, const TProfile& profile, const std::vector<TStripeColumn>& columns,
                const TSpeckle& speckle, cv::Mat1f& light);

}  // namespace scenes
