// The geometry toolkit of TBaseWeld: each member reads the parameter it needs and forwards.
#include "zelWeldDetect.h"

#include "geometry/groove.h"
#include "geometry/line_fitting.h"
#include "geometry/segmentation.h"
#include "geometry/split_merge.h"
#include "support/image_test.h"

TLinePara TBaseWeld::findALine(std::vector<cv::Point2f> points, int startIdx, int endIdx) const {
  const double tolPx = weldParams.dPara4;
  if (startIdx < 0 || endIdx < 0) return weld::fitLine(points, tolPx);
  return weld::fitLineRange(points, startIdx, endIdx, tolPx);
}

TLinePara TBaseWeld::findALineRansac(double angleFrom, double angleTo, double distTolerance, double minFitRatio,
                                     std::vector<cv::Point2f> points) const {
  return weld::fitLineRansac(angleFrom, angleTo, distTolerance, minFitRatio, points);
}

void TBaseWeld::filterOutLinePts(double k, double b, double distTolerance, std::vector<cv::Point2f> points,
                                 std::vector<cv::Point2f>& outliers) const {
  outliers = weld::selectLineOutliers(k, b, distTolerance, points);
}

bool TBaseWeld::calcFitPercent(std::vector<cv::Point> points, std::vector<cv::Point>& inliers, double k, double b,
                               double distTolerance, double& percent) const {
  inliers = weld::selectLineInliers(k, b, distTolerance, points);
  if (points.empty()) return false;
  percent = static_cast<double>(inliers.size()) / static_cast<double>(points.size());
  return true;
}

bool TBaseWeld::calcFitPercent(std::vector<cv::Point2f> points, std::vector<cv::Point>& inliers, double k,
                               double b, double distTolerance, double& percent) const {
  return calcFitPercent(weld::toIntPoints(points), inliers, k, b, distTolerance, percent);
}

double TBaseWeld::calcFitLinePercent(double k, double b, double distTolerance,
                                     std::vector<cv::Point> points) const {
  return weld::lineShare(k, b, distTolerance, points);
}

cv::Point2f TBaseWeld::calcDropFeet(TLinePara line, cv::Point2f point) const {
  return weld::dropFoot(line.k, line.b, point);
}

void TBaseWeld::segmentStripe(std::vector<cv::Point2f> stripePts, std::vector<TStripePiece>& pieces,
                              float maxMergeHeight, float maxMergeGapX, float maxMergeGapY,
                              float polyEpsilon) const {
  pieces = weld::segmentStripe(stripePts, {maxMergeHeight, maxMergeGapX, maxMergeGapY}, polyEpsilon);
}

cv::Point2f TBaseWeld::modifySingleVGroovePos(std::vector<cv::Point2f> stripePts, cv::Point2f roughPos, float k,
                                              float b, cv::Mat image) const {
  return weld::refineGroovePos(stripePts, roughPos, k, b, image, weldParams.dPara2, weldParams.dPara1);
}

void TBaseWeld::splitWeldLine2lines(std::vector<cv::Point2f> stripePts, std::vector<TSplitAtom>& atoms,
                                    cv::Mat /*image*/) const {
  atoms = weld::splitWeldLine(stripePts, weldParams.dPara4);
}

void TBaseWeld::fusePolyLines2LinesSegment(std::vector<TSplitAtom>& atoms, cv::Mat /*image*/) const {
  weld::fuseSplitAtoms(atoms, weldParams.dPara4);
}

TLinePara TBaseWeld::combine2Lines(TLinePara first, TLinePara second, std::vector<cv::Point2f> firstPts,
                                   std::vector<cv::Point2f> secondPts) const {
  return weld::combineLines(first, second, firstPts, secondPts, weldParams.dPara4);
}

void TBaseWeld::removeDiscontinuousPts(std::vector<cv::Point2f>& points, int maxJump) const {
  points = weld::dropDiscontinuousPts(points, maxJump);
}

bool TBaseWeld::checkImgLegality(cv::Mat image) const {
  return weld::hasPixels(image);
}
