// The geometry toolkit of TBaseWeld: each member reads the parameter it needs and forwards.
#include "zelWeldToolkit.h"

#include "geometry/groove.h"
#include "geometry/line_fitting.h"
#include "geometry/segmentation.h"
#include "geometry/split_merge.h"
#include "geometry/toolkit_records.h"
#include "support/image_test.h"

namespace {

using weld::heapFrame;
using weld::heapMemory;

const cv::Mat kNoImage;

}  // namespace

TLinePara TBaseWeld::findALine(std::vector<cv::Point2f> points, int startIdx, int endIdx) const {
  const double tolPx = weldParams.dPara4;
  if (startIdx < 0 || endIdx < 0) return weld::toLinePara(weld::fitLine(points, tolPx, heapMemory()));
  return weld::toLinePara(weld::fitLineRange(points, {startIdx, endIdx}, tolPx, heapMemory()));
}

TLinePara TBaseWeld::findALineRansac(double angleFrom, double angleTo, double distTolerance, double minFitRatio,
                                     std::vector<cv::Point2f> points) const {
  return weld::toLinePara(
      weld::fitLineRansac(points, {angleFrom, angleTo, distTolerance, minFitRatio}, heapMemory()));
}

void TBaseWeld::filterOutLinePts(double k, double b, double distTolerance, std::vector<cv::Point2f> points,
                                 std::vector<cv::Point2f>& outliers) const {
  outliers = weld::toVector(weld::selectLineOutliers(k, b, distTolerance, points, heapMemory()));
}

bool TBaseWeld::calcFitPercent(std::vector<cv::Point> points, std::vector<cv::Point>& inliers, double k, double b,
                               double distTolerance, double& percent) const {
  const auto near = weld::selectLineInliers(k, b, distTolerance, points, heapMemory());
  inliers.assign(near.begin(), near.end());
  if (points.empty()) return false;
  percent = static_cast<double>(inliers.size()) / static_cast<double>(points.size());
  return true;
}

bool TBaseWeld::calcFitPercent(std::vector<cv::Point2f> points, std::vector<cv::Point>& inliers, double k,
                               double b, double distTolerance, double& percent) const {
  const auto truncated = weld::toIntPoints(points, heapMemory());
  return calcFitPercent(std::vector<cv::Point>(truncated.begin(), truncated.end()), inliers, k, b, distTolerance,
                        percent);
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
  const auto found = weld::segmentStripe(heapFrame(kNoImage, weldParams), stripePts,
                                         {maxMergeHeight, maxMergeGapX, maxMergeGapY}, polyEpsilon);
  pieces.clear();
  for (const weld::TPiece& piece : found) pieces.push_back(weld::toStripePiece(piece));
}

cv::Point2f TBaseWeld::modifySingleVGroovePos(std::vector<cv::Point2f> stripePts, cv::Point2f roughPos, float k,
                                              float b, cv::Mat image) const {
  return weld::refineGroovePos(heapFrame(image, weldParams), stripePts, {roughPos, k, b},
                               {weldParams.dPara2, weldParams.dPara1});
}

void TBaseWeld::splitWeldLine2lines(std::vector<cv::Point2f> stripePts, std::vector<TSplitAtom>& atoms,
                                    cv::Mat /*image*/) const {
  atoms = weld::splitWeldLine(heapFrame(kNoImage, weldParams), stripePts, weldParams.dPara4);
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
