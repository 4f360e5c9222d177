// TBaseWeld: the geometry toolkit that the detectors are made of, for programs that build a detector of their own.
// Include zelWeldDetect.h rather than this.
#pragma once

#include "zelContrast.h"
#include "zelWeldDetectExport.h"
#include "zelWeldTypes.h"

#include <opencv2/core.hpp>

#include <cstdint>
#include <vector>

// The line y = k * x + b through stripe points.
struct TLinePara {
  double k = 0.0;                      // slope
  double b = 0.0;                      // intercept, px
  bool isValid = false;                // the fit succeeded
  double inlierRatio = 0.0;            // inliers / points handed in
  std::vector<cv::Point2f> inlierPts;  // that the line was fitted to, px
};

// Why an image column gave a stripe centre or none.
struct TWeldPointStatus {
  std::int32_t pos = 0;     // index of the image column
  std::int32_t status = 0;  // status: 0 centre found, 1 no rising or no falling edge, 2 edges but no pair
};

// One straight piece of the stripe from splitting and merging.
struct TSplitAtom {
  std::vector<cv::Point2f> pts;  // stripe points strictly between startX and endX
  std::int32_t startX = 0;       // first column, index
  std::int32_t endX = 0;         // last column, index
  TLinePara line;                // through them; invalid before a fit
};

// One straight piece of the stripe from segmentation.
struct TStripePiece {
  static constexpr float kUnset = 1e11F;  // not measured yet, px

  std::vector<cv::Point2f> pts;     // stripe points of the piece, in stripe order
  std::vector<cv::Point2f> fitPts;  // those nearer to the line than the fit tolerance, px
  cv::Point startPt;                // first end, px
  cv::Point endPt;                  // second end, px
  std::int32_t lineState = 0;       // status: 0 not fitted, 1 the line below is there
  float k = 0.0F;                   // slope
  float b = 0.0F;                   // intercept, px
  float maxDist = kUnset;   // largest distance of a point from the line, or from the chord before a fit, px
  float meanDist = kUnset;  // mean distance of the points from the line, px
  float aux1 = 0.0F;        // carried along
  float aux2 = 0.0F;        // carried along
  float aux3 = 0.0F;        // carried along
  float auxDist1 = kUnset;  // carried along
  float auxDist2 = kUnset;  // carried along
  bool isFitted = false;    // the robust fit succeeded
  bool auxFlag = false;     // carried along
};

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

  // The parameters that the members below read; any values are safe.
  void setWeldParameters(TWeldParams params);
  // The parameters as they were set.
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

  // The points farther than distTolerance (strictly) from y = k * x + b, in order; none where a
  // number of the line is NaN.
  void filterOutLinePts(double k, double b, double distTolerance, std::vector<cv::Point2f> points,
                        std::vector<cv::Point2f>& outliers) const;

  // Share of points nearer than distTolerance (strictly), and those points in order. An empty list gives
  // false and leaves percent untouched. distTolerance in px. The float form truncates the points to integers
  // first.
  bool calcFitPercent(std::vector<cv::Point> points, std::vector<cv::Point>& inliers, double k, double b,
                      double distTolerance, double& percent) const;
  bool calcFitPercent(std::vector<cv::Point2f> points, std::vector<cv::Point>& inliers, double k, double b,
                      double distTolerance, double& percent) const;

  // The same share alone; 0 for an empty list.
  double calcFitLinePercent(double k, double b, double distTolerance, std::vector<cv::Point> points) const;

  // Foot of the perpendicular from point to line; slopes below 1e-5 count as 1e-5 with their sign. Any
  // point for a line or a point that is not finite.
  cv::Point2f calcDropFeet(TLinePara line, cv::Point2f point) const;

  // Cuts the stripe into straight pieces, left to right: drops steep jumps, smooths, cuts at the vertices of a
  // polygon within polyEpsilon (px) of the stripe, fits every piece, and joins neighbours whose ends are nearer
  // than maxMergeGapX and maxMergeGapY (px) and whose joint is flatter than maxMergeHeight (px). Fewer than 20
  // points, one that is not finite or farther than 1e9 px away, or a polyEpsilon outside 0 .. 1e9 give no pieces;
  // nor does a list so out of column order that its pieces would hold 10,000,000 points, each counted as 512 at
  // least.
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
  // point that is not finite or farther than 1e9 px away, or a list as out of order as above. No result depends on
  // the image, here and in fusePolyLines2LinesSegment; it may be empty.
  void splitWeldLine2lines(std::vector<cv::Point2f> stripePts, std::vector<TSplitAtom>& atoms,
                           cv::Mat image) const;

  // Fits a line to every atom, drops atoms without points, and merges neighbours that combine2Lines joins, the
  // leftmost first, at most 10 times. An empty list stays so.
  void fusePolyLines2LinesSegment(std::vector<TSplitAtom>& atoms, cv::Mat image) const;

  // One line through the points of both when the lines meet less than 6 px from the chord between the first inlier
  // of the first and the last inlier of the second; else, or when a line is invalid or has no inliers, an invalid
  // one.
  TLinePara combine2Lines(TLinePara first, TLinePara second, std::vector<cv::Point2f> firstPts,
                          std::vector<cv::Point2f> secondPts) const;

  // Keeps the points whose row differs by less than maxJump (px) from the mean of their two neighbours' rows. The
  // first point and the last two are never kept; fewer than 3 points stay as they are.
  void removeDiscontinuousPts(std::vector<cv::Point2f>& points, int maxJump) const;

  // Seams without a stripe, see findSeamByContrast: the points of the dark line in the whole image, and of the
  // surest line of any kind; empty without one.
  std::vector<cv::Point2f> getWeldPts(cv::Mat image) const;
  std::vector<cv::Point2f> getWeldPtsNew2(cv::Mat image) const;

  // findSeamByContrast itself; and the dark line within 15 degrees of a direction and bandPx of a
  // point. Not found for images that findSeamByContrast finds nothing in; what is out of range counts as there.
  TContourCenterLine getWeldPtsByContrast(cv::Mat image, TContrastSearch search) const;
  TContourCenterLine getWeldPtsByContrastAndRoughPos(cv::Mat image, cv::Point2f roughPos, float directionDeg,
                                                     float bandPx) const;

  // True when the image has data, dimensions and elements; false for an empty one.
  bool checkImgLegality(cv::Mat image) const;

protected:
  // The status of the columns, which the two questions below look at; columns twice or in any order, and any
  // other content, are safe.
  void setSamplinePointsStatus(std::vector<TWeldPointStatus> status);
  // The status as it was set; empty before.
  std::vector<TWeldPointStatus> getSamplinePointsStatus() const;

  // At least minCount missing columns strictly between lo and hi; an empty stretch has none. pos is not read.
  bool isWeldPosMissingPts(cv::Point2f pos, int lo, int hi, int minCount) const;
  // A run of more than maxRun missing columns strictly between lo and hi; an empty stretch has none. pos is not
  // read.
  bool isWeldPosContinueMissingPts(cv::Point2f pos, int lo, int hi, int maxRun) const;

private:
  TWeldParams weldParams;
  std::vector<TWeldPointStatus> samplingPtsStatus;
};
