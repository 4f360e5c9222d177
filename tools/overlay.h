// Annotated frames for people to look at.
#pragma once

#include "tools/detection.h"

#include "zelWeldDetect.h"

#include <opencv2/core.hpp>

#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace tool {

using TSegment = std::pair<cv::Point2f, cv::Point2f>;
using TPolyline = std::vector<cv::Point2f>;

// A point with a name: "left shoulder".
struct TMark {
  std::string name;
  cv::Point2f pos;
};

// What is drawn over an image, in its pixels.
struct TOverlay {
  std::vector<cv::Rect2f> regions;      // searched
  std::vector<cv::Point2f> rejected;    // stripe points that a filter dropped
  std::vector<cv::Point2f> centres;     // stripe points that the detector worked on
  std::vector<TSegment> lines;          // that the detector tried
  std::vector<TPolyline> pieces;        // of the stripe, straight or arcs
  std::vector<TMark> marks;             // points of the joint
  std::vector<cv::Point2f> testedPts;   // seam points that were put to the test
  std::optional<cv::Point2f> seam;      // seam point found or held
  std::optional<cv::Point2f> trueSeam;  // where it truly is
  TSeamState state = TSeamState::lost;
};

// What a frame showed and how the search went: the trace's decisive attempt, if the tracker kept a trace.
//   imageWidth  px; the lines are drawn across the whole image.
TOverlay overlayOf(const TWeldParams& params, const TTrackedSeam& seam, const TFrameTrace& trace, int imageWidth);

// The seam point of a result; none when it was not found or the joint has no seam point.
std::optional<cv::Point2d> seamOf(const TWeldParams& params, const TTrackedSeam& seam);

// A colour copy of the image with the overlay in it.
cv::Mat drawOverlay(const cv::Mat& image, const TOverlay& overlay);

// Writes lines into the upper left corner: white, the first one in the colour of the state.
void drawLabel(cv::Mat& image, const std::vector<std::string>& lines, TSeamState state);

// The same overlay for an image shrunk by this factor.
TOverlay scaled(TOverlay overlay, float factor);

// What the colours of an overlay mean: name and colour as #rrggbb.
std::vector<std::pair<std::string, std::string>> overlayKey();

}  // namespace tool
