// Sequences of rendered frames, as a camera that moves along a seam gives them.
#pragma once

#include "scenes/joints.h"

#include <opencv2/core.hpp>

#include <vector>

namespace reel {

// The joints with rules of their own. The grooves are solved as profiles.
constexpr scenes::TJoint kRuled[] = {scenes::TJoint::buttGap, scenes::TJoint::lap, scenes::TJoint::corner,
                                     scenes::TJoint::plate};

// A drift per frame, and the hand of the camera.
inline scenes::TMotion drift(cv::Point2d driftPx, double jitterPx) {
  scenes::TMotion motion;
  motion.driftPx = driftPx;
  motion.jitterPx = jitterPx;
  return motion;
}

inline scenes::TMotion withJump(scenes::TMotion motion, int atFrame, cv::Point2d jumpPx) {
  motion.jumpAtFrame = atFrame;
  motion.jumpPx = jumpPx;
  return motion;
}

inline std::vector<scenes::TScene> render(const scenes::TSceneParams& first, const scenes::TMotion& motion,
                                          int frames) {
  std::vector<scenes::TScene> reel;
  for (int n = 0; n < frames; ++n) reel.push_back(scenes::renderScene(scenes::frameOf(first, motion, n)));
  return reel;
}

inline cv::Mat inColour(const cv::Mat& grey) {
  cv::Mat image;
  cv::merge(std::vector<cv::Mat>(3, grey), image);
  return image;
}

}  // namespace reel
