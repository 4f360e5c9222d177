// zelWeldDetect: finds the weld seam in the camera image of a laser stripe.
//
// One call per frame: hand detectWeldLineViaTracking the image, the parameter record that names the
// joint, and the previous result; it returns where the seam is. TWeldTracker (zelWeldTracker.h, included here)
// keeps the previous result itself and tells why a frame gave no seam. This is the only header a caller needs.
//
// Coordinates are image pixels: x is the column (to the right), y the row (downwards), pixel centres at
// whole numbers. Angles are degrees of atan(dy/dx) with y pointing down. The stripe runs from left to
// right; rotate the image first where the camera sees it upright.
#pragma once

#include "zelWeldDetectExport.h"
#include "zelWeldTracker.h"
#include "zelWeldTypes.h"

#include <opencv2/core.hpp>

#include <vector>

// The detector object: the parameters of a call, the column status of its frame, and the geometry
// toolkit that every detector shares. One object per thread.
//
// Every argument may hold anything: a number that is not finite is near no line and within no range, and a call
// that cannot be answered gives the failed result that its comment names. Only images raise cv::Exception, where
// said.
class ZELWELDDETECT_EXPORT TBaseWeld {
public:
  TBaseWeld();
  TBaseWeld(const TBaseWeld& other);
  TBaseWeld(TBaseWeld&& other) noexcept;  // leaves the source without status, its parameters unchanged
  TBaseWeld& operator=(const TBaseWeld& other);
  TBaseWeld& operator=(TBaseWeld&& other) noexcept;
  ~TBaseWeld();

  void setWeldParameters(TWeldParams params);
  TWeldParams getWeldParameters() const;

  // Robust line through stripe points; scale and inlier distance are dPara4.
  // startIdx and endIdx >= 0: fits the points startIdx .. endIdx - 1 (at least 10), then refits the inliers of
  // that line among all points. Otherwise fits the whole list once. Fewer than 10 points, a range that reaches
  // beyond the list, or no consensus: isValid false.
  TLinePara findALine(std::vector<cv::Point2f> points, int startIdx, int endIdx) const;

  // Consensus line whose angle lies between angleFrom and angleTo (degrees). isValid is false when fewer
  // than 10 points are given, no line is found, or the share of points nearer than distTolerance (px)
  // is below minFitRatio; in the last case the line is returned all the same.
  TLinePara findALineRansac(double angleFrom, double angleTo, double distTolerance, double minFitRatio,
                            std::vector<cv::Point2f> points) const;

  // The points farther than distTolerance (strictly) from y = k * x + b, in order.
  void filterOutLinePts(double k, double b, double distTolerance, std::vector<cv::Point2f> points,
                        std::vector<cv::Point2f>& outliers) const;

  // Share of points nearer than distTolerance (strictly), and those points in order. An empty list gives
  // false and leaves percent untouched. The float form truncates the points to integers first.
  bool calcFitPercent(std::vector<cv::Point> points, std::vector<cv::Point>& inliers, double k, double b,
                      double distTolerance, double& percent) const;
  bool calcFitPercent(std::vector<cv::Point2f> points, std::vector<cv::Point>& inliers, double k, double b,
                      double distTolerance, double& percent) const;

  // The same share alone; 0 for an empty list.
  double calcFitLinePercent(double k, double b, double distTolerance, std::vector<cv::Point> points) const;

  // Foot of the perpendicular from point to line; slopes below 1e-5 count as 1e-5 with their sign.
  cv::Point2f calcDropFeet(TLinePara line, cv::Point2f point) const;

  // Cuts the stripe into straight pieces, left to right: drops steep jumps, smooths, cuts at the vertices of a
  // polygon within polyEpsilon (px) of the stripe, fits every piece, and joins neighbours whose ends are nearer
  // than maxMergeGapX and maxMergeGapY (px) and whose joint is flatter than maxMergeHeight (px). Fewer than 20
  // points, one that is not finite or farther than 1e9 px away, or a polyEpsilon outside 0 .. 1e9 give no pieces.
  void segmentStripe(std::vector<cv::Point2f> stripePts, std::vector<TStripePiece>& pieces, float maxMergeHeight,
                     float maxMergeGapX, float maxMergeGapY, float polyEpsilon) const;

  // Moves roughPos along the line y = k * x + b to where the brightness of the 8-bit grey image drops most, by
  // more than dPara1 grey levels; without such a drop roughPos comes back. (-1, -1) when fewer than 10 stripe
  // points lie within dPara2 of the line, the line crosses fewer than 6 columns there, or the image is empty. An
  // image in colour is converted where it is read; other types than 8 bits with 1, 3 or 4 channels raise
  // cv::Exception.
  cv::Point2f modifySingleVGroovePos(std::vector<cv::Point2f> stripePts, cv::Point2f roughPos, float k, float b,
                                     cv::Mat image) const;

  // Cuts the stripe into straight atoms with a polygon within 10 px, fits each (dPara4), merges neighbours that
  // meet flat and keeps those with a line of at least 21 inliers. One straight line gives no atoms, as does a
  // point that is not finite or farther than 1e9 px away. No result depends on the image, here and in
  // fusePolyLines2LinesSegment; it may be empty.
  void splitWeldLine2lines(std::vector<cv::Point2f> stripePts, std::vector<TSplitAtom>& atoms,
                           cv::Mat image) const;

  // Fits a line to every atom, drops atoms without points, and merges neighbours that combine2Lines joins, the
  // leftmost first, at most 10 times.
  void fusePolyLines2LinesSegment(std::vector<TSplitAtom>& atoms, cv::Mat image) const;

  // One line through the points of both when the lines meet less than 6 px from the chord between the first inlier
  // of the first and the last inlier of the second; else, or when a line is invalid or has no inliers, an invalid
  // one.
  TLinePara combine2Lines(TLinePara first, TLinePara second, std::vector<cv::Point2f> firstPts,
                          std::vector<cv::Point2f> secondPts) const;

  // Keeps the points whose row differs by less than maxJump (px) from the mean of their two neighbours' rows. The
  // first point and the last two are never kept; fewer than 3 points stay as they are.
  void removeDiscontinuousPts(std::vector<cv::Point2f>& points, int maxJump) const;

  // True when the image has data, dimensions and elements.
  bool checkImgLegality(cv::Mat image) const;

protected:
  void setSamplinePointsStatus(std::vector<TWeldPointStatus> status);
  std::vector<TWeldPointStatus> getSamplinePointsStatus() const;
  // Exchanges the column status with the list, so that its memory can serve another frame.
  void swapSamplinePointsStatus(std::vector<TWeldPointStatus>& status) noexcept { samplingPtsStatus.swap(status); }

  // At least minCount missing columns strictly between lo and hi. pos is not read.
  bool isWeldPosMissingPts(cv::Point2f pos, int lo, int hi, int minCount) const;
  // A run of more than maxRun missing columns strictly between lo and hi. pos is not read.
  bool isWeldPosContinueMissingPts(cv::Point2f pos, int lo, int hi, int maxRun) const;

private:
  TWeldParams weldParams;
  std::vector<TWeldPointStatus> samplingPtsStatus;
};

// Marks params as initialised for a joint: sets isInit, weldType and weldPosType and nothing else.
ZELWELDDETECT_EXPORT void initWeldParameters(TWeldType type, TWeldParams& params, TWeldPosType pos);

// Finds the seam in one frame.
//   img      8-bit image with 1, 3 (BGR) or 4 (BGRA) channels; never written to. Other depths raise
//            cv::Exception once a detector reads them.
//   params   the joint; only read.
//   prevRes  the result of the previous frame, a default record on the first one. Any content is safe.
// An empty image or a joint without a detector gives the empty result; a frame without a seam gives a
// result with isFound false. Calls on different threads do not interfere.
ZELWELDDETECT_EXPORT TWeldLineRes detectWeldLineViaTracking(cv::Mat img, TWeldParams& params,
                                                            TWeldLineRes prevRes);

// Measures a seam once, before tracking, and reports the measurement as one line of debugging text in the GBK
// code page (see zelFunctions.h).
//   img     8-bit image with 1, 3 (BGR) or 4 (BGRA) channels; never written to. Depths that cannot be converted
//           to grey raise cv::Exception.
//   params  the joint.
// This release measures nothing yet: every value of the record is 0 and every flag false, the score included.
// An empty image gives the same record and no report.
ZELWELDDETECT_EXPORT TWeldFeatures calcWeldFeatures(cv::Mat img, TWeldParams params);

// The parameters with haveGap taken over from a measurement whose score is above 30; every other field as
// handed in. A score of NaN changes nothing.
ZELWELDDETECT_EXPORT TWeldParams updateWeldParamByWeldFeature(TWeldFeatures features, TWeldParams params);

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

}  // namespace LightingAdaptation
