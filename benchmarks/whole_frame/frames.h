// The frames that the whole-frame benchmark looks at, and how far centres are from their true stripe.
#pragma once

#include "scenes/scene.h"
#include "zelWeldDetect.h"

#include <opencv2/core.hpp>

#include <string>
#include <vector>

namespace bench {

enum class TScenery {
  dark,     // dark background, clean stripe
  bright,   // noisy background at grey level 60
  spatter,  // spatter, specular blobs and arc glow
  texture,  // dense texture, hard to tell from edges
};

struct TFrame {
  scenes::TScene scene;
  TWeldParams params;
  TWeldLineRes previous;  // the result of the same frame without a previous one
};

// A straight stripe about 10 px thick for a gap, the joint itself for the others. The seed is fixed.
TFrame makeFrame(scenes::TJoint joint, TScenery scenery, cv::Size size = {1280, 1024});

std::string nameOf(TScenery scenery);

TWeldLineRes detect(const cv::Mat& image, TWeldParams params, const TWeldLineRes& previous);

// Of the columns with a stripe.
struct TAccuracy {
  double medianErrorPx = 0.0;
  double seenPercent = 0.0;   // columns with a centre
  double wrongPercent = 0.0;  // columns with a centre more than 3 px off
};

TAccuracy rate(const std::vector<cv::Point2f>& centres, const scenes::TTruth& truth);

}  // namespace bench
