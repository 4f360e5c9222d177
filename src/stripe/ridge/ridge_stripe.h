// Stripe centres from ridges, in the shape in which edge pairs give them.
#pragma once

#include "stripe/ridge/ridge.h"
#include "stripe/stripe.h"
#include "trace/frame.h"

#include <opencv2/core.hpp>

#include <optional>

namespace weld {

// What a frame asks of the ridges. They are dear: a part of the image is searched once, and who comes later sees
// that the frame has spent its search.
class TRidgeSearch {
public:
  explicit TRidgeSearch(TMemory* memory) : points(memory) {}

  // Ridge points of a part of the image, in image coordinates; the part that was searched last is not searched
  // again.
  //   part  inside the image, not empty.
  const TRidgePoints& in(const TFrame& frame, const cv::Rect& part);

  bool isSpent() const { return searched.has_value(); }

private:
  std::optional<cv::Rect> searched;
  TRidgePoints points;  // of that part
};

// Ridge centres inside the regions; the ridge is sought in their bounding box. Every column of a region gets a
// status: centre found or edge missing. The width is the most frequent one in whole pixels. No regions: empty.
TStripe extractRidges(const TFrame& frame, TView<cv::Rect> regions, TRidgeSearch& ridges);

// The same where the ridge is sought in some parts of the image alone, each by itself, and measured where it does
// not run along centres that are known.
//   parts  inside the image, left to right, apart from each other
//   known  left to right, at most one in a column
TStripe extractRidgesBeside(const TFrame& frame, TView<cv::Rect> regions, TView<cv::Rect> parts, TPointView known);

}  // namespace weld
