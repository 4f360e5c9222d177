// Point lists, lines and indices of any kind through the toolkit members of TBaseWeld.
#include "fuzz/input.h"
#include "fuzz/verdict.h"

#include <cmath>
#include <vector>

namespace {

using fuzz::require;
using fuzz::TInput;

constexpr int kMaxPoints = 5000;
constexpr int kMaxAtoms = 12;
constexpr int kMaxAtomPoints = 100;
constexpr std::size_t kMinFitPoints = 10;

std::vector<cv::Point> takeIntPoints(TInput& input) {
  std::vector<cv::Point> points;
  for (int left = input.takeBelow(64); left > 0; --left) points.push_back({input.takeInt(), input.takeInt()});
  return points;
}

TLinePara takeLine(TInput& input) {
  TLinePara line{input.takeDouble(), input.takeDouble(), input.takeFlag(), input.takeDouble(), {}};
  line.inlierPts = fuzz::takePoints(input, kMaxAtomPoints);
  return line;
}

void checkLine(const TLinePara& line, const std::vector<cv::Point2f>& points) {
  require(std::isfinite(line.k) && std::isfinite(line.b), "a finite line");
  require(line.inlierPts.size() <= points.size(), "inliers from the list");
  require(!line.isValid || points.size() >= kMinFitPoints, "no line through fewer than 10 points");
  require(line.inlierRatio >= 0.0 && line.inlierRatio <= 1.0, "a share of inliers");
}

void findLines(TInput& input, const TBaseWeld& object) {
  const int startIdx = input.takeInt();
  const int endIdx = input.takeInt();
  const std::vector<cv::Point2f> points = fuzz::takePoints(input, kMaxPoints);
  const TLinePara line = object.findALine(points, startIdx, endIdx);
  checkLine(line, points);
  const bool isRange = startIdx >= 0 && endIdx >= 0;
  const bool isInside = static_cast<std::size_t>(endIdx) <= points.size();
  require(!isRange || isInside || !line.isValid, "no line through a range beyond the list");
}

void findConsensus(TInput& input, const TBaseWeld& object) {
  const double from = input.takeDouble();
  const double to = input.takeDouble();
  const double tol = input.takeDouble();
  const double minRatio = input.takeDouble();
  const std::vector<cv::Point2f> points = fuzz::takePoints(input, kMaxPoints);
  checkLine(object.findALineRansac(from, to, tol, minRatio, points), points);
}

void selectPoints(TInput& input, const TBaseWeld& object) {
  const double k = input.takeDouble();
  const double b = input.takeDouble();
  const double tol = input.takeDouble();
  const std::vector<cv::Point2f> points = fuzz::takePoints(input, kMaxPoints);
  std::vector<cv::Point2f> outliers;
  object.filterOutLinePts(k, b, tol, points, outliers);
  std::vector<cv::Point> inliers;
  double percent = 0.0;
  require(object.calcFitPercent(points, inliers, k, b, tol, percent) == !points.empty(), "a share of some points");
  const std::vector<cv::Point> intPoints = takeIntPoints(input);
  require(object.calcFitPercent(intPoints, inliers, k, b, tol, percent) == !intPoints.empty(),
          "a share of some points");
  const double share = object.calcFitLinePercent(k, b, tol, intPoints);
  require(intPoints.empty() ? share == 0.0 : share == percent, "one share");
  const cv::Point2f point = fuzz::takePoint(input);
  object.calcDropFeet(takeLine(input), point);
}

void segment(TInput& input, const TBaseWeld& object) {
  const float limits[] = {input.takeFloat(), input.takeFloat(), input.takeFloat()};
  const float epsilon = input.takeFlag() ? 3.0F : input.takeFloat();
  std::vector<TStripePiece> pieces;
  object.segmentStripe(fuzz::takePoints(input, kMaxPoints), pieces, limits[0], limits[1], limits[2], epsilon);
  for (const TStripePiece& piece : pieces) {
    // Pieces that were joined stay so where their points have no line in common.
    require(piece.fitPts.size() <= piece.pts.size() && (piece.isFitted || piece.fitPts.empty()),
            "pieces with a line, or joined and without one");
  }
}

void refineGroove(TInput& input, const TBaseWeld& object) {
  const cv::Point2f rough = fuzz::takePoint(input);
  const float k = input.takeFloat();
  const float b = input.takeFloat();
  const std::vector<cv::Point2f> points = fuzz::takePoints(input, kMaxPoints);
  const fuzz::TFrame frame = fuzz::takeFrame(input);
  fuzz::runCall(!fuzz::isReadable(frame.image),
                [&] { object.modifySingleVGroovePos(points, rough, k, b, frame.image); });
}

void split(TInput& input, const TBaseWeld& object) {
  std::vector<TSplitAtom> atoms;
  object.splitWeldLine2lines(fuzz::takePoints(input, kMaxPoints), atoms, cv::Mat());
  for (const TSplitAtom& atom : atoms) require(atom.line.isValid, "atoms with a line");
}

void fuse(TInput& input, const TBaseWeld& object) {
  std::vector<TSplitAtom> atoms;
  for (int left = input.takeBelow(kMaxAtoms); left > 0; --left) {
    atoms.push_back({fuzz::takePoints(input, kMaxAtomPoints), input.takeInt(), input.takeInt(), takeLine(input)});
  }
  object.fusePolyLines2LinesSegment(atoms, cv::Mat());
}

void combine(TInput& input, const TBaseWeld& object) {
  const std::vector<cv::Point2f> first = fuzz::takePoints(input, kMaxPoints);
  const std::vector<cv::Point2f> second = fuzz::takePoints(input, kMaxPoints);
  const TLinePara firstLine = takeLine(input);
  const TLinePara line = object.combine2Lines(firstLine, takeLine(input), first, second);
  require(std::isfinite(line.k) && std::isfinite(line.b), "a finite line");
}

void dropJumps(TInput& input, const TBaseWeld& object) {
  std::vector<cv::Point2f> points = fuzz::takePoints(input, kMaxPoints);
  const std::size_t before = points.size();
  object.removeDiscontinuousPts(points, input.takeInt());
  require(points.size() <= before, "points from the list");
}

// The column status is for classes derived from TBaseWeld.
class TStatusObject : public TBaseWeld {
public:
  void ask(TInput& input) {
    std::vector<TWeldPointStatus> status;
    for (int left = input.takeBelow(64); left > 0; --left) status.push_back({input.takeInt(), input.takeInt()});
    const std::size_t count = status.size();
    setSamplinePointsStatus(status);
    require(getSamplinePointsStatus().size() == count, "the status as stored");
    const int lo = input.takeInt();
    const int hi = input.takeInt();
    isWeldPosMissingPts({}, lo, hi, input.takeInt());
    isWeldPosContinueMissingPts({}, lo, hi, input.takeInt());
  }
};

void askStatus(TInput& input, const TBaseWeld& /*object*/) {
  TStatusObject().ask(input);
}

}  // namespace

extern "C" int LLVMFuzzerInitialize(int* /*argc*/, char*** /*argv*/) {
  fuzz::quietOpenCv();
  return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using TMember = void (*)(TInput&, const TBaseWeld&);
  constexpr TMember kMembers[] = {findLines, findConsensus, selectPoints, segment,   refineGroove,
                                  split,     fuse,          combine,      dropJumps, askStatus};
  TInput input(data, size);
  const TMember member = kMembers[input.takeBelow(static_cast<int>(std::size(kMembers)))];
  TBaseWeld object;
  if (input.takeFlag()) object.setWeldParameters(fuzz::takeParams(input));
  member(input, object);
  return 0;
}
