// Two jobs over the same frames.
#pragma once

#include "tools/seam_run.h"

#include <opencv2/core.hpp>

#include <optional>
#include <string>
#include <vector>

namespace tool {

struct TComparedSide {
  std::string name;  // for people
  TSeamRun run;
  TTruthFigures truth = {};
};

// Frames found on one side only, and why the other side lost them.
struct TDifference {
  std::vector<int> frames;
  TReasonTally reasons;
};

struct TComparison {
  TComparedSide a;
  TComparedSide b;
  TDifference onlyA;
  TDifference onlyB;
  std::vector<double> distancesPx = {};  // between the seams in the stored image, frames found on both sides
  TTruth truth = {};
};

// What one frame gave on both sides.
struct TComparedFrame {
  int index = 0;
  std::string name;
  cv::Mat imageA;  // as searched; empty when the frame cannot be read
  cv::Mat imageB;
  TSeamFrame a;
  TSeamFrame b;
  std::optional<double> distancePx;  // between the seams in the stored image
};

// Takes the next frame, its image as stored.
TComparedFrame compareFrame(TComparison& both, const TFrame& frame);

// How often either side lost a frame for a reason.
struct TReasonRow {
  int a = 0;
  int b = 0;
  std::string reason;
};

// The most frequent ones of A first.
std::vector<TReasonRow> reasonsOf(const TComparison& both);

}  // namespace tool
