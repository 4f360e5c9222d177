// Everything in a frame that is not the stripe: surfaces in ambient light, reflexes, the arc and its spatter,
// and the noise of the camera.
#pragma once

#include "scenes/scene.h"
#include "scenes/speckle.h"

#include <vector>

namespace scenes {

// The light that surrounds the stripe before the stripe is added: background and its texture.
cv::Mat1f lightSurroundings(const TSceneParams& params);

// Adds a spot of light, 2^-(distance / radius)^2; radii are those of half the level. No speckle: smooth.
void addSpot(cv::Point2d centre, cv::Size2d radius, double level, const TSpeckle* speckle, cv::Mat1f& light);

// Specular blobs beside the stripe; centreY as in TTruth.
void addBlobs(const TSceneParams& params, const std::vector<double>& centreY, const TSpeckle& speckle,
              cv::Mat1f& light);

// Arc glow above the arc's point and spatter streaks that fly away from there.
void addArc(const TSceneParams& params, cv::Point2d seam, cv::Mat1f& light);

// What the camera makes of the light: noise added, rounded, clipped to 8 bits.
cv::Mat1b exposeFrame(const TSceneParams& params, const cv::Mat1f& light);

}  // namespace scenes
