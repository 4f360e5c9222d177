// Exposure from image statistics. Include zelWeldDetect.h or this.
#pragma once

#include "zelWeldDetectExport.h"

#include <opencv2/core.hpp>

#include <vector>

// Figures from which a caller sets the exposure of its camera. Large specular reflections count only partly, so
// that a shiny plate does not drive the exposure down; the stripe counts in full. Images are never written to.
namespace LightingAdaptation {

// Mean grey level and number of nearly saturated pixels of one frame.
//   image           8-bit, 1 or 3 (BGR) channels; other types raise cv::Exception.
//   meanGray        mean grey level, see calcMeanGrayVal; -1 for an empty image.
//   brightPixelNum  weighted number of pixels above grey level 240, see calcRangePixelNum; -1 for an empty image.
// An area is a reflection when it is above grey level 240 and holds a square of 50 x 50 pixels.
ZELWELDDETECT_EXPORT void calcExposureParam(cv::Mat image, int& meanGray, int& brightPixelNum);

// Mask of the image's size with 0 in large areas above grey level 240 and 255 elsewhere.
//   image       8-bit, one channel; an empty image and other types raise cv::Exception.
//   mask        allocated when its size or type differs; may be the image itself.
//   kernelSize  side of the square that an area must hold, px, > 0; others raise cv::Exception. What lies outside
//               the image counts as bright. With an even side the area moves by one pixel to the right and down.
// Morphological opening by a rectangle (Serra, "Image Analysis and Mathematical Morphology", 1982).
ZELWELDDETECT_EXPORT void removeReflectiveAreas(cv::Mat image, cv::Mat& mask, int kernelSize);

// Sum of the grey levels in every second row and column, divided by rows * cols / 4 and truncated; where the
// mask is 0 a grey level counts 0.3 times. Both divisions truncate, so that odd sizes give a little more than the
// mean. Fewer than 4 pixels give the smallest 32-bit integer, a mask that is not continuous or not of the image's
// size -1. Image and mask: 8-bit, one channel; other types raise cv::Exception.
ZELWELDDETECT_EXPORT int calcMeanGrayVal(cv::Mat image, cv::Mat mask);

// Number of pixels with low < grey level < high, truncated; where the mask is not 255 a pixel counts 0.2. The sum
// is kept in single precision: it differs a little from the exact one when many pixels count 0.2. A mask that is
// not continuous or not of the image's size gives -1. Image and mask: 8-bit, one channel; other types raise
// cv::Exception.
ZELWELDDETECT_EXPORT int calcRangePixelNum(cv::Mat image, cv::Mat mask, int low, int high);

// What a well exposed frame looks like. It depends on filter, lens and surroundings: take it from a frame that
// suits.
struct TExposureTarget {
  int meanGray = 40;         // mean grey level, 1..254
  int tolerance = 10;        // distance from it that still suits, grey levels, >= 0
  double brightShare = 0.1;  // largest share of nearly saturated pixels, 0..1
};

// What to multiply the exposure time (or the gain) with to come to the target: above 1 raises the exposure, below
// 1 lowers it, exactly 1 leaves it alone.
//   meanGray     from calcExposureParam; negative values, which stand for no mean, leave the exposure alone.
//   brightShare  brightPixelNum of calcExposureParam / number of pixels. More than the target has lowers the
//                exposure at least to a half, whatever the mean: a frame that is saturated throughout has a mean
//                of 76.
// Grey levels are proportional to the exposure only where nothing is clipped, so one step changes it by 4 at most;
// repeat with the next frame. A mean that a scene reaches only with too many bright pixels is never settled on.
// Whatever the figures and the target hold, the factor lies between 1/4 and 4.
ZELWELDDETECT_EXPORT double adviseExposureFactor(int meanGray, double brightShare, const TExposureTarget& target);

// The light of the stripe itself, a hundredth of the image that its mean hardly knows of.
struct TStripeLight {
  int columns = 0;                  // count of those that have a centre; 0: no stripe
  double saturatedShare = 0.0;      // of them, with a peak of 250 grey levels or more, 0..1
  double peakOverBackground = 0.0;  // median over them: peak near the centre less the median of the column, 0..255
};

// The light of a stripe in its image.
//   image      8-bit, 1, 3 (BGR) or 4 (BGRA) channels; other types raise cv::Exception, an empty image gives no
//              column.
//   stripePts  centres in the image, as in TWeldLineRes, px; those outside the image are left out.
ZELWELDDETECT_EXPORT TStripeLight measureStripeLight(const cv::Mat& image,
                                                     const std::vector<cv::Point2f>& stripePts);

// What a well exposed stripe looks like.
struct TStripeTarget {
  double saturatedShare = 0.25;  // largest share of columns that may be saturated, 0..1
  double leastPeak = 40.0;       // peak over background that suits, grey levels
  double wantedPeak = 120.0;     // to raise a lower one to, grey levels
};

// The factor for the exposure as above, from the stripe: above the share of saturated columns lower, at most to a
// half, below the least peak higher, at most by 4, else 1. Without a stripe, and for figures that hold NaN, 1.
ZELWELDDETECT_EXPORT double adviseExposureFactor(const TStripeLight& light, const TStripeTarget& target);

}  // namespace LightingAdaptation
