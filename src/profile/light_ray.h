// The light along a flank's line, from one of its points on.
#pragma once

#include "trace/frame.h"

#include <opencv2/core.hpp>

#include <optional>

namespace weld {

class TLightRay {
public:
  // Reads the flank's own brightness on the stretch before the point. Image coordinates; `direction` of length 1.
  TLightRay(const cv::Mat& image, cv::Point2d from, cv::Point2d direction);

  // How far the flank's light goes on, px; below 0 where it ends before, 0 where the image is bright everywhere.
  // Light of another brightness or beside the line is not its own. It goes on behind a hole or a blot where it
  // lies on the line again, and for long.
  //   freePx  where the light of another surface begins
  double litPx(double freePx) const;

  // Whether a column up to so many px is dark over all of the stripe: no grain of speckle is as large.
  bool hasDarkColumn(double toPx) const;

private:
  struct TStop;

  double greyAt(int px) const;
  int brightestIn(double px, int reach) const;
  bool isOwn(int px) const;
  bool isColumnDark(double px) const { return brightestIn(px, kStripeRows) < least; }
  double asidePx(int px) const;
  int edgeFrom(int x, int y, int way) const;
  double borderAfter(int lit) const;
  double endBefore() const;
  bool isCrossing(int px) const;
  std::optional<int> resumedAfter(int end) const;

  static constexpr int kStripeRows = 6;  // on either side of the line

  const cv::Mat& image;
  cv::Point2d origin;
  cv::Point2d step;
  double least = 0.0;  // grey level of the flank's light
  double most = 0.0;
};

}  // namespace weld
